#include "protocols/tentec/TenTec.h"

#include "core/CommandQueue.h"
#include "core/CoreView.h"
#include "core/Hooks.h"
#include "core/RadioLink.h"
#include "core/RadioState.h"
#include "services/Common.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <sys/file.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace tv {

namespace {
constexpr char kCR = 13;

enum class Dialect { Binary, Orion, Folder };
enum class PttStyle { None, Digit, Orion };
}  // namespace

// The differences between the family's models; a row names the columns it sets (the first two it must).
// Polls lists the request of each phase; "?S" phases are skipped without a meter, and the phase after the
// last entry is 0.
struct TenTecModel {
    const char* model;
    Dialect dialect;
    FixedPortSettings port{};   // option indexes: speed 5 is 1200 baud, 8 is 57600
    bool splitCommand = false;  // "*O1"/"*O0"
    bool selectsVfo = false;    // "*EVA"/"*EVB"
    PttStyle ptt = PttStyle::None;
    std::array<const char*, 7> polls{};
};
namespace {
constexpr TenTecModel kModels[] = {
    {.model = "PEGASUS", .dialect = Dialect::Folder, .polls = {"?S", "", "?S", ""}},
    {.model = "JUPITER",
     .dialect = Dialect::Binary,
     .port = {.speed = 8, .wordLength = 1, .parity = 1, .stopBits = 1, .dtr = 1, .rts = 3},
     .selectsVfo = true,
     .polls = {"?S", "?A", "?S", "?M", "?B"}},
    {.model = "ARGONAUT V",
     .dialect = Dialect::Binary,
     .port = {.speed = 5, .wordLength = 1, .parity = 1, .stopBits = 1},
     .splitCommand = true,
     .ptt = PttStyle::Digit,
     .polls = {"?S", "?A", "?S", "?M", "?B", "?E", "?O"}},
    {.model = "ORION",
     .dialect = Dialect::Orion,
     .ptt = PttStyle::Orion,
     .polls = {"?S", "?AF", "?S", "?RMM", "?BF", "?RSM", "?KV"}},
};
static_assert(std::size(kModels) == 4, "one row per model of the family");
// A model the table doesn't know speaks the Jupiter's commands on the Jupiter's port settings.
constexpr const TenTecModel& kOtherModel = kModels[1];

const TenTecModel& find(const QString& model) {
    for (const auto& row : kModels)
        if (model == QLatin1String(row.model)) return row;
    return kOtherModel;
}

int pollCount(const TenTecModel& m) {
    int n = 0;
    while (n < 7 && m.polls[n] && *m.polls[n]) ++n;
    return m.dialect == Dialect::Folder ? 4 : n;
}

// A frequency's number: plain digits and a point, nothing infinite or negative.
double leadingNumber(const QByteArray& text, bool* ok) {
    const double v = QString::fromLatin1(text).trimmed().toDouble(ok);
    if (*ok && !(std::isfinite(v) && v >= 0)) *ok = false;
    return *ok ? v : 0;
}
}  // namespace

// ---- pure functions ----

QByteArray JupiterFreqString(double hertz) {
    // Four bytes hold what they hold: beyond them (or below zero) the nearest end.
    const double h = std::isnan(hertz) ? 0 : std::clamp(hertz, 0.0, 4294967295.0);
    const auto v = static_cast<std::uint32_t>(std::llround(h));
    QByteArray out;
    for (int shift : {24, 16, 8, 0}) out.append(char(std::uint8_t(v >> shift)));
    return out;
}

QString OrionFreqText(double kHz) {
    return QString::number(kHz / 1000, 'g', 15);
}

int JupiterMode(int mode) {
    switch (mode) {
        case ModeLSB:
            return 2;
        case ModeAM:
            return 0;
        case ModeCW:
            return 3;
        case ModeFM:
            return 4;
        default:
            return 1;
    }
}

int OrionMode(int mode) {
    switch (mode) {
        case ModeLSB:
            return 1;
        case ModeAM:
            return 4;
        case ModeCW:
            return 2;
        case ModeRTTY:
            return 6;
        case ModeFM:
            return 5;
        case ModeCWR:
            return 3;
        default:
            return 0;
    }
}

int GetModeFromJupiterStatus(char digit) {
    switch (digit) {
        case '0':
            return ModeAM;
        case '1':
            return ModeUSB;
        case '2':
            return ModeLSB;
        case '3':
            return ModeCW;
        case '4':
            return ModeFM;
        default:
            return ModeUnknown;
    }
}

