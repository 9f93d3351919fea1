// The command queue and its scheduler: one circular buffer that every radio command passes through,
// drained by one timer, which polls the radio when there is nothing to send.

#include "core/KavModule.h"

#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "platform/Dialogs.h"
#include "services/Common.h"
#include "services/Convert.h"
#include "services/Errors.h"

namespace tv {

namespace {
bool isCivSupplier(QChar s) { return s == QLatin1Char('I') || s == QLatin1Char('T'); }
QString num(double v) { return QString::number(v, 'g', 15); }
// The three small Yaesu radios that are polled slowly once they stop answering.
bool isSmallYaesu(const QString& model) {
    return model == QLatin1String("FT817") || model == QLatin1String("FT897") || model == QLatin1String("FT857");
}
}  // namespace

void KavModule::EnqueueXcvrCmd(std::int16_t theCmd, double theFreq, std::int16_t theMode, std::int16_t theArg,
                               std::int16_t theArg2, const QString& theRawCmd) {
    Guard("KavModule.EnqueueXcvrCmd", [&] {
        if (RadioIndex < 0) return;
        if (isCivSupplier(GetRadioSupplier()) && config_.Address.text().trimmed().isEmpty()) return;
        if (XcvrCmdCount >= kBufferSlots) {
            // Each one in the log; on screen a box already up counts it rather than stacking another.
            common_.LogLine(QStringLiteral("KavModule.EnqueueXcvrCmd: transceiver command buffer overflow"));
            dialogs().messageBox(QStringLiteral("transceiver command buffer overflow"), common_.info().title);
            return;
        }
        XcvrCmd& r = XcvrCmdBuffer[size_t(XcvrCmdTail)];
        r.theCmd = theCmd;
        r.theRadio = RadioAddress.isEmpty() ? 0 : std::int16_t(std::uint8_t(RadioAddress.at(0)));
        r.theFreq = theFreq;
        r.theMode = theMode;
        r.theArg = theArg;
        r.theArg2 = theArg2;
        r.theRawCmd = theRawCmd;
        if (++XcvrCmdTail > kBufferSlots) XcvrCmdTail = 1;
        ++XcvrCmdCount;
        // Only makes sure the timer runs: a queued command waits for the next regular tick.
        main_.XcvrCmdTimer.setEnabled(true);
    });
}

void KavModule::InitializeXcvrCmdBuffer() {
    XcvrCmdTail = 1;
    XcvrCmdHead = 1;
    XcvrCmdCount = 0;
    InterrogationPhase = 0;
    for (auto& r : XcvrCmdBuffer) r.theRawCmd.clear();
    SetXcvrCmdTimerInterval();
}

QString KavModule::pollIntervalText() const { return config_.PollInterval.text(); }

void KavModule::SetXcvrCmdTimerInterval() {
    main_.XcvrCmdTimer.setEnabled(false);
    if (RadioIndex >= 0 && GetRadioSupplier() == QLatin1Char('Y') && isSmallYaesu(radioModel()) &&
        !YaesuResponding) {
        main_.XcvrCmdTimer.setInterval(kSilentYaesuInterval);
        main_.XcvrCmdTimer.setEnabled(true);
        return;
    }
    // A text that isn't a whole number (letters from a hand-edited store, say) counts as the default.
    const QString t = pollIntervalText().trimmed();
    bool ok = !t.isEmpty();
    for (QChar c : t) ok = ok && c.isDigit();
    long long ms = kDefaultPollInterval;
    if (ok) ms = t.size() > 9 ? kMaxPollInterval : t.toLongLong();
    ms = std::clamp<long long>(ms, kMinPollInterval, kMaxPollInterval);
    main_.XcvrCmdTimer.setInterval(int(ms));
    main_.XcvrCmdTimer.setEnabled(true);
}

void KavModule::AccelerateNextXcvrCmd() {
    main_.XcvrCmdTimer.setEnabled(false);
    main_.XcvrCmdTimer.setInterval(kAcceleratedInterval);
    main_.XcvrCmdTimer.setEnabled(true);
}

void KavModule::SetXcvrFreq(double freq) {
    Guard("KavModule.SetXcvrFreq", [&] {
        common_.LogLine(QStringLiteral("KavModule.SetXcvrFreq: ") + num(freq));
        if (freq < 0) return;
        const bool switched = hooks.SelectMultiXcvr ? hooks.SelectMultiXcvr(freq) : false;
        RadioFreq = freq;
        EnqueueXcvrCmd(XcvrCmdFreq, RadioFreq);
        callHook(hooks.UpdateFreqDisplay);
        if (switched) InterrogateRadio();
    });
}

void KavModule::SetXcvrSBFreq(double freq) {
    if (freq < 0 || RadioIndex < 0) return;
    if (!isCivSupplier(GetRadioSupplier())) {
        EnqueueXcvrCmd(XcvrCmdSBFreq, freq);
        return;
    }
    SelectSecondary();
    SetXcvrWait();
    SetXcvrMode(RadioMode);
    SetXcvrWait();
    SetXcvrFreq(freq);
    SetXcvrWait();
    SelectPrimary();
    SetXcvrWait();
}

void KavModule::StepXcvrFreq(bool up) { EnqueueXcvrCmd(XcvrCmdStepFreq, 0, 0, up ? 0 : 1); }

void KavModule::SetXcvrMode(int mode) {
    Guard("KavModule.SetXcvrMode", [&] {
        if (mode < 0 || mode > 9 || RadioIndex < 0) return;
        const QChar s = GetRadioSupplier();
        std::int16_t arg = 0;
        if (isCivSupplier(s)) {
            arg = std::int16_t(RadioFilterGroup);
            if (config_.ModeFiltersEnabledCheck.checked())
                arg = std::int16_t(IcomFilterGroupIndex(ModeFilters[size_t(mode)]));
        } else if (QStringLiteral("FNYK").contains(s)) {
            arg = 0;
        } else {
            return;
        }
        EnqueueXcvrCmd(XcvrCmdMode, 0, std::int16_t(mode), arg);
    });
}

void KavModule::SetXcvrModeAndFilterGroup(int mode, int group) {
    if (mode == ModeUnknown) return;
    EnqueueXcvrCmd(XcvrCmdMode, 0, std::int16_t(mode), std::int16_t(group));
}

void KavModule::SetXcvrFilterGroup(int group) {
    EnqueueXcvrCmd(XcvrCmdFilterGroup, 0, std::int16_t(RadioMode), std::int16_t(group));
}

void KavModule::SetXcvrFilters(int arg, int arg2) {
    EnqueueXcvrCmd(XcvrCmdFilters, 0, std::int16_t(RadioMode), std::int16_t(arg), std::int16_t(arg2));
}

void KavModule::SetXcvrSplit(bool on) { EnqueueXcvrCmd(XcvrCmdSplit, 0, 0, on ? 1 : 0); }
void KavModule::SetXcvrDual(bool on) { EnqueueXcvrCmd(XcvrCmdDual, 0, 0, on ? 1 : 0); }
void KavModule::SetXcvrVFOA() { EnqueueXcvrCmd(XcvrCmdVFOA); }
void KavModule::SetXcvrVFOB() { EnqueueXcvrCmd(XcvrCmdVFOB); }
void KavModule::SetXcvrVFOEqual() { EnqueueXcvrCmd(XcvrCmdVFOEqual); }
void KavModule::SetXcvrVFOXch() { EnqueueXcvrCmd(XcvrCmdVFOXch); }
void KavModule::SetXcvrMain() { EnqueueXcvrCmd(XcvrCmdMain); }
void KavModule::SetXcvrSub() { EnqueueXcvrCmd(XcvrCmdSub); }
void KavModule::SetXcvrMainSubEqual() { EnqueueXcvrCmd(XcvrCmdMainSubEqual); }
void KavModule::SetXcvrMainSubXch() { EnqueueXcvrCmd(XcvrCmdMainSubXch); }
void KavModule::SetXcvrSwitchVFOs() { EnqueueXcvrCmd(XcvrCmdSwitchVFOs); }
void KavModule::SetXcvrWait() { EnqueueXcvrCmd(XcvrCmdWait); }

void KavModule::SetXcvrTransmit() {
    const RadioInfo* r = radio();
    if (!r || !r->ptt) return;
    EnqueueXcvrCmd(XcvrCmdPTT, 0, 0, 1);
}

void KavModule::SetXcvrReceive() {
    const RadioInfo* r = radio();
    if (!r || !r->ptt) return;
    EnqueueXcvrCmd(XcvrCmdPTT, 0, 0, 0);
}

void KavModule::SetXcvrRaw(const QString& text) {
    common_.LogLine(QStringLiteral("KavModule.SetXcvrRaw: ") + text);
    EnqueueXcvrCmd(XcvrCmdRaw, 0, 0, 0, 0, text);
}

void KavModule::SetXcvrstring(const QString& text) { EnqueueXcvrCmd(XcvrCmdString, 0, 0, 0, 0, text); }

void KavModule::InterrogateRadio() {
    SetXcvrWait();
    EnqueueXcvrCmd(XcvrCmdRequestFreq);
    SetXcvrWait();
    EnqueueXcvrCmd(XcvrCmdRequestMode);
}

int KavModule::DigitVal(QChar c) { return int(QStringLiteral("0123456789ABCDEF").indexOf(c)); }

int KavModule::DecVal(const QString& text) {
    if (text.size() == 2) return DigitVal(text.at(0)) * 16 + DigitVal(text.at(1));
    if (text.isEmpty()) return -1;
    return DigitVal(text.at(0));
}

void KavModule::executeRaw(const XcvrCmd& cmd) {
    QString raw = cmd.theRawCmd;
    if (raw.size() % 2 == 1) raw.prepend(QLatin1Char('0'));
    common_.DebugLog(QStringLiteral("KavModule.ExecuteNextXcvrCmd XcvrCmdRaw, theRawCmd = %1, RawLen = %2")
                         .arg(raw)
                         .arg(raw.size()));
    QByteArray out;
    for (int i = 1; i <= raw.size(); i += 2) {
        const QString chars = raw.mid(i - 1, 2);
        const int v = DecVal(chars);
        common_.DebugLog(QStringLiteral("   I = %1, Chars = %2, DecVal = %3, Asc = %4").arg(i).arg(chars).arg(v).arg(v));
        // A pair that isn't upper-case hexadecimal makes no byte: the record fails as a whole.
        if (v < 0 || v > 255) throw TvError(kErrInvalidCall, QStringLiteral("not a hexadecimal pair: ") + chars);
        out.append(char(v));
    }
    common_.DebugLog(QStringLiteral("   len(RawOut) = %1").arg(out.size()));
    SendCommand(out);
}

void KavModule::reportTickFailure(const XcvrCmd& c, int number, const QString& description) {
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
                        .arg(QString(GetRadioSupplier())));
}

