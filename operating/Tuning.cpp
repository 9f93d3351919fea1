#include "operating/Tuning.h"

#include "core/CommandQueue.h"
#include "core/ControlFlags.h"
#include "core/Hooks.h"
#include "core/RadioState.h"
#include "core/SelectedRadio.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "operating/Bands.h"
#include "operating/FrequencyDisplay.h"
#include "platform/EventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace tv {

namespace {

const QString kGeneralSection = QStringLiteral("General");

using Mouse = std::function<void(int, int, double, double)>;

// A mouse event of a control, run under its handler's label.
template <class F>
Mouse mouse(const char* label, F body) {
    return [label, body](int b, int s, double x, double y) { Guard(label, [&] { body(b, s, x, y); }); };
}

}  // namespace

Tuning::Tuning(Common& common, RadioState& state, SelectedRadio& radio, CommandQueue& queue,
               UpperHooks& hooks, ControlFlagSet& flags, KavMain& main, KavConfig& config, Bands& bands)
    : common_(common),
      state_(state),
      radio_(radio),
      queue_(queue),
      hooks_(hooks),
      flags_(flags),
      main_(main),
      config_(config),
      bands_(bands) {
    bands_.useTuning(*this);
}

void Tuning::connect() {
    KavMain& w = main_;
    hooks_.SaveAutoRepeatRate = [this] { SaveAutoRepeatRate(); };
    // A held button must not keep sending what the radio refuses.
    QObject::connect(&state_, &RadioState::commandRefused, &state_, [this] { StopAutoRepeat(); });
    w.AutoRepeatTimer.TimerEvent = [this] {
        Guard("KavMain.AutoRepeatTimer_Timer", [this] { HandleAutoRepeat(); });
    };

    w.HzUpCmd.MouseDown =
        mouse("KavMain.HzUpCmd_MouseDown", [this](int b, int s, double, double) { HzUpCmd_MouseDown(b, s); });
    w.HzDownCmd.MouseDown = mouse("KavMain.HzDownCmd_MouseDown",
                                  [this](int b, int s, double, double) { HzDownCmd_MouseDown(b, s); });
    w.BandspreadUpCmd.MouseDown =
        mouse("KavMain.BandspreadUpCmd_MouseDown",
              [this](int b, int s, double, double) { BandspreadUpCmd_MouseDown(b, s); });
    w.BandspreadDownCmd.MouseDown =
        mouse("KavMain.BandspreadDownCmd_MouseDown",
              [this](int b, int s, double, double) { BandspreadDownCmd_MouseDown(b, s); });
    w.HzUpCmd.MouseUp = mouse("KavMain.HzUpCmd_MouseUp", [this](int, int s, double, double) {
        common_.DebugLog(QStringLiteral("HzUpCmd_MouseUp"));
        TuningButton_MouseUp(s);
    });
    w.HzDownCmd.MouseUp =
        mouse("KavMain.HzDownCmd_MouseUp", [this](int, int s, double, double) { TuningButton_MouseUp(s); });
    w.BandspreadUpCmd.MouseUp = mouse("KavMain.BandspreadUpCmd_MouseUp",
                                      [this](int, int s, double, double) { TuningButton_MouseUp(s); });
    w.BandspreadDownCmd.MouseUp = mouse("KavMain.BandspreadDownCmd_MouseUp",
                                        [this](int, int s, double, double) { TuningButton_MouseUp(s); });

    w.Bandspread.Change = [this] { Guard("KavMain.Bandspread_Change", [this] { Bandspread_Change(); }); };
    w.Bandspread.Scroll = [this] { Guard("KavMain.Bandspread_Scroll", [this] { Bandspread_Scroll(); }); };
    w.Bandspread.GotFocus = [this] { Guard("KavMain.Bandspread_GotFocus", [this] { FocusRule(); }); };

    w.BandSpreadBackground.MouseDown =
        mouse("KavMain.BandSpreadBackground_MouseDown",
              [this](int b, int s, double x, double y) { BandSpreadBackground_MouseDown(b, s, x, y); });
    w.BandSpreadBackground.MouseMove =
        mouse("KavMain.BandSpreadBackground_MouseMove",
              [this](int b, int s, double x, double y) { BandSpreadBackground_MouseMove(b, s, x, y); });
    w.BandSpreadBackground.MouseUp =
        mouse("KavMain.BandSpreadBackground_MouseUp",
              [this](int b, int s, double x, double y) { BandSpreadBackground_MouseUp(b, s, x, y); });
    // The slider lies on the background; its own X counts from its left edge in the same units.
    w.BandspreadSlider.MouseDown =
        mouse("KavMain.BandspreadSlider_MouseDown", [this](int b, int s, double x, double y) {
            BandSpreadBackground_MouseDown(b, s, SliderLeft + x, y);
        });
    w.BandspreadSlider.MouseMove =
        mouse("KavMain.BandspreadSlider_MouseMove", [this](int b, int s, double x, double y) {
            BandSpreadBackground_MouseMove(b, s, SliderLeft + x, y);
        });
    w.BandspreadSlider.MouseUp = mouse(
        "KavMain.BandspreadSlider_MouseUp",
        [this](int b, int s, double x, double y) { BandSpreadBackground_MouseUp(b, s, SliderLeft + x, y); });

    w.FreqDisplay.KeyDown = [this](int& key, int shift) {
        Guard("KavMain.FreqDisplay_KeyDown", [&] { FreqDisplay_KeyDown(key, shift); });
    };
    w.FreqDisplay.KeyUp = [this](int& key, int shift) {
        Guard("KavMain.FreqDisplay_KeyUp", [&] { FreqDisplay_KeyUp(key, shift); });
    };

    KavConfig& c = config_;
    c.AutoRepeatScroll.Scroll = [this] {
        Guard("KavConfig.AutoRepeatScroll_Scroll", [this] { SaveAutoRepeatRate(); });
    };
    c.AutoRepeatScroll.Change = [this] {
        Guard("KavConfig.AutoRepeatScroll_Change", [this] { SaveAutoRepeatRate(); });
    };
}

