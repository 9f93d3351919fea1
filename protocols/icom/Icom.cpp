#include "protocols/icom/Icom.h"

#include "core/CommandQueue.h"
#include "core/CoreView.h"
#include "core/Hooks.h"
#include "core/RadioCatalogue.h"
#include "core/RadioLink.h"
#include "core/RadioState.h"
#include "core/SelectedRadio.h"
#include "protocols/Bcd.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <algorithm>
#include <cmath>

namespace tv {

namespace {
constexpr std::uint8_t kPreamble = 0xFE, kEnd = 0xFD, kController = 0xE0, kOK = 0xFB, kNG = 0xFA;
constexpr double kLargestFrequency = 10000000.0;  // kHz: 10 GHz needs an eleventh digit
// The data mode sub-command: 1A 06, then data off/on and the filter it goes with (00 when off).
constexpr std::uint8_t kMemoryControl = 0x1A, kDataMode = 0x06;

QByteArray bytes(std::initializer_list<int> list) {
    QByteArray b;
    b.reserve(qsizetype(list.size()));
    for (int v : list) b.append(char(std::uint8_t(v)));
    return b;
}
}  // namespace

const CivDialect kIcomDialect{"Icom ", true, InterrogationRule::ForcedWithMeter, nullptr};
const CivDialect kTenTecCivDialect{"TenTec ", false, InterrogationRule::Unchanged, "OMNIV.9"};

QByteArray IcomFrequencyBytes(double f, bool fiveBytes) {
    // Each step truncates after adding 0.0005 kHz, so 14025.5 isn't read as 14025.4999...
    const auto g5 = static_cast<long long>(std::floor((f + 0.0005) / 100000));
    f -= double(g5) * 100000;
    const auto g4 = static_cast<long long>(std::floor((f + 0.0005) / 1000));
    f -= double(g4) * 1000;
    const auto g3 = static_cast<long long>(std::floor((f + 0.0005) / 10));
    f -= double(g3) * 10;
    const auto g2 = static_cast<long long>(std::floor((f + 0.0005) * 10));
    f -= double(g2) / 10;
    const auto g1 = static_cast<long long>(std::floor((f + 0.0005) * 1000));
    QByteArray out;
    for (long long g : {g1, g2, g3, g4}) out.append(char(BcdByte(int(g))));
    if (fiveBytes) out.append(char(BcdByte(int(g5))));
    return out;
}

QString FormatBCDByte(std::uint8_t value) { return QString::number(value / 16) + QString::number(value % 16); }

QByteArray IcomFrame(std::uint8_t address, const QByteArray& body) {
    QByteArray f;
    f.reserve(body.size() + 5);
    f.append(char(kPreamble)).append(char(kPreamble)).append(char(address)).append(char(kController));
    f.append(body).append(char(kEnd));
    return f;
}

IcomProtocol::IcomProtocol(ProtocolContext& context, const RadioInfo& radio, const CivDialect& dialect)
    : c_(context), radio_(radio), dialect_(dialect) {
    traits_.framing = Framing::EndMark;
    traits_.endMark = kEnd;
    traits_.echoesOnBus = true;
    traits_.addressed = true;
    traits_.oneRecordPerTick = true;
    traits_.secondaryFrequencyBySwitching = true;
    traits_.asksAfterSplitOrDual = dialect.asksAfterReceiverSwitch;
    traits_.mainReceiverBeforeRecordTune = dialect.asksAfterReceiverSwitch;
    traits_.filterGroupsInModeCommands = true;
    traits_.interrogation = dialect.interrogation;
}

QString IcomProtocol::DisplayName(const RadioInfo& radio) const {
    return QString::fromLatin1(dialect_.displayPrefix) + radio.model;
}

void IcomProtocol::BringUp() { c_.hooks.InitializeIcomFilterSettings(); }

void IcomProtocol::send(std::uint8_t address, const QByteArray& body) { c_.link.SendCommand(IcomFrame(address, body)); }

const IcomProtocol::PollFrames& IcomProtocol::polls(std::uint8_t address) {
    if (polls_.address != address) {
        polls_.address = address;
        polls_.frequency = IcomFrame(address, bytes({0x03}));
        polls_.mode = IcomFrame(address, bytes({0x04}));
        polls_.meter = IcomFrame(address, bytes({0x15, 0x02}));
    }
    return polls_;
}

int IcomProtocol::ModeArgument(int mode) const {
    if (c_.view.modeFiltersEnabled()) return IcomFilterGroupIndex(c_.state.ModeFilters[size_t(mode)]);
    return c_.state.RadioFilterGroup;
}

void IcomProtocol::reportLevel(RadioLevel level, int reading) {
    // Readings run 0..255. Power is a share of full power; ALC's zone ends at 120; SWR follows the
    // meter's printed scale: 0 is 1.0, 48 is 1.5, 80 is 2.0, 120 is 3.0, and 240 is 6.0.
    double value = reading / 255.0;
    if (level == RadioLevel::Alc) value = std::min(reading / 120.0, 1.0);
    if (level == RadioLevel::Swr) {
        static constexpr double kScale[][2] = {{0, 1.0}, {48, 1.5}, {80, 2.0}, {120, 3.0}, {240, 6.0}};
        value = 6.0;
        for (size_t i = 1; i < std::size(kScale); ++i)
            if (reading <= kScale[i][0]) {
                const double t = (reading - kScale[i - 1][0]) / (kScale[i][0] - kScale[i - 1][0]);
                value = kScale[i - 1][1] + t * (kScale[i][1] - kScale[i - 1][1]);
                break;
            }
    }
    c_.state.ReportLevel(level, value);
}

int IcomProtocol::FilterGroupWidthHz(int mode, const QString& group) const {
    // The factory widths of filter positions 1, 2 and 3 (widest first), by the program's mode number:
    // the layout of the CI-V radios' default filters. An operator who set other widths on the radio
    // gets the position nearest by these, not by hers.
    static constexpr int kWidths[10][3] = {
        {3000, 2400, 1800},    // LSB
        {3000, 2400, 1800},    // USB
        {9000, 6000, 3000},    // AM
        {1200, 500, 250},      // CW
        {2400, 500, 250},      // RTTY
        {15000, 10000, 7000},  // FM
        {0, 0, 0},             // WBFM: one fixed filter
        {1200, 500, 250},      // CW-R
        {2400, 500, 250},      // RTTY-R
        {3000, 2400, 1800},    // PKT: the data sideband's
    };
    const int position = IcomFilterGroupIndex(group);
    if (!radio_.filterGroups || mode < 0 || mode >= 10 || position < 1 || position > 3) return 0;
    if (position == 3 && !radio_.filter0) return 0;
    return kWidths[mode][position - 1];
}

void IcomProtocol::Execute(const XcvrCmd& c) {
    // Frames go to the address that was current when the command was queued.
    const auto to = std::uint8_t(c.theRadio);
    switch (c.theCmd) {
        case XcvrCmdSplit:
        case XcvrCmdVFOA:
        case XcvrCmdVFOB:
        case XcvrCmdVFOEqual:
        case XcvrCmdVFOXch:
            if (dialect_.nudgedModel && radio_.model.toUpper() == QLatin1String(dialect_.nudgedModel))
                FreqNudgePending = true;
            break;
        default: break;
    }
    switch (c.theCmd) {
        case XcvrCmdFreq: {
            // Ten digits of hertz are all a frame holds: anything else is refused, never wrapped.
            if (!(c.theFreq >= 0 && c.theFreq < kLargestFrequency))
                throw TvError(kErrOverflow, QStringLiteral("no CI-V frame holds %1 kHz").arg(c.theFreq, 0, 'g', 15));
            const QByteArray digits = IcomFrequencyBytes(c.theFreq, true);
            c_.common.DebugLog(QStringLiteral("KavModule.ExecuteNextXcvrCmd SetFreq Icom, Freq = ") +
                               QString::number(c.theFreq, 'g', 15));
            QString shown;
            for (int i = 4; i >= 0; --i) shown += FormatBCDByte(std::uint8_t(digits.at(i))) + QLatin1Char(' ');
            c_.common.DebugLog(QStringLiteral("KavModule.ExecuteNextXcvrCmd SetFreq Icom, Freq digits = ") +
                               shown.trimmed());
            // The frame length follows FILTERBYTE, not SHORTFREQ: a four-byte radio needs both flags.
            send(to, bytes({0x05}) + (radio_.filterByte ? digits : digits.left(4)));
            break;
        }
        case XcvrCmdMode:
            c_.state.ReportFilterGroup(c.theArg);
            if (c.theMode >= 0) sendMode(to, c.theMode, c.theArg);
            break;
        case XcvrCmdFilterGroup:
            c_.state.ReportFilterGroup(c.theArg);
            if (radio_.filterByte && c.theMode >= 0) sendMode(to, c.theMode, c.theArg);
            break;
        case XcvrCmdDual: send(to, bytes({0x07, c.theArg ? 0xC1 : 0xC0})); break;
        case XcvrCmdSplit: send(to, bytes({0x0F, c.theArg ? 0x01 : 0x00})); break;
        case XcvrCmdVFOA: send(to, bytes({0x07, 0x00})); break;
        case XcvrCmdVFOB: send(to, bytes({0x07, 0x01})); break;
        case XcvrCmdVFOEqual: send(to, bytes({0x07, 0xA0})); break;
        case XcvrCmdVFOXch:
        case XcvrCmdMainSubXch: send(to, bytes({0x07, 0xB0})); break;
        case XcvrCmdMain: send(to, bytes({0x07, 0xD0})); break;
        case XcvrCmdSub: send(to, bytes({0x07, 0xD1})); break;
        case XcvrCmdMainSubEqual: send(to, bytes({0x07, 0xB1})); break;
        case XcvrCmdPTT: send(to, bytes({0x1C, 0x00, c.theArg ? 1 : 0})); break;
        default: break;  // filters, ID, power, lock, step: nothing on this bus
    }
}

void IcomProtocol::sendMode(std::uint8_t to, int mode, int filter) {
    const bool data = radio_.dataMode && mode == ModePKT;
    QByteArray body = bytes({0x06, data ? ModeUSB : mode});
    if (radio_.filterByte) body.append(char(std::uint8_t(filter)));
    send(to, body);
    if (data || (radio_.dataMode && dataOn_)) {
        // With data on the filter is one of the three, never "none".
        send(to, bytes({kMemoryControl, kDataMode, data ? 1 : 0, data ? std::clamp(filter, 1, 3) : 0}));
        dataOn_ = data;
    }
}

int IcomProtocol::modeWithData(int reported) const {
    return radio_.dataMode && dataOn_ && reported == ModeUSB ? int(ModePKT) : reported;
}

void IcomProtocol::RequestFrequency() {
    if (c_.radio.ValidID()) c_.link.SendCommand(polls(c_.radio.address()).frequency);
}

void IcomProtocol::RequestMode() {
    if (c_.radio.ValidID()) c_.link.SendCommand(polls(c_.radio.address()).mode);
}

int IcomProtocol::InterrogationStep(int phase) {
    switch (phase) {
        case 0:
        case 2:
            if (const auto level = phase == 2 && radio_.txLevels ? c_.state.TakeWantedLevel() : std::nullopt) {
                // A level a client asks for takes the second meter read of the round: no extra frame.
                static constexpr std::uint8_t kLevelRead[kRadioLevelCount][2] = {{0x14, 0x0A}, {0x15, 0x12}, {0x15, 0x13}};
                send(c_.radio.address(), bytes({kLevelRead[int(*level)][0], kLevelRead[int(*level)][1]}));
            } else if (radio_.sMeter) {
                // To the address in force, checked or not: the meter poll has no test of its own.
                c_.link.SendCommand(polls(c_.radio.address()).meter);
            } else {
                c_.queue.RequestFrequency();
            }
            return phase + 1;
        case 1: c_.queue.RequestFrequency(); return 2;
        case 3: c_.queue.RequestMode(); return 0;
        case 4: c_.queue.RequestFrequency(); return 0;
        default: return phase;
    }
}

void IcomProtocol::Decode(const QByteArray& m) {
    if (!c_.radio.ValidID()) return;
    const int n = int(m.size());
    auto b = [&m](int i) { return std::uint8_t(m[i - 1]); };  // positions from 1, as the frame is drawn
    // Our own frames come back from the bus addressed to the radio: they fall out here.
    if (n < 6 || b(2) != kPreamble || !(b(3) == kController || b(3) == 0) || b(4) != c_.radio.address() ||
        b(n) != kEnd)
        return;
    const std::uint8_t cmd = b(5);
    c_.state.ReportAnswered();
    if ((cmd == 0x00 || cmd == 0x03) && (n == 10 || n == 11)) {
        // Ten digits reach 1 GHz, eight (SHORTFREQ radios) 10 MHz: the flag, not the length, scales.
        const double digits = double(FromBcd(QByteArrayView(m).sliced(5, n - 6), BcdOrder::LeastFirst));
        double sum = digits * std::pow(10.0, 5 - 2 * (n - 6));
        if (!radio_.shortFreq) sum *= 100;
        const double kHz = std::round(sum * 1000) / 1000;
        c_.queue.SetXcvrCmdTimerInterval();
        c_.state.UpdateRadioFreq(kHz);
        c_.state.ReportFirstFrequency();
        if (FreqNudgePending) {
            FreqNudgePending = false;
            c_.queue.SetXcvrFreq(kHz + 1);
            c_.queue.SetXcvrWait();
            c_.queue.SetXcvrFreq(kHz);
        }
    } else if ((cmd == 0x01 || cmd == 0x04) && (n == 7 || n == 8)) {
        if (radio_.dataMode && b(6) != reportedMode_) {
            // A new mode may come with data on or off: asked once, not on every poll.
            send(c_.radio.address(), bytes({kMemoryControl, kDataMode}));
        }
        reportedMode_ = b(6);
        c_.state.UpdateXcvrMode(modeWithData(b(6)));
        c_.state.ReportFilterGroup(n == 8 && radio_.filterByte ? b(7) : 0);
        c_.queue.SetXcvrCmdTimerInterval();
    } else if (cmd == 0x15 && b(6) == 0x02 && n == 9) {
        const int value = b(7) * 100 + (b(8) / 16) * 10 + (b(8) % 16);
        c_.state.ReportMeter(value / 255.0);
    } else if ((cmd == 0x14 && b(6) == 0x0A) || (cmd == 0x15 && (b(6) == 0x12 || b(6) == 0x13))) {
        if (n == 9 && radio_.txLevels) reportLevel(cmd == 0x14 ? RadioLevel::RfPower
                                                   : b(6) == 0x12 ? RadioLevel::Swr
                                                                  : RadioLevel::Alc,
                                                   b(7) * 100 + (b(8) / 16) * 10 + (b(8) % 16));
    } else if (cmd == kMemoryControl && b(6) == kDataMode && n == 9 && radio_.dataMode) {
        dataOn_ = b(7) != 0;
        if (reportedMode_ >= 0) c_.state.UpdateXcvrMode(modeWithData(reportedMode_));
    } else if (cmd == kOK && n == 6) {
        c_.queue.AccelerateNextXcvrCmd();
    } else if (cmd == kNG && n == 6) {
        c_.queue.InterrogateRadio();
        c_.state.ReportRefusal();
    }
}

}  // namespace tv
