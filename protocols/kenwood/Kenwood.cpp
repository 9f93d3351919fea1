#include "protocols/kenwood/Kenwood.h"

#include "core/CommandQueue.h"
#include "core/RadioLink.h"
#include "core/RadioState.h"
#include "protocols/kenwood/KenwoodPassband.h"
#include "services/Common.h"
#include "services/Convert.h"
#include "services/Errors.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>

namespace tv {

namespace {

using MeterChain = KenwoodModel::MeterChain;
using WidthChain = KenwoodModel::WidthChain;
using WidthReply = KenwoodModel::WidthReply;
using ShiftReply = KenwoodModel::ShiftReply;
using FilterCommands = KenwoodModel::FilterCommands;

// The TS-570S answers with an ID of its own and is otherwise the D, meter scale included.
constexpr KenwoodModel kTS570D = {.id = 17,
                                  .displayName = "Kenwood TS-570D",
                                  .modelName = "TS570",
                                  .sMeter = true,
                                  .autoInformation = true,
                                  .sMeterFile = "TS-570D",
                                  .meterRequest = "SM;",
                                  .meterFullScale = 15,
                                  .afterMeter = MeterChain::CutsOrWidthByMode,
                                  .afterWidth = WidthChain::ShiftInSidebandAndNarrow,
                                  .shiftAfterHighCut = true,
                                  .widthReply = WidthReply::Width,
                                  .shiftReply = ShiftReply::RoundedToHundreds,
                                  .cutCodesReplied = true,
                                  .shortRepliesIgnored = true,
                                  .filterCommands = FilterCommands::CodesAndWidth,
                                  .shiftSignOwnPosition = true,
                                  .passband = &TS570Passband};

constexpr KenwoodModel sameAs(KenwoodModel row, int id, const char* displayName) {
    row.id = id;
    row.displayName = displayName;
    return row;
}

// clang-format off
constexpr KenwoodModel kModels[] = {
    {.id = 1, .displayName = "Kenwood TS-711S", .modelName = "TS711", .splitBySP = true},
    {.id = 2, .displayName = "Kenwood TS-811S", .modelName = "TS811", .splitBySP = true},
    {.id = 3, .displayName = "Kenwood TS-940S", .modelName = "TS940", .splitBySP = true},
    {.id = 4, .displayName = "Kenwood TS-440S", .modelName = "TS440", .splitBySP = true},
    {.id = 5, .displayName = "Kenwood R5000", .modelName = "R5000"},
    {.id = 6, .displayName = "Kenwood TS-140/680", .modelName = "TS140", .splitBySP = true},
    // A meter read by "SM;" on a scale of 30, and nothing else of the later facilities.
    {.id = 9, .displayName = "Kenwood TS-850", .modelName = "TS850", .sMeter = true, .autoInformation = true,
     .sMeterFile = "TS-850", .meterRequest = "SM;", .meterFullScale = 30},
    {.id = 10, .displayName = "Kenwood TS-450", .modelName = "TS450", .sMeter = true, .autoInformation = true,
     .sMeterFile = "TS-450", .meterRequest = "SM;", .meterFullScale = 30},
    {.id = 11, .displayName = "Kenwood TS-690", .modelName = "TS690", .sMeter = true, .autoInformation = true,
     .sMeterFile = "TS-690", .meterRequest = "SM;", .meterFullScale = 30},
    {.id = 12, .displayName = "Kenwood TS-950SDX", .modelName = "TS950"},
    {.id = 13, .displayName = "Kenwood TS-50S", .modelName = "TS50", .splitBySP = true},
    // Its sideband passband is IF shift (high edge) and width (low edge), in tens of hertz.
    {.id = 15,
     .displayName = "Kenwood TS-870S",
     .modelName = "TS870",
     .sMeter = true,
     .autoInformation = true,
     .sMeterFile = "TS-870S",
     .meterRequest = "SM;",
     .meterFullScale = 30,
     .afterMeter = MeterChain::WidthAlways,
     .afterWidth = WidthChain::ShiftAlways,
     .widthReply = WidthReply::TimesTenByMode,
     .shiftReply = ShiftReply::CutOrShiftByMode,
     .filterCommands = FilterCommands::ShiftAndWidthOnly,
     .passband = &TS870Passband},
    kTS570D,
    sameAs(kTS570D, 18, "Kenwood TS-570S"),
    // Its meter request names the receiver, and so does the reply.
    {.id = 19,
     .displayName = "Kenwood TS-2000",
     .modelName = "TS2000",
     .sMeter = true,
     .autoInformation = true,
     .sMeterFile = "TS-2000",
     .meterRequest = "SM0;",
     .meterFullScale = 30,
     .meterFrom = 4,
     .afterMeter = MeterChain::CutsOrWidthByMode,
     .afterWidth = WidthChain::ShiftInCW,
     .widthReply = WidthReply::Width,
     .shiftReply = ShiftReply::Shift,
     .cutCodesReplied = true,
     .filterCommands = FilterCommands::CodesAndWidth,
     .passband = &TS2000Passband},
};
// clang-format on
static_assert(std::size(kModels) == 15, "one row for each ID the radios answer with");

// An unidentified radio that answers is asked for its ID at its first reply and then at every this many.
constexpr int kAskAgainEvery = 20;

// The oldest radios choose a VFO with one command; everything from the TS-140 on has FR and FT.
constexpr int kFirstModelWithReceiveTransmitVFO = 6;

// A number in a fixed number of digits, the minus sign in front of the zeros.
QByteArray padded(long long value, int width) {
    QByteArray digits = QByteArray::number(std::llabs(value));
    if (digits.size() < width) digits.prepend(QByteArray(width - digits.size(), '0'));
    return value < 0 ? QByteArray("-") + digits : digits;
}

bool isSideband(int mode) { return mode == ModeLSB || mode == ModeUSB; }
bool isNarrowMode(int mode) { return mode == ModeCW || mode == ModeRTTY || mode == ModeCWR || mode == ModeRTTYR; }
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

KenwoodProtocol::KenwoodProtocol(ProtocolContext& context, const RadioInfo& radio, std::shared_ptr<KenwoodFamily> family)
    : c_(context), radio_(radio), family_(std::move(family)) {
    traits_.framing = Framing::EndMark;
    traits_.endMark = ';';
    traits_.secondaryIsVfoB = true;
    traits_.splitMovesTransmitVfo = true;
    traits_.interrogation = InterrogationRule::Forced;
}

QString KenwoodProtocol::DisplayName(const RadioInfo&) const { return QStringLiteral("Kenwood (model unknown)"); }

void KenwoodProtocol::BringUp() {
    c_.common.LogLine(QStringLiteral("KavModule.UpdateRadio: sending Kenwood model ID command"));
    // Twice: a radio that was asleep may miss the first.
    send("ID;");
    send("ID;");
}

QString KenwoodProtocol::SMeterFile() const { return model_ ? QString::fromLatin1(model_->sMeterFile) : QString(); }

bool KenwoodProtocol::hasMeter() const { return identified_ ? (model_ && model_->sMeter) : radio_.sMeter; }

// ---- encoding ----

QByteArray KenwoodProtocol::digits11(double kHz) {
    // Eleven digits of hertz are all the field holds: anything else is refused, never cut or wrapped.
    if (!(kHz >= 0 && kHz * 1000.0 < 1e11))
        throw TvError(kErrOverflow, QStringLiteral("no Kenwood field holds %1 kHz").arg(kHz, 0, 'g', 15));
    return padded(std::llround(kHz * 1000.0), 11);
}

void KenwoodProtocol::send(const QByteArray& text) { c_.link.SendCommand(text); }

void KenwoodProtocol::Execute(const XcvrCmd& c) {
    RadioState& s = c_.state;
    switch (c.theCmd) {
        case XcvrCmdFreq:
            if (s.CurrentVFO != 0) {
                s.VFOBFreq = c.theFreq;
                send("FB" + digits11(c.theFreq) + ';');
            } else {
                s.VFOAFreq = c.theFreq;
                send("FA" + digits11(c.theFreq) + ';');
            }
            break;
        case XcvrCmdMode:
            // The queue has already shown the mode.
            send("MD" + QByteArray::number(KenwoodMode(c.theMode)) + ';');
            break;
        case XcvrCmdFilters: {
            const int value = c.theArg;
            const FilterCommands how = model_ ? model_->filterCommands : FilterCommands::None;
            QByteArray out;
            if (how == FilterCommands::CodesAndWidth) {
                if (c.theArg2 == FilterHighCut) out = "SH" + padded(value, 2) + ';';
                else if (c.theArg2 == FilterLowCut) out = "SL" + padded(value, 2) + ';';
                else if (c.theArg2 == FilterWidth) out = "FW" + padded(value, 4) + ';';
                else if (c.theArg2 == FilterShift)
                    out = (model_->shiftSignOwnPosition && value < 0) ? "IS-" + padded(-value, 4) + ';'
                                                                      : "IS " + padded(value, 4) + ';';
            } else if (how == FilterCommands::ShiftAndWidthOnly) {
                if (c.theArg2 == FilterHighCut || c.theArg2 == FilterShift) out = "IS " + padded(value, 4) + ';';
                else if (c.theArg2 == FilterLowCut || c.theArg2 == FilterWidth) out = "FW" + padded(value, 4) + ';';
            }
            if (!out.isEmpty()) send(out);
            break;
        }
        case XcvrCmdSplit: {
            const bool on = c.theArg != 0;
            if (model_ && model_->splitBySP) {
                send(on ? "SP1;" : "SP0;");
            } else if (on) {
                // Receive on the selected VFO first, then transmit on the other.
                if (s.CurrentVFO != 0) {
                    send("FR1;");
                    send("FT0;");
                } else {
                    send("FR0;");
                    send("FT1;");
                }
            } else {
                // Back to simplex: transmit follows the receive VFO first.
                if (s.CurrentVFO != 0) {
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
            if (family_->lastModelId < kFirstModelWithReceiveTransmitVFO) {
                send("FN0;");
            } else {
                send("FR0;");
                send("FT0;");
            }
            break;
        case XcvrCmdVFOB:
            if (family_->lastModelId < kFirstModelWithReceiveTransmitVFO) {
                send("FN1;");
            } else {
                send("FR1;");
                send("FT1;");
            }
            break;
        case XcvrCmdVFOEqual: {
            const QByteArray d = digits11(s.RadioFreq);
            s.VFOAFreq = s.RadioFreq;
            s.VFOBFreq = s.RadioFreq;
            send("FA" + d + ';');
            send("FB" + d + ';');
            break;
        }
        case XcvrCmdVFOXch: {
            // No radio command exchanges the VFOs: it is composed from a mode and two frequencies.
            const double oldA = s.VFOAFreq, oldB = s.VFOBFreq;
            s.VFOAFreq = oldB;
            s.VFOBFreq = oldA;
            std::swap(s.VFOAMode, s.VFOBMode);
            const int mode = s.CurrentVFO == 1 ? s.VFOBMode : s.VFOAMode;
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
            s.VFOBFreq = c.theFreq;
            send("FB" + digits11(c.theFreq) + ';');
            break;
        default: break;  // no Kenwood command for the rest
    }
}

void KenwoodProtocol::RequestFrequency() { send(c_.state.CurrentVFO == 1 ? "FB;" : "FA;"); }

void KenwoodProtocol::RequestMode() { send("MD;"); }

int KenwoodProtocol::InterrogationStep(int phase) {
    switch (phase) {
        case 0:
        case 2:
            if (phase == 2 && ReadsLevel(RadioLevel::RfPower) && c_.state.TakeWantedLevel()) {
                // The power setting a client asks for takes the second meter read of the round.
                send("PC;");
            } else if (hasMeter()) {
                if (model_ && model_->meterRequest) send(model_->meterRequest);
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
    for (int i = from; i <= to && i <= int(buffer_.size()); ++i) out.append(buffer_[size_t(i - 1)]);
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

void KenwoodProtocol::Decode(const QByteArray& message) {
    count_ = int(std::min<qsizetype>(message.size(), qsizetype(buffer_.size())));
    std::copy(message.begin(), message.begin() + count_, buffer_.begin());
    Guard("KavModule.DecodeKenwoodMessage", [&] { decodeMessage(); });
}

void KenwoodProtocol::decodeMessage() {
    const QByteArray letters = field(1, 2).toUpper();
    RadioState& s = c_.state;
    // Any message ended by ";" is the radio's own: the line carries no echo.
    s.ReportAnswered();
    if (!identified_ && letters != "ID" && unidentifiedReplies_++ % kAskAgainEvery == 0) {
        // A radio that was off when it was chosen never heard the two requests: it is asked again
        // when it first speaks, and now and then after that until it says who it is.
        send("ID;");
    }
    if (letters == "ID") {
        identify();
    } else if (letters == "IF") {
        decodeStatus();
    } else if (letters == "FA") {
        s.VFOAFreq = fieldKHz(3, 13);
    } else if (letters == "FB") {
        s.VFOBFreq = fieldKHz(3, 13);
    } else if (letters == "FR") {
        s.CurrentVFO = int(number(3, 3));
    } else if (letters == "MD") {
        reportMode(GetModeFromKenwoodStatus(int(number(3, 3))));
    } else if (letters == "SM") {
        decodeSMeter();
    } else if (letters == "PC" && ReadsLevel(RadioLevel::RfPower)) {
        // Watts out of the hundred these radios give on HF.
        const QByteArray watts = field(3, 5);
        if (watts.size() == 3 && std::all_of(watts.begin(), watts.end(), [](char ch) { return ch >= '0' && ch <= '9'; }))
            c_.state.ReportLevel(RadioLevel::RfPower, std::min(watts.toInt(), 100) / 100.0);
    } else if (letters == "FW" || letters == "IS" || letters == "SH" || letters == "SL") {
        decodeFilterReply(letters);
    }
    // FT, LK, MR, MX, PT, RM and the refusal "?" change nothing here.
}

void KenwoodProtocol::identify() {
    const QByteArray idText = field(3, 5);
    c_.common.LogLine(QStringLiteral("Kenwood model ID: ") + QString::fromLatin1(idText));
    family_->lastModelId = 0;
    family_->lastModelId = int(number(3, 5));
    const int id = family_->lastModelId;
    identified_ = true;
    model_ = FindKenwoodModel(id);

    RadioIdentity who;
    who.displayName = model_ ? QString::fromLatin1(model_->displayName) : QStringLiteral("Kenwood ") + QString::fromLatin1(idText);
    who.hasMeter = model_ && model_->sMeter;
    who.meterFile = SMeterFile();
    who.reverseModes = id >= kFirstModelWithReceiveTransmitVFO;
    c_.state.ReportPassbandModel(model_ && model_->passband ? model_->passband() : nullptr);
    // Only after the lists are filled: the radio starts reporting at once.
    if (model_ && model_->autoInformation) send("AI1;");
    c_.state.ReportIdentity(who);
    c_.state.CurrentVFO = 0;
    if (id >= kFirstModelWithReceiveTransmitVFO) {
        send("FR0;");
        send("FT0;");
    } else {
        // What these radios have always been sent here, without the leading F.
        send("N0;");
    }
}

void KenwoodProtocol::decodeStatus() {
    RadioState& s = c_.state;
    const double kHz = fieldKHz(3, 13);
    c_.queue.SetXcvrCmdTimerInterval();
    s.UpdateRadioFreq(kHz);
    s.ReportFirstFrequency();
    const int modeDigit = int(number(30, 30));
    s.CurrentVFO = int(number(31, 31));
    // A memory channel (2) belongs to neither VFO.
    if (s.CurrentVFO == 0) s.VFOAFreq = kHz;
    else if (s.CurrentVFO == 1) s.VFOBFreq = kHz;
    s.UpdateVFOCaption();
    s.ReportSplit(number(33, 33) != 0);
    const int mode = GetModeFromKenwoodStatus(modeDigit);
    if (s.CurrentVFO == 0) s.VFOAMode = mode;
    else if (s.CurrentVFO == 1) s.VFOBMode = mode;
    reportMode(mode);
}

void KenwoodProtocol::reportMode(int mode) {
    c_.state.UpdateXcvrMode(mode);
    c_.state.ReportPassbandMode();
}

void KenwoodProtocol::decodeSMeter() {
    if (!model_ || model_->meterFullScale == 0) return;
    const long long value = number(model_->meterFrom, model_->meterFrom + 3);
    c_.common.DebugLog(QStringLiteral("SM received: %1").arg(value));
    c_.state.ReportMeter(double(float(value) / float(model_->meterFullScale)));

    // The meter reply paces a walk through the passband settings, in the gaps of the polling.
    const int mode = c_.state.RadioMode;
    if (model_->afterMeter == MeterChain::CutsOrWidthByMode) {
        if (isSideband(mode) || mode == ModeFM) send("SL;");
        else if (isNarrowMode(mode)) send("FW;");
    } else if (model_->afterMeter == MeterChain::WidthAlways) {
        send("FW;");
    }
}

void KenwoodProtocol::decodeFilterReply(const QByteArray& letters) {
    const int mode = c_.state.RadioMode;
    const bool guarded = model_ && model_->shortRepliesIgnored;
    auto mirror = [&] { Guard("KavModule.DecodeKenwoodMessage", [&] { mirrorFilterReply(letters); }); };
    if (letters == "FW") {
        c_.common.DebugLog(QStringLiteral("FW: ") + QString::fromLatin1(field(3, count_ - 1)));
        mirror();
        const WidthChain next = model_ ? model_->afterWidth : WidthChain::None;
        if (next == WidthChain::ShiftInSidebandAndNarrow) {
            if (isSideband(mode) || isNarrowMode(mode)) send("IS;");
        } else if (next == WidthChain::ShiftInCW) {
            if (isCW(mode)) send("IS;");
        } else if (next == WidthChain::ShiftAlways) {
            c_.common.DebugLog(QStringLiteral("sending IS request command"));
            send("IS;");
        }
    } else if (letters == "IS") {
        c_.common.DebugLog(QStringLiteral("IS: ") + QString::fromLatin1(field(3, 7)));
        if (guarded && count_ < 8) return;
        mirror();
    } else if (letters == "SL") {
        if (!(guarded && count_ < 5)) mirror();
        send("SH;");
    } else if (letters == "SH") {
        if (!(guarded && count_ < 5)) mirror();
        if (model_ && model_->shiftAfterHighCut) send("IS;");
    }
}

void KenwoodProtocol::mirrorFilterReply(const QByteArray& letters) {
    if (!model_) return;
    RadioState& s = c_.state;
    const int mode = s.RadioMode;
    // Only the message itself: a value read back is never taken from an older reply.
    auto text = [this](int from, int to) {
        QString t;
        for (int i = from; i <= to && i <= count_; ++i) t += QLatin1Char(buffer_[size_t(i - 1)]);
        return t;
    };
    if (letters == "FW") {
        // Whole numbers of any size a reply may spell ("2e9 " among them) stay in range.
        const qint64 v = CLng(text(3, 6));
        if (model_->widthReply == WidthReply::Width) {
            s.ReportPassbandText(FilterWidth, QString::number(v));
        } else if (model_->widthReply == WidthReply::TimesTenByMode) {
            const QString t = QString::number(v * 10);
            if (isSideband(mode)) {
                c_.common.DebugLog(QStringLiteral("FW SSB: ") + t);
                s.ReportPassbandText(FilterLowCut, t);
            } else if (isNarrowMode(mode) || mode == ModeFM) {
                c_.common.DebugLog(QStringLiteral("FW CW/RTTY/FM: ") + t);
                s.ReportPassbandText(FilterWidth, t);
            }
        }
    } else if (letters == "IS") {
        if (model_->shiftReply == ShiftReply::Shift) {
            s.ReportPassbandText(FilterShift, QString::number(CLng(text(4, 7))));
        } else if (model_->shiftReply == ShiftReply::CutOrShiftByMode) {
            // Logged where it is shown: in the sideband modes as the high cut, in CW as the shift.
            const QString t = QString::number(CLng(text(4, 7)));
            if (isSideband(mode) || isCW(mode)) c_.common.DebugLog(QStringLiteral("IS freq: ") + t);
            if (isSideband(mode))
                s.ReportPassbandText(FilterHighCut, t);
            else if (isCW(mode))
                s.ReportPassbandText(FilterShift, t);
        } else if (model_->shiftReply == ShiftReply::RoundedToHundreds && count_ >= 8) {
            // The radio reports finer steps than the list: round to the nearest hundred, away from zero.
            const int n = CLng(text(3, 7));
            const int rounded = (n >= 0 ? (n + 50) / 100 : (n - 50) / 100) * 100;
            c_.common.DebugLog(QStringLiteral("TS570S rounded IS argument: ") + QString::number(rounded));
            s.ReportPassbandText(FilterShift, QString::number(rounded));
        }
    } else if (letters == "SL" || letters == "SH") {
        if (!model_->cutCodesReplied || (model_->shortRepliesIgnored && count_ < 5)) return;
        const int code = CLng(text(3, 4));
        s.ReportPassbandCode(letters == "SH" ? FilterHighCut : FilterLowCut, code);
    }
}

}  // namespace tv
