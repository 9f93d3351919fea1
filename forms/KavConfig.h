#pragma once
// The configuration window as a model. Much of the program's configuration lives in these controls
// (the address, the poll interval, the control folder, the interrogation switch, the port options):
// the logic reads them at the moment of use.

#include "forms/Controls.h"
#include "forms/Form.h"
#include "forms/Grid.h"

namespace tv {

class KavConfig : public Form {
public:
    explicit KavConfig(EventLoop& loop);

    TabStrip ConfigTab{this, QStringLiteral("ConfigTab"),
                       {QStringLiteral("General"), QStringLiteral("Com"), QStringLiteral("Device 0"),
                        QStringLiteral("Device 1"), QStringLiteral("Device 2"), QStringLiteral("Filter Grps"),
                        QStringLiteral("Memories"), QStringLiteral("Multi Radio"), QStringLiteral("Loggers"),
                        QStringLiteral("Network")}};

    // ---- tab "General": the radio ----
    Frame RadioFrame{this, QStringLiteral("RadioFrame")};
    Label ModelLabel{this, QStringLiteral("ModelLabel")};
    ComboBox RadioCombo{this, QStringLiteral("RadioCombo")};
    Label AddressLabel{this, QStringLiteral("AddressLabel")};
    TextBox Address{this, QStringLiteral("Address")};
    Label HexLabel{this, QStringLiteral("HexLabel")};
    Label DecLabel{this, QStringLiteral("DecLabel")};
    Label DefaultAddress{this, QStringLiteral("DefaultAddress")};
    CheckBox Interrogation{this, QStringLiteral("Interrogation")};
    Label PollLabel1{this, QStringLiteral("PollLabel1")};
    TextBox PollInterval{this, QStringLiteral("PollInterval")};
    Label PollLabel2{this, QStringLiteral("PollLabel2")};
    Label RadioFolderLabel{this, QStringLiteral("RadioFolderLabel")};
    TextBox RadioFolder{this, QStringLiteral("RadioFolder")};
    CommandButton RadioFolderSelect{this, QStringLiteral("RadioFolderSelect")};

    // ---- tab "General": radix of the monitor and the address ----
    Frame RadixFrame{this, QStringLiteral("RadixFrame")};
    OptionGroup radixGroup;
    OptionButton HexSel{this, QStringLiteral("HexSel"), -1, &radixGroup};
    OptionButton DecSel{this, QStringLiteral("DecSel"), -1, &radixGroup};

    // ---- tab "General": guidance ----
    Frame Frame1{this, QStringLiteral("Frame1")};
    CheckBox TooltipsCheckbox{this, QStringLiteral("TooltipsCheckbox")};
    Label BrowserPathnameLabel{this, QStringLiteral("BrowserPathnameLabel")};
    TextBox BrowserPathname{this, QStringLiteral("BrowserPathname")};
    CommandButton BrowserSelectCmd{this, QStringLiteral("BrowserSelectCmd")};
    CommandButton ConfigGenHelpCmd{this, QStringLiteral("ConfigGenHelpCmd")};

    Frame AutorepeatFrame{this, QStringLiteral("AutorepeatFrame")};
    ScrollBar AutoRepeatScroll{this, QStringLiteral("AutoRepeatScroll")};
    Label AutoRepeatFastLabel{this, QStringLiteral("AutoRepeatFastLabel")};
    Label AutoRepeatSlowLabel{this, QStringLiteral("AutoRepeatSlowLabel")};

    Frame Frame4{this, QStringLiteral("Frame4")};
    CheckBox UserCommandsEnableBox{this, QStringLiteral("UserCommandsEnableBox")};

    Frame PTTFrame{this, QStringLiteral("PTTFrame")};
    CommandButton PTTonCmd{this, QStringLiteral("PTTonCmd")};
    CommandButton PTTOffCmd{this, QStringLiteral("PTTOffCmd")};
    Label TxTimeoutLabel{this, QStringLiteral("TxTimeoutLabel")};
    TextBox TxTimeout{this, QStringLiteral("TxTimeout")};

    Frame Frame5{this, QStringLiteral("Frame5")};
    CheckBox DualReceiveEnableBox{this, QStringLiteral("DualReceiveEnableBox")};