int GetModeFromOrionStatus(char digit) {
    static constexpr int kModes[] = {ModeUSB, ModeLSB, ModeCW, ModeCWR, ModeAM, ModeFM, ModeRTTY};
    return digit >= '0' && digit <= '6' ? kModes[digit - '0'] : int(ModeUnknown);
}

QString PegasusMode(int mode) {
    switch (mode) {
        case ModeLSB:
        case ModeUSB:
        case ModeAM:
        case ModeCW:
        case ModeFM:
            return ModeName(mode);
        default:
            return QString();
    }
}

int GetModeFromPegasusStatus(const QString& name) {
    const QString n = name.trimmed().toUpper();
    for (int m : {ModeLSB, ModeUSB, ModeAM, ModeCW, ModeFM})
        if (n == ModeName(m)) return m;
    return ModeUnknown;
}

TenTecReply DecodeTenTecMessage(const QByteArray& m, bool orion) {
    TenTecReply r;
    const int n = int(m.size());  // the count includes the carriage return
    auto b = [&m, n](int i) { return i <= n ? char(m[i - 1]) : '\0'; };  // positions from 1
    auto up = [](char ch) { return char(QChar::fromLatin1(ch).toUpper().toLatin1()); };
    if (!orion) {
        switch (up(b(1))) {
            case 'A':
            case 'B': {
                if (n < 5) return r;
                double hz = 0;
                for (int i = 2; i <= 5; ++i) hz = hz * 256 + std::uint8_t(b(i));
                r.kind = up(b(1)) == 'A' ? TenTecReply::FreqA : TenTecReply::FreqB;
                r.kHz = hz / 1000;
                return r;
            }
            case 'E':
                if (up(b(2)) != 'A' && up(b(2)) != 'B') return r;
                r.kind = TenTecReply::Vfo;
                r.vfo = up(b(2)) == 'A' ? 0 : 1;
                return r;
            case 'M':
                if (n < 3) return r;
                r.kind = TenTecReply::Modes;
                r.modeA = GetModeFromJupiterStatus(b(2));
                r.modeB = GetModeFromJupiterStatus(b(3));
                return r;
            case 'O':
                if (n < 2) return r;
                r.kind = TenTecReply::Split;
                r.split = b(2) == '1';
                return r;
            case 'S': {
                static const QByteArray kDigits("0123456789ABCDEF");
                r.kind = TenTecReply::Meter;
                r.meter = n >= 3 ? (kDigits.indexOf(b(3)) + 1) / 16.0 : 0;
                return r;
            }
            default:
                return r;
        }
    }
    if (up(b(1)) == 'Z' && up(b(2)) == '!') {
        r.kind = TenTecReply::Refusal;
        r.text = QString::fromLatin1(m.mid(2, 2)).remove(QLatin1Char(kCR));
        return r;
    }
    if (b(1) != '@') return r;
    const QString letters = QString(QLatin1Char(up(b(2)))) + QLatin1Char(up(b(3)));
    const QByteArray body = n > 4 ? m.mid(3, n - 4) : QByteArray();  // bytes 4 to the count less one
    if (letters == QLatin1String("AF") || letters == QLatin1String("BF")) {
        bool ok = false;
        const double v = leadingNumber(body, &ok);
        if (!ok) return r;
        r.kind = letters.at(0) == QLatin1Char('A') ? TenTecReply::FreqA : TenTecReply::FreqB;
        r.kHz = body.contains('.') ? v * 1000 : v / 1000;
        r.text = QString::fromLatin1(body);
    } else if (letters == QLatin1String("KV")) {
        r.text = QString::fromLatin1(m.mid(3, 3)).toUpper();
        static const char* const kStates[] = {"AAA", "ABA", "AAB", "ABB"};
        for (int i = 0; i < 4; ++i) {
            if (r.text != QLatin1String(kStates[i])) continue;
            r.kind = TenTecReply::SplitDual;
            r.dual = i & 1;
            r.split = i & 2;
        }
    } else if ((letters == QLatin1String("RM") || letters == QLatin1String("RS")) && b(4) == 'M' && n >= 5) {
        r.kind = letters == QLatin1String("RM") ? TenTecReply::ModeA : TenTecReply::ModeB;
        (r.kind == TenTecReply::ModeA ? r.modeA : r.modeB) = GetModeFromOrionStatus(b(5));
    } else if (letters == QLatin1String("SR") && b(4) == 'M') {
        QByteArray text = n > 5 ? m.mid(4, n - 5) : QByteArray();
        const int s = int(text.indexOf('S'));
        if (s >= 0) text.truncate(s);
        r.kind = TenTecReply::MeterText;
        r.text = QString::fromLatin1(text);
    }
    return r;
}

