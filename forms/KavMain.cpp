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

namespace {
void set(Control& c, const char* caption, const char* tip = nullptr) {
    c.setCaption(QString::fromUtf8(caption));
    if (tip) c.setToolTip(QString::fromUtf8(tip));
}
}  // namespace

KavMain::KavMain(EventLoop& loop) : Form(loop, QStringLiteral("KavMain"), QStringLiteral("Tolvane"), 1) {
    setWidth(kDesignWidth);
    setHeight(kDesignHeight);
    FreqDisplay.setText(QStringLiteral("000,000.00"));
    FreqDisplay.setToolTip(QStringLiteral("current frequency (KHz)"));
    OriginalFormHeight.setVisible(false);
    set(ModeFrame, "Mode");
    for (int i = 0; i < 10; ++i) set(ModeSel[i], kModeCaptions[i], kModeToolTips[i]);
    set(VFOFrame, "VFO");
    set(VFOASelCmd, "A", "display VFO A");
    set(VFOBSelCmd, "B", "display VFO B");
    set(VFOEqualCmd, "A  =  B", "set VFO B to VFO A's frequency");
    set(VFOXchCmd, "A x B", "exchange VFOs");
    set(MainSelCmd, "Main", "display main readout");
    set(SubSelCmd, "Sub", "display subreceiver readout");
    set(MainSubEqualCmd, "M  =  S", "set subreceiver to main frequency");
    set(MainSubXchCmd, "M x S", "exchange main and subreceiver frequencies");
    set(XFCCmd, "XFC", "momentarily activate VFO B");
    set(SplitBox, "Split", "select split frequency operation (if supported)");
    set(DualBox, "Dual receive", "select dual receive (if supported)");
    set(HamBandSequence, "Ham bands only", "select ham band QSY sequence");
    set(BandUpCmd, "", "QSY up 1 band");
    set(BandDownCmd, "", "QSY down 1 band");
    set(HzUpCmd, "", "QSY up 10 Hz");
    set(HzDownCmd, "", "QSY down 10 Hz");
    set(BandSpreadBackground, "", "VFO bandspread - click and hold the button to adjust");
    set(BandLo, "0");
    set(BandHi, "1000");
    for (int i = 0; i < 3; ++i) XcvrSelButton[i].setCaption(QStringLiteral("xcvr %1").arg(i + 1));
    set(PTTFrame, "PTT");
    set(PTTonCmd, "On", "click to transmit");
    set(PTTOffCmd, "Off", "click to receive");
    set(MBCmd, "Mem", "display memory banks");
    set(FDCmd, "F && D", "display Filter & Device settings");
    set(FilterFrame, "Filters");
    set(FilterGroupLabel, "Group");
    FilterGroupCombo.setToolTip(QStringLiteral("select a filter group"));
    set(MainFilter1Label, "1st IF");
    MainFilter1Combo.setToolTip(QStringLiteral("select the main receiver's first IF filter bandwidth"));
    set(MainFilter2Label, "2nd IF");
    MainFilter2Combo.setToolTip(QStringLiteral("select the main receiver's second IF filter bandwidth"));
    set(SubFilterLabel, "Sub");
    SubFilterCombo.setToolTip(QStringLiteral("select the sub-receiver's IF filter bandwidth"));
    set(LowCutLabel, "Lo cut");
    LowCutoffCombo.setToolTip(QStringLiteral("select the low cut-off frequency (hz)"));
    set(HighCutLabel, "Hi cut");
    HighCutoffCombo.setToolTip(QStringLiteral("select the high cut-off frequency (hz)"));
    set(ShiftLabel, "Shift");
    ShiftCombo.setToolTip(QStringLiteral("select the passband shift (hz)"));
    set(WidthLabel, "Width");
    WidthCombo.setToolTip(QStringLiteral("select the passband width (hz)"));
    set(MemoryBankFrame, "");
    MemoryBankFrame.setVisible(false);
    for (int i = 0; i < 3; ++i) {
        DeviceFrame[i].setCaption(QStringLiteral("Device"));
        DeviceFrame[i].setVisible(false);
    }
    set(UserCommandFrame, "User-defined Command Sequences");
    for (int i = 0; i < 8; ++i) {
        UserSequence[i].setToolTip(QStringLiteral("display CI-V messages"));
        RawCmdLabel[i].setCaption(QStringLiteral("F%1").arg(i + 5));
    }
    set(AltCheckBox, "", "click to select or deselect the second bank of command sequences");
    set(Label9, "ALT");
    set(MessagesCmd, "Msgs", "display CI-V messages");
    set(ControlHelpCmd, "Help", "display help panel for Control");
    set(ConfigCmd, "Config", "display configuration window");
}

}  // namespace tv