// ---- bandspread ----

int Tuning::BandspreadMin() const {
    return main_.Bandspread.min();
}
int Tuning::BandspreadMax() const {
    return main_.Bandspread.max();
}

void Tuning::SetupBandspread() {
    KavMain& w = main_;
    flags_.SetControlFlag(FlagBandspread, true);
    int lo = 0, hi = 999;
    const int i = bands_.RadioBandIndex;
    if (i >= 1 && i <= Bands::kBandCount && w.HamBandSequence.checked()) {
        lo = bands_.BandLowOffset[size_t(i)];
        hi = bands_.BandHighOffset[size_t(i)] - 1;
    }
    // A new range may move the value and raise Change, which consumes the flag: raise it again.
    w.Bandspread.setRange(lo, hi);
    w.BandLo.setCaption(QString::number(lo));
    ScaleLeft = lo;
    flags_.SetControlFlag(FlagBandspread, true);
    w.BandHi.setCaption(QString::number(hi));
    const double span = double(hi - lo + 1);
    ScaleWidth = span * 1.1;
    w.BandSpreadBackground.setScale(ScaleWidth, w.BandSpreadBackground.scaleHeight());
    SliderWidth = span * 0.1;
    moveSlider(SliderLeft);
    common_.loop().yield();
    flags_.SetControlFlag(FlagBandspread, false);
}

void Tuning::PositionBandspread(int offset) {
    KavMain& w = main_;
    offset = std::min(offset, w.Bandspread.max());
    offset = std::max(offset, w.Bandspread.min());
    // When the value stays, no Change consumes the flag; the next SetupBandspread clears it.
    flags_.SetControlFlag(FlagBandspread, true);
    w.Bandspread.setValue(offset);
    moveSlider(offset);
}

void Tuning::moveSlider(double left) {
    SliderLeft = left;
    PictureBox& s = main_.BandspreadSlider;
    s.setBounds(int(std::floor(left)), s.top(), int(std::lround(SliderWidth)), s.height());
}

void Tuning::Bandspread_Change() {
    if (flags_.ControlFlag(FlagBandspread)) {
        flags_.SetControlFlag(FlagBandspread, false);
        return;
    }
    queue_.SetXcvrFreq(double(bands_.GetRadioBand()) * 1000.0 + main_.Bandspread.value());
}

void Tuning::Bandspread_Scroll() {
    // Only the display follows the thumb; the command goes at release (Change).
    showPreview(double(bands_.GetRadioBand()) * 1000.0 + main_.Bandspread.value(),
                "KavMain.Bandspread_Scroll: ");
}

