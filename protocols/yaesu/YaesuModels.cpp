#include "protocols/yaesu/YaesuModels.h"

#include "core/XcvrCmd.h"
#include "protocols/Bcd.h"

#include <array>
#include <cmath>
#include <iterator>

namespace tv {

namespace {

using L = YaesuLayout;
using S = YaesuModeSet;
using F = YaesuCommandSet;
using MF = YaesuMeterForm;
using FL = YaesuFlagsForm;
using SP = YaesuSplitForm;
using V = YaesuVfoForm;
using C = YaesuCopyForm;
using X = YaesuExchangeForm;
using P = YaesuPttForm;
using PW = YaesuPowerForm;
using SB = YaesuSecondForm;
using ST = YaesuStart;

// clang-format off
// The columns, in order:
//  name, mode bytes, reply layout, command set,
//  read: parameter, opcode, length, shorter by the flags, mode rides on it,
//  meter: form, parameter, opcode, length,  flags: form, length,
//  dual watch, split, VFO select, A <- B, exchange, PTT, small radio's opcodes, power, VFO B frequency,
//  own step, IF filters, start, slow when silent
constexpr YaesuModel kModels[] = {
    {"FT1000D", S::FT1000D, L::FT1000D, F::Classic, 3, 0x10, 32, false, true, MF::Byte1Of255, 0, 0xF7, 5,
     FL::None, 0, true, SP::Classic01, V::None, C::Op85, X::Op05, P::Classic0F, false, PW::None, SB::ViaExchange,
     true, false, ST::OwnStep, false},
    {"MP1000", S::MP, L::MP, F::Classic, 3, 0x10, 32, true, false, MF::Byte1Of255, 0, 0xF7, 5, FL::MP, 6, true,
     SP::Classic01, V::None, C::Op85, X::Op05, P::Classic0F, false, PW::None, SB::ViaExchange, false, true,
     ST::FilterGroups, false},
    {"MP1000MKV", S::MP, L::MP, F::Classic, 3, 0x10, 32, true, false, MF::Byte1Of255, 0, 0xF7, 5, FL::MP, 6, true,
     SP::Classic01, V::None, C::Op85, X::Op05, P::Classic0F, false, PW::None, SB::ViaExchange, false, true,
     ST::FilterGroups, false},
    {"FT990", S::FT990, L::FT990, F::Classic, 2, 0x10, 16, false, false, MF::Byte1Of255, 0, 0xF7, 5, FL::FT990, 5,
     false, SP::Classic01, V::Classic05, C::Op85, X::None, P::Classic0F, false, PW::None, SB::ViaVfoB, false, false,
     ST::Probe, false},
    {"FT920", S::FT920, L::FT920, F::Classic, 2, 0x10, 28, false, false, MF::Byte1Of255, 0, 0xF7, 5, FL::None, 0,
     false, SP::Classic01, V::None, C::None, X::Op05, P::Classic0F, false, PW::None, SB::ViaExchange, false, false,
     ST::None, false},
    {"FT900", S::FT900, L::FT900, F::Classic, 2, 0x10, 19, false, false, MF::Byte1Of255, 0, 0xF7, 5, FL::FT890, 5,
     false, SP::Classic01, V::Classic05, C::Op85, X::ByQueue, P::Classic0F, false, PW::None, SB::ViaVfoB, false, false,
     ST::None, false},
    {"FT890", S::FT890, L::FT890, F::Classic, 2, 0x10, 19, false, false, MF::Byte1Of255, 0, 0xF7, 5, FL::FT890, 5,
     false, SP::Classic01, V::Classic05, C::Op85, X::None, P::Classic0F, false, PW::None, SB::ViaVfoB, false, false,
     ST::None, false},
    {"FT840", S::FT890, L::FT890, F::Classic, 2, 0x10, 19, false, false, MF::Byte1Of255, 0, 0xF7, 5, FL::FT890, 5,
     false, SP::Classic01, V::Classic05, C::Op85, X::None, P::Classic0F, false, PW::None, SB::ViaVfoB, false, false,
     ST::None, false},
    {"FT757", S::FT757, L::FT757, F::Classic, 0, 0x10, 75, false, false, MF::Byte1Of15, 1, 0x10, 1, FL::None, 0,
     false, SP::Classic01, V::Classic05, C::ByQueue, X::ByQueue, P::None, false, PW::None, SB::ViaExchange, false,
     false, ST::None, false},
    {"FT747", S::FT747, L::FT747, F::Classic, 0, 0x10, 345, false, false, MF::None, 0, 0, 0, FL::None, 0, false,
     SP::Classic01, V::Classic05, C::ByQueue, X::ByQueue, P::Classic0F, false, PW::None, SB::ViaExchange, false, false,
     ST::None, false},
    {"FT767", S::FT767, L::FT767, F::Handshake, 0, 0, 0, false, false, MF::None, 0, 0, 0, FL::None, 0, false,
     SP::Toggle767, V::Handshake09, C::ByQueue, X::ByQueue, P::None, false, PW::None, SB::ViaVfoB, false, false,
     ST::Handshake, false},
    {"FT100", S::FT100, L::FT100, F::Classic, 0, 0x10, 16, false, false, MF::FT100, 0, 0xF7, 9, FL::FT100, 8,
     false, SP::Classic01, V::Classic05, C::None, X::None, P::Classic0F, false, PW::None, SB::ViaVfoB, false, false,
     ST::None, false},
    {"FT817", S::FT817, L::FT817, F::Modern, 0, 0x03, 5, false, false, MF::Low4Of15, 0, 0xE7, 1, FL::None, 0,
     false, SP::Answered02, V::ReadFlag, C::Switching81, X::Toggle81, P::Answered08, true, PW::Small0F,
     SB::ExchangeWithWaits, false, false, ST::None, true},
    {"FT857", S::FT817, L::FT817, F::Modern, 0, 0x03, 5, false, false, MF::Low4Of15, 0, 0xE7, 1, FL::None, 0,
     false, SP::Answered02, V::ReadFlag, C::Switching81, X::Toggle81, P::Answered08, true, PW::Small0F,
     SB::ExchangeWithWaits, false, false, ST::None, true},
    {"FT897", S::FT817, L::FT817, F::Modern, 0, 0x03, 5, false, false, MF::Low4Of15, 0, 0xE7, 1, FL::None, 0,
     false, SP::Answered02, V::ReadFlag, C::Switching81, X::Toggle81, P::Answered08, true, PW::Small0F,
     SB::ExchangeWithWaits, false, false, ST::None, true},
    // No VFO B frequency, deliberately: the list meant for this radio has always named "FT874".
    {"FT847", S::FT847, L::FT847, F::Modern, 0, 0x03, 5, false, false, MF::None, 0, 0, 0, FL::None, 0, false,
     SP::None, V::None, C::None, X::None, P::Plain08, false, PW::CatOn00, SB::None, false, false, ST::CatOn, false},
};
// clang-format on
static_assert(std::size(kModels) == 16, "one row for each Yaesu model of the catalogue");

// clang-format off
// The twelve encoders, system modes LSB USB AM CW RTTY FM WBFM CW-R RTTY-R PKT across.
constexpr std::array<std::array<std::uint8_t, 10>, 12> kModeBytes{{
    {0, 1, 4, 2, 8, 6, 7, 3, 9, 10},         // MP
    {0, 1, 4, 3, 8, 6, 7, 2, 9, 10},         // FT1000D
    {0, 1, 4, 3, 8, 7, 6, 3, 9, 10},         // FT990
    {0, 1, 4, 2, 8, 7, 6, 3, 10, 11},        // FT920
    {0, 1, 4, 3, 0, 6, 7, 3, 1, 0},          // FT900: RTTY-R goes out as USB, deliberately, as it always has
    {0, 1, 4, 3, 0, 6, 6, 3, 1, 0},          // FT890, FT840
    {0, 1, 4, 2, 5, 6, 7, 3, 1, 5},          // FT100
    {0, 1, 4, 2, 10, 8, 6, 3, 10, 12},       // FT817, FT857, FT897
    {0, 1, 4, 2, 0, 8, 8, 3, 1, 1},          // FT847
    {0, 1, 4, 3, 0, 5, 0, 0, 0, 0},          // FT757
    {0, 1, 4, 3, 0, 6, 0, 0, 0, 0},          // FT747
    {16, 17, 19, 18, 21, 20, 0, 0, 0, 0},    // FT767
}};
// clang-format on

std::uint8_t at(const QByteArray& r, int position) {
    return position >= 1 && position <= r.size() ? std::uint8_t(r[position - 1]) : 0;
}

// A binary group, most significant byte first.
double binary(const QByteArray& r, int from, int to) {
    double v = 0;
    for (int i = from; i <= to; ++i) v = v * 256 + at(r, i);
    return v;
}

// Bytes 6 and 7, high first, signed; exactly 32768 stays positive.
int clarifier(const QByteArray& r) {
    int v = at(r, 6) * 256 + at(r, 7);
    if (v > 32768) v -= 65536;
    return v;
}

// A mode byte whose top bit is a width flag.
int lessWidthBit(int byte) {
    return byte >= 129 ? byte - 128 : byte;
}

}  // namespace

QByteArray YaesuBlock(std::uint8_t b1, std::uint8_t b2, std::uint8_t b3, std::uint8_t b4, std::uint8_t op) {
    QByteArray b(5, '\0');
    b[0] = char(b1);
    b[1] = char(b2);
    b[2] = char(b3);
    b[3] = char(b4);
    b[4] = char(op);
    return b;
}

QByteArray YaesuFrequencyBlock(YaesuCommandSet set, double kHz) {
    // Tens of hertz in eight digits; what doesn't fit (no radio tunes it) loses its top digits.
    const double tens = std::isfinite(kHz) ? std::round(kHz * 100) : 0;
    const std::uint64_t digits = tens > 0 && tens < 1e18 ? std::uint64_t(tens) : 0;
    switch (set) {
        case F::Modern:
            return ToBcd(digits, 4, BcdOrder::MostFirst) + char(0x01);
        case F::Handshake:
            return ToBcd(digits, 4, BcdOrder::LeastFirst) + char(0x08);
        case F::Classic:
            break;
    }
    return ToBcd(digits, 4, BcdOrder::LeastFirst) + char(0x0A);
}

QByteArray YaesuModeBlock(YaesuCommandSet set, int modeByte) {
    const auto m = std::uint8_t(modeByte);
    switch (set) {
        case F::Modern:
            return YaesuBlock(m, 0, 0, 0, 0x07);
        case F::Handshake:
            return YaesuBlock(0, 0, 0, m, 0x0A);
        case F::Classic:
            break;
    }
    return YaesuBlock(0, 0, 0, m, 0x0C);
}

int YaesuModeByte(YaesuModeSet set, int mode) {
    if (mode < 0 || mode > 9) return 0;
    return kModeBytes[size_t(set)][size_t(mode)];
}

int YaesuModeFromStatus(YaesuLayout layout, int b, bool flag) {
    switch (layout) {
        case L::MP:
            switch (b) {
                case 0:
                    return ModeLSB;
                case 1:
                    return ModeUSB;
                case 2:
                    return flag ? ModeCWR : ModeCW;
                case 3:
                    return ModeAM;
                case 4:
                    return ModeFM;
                case 5:
                    return flag ? ModeRTTYR : ModeRTTY;
                case 6:
                    return ModePKT;
                default:
                    return ModeUnknown;
            }
        case L::FT1000D:
        case L::FT990:
            switch (b) {
                case 0:
                    return ModeLSB;
                case 1:
                    return ModeUSB;
                case 2:
                    return ModeCW;
                case 3:
                    return ModeAM;
                case 4:
                    return ModeFM;
                case 5:
                    return flag && layout == L::FT1000D ? ModeRTTYR : ModeRTTY;
                case 6:
                    return ModePKT;
                default:
                    return ModeUnknown;
            }
        case L::FT920:
            switch (b) {
                case 0:
                    return flag ? ModeUSB : ModeLSB;
                case 1:
                    return flag ? ModeCW : ModeCWR;
                case 2:
                    return ModeAM;
                case 3:
                    return ModeFM;
                case 4:
                    return ModeRTTY;
                case 5:
                    return ModeRTTYR;
                case 6:
                    return ModePKT;
                default:
                    return ModeUnknown;
            }
        case L::FT900:
        case L::FT890:
        case L::FT767:
            switch (b) {
                case 0:
                    return ModeLSB;
                case 1:
                    return ModeUSB;
                case 2:
                    return ModeCW;
                case 3:
                    return ModeAM;
                case 4:
                    return ModeFM;
                case 5:
                    return layout == L::FT767 ? ModeRTTY : ModeUnknown;
                default:
                    return ModeUnknown;
            }
        case L::FT100: {
            constexpr int kModes[] = {ModeLSB, ModeUSB, ModeCW, ModeCWR, ModeAM, ModeRTTY, ModeFM, ModeWBFM};
            return b >= 0 && b < 8 ? kModes[b] : ModeUnknown;
        }
        case L::FT817:
            switch (b) {
                case 0:
                    return ModeLSB;
                case 1:
                    return ModeUSB;
                case 2:
                    return ModeCW;
                case 3:
                    return ModeCWR;
                case 4:
                    return ModeAM;
                case 6:
                    return ModeWBFM;
                case 8:
                    return ModeFM;
                case 10:
                    return ModeRTTY;
                case 12:
                    return ModePKT;
                default:
                    return ModeUnknown;
            }
        case L::FT847:
            // The top bit is the narrow filter: both forms of a mode read the same.
            switch (b) {
                case 0:
                    return ModeLSB;
                case 1:
                    return ModeUSB;
                case 2:
                case 130:
                    return ModeCW;
                case 3:
                case 131:
                    return ModeCWR;
                case 4:
                case 132:
                    return ModeAM;
                case 8:
                case 136:
                    return ModeFM;
                default:
                    return ModeUnknown;
            }
        case L::FT757:
            switch (b) {
                case 0:
                    return ModeLSB;
                case 1:
                    return ModeUSB;
                case 2:
                case 3:
                    return ModeCW;
                case 4:
                    return ModeAM;
                case 5:
                    return ModeFM;
                default:
                    return ModeUnknown;
            }
        case L::FT747:
            // One bit per mode; the low bits say other things.
            switch (b & 248) {
                case 16:
                    return ModeLSB;
                case 32:
                    return ModeUSB;
                case 64:
                    return ModeCW;
                case 128:
                    return ModeAM;
                default:
                    return ModeUnknown;
            }
    }
    return ModeUnknown;
}

std::uint64_t YaesuBcdGroup(const QByteArray& reply, std::initializer_list<int> positions) {
    QByteArray bytes;
    for (int p : positions) bytes.append(char(at(reply, p)));
    return FromBcd(bytes, BcdOrder::MostFirst);
}

YaesuOpData DecodeYaesuOpData(YaesuLayout layout, const QByteArray& r, int readSelector) {
    YaesuOpData d;
    using Store = YaesuOpData::Store;
    switch (layout) {
        case L::MP: {
            d.kHz = binary(r, 2, 5) / 1600;
            if (at(r, 10) & 0x02) d.kHz += clarifier(r) / 1600.0;
            d.store = Store::VfoA;
            if (readSelector == 0) d.vfoB = binary(r, 18, 21) / 1600;
            int m = at(r, 8);
            if (m > 128) m -= 128;
            const int b9 = at(r, 9);
            d.modeDigit = m;
            d.mode = YaesuModeFromStatus(layout, m, b9 > 128);
            d.filterByte = b9 > 128 ? b9 - 128 : b9;
            if (r.size() >= 25) d.subFilterByte = at(r, 25);
            break;
        }
        case L::FT1000D:
            d.kHz = binary(r, 2, 4) / 100;
            if (at(r, 5) & 0x02) d.kHz += clarifier(r) / 100.0;
            d.modeDigit = at(r, 8);
            d.mode = YaesuModeFromStatus(layout, d.modeDigit, at(r, 9) & 0x01);
            break;
        case L::FT990:
            d.kHz = binary(r, 2, 4) / 100;
            if (at(r, 5) & 0x02) d.kHz += clarifier(r) / 1000.0;
            d.store = Store::Selected;
            d.modeDigit = at(r, 8);
            d.mode = YaesuModeFromStatus(layout, d.modeDigit, false);
            break;
        case L::FT920:
            d.kHz = binary(r, 2, 5) / 1000;
            if (at(r, 9) & 0x02) d.kHz += clarifier(r) / 1000.0;
            d.modeDigit = at(r, 8);
            d.mode = YaesuModeFromStatus(layout, d.modeDigit & 7, d.modeDigit & 0x40);
            break;
        case L::FT900:
        case L::FT890:
            d.kHz = binary(r, 3, 5) / 100;
            // The FT-900 shows its clarifier offset whether the clarifier is on or not.
            if (layout == L::FT900) {
                d.kHz += clarifier(r) / 100.0;
                d.other = binary(r, 12, 14) / 100;
            }
            d.store = Store::Selected;
            d.modeDigit = lessWidthBit(at(r, 8));
            d.mode = YaesuModeFromStatus(layout, d.modeDigit, false);
            break;
        case L::FT100:
            d.kHz = binary(r, 2, 5) * 1.25 / 1000;
            d.store = Store::Selected;
            d.modeDigit = at(r, 6) % 16;
            d.mode = YaesuModeFromStatus(layout, d.modeDigit, false);
            break;
        case L::FT817:
        case L::FT847:
            d.kHz = double(YaesuBcdGroup(r, {1, 2, 3, 4})) / 100;
            d.modeDigit = layout == L::FT817 ? at(r, 5) % 16 : at(r, 5);
            d.mode = YaesuModeFromStatus(layout, d.modeDigit, false);
            break;
        case L::FT757:
            d.kHz = double(YaesuBcdGroup(r, {9, 8, 7, 6})) / 100;
            d.vfoA = double(YaesuBcdGroup(r, {14, 13, 12, 11})) / 100;
            d.vfoB = double(YaesuBcdGroup(r, {19, 18, 17, 16})) / 100;
            d.modeDigit = at(r, 10);
            d.mode = YaesuModeFromStatus(layout, d.modeDigit, false);
            break;
        case L::FT747:
            d.kHz = double(YaesuBcdGroup(r, {3, 4, 5, 6})) / 1000;
            d.vfoA = double(YaesuBcdGroup(r, {10, 11, 12, 13})) / 1000;
            // Five bytes, the last being the record's mode byte: VFO B has always been read so, and
            // what an operator's logs show of it is that reading.
            d.vfoB = double(YaesuBcdGroup(r, {17, 18, 19, 20, 21})) / 1000;
            d.modeDigit = at(r, 7);
            d.mode = YaesuModeFromStatus(layout, d.modeDigit, false);
            d.clearsSplit = true;
            break;
        case L::FT767: {
            const Yaesu767Status s = Decode767Status(r);
            d.kHz = s.kHz;
            d.mode = s.mode.value_or(ModeUnknown);
            d.modeDigit = s.modeDigit;
            break;
        }
    }
    return d;
}

Yaesu767Status Decode767Status(const QByteArray& r) {
    // Counted back from the newest byte: P(1) is the last one received.
    const int count = int(r.size());
    auto p = [&](int k) { return count + 1 - k; };
    Yaesu767Status s;
    const int status = at(r, p(1));
    s.split = status & 0x08;
    s.vfo = status & 16;
    s.kHz = double(YaesuBcdGroup(r, {p(2), p(3), p(4), p(5)})) / 100;
    if (count >= 8) {
        s.modeDigit = at(r, p(7)) & 7;
        s.mode = YaesuModeFromStatus(YaesuLayout::FT767, s.modeDigit, false);
    }
    if (count >= 9) {
        s.vfoA = double(YaesuBcdGroup(r, {p(15), p(16), p(17), p(18)})) / 100;
        s.vfoB = double(YaesuBcdGroup(r, {p(21), p(22), p(23), p(24)})) / 100;
    }
    return s;
}

YaesuFlags DecodeYaesuFlags(YaesuFlagsForm form, const QByteArray& r) {
    YaesuFlags f;
    const int b1 = at(r, 1);
    switch (form) {
        case FL::MP:
            f.split = b1 & 0x01;
            f.dual = (b1 & 0x02) != 0;
            f.vfo = (b1 >> 4) & 1;
            if (b1 & 0x10)
                f.readSelector = 2;
            else if (b1 & 0x20)
                f.readSelector = 0;
            else if (b1 & 0x40)
                f.readSelector = 1;
            break;
        case FL::FT990:
            f.split = b1 & 0x01;
            f.vfo = (b1 >> 1) & 1;
            break;
        case FL::FT890:
            f.split = b1 & 0x04;
            f.vfo = (b1 >> 6) & 1;
            break;
        case FL::FT100:
            f.split = b1 & 0x01;
            f.vfo = (at(r, 2) >> 2) & 1;
            break;
        case FL::None:
            break;
    }
    return f;
}

double DecodeYaesuMeter(YaesuMeterForm form, const QByteArray& r) {
    switch (form) {
        case MF::Byte1Of255:
            return double(float(at(r, 1)) / 255.0f);
        case MF::FT100:
            return double(float(204 - at(r, 4)) / 120.0f);
        case MF::Low4Of15:
            return double(float(at(r, 1) & 15) / 15.0f);
        case MF::Byte1Of15:
            return double(float(at(r, 1)) / 15.0f);
        case MF::None:
            break;
    }
    return 0;
}

YaesuFilterCodes SplitYaesuFilterByte(int byte) {
    // To nearest with ties to even, done by hand so that no rounding mode of the platform changes it.
    const double x = byte / 16.0;
    const double low = std::floor(x);
    const double frac = x - low;
    double q = frac > 0.5 ? low + 1 : low;
    if (frac == 0.5) q = std::fmod(low, 2.0) == 0 ? low : low + 1;
    YaesuFilterCodes c;
    c.q = int(q);
    c.r = byte - 16 * c.q;
    return c;
}

const YaesuModel* FindYaesuModel(const QString& name) {
    for (const YaesuModel& m : kModels)
        if (name == QLatin1String(m.name)) return &m;
    return nullptr;
}

int YaesuModelCount() {
    return int(std::size(kModels));
}

}  // namespace tv