    Frame Frame6{this, QStringLiteral("Frame6")};
    TextBox InitialXcvrCommand{this, QStringLiteral("InitialXcvrCommand")};
    CheckBox DebugCheck{this, QStringLiteral("DebugCheck")};
    CheckBox DualMonitorCheck{this, QStringLiteral("DualMonitorCheck")};

    // ---- tab "Com" ----
    Frame PortFrame{this, QStringLiteral("PortFrame")};
    OptionGroup portGroup;
    ControlArray<OptionButton> CommPort{this, QStringLiteral("CommPort"), 1, 8, &portGroup};
    // The device each port number stands for: one of those present, or any path typed in.
    ControlArray<ComboBox> CommPortDevice{this, QStringLiteral("CommPortDevice"), 1, 8, true};
    Frame SpeedFrame{this, QStringLiteral("SpeedFrame")};
    OptionGroup speedGroup;
    ControlArray<OptionButton> Speed{this, QStringLiteral("Speed"), 1, 9, &speedGroup};
    Frame ParityFrame{this, QStringLiteral("ParityFrame")};
    OptionGroup parityGroup;
    ControlArray<OptionButton> Parity{this, QStringLiteral("Parity"), 1, 5, &parityGroup};
    Frame WordLengthFrame{this, QStringLiteral("WordLengthFrame")};
    OptionGroup wordLengthGroup;
    ControlArray<OptionButton> WordLength{this, QStringLiteral("WordLength"), 1, 3, &wordLengthGroup};
    Frame StopBitsFrame{this, QStringLiteral("StopBitsFrame")};
    OptionGroup stopBitsGroup;
    ControlArray<OptionButton> StopBits{this, QStringLiteral("StopBits"), 1, 3, &stopBitsGroup};
    Frame DTRFrame{this, QStringLiteral("DTRFrame")};
    OptionGroup dtrGroup;
    ControlArray<OptionButton> DTRButton{this, QStringLiteral("DTRButton"), 0, 2, &dtrGroup};
    Frame RTSFrame{this, QStringLiteral("RTSFrame")};
    OptionGroup rtsGroup;
    ControlArray<OptionButton> RTSButton{this, QStringLiteral("RTSButton"), 0, 3, &rtsGroup};
    CommandButton ConfigComHelpCmd{this, QStringLiteral("ConfigComHelpCmd")};

    // ---- tabs "Device 0" to "Device 2": one page per device, its settings and its table ----
    ControlArray<CheckBox> DeviceEnabled{this, QStringLiteral("DeviceEnabled"), 0, 2};
    ControlArray<Label> DeviceNameLabel{this, QStringLiteral("DeviceNameLabel"), 0, 2};
    ControlArray<TextBox> DeviceName{this, QStringLiteral("DeviceName"), 0, 2};
    ControlArray<Label> DeviceControlsLabel{this, QStringLiteral("DeviceControlsLabel"), 0, 2};
    ControlArray<TextBox> DeviceControls{this, QStringLiteral("DeviceControls"), 0, 2};
    ControlArray<Label> DeviceToleranceLabel{this, QStringLiteral("DeviceToleranceLabel"), 0, 2};
    ControlArray<TextBox> DeviceTolerance{this, QStringLiteral("DeviceTolerance"), 0, 2};
    ControlArray<Label> DeviceControlLabel1{this, QStringLiteral("DeviceControlLabel1"), 0, 2};
    ControlArray<TextBox> DeviceControl1{this, QStringLiteral("DeviceControl1"), 0, 2};
    ControlArray<Label> DeviceControlLabel2{this, QStringLiteral("DeviceControlLabel2"), 0, 2};
    ControlArray<TextBox> DeviceControl2{this, QStringLiteral("DeviceControl2"), 0, 2};
    ControlArray<Label> DeviceControlLabel3{this, QStringLiteral("DeviceControlLabel3"), 0, 2};
    ControlArray<TextBox> DeviceControl3{this, QStringLiteral("DeviceControl3"), 0, 2};
    ControlArray<Frame> DeviceFileFrame{this, QStringLiteral("DeviceFileFrame"), 0, 2};
    ControlArray<TextBox> DeviceFilename{this, QStringLiteral("DeviceFilename"), 0, 2};
    ControlArray<CommandButton> SelectDeviceFilenameCmd{this, QStringLiteral("SelectDeviceFilenameCmd"), 0, 2};
    ControlArray<CommandButton> LoadDeviceCmd{this, QStringLiteral("LoadDeviceCmd"), 0, 2};
    ControlArray<CommandButton> SaveDeviceCmd{this, QStringLiteral("SaveDeviceCmd"), 0, 2};
    ControlArray<CommandButton> ConfigDeviceHelpCmd{this, QStringLiteral("ConfigDeviceHelpCmd"), 0, 2};
    ControlArray<Grid> DeviceGrid{this, QStringLiteral("DeviceGrid"), 0, 2, 4};

