#include "protocols/Kenwood.h"

#include "core/KavModule.h"
#include "forms/KavMain.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <cmath>
#include <cstdlib>

namespace tv {

namespace {

constexpr KenwoodModel kModels[] = {
    {1, "Kenwood TS-711S", "TS711", false, false, false, ""},
    {2, "Kenwood TS-811S", "TS811", false, false, false, ""},
    {3, "Kenwood TS-940S", "TS940", false, false, false, ""},
    {4, "Kenwood TS-440S", "TS440", false, false, false, ""},
    {5, "Kenwood R5000", "R5000", false, false, false, ""},
    {6, "Kenwood TS-140/680", "TS140", false, false, false, ""},
    {9, "Kenwood TS-850", "TS850", true, true, false, "TS-850"},
    {10, "Kenwood TS-450", "TS450", true, true, false, "TS-450"},
    {11, "Kenwood TS-690", "TS690", true, true, false, "TS-690"},
    {12, "Kenwood TS-950SDX", "TS950", false, false, false, ""},
    {13, "Kenwood TS-50S", "TS50", false, false, false, ""},
    {15, "Kenwood TS-870S", "TS870", true, true, true, "TS-870S"},
    {17, "Kenwood TS-570D", "TS570", true, true, true, "TS-570D"},
    // The S and the D share one meter scale.
    {18, "Kenwood TS-570S", "TS570", true, true, true, "TS-570D"},
    {19, "Kenwood TS-2000", "TS2000", true, true, true, "TS-2000"},
};

// The oldest radios choose a VFO with one command; everything from the TS-140 on has FR and FT.
constexpr int kFirstModelWithReceiveTransmitVFO = 6;

// A number in a fixed number of digits, the minus sign in front of the zeros.
QByteArray padded(long long value, int width) {
    QByteArray digits = QByteArray::number(std::llabs(value));
    if (digits.size() < width) digits.prepend(QByteArray(width - digits.size(), '0'));
    return value < 0 ? QByteArray("-") + digits : digits;
}

bool isSideband(int mode) { return mode == ModeLSB || mode == ModeUSB; }
bool isNarrowMode(int mode) {
    return mode == ModeCW || mode == ModeRTTY || mode == ModeCWR || mode == ModeRTTYR;
}
bool isCW(int mode) { return mode == ModeCW || mode == ModeCWR; }

}  // namespace

int KenwoodMode(int mode) {
    switch (mode) {
        case ModeLSB: return 1;
        case ModeUSB: return 2;
        case ModeAM: return 5;
        case ModeCW: return 3;
        case ModeRTTY: return 6;
        case ModeFM: return 4;
        case ModeWBFM: return 4;
        case ModeCWR: return 7;
        case ModeRTTYR: return 9;
        case ModePKT: return 2;
        default: return 0;
    }
}

int GetModeFromKenwoodStatus(int digit) {
    if (digit >= '0' && digit <= '9') digit -= '0';
    switch (digit) {
        case 1: return ModeLSB;
        case 2: return ModeUSB;
        case 3: return ModeCW;
        case 4: return ModeFM;
        case 5: return ModeAM;
        case 6: return ModeRTTY;
        case 7: return ModeCWR;
        case 8: return ModeCW;
        case 9: return ModeRTTYR;
        default: return ModeUnknown;
    }
}

const KenwoodModel* FindKenwoodModel(int id) {
    for (const auto& row : kModels)
        if (row.id == id) return &row;
    return nullptr;
}

// ---- encoding ----

QByteArray KenwoodProtocol::digits11(double kHz) {
    const long long hz = std::llround(kHz * 1000.0);
    return padded(hz < 0 ? 0 : hz, 11);
}

void KenwoodProtocol::send(const QByteArray& text) { m_.SendCommand(text); }

bool KenwoodProtocol::modelIs(std::initializer_list<const char*> names) const {
    for (const char* n : names)
        if (m_.KenwoodModelName == QLatin1String(n)) return true;
    return false;
}

void KenwoodProtocol::Execute(const XcvrCmd& c) {
    switch (c.theCmd) {
        case XcvrCmdFreq:
            if (m_.CurrentVFO != 0) {
                m_.VFOBFreq = c.theFreq;
                send("FB" + digits11(c.theFreq) + ';');
            } else {
                m_.VFOAFreq = c.theFreq;
                send("FA" + digits11(c.theFreq) + ';');
            }
            break;
        case XcvrCmdMode:
            // The queue has already shown the mode.
            send("MD" + QByteArray::number(KenwoodMode(c.theMode)) + ';');
            break;
        case XcvrCmdFilters: {
            const int value = c.theArg;
            const int selector = c.theArg2;
            QByteArray out;
            if (modelIs({"TS570", "TS2000"})) {
                if (selector == 3) out = "SH" + padded(value, 2) + ';';
                else if (selector == 4) out = "SL" + padded(value, 2) + ';';
                else if (selector == 5) out = "FW" + padded(value, 4) + ';';
                else if (selector == 6) {
                    // Only the TS-570 has its own sign position; the TS-2000 gets the sign inside the number.
                    if (m_.KenwoodModelName == QLatin1String("TS570") && value < 0)
                        out = "IS-" + padded(-value, 4) + ';';
                    else
                        out = "IS " + padded(value, 4) + ';';
                }
            } else if (modelIs({"TS870"})) {
                // The TS-870's sideband passband is IF shift (high edge) and width (low edge).
                if (selector == 3 || selector == 6) out = "IS " + padded(value, 4) + ';';
                else if (selector == 4 || selector == 5) out = "FW" + padded(value, 4) + ';';
            }
            if (!out.isEmpty()) send(out);
            break;
        }
        case XcvrCmdSplit: {
            const bool on = c.theArg != 0;
            if (modelIs({"TS50", "TS140", "TS711", "TS811", "TS440", "TS940"})) {
                send(on ? "SP1;" : "SP0;");
            } else if (on) {
                // Receive on the selected VFO first, then transmit on the other.
                if (m_.CurrentVFO != 0) {
                    send("FR1;");
                    send("FT0;");
                } else {
                    send("FR0;");
                    send("FT1;");
                }
            } else {
                // Back to simplex: transmit follows the receive VFO first.
                if (m_.CurrentVFO != 0) {
                    send("FT1;");
                    send("FR1;");
                } else {
                    send("FT0;");
                    send("FR0;");
                }
            }
            break;
        }
        case XcvrCmdVFOA:
            if (m_.KenwoodModelId < kFirstModelWithReceiveTransmitVFO) {
                send("FN0;");
            } else {
                send("FR0;");
                send("FT0;");
            }
            break;
        case XcvrCmdVFOB:
            if (m_.KenwoodModelId < kFirstModelWithReceiveTransmitVFO) {
                send("FN1;");
            } else {
                send("FR1;");
                send("FT1;");
            }
            break;
        case XcvrCmdVFOEqual: {
            const QByteArray d = digits11(m_.RadioFreq);
            m_.VFOAFreq = m_.RadioFreq;
            m_.VFOBFreq = m_.RadioFreq;
            send("FA" + d + ';');
            send("FB" + d + ';');
            break;
        }
        case XcvrCmdVFOXch: {
            // No radio command exchanges the VFOs: it is composed from a mode and two frequencies.
            const double oldA = m_.VFOAFreq, oldB = m_.VFOBFreq;
            m_.VFOAFreq = oldB;
            m_.VFOBFreq = oldA;
            std::swap(m_.VFOAMode, m_.VFOBMode);
            const int mode = m_.CurrentVFO == 1 ? m_.VFOBMode : m_.VFOAMode;
            send("MD" + QByteArray::number(KenwoodMode(mode)) + ';');
            send("FA" + digits11(oldB) + ';');
            send("FB" + digits11(oldA) + ';');
            break;
        }
        case XcvrCmdRequestFreq: RequestFrequency(); break;
        case XcvrCmdRequestMode: RequestMode(); break;
        case XcvrCmdPTT: send(c.theArg ? "TX;" : "RX;"); break;
        case XcvrCmdRequestID: send("ID;"); break;
        case XcvrCmdSBFreq:
            m_.VFOBFreq = c.theFreq;
            send("FB" + digits11(c.theFreq) + ';');
            break;
        default: break;  // no Kenwood command for the rest
    }
}

void KenwoodProtocol::RequestFrequency() { send(m_.CurrentVFO == 1 ? "FB;" : "FA;"); }

void KenwoodProtocol::RequestMode() { send("MD;"); }

int KenwoodProtocol::InterrogationStep(int phase) {
    const RadioInfo* r = m_.radio();
    if (!r) return phase;
    switch (phase) {
        case 0:
        case 2:
            if (r->sMeter) {
                if (modelIs({"TS570", "TS450", "TS690", "TS850", "TS870"}))
                    send("SM;");
                else if (modelIs({"TS2000"}))
                    send("SM0;");
            } else {
                send("IF;");
            }
            return phase + 1;
        case 1: send("IF;"); return 2;
        case 3: send("IF;"); return 0;
        case 4: send("IF;"); return 0;
        default: return phase;
    }
}

// ---- decoding ----

QByteArray KenwoodProtocol::field(int from, int to) const {
    QByteArray out;
    // Past the message stand the stale bytes of earlier ones: a short reply reads those.
    for (int i = from; i <= to && i <= KavModule::kRcvBufferSize; ++i) out.append(char(m_.RcvBuffer[size_t(i)]));
    return out;
}

long long KenwoodProtocol::number(int from, int to) const {
    const QByteArray raw = field(from, to);
    const QByteArray text = raw.trimmed();
    int i = 0;
    if (!text.isEmpty() && (text[0] == '-' || text[0] == '+')) i = 1;
    bool ok = i < text.size();
    for (int k = i; k < text.size() && ok; ++k) ok = text[k] >= '0' && text[k] <= '9';
    if (!ok)
        throw TvError(kErrTypeMismatch, QStringLiteral("not a number at %1 to %2: \"%3\"")
                                            .arg(from)
                                            .arg(to)
                                            .arg(QString::fromLatin1(raw.toHex(' '))));
    return text.toLongLong();
}

void KenwoodProtocol::Decode() {
    Guard("KavModule.DecodeKenwoodMessage", [&] { decodeMessage(); });
}

void KenwoodProtocol::decodeMessage() {
    const QByteArray letters = field(1, 2).toUpper();
    if (letters == "ID") {
        identify();
    } else if (letters == "IF") {
        decodeStatus();
    } else if (letters == "FA") {
        m_.VFOAFreq = fieldKHz(3, 13);
    } else if (letters == "FB") {
        m_.VFOBFreq = fieldKHz(3, 13);
    } else if (letters == "FR") {
        m_.CurrentVFO = int(number(3, 3));
    } else if (letters == "MD") {
        decodeMode();
    } else if (letters == "SM") {
        decodeSMeter();
    } else if (letters == "FW" || letters == "IS" || letters == "SH" || letters == "SL") {
        decodeFilterReply(letters);
    }
    // FT, LK, MR, MX, PT, RM and the refusal "?" change nothing here.
}

void KenwoodProtocol::identify() {
    const QByteArray idText = field(3, 5);
    m_.common().LogLine(QStringLiteral("Kenwood model ID: ") + QString::fromLatin1(idText));
    m_.KenwoodModelId = 0;
    m_.KenwoodModelId = int(number(3, 5));
    const int id = m_.KenwoodModelId;

    bool hasMeter = false;
    if (m_.RadioIndex >= 0 && m_.RadioIndex < m_.catalogue.count())
        m_.catalogue.at(m_.RadioIndex).sMeter = false;
    callHook(m_.hooks.SetFilterFrameVisibility, false);
    sMeterFile_.clear();

    if (const KenwoodModel* row = FindKenwoodModel(id)) {
        m_.RadioDisplayName = QString::fromLatin1(row->displayName);
        m_.KenwoodModelName = QString::fromLatin1(row->modelName);
        hasMeter = row->sMeter;
        sMeterFile_ = QString::fromLatin1(row->sMeterFile);
        if (row->filterFrame) {
            callHook(onFillFilterLists, m_.KenwoodModelName);
            callHook(m_.hooks.SetFilterFrameVisibility, true);
        }
        // Only after the lists are filled: the radio starts reporting at once.
        if (row->autoInformation) send("AI1;");
    } else {
        m_.RadioDisplayName = QStringLiteral("Kenwood ") + QString::fromLatin1(idText);
        m_.KenwoodModelName.clear();
    }
    if (m_.RadioIndex >= 0 && m_.RadioIndex < m_.catalogue.count())
        m_.catalogue.at(m_.RadioIndex).sMeter = hasMeter;

    if (!sMeterFile_.isEmpty()) {
        if (onLoadSMeterData)
            onLoadSMeterData(sMeterFile_);
        else
            callHook(m_.hooks.LoadSMeterData);
    }

    KavMain& w = m_.main();
    w.SMeterValue.setVisible(w.SMeter.visible());
    callHook(m_.hooks.SetSMeter, QString());
    w.SMeterDummy.setVisible(!hasMeter);

    m_.CurrentVFO = 0;
    if (id >= kFirstModelWithReceiveTransmitVFO) {
        send("FR0;");
        send("FT0;");
        w.ModeSel[ModeCWR].setVisible(true);
        w.ModeSel[ModeRTTYR].setVisible(true);
    } else {
        // What these radios have always been sent here, without the leading F.
        send("N0;");
    }
    m_.UpdateCaption();
}

void KenwoodProtocol::decodeStatus() {
    const double kHz = fieldKHz(3, 13);
    m_.SetXcvrCmdTimerInterval();
    m_.UpdateRadioFreq(kHz);
    KavMain& w = m_.main();
    if (w.FreqDisplay.enabled() && !m_.FreqFocusGiven) {
        w.FreqDisplay.SetFocus();
        m_.FreqFocusGiven = true;
    }
    const int modeDigit = int(number(30, 30));
    m_.CurrentVFO = int(number(31, 31));
    // A memory channel (2) belongs to neither VFO.
    if (m_.CurrentVFO == 0) m_.VFOAFreq = kHz;
    else if (m_.CurrentVFO == 1) m_.VFOBFreq = kHz;
    m_.UpdateVFOCaption();

    const bool split = number(33, 33) != 0;
    if (split != w.SplitBox.checked()) {
        // The box's click handler sees the flag and doesn't send the radio's own state back to it.
        m_.SetControlFlag(FlagSplitBox, true);
        w.SplitBox.setChecked(split);
    }

    const int mode = GetModeFromKenwoodStatus(modeDigit);
    if (m_.CurrentVFO == 0) m_.VFOAMode = mode;
    else if (m_.CurrentVFO == 1) m_.VFOBMode = mode;
    reportMode(mode);
}

void KenwoodProtocol::decodeMode() { reportMode(GetModeFromKenwoodStatus(int(number(3, 3)))); }

void KenwoodProtocol::reportMode(int mode) {
    m_.UpdateXcvrMode(mode);
    callHook(onModeReported);
}

void KenwoodProtocol::decodeSMeter() {
    double fullScale = 0;
    if (modelIs({"TS570"})) fullScale = 15;
    else if (modelIs({"TS450", "TS690", "TS850", "TS870", "TS2000"})) fullScale = 30;
    if (fullScale == 0) return;
    // The TS-2000 request carries the receiver digit, and so does its reply.
    const bool withReceiver = modelIs({"TS2000"});
    const long long value = withReceiver ? number(4, 7) : number(3, 6);
    m_.common().DebugLog(QStringLiteral("SM received: %1").arg(value));
    callHook(m_.hooks.UpdateSMeter, double(float(value) / float(fullScale)));

    // The meter reply paces a walk through the passband settings, in the gaps of the polling.
    const int mode = m_.RadioMode;
    if (modelIs({"TS570", "TS2000"})) {
        if (isSideband(mode) || mode == ModeFM) send("SL;");
        else if (isNarrowMode(mode)) send("FW;");
    } else if (modelIs({"TS870"})) {
        send("FW;");
    }
}

void KenwoodProtocol::decodeFilterReply(const QByteArray& letters) {
    const int mode = m_.RadioMode;
    const bool ts570 = modelIs({"TS570"});
    if (letters == "FW") {
        m_.common().DebugLog(QStringLiteral("FW: ") + QString::fromLatin1(field(3, m_.RcvCount - 1)));
        callHook(onFilterReply, letters);
        if (ts570) {
            if (isSideband(mode) || isNarrowMode(mode)) send("IS;");
        } else if (modelIs({"TS2000"})) {
            if (isCW(mode)) send("IS;");
        } else if (modelIs({"TS870"})) {
            m_.common().DebugLog(QStringLiteral("sending IS request command"));
            send("IS;");
        }
    } else if (letters == "IS") {
        m_.common().DebugLog(QStringLiteral("IS: ") + QString::fromLatin1(field(3, 7)));
        // A short shift reply from the TS-570 holds no usable value.
        if (ts570 && m_.RcvCount < 8) return;
        callHook(onFilterReply, letters);
    } else if (letters == "SL") {
        if (!(ts570 && m_.RcvCount < 5)) callHook(onFilterReply, letters);
        send("SH;");
    } else if (letters == "SH") {
        if (!(ts570 && m_.RcvCount < 5)) callHook(onFilterReply, letters);
        if (ts570) send("IS;");
    }
}

}  // namespace tv
