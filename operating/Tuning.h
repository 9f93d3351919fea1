#pragma once
// Tuning gestures: the 10 Hz buttons, the bandspread (scroll bar, drawn slider and its own buttons),
// the keys of the frequency box, and the auto-repeat of a held button. A gesture ends in SetXcvrFreq,
// AdjustRadioFreq or StepXcvrFreq; drags change only the display until they end, so the link isn't
// flooded.

#include <QString>

#include <cstdint>
#include <functional>

namespace tv {

class Bands;
class FrequencyDisplay;
class Common;
class RadioState;
class SelectedRadio;
class CommandQueue;
struct ControlFlagSet;
class KavMain;
class KavConfig;
struct UpperHooks;

class Tuning {
  public:
    // Auto-repeat actions.
    enum Action : int {
        RepeatUp = 1,
        RepeatDown = 2,
        RepeatBandUp = 3,
        RepeatBandDown = 4,
        PageUp = 5,
        PageDown = 6
    };
    static constexpr int kFirstRepeatDelay = 500;  // ms before a held button starts repeating
    static constexpr int kAltKey = 18;

    Tuning(Common& common, RadioState& state, SelectedRadio& radio, CommandQueue& queue, UpperHooks& hooks,
           ControlFlagSet& flags, KavMain& main, KavConfig& config, Bands& bands);
    Tuning(const Tuning&) = delete;
    Tuning& operator=(const Tuning&) = delete;

    void useDisplay(FrequencyDisplay& display) { display_ = &display; }
    void connect();

    // ---- bandspread ----
    void SetupBandspread();
    // After a frequency change: the scroll bar and the slider to the offset (flag raised first).
    void PositionBandspread(int offset);
    int BandspreadMin() const;
    int BandspreadMax() const;

    // ---- auto-repeat ----
    void ArmAutoRepeat() { AutoRepeatArmed = true; }
    void DisarmAutoRepeat() { AutoRepeatArmed = false; }
    void SetAutoRepeat(int action, double increment, int interval);
    void HandleAutoRepeat();
    std::int16_t AutoRepeatFast() const;
    void SaveAutoRepeatRate();
    void StopAutoRepeat();

    // Focus goes back to the frequency box.
    void FocusRule();

    // Increments by modifier mask: for the 10 Hz buttons and Page keys, and for the bandspread buttons.
    static double HzIncrement(int shift);
    static double BandspreadIncrement(int shift);

    // ---- handlers ----
    void HzUpCmd_MouseDown(int button, int shift);
    void HzDownCmd_MouseDown(int button, int shift);
    void BandspreadUpCmd_MouseDown(int button, int shift);
    void BandspreadDownCmd_MouseDown(int button, int shift);
    // Mouse-up of the four tuning buttons.
    void TuningButton_MouseUp(int shift);
    void Bandspread_Change();
    void Bandspread_Scroll();
    void BandSpreadBackground_MouseDown(int button, int shift, double x, double y);
    void BandSpreadBackground_MouseMove(int button, int shift, double x, double y);
    void BandSpreadBackground_MouseUp(int button, int shift, double x, double y);
    void FreqDisplay_KeyDown(int& keyCode, int shift);
    void FreqDisplay_KeyUp(int& keyCode, int shift);

    bool AutoRepeatArmed = false;
    int AutoRepeatAction = 0;
    double AutoRepeatIncrement = 0;
    // X minus the slider's left where a drag began; -1 when no drag is on.
    double SliderGrabOffset = -1;
    // The last modifier mask of a tuning gesture.
    int ShiftState = 0;
    int KeyShiftState = 0;
    // The drawn bandspread in kHz offset: the background's left edge and width, the slider's left and
    // width (the controls hold whole numbers only).
    double ScaleLeft = 0, ScaleWidth = 1100;
    double SliderLeft = 0, SliderWidth = 100;

    // Owned by other parts; not called when unset.
    std::function<void()> DoRcv, DoXmit;
    std::function<void(int)> EditSequence;

  private:
    void hzStep(bool up, int shift);
    void bandspreadStep(bool up, int shift);
    void repeatFineStep(bool up);
    void pageStep(bool up, double step, bool fromRepeat);
    void moveSlider(double left);
    void showPreview(double freq, const char* logLabel);
    bool stepsWithOwnCommand() const;

    Common& common_;
    RadioState& state_;
    SelectedRadio& radio_;
    CommandQueue& queue_;
    UpperHooks& hooks_;
    ControlFlagSet& flags_;
    KavMain& main_;
    KavConfig& config_;
    Bands& bands_;
    FrequencyDisplay* display_ = nullptr;
};

}  // namespace tv
