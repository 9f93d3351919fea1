#include "forms/KavConfig.h"

namespace tv {

KavConfig::KavConfig(EventLoop& loop)
    : Form(loop, QStringLiteral("KavConfig"), QStringLiteral("Tolvane Configuration"), 3) {
    setWidth(560);
    setHeight(440);

    Describe(RadioFrame, QStringLiteral("Radio"));
    Describe(ModelLabel, QStringLiteral("Model"));
    RadioCombo.setToolTip(QStringLiteral("model # of controlled radio"));
    Describe(AddressLabel, QStringLiteral("CI-V Address"));
    Address.setToolTip(QStringLiteral("CI-V address of controlled radio"));
    Describe(HexLabel, QStringLiteral("hex"));
    Describe(DecLabel, QStringLiteral("dec"));
    DecLabel.setVisible(false);
    Describe(DefaultAddress, QStringLiteral("Default: EE"),
        QStringLiteral("double-click to set CI-V address to radio's default setting"));
    Describe(Interrogation, QStringLiteral("Continuous freq and mode interrogation"),
        QStringLiteral("select if radio's CI-V Transceive parameter is not set"));
    Describe(PollLabel1, QStringLiteral("every"));
    Describe(PollLabel2, QStringLiteral("ms"));
    PollInterval.setToolTip(
        QStringLiteral("Time interval between frequency and mode interrogation commands, in milliseconds"));
    Describe(RadioFolderLabel, QStringLiteral("Control folder"));
    RadioFolder.setToolTip(QStringLiteral("Folder containing files used for transceiver control"));
    Describe(RadioFolderSelect, QStringLiteral("Select"), QStringLiteral("click to select a control folder"));

    Describe(RadixFrame, QStringLiteral("Radix"));
    Describe(HexSel, QStringLiteral("Hexadecimal"), QStringLiteral("select hexadecimal display of messages"));
    Describe(DecSel, QStringLiteral("Decimal"), QStringLiteral("select decimal display of messages"));

    Describe(Frame1, QStringLiteral("Guidance"));
    Describe(TooltipsCheckbox, QStringLiteral("show control explanations"),
        QStringLiteral("when checked, explanations like this one appear when the mouse lingers over a control"));
    Describe(BrowserPathnameLabel, QStringLiteral("Browser pathname"));
    BrowserPathname.setToolTip(
        QStringLiteral("if empty, your system's default browser is used to view online help pages"));
    Describe(BrowserSelectCmd, QStringLiteral("Select"),
        QStringLiteral("click to select the browser with which you wish to view online help pages"));
    Describe(ConfigGenHelpCmd, QStringLiteral("Help"), QStringLiteral("display configuration help"));

    Describe(AutorepeatFrame, QStringLiteral("VFO Autorepeat Rate"));
    Describe(AutoRepeatFastLabel, QStringLiteral("fast"));
    Describe(AutoRepeatSlowLabel, QStringLiteral("slow"));
    AutoRepeatScroll.setRange(1, 20);
    AutoRepeatScroll.setSmallChange(1);
    AutoRepeatScroll.setLargeChange(5);

    Describe(Frame4, QStringLiteral("User-defined Command Sequences"));
    Describe(UserCommandsEnableBox, QStringLiteral("Enable"),
        QStringLiteral("Check to enable User-defined Command Sequences"));
    Describe(PTTFrame, QStringLiteral("PTT"));
    Describe(PTTonCmd, QStringLiteral("On"), QStringLiteral("click to transmit"));
    Describe(PTTOffCmd, QStringLiteral("Off"), QStringLiteral("click to receive"));
    Describe(TxTimeoutLabel, QStringLiteral("Time-out, s"));
    Describe(TxTimeout, QString(),
        QStringLiteral("No transmission lasts longer than this many seconds, whoever keyed the radio: "
                       "it is unkeyed then. 0 turns the time-out off."));
    Describe(Frame5, QStringLiteral("Dual Receive"));
    Describe(DualReceiveEnableBox, QStringLiteral("Enable if directed by other apps"),
        QStringLiteral("Check to allow other applications to enable Dual Receive"));
    Describe(Frame6, QStringLiteral("Initial Command"));
    InitialXcvrCommand.setToolTip(
        QStringLiteral("Command (two hexadecimal digits per byte, or prepend with ' for ascii)"));
    Describe(DebugCheck, QStringLiteral("Log debugging information"),
        QStringLiteral("Check to record diagnostic information in errorlog.txt"));
    Describe(DualMonitorCheck, QStringLiteral("Use dual monitors"),
        QStringLiteral("when checked, windows that resided on the secondary monitor during the previous session "
                       "will be restored to the secondary monitor on startup"));

    // The frames keep the wording of an older interface ("external RTTY modem"): operators know it.
    Describe(PortFrame, QStringLiteral("Com Port"), QStringLiteral("CI-V Interface Serial Port"));
    Describe(SpeedFrame, QStringLiteral("Baud Rate"), QStringLiteral("CI-V Interface Baud Rate"));
    Describe(ParityFrame, QStringLiteral("Parity"), QStringLiteral("external RTTY modem parity"));
    Describe(WordLengthFrame, QStringLiteral("Word Length"), QStringLiteral("external RTTY modem word length"));
    Describe(StopBitsFrame, QStringLiteral("Stop Bits"), QStringLiteral("external RTTY modem stop bits"));
    Describe(DTRFrame, QStringLiteral("DTR"), QStringLiteral("control behavior of the Data Terminal Ready (DTR) signal"));
    Describe(RTSFrame, QStringLiteral("RTS"), QStringLiteral("control behavior of the Request To Send (RTS) signal"));
    for (int i = 1; i <= 8; ++i) {
        Describe(CommPort[i], QStringLiteral("Com%1").arg(i), QStringLiteral("Select Com%1").arg(i));
        Describe(CommPortDevice[i], QString(),
                 QStringLiteral("the serial device of Com%1: choose one present, or type its path").arg(i));
    }
    // The two fastest speeds carry the 19200 tip as designed.
    const char* speeds[8][2] = {{"19200", "Select 19200 Baud"}, {"  9600", "Select 9600 Baud"},
                                {"  4800", "Select 4800 Baud"}, {"  2400", "Select 2400 Baud"},
                                {"  1200", "Select 1200 Baud"}, {"    300", "Select 300 Baud"},
                                {"38400", "Select 19200 Baud"}, {"57600", "Select 19200 Baud"}};
    for (int i = 1; i <= 8; ++i)
        Describe(Speed[i], QString::fromLatin1(speeds[i - 1][0]), QString::fromLatin1(speeds[i - 1][1]));
    // Where modern radios with a USB port start: after the eight, so that a stored choice keeps its place.
    Describe(Speed[9], QStringLiteral("115200"), QStringLiteral("Select 115200 Baud"));
    const char* parities[5] = {"none", "odd", "even", "mark", "space"};
    for (int i = 1; i <= 5; ++i) Describe(Parity[i], QString::fromLatin1(parities[i - 1]));
    const char* lengths[3] = {"8", "7", "6"};
    for (int i = 1; i <= 3; ++i) Describe(WordLength[i], QString::fromLatin1(lengths[i - 1]));
    const char* stops[3] = {"1", "1.5", "2"};
    for (int i = 1; i <= 3; ++i) Describe(StopBits[i], QString::fromLatin1(stops[i - 1]));
    for (const QString& line : {QStringLiteral("DTR"), QStringLiteral("RTS")}) {
        auto& buttons = line == QStringLiteral("DTR") ? DTRButton : RTSButton;
        Describe(buttons[0], QStringLiteral("always off"), QStringLiteral("click to keep %1 off").arg(line));
        Describe(buttons[1], QStringLiteral("always on"),
            QStringLiteral("click to keep %1 on (select if your CI-V interface is powered by %1)").arg(line));
        Describe(buttons[2], QStringLiteral("on to xmit"),
            QStringLiteral("click if asserting %1 will key your transmitter").arg(line));
    }
    Describe(RTSButton[3], QStringLiteral("flow control"), QStringLiteral("click for hardware flow control using RTS and CTS"));
    Describe(ConfigComHelpCmd, QStringLiteral("Help"), QStringLiteral("display configuration help"));

    describeStationPages();
    describeFilterGroupsTab();
    describeMemoriesTab();
    describeLoggersTab();
    describeNetworkTab();
}

void KavConfig::describeLoggersTab() {
    Describe(WebLoggerFrame, QStringLiteral("Web logger (Wavelog, Cloudlog)"));
    Describe(WebLoggerEnabled, QStringLiteral("Send the radio's frequency, mode and power to the logger"),
             QStringLiteral("when checked, the logger's QSO form follows the radio: on each change (at most once a "
                            "second) and every 30 seconds"));
    Describe(WebLoggerUrlLabel, QStringLiteral("URL"));
    WebLoggerUrl.setToolTip(
        QStringLiteral("the address you open the logger at, e.g. https://log.example.org/ (its radio API is found "
                       "under it)"));
    Describe(WebLoggerKeyLabel, QStringLiteral("API key"));
    WebLoggerKey.setToolTip(
        QStringLiteral("a read/write API key from the logger's account menu; kept in the settings file only, never "
                       "written to the log"));
    WebLoggerKey.setMasked(true);
    Describe(WebLoggerRadioLabel, QStringLiteral("Radio name"));
    WebLoggerRadio.setToolTip(QStringLiteral("the name the logger lists this radio under"));

    Describe(ContestUdpFrame, QStringLiteral("Contest loggers (UDP radio info)"));
    Describe(UdpRadioInfoEnabled, QStringLiteral("Send RadioInfo datagrams"),
             QStringLiteral("when checked, the radio in use is announced on UDP on each change and every 10 "
                            "seconds, as contest loggers expect"));
    Describe(UdpDestinationsLabel, QStringLiteral("To (host:port)"));
    UdpDestinations.setToolTip(
        QStringLiteral("where the datagrams go: host:port items separated by spaces, e.g. 127.0.0.1:12060 "
                       "192.168.1.20:12060"));
    Describe(UdpCommandsEnabled, QStringLiteral("Take Radio_SetFrequency and Radio_SetMode"),
             QStringLiteral("when checked, a logger on this computer can tune the radio by UDP datagrams"));
    Describe(UdpCommandsPortLabel, QStringLiteral("on port"));
    UdpCommandsPort.setToolTip(QStringLiteral("the UDP port of this computer's loopback where the commands are "
                                              "taken"));
}

int KavConfig::tabIndex(const QString& caption) const {
    for (int i = 0; i < ConfigTab.count(); ++i)
        if (ConfigTab.tabCaption(i) == caption) return i;
    return -1;
}

void KavConfig::describeFilterGroupsTab() {
    // The group editor is shown only for a radio whose filters come in groups; its caption names it.
    Describe(YaesuFilterGroupFrame, QStringLiteral("Filter Groups"));
    YaesuFilterGroupFrame.setVisible(false);
    const char* headings[5] = {"Name", "Mode", "2nd IF", "3rd IF", "Sub"};
    for (int c = 0; c < 5; ++c) YaesuFilterGroupGrid.setColumnCaption(c, QString::fromLatin1(headings[c]));
    YaesuFilterGroupGrid.setToolTip(
        QStringLiteral("one row per group and mode: a name, the mode (SSB, CW, RTTY, FM, AM, PKT) and its three filters"));
    Describe(ModeFiltersEnabledCheck, QStringLiteral("restore Filter Group on mode change"));
    Describe(GroupFileFrame, QStringLiteral("Filter Group File"));
    GroupFileFrame.setVisible(false);
    GroupFilename.setToolTip(QStringLiteral("pathname to a file containing filter group definitions"));
    Describe(SelectGroupFilenameCmd, QStringLiteral("Select"),
             QStringLiteral("Select a filter group file and load its definitions"));
    Describe(LoadGroupCmd, QStringLiteral("Reload"),
             QStringLiteral("Load filter group definitions from the specified file"));
    Describe(SaveGroupCmd, QStringLiteral("Save"), QStringLiteral("Save filter group definitions to the specified file"));
    SaveGroupCmd.setEnabled(false);
    Describe(ConfigGroupHelpCmd, QStringLiteral("Help"), QStringLiteral("display filter group help"));
}

int KavConfig::tabOf(const Control& c) const {
    static const QStringList general = {
        QStringLiteral("RadioFrame"),   QStringLiteral("ModelLabel"),     QStringLiteral("RadioCombo"),
        QStringLiteral("AddressLabel"), QStringLiteral("Address"),        QStringLiteral("HexLabel"),
        QStringLiteral("DecLabel"),     QStringLiteral("DefaultAddress"), QStringLiteral("Interrogation"),
        QStringLiteral("PollLabel1"),   QStringLiteral("PollInterval"),   QStringLiteral("PollLabel2"),
        QStringLiteral("RadioFolderLabel"), QStringLiteral("RadioFolder"), QStringLiteral("RadioFolderSelect"),
        QStringLiteral("RadixFrame"),   QStringLiteral("HexSel"),         QStringLiteral("DecSel"),
        QStringLiteral("Frame1"),       QStringLiteral("TooltipsCheckbox"), QStringLiteral("BrowserPathnameLabel"),
        QStringLiteral("BrowserPathname"), QStringLiteral("BrowserSelectCmd"), QStringLiteral("ConfigGenHelpCmd"),
        QStringLiteral("AutorepeatFrame"), QStringLiteral("AutoRepeatScroll"), QStringLiteral("AutoRepeatFastLabel"),
        QStringLiteral("AutoRepeatSlowLabel"), QStringLiteral("Frame4"), QStringLiteral("UserCommandsEnableBox"),
        QStringLiteral("PTTFrame"),     QStringLiteral("PTTonCmd"),       QStringLiteral("PTTOffCmd"),
        QStringLiteral("TxTimeoutLabel"), QStringLiteral("TxTimeout"),
        QStringLiteral("Frame5"),       QStringLiteral("DualReceiveEnableBox"), QStringLiteral("Frame6"),
        QStringLiteral("InitialXcvrCommand"), QStringLiteral("DebugCheck"), QStringLiteral("DualMonitorCheck")};
    static const QStringList com = {
        QStringLiteral("PortFrame"),      QStringLiteral("CommPort"),      QStringLiteral("CommPortDevice"), QStringLiteral("SpeedFrame"),
        QStringLiteral("Speed"),          QStringLiteral("ParityFrame"),   QStringLiteral("Parity"),
        QStringLiteral("WordLengthFrame"), QStringLiteral("WordLength"),   QStringLiteral("StopBitsFrame"),
        QStringLiteral("StopBits"),       QStringLiteral("DTRFrame"),      QStringLiteral("DTRButton"),
        QStringLiteral("RTSFrame"),       QStringLiteral("RTSButton"),     QStringLiteral("ConfigComHelpCmd")};
    if (general.contains(c.name())) return 0;
    if (com.contains(c.name())) return 1;
    if (const int station = stationTabOf(c); station >= 0) return station;
    static const QStringList groups = {
        QStringLiteral("YaesuFilterGroupFrame"), QStringLiteral("YaesuFilterGroupGrid"),
        QStringLiteral("ModeFiltersEnabledCheck"), QStringLiteral("GroupFileFrame"),
        QStringLiteral("GroupFilename"), QStringLiteral("SelectGroupFilenameCmd"),
        QStringLiteral("LoadGroupCmd"), QStringLiteral("SaveGroupCmd"), QStringLiteral("ConfigGroupHelpCmd")};
    if (groups.contains(c.name())) return 5;
    static const QStringList memories = {
        QStringLiteral("Frame7"),          QStringLiteral("BankColumnLabel"),   QStringLiteral("TitleColumnLabel"),
        QStringLiteral("BankNumberLabel"), QStringLiteral("BankToolTip"),       QStringLiteral("ExportMemoriesCmd"),
        QStringLiteral("ImportMemoriesCmd"), QStringLiteral("MemoryHelpCmd")};
    if (memories.contains(c.name())) return 6;
    static const QStringList loggers = {
        QStringLiteral("WebLoggerFrame"),       QStringLiteral("WebLoggerEnabled"),     QStringLiteral("WebLoggerUrlLabel"),
        QStringLiteral("WebLoggerUrl"),         QStringLiteral("WebLoggerKeyLabel"),    QStringLiteral("WebLoggerKey"),
        QStringLiteral("WebLoggerRadioLabel"),  QStringLiteral("WebLoggerRadio"),       QStringLiteral("ContestUdpFrame"),
        QStringLiteral("UdpRadioInfoEnabled"),  QStringLiteral("UdpDestinationsLabel"), QStringLiteral("UdpDestinations"),
        QStringLiteral("UdpCommandsEnabled"),   QStringLiteral("UdpCommandsPortLabel"), QStringLiteral("UdpCommandsPort")};
    if (loggers.contains(c.name())) return tabIndex(QStringLiteral("Loggers"));
    if (onNetworkTab(c)) return networkTab();
    return -1;
}

}  // namespace tv
