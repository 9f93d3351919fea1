#include "core/RadioState.h"

#include <cmath>

#include "services/Common.h"

namespace tv {

RadioState::RadioState(Common& common, QObject* parent) : QObject(parent), common_(common) {}

void RadioState::SetFrequency(double kHz) {
    RadioFreq = kHz;
    emit frequencyChanged(kHz);
}

void RadioState::SetDisplayName(const QString& name) { RadioDisplayName = name; }

void RadioState::SetTransmitting(bool on) {
    if (transmitting_ == on) return;
    transmitting_ = on;
    emit transmittingChanged(on);
}

void RadioState::UpdateRadioFreq(double kHz) {
    if (common_.DebugEnabled())
        common_.DebugLog(QStringLiteral("KavModule.UpdateRadioFreq: ") + QString::number(kHz, 'g', 15));
    emit frequencyReported(kHz);
    // An equal report does nothing at all: a steady polled frequency costs no display work.
    if (RadioFreq == kHz) return;
    SetFrequency(kHz);
}

void RadioState::UpdateXcvrMode(int mode) {
    if (mode < 0 || mode > 9) return;
    SetItem(QStringLiteral("Mode"), LogModeName(mode));
    SetItem(QStringLiteral("RadioMode"), ModeName(mode));
    // Stored before anyone hears of it: a listener that acts on the mode (a memory's filter group that
    // waited for it) must act on this one, not the one before.
    const bool changed = RadioMode != mode;
    RadioMode = mode;
    emit modeReported(mode);
    if (changed) emit modeChanged(mode);
}

void RadioState::UpdateVFO() {
    if (CurrentVFO) {
        UpdateRadioFreq(VFOBFreq);
        UpdateXcvrMode(VFOBMode);
    } else {
        UpdateRadioFreq(VFOAFreq);
        UpdateXcvrMode(VFOAMode);
    }
    UpdateVFOCaption();
}

void RadioState::UpdateVFOCaption() { emit vfoChanged(CurrentVFO); }

void RadioState::ReportSplit(bool on) { emit splitReported(on); }
void RadioState::ReportDual(bool on) { emit dualReported(on); }
void RadioState::ReportControlReleased() { emit controlReleased(); }
void RadioState::ReportMeter(double fraction) { emit meterReported(fraction); }

// Three reads an ask: a client asking once a second keeps the level fresh on the usual poll rate, and
// reads stop a few polls after it stops asking.
constexpr int kReadsPerAsk = 3;

void RadioState::WantLevel(RadioLevel level) { levelReads_[size_t(level)] = kReadsPerAsk; }

std::optional<RadioLevel> RadioState::TakeWantedLevel() {
    for (int i = 0; i < kRadioLevelCount; ++i) {
        const int at = (nextLevel_ + i) % kRadioLevelCount;
        if (levelReads_[size_t(at)] > 0) {
            --levelReads_[size_t(at)];
            nextLevel_ = (at + 1) % kRadioLevelCount;
            return RadioLevel(at);
        }
    }
    return std::nullopt;
}

void RadioState::ReportLevel(RadioLevel level, double value) {
    if (std::isfinite(value)) levels_[size_t(level)] = value;
}
void RadioState::ReportFilterGroup(int group) { emit filterGroupReported(group); }
void RadioState::ReportRefusal(const QString& command) { emit commandRefused(command); }
void RadioState::ReportLinkFault() { emit linkFaultChanged(); }
void RadioState::ReportIdentity(const RadioIdentity& identity) {
    RadioDisplayName = identity.displayName;
    emit identified(identity);
}

void RadioState::ReportFirstFrequency() {
    if (focusGiven_) return;
    focusGiven_ = true;
    emit frequencyFocusWanted();
}

void RadioState::ReportAnswered() {
    pollsUnanswered_ = 0;
    if (Responding) return;
    Responding = true;
    emit respondingChanged(true);
}

void RadioState::ReportSilent() {
    if (!Responding) return;
    Responding = false;
    emit respondingChanged(false);
}

void RadioState::ReportPassbandModel(const PassbandModel* model) { emit passbandModelChosen(model); }
void RadioState::ReportPassbandMode() { emit passbandLayoutDue(); }
void RadioState::ReportPassbandText(FilterSelector list, const QString& text) { emit passbandTextReported(list, text); }
void RadioState::ReportPassbandCode(FilterSelector list, int code) { emit passbandCodeReported(list, code); }

void RadioState::ReportFilterGroupModel(const FilterGroupModel* model) { emit filterGroupModelChosen(model); }

void RadioState::ReportFilterStatus(const FilterStatus& status) { emit filterStatusReported(status); }

void RadioState::SetItem(const QString& item, const QString& value) { emit itemChanged(item, value); }

}  // namespace tv
