#include "core/CommandQueue.h"

#include "core/CoreView.h"
#include "core/Hooks.h"
#include "core/Protocol.h"
#include "core/RadioLink.h"
#include "core/RadioState.h"
#include "core/SelectedRadio.h"
#include "platform/Dialogs.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <algorithm>
#include <cmath>

namespace tv {

namespace {
QString num(double v) { return QString::number(v, 'g', 15); }
}  // namespace

CommandQueue::CommandQueue(Common& common, SelectedRadio& radio, RadioState& state, RadioLink& link, CoreView& view,
                           UpperHooks& hooks)
    : XcvrCmdTimer(common.loop(), QStringLiteral("XcvrCmdTimer")),
      common_(common),
      radio_(radio),
      state_(state),
      link_(link),
      view_(view),
      hooks_(hooks) {
    XcvrCmdTimer.TimerEvent = [this] { ExecuteNextXcvrCmd(); };
    link_.onWaitEnded = [this] { ReplyWaitEnded(); };
}

bool CommandQueue::EnqueueXcvrCmd(std::int16_t theCmd, double theFreq, std::int16_t theMode,
                                  std::int16_t theArg, std::int16_t theArg2, const QString& theRawCmd) {
    bool queuedIt = false;
    Guard("KavModule.EnqueueXcvrCmd", [&] {
        if (radio_.RadioIndex < 0) return;
        if (radio_.traits().addressed && view_.addressText().trimmed().isEmpty()) return;
        if (XcvrCmdCount >= kBufferSlots) {
            // Each one in the log; on screen a box already up counts it rather than stacking another.
            common_.LogLine(QStringLiteral("KavModule.EnqueueXcvrCmd: transceiver command buffer overflow"));
            common_.dialogs().messageBox(QStringLiteral("transceiver command buffer overflow"), common_.info().title);
            return;
        }
        XcvrCmd& r = XcvrCmdBuffer[size_t(XcvrCmdTail)];
        r.theCmd = theCmd;
        r.theRadio = std::int16_t(radio_.address());
        r.theFreq = theFreq;
        r.theMode = theMode;
        r.theArg = theArg;
        r.theArg2 = theArg2;
        r.theRawCmd = theRawCmd;
        if (++XcvrCmdTail > kBufferSlots) XcvrCmdTail = 1;
        ++XcvrCmdCount;
        ++queuedTotal_;
        // Only makes sure the timer runs: a queued command waits for the next regular tick.
        XcvrCmdTimer.setEnabled(true);
        queuedIt = true;
    });
    return queuedIt;
}

std::vector<XcvrCmd> CommandQueue::queued() const {
    std::vector<XcvrCmd> out;
    int i = XcvrCmdHead;
    for (int n = 0; n < XcvrCmdCount; ++n) {
        out.push_back(XcvrCmdBuffer[size_t(i)]);
        if (++i > kBufferSlots) i = 1;
    }
    return out;
}

void CommandQueue::Discard() {
    XcvrCmdHead = 1;
    XcvrCmdTail = 1;
    XcvrCmdCount = 0;
}

void CommandQueue::InitializeXcvrCmdBuffer() {
    XcvrCmdTail = 1;
    XcvrCmdHead = 1;
    XcvrCmdCount = 0;
    InterrogationPhase = 0;
    for (auto& r : XcvrCmdBuffer) r.theRawCmd.clear();
    SetXcvrCmdTimerInterval();
}

void CommandQueue::SetXcvrCmdTimerInterval() {
    XcvrCmdTimer.setEnabled(false);
    const Protocol* p = radio_.protocol();
    if (radio_.RadioIndex >= 0 && p && !state_.Responding && p->traits().silentPollIntervalMs > 0) {
        XcvrCmdTimer.setInterval(p->traits().silentPollIntervalMs);
        XcvrCmdTimer.setEnabled(true);
        return;
    }
    // A text that isn't a whole number (letters from a hand-edited store, say) counts as the default;
    // a number, signed or too long, is held to the limits.
    const QString t = view_.pollIntervalText().trimmed();
    const bool negative = t.startsWith(QLatin1Char('-'));
    const QString digits = negative || t.startsWith(QLatin1Char('+')) ? t.mid(1) : t;
    bool ok = !digits.isEmpty();
    for (QChar c : digits) ok = ok && c.isDigit();
    long long ms = kDefaultPollInterval;
    if (ok) ms = negative ? kMinPollInterval : digits.size() > 9 ? kMaxPollInterval : digits.toLongLong();
    ms = std::clamp<long long>(ms, kMinPollInterval, kMaxPollInterval);
    XcvrCmdTimer.setInterval(int(ms));
    XcvrCmdTimer.setEnabled(true);
}

void CommandQueue::AccelerateNextXcvrCmd() {
    XcvrCmdTimer.setEnabled(false);
    XcvrCmdTimer.setInterval(int(kAcceleratedInterval.count()));
    XcvrCmdTimer.setEnabled(true);
}

void CommandQueue::SetXcvrFreq(double freq) {
    Guard("KavModule.SetXcvrFreq", [&] {
        common_.LogLine(QStringLiteral("KavModule.SetXcvrFreq: ") + num(freq));
        if (!Tunable(freq)) return;
        const bool switched = hooks_.SelectMultiXcvr ? hooks_.SelectMultiXcvr(freq) : false;
        state_.RadioFreq = freq;
        EnqueueXcvrCmd(XcvrCmdFreq, state_.RadioFreq);
        state_.SetFrequency(freq);
        if (switched) InterrogateRadio();
    });
}

void CommandQueue::SetXcvrSBFreq(double freq) {
    if (!Tunable(freq) || radio_.RadioIndex < 0) return;
    if (!radio_.traits().secondaryFrequencyBySwitching) {
        EnqueueXcvrCmd(XcvrCmdSBFreq, freq);
        return;
    }
    SelectSecondary();
    SetXcvrWait();
    SetXcvrMode(state_.RadioMode);
    SetXcvrWait();
    SetXcvrFreq(freq);
    SetXcvrWait();
    SelectPrimary();
    SetXcvrWait();
}

void CommandQueue::StepXcvrFreq(bool up) { EnqueueXcvrCmd(XcvrCmdStepFreq, 0, 0, up ? 0 : 1); }

void CommandQueue::SetXcvrMode(int mode) {
    Guard("KavModule.SetXcvrMode", [&] {
        if (mode < 0 || mode > 9 || radio_.RadioIndex < 0) return;
        const Protocol* p = radio_.protocol();
        if (!p) return;
        EnqueueXcvrCmd(XcvrCmdMode, 0, std::int16_t(mode), std::int16_t(p->ModeArgument(mode)));
    });
}

void CommandQueue::SetXcvrModeAndFilterGroup(int mode, int group) {
    // A memory stored before the radio had reported a mode holds -1: no family has a command for it.
    if (mode < 0 || mode >= ModeUnknown) return;
    EnqueueXcvrCmd(XcvrCmdMode, 0, std::int16_t(mode), std::int16_t(group));
}

void CommandQueue::SetXcvrFilterGroup(int group) {
    EnqueueXcvrCmd(XcvrCmdFilterGroup, 0, std::int16_t(state_.RadioMode), std::int16_t(group));
}

void CommandQueue::SetXcvrFilters(int arg, int arg2) {
    EnqueueXcvrCmd(XcvrCmdFilters, 0, std::int16_t(state_.RadioMode), std::int16_t(arg), std::int16_t(arg2));
}

void CommandQueue::SetXcvrSplit(bool on) { EnqueueXcvrCmd(XcvrCmdSplit, 0, 0, on ? 1 : 0); }
void CommandQueue::SetXcvrDual(bool on) { EnqueueXcvrCmd(XcvrCmdDual, 0, 0, on ? 1 : 0); }
void CommandQueue::SetXcvrVFOA() { EnqueueXcvrCmd(XcvrCmdVFOA); }
void CommandQueue::SetXcvrVFOB() { EnqueueXcvrCmd(XcvrCmdVFOB); }
void CommandQueue::SetXcvrVFOEqual() { EnqueueXcvrCmd(XcvrCmdVFOEqual); }
void CommandQueue::SetXcvrVFOXch() { EnqueueXcvrCmd(XcvrCmdVFOXch); }
void CommandQueue::SetXcvrMain() { EnqueueXcvrCmd(XcvrCmdMain); }
void CommandQueue::SetXcvrSub() { EnqueueXcvrCmd(XcvrCmdSub); }
void CommandQueue::SetXcvrMainSubEqual() { EnqueueXcvrCmd(XcvrCmdMainSubEqual); }
void CommandQueue::SetXcvrMainSubXch() { EnqueueXcvrCmd(XcvrCmdMainSubXch); }
void CommandQueue::SetXcvrSwitchVFOs() { EnqueueXcvrCmd(XcvrCmdSwitchVFOs); }
void CommandQueue::SetXcvrWait() { EnqueueXcvrCmd(XcvrCmdWait); }

void CommandQueue::SetXcvrTransmit() {
    const RadioInfo* r = radio_.info();
    if (!r || !r->ptt) return;
    EnqueueXcvrCmd(XcvrCmdPTT, 0, 0, 1);
}

bool CommandQueue::SetXcvrReceive() {
    const RadioInfo* r = radio_.info();
    if (!r || !r->ptt) return false;
    return EnqueueXcvrCmd(XcvrCmdPTT, 0, 0, 0);
}

void CommandQueue::SetXcvrRaw(const QString& text) {
    common_.LogLine(QStringLiteral("KavModule.SetXcvrRaw: ") + text);
    EnqueueXcvrCmd(XcvrCmdRaw, 0, 0, 0, 0, text);
}

void CommandQueue::SetXcvrstring(const QString& text) { EnqueueXcvrCmd(XcvrCmdString, 0, 0, 0, 0, text); }

void CommandQueue::InterrogateRadio() {
    SetXcvrWait();
    EnqueueXcvrCmd(XcvrCmdRequestFreq);
    SetXcvrWait();
    EnqueueXcvrCmd(XcvrCmdRequestMode);
}

void CommandQueue::AdjustRadioFreq(double delta) {
    const double f = state_.RadioFreq;
    if (delta >= 0) {
        if (f + delta > 999999.99) return;
    } else if (f <= delta) {
        return;
    }
    SetXcvrFreq(f + delta);
}

void CommandQueue::SelectSecondary() {
    const RadioInfo* r = radio_.info();
    if (!r || !radio_.protocol()) return;
    if (radio_.traits().secondaryIsVfoB) {
        SetXcvrVFOB();
    } else if (r->mainSubSel) {
        // The sub receiver takes precedence over the VFOs.
        SetXcvrSub();
    } else if (r->vfoSel) {
        SetXcvrVFOB();
    }
}

void CommandQueue::SelectPrimary() {
    const RadioInfo* r = radio_.info();
    if (!r || !radio_.protocol()) return;
    if (radio_.traits().secondaryIsVfoB) {
        SetXcvrVFOA();
    } else if (r->mainSubSel) {
        SetXcvrMain();
    } else if (r->vfoSel) {
        SetXcvrVFOA();
    }
}

void CommandQueue::RequestFrequency() {
    if (radio_.RadioIndex < 0) return;
    if (Protocol* p = radio_.protocol()) p->RequestFrequency();
}

void CommandQueue::RequestMode() {
    if (radio_.RadioIndex < 0) return;
    if (Protocol* p = radio_.protocol()) p->RequestMode();
}

void CommandQueue::SendReceiveNow() {
    const RadioInfo* r = radio_.info();
    Protocol* p = radio_.protocol();
    if (r && r->ptt && p) {
        XcvrCmd off;
        off.theCmd = XcvrCmdPTT;
        off.theRadio = std::int16_t(radio_.address());
        off.theArg = 0;
        p->Execute(off);
    }
    receiveSent();
}

void CommandQueue::receiveSent() {
    if (link_.writesReachTheLine()) state_.SetTransmitting(false);
}

void CommandQueue::ReplyWaitEnded() {
    if (radio_.RadioIndex < 0) return;
    sendQueuedReceive();
    AccelerateNextXcvrCmd();
}

bool CommandQueue::sendQueuedReceive() {
    std::vector<XcvrCmd> records = queued();
    auto isReceive = [](const XcvrCmd& r) { return r.theCmd == XcvrCmdPTT && r.theArg == 0; };
    const auto off = std::find_if(records.begin(), records.end(), isReceive);
    if (off == records.end()) return false;
    const XcvrCmd receive = *off;
    const auto ahead = off - records.begin();
    // Keys queued before it never left: sent after it, they would key the radio again.
    records.erase(
        std::remove_if(records.begin(), off + 1, [](const XcvrCmd& r) { return r.theCmd == XcvrCmdPTT; }),
        off + 1);
    for (auto& r : XcvrCmdBuffer) r.theRawCmd.clear();
    int slot = XcvrCmdHead;
    for (const XcvrCmd& r : records) {
        XcvrCmdBuffer[size_t(slot)] = r;
        if (++slot > kBufferSlots) slot = 1;
    }
    XcvrCmdTail = slot;
    XcvrCmdCount = int(records.size());
    if (ahead > 0)
        common_.LogLine(QStringLiteral("KavModule.ExecuteNextXcvrCmd: the receive command leaves ahead of %1 "
                                       "queued records, which wait for the radio to answer")
                            .arg(ahead));
    if (Protocol* p = radio_.protocol()) p->Execute(receive);
    LastCommandName = CommandName(XcvrCmdPTT);
    receiveSent();
    return true;
}

void CommandQueue::pollStep() {
    Protocol* p = radio_.protocol();
    if (!view_.interrogationEnabled() || InterrogationPhase > 6 || !p) return;
    const std::uint64_t before = link_.sentMessages;
    InterrogationPhase = p->InterrogationStep(InterrogationPhase);
    const bool asked = link_.sentMessages != before;
    if (asked && radio_.traits().framing == Framing::EndMark && state_.ReportPolled(kPollsBeforeSilent))
        reportSilence();
}

void CommandQueue::reportSilence() {
    QString causes = QStringLiteral("is the radio on and its cable in? is the port's speed the radio's?");
    if (radio_.traits().addressed) causes += QStringLiteral(" is its CI-V address ") + view_.addressText().trimmed() +
                                             QStringLiteral(" the radio's own?");
    common_.LogLine(QStringLiteral("KavModule: the radio doesn't answer: ") + causes);
    state_.ReportSilent();
}

void CommandQueue::executeRaw(const XcvrCmd& cmd) {
    QString raw = cmd.theRawCmd;
    if (raw.size() % 2 == 1) raw.prepend(QLatin1Char('0'));
    common_.DebugLog(QStringLiteral("KavModule.ExecuteNextXcvrCmd XcvrCmdRaw, theRawCmd = %1, RawLen = %2")
                         .arg(raw)
                         .arg(raw.size()));
    QByteArray out;
    for (int i = 1; i <= raw.size(); i += 2) {
        const QString chars = raw.mid(i - 1, 2);
        const int v = SelectedRadio::DecVal(chars);
        common_.DebugLog(QStringLiteral("   I = %1, Chars = %2, DecVal = %3, Asc = %4").arg(i).arg(chars).arg(v).arg(v));
        // A pair that isn't upper-case hexadecimal makes no byte: the record fails as a whole.
        if (v < 0 || v > 255) throw TvError(kErrInvalidCall, QStringLiteral("not a hexadecimal pair: ") + chars);
        out.append(char(v));
    }
    common_.DebugLog(QStringLiteral("   len(RawOut) = %1").arg(out.size()));
    link_.SendCommand(out);
}

void CommandQueue::reportTickFailure(const XcvrCmd& c, int number, const QString& description) {
    common_.ReportError(number, QStringLiteral("KavModule.ExecuteNextXcvrCmd"), description);
    common_.LogLine(QStringLiteral("theCmd = %1, theFreq = %2, theMide = %3, theArg = %4, theArg2 = %5, "
                                   "theRadio = %6, theRawCmd = %7, theSupplier = %8")
                        .arg(c.theCmd)
                        .arg(num(c.theFreq))
                        .arg(c.theMode)
                        .arg(c.theArg)
                        .arg(c.theArg2)
                        .arg(c.theRadio)
                        .arg(c.theRawCmd)
                        .arg(QString(radio_.supplier())));
}

void CommandQueue::ExecuteNextXcvrCmd() {
    if (radio_.RadioIndex == -1) return;
    XcvrCmd c;
    try {
        SetXcvrCmdTimerInterval();
        if (XcvrCmdCount < 1) {
            pollStep();
            return;
        }
        for (;;) {
            if (XcvrCmdCount < 1) return;
            const ProtocolTraits& traits = radio_.traits();
            if (traits.framing == Framing::ExpectedLength && link_.replyOutstanding()) {
                // A reply of fixed length is on its way: nothing is sent into it.
                if (link_.ExpectTimer.Enabled()) return;
                // Its wait ended while the radio already counted as silent, and the reply is still
                // awaited: the records stay until a polled reply comes, but polling goes on, and an
                // unkey doesn't wait for the radio to answer.
                if (sendQueuedReceive()) return;
                if (view_.interrogationEnabled()) {
                    pollStep();
                    return;
                }
                // With polling off nothing would ever ask the radio again: the record goes instead.
            }
            const bool oneRecordPerTick = traits.oneRecordPerTick;
            c = XcvrCmdBuffer[size_t(XcvrCmdHead)];
            if (common_.DebugEnabled())
                common_.DebugLog(QStringLiteral("KavModule.ExecuteNextXcvrCmd: %1 [%2] %3")
                                     .arg(c.theCmd)
                                     .arg(CommandName(c.theCmd), num(c.theFreq)));
            auto consume = [this] {
                XcvrCmdBuffer[size_t(XcvrCmdHead)].theRawCmd.clear();
                if (++XcvrCmdHead > kBufferSlots) XcvrCmdHead = 1;
                --XcvrCmdCount;
            };
            if (c.theCmd == XcvrCmdWait) {
                SetXcvrCmdTimerInterval();
                consume();
                return;
            }
            // Consumed before it runs, so that a record that fails is not tried again forever.
            consume();
            Protocol* p = radio_.protocol();
            switch (c.theCmd) {
                case XcvrCmdRequestFreq: RequestFrequency(); break;
                case XcvrCmdRequestMode: RequestMode(); break;
                case XcvrCmdRaw: executeRaw(c); break;
                case XcvrCmdString:
                    if (!(p && p->SendString(c.theRawCmd.toLatin1()))) link_.SendCommand(c.theRawCmd.toLatin1());
                    break;
                default:
                    // The display follows a mode command when it leaves, whatever the radio.
                    if (c.theCmd == XcvrCmdMode) state_.UpdateXcvrMode(c.theMode);
                    if (c.theCmd >= 0 && c.theCmd <= XcvrCmdStepFreq && p) p->Execute(c);
                    if (c.theCmd == XcvrCmdPTT && c.theArg == 0) receiveSent();
                    break;
            }
            if (c.theCmd != XcvrCmdRequestFreq && c.theCmd != XcvrCmdRequestMode)
                LastCommandName = CommandName(c.theCmd);
            if (oneRecordPerTick) return;
        }
    } catch (const TvError& e) {
        reportTickFailure(c, e.number(), e.description());
    } catch (const std::exception& e) {
        reportTickFailure(c, kErrInternal, QString::fromLocal8Bit(e.what()));
    }
}

}  // namespace tv
