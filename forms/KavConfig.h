#pragma once
// The configuration window as a model. Much of the program's configuration lives in these controls
// (the address, the poll interval, the control folder, the interrogation switch, the port options):
// the logic reads them at the moment of use.

#include "forms/Controls.h"
#include "forms/Form.h"

namespace tv {

class KavConfig : public Form {
public:
    explicit KavConfig(EventLoop& loop);

    TabStrip ConfigTab{this, QStringLiteral("ConfigTab"),
                       {QStringLiteral("General"), QStringLiteral("Com"), QStringLiteral("Device 0"),
                        QStringLiteral("Device 1"), QStringLiteral("Device 2"), QStringLiteral("Filter Grps"),
                        QStringLiteral("Memories"), QStringLiteral("Multi Radio")}};

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
    Frame SpeedFrame{this, QStringLiteral("SpeedFrame")};
    OptionGroup speedGroup;
    ControlArray<OptionButton> Speed{this, QStringLiteral("Speed"), 1, 8, &speedGroup};
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

    // ---- tabs "Device 0" to "Device 2" (the part the main window reads) ----
    ControlArray<CheckBox> DeviceEnabled{this, QStringLiteral("DeviceEnabled"), 0, 2};

    // ---- tab "Filter Grps" (the part the core reads) ----
    CheckBox ModeFiltersEnabledCheck{this, QStringLiteral("ModeFiltersEnabledCheck")};

    // ---- tab "Memories" ----
    Frame Frame7{this, QStringLiteral("Frame7")};
    Label BankColumnLabel{this, QStringLiteral("BankColumnLabel")};
    Label TitleColumnLabel{this, QStringLiteral("TitleColumnLabel")};
    ControlArray<Label> BankNumberLabel{this, QStringLiteral("BankNumberLabel"), 0, 9};
    ControlArray<TextBox> BankToolTip{this, QStringLiteral("BankToolTip"), 0, 9};
    CommandButton ExportMemoriesCmd{this, QStringLiteral("ExportMemoriesCmd")};
    CommandButton ImportMemoriesCmd{this, QStringLiteral("ImportMemoriesCmd")};
    CommandButton MemoryHelpCmd{this, QStringLiteral("MemoryHelpCmd")};

    // The tab each control sits on, for the view: -1 for controls outside the tabs.
    int tabOf(const Control& c) const;

private:
    void describeMemoriesTab();
};

}  // namespace tv
