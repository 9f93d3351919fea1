#include "forms/KavMain.h"

namespace tv {

const char* const KavMain::kModeCaptions[10] = {"LSB", "USB",  "AM",           "CW",              "RTTY (narrow)",
                                                "FM",  "WBFM", "CW-R (Narrow)", "RTTY-R (narrow)", "PKT"};
// PKT carries the CW-R text as designed.
const char* const KavMain::kModeToolTips[10] = {"select lower sideband",
                                                "select upper sideband",
                                                "select amplitude modulation",
                                                "select continuous wave",
                                                "select frequency shift keying (if available)",
                                                "select frequency modulation",
                                                "select wide band frequency modulation",
                                                "select reversed continuous wave",
                                                "select reversed frequency shift keying",
                                                "select reversed continuous wave"};

KavMain::KavMain(EventLoop& loop) : Form(loop, QStringLiteral("KavMain"), QStringLiteral("Tolvane"), 1) {
    setWidth(kDesignWidth);
    setHeight(kDesignHeight);
    FreqDisplay.setText(QStringLiteral("000,000.00"));
    FreqDisplay.setToolTip(QStringLiteral("current frequency (KHz)"));
    OriginalFormHeight.setVisible(false);
    Describe(ModeFrame, "Mode");
    for (int i = 0; i < 10; ++i) Describe(ModeSel[i], kModeCaptions[i], kModeToolTips[i]);
    Describe(VFOFrame, "VFO");
    Describe(VFOASelCmd, "A", "display VFO A");
    Describe(VFOBSelCmd, "B", "display VFO B");
    Describe(VFOEqualCmd, "A  =  B", "set VFO B to VFO A's frequency");
    Describe(VFOXchCmd, "A x B", "exchange VFOs");
    Describe(MainSelCmd, "Main", "display main readout");
    Describe(SubSelCmd, "Sub", "display subreceiver readout");
    Describe(MainSubEqualCmd, "M  =  S", "set subreceiver to main frequency");
    Describe(MainSubXchCmd, "M x S", "exchange main and subreceiver frequencies");
    Describe(XFCCmd, "XFC", "momentarily activate VFO B");
    Describe(SplitBox, "Split", "select split frequency operation (if supported)");
    Describe(DualBox, "Dual receive", "select dual receive (if supported)");
    Describe(HamBandSequence, "Ham bands only", "select ham band QSY sequence");
    Describe(BandUpCmd, "", "QSY up 1 band");
    Describe(BandDownCmd, "", "QSY down 1 band");
    Describe(HzUpCmd, "", "QSY up 10 Hz");
    Describe(HzDownCmd, "", "QSY down 10 Hz");
    Describe(BandSpreadBackground, "", "VFO bandspread - click and hold the button to adjust");
    Describe(BandLo, "0");
    Describe(BandHi, "1000");
    for (int i = 0; i < 3; ++i) XcvrSelButton[i].setCaption(QStringLiteral("xcvr %1").arg(i + 1));
    Describe(PTTFrame, "PTT");
    Describe(PTTonCmd, "On", "click to transmit");
    Describe(PTTOffCmd, "Off", "click to receive");
    Describe(MBCmd, "Mem", "display memory banks");
    Describe(FDCmd, "F && D", "display Filter & Device settings");
    Describe(FilterFrame, "Filters");
    Describe(FilterGroupLabel, "Group");
    FilterGroupCombo.setToolTip(QStringLiteral("select a filter group"));
    Describe(MainFilter1Label, "1st IF");
    MainFilter1Combo.setToolTip(QStringLiteral("select the main receiver's first IF filter bandwidth"));
    Describe(MainFilter2Label, "2nd IF");
    MainFilter2Combo.setToolTip(QStringLiteral("select the main receiver's second IF filter bandwidth"));
    Describe(SubFilterLabel, "Sub");
    SubFilterCombo.setToolTip(QStringLiteral("select the sub-receiver's IF filter bandwidth"));
    Describe(LowCutLabel, "Lo cut");
    LowCutoffCombo.setToolTip(QStringLiteral("select the low cut-off frequency (hz)"));
    Describe(HighCutLabel, "Hi cut");
    HighCutoffCombo.setToolTip(QStringLiteral("select the high cut-off frequency (hz)"));
    Describe(ShiftLabel, "Shift");
    ShiftCombo.setToolTip(QStringLiteral("select the passband shift (hz)"));
    Describe(WidthLabel, "Width");
    WidthCombo.setToolTip(QStringLiteral("select the passband width (hz)"));
    Describe(MemoryBankFrame, "");
    MemoryBankFrame.setVisible(false);
    describeMemoryBank();
    for (int i = 0; i < 3; ++i) {
        DeviceFrame[i].setCaption(QStringLiteral("Device"));
        DeviceFrame[i].setVisible(false);
        DeviceLabel1[i].setCaption(QStringLiteral("Ctrl1"));
        DeviceLabel2[i].setCaption(QStringLiteral("Ctrl2"));
        DeviceLabel3[i].setCaption(QStringLiteral("Ctrl3"));
        // The result of the device table: shown, never typed into.
        for (TextBox* box : {&DeviceControl1[i], &DeviceControl2[i], &DeviceControl3[i]}) box->setLocked(true);
    }
    Describe(UserCommandFrame, "User-defined Command Sequences");
    for (int i = 0; i < 8; ++i) {
        UserSequence[i].setToolTip(QStringLiteral("display CI-V messages"));
        RawCmdLabel[i].setCaption(QStringLiteral("F%1").arg(i + 5));
    }
    Describe(AltCheckBox, "", "click to select or deselect the second bank of command sequences");
    Describe(Label9, "ALT");
    Describe(MessagesCmd, "Msgs", "display CI-V messages");
    Describe(ControlHelpCmd, "Help", "display help panel for Control");
    Describe(ConfigCmd, "Config", "display configuration window");
    Describe(NetServerUnlockCmd, "Unlock",
             "a rig client locked out frequency and mode changes from clients; click to let them tune again");
    NetServerUnlockCmd.setVisible(false);
}

}  // namespace tv
