#include "operating/Bands.h"

#include "core/CommandQueue.h"
#include "core/ControlFlags.h"
#include "core/Hooks.h"
#include "core/RadioState.h"
#include "forms/KavMain.h"
#include "operating/Tuning.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tv {

namespace {

const QString kBandsSection = QStringLiteral("Bands");
const QString kGeneralSection = QStringLiteral("General");

struct BandRow {
    std::int32_t mhz;
    const char* wavelength;
    std::int16_t low, high;
};

// Rows 1 to 19; rows 20 to 49 are the thirty MHz of 70 cm, made in code.
constexpr BandRow kRows[] = {
    {1, "160m", 800, 999}, {3, "80m", 500, 1000}, {5, "60m", 332, 405}, {7, "40m", 0, 300},
    {10, "30m", 100, 150}, {14, "20m", 0, 350},   {18, "17m", 68, 168}, {21, "15m", 0, 450},
    {24, "12m", 890, 990}, {28, "10m", 0, 1000},  {29, "10m", 0, 700},  {50, "6m", 0, 1000},
    {51, "6m", 0, 1000},   {52, "6m", 0, 1000},   {53, "6m", 0, 1000},  {144, "2m", 0, 1000},
    {145, "2m", 0, 1000},  {146, "2m", 0, 1000},  {147, "2m", 0, 1000},
};
constexpr int kTableRows = int(sizeof kRows / sizeof kRows[0]);
constexpr int kFirst70cm = 20;
constexpr std::int32_t k70cmBase = 400;  // MHz of a 70 cm row less its index
constexpr std::int32_t kHighestMHz = 999;

QString offsetKey(int index) {
    return QStringLiteral("BandOffsetMemory%1mhz").arg(Bands::BandMHz(index));
}

}  // namespace

Bands::Bands(Common& common, RadioState& state, CommandQueue& queue, UpperHooks& hooks, ControlFlagSet& flags,
             KavMain& main)
    : common_(common), state_(state), queue_(queue), hooks_(hooks), flags_(flags), main_(main) {
    fillEdges();
    // Until the store is read, each band remembers its low edge.
    BandOffsetMemory = BandLowOffset;
}

void Bands::connect() {
    KavMain& w = main_;
    hooks_.InitializeBands = [this] { InitializeBands(); };
    hooks_.SaveBandMemories = [this] { SaveBandMemories(); };
    w.BandUpCmd.MouseDown = [this](int b, int s, double, double) {
        Guard("KavMain.BandUpCmd_MouseDown", [&] { BandUpCmd_MouseDown(b, s); });
    };
    w.BandDownCmd.MouseDown = [this](int b, int s, double, double) {
        Guard("KavMain.BandDownCmd_MouseDown", [&] { BandDownCmd_MouseDown(b, s); });
    };
    w.BandUpCmd.MouseUp = [this](int b, int s, double, double) {
        Guard("KavMain.BandUpCmd_MouseUp", [&] { BandUpCmd_MouseUp(b, s); });
    };
    w.BandDownCmd.MouseUp = [this](int b, int s, double, double) {
        Guard("KavMain.BandDownCmd_MouseUp", [&] { BandDownCmd_MouseUp(b, s); });
    };
    w.HamBandSequence.Click = [this] {
        Guard("KavMain.HamBandSequence_Click", [this] { HamBandSequence_Click(); });
    };
}

std::int32_t Bands::BandMHz(int index) {
    if (index < 1 || index > kBandCount) return 0;
    if (index >= kFirst70cm) return index + k70cmBase;
    return kRows[index - 1].mhz;
}

std::int16_t Bands::BandIndex(std::int32_t mhz) {
    if (mhz >= kFirst70cm + k70cmBase && mhz <= kBandCount + k70cmBase) return std::int16_t(mhz - k70cmBase);
    for (int i = 0; i < kTableRows; ++i)
        if (kRows[i].mhz == mhz) return std::int16_t(i + 1);
    return 0;
}

QString Bands::BandWavelength(int index) {
    if (index < 1 || index > kBandCount) return QString();
    if (index >= kFirst70cm) return QStringLiteral("70cm");
    return QString::fromLatin1(kRows[index - 1].wavelength);
}

void Bands::fillEdges() {
    for (int i = 1; i <= kBandCount; ++i) {
        BandLowOffset[size_t(i)] = i >= kFirst70cm ? 0 : kRows[i - 1].low;
        BandHighOffset[size_t(i)] = i >= kFirst70cm ? 1000 : kRows[i - 1].high;
    }
}

void Bands::InitializeBands() {
    Guard("KavModule.InitializeBands", [this] {
        fillEdges();
        for (int i = 1; i <= kBandCount; ++i) {
            const QString text = common_.settings().GetSetting(kBandsSection, offsetKey(i),
                                                               QString::number(BandLowOffset[size_t(i)]));
            bool ok = false;
            const int value = text.trimmed().toInt(&ok);
            // A bad value stops the load: the bands read so far keep what was stored.
            if (!ok) throw TvError(kErrTypeMismatch, offsetKey(i) + QStringLiteral("=") + text);
            if (value < std::numeric_limits<std::int16_t>::min() ||
                value > std::numeric_limits<std::int16_t>::max())
                throw TvError(kErrOverflow, offsetKey(i) + QStringLiteral("=") + text);
            BandOffsetMemory[size_t(i)] = std::int16_t(value);
        }
    });
}

void Bands::SaveBandMemories() {
    Guard("KavModule.SaveBandMemories", [this] {
        for (int i = 1; i <= kBandCount; ++i)
            common_.settings().SaveSetting(kBandsSection, offsetKey(i),
                                           QString::number(BandOffsetMemory[size_t(i)]));
    });
}

