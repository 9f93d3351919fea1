#pragma once
// The main window as a model: its controls with their design captions and tooltips, and its timers.
// The logic writes to these controls and the Qt view draws them; no behaviour lives here.

#include "forms/Controls.h"
#include "forms/Form.h"

namespace tv {

class KavMain : public Form {
public:
    // The height the window was designed with; the memory bank pane grows it from here.
    static constexpr int kDesignHeight = 420;
    static constexpr int kDesignWidth = 640;

    explicit KavMain(EventLoop& loop);

    // ---- timers ----
    Timer ClockTimer{this, QStringLiteral("ClockTimer")};
    Timer AutoRepeatTimer{this, QStringLiteral("AutoRepeatTimer")};
    Timer ShutdownTimer{this, QStringLiteral("ShutdownTimer")};

    // ---- frequency ----
    TextBox FreqDisplay{this, QStringLiteral("FreqDisplay")};
    Label OriginalFormHeight{this, QStringLiteral("OriginalFormHeight")};

    // ---- mode ----
    Frame ModeFrame{this, QStringLiteral("ModeFrame")};
    OptionGroup modeGroup;
    ControlArray<OptionButton> ModeSel{this, QStringLiteral("ModeSel"), 0, 9, &modeGroup};

    // ---- VFOs ----
    Frame VFOFrame{this, QStringLiteral("VFOFrame")};
    CommandButton VFOASelCmd{this, QStringLiteral("VFOASelCmd")};
    CommandButton VFOBSelCmd{this, QStringLiteral("VFOBSelCmd")};
    CommandButton VFOEqualCmd{this, QStringLiteral("VFOEqualCmd")};
    CommandButton VFOXchCmd{this, QStringLiteral("VFOXchCmd")};
    CommandButton MainSelCmd{this, QStringLiteral("MainSelCmd")};
    CommandButton SubSelCmd{this, QStringLiteral("SubSelCmd")};
    CommandButton MainSubEqualCmd{this, QStringLiteral("MainSubEqualCmd")};
    CommandButton MainSubXchCmd{this, QStringLiteral("MainSubXchCmd")};
    CommandButton XFCCmd{this, QStringLiteral("XFCCmd")};
    CheckBox SplitBox{this, QStringLiteral("SplitBox")};
    CheckBox DualBox{this, QStringLiteral("DualBox")};

    // ---- bands and tuning ----
    CheckBox HamBandSequence{this, QStringLiteral("HamBandSequence")};
    CommandButton BandUpCmd{this, QStringLiteral("BandUpCmd")};
    CommandButton BandDownCmd{this, QStringLiteral("BandDownCmd")};
    CommandButton HzUpCmd{this, QStringLiteral("HzUpCmd")};
    CommandButton HzDownCmd{this, QStringLiteral("HzDownCmd")};
    PictureBox BandSpreadBackground{this, QStringLiteral("BandSpreadBackground")};
    PictureBox BandspreadSlider{this, QStringLiteral("BandspreadSlider")};
    CommandButton BandspreadUpCmd{this, QStringLiteral("BandspreadUpCmd")};
    CommandButton BandspreadDownCmd{this, QStringLiteral("BandspreadDownCmd")};
    ScrollBar Bandspread{this, QStringLiteral("Bandspread")};
    Label BandLo{this, QStringLiteral("BandLo")};
    Label BandHi{this, QStringLiteral("BandHi")};

    // ---- S-meter ----
    PictureBox SMeter{this, QStringLiteral("SMeter")};
    PictureBox SMeterDummy{this, QStringLiteral("SMeterDummy")};
    Label SMeterValue{this, QStringLiteral("SMeterValue")};

    // ---- transceivers ----
    OptionGroup xcvrGroup;
    ControlArray<OptionButton> XcvrSelButton{this, QStringLiteral("XcvrSelButton"), 0, 2, &xcvrGroup};

    // ---- PTT ----
    Frame PTTFrame{this, QStringLiteral("PTTFrame")};
    CommandButton PTTonCmd{this, QStringLiteral("PTTonCmd")};
    CommandButton PTTOffCmd{this, QStringLiteral("PTTOffCmd")};

    // ---- panes ----
    CommandButton MBCmd{this, QStringLiteral("MBCmd")};
    CommandButton FDCmd{this, QStringLiteral("FDCmd")};