void KavModule::ExecuteNextXcvrCmd() {
    if (RadioIndex == -1) return;
    XcvrCmd c;
    try {
        SetXcvrCmdTimerInterval();
        const QChar supplier = GetRadioSupplier();
        Protocol* p = protocol();
        if (XcvrCmdCount < 1) {
            if (config_.Interrogation.checked() && InterrogationPhase <= 6 && p)
                InterrogationPhase = p->InterrogationStep(InterrogationPhase);
            return;
        }
        for (;;) {
            if (XcvrCmdCount < 1) return;
            // A Yaesu reply of fixed length is on its way: nothing is sent into it.
            if (supplier == QLatin1Char('Y') && ExpectedBytes >= 1) return;
            c = XcvrCmdBuffer[size_t(XcvrCmdHead)];
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
            switch (c.theCmd) {
                case XcvrCmdRequestFreq: RequestFrequency(); break;
                case XcvrCmdRequestMode: RequestMode(); break;
                case XcvrCmdRaw: executeRaw(c); break;
                case XcvrCmdString:
                    if (!(p && p->SendString(c.theRawCmd.toLatin1()))) SendCommand(c.theRawCmd.toLatin1());
                    break;
                default:
                    // The display follows a mode command when it leaves, whatever the radio.
                    if (c.theCmd == XcvrCmdMode) UpdateXcvrMode(c.theMode);
                    if (c.theCmd >= 0 && c.theCmd <= XcvrCmdStepFreq && p) p->Execute(c);
                    break;
            }
            if (c.theCmd != XcvrCmdRequestFreq && c.theCmd != XcvrCmdRequestMode)
                LastCommandName = CommandName(c.theCmd);
            if (isCivSupplier(supplier)) return;
        }
    } catch (const TvError& e) {
        reportTickFailure(c, e.number(), e.description());
    } catch (const std::exception& e) {
        reportTickFailure(c, kErrInternal, QString::fromLocal8Bit(e.what()));
    }
}

}  // namespace tv