std::optional<PegasusReading> ReadPegasusOut(const QByteArray& text) {
    // A second line needs a line break before it and something after, or a break of its own.
    const QList<QByteArray> lines = text.split('\n');
    if (lines.size() < 2 || (lines.size() == 2 && lines[1].trimmed().isEmpty())) return std::nullopt;
    bool ok = false;
    const double mhz = leadingNumber(lines[0], &ok);
    if (!ok) return std::nullopt;
    PegasusReading r;
    r.kHz = mhz * 1000;
    r.mode = GetModeFromPegasusStatus(QString::fromLatin1(lines[1]));
    return r;
}

// ---- the protocol ----

TenTecProtocol::TenTecProtocol(ProtocolContext& context, const RadioInfo& radio)
    : c_(context), radio_(radio), model_(&find(radio.model.toUpper())) {
    traits_.framing = model_->dialect == Dialect::Folder ? Framing::None : Framing::EndMark;
    traits_.endMark = kCR;
    traits_.interrogation = InterrogationRule::Forced;
    traits_.fixedPort = model_->port;
    traits_.usesControlFolder = model_->dialect == Dialect::Folder;
    traits_.takesSplitFrequencyAlone = traits_.usesControlFolder;
}

QString TenTecProtocol::DisplayName(const RadioInfo& radio) const {
    return QStringLiteral("TenTec ") + radio.model;
}

void TenTecProtocol::send(const QByteArray& text) {
    c_.link.SendCommand(text + kCR);
}

QByteArray TenTecProtocol::freqCommand(char vfo, double kHz) const {
    QByteArray s("*");
    s.append(vfo);
    if (model_->dialect == Dialect::Orion) return s + 'F' + OrionFreqText(kHz).toLatin1();
    return s + JupiterFreqString(kHz * 1000);
}

void TenTecProtocol::sendKv(bool request, bool dual) {
    // One command sets both receivers and the transmit VFO: the other switch is read from its box.
    const bool split = c_.view.splitChecked();
    const char* kv;
    if (dual)
        kv = request ? (split ? "ABB" : "ABA") : (split ? "AAB" : "AAA");
    else if (request)
        kv = c_.view.dualChecked() ? "ABB" : "AAB";
    else
        kv = split ? "ABA" : "AAA";
    send(QByteArray("*KV") + kv);
}