    // ---- filters ----
    Frame FilterFrame{this, QStringLiteral("FilterFrame")};
    ComboBox FilterGroupCombo{this, QStringLiteral("FilterGroupCombo")};
    Label FilterGroupLabel{this, QStringLiteral("FilterGroupLabel")};
    ComboBox MainFilter1Combo{this, QStringLiteral("MainFilter1Combo")};
    Label MainFilter1Label{this, QStringLiteral("MainFilter1Label")};
    ComboBox MainFilter2Combo{this, QStringLiteral("MainFilter2Combo")};
    Label MainFilter2Label{this, QStringLiteral("MainFilter2Label")};
    ComboBox SubFilterCombo{this, QStringLiteral("SubFilterCombo")};
    Label SubFilterLabel{this, QStringLiteral("SubFilterLabel")};
    ComboBox LowCutoffCombo{this, QStringLiteral("LowCutoffCombo")};
    Label LowCutLabel{this, QStringLiteral("LowCutLabel")};
    ComboBox HighCutoffCombo{this, QStringLiteral("HighCutoffCombo")};
    Label HighCutLabel{this, QStringLiteral("HighCutLabel")};
    ComboBox ShiftCombo{this, QStringLiteral("ShiftCombo")};
    Label ShiftLabel{this, QStringLiteral("ShiftLabel")};
    ComboBox WidthCombo{this, QStringLiteral("WidthCombo")};
    Label WidthLabel{this, QStringLiteral("WidthLabel")};

    // ---- the shared area: memory bank or filter, device and PTT frames ----
    Frame MemoryBankFrame{this, QStringLiteral("MemoryBankFrame")};
    // ---- the memory bank: ten rows of the bank on view, its column heads, the ten bank buttons ----
    static constexpr int kMemoryRows = 10;
    ControlArray<CommandButton> SelCmd{this, QStringLiteral("SelCmd"), 1, kMemoryRows};
    ControlArray<TextBox> FreqMemoryTextbox{this, QStringLiteral("FreqMemoryTextbox"), 1, kMemoryRows};
    ControlArray<ComboBox> ModeMemoryPulldown{this, QStringLiteral("ModeMemoryPulldown"), 1, kMemoryRows};
    ControlArray<ComboBox> FilterMemoryCombo{this, QStringLiteral("FilterMemoryCombo"), 1, kMemoryRows};
    ControlArray<TextBox> MemoryNotesDisplay{this, QStringLiteral("MemoryNotesDisplay"), 1, kMemoryRows};
    ControlArray<CommandButton> StoreCmd{this, QStringLiteral("StoreCmd"), 1, kMemoryRows};
    Label Label35{this, QStringLiteral("Label35")};
    Label FreqLabel{this, QStringLiteral("FreqLabel")};
    Label ModeLabel{this, QStringLiteral("ModeLabel")};
    Label FilterMemoryLabel{this, QStringLiteral("FilterMemoryLabel")};
    Label MemoryNotesLabel{this, QStringLiteral("MemoryNotesLabel")};
    Label Label38{this, QStringLiteral("Label38")};
    CommandButton ToggleMemoryNotesCmd{this, QStringLiteral("ToggleMemoryNotesCmd")};
    ControlArray<CommandButton> MemoryBankCmd{this, QStringLiteral("MemoryBankCmd"), 0, 9};
    ControlArray<Frame> DeviceFrame{this, QStringLiteral("DeviceFrame"), 0, 2};
    // ---- in each device frame: what the device's controls are to be set to at this frequency ----
    ControlArray<Label> DeviceLabel1{this, QStringLiteral("DeviceLabel1"), 0, 2};
    ControlArray<TextBox> DeviceControl1{this, QStringLiteral("DeviceControl1"), 0, 2};
    ControlArray<Label> DeviceLabel2{this, QStringLiteral("DeviceLabel2"), 0, 2};
    ControlArray<TextBox> DeviceControl2{this, QStringLiteral("DeviceControl2"), 0, 2};
    ControlArray<Label> DeviceLabel3{this, QStringLiteral("DeviceLabel3"), 0, 2};
    ControlArray<TextBox> DeviceControl3{this, QStringLiteral("DeviceControl3"), 0, 2};
    Frame UserCommandFrame{this, QStringLiteral("UserCommandFrame")};

    // ---- user command sequences ----
    ControlArray<CommandButton> UserSequence{this, QStringLiteral("UserSequence"), 0, 7};
    ControlArray<Label> RawCmdLabel{this, QStringLiteral("RawCmdLabel"), 0, 7};
    CheckBox AltCheckBox{this, QStringLiteral("AltCheckBox")};
    Label Label9{this, QStringLiteral("Label9")};

    // ---- the other windows ----
    CommandButton MessagesCmd{this, QStringLiteral("MessagesCmd")};
    CommandButton ControlHelpCmd{this, QStringLiteral("ControlHelpCmd")};
    CommandButton ConfigCmd{this, QStringLiteral("ConfigCmd")};

    // ---- the rig server for other programs: where it listens, how many are connected ----
    Label NetServerLabel{this, QStringLiteral("NetServerLabel")};
    // Shown while clients' frequency and mode sets are locked out: lifts the lock.
    CommandButton NetServerUnlockCmd{this, QStringLiteral("NetServerUnlockCmd")};

    // The mode captions as designed, by mode number.
    static const char* const kModeCaptions[10];
    static const char* const kModeToolTips[10];

private:
    void describeMemoryBank();
};

}  // namespace tv
