// The configuration window's pages of the station around the radio: the three devices and the three
// transceivers. Their captions and tooltips as designed, and which tab each control sits on.

#include "forms/KavConfig.h"

namespace tv {

namespace {

// The fields of a transceiver entry, top to bottom: caption of the row, tooltip behind "Radio n".
struct MultiField {
    const char* caption;
    const char* tip;
};
constexpr MultiField kMultiFields[13] = {
    {"Model", " model"},
    {"CI-V Address", " CI-V address (Icom only)"},
    {"Poll", " continuously interrogate radio"},
    {"Interval (ms)", " interrogation interval (ms)"},
    {"Name", " radio name"},
    {"Enabled", " enabled"},
    {"Port", " serial port #"},
    {"Baud", " serial port baud rate"},
    {"Parity", " serial port parity (None, Odd, Even, Mark, Space)"},
    {"Word length", " serial port word length"},
    {"Stop bits", " serial port stop bits"},
    {"DTR", " serial port Data Terminal Ready (No - always off, Yes - always on, Xmit - on to xmit)"},
    {"RTS", " serial port Request To Send (No - always off, Yes - always on, Xmit - on to xmit)"},
};

void fill(ComboBox& list, std::initializer_list<const char*> items) {
    for (const char* i : items) list.AddItem(QString::fromLatin1(i));
}

}  // namespace

void KavConfig::describeStationPages() {
    for (int d = 0; d < 3; ++d) {
        Describe(DeviceEnabled[d], QStringLiteral("Enabled"),
                 QStringLiteral("Enable this device to appear on the main window's Devices tab"));
        Describe(DeviceNameLabel[d], QStringLiteral("Name"));
        DeviceName[d].setToolTip(QStringLiteral("name of this device"));
        Describe(DeviceControlsLabel[d], QStringLiteral("Controls"));
        DeviceControls[d].setToolTip(QStringLiteral("the number of controls for this device"));
        Describe(DeviceToleranceLabel[d], QStringLiteral("Tolerance (%)"));
        DeviceTolerance[d].setToolTip(QStringLiteral(
            "tolerance in %; only device data within this range of your radio's frequency is selected"));
        Describe(DeviceControlLabel1[d], QStringLiteral("Control 1"));
        DeviceControl1[d].setToolTip(QStringLiteral("name of this device's first control"));
        Describe(DeviceControlLabel2[d], QStringLiteral("Control 2"));
        DeviceControl2[d].setToolTip(QStringLiteral("name of this device's second control"));
        Describe(DeviceControlLabel3[d], QStringLiteral("Control 3"));
        DeviceControl3[d].setToolTip(QStringLiteral("name of this device's third control"));
        Describe(DeviceFileFrame[d], QStringLiteral("Data File"));
        DeviceFilename[d].setToolTip(QStringLiteral("pathname to a file containing device data"));
        Describe(SelectDeviceFilenameCmd[d], QStringLiteral("Select"),
                 QStringLiteral("Select data file and load its device data"));
        Describe(LoadDeviceCmd[d], QStringLiteral("Reload"),
                 QStringLiteral("Load device data from the specified data file"));
        Describe(SaveDeviceCmd[d], QStringLiteral("Save"),
                 QStringLiteral("Save device data to the specified data file"));
        Describe(ConfigDeviceHelpCmd[d], QStringLiteral("Help"),
                 QStringLiteral("display device configuration help"));
        Grid& g = DeviceGrid[d];
        const char* captions[4] = {"Freq", "Control 1", "Control 2", "Control 3"};
        for (int c = 0; c < 4; ++c) g.setColumnCaption(c, QString::fromLatin1(captions[c]));
        // Wide enough for "1,296,000.000".
        g.setColumnWidth(0, 110);
    }

    Describe(Frame8, QStringLiteral("Transceivers"));
    Describe(Frame9, QStringLiteral("Serial ports"));
    Describe(Frame10, QStringLiteral("Selection by band"));
    Describe(
        MultiAutoSelect, QStringLiteral("Auto"),
        QStringLiteral("when checked, a frequency on a band assigned to a radio switches to that radio"));
    Describe(MultiHexLabel, QStringLiteral("hex"));
    Describe(MultiDecLabel, QStringLiteral("dec"));
    MultiDecLabel.setVisible(false);
    for (int f = 0; f < MultiFieldLabel.count(); ++f)
        MultiFieldLabel[f].setCaption(QString::fromLatin1(kMultiFields[f].caption));
    for (int n = 0; n < kMultiEntries; ++n) {
        const QString radio = QStringLiteral("Radio %1").arg(n + 1);
        MultiRadioLabel[n].setCaption(radio);
        Control* fields[13] = {&MultiModel[n],  &MultiAddr[n],    &MultiPoll[n], &MultiInterval[n],
                               &MultiName[n],   &MultiEnabled[n], &MultiPort[n], &MultiBaud[n],
                               &MultiParity[n], &MultiWord[n],    &MultiStop[n], &MultiDTR[n],
                               &MultiRTS[n]};
        for (int f = 0; f < 13; ++f) fields[f]->setToolTip(radio + QString::fromLatin1(kMultiFields[f].tip));
        for (int p = 1; p <= 8; ++p) MultiPort[n].AddItem(QStringLiteral("Com%1").arg(p));
        fill(MultiBaud[n], {"57600", "38400", "19200", "9600", "4800", "2400", "1200", "300"});
        fill(MultiParity[n], {"N", "O", "E", "M", "S"});
        fill(MultiWord[n], {"8", "7", "6"});
        fill(MultiStop[n], {"1", "1.5", "2"});
        fill(MultiDTR[n], {"N", "Y", "X"});
        fill(MultiRTS[n], {"N", "Y", "X"});
    }
}

int KavConfig::stationTabOf(const Control& c) {
    static const QStringList device = {
        QStringLiteral("DeviceEnabled"),       QStringLiteral("DeviceNameLabel"),
        QStringLiteral("DeviceName"),          QStringLiteral("DeviceControlsLabel"),
        QStringLiteral("DeviceControls"),      QStringLiteral("DeviceToleranceLabel"),
        QStringLiteral("DeviceTolerance"),     QStringLiteral("DeviceControlLabel1"),
        QStringLiteral("DeviceControl1"),      QStringLiteral("DeviceControlLabel2"),
        QStringLiteral("DeviceControl2"),      QStringLiteral("DeviceControlLabel3"),
        QStringLiteral("DeviceControl3"),      QStringLiteral("DeviceFileFrame"),
        QStringLiteral("DeviceFilename"),      QStringLiteral("SelectDeviceFilenameCmd"),
        QStringLiteral("LoadDeviceCmd"),       QStringLiteral("SaveDeviceCmd"),
        QStringLiteral("ConfigDeviceHelpCmd"), QStringLiteral("DeviceGrid")};
    if (device.contains(c.name())) return 2 + c.index();
    const QString& n = c.name();
    if (n.startsWith(QLatin1String("Multi")) || n.startsWith(QLatin1String("BandRadio")) ||
        n == QLatin1String("Frame8") || n == QLatin1String("Frame9") || n == QLatin1String("Frame10"))
        return 7;
    return -1;
}

}  // namespace tv