void TenTecProtocol::Execute(const XcvrCmd& c) {
    RadioState& s = c_.state;
    const bool onB = s.CurrentVFO == 1;
    if (model_->dialect == Dialect::Folder) {
        const QString mode = PegasusMode(s.RadioMode);
        switch (c.theCmd) {
            case XcvrCmdFreq:
                PegasusUpdate(OrionFreqText(c.theFreq), mode, {}, {});
                break;
            case XcvrCmdMode:
                s.UpdateXcvrMode(c.theMode);
                PegasusUpdate(OrionFreqText(s.RadioFreq), PegasusMode(c.theMode), {}, {});
                break;
            case XcvrCmdSBFreq:
                PegasusUpdate(OrionFreqText(s.RadioFreq), mode, OrionFreqText(c.theFreq), mode);
                break;
            default:
                break;
        }
        return;
    }
    const bool orion = model_->dialect == Dialect::Orion;
    switch (c.theCmd) {
        case XcvrCmdFreq:
            send(freqCommand(onB ? 'B' : 'A', c.theFreq));
            break;
        case XcvrCmdMode:
            if (orion) {
                s.UpdateXcvrMode(c.theMode);
                send(QByteArray(onB ? "*RSM" : "*RMM") + char(OrionMode(c.theMode)));
            } else {
                const char a = char(JupiterMode(onB ? s.VFOAMode : c.theMode));
                const char b = char(JupiterMode(onB ? c.theMode : s.VFOBMode));
                send(QByteArray("*M") + a + b);
            }
            break;
        case XcvrCmdDual:
            if (orion) sendKv(c.theArg != 0, true);
            break;
        case XcvrCmdSplit:
            if (orion)
                sendKv(c.theArg != 0, false);
            else if (model_->splitCommand)
                send(c.theArg ? "*O1" : "*O0");
            break;
        case XcvrCmdVFOA:
        case XcvrCmdVFOB: {
            const bool b = c.theCmd == XcvrCmdVFOB;
            if (model_->selectsVfo) send(b ? "*EVB" : "*EVA");
            s.CurrentVFO = b ? 1 : 0;
            s.UpdateVFO();
            break;
        }
        case XcvrCmdVFOEqual:
            send(freqCommand('B', s.VFOAFreq));
            break;
        case XcvrCmdVFOXch: {
            const double a = s.VFOAFreq, b = s.VFOBFreq;
            if (!orion) {
                send(freqCommand('A', b));
                send(freqCommand('B', a));
                break;
            }
            // The Orion sets only the selected VFO's frequency with the other's: the other is set by
            // selecting it, and the selection is restored.
            CommandQueue& q = c_.queue;
            send(freqCommand(onB ? 'B' : 'A', onB ? a : b));
            onB ? q.SetXcvrVFOA() : q.SetXcvrVFOB();
            q.SetXcvrWait();
            q.SetXcvrFreq(onB ? b : a);
            q.SetXcvrWait();
            onB ? q.SetXcvrVFOB() : q.SetXcvrVFOA();
            break;
        }
        case XcvrCmdRequestFreq:
            RequestFrequency();
            break;
        case XcvrCmdRequestMode:
            RequestMode();
            break;
        case XcvrCmdPTT:
            if (model_->ptt == PttStyle::Digit) send(c.theArg == 1 ? "*1" : "*0");
            if (model_->ptt == PttStyle::Orion) send(c.theArg == 1 ? "*TK" : "*TU");
            break;
        case XcvrCmdSBFreq:
            s.VFOBMode = s.VFOAMode;
            if (orion) {
                send(QByteArray("*RSM") + char(OrionMode(s.VFOBMode)));
            } else {
                send(QByteArray("*M") + char(JupiterMode(s.VFOAMode)) + char(JupiterMode(s.VFOBMode)));
            }
            send(freqCommand('B', c.theFreq));
            break;
        default:
            break;
    }
}

void TenTecProtocol::RequestFrequency() {
    if (model_->dialect == Dialect::Folder) return;
    const bool onB = c_.state.CurrentVFO == 1;
    send(QByteArray(onB ? "?B" : "?A") + (model_->dialect == Dialect::Orion ? "F" : ""));
}

void TenTecProtocol::RequestMode() {
    if (model_->dialect == Dialect::Folder) return;
    if (model_->dialect == Dialect::Orion)
        send(c_.state.CurrentVFO == 1 ? "?RSM" : "?RMM");
    else
        send("?M");
}

int TenTecProtocol::InterrogationStep(int phase) {
    const int count = pollCount(*model_);
    if (phase < 0 || phase >= count) return 0;
    const int next = phase + 1 >= count ? 0 : phase + 1;
    const bool meterStep = phase == 0 || phase == 2;
    if (meterStep && !radio_.sMeter) return next;
    if (model_->dialect == Dialect::Folder)
        PollPegasus();
    else
        send(model_->polls[phase]);
    return next;
}

