#include "netserver/ProgramRig.h"

#include "automation/MultiXcvr.h"
#include "core/KavModule.h"
#include "core/Protocol.h"
#include "core/SelectedRadio.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "core/RadioLink.h"
#include "forms/KavMain.h"

#include <QRegularExpression>

#include <algorithm>
#include <functional>
#include <cstdlib>

namespace tv {

namespace {
// The longest change asked for here (a split frequency on a CI-V radio) queues eight records. A client
// is refused before the queue could overflow: an overflow puts a box on the operator's screen.
constexpr int kQueueHeadroom = 16;
// The polling steps between two frequency reports, at most.
constexpr int kPollingSteps = 4;
}  // namespace

ProgramRig::ProgramRig(KavModule& module) : m_(module) {}

void ProgramRig::connect() {
    QObject::connect(&m_.state(), &RadioState::itemChanged, &m_.state(),
                     [this](const QString& item, const QString& text) {
                         if (item == QLatin1String("RadioSMeter"))
                             meter_ = text.toDouble();
                         else if (item == QLatin1String("RadioSMeterString"))
                             meterLabel_ = text;
                     });
    QObject::connect(&m_.state(), &RadioState::frequencyReported, &m_.state(), [this](double) {
        // A report while the change still waits in the queue is from before it.
        if (m_.queue().count() == 0) awaitingReport_ = false;
    });
}

template <class F>
bool ProgramRig::queued(F gesture) {
    if (m_.radio().RadioIndex < 0 || m_.queue().count() > CommandQueue::kBufferSlots - kQueueHeadroom)
        return false;
    const std::uint64_t before = m_.queue().queuedTotal();
    gesture();
    return m_.queue().queuedTotal() != before;
}

RigCaps ProgramRig::caps() const {
    RigCaps c;
    const RadioInfo* r = m_.radio().info();
    if (!r) return c;
    c.radio = true;
    c.name = m_.state().RadioDisplayName.isEmpty() ? r->comboName : m_.state().RadioDisplayName;
    // The modes the main window offers for this radio; PKT only where it is the radio's data mode.
    for (int mode : {RigLSB, RigUSB, RigAM, RigCW, RigFM}) c.modes[size_t(mode)] = true;
    c.modes[RigPKT] = r->dataMode;
    c.dataMode = r->dataMode;
    c.modes[RigRTTY] = r->rtty;
    c.modes[RigWBFM] = r->wbfm;
    c.modes[RigCWR] = r->cwR;
    c.modes[RigRTTYR] = r->rttyR;
    c.vfoAB = r->vfoSel;
    c.mainSub = r->mainSubSel;
    c.split = r->split;
    // Keyed by command, or by a port line when the configuration says so.
    c.ptt = r->ptt || m_.port().DTRControl == 2 || m_.port().RTSControl == 2;
    c.meter = r->sMeter;
    if (const Protocol* protocol = m_.radio().protocol())
        for (int i = 0; i < kRigLevelCount; ++i) c.levels[size_t(i)] = protocol->ReadsLevel(RadioLevel(i));
    // A client waits at most for the changes it may have queued ahead of its own and a round of polls,
    // each a tick apart, and for a family that waits for its replies, that wait once more.
    // (Right after an acknowledgement the tick is a millisecond; the usual poll is the floor.)
    const int tick = std::max(m_.queue().XcvrCmdTimer.Interval(), CommandQueue::kDefaultPollInterval);
    const bool waitsForReplies = m_.radio().traits().framing == Framing::ExpectedLength;
    c.answerTimeoutMs = tick * (kQueueHeadroom + kPollingSteps) +
                        (waitsForReplies ? int(RadioLink::kExpectTimeout.count()) : 0);
    return c;
}

double ProgramRig::frequencyHz() const {
    return m_.state().RadioFreq * 1000.0;
}

int ProgramRig::mode() const {
    // The checked option is the mode on show: a gesture checks it before its command leaves.
    const KavMain& w = m_.main();
    for (int i = 0; i < kRigModeCount; ++i)
        if (w.ModeSel[i].value()) return i;
    return m_.state().RadioMode;
}

RigVfo ProgramRig::vfo() const {
    const RadioInfo* r = m_.radio().info();
    const bool mainSubOnly = r && r->mainSubSel && !r->vfoSel;
    if (m_.state().CurrentVFO == 1) return mainSubOnly ? RigVfo::Sub : RigVfo::B;
    return mainSubOnly ? RigVfo::Main : RigVfo::A;
}

bool ProgramRig::responding() const {
    return m_.radio().RadioIndex >= 0 && m_.state().Responding;
}

bool ProgramRig::split() const {
    return m_.main().SplitBox.checked();
}

double ProgramRig::otherVfoKHz() const {
    return m_.state().CurrentVFO == 1 ? m_.state().VFOAFreq : m_.state().VFOBFreq;
}

double ProgramRig::txFrequencyHz() const {
    const double other = otherVfoKHz();
    if (txSet_ && other == txOtherAtSet_) return txKHz_ * 1000.0;
    // Radios that report both VFOs tell the other one; for the rest there is no other to tell.
    return (other > 0 ? other : m_.state().RadioFreq) * 1000.0;
}

int ProgramRig::txMode() const {
    if (otherVfoKHz() > 0) return m_.state().CurrentVFO == 1 ? m_.state().VFOAMode : m_.state().VFOBMode;
    return mode();
}

bool ProgramRig::ptt() const {
    return m_.state().transmitting();
}

std::optional<double> ProgramRig::level(RigLevel which) {
    // The two lists name the same levels in the same order.
    static_assert(kRigLevelCount == kRadioLevelCount);
    const auto level = RadioLevel(int(which));
    m_.state().WantLevel(level);
    return m_.state().level(level);
}

std::optional<double> ProgramRig::reportedLevel(RigLevel which) const {
    return m_.state().level(RadioLevel(int(which)));
}

int ProgramRig::radioNumber() const {
    return multiXcvr && multiXcvr->SelectedXcvr >= 0 ? multiXcvr->SelectedXcvr + 1 : 1;
}

bool ProgramRig::setFrequency(double hz) {
    const bool ok = queued([&] { m_.queue().SetXcvrFreq(hz / 1000.0); });
    if (ok) awaitingReport_ = true;
    return ok;
}

bool ProgramRig::frequencySettled() const {
    // Without polls, or from a radio that doesn't answer, no report is coming.
    return !awaitingReport_ || !m_.interrogationEnabled() || !responding();
}

int ProgramRig::passbandHz() const {
    const Protocol* protocol = m_.radio().protocol();
    const int shown = mode();
    if (!protocol || shown < 0 || shown >= kRigModeCount) return 0;
    return protocol->FilterGroupWidthHz(shown, m_.main().FilterGroupCombo.text());
}

QList<int> ProgramRig::passbandChoices(int mode) const {
    const Protocol* protocol = m_.radio().protocol();
    QList<int> widths;
    if (!protocol || mode < 0 || mode >= kRigModeCount) return widths;
    const ComboBox& groups = m_.main().FilterGroupCombo;
    for (int i = 0; i < groups.ListCount(); ++i)
        if (const int w = protocol->FilterGroupWidthHz(mode, groups.List(i)); w > 0 && !widths.contains(w)) widths << w;
    std::sort(widths.begin(), widths.end(), std::greater<int>());
    return widths;
}

QString ProgramRig::nearestFilterGroup(int mode, int passbandHz) const {
    const Protocol* protocol = m_.radio().protocol();
    if (!protocol || passbandHz <= 0) return QString();
    const ComboBox& groups = m_.main().FilterGroupCombo;
    QString best;
    int bestDistance = 0;
    for (int i = 0; i < groups.ListCount(); ++i) {
        const int width = protocol->FilterGroupWidthHz(mode, groups.List(i));
        if (width <= 0) continue;
        const int distance = std::abs(width - passbandHz);
        if (best.isEmpty() || distance < bestDistance) {
            best = groups.List(i);
            bestDistance = distance;
        }
    }
    return best;
}

bool ProgramRig::setMode(int mode, int passbandHz) {
    // A passband picks the filter group nearest to it, as the operator would from the list; 0 (the
    // mode's normal width) and -1 (no change) leave the group the mode already has.
    if (mode < 0 || mode >= kRigModeCount) return false;
    const QString group = nearestFilterGroup(mode, passbandHz);
    const bool remembered = m_.modeFiltersEnabled();
    return queued([&] {
        // Where each mode keeps its own group, the group becomes the mode's and its mode command carries
        // it: one frame, and a later mode command doesn't take it back.
        if (!group.isEmpty() && remembered) m_.state().ModeFilters[size_t(mode)] = group;
        OptionButton& option = m_.main().ModeSel[mode];
        if (!option.value())
            option.setValue(true);  // the operator's click: shows the mode and queues it
        else
            m_.queue().SetXcvrMode(mode);
        ComboBox& groups = m_.main().FilterGroupCombo;
        if (group.isEmpty() || groups.text() == group) return;
        if (remembered) {
            m_.SetControlFlag(FlagFilterGroupList, true);  // shown only: the mode command has it
            SetCombo(groups, group);
            m_.SetControlFlag(FlagFilterGroupList, false);
        } else {
            groups.setListIndex(SearchCombo(groups, group));  // the operator's pick, with its own command
        }
    });
}

bool ProgramRig::setVfo(RigVfo vfo) {
    KavMain& w = m_.main();
    CommandButton* button = &w.VFOASelCmd;
    switch (vfo) {
        case RigVfo::A:
            button = &w.VFOASelCmd;
            break;
        case RigVfo::B:
            button = &w.VFOBSelCmd;
            break;
        case RigVfo::Main:
            button = &w.MainSelCmd;
            break;
        case RigVfo::Sub:
            button = &w.SubSelCmd;
            break;
    }
    return queued([&] {
        // Shown first: not every radio reports which VFO it is on.
        m_.state().CurrentVFO = vfo == RigVfo::B || vfo == RigVfo::Sub ? 1 : 0;
        m_.state().UpdateVFOCaption();
        button->click();
    });
}

bool ProgramRig::setSplit(bool on) {
    return queued([&] {
        CheckBox& box = m_.main().SplitBox;
        if (box.checked() != on) {
            // The box shows it; its own click handler must not switch VFOs as for the operator.
            m_.SetControlFlag(FlagSplitBox, true);
            box.setChecked(on);
        }
        m_.queue().SetXcvrSplit(on);
    });
}

bool ProgramRig::setTxFrequency(double hz) {
    const double rx = m_.state().RadioFreq;
    const bool ok = queued([&] { m_.queue().SetXcvrSBFreq(hz / 1000.0); });
    if (!ok) return false;
    // CI-V radios get the split frequency by a visit to the other VFO, which shows it as the frequency
    // for a moment; the receive frequency hasn't changed, and clients poll it.
    if (m_.state().RadioFreq != rx) {
        m_.state().SetFrequency(rx);
    }
    txSet_ = true;
    txKHz_ = hz / 1000.0;
    txOtherAtSet_ = otherVfoKHz();
    return true;
}

bool ProgramRig::setPtt(bool on, const QString& named) {
    // A client that can't be named is a client still, never the operator.
    const QString client = named.isEmpty() ? QStringLiteral("rig client") : named;
    KavMain& w = m_.main();
    CommandButton& button = on ? w.PTTonCmd : w.PTTOffCmd;
    const RadioInfo* r = m_.radio().info();
    if (!r) return false;
    const bool unkeyOthers =
        SettingIsTrue(m_.settings().GetSetting(QStringLiteral("General"), QStringLiteral("NetServerUnkeyOthers"),
                                               QStringLiteral("False")));
    if (!m_.ClientMayTransmit(client, on, unkeyOthers)) {
        m_.common().LogLine(QStringLiteral("RigServer: %1 refused to %2: %3 is transmitting")
                                .arg(client, on ? QStringLiteral("key") : QStringLiteral("unkey"),
                                     m_.TransmitOwner()));
        return false;
    }
    bool done = true;
    m_.SetNextKeyOwner(client);
    if (!r->ptt || !on) {
        // Keyed by a port line: nothing to queue, done at once. An unkey is never refused: a full queue
        // doesn't hold it back either.
        button.click();
    } else {
        done = queued([&] { button.click(); });
    }
    m_.SetNextKeyOwner(QString());
    return done;
}

bool ProgramRig::locked() const {
    return m_.ClientSetsLocked();
}

void ProgramRig::setLocked(bool on, const QString& client) {
    m_.LockClientSets(on, client);
}

void ProgramRig::clientGone(const QString& client) {
    m_.ClientGone(client);
}

bool ProgramRig::sendRaw(const QByteArray& command) {
    // rigctld's clients write a byte as \0xFE; the queue takes such bytes as hexadecimal pairs, and
    // anything else as text for the radio's own language.
    static const QRegularExpression byte(QStringLiteral("^(\\\\0x[0-9A-Fa-f]{1,2})+$"));
    const QString text = QString::fromLatin1(command.trimmed());
    if (text.isEmpty()) return false;
    if (!byte.match(text).hasMatch()) return queued([&] { m_.queue().SetXcvrstring(text); });
    QString hex;
    for (const QString& b : text.split(QStringLiteral("\\0x"), Qt::SkipEmptyParts))
        hex += b.rightJustified(2, QLatin1Char('0')).toUpper();
    return queued([&] { m_.queue().SetXcvrRaw(hex); });
}

}  // namespace tv