void Tuning::showPreview(double freq, const char* logLabel) {
    if (freq < 0) freq = 0;
    const QString text = display_ ? display_->PreviewText(freq) : FormatFrequency(freq, 2, QLocale::system());
    main_.FreqDisplay.setText(text);
    if (logLabel) common_.DebugLog(QString::fromLatin1(logLabel) + text);
}

void Tuning::pageStep(bool up, double step, bool fromRepeat) {
    const int lo = BandspreadMin(), hi = BandspreadMax();
    int offset = int(std::floor(up ? SliderLeft + step : SliderLeft - step));
    if (up && offset > hi) {
        offset = hi;
        if (fromRepeat) StopAutoRepeat();
    } else if (!up && offset < lo) {
        offset = lo;
        if (fromRepeat) StopAutoRepeat();
    }
    if (!fromRepeat) SetAutoRepeat(up ? PageUp : PageDown, step, kFirstRepeatDelay);
    queue_.SetXcvrFreq(double(bands_.GetRadioBand()) * 1000.0 + offset);
}

void Tuning::BandSpreadBackground_MouseDown(int, int shift, double x, double) {
    ShiftState = shift;
    // No arming here: SetAutoRepeat does nothing, so one press is one page.
    const double step = double(BandspreadMax() - BandspreadMin() + 1) * 0.1;
    if (x > SliderLeft + SliderWidth) {
        pageStep(true, step, false);
        SliderGrabOffset = -1;
    } else if (x < SliderLeft) {
        pageStep(false, step, false);
        SliderGrabOffset = -1;
    } else {
        SliderGrabOffset = x - SliderLeft;
    }
}

void Tuning::BandSpreadBackground_MouseMove(int, int shift, double x, double) {
    ShiftState = shift;
    if (SliderGrabOffset == -1) return;
    double left = std::floor(x - SliderGrabOffset);
    left = std::max(left, double(BandspreadMin()));
    left = std::min(left, double(BandspreadMax()));
    moveSlider(left);
    // A drag shows where it would go; nothing reaches the radio until the release.
    showPreview(double(bands_.GetRadioBand()) * 1000.0 + left, nullptr);
}

void Tuning::BandSpreadBackground_MouseUp(int, int, double, double) {
    StopAutoRepeat();
    if (SliderGrabOffset >= 0) {
        if (flags_.ControlFlag(FlagBandspread))
            flags_.SetControlFlag(FlagBandspread, false);
        else
            queue_.SetXcvrFreq(double(bands_.GetRadioBand()) * 1000.0 + std::floor(SliderLeft));
    }
    SliderGrabOffset = -1;
    FocusRule();
}

// ---- auto-repeat ----

void Tuning::SetAutoRepeat(int action, double increment, int interval) {
    if (!AutoRepeatArmed) return;
    AutoRepeatAction = action;
    AutoRepeatIncrement = increment;
    Timer& t = main_.AutoRepeatTimer;
    t.setInterval(interval);
    t.setEnabled(true);
}

void Tuning::StopAutoRepeat() {
    main_.AutoRepeatTimer.setEnabled(false);
}

std::int16_t Tuning::AutoRepeatFast() const {
    const int rate = std::max(1, config_.AutoRepeatScroll.value());
    return std::int16_t(std::nearbyint(1000.0 / rate));
}

void Tuning::SaveAutoRepeatRate() {
    common_.settings().SaveSetting(kGeneralSection, QStringLiteral("AutoRepeat"),
                                   QString::number(config_.AutoRepeatScroll.value()));
}

void Tuning::HandleAutoRepeat() {
    // The first delay is over: from now on the operator's rate.
    main_.AutoRepeatTimer.setInterval(AutoRepeatFast());
    switch (AutoRepeatAction) {
        case RepeatUp:
            repeatFineStep(true);
            break;
        case RepeatDown:
            repeatFineStep(false);
            break;
        case RepeatBandUp:
            bands_.RepeatBandStep(true, AutoRepeatIncrement);
            break;
        case RepeatBandDown:
            bands_.RepeatBandStep(false, AutoRepeatIncrement);
            break;
        case PageUp:
            pageStep(true, AutoRepeatIncrement, true);
            break;
        case PageDown:
            pageStep(false, AutoRepeatIncrement, true);
            break;
        default:
            break;
    }
}

void Tuning::repeatFineStep(bool up) {
    // The model decides, not the modifiers: a shifted press on this radio repeats with its step key.
    if (stepsWithOwnCommand())
        queue_.StepXcvrFreq(up);
    else
        queue_.AdjustRadioFreq(up ? AutoRepeatIncrement : -AutoRepeatIncrement);
}