void TenTecProtocol::Decode(const QByteArray& m) {
    const bool orion = model_->dialect == Dialect::Orion;
    const TenTecReply r = DecodeTenTecMessage(m, orion);
    RadioState& s = c_.state;
    if (!orion)
        c_.common.DebugLog(QStringLiteral("received TenTec message, command = ") +
                           QString::fromLatin1(m.left(1)) + QStringLiteral(", RcvCount = ") +
                           QString::number(m.size()));
    switch (r.kind) {
        case TenTecReply::Ignored:
            return;
        case TenTecReply::FreqA:
        case TenTecReply::FreqB:
            if (orion) c_.common.DebugLog(QStringLiteral("   FreqString = ") + r.text);
            (r.kind == TenTecReply::FreqA ? s.VFOAFreq : s.VFOBFreq) = r.kHz;
            c_.queue.SetXcvrCmdTimerInterval();
            s.UpdateVFO();
            break;
        case TenTecReply::Vfo:
            s.CurrentVFO = r.vfo;
            s.UpdateVFO();
            break;
        case TenTecReply::Modes:
        case TenTecReply::ModeA:
        case TenTecReply::ModeB:
            if (r.kind != TenTecReply::ModeB) s.VFOAMode = r.modeA;
            if (r.kind != TenTecReply::ModeA) s.VFOBMode = r.modeB;
            c_.queue.SetXcvrCmdTimerInterval();
            s.UpdateVFO();
            break;
        case TenTecReply::Split:
            s.ReportSplit(r.split);
            break;
        case TenTecReply::SplitDual:
            c_.common.DebugLog(QStringLiteral("   KV = ") + r.text);
            s.ReportSplit(r.split);
            s.ReportDual(r.dual);
            break;
        case TenTecReply::Meter:
            s.ReportMeter(r.meter);
            break;
        case TenTecReply::MeterText:
            c_.common.DebugLog(QStringLiteral("   SMeter = ") + r.text);
            c_.hooks.SetSMeter(QStringLiteral("S") + r.text);
            break;
        case TenTecReply::Refusal:
            s.ReportRefusal(c_.queue.LastCommandName + QStringLiteral(" (") + r.text + QLatin1Char(')'));
            return;
    }
    s.ReportAnswered();
}

// ---- the Pegasus bridge ----

void TenTecProtocol::setFolderError(const QString& text) {
    if (folderError_ == text) return;
    folderError_ = text;
    c_.state.ReportLinkFault();
}

void TenTecProtocol::ClearLinkFault() {
    setFolderError(QString());
}

QString TenTecProtocol::controlFolder() {
    const QString folder = c_.view.controlFolderText();
    if (folder.isEmpty()) {
        setFolderError(QStringLiteral("control folder not specified"));
        return QString();
    }
    if (!QFileInfo(folder).isDir()) {
        setFolderError(QStringLiteral("control folder doesn't exist"));
        return QString();
    }
    setFolderError(QString());
    return folder;
}

void TenTecProtocol::PegasusUpdate(const QString& freq1, const QString& mode1, const QString& freq2,
                                   const QString& mode2) {
    const QString folder = controlFolder();
    if (folder.isEmpty() || freq1.isEmpty() || mode1.isEmpty()) return;
    QString text = freq1 + QStringLiteral("\r\n") + mode1 + QStringLiteral("\r\n");
    if (!freq2.isEmpty() && !mode2.isEmpty())
        text += freq2 + QStringLiteral("\r\n") + mode2 + QStringLiteral("\r\n");
    // Written beside and renamed into place: the control program never reads half a file.
    QSaveFile f(QDir(folder).filePath(QStringLiteral("PEGASUS.IN")));
    if (!f.open(QIODevice::WriteOnly) || f.write(text.toLatin1()) < 0 || !f.commit())
        c_.common.LogLine(QStringLiteral("KavModule.PegasusUpdate: ") + f.errorString());
}

void TenTecProtocol::PollPegasus() {
    Common& log = c_.common;
    log.DebugLog(QStringLiteral("KavModule.PollPegasus start"));
    const QString folder = controlFolder();
    if (folder.isEmpty()) return;
    const QString name = QDir(folder).filePath(QStringLiteral("PEGASUS.OUT"));
    log.DebugLog(QStringLiteral("KavModule.PollPegasus, filename = ") + name);
    const QFileInfo info(name);
    if (!info.exists()) {
        log.DebugLog(QStringLiteral("KavModule.PollPegasus, filename does not exist"));
        return;
    }
    // An unchanged file says what it said last time: it isn't opened again.
    if (!outReading_ || info.lastModified() != outTime_ || info.size() != outSize_) {
        QFile f(name);
        if (!f.open(QIODevice::ReadOnly) || ::flock(f.handle(), LOCK_EX | LOCK_NB) != 0) {
            log.DebugLog(QStringLiteral("KavModule.PollPegasus, exclusive open failed"));
            return;
        }
        const QByteArray text = f.read(4096);
        f.close();
        log.DebugLog(QStringLiteral("KavModule.PollPegasus, file closed"));
        outReading_ = ReadPegasusOut(text);
        outTime_ = info.lastModified();
        outSize_ = info.size();
    }
    if (!outReading_) return;
    c_.queue.SetXcvrCmdTimerInterval();
    c_.state.UpdateRadioFreq(outReading_->kHz);
    c_.state.UpdateXcvrMode(outReading_->mode);
    c_.state.ReportAnswered();
}

}  // namespace tv