    // ---- tab "Filter Grps": named filter groups per mode, their grid and their file ----
    Frame YaesuFilterGroupFrame{this, QStringLiteral("YaesuFilterGroupFrame")};
    Grid YaesuFilterGroupGrid{this, QStringLiteral("YaesuFilterGroupGrid"), -1, 5};
    CheckBox ModeFiltersEnabledCheck{this, QStringLiteral("ModeFiltersEnabledCheck")};
    Frame GroupFileFrame{this, QStringLiteral("GroupFileFrame")};
    TextBox GroupFilename{this, QStringLiteral("GroupFilename")};
    CommandButton SelectGroupFilenameCmd{this, QStringLiteral("SelectGroupFilenameCmd")};
    CommandButton LoadGroupCmd{this, QStringLiteral("LoadGroupCmd")};
    CommandButton SaveGroupCmd{this, QStringLiteral("SaveGroupCmd")};
    CommandButton ConfigGroupHelpCmd{this, QStringLiteral("ConfigGroupHelpCmd")};

    // ---- tab "Multi Radio": three transceivers, and the choice of one by band ----
    static constexpr int kMultiEntries = 3;
    static constexpr int kBandRadioCombos = 10;
    Frame Frame8{this, QStringLiteral("Frame8")};
    ControlArray<Label> MultiRadioLabel{this, QStringLiteral("MultiRadioLabel"), 0, 2};
    ControlArray<Label> MultiFieldLabel{this, QStringLiteral("MultiFieldLabel"), 0, 12};
    ControlArray<ComboBox> MultiModel{this, QStringLiteral("MultiModel"), 0, 2};
    ControlArray<TextBox> MultiAddr{this, QStringLiteral("MultiAddr"), 0, 2};
    Label MultiHexLabel{this, QStringLiteral("MultiHexLabel")};
    Label MultiDecLabel{this, QStringLiteral("MultiDecLabel")};
    ControlArray<CheckBox> MultiPoll{this, QStringLiteral("MultiPoll"), 0, 2};
    ControlArray<TextBox> MultiInterval{this, QStringLiteral("MultiInterval"), 0, 2};
    ControlArray<TextBox> MultiName{this, QStringLiteral("MultiName"), 0, 2};
    ControlArray<CheckBox> MultiEnabled{this, QStringLiteral("MultiEnabled"), 0, 2};
    Frame Frame9{this, QStringLiteral("Frame9")};
    ControlArray<ComboBox> MultiPort{this, QStringLiteral("MultiPort"), 0, 2};
    ControlArray<ComboBox> MultiBaud{this, QStringLiteral("MultiBaud"), 0, 2};
    ControlArray<ComboBox> MultiParity{this, QStringLiteral("MultiParity"), 0, 2};
    ControlArray<ComboBox> MultiWord{this, QStringLiteral("MultiWord"), 0, 2};
    ControlArray<ComboBox> MultiStop{this, QStringLiteral("MultiStop"), 0, 2};
    ControlArray<ComboBox> MultiDTR{this, QStringLiteral("MultiDTR"), 0, 2};
    ControlArray<ComboBox> MultiRTS{this, QStringLiteral("MultiRTS"), 0, 2};
    Frame Frame10{this, QStringLiteral("Frame10")};
    CheckBox MultiAutoSelect{this, QStringLiteral("MultiAutoSelect")};
    ControlArray<Label> BandRadioLabel{this, QStringLiteral("BandRadioLabel"), 1, kBandRadioCombos};
    ControlArray<ComboBox> BandRadioCombo{this, QStringLiteral("BandRadioCombo"), 1, kBandRadioCombos};
    // ---- tab "Memories" ----
    Frame Frame7{this, QStringLiteral("Frame7")};
    Label BankColumnLabel{this, QStringLiteral("BankColumnLabel")};
    Label TitleColumnLabel{this, QStringLiteral("TitleColumnLabel")};
    ControlArray<Label> BankNumberLabel{this, QStringLiteral("BankNumberLabel"), 0, 9};
    ControlArray<TextBox> BankToolTip{this, QStringLiteral("BankToolTip"), 0, 9};
    CommandButton ExportMemoriesCmd{this, QStringLiteral("ExportMemoriesCmd")};
    CommandButton ImportMemoriesCmd{this, QStringLiteral("ImportMemoriesCmd")};
    CommandButton MemoryHelpCmd{this, QStringLiteral("MemoryHelpCmd")};