std::int16_t Bands::GetBandOffsetMemory() const {
    if (RadioBandIndex < 1 || RadioBandIndex > kBandCount) return 0;
    return BandOffsetMemory[size_t(RadioBandIndex)];
}

void Bands::NextHamBand() {
    if (RadioBandIndex == kBandCount) return;
    if (RadioBandIndex != 0) {
        ++RadioBandIndex;
        RadioBand = BandMHz(RadioBandIndex);
        if (tuning_) tuning_->SetupBandspread();
        return;
    }
    for (std::int32_t mhz = RadioBand + 1; mhz <= kHighestMHz; ++mhz) {
        if (BandIndex(mhz) > 0) {
            RadioBandIndex = BandIndex(mhz);
            RadioBand = mhz;
            if (tuning_) tuning_->SetupBandspread();
            return;
        }
    }
}

void Bands::PreviousHamBand() {
    if (RadioBandIndex == 1) return;
    if (RadioBandIndex != 0) {
        --RadioBandIndex;
        RadioBand = BandMHz(RadioBandIndex);
        if (tuning_) tuning_->SetupBandspread();
        return;
    }
    for (std::int32_t mhz = RadioBand - 1; mhz > 0; --mhz) {
        if (BandIndex(mhz) > 0) {
            RadioBandIndex = BandIndex(mhz);
            RadioBand = mhz;
            if (tuning_) tuning_->SetupBandspread();
            return;
        }
    }
}

void Bands::NormalizeBandOffset() {
    for (int i = 1; i <= kBandCount; ++i) {
        auto& v = BandOffsetMemory[size_t(i)];
        if (v < BandLowOffset[size_t(i)]) v = BandLowOffset[size_t(i)];
        if (v > BandHighOffset[size_t(i)]) v = BandHighOffset[size_t(i)];
    }
}

void Bands::PlaceFrequency(double freq) {
    // A radio's report is bounded by its own digits; anything beyond lies in no band anyway.
    RadioBand = std::int32_t(
        std::trunc(std::clamp(freq, -CommandQueue::kMaxTunableKHz, CommandQueue::kMaxTunableKHz) / 1000.0));
    RadioBandIndex = BandIndex(RadioBand);
}

void Bands::KeepBandOffsetMemory(double freq) {
    CheckBox& box = main_.HamBandSequence;
    // Unchecked without the flag: the box's handler stores "F", so leaving the ham bands is remembered.
    if (RadioBandIndex < 1) {
        box.setChecked(false);
        return;
    }
    const double offset = std::nearbyint(freq - double(RadioBand) * 1000.0);
    const auto i = size_t(RadioBandIndex);
    if (offset > BandHighOffset[i] || offset < BandLowOffset[i]) {
        box.setChecked(false);
        return;
    }
    BandOffsetMemory[i] = std::int16_t(offset);
}

void Bands::BandUpCmd_MouseDown(int, int shift) {
    common_.DebugLog(QStringLiteral("KavMain.BandUpCmd_MouseDown"));
    bandStep(true, shift);
}

void Bands::BandDownCmd_MouseDown(int, int shift) {
    common_.DebugLog(QStringLiteral("KavMain.BandDownCmd_MouseDown"));
    bandStep(false, shift);
}

void Bands::bandStep(bool up, int shift) {
    // Armed before any work: a mouse-up that runs inside a yield below then keeps the repeat off.
    if (tuning_) {
        tuning_->ArmAutoRepeat();
        tuning_->ShiftState = shift;
    }
    const int action = up ? Tuning::RepeatBandUp : Tuning::RepeatBandDown;
    if (!main_.HamBandSequence.checked()) {
        if (up ? state_.RadioFreq > 998999.0 : state_.RadioFreq <= 1000.0) return;
        queue_.SetXcvrFreq(state_.RadioFreq + (up ? 1000.0 : -1000.0));
        if (tuning_) tuning_->SetAutoRepeat(action, 1000, Tuning::kFirstRepeatDelay);
        return;
    }
    hamStep(up);
    if (tuning_) tuning_->SetAutoRepeat(action, 0, Tuning::kFirstRepeatDelay);
}

void Bands::hamStep(bool up) {
    if (up)
        NextHamBand();
    else
        PreviousHamBand();
    queue_.SetXcvrFreq(double(GetRadioBand()) * 1000.0 + GetBandOffsetMemory());
}

void Bands::RepeatBandStep(bool up, double increment) {
    if (!main_.HamBandSequence.checked()) {
        queue_.AdjustRadioFreq(up ? increment : -increment);
        return;
    }
    hamStep(up);
}

void Bands::BandUpCmd_MouseUp(int, int shift) {
    common_.DebugLog(QStringLiteral("KavMain.BandUpCmd_Up"));
    if (tuning_) tuning_->TuningButton_MouseUp(shift);
}

void Bands::BandDownCmd_MouseUp(int, int shift) {
    common_.DebugLog(QStringLiteral("KavMain.BandDownCmd_MouseUp"));
    if (tuning_) tuning_->TuningButton_MouseUp(shift);
}

void Bands::HamBandSequence_Click() {
    if (flags_.ControlFlag(FlagHamBandSequence)) {
        // The program restored the box at start-up: nothing to store.
        flags_.SetControlFlag(FlagHamBandSequence, false);
        if (tuning_) tuning_->SetupBandspread();
        return;
    }
    if (!main_.HamBandSequence.checked()) {
        common_.settings().SaveSetting(kGeneralSection, QStringLiteral("HamBandSequence"),
                                       QStringLiteral("F"));
    } else {
        common_.settings().SaveSetting(kGeneralSection, QStringLiteral("HamBandSequence"),
                                       QStringLiteral("T"));
        NormalizeBandOffset();
    }
    if (tuning_) tuning_->SetupBandspread();
}

}  // namespace tv