bool Tuning::stepsWithOwnCommand() const {
    const Protocol* p = radio_.protocol();
    return p && p->traits().stepsWithOwnCommand;
}

// ---- buttons ----

double Tuning::HzIncrement(int shift) {
    switch (shift) {
        case kShift:
            return 0.1;
        case kCtrl:
            return 1;
        case kAlt:
            return 10;
        case kCtrl | kAlt:
            return 100;
        default:
            return 0.01;
    }
}

double Tuning::BandspreadIncrement(int shift) {
    switch (shift) {
        case kShift:
            return 5;
        case kCtrl:
            return 10;
        case kAlt:
            return 50;
        case kCtrl | kAlt:
            return 100;
        default:
            return 1;
    }
}

void Tuning::HzUpCmd_MouseDown(int, int shift) {
    hzStep(true, shift);
}
void Tuning::HzDownCmd_MouseDown(int, int shift) {
    hzStep(false, shift);
}

void Tuning::hzStep(bool up, int shift) {
    ArmAutoRepeat();
    ShiftState = shift;
    const double increment = HzIncrement(shift);
    const int action = up ? RepeatUp : RepeatDown;
    if (shift == 0 && stepsWithOwnCommand()) {
        // Both directions log under the up button's name; the log's readers know it so.
        common_.DebugLog(up ? QStringLiteral("HzUpCmd_MouseDown UP for Yaesu FT000D")
                            : QStringLiteral("HzUpCmd_MouseDown DOWN for Yaesu FT000D"));
        queue_.StepXcvrFreq(up);
        SetAutoRepeat(action, 0.01, kFirstRepeatDelay);
        return;
    }
    common_.DebugLog((up ? QStringLiteral("HzUpCmd_MouseDown, increment = ")
                         : QStringLiteral("HzDownCmd_MouseDown, increment = ")) +
                     QString::number(increment));
    queue_.AdjustRadioFreq(up ? increment : -increment);
    SetAutoRepeat(action, increment, kFirstRepeatDelay);
}

void Tuning::BandspreadUpCmd_MouseDown(int, int shift) {
    bandspreadStep(true, shift);
}
void Tuning::BandspreadDownCmd_MouseDown(int, int shift) {
    bandspreadStep(false, shift);
}

void Tuning::bandspreadStep(bool up, int shift) {
    ArmAutoRepeat();
    ShiftState = shift;
    const double increment = BandspreadIncrement(shift);
    queue_.AdjustRadioFreq(up ? increment : -increment);
    SetAutoRepeat(up ? RepeatUp : RepeatDown, increment, kFirstRepeatDelay);
}

void Tuning::TuningButton_MouseUp(int shift) {
    DisarmAutoRepeat();
    ShiftState = shift;
    StopAutoRepeat();
    FocusRule();
}

void Tuning::FocusRule() {
    TextBox& f = main_.FreqDisplay;
    if (f.visible()) f.SetFocus();
}

// ---- keys of the frequency box ----

void Tuning::FreqDisplay_KeyDown(int& keyCode, int shift) {
    KeyShiftState = shift;
    const double increment = HzIncrement(shift);
    KavMain& w = main_;
    if (keyCode == kAltKey) {
        w.AltCheckBox.setChecked(true);
    } else if (keyCode == kKeyPageUp) {
        queue_.AdjustRadioFreq(increment);
    } else if (keyCode == kKeyPageDown) {
        queue_.AdjustRadioFreq(-increment);
    } else if (keyCode == kKeyInsert) {
        if (display_) display_->SelectAll();
    } else if (keyCode == kKeyBack) {
        if (display_) display_->LeftDelete();
    } else if (keyCode == kKeyF2) {
        if (DoRcv) DoRcv();
        keyCode = 0;  // done here: the window's key map mustn't act on it again
    } else if (keyCode == kKeyF4) {
        if (DoXmit) DoXmit();
        keyCode = 0;
    } else if (keyCode >= kKeyF5 && keyCode <= kKeyF12) {
        const int n = keyCode - kKeyF5;
        if (shift == kCtrl) {
            if (EditSequence) EditSequence(n);
        } else {
            hooks_.ActivateSequence(n);
        }
    }
}

void Tuning::FreqDisplay_KeyUp(int& keyCode, int) {
    if (keyCode == kAltKey) main_.AltCheckBox.setChecked(false);
}

}  // namespace tv