    // ---- tab "Loggers": the radio pushed to a web logger, and the contest loggers' UDP radio info ----
    Frame WebLoggerFrame{this, QStringLiteral("WebLoggerFrame")};
    CheckBox WebLoggerEnabled{this, QStringLiteral("WebLoggerEnabled")};
    Label WebLoggerUrlLabel{this, QStringLiteral("WebLoggerUrlLabel")};
    TextBox WebLoggerUrl{this, QStringLiteral("WebLoggerUrl")};
    Label WebLoggerKeyLabel{this, QStringLiteral("WebLoggerKeyLabel")};
    TextBox WebLoggerKey{this, QStringLiteral("WebLoggerKey")};
    Label WebLoggerRadioLabel{this, QStringLiteral("WebLoggerRadioLabel")};
    TextBox WebLoggerRadio{this, QStringLiteral("WebLoggerRadio")};
    Frame ContestUdpFrame{this, QStringLiteral("ContestUdpFrame")};
    CheckBox UdpRadioInfoEnabled{this, QStringLiteral("UdpRadioInfoEnabled")};
    Label UdpDestinationsLabel{this, QStringLiteral("UdpDestinationsLabel")};
    TextBox UdpDestinations{this, QStringLiteral("UdpDestinations")};
    CheckBox UdpCommandsEnabled{this, QStringLiteral("UdpCommandsEnabled")};
    Label UdpCommandsPortLabel{this, QStringLiteral("UdpCommandsPortLabel")};
    TextBox UdpCommandsPort{this, QStringLiteral("UdpCommandsPort")};
    // ---- tab "Network": the servers other programs reach the radio through ----
    Frame NetServerFrame{this, QStringLiteral("NetServerFrame")};
    CheckBox NetServerEnabledCheck{this, QStringLiteral("NetServerEnabledCheck")};
    Label NetServerAddressLabel{this, QStringLiteral("NetServerAddressLabel")};
    TextBox NetServerAddress{this, QStringLiteral("NetServerAddress")};
    Label NetServerPortLabel{this, QStringLiteral("NetServerPortLabel")};
    TextBox NetServerPort{this, QStringLiteral("NetServerPort")};
    Label NetServerPasswordLabel{this, QStringLiteral("NetServerPasswordLabel")};
    TextBox NetServerPassword{this, QStringLiteral("NetServerPassword")};
    Label NetServerAllowedLabel{this, QStringLiteral("NetServerAllowedLabel")};
    TextBox NetServerAllowedClients{this, QStringLiteral("NetServerAllowedClients")};
    CheckBox NetServerReadOnlyCheck{this, QStringLiteral("NetServerReadOnlyCheck")};
    CheckBox NetServerUnkeyOthersCheck{this, QStringLiteral("NetServerUnkeyOthersCheck")};
    Frame XmlRpcFrame{this, QStringLiteral("XmlRpcFrame")};
    CheckBox XmlRpcEnabledCheck{this, QStringLiteral("XmlRpcEnabledCheck")};
    Label XmlRpcPortLabel{this, QStringLiteral("XmlRpcPortLabel")};
    TextBox XmlRpcPort{this, QStringLiteral("XmlRpcPort")};
    CommandButton NetworkRestartCmd{this, QStringLiteral("NetworkRestartCmd")};
    // The tab's place in the strip, found by its caption.
    int networkTab() const;

    // The tab each control sits on, for the view: -1 for controls outside the tabs.
    int tabOf(const Control& c) const;
    // The tab with this caption, -1 when there is none.
    int tabIndex(const QString& caption) const;

private:
    // The designed captions and tooltips of the device and multi-radio pages.
    void describeStationPages();
    // Their tab, or -1 for a control of another page.
    static int stationTabOf(const Control& c);
    void describeMemoriesTab();
    void describeFilterGroupsTab();
    void describeLoggersTab();
    void describeNetworkTab();
    bool onNetworkTab(const Control& c) const;
};

}  // namespace tv
