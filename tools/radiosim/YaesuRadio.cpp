#include "tools/radiosim/YaesuRadio.h"

#include <algorithm>
#include <iterator>
#include <random>

namespace tv::sim {

namespace {

const char* const kModeNames[] = {"LSB", "USB", "AM", "CW", "RTTY", "FM", "WBFM", "CW-R", "RTTY-R", "PKT"};

// Three ways of putting the parameters before the opcode.
enum class Family : uint8_t {
    Classic,    // the value parameter just before the opcode; frequencies in BCD, least significant pair first
    Modern,     // parameters from the first byte; frequencies in BCD, most significant pair first
    Handshake,  // CAT on first; each block is echoed and runs only when acknowledged; replies come
                // newest byte first
};

// How a number stands in a reply. Binary is most significant byte first.
enum class Coding : uint8_t { Binary, Bcd, BcdReversed };

// What the VFO command does: select A or B, exchange them (radios whose main receiver always works
// VFO A), toggle between them with one opcode, or nothing.
enum class VfoKey : uint8_t { None, Select, Swap, Toggle };

enum class MeterForm : uint8_t {
    None,
    Repeated,  // the reading in every byte but the last, which repeats the opcode
    Single,    // one byte, the reading in its low bits
    FromTop,   // one byte among several, counting down from `top` as the signal rises
};

// Commands a model knows besides frequency, mode and its reads. Which opcode carries each depends on
// the family.
enum Feature : unsigned {
    Split = 1u << 0,
    Ptt = 1u << 1,
    DualWatch = 1u << 2,
    CopyVfo = 1u << 3,    // the shown VFO copied into the other
    Step = 1u << 4,       // one minimum step up or down
    Filters = 1u << 5,    // second IF, third IF and sub-receiver filters
    Lock = 1u << 6,
    Clarifier = 1u << 7,
    Power = 1u << 8,
    Eeprom = 1u << 9,     // the memory read that tells, among others, the VFO in use
    CatGate = 1u << 10,   // deaf to everything until CAT on
    StateAnswer = 1u << 11,  // lock, split and PTT answer one byte: 00 done, F0 already so
};

// A flag bit: byte (from 0) and mask; at -1 where the model doesn't report it.
struct Bit {
    int8_t at;
    uint8_t mask;
};
constexpr Bit kNone{-1, 0};

// One mode code of a model: the byte of the set command (-1: only reported) and the byte of the
// reports; a report with kVariant also sets the record's variant bit (CW-R, RTTY-R on some radios).
struct ModeCode {
    int16_t set;
    uint16_t report;
    int8_t mode;
    bool narrow;
};
constexpr uint16_t kVariant = 0x100;

template <class T>
struct Rows {
    const T* row;
    int8_t count;
    template <std::size_t N>
    constexpr Rows(const T (&a)[N]) : row(a), count(int8_t(N)) {}
    constexpr Rows() : row(nullptr), count(0) {}
    const T* begin() const { return row; }
    const T* end() const { return row + count; }
};

// One VFO's data in a read, positions from the record's first byte. A number in counts is the
// frequency in Hz times perHzNum / perHzDen. A record names its columns; the first four and the mode's
// place it must.
struct Record {
    int8_t length;
    int8_t freqAt;
    int8_t freqBytes;
    Coding coding;
    uint8_t perHzNum = 1, perHzDen = 1;
    int8_t clarAt = -1;  // 16-bit signed offset, high byte first, in counts of its own
    uint8_t clarPerHzNum = 1, clarPerHzDen = 1;
    Bit clarOn = kNone;
    int8_t modeAt;
    Bit variant = kNone;
    int8_t filterAt = -1;  // the filter codes, one per nibble, below the variant bit
};

// A read: the opcode and value parameter (-1 any) that ask for it, its length, and where the flags
// and the records stand in it (-1 absent). "other" is the VFO not in use.
struct Read {
    uint8_t op;
    int16_t param;
    int16_t length;
    int8_t status = -1, current = -1, vfoA = -1, vfoB = -1, other = -1;
};

struct Flags {
    int8_t length;
    Bit split = kNone, dual = kNone, vfoB = kNone, onVfo = kNone;  // onVfo: working a VFO rather than a memory
};

// By default: no meter at all.
struct Meter {
    MeterForm form = MeterForm::None;
    uint8_t op = 0;
    int16_t param = -1;  // -1 any
    int8_t length = 0;
    int8_t at = 0;
    int16_t fullScale = 0;
    int16_t top = 0;
};

}  // namespace

// A row names its columns; those up to the reads it must.
struct YaesuModel {
    const char* name;
    const char* catalogue;  // the program's catalogue spells them so
    Family family;
    qint64 maxHz;
    VfoKey vfoKey;
    unsigned features;
    Rows<ModeCode> modes;
    const Record* record;
    Rows<Read> reads;
    const Flags* flags = nullptr;   // the flags read (opcode FA), nullptr if none
    const Flags* status = nullptr;  // the status byte inside the long reads, nullptr if none
    Meter meter{};
    int16_t vfoEeprom = -1;  // memory address whose bit 0 tells VFO B, -1 if none
};

namespace {

using M = YaesuRadio::Mode;

// ---- Mode codes ----

// Four-digit radios of the second IF era: CW and AM come wide and narrow, RTTY and packet on either
// sideband. The reported byte has no width; the sideband of RTTY is the variant bit.
constexpr ModeCode kModes1000D[] = {
    {0, 0, M::LSB, false},  {1, 1, M::USB, false},  {2, 2, M::CW, false},    {3, 2, M::CW, true},
    {4, 3, M::AM, false},   {5, 3, M::AM, true},    {6, 4, M::FM, false},    {7, 4, M::WBFM, false},
    {8, 5, M::RTTY, false}, {9, 5 | kVariant, M::RTTYR, false}, {10, 6, M::PKT, false}, {11, 6 | kVariant, M::PKT, true},
};
constexpr ModeCode kModes990[] = {
    {0, 0, M::LSB, false},  {1, 1, M::USB, false},  {2, 2, M::CW, false},    {3, 2, M::CW, true},
    {4, 3, M::AM, false},   {5, 3, M::AM, true},    {6, 4, M::FM, false},    {7, 4, M::WBFM, false},
    {8, 5, M::RTTY, false}, {9, 5, M::RTTYR, false}, {10, 6, M::PKT, false}, {11, 6, M::PKT, true},
};
// CW on either side, AM synchronous; the reported byte tells the lower side by the variant bit.
constexpr ModeCode kModesMp[] = {
    {0, 0, M::LSB, false},  {1, 1, M::USB, false},  {2, 2, M::CW, false},    {3, 2 | kVariant, M::CWR, false},
    {4, 3, M::AM, false},   {5, 3, M::AM, true},    {6, 4, M::FM, false},    {7, 4, M::WBFM, false},
    {8, 5, M::RTTY, false}, {9, 5 | kVariant, M::RTTYR, false}, {10, 6, M::PKT, false}, {11, 6 | kVariant, M::PKT, true},
};
// Bit 6 of the reported byte is the upper sideband.
constexpr ModeCode kModes920[] = {
    {0, 0x00, M::LSB, false},  {1, 0x40, M::USB, false},  {2, 0x41, M::CW, false},   {3, 0x01, M::CWR, false},
    {4, 0x02, M::AM, false},   {5, 0x02, M::AM, true},    {6, 0x03, M::FM, false},   {7, 0x03, M::FM, true},
    {8, 0x04, M::RTTY, false}, {10, 0x05, M::RTTYR, false}, {11, 0x06, M::PKT, false},
};
// Bit 7 of the reported byte is the narrow filter.
constexpr ModeCode kModes890[] = {
    {0, 0x00, M::LSB, false}, {1, 0x01, M::USB, false}, {2, 0x02, M::CW, false}, {3, 0x82, M::CW, true},
    {4, 0x03, M::AM, false},  {5, 0x83, M::AM, true},   {6, 0x04, M::FM, false},
};
constexpr ModeCode kModes100[] = {
    {0, 0, M::LSB, false}, {1, 1, M::USB, false},  {2, 2, M::CW, false}, {3, 3, M::CWR, false},
    {4, 4, M::AM, false},  {5, 5, M::RTTY, false}, {6, 6, M::FM, false}, {7, 7, M::WBFM, false},
};
constexpr ModeCode kModes817[] = {
    {0x00, 0x00, M::LSB, false}, {0x01, 0x01, M::USB, false},  {0x02, 0x02, M::CW, false},
    {0x03, 0x03, M::CWR, false}, {0x04, 0x04, M::AM, false},   {0x06, 0x06, M::WBFM, false},
    {0x08, 0x08, M::FM, false},  {0x0A, 0x0A, M::RTTY, false}, {0x0C, 0x0C, M::PKT, false},
    {0x88, 0x88, M::FM, true},
};
constexpr ModeCode kModes847[] = {
    {0x00, 0x00, M::LSB, false}, {0x01, 0x01, M::USB, false}, {0x02, 0x02, M::CW, false},
    {0x03, 0x03, M::CWR, false}, {0x04, 0x04, M::AM, false},  {0x08, 0x08, M::FM, false},
    {0x82, 0x82, M::CW, true},   {0x83, 0x83, M::CWR, true},  {0x84, 0x84, M::AM, true},
    {0x88, 0x88, M::FM, true},
};
constexpr ModeCode kModes757[] = {
    {0, 0, M::LSB, false}, {1, 1, M::USB, false}, {2, 2, M::CW, false},
    {3, 3, M::CW, true},   {4, 4, M::AM, false},  {5, 5, M::FM, false},
};
// One bit per mode in the status block.
constexpr ModeCode kModes747[] = {
    {0, 0x10, M::LSB, false}, {1, 0x20, M::USB, false}, {2, 0x40, M::CW, false}, {3, 0x40, M::CW, true},
    {4, 0x80, M::AM, false},  {5, 0x80, M::AM, true},   {6, 0x08, M::FM, false}, {7, 0x08, M::FM, true},
};
// Set through the multi-purpose opcode; reported as 0 to 5.
constexpr ModeCode kModes767[] = {
    {0x10, 0, M::LSB, false}, {0x11, 1, M::USB, false}, {0x12, 2, M::CW, false},
    {0x13, 3, M::AM, false},  {0x14, 4, M::FM, false},  {0x15, 5, M::RTTY, false},
};

// ---- Records ----
constexpr Record kRecordMp{.length = 16, .freqAt = 1, .freqBytes = 4, .coding = Coding::Binary,
                           .perHzNum = 8, .perHzDen = 5,  // 0.625 Hz
                           .clarAt = 5, .clarPerHzNum = 8, .clarPerHzDen = 5, .clarOn = {9, 0x02},
                           .modeAt = 7, .variant = {8, 0x80}, .filterAt = 8};
constexpr Record kRecord1000D{.length = 16, .freqAt = 1, .freqBytes = 3, .coding = Coding::Binary,
                              .perHzNum = 1, .perHzDen = 10,
                              .clarAt = 5, .clarPerHzNum = 1, .clarPerHzDen = 10, .clarOn = {4, 0x02},
                              .modeAt = 7, .variant = {8, 0x01}};
constexpr Record kRecord990{.length = 16, .freqAt = 1, .freqBytes = 3, .coding = Coding::Binary,
                            .perHzNum = 1, .perHzDen = 10,
                            .clarAt = 5, .clarOn = {4, 0x02},
                            .modeAt = 7};
constexpr Record kRecord920{.length = 14, .freqAt = 1, .freqBytes = 4, .coding = Coding::Binary,
                            .clarAt = 5, .clarOn = {8, 0x02},
                            .modeAt = 7};
constexpr Record kRecord890{.length = 9, .freqAt = 1, .freqBytes = 3, .coding = Coding::Binary,
                            .perHzNum = 1, .perHzDen = 10,
                            .clarAt = 4, .clarPerHzNum = 1, .clarPerHzDen = 10,
                            .modeAt = 6};
constexpr Record kRecord100{.length = 16, .freqAt = 1, .freqBytes = 4, .coding = Coding::Binary,
                            .perHzNum = 4, .perHzDen = 5,  // 1.25 Hz
                            .modeAt = 5};
constexpr Record kRecord817{.length = 5, .freqAt = 0, .freqBytes = 4, .coding = Coding::Bcd,
                            .perHzNum = 1, .perHzDen = 10, .modeAt = 4};
constexpr Record kRecord757{.length = 5, .freqAt = 0, .freqBytes = 4, .coding = Coding::BcdReversed,
                            .perHzNum = 1, .perHzDen = 10, .modeAt = 4};
constexpr Record kRecord747{.length = 7, .freqAt = 0, .freqBytes = 5, .coding = Coding::Bcd, .modeAt = 5};
// Byte 4 is the tone.
constexpr Record kRecord767{.length = 6, .freqAt = 0, .freqBytes = 4, .coding = Coding::Bcd,
                            .perHzNum = 1, .perHzDen = 10, .modeAt = 5};

// ---- Reads ----
constexpr Read kReadsMp[] = {{.op = 0x10, .param = 2, .length = 16, .current = 0},
                             {.op = 0x10, .param = 3, .length = 32, .vfoA = 0, .vfoB = 16}};
constexpr Read kReads990[] = {
    {.op = 0x10, .param = 1, .length = 1},  // the memory channel in use
    {.op = 0x10, .param = 2, .length = 16, .current = 0},
    {.op = 0x10, .param = 3, .length = 32, .vfoA = 0, .vfoB = 16},
};
constexpr Read kReads920[] = {{.op = 0x10, .param = 2, .length = 28, .vfoA = 0, .vfoB = 14}};
// A leading byte, then the VFO in use and the other one.
constexpr Read kReads890[] = {{.op = 0x10, .param = 2, .length = 19, .current = 1, .other = 10}};
constexpr Read kReads100[] = {{.op = 0x10, .param = 0, .length = 16, .current = 0}};
constexpr Read kReads817[] = {{.op = 0x03, .param = -1, .length = 5, .current = 0}};
// Flags, memory channel and three bytes, the shown VFO, A, B, then eleven memories.
constexpr Read kReads757[] = {{.op = 0x10, .param = 0, .length = 75, .status = 0, .current = 5, .vfoA = 10, .vfoB = 15}};
// Flags, then seven-byte records: the shown VFO, A, B, then the memories.
constexpr Read kReads747[] = {{.op = 0x10, .param = 0, .length = 345, .status = 0, .current = 1, .vfoA = 8, .vfoB = 15}};
// Status; the shown VFO; memory channel and clarifier; A; B; ten memories. Shorter replies are the
// first bytes of it.
constexpr Read kReads767[] = {{.op = 0x00, .param = -1, .length = 86, .status = 0, .current = 1, .vfoA = 14, .vfoB = 20}};

// ---- Flags ----
constexpr Flags kFlagsMp{.length = 6, .split = {0, 0x01}, .dual = {0, 0x02}, .vfoB = {0, 0x10}, .onVfo = {0, 0x20}};
constexpr Flags kFlags990{.length = 5, .split = {0, 0x01}, .vfoB = {0, 0x02}};
constexpr Flags kFlags890{.length = 5, .split = {0, 0x04}, .vfoB = {0, 0x40}};
constexpr Flags kFlags100{.length = 8, .split = {0, 0x01}, .vfoB = {1, 0x04}};
constexpr Flags kStatus767{.length = 1, .split = {0, 0x08}, .vfoB = {0, 0x10}};

// ---- Meters ----
constexpr Meter kMeterF7{.form = MeterForm::Repeated, .op = 0xF7, .length = 5, .fullScale = 255};
constexpr Meter kMeter100{.form = MeterForm::FromTop, .op = 0xF7, .length = 9, .at = 3, .fullScale = 120, .top = 204};
constexpr Meter kMeter757{.form = MeterForm::Single, .op = 0x10, .param = 1, .length = 1, .fullScale = 15};
constexpr Meter kMeter817{.form = MeterForm::Single, .op = 0xE7, .length = 1, .fullScale = 15};
constexpr Meter kMeter847{.form = MeterForm::Single, .op = 0xE7, .length = 1, .fullScale = 31};

constexpr qint64 kHf = 30'000'000;

// A model that is another's row under other names.
constexpr YaesuModel sameAs(YaesuModel row, const char* name, const char* catalogue) {
    row.name = name;
    row.catalogue = catalogue;
    return row;
}

// ---- The models ----
constexpr YaesuModel kFT1000MP{.name = "FT-1000MP", .catalogue = "MP1000", .family = Family::Classic, .maxHz = kHf,
                               .vfoKey = VfoKey::Swap, .features = Split | Ptt | DualWatch | CopyVfo | Filters,
                               .modes = kModesMp, .record = &kRecordMp, .reads = kReadsMp, .flags = &kFlagsMp,
                               .meter = kMeterF7};
constexpr YaesuModel kFT890{.name = "FT-890", .catalogue = "FT890", .family = Family::Classic, .maxHz = kHf,
                            .vfoKey = VfoKey::Select, .features = Split | Ptt | CopyVfo,
                            .modes = kModes890, .record = &kRecord890, .reads = kReads890, .flags = &kFlags890,
                            .meter = kMeterF7};
constexpr YaesuModel kFT817{.name = "FT-817", .catalogue = "FT817", .family = Family::Modern, .maxHz = 470'000'000,
                            .vfoKey = VfoKey::Toggle,
                            .features = Split | Ptt | StateAnswer | Lock | Clarifier | Power | Eeprom,
                            .modes = kModes817, .record = &kRecord817, .reads = kReads817, .meter = kMeter817,
                            .vfoEeprom = 0x55};

}  // namespace

constexpr YaesuModel kModels[] = {
    {.name = "FT-1000D", .catalogue = "FT1000D", .family = Family::Classic, .maxHz = kHf, .vfoKey = VfoKey::Swap,
     .features = Split | Ptt | DualWatch | CopyVfo | Step,
     .modes = kModes1000D, .record = &kRecord1000D, .reads = kReadsMp, .meter = kMeterF7},
    kFT1000MP,
    sameAs(kFT1000MP, "FT-1000MP-MKV", "MP1000MKV"),
    {.name = "FT-990", .catalogue = "FT990", .family = Family::Classic, .maxHz = kHf, .vfoKey = VfoKey::Select,
     .features = Split | Ptt | CopyVfo,
     .modes = kModes990, .record = &kRecord990, .reads = kReads990, .flags = &kFlags990, .meter = kMeterF7},
    {.name = "FT-920", .catalogue = "FT920", .family = Family::Classic, .maxHz = 56'000'000, .vfoKey = VfoKey::Swap,
     .features = Split | Ptt,
     .modes = kModes920, .record = &kRecord920, .reads = kReads920, .meter = kMeterF7},
    sameAs(kFT890, "FT-900", "FT900"),
    kFT890,
    sameAs(kFT890, "FT-840", "FT840"),
    {.name = "FT-757", .catalogue = "FT757", .family = Family::Classic, .maxHz = kHf, .vfoKey = VfoKey::Select,
     .features = Split,
     .modes = kModes757, .record = &kRecord757, .reads = kReads757, .meter = kMeter757},
    {.name = "FT-747", .catalogue = "FT747", .family = Family::Classic, .maxHz = kHf, .vfoKey = VfoKey::Select,
     .features = Split | Ptt,
     .modes = kModes747, .record = &kRecord747, .reads = kReads747},
    {.name = "FT-767", .catalogue = "FT767", .family = Family::Handshake, .maxHz = kHf, .vfoKey = VfoKey::Select,
     .features = Split,
     .modes = kModes767, .record = &kRecord767, .reads = kReads767, .status = &kStatus767},
    {.name = "FT-100", .catalogue = "FT100", .family = Family::Classic, .maxHz = 470'000'000, .vfoKey = VfoKey::Select,
     .features = Split | Ptt,
     .modes = kModes100, .record = &kRecord100, .reads = kReads100, .flags = &kFlags100, .meter = kMeter100},
    kFT817,
    sameAs(kFT817, "FT-857", "FT857"),
    sameAs(kFT817, "FT-897", "FT897"),
    {.name = "FT-847", .catalogue = "FT847", .family = Family::Modern, .maxHz = 512'000'000, .vfoKey = VfoKey::None,
     .features = Ptt | CatGate,
     .modes = kModes847, .record = &kRecord817, .reads = kReads817, .meter = kMeter847},
};
static_assert(std::size(kModels) == 16, "one row for each Yaesu model the controller knows");

struct YaesuRadio::Block {
    uint8_t b[5];
    uint8_t op() const { return b[4]; }
    uint8_t param() const { return b[3]; }  // the value parameter of the older radios
};

namespace {

constexpr uint8_t kAck767 = 0x0B;
constexpr int kMaxClarHz = 9'999;

QString squeezed(const QString& name) {
    QString s = name.trimmed().toUpper();
    s.remove(QLatin1Char('-'));
    s.remove(QLatin1Char(' '));
    s.remove(QLatin1Char('_'));
    return s;
}

// Eight BCD digits in four bytes; -1 if a nibble isn't a decimal digit.
qint64 fromBcd(const uint8_t* p, bool mostSignificantFirst) {
    qint64 value = 0;
    for (int i = 0; i < 4; ++i) {
        const uint8_t byte = p[mostSignificantFirst ? i : 3 - i];
        if ((byte >> 4) > 9 || (byte & 0x0F) > 9) return -1;
        value = value * 100 + (byte >> 4) * 10 + (byte & 0x0F);
    }
    return value;
}

void putNumber(QByteArray& out, int at, int bytes, Coding coding, quint64 value) {
    for (int i = bytes - 1; i >= 0; --i) {
        uint8_t byte;
        if (coding == Coding::Binary) {
            byte = uint8_t(value & 0xFF);
            value >>= 8;
        } else {
            const int two = int(value % 100);
            byte = uint8_t(((two / 10) << 4) | (two % 10));
            value /= 100;
        }
        out[at + (coding == Coding::BcdReversed ? bytes - 1 - i : i)] = char(byte);
    }
}

void setBit(QByteArray& out, int base, Bit bit, bool on) {
    if (bit.at >= 0 && on) out[base + bit.at] = char(uint8_t(out[base + bit.at]) | bit.mask);
}

// A filter command value (0 2.4k, 1 2.0k, 2 500, 3 250, 4 through or 6 kHz; the sub receiver's with
// bit 7) as the radio reports it: through first.
int filterStatus(int value) { return ((value & 0x7F) + 1) % 5; }

}  // namespace

YaesuRadio::YaesuRadio(const YaesuModel& model) : model_(model) {
    // Radios that need a CAT-on start deaf to the line.
    catOn_ = model_.family != Family::Handshake && !has(CatGate);
}

bool YaesuRadio::setFilter(int which, int value) {
    // The sub receiver's knob has its own values, marked by bit 7; the main receiver's two have none.
    const bool sub = which == 2;
    if (!has(Filters) || which < 0 || which > 2 || (value & 0x7F) > 4 || ((value & 0x80) != 0) != sub) return false;
    filter_[which] = value;
    return true;
}

const YaesuModel* YaesuRadio::model(const QString& name) {
    const QString wanted = squeezed(name);
    for (const YaesuModel& m : kModels)
        if (squeezed(QString::fromLatin1(m.name)) == wanted || squeezed(QString::fromLatin1(m.catalogue)) == wanted)
            return &m;
    return nullptr;
}

QStringList YaesuRadio::modelNames() {
    QStringList names;
    for (const YaesuModel& m : kModels) names << QString::fromLatin1(m.name);
    return names;
}

QString YaesuRadio::modelName(const YaesuModel& model) { return QString::fromLatin1(model.name); }

int YaesuRadio::modeIndex(const QString& name) {
    const QString wanted = name.trimmed().toUpper().remove(QLatin1Char('-'));
    for (int i = 0; i < ModeCount; ++i)
        if (QString::fromLatin1(kModeNames[i]).remove(QLatin1Char('-')) == wanted) return i;
    return -1;
}

QString YaesuRadio::modeName(int mode) {
    return mode >= 0 && mode < ModeCount ? QString::fromLatin1(kModeNames[mode]) : QStringLiteral("?");
}

bool YaesuRadio::has(unsigned feature) const { return (model_.features & feature) != 0; }

bool YaesuRadio::knowsMode(int mode) const {
    return std::any_of(model_.modes.begin(), model_.modes.end(), [&](const ModeCode& c) { return c.mode == mode && c.set >= 0; });
}

int YaesuRadio::meterFullScale() const { return model_.meter.fullScale; }

void YaesuRadio::setMeter(int value) { meter_ = std::clamp(value, 0, int(model_.meter.fullScale)); }

bool YaesuRadio::tune(qint64 hz) {
    if (hz <= 0 || hz > model_.maxHz) return false;
    vfo_[current_].hz = hz;
    return true;
}

QByteArray YaesuRadio::setFrequency(qint64 hz) {
    tune(hz);
    return {};
}

QByteArray YaesuRadio::turnDial(qint64 deltaHz) { return setFrequency(frequency() + deltaHz); }

QByteArray YaesuRadio::setMode(int mode) {
    // The wide form where a mode has two.
    const ModeCode* chosen = nullptr;
    for (const ModeCode& c : model_.modes)
        if (c.mode == mode && c.set >= 0 && (!chosen || (chosen->narrow && !c.narrow))) chosen = &c;
    if (chosen) setModeCode(chosen->set);
    return {};
}

bool YaesuRadio::setModeCode(int code) {
    for (const ModeCode& c : model_.modes) {
        if (c.set != code) continue;
        vfo_[current_].mode = c.mode;
        vfo_[current_].narrow = c.narrow;
        return true;
    }
    return false;
}

bool YaesuRadio::selectVfo(int vfo) {
    switch (model_.vfoKey) {
    case VfoKey::None:
        return false;
    case VfoKey::Swap:
        // Main is always VFO A: bringing B up means exchanging them.
        if (vfo != current_) std::swap(vfo_[0], vfo_[1]);
        return true;
    default:
        current_ = vfo & 1;
        return true;
    }
}

void YaesuRadio::setClarifier(bool on, int offsetHz) {
    clarOn_ = on;
    if (on) clarHz_ = std::clamp(offsetHz, -kMaxClarHz, kMaxClarHz);
}

QByteArray YaesuRadio::garbage(int n, quint32 seed) {
    std::mt19937 gen(seed);
    QByteArray out;
    for (int i = 0; i < n; ++i) out.append(char(gen() & 0xFF));
    return out;
}

QByteArray YaesuRadio::receive(const QByteArray& bytes) {
    partial_.append(bytes);
    QByteArray out;
    int used = 0;
    for (; partial_.size() - used >= 5; used += 5) {
        Block b;
        std::copy_n(partial_.constData() + used, 5, reinterpret_cast<char*>(b.b));
        if (!silent_) out += execute(b);
    }
    partial_.remove(0, used);
    return out;
}

QByteArray YaesuRadio::execute(const Block& b) {
    if (model_.family == Family::Handshake) return executeHandshake(b);
    if (!catOn_ && b.op() != 0x00) return {};
    if (!powered_ && b.op() != 0x0F) return {};
    const Meter& m = model_.meter;
    if (m.form != MeterForm::None && b.op() == m.op && (m.param < 0 || m.param == b.param())) return meterReply();
    for (int i = 0; i < model_.reads.count; ++i) {
        const Read& r = model_.reads.row[i];
        if (b.op() == r.op && (r.param < 0 || r.param == b.param())) return read(i);
    }
    return model_.family == Family::Classic ? executeClassic(b) : executeModern(b);
}

QByteArray YaesuRadio::executeClassic(const Block& b) {
    const uint8_t p = b.param();
    switch (b.op()) {
    case 0x01:
        if (has(Split) && p <= 1) split_ = p == 1;
        break;
    case 0x05:
        if (p <= 1 && model_.vfoKey == VfoKey::Select) current_ = p;
        if (p == 1 && model_.vfoKey == VfoKey::Swap) std::swap(vfo_[0], vfo_[1]);
        break;
    case 0x0A: {
        const qint64 tens = fromBcd(b.b, false);
        if (tens >= 0) tune(tens * 10);
        break;
    }
    case 0x0C:
        setModeCode(p);
        break;
    case 0x0F:
        if (has(Ptt) && p <= 1) ptt_ = p == 1;
        break;
    case 0x83:
        if (has(DualWatch) && p <= 1) dualWatch_ = p == 1;
        break;
    case 0x85:
        if (has(CopyVfo)) vfo_[1 - current_] = vfo_[current_];
        break;
    case 0x8C:
        // The first byte picks the IF (1 second, 2 third, 0 both); values with bit 7 are the sub receiver's.
        if (has(Filters) && (p & 0x7F) <= 4 && b.b[0] <= 2) {
            if (p & 0x80) filter_[2] = p;
            else if (b.b[0] == 0) filter_[0] = filter_[1] = p;
            else filter_[b.b[0] - 1] = p;
        }
        break;
    case 0x8E:
        if (has(Step) && p <= 1) tune(frequency() + (p == 0 ? 10 : -10));
        break;
    case 0xFA:
        if (model_.flags) return flags();
        break;
    default:
        break;
    }
    return {};
}

QByteArray YaesuRadio::executeModern(const Block& b) {
    // Lock, split and PTT tell whether they changed anything.
    auto change = [this](bool& state, bool on) -> QByteArray {
        const bool already = state == on;
        state = on;
        return has(StateAnswer) ? QByteArray(1, char(already ? 0xF0 : 0x00)) : QByteArray();
    };
    switch (b.op()) {
    case 0x00:
    case 0x80:
        // The same opcodes are CAT on and off where CAT must be switched on, the lock elsewhere.
        if (has(CatGate)) catOn_ = b.op() == 0x00;
        else if (has(Lock)) return change(locked_, b.op() == 0x00);
        break;
    case 0x01: {
        const qint64 tens = fromBcd(b.b, true);
        if (tens >= 0) tune(tens * 10);
        break;
    }
    case 0x02:
    case 0x82:
        if (has(Split)) return change(split_, b.op() == 0x02);
        break;
    case 0x05:
    case 0x85:
        if (has(Clarifier)) clarOn_ = b.op() == 0x05;
        break;
    case 0xF5:
        // Sign in the first byte, the offset in the last two as BCD tens of Hz.
        if (has(Clarifier)) {
            const uint8_t hi = b.b[2], lo = b.b[3];
            if ((hi >> 4) > 9 || (hi & 0x0F) > 9 || (lo >> 4) > 9 || (lo & 0x0F) > 9) break;
            const int tens = ((hi >> 4) * 10 + (hi & 0x0F)) * 100 + (lo >> 4) * 10 + (lo & 0x0F);
            clarHz_ = std::clamp((b.b[0] == 0 ? 10 : -10) * tens, -kMaxClarHz, kMaxClarHz);
        }
        break;
    case 0x07:
        setModeCode(b.b[0]);
        break;
    case 0x08:
    case 0x88:
        if (has(Ptt)) return change(ptt_, b.op() == 0x08);
        break;
    case 0x0F:
    case 0x8F:
        if (has(Power)) powered_ = b.op() == 0x0F;
        break;
    case 0x81:
        if (model_.vfoKey == VfoKey::Toggle) current_ ^= 1;
        break;
    case 0xBB:
        if (has(Eeprom)) {
            const int address = (b.b[0] << 8) | b.b[1];
            return QByteArray(1, char(eeprom(address))) + char(eeprom(address + 1));
        }
        break;
    case 0xF7:
        if (has(Ptt)) {
            // Bit 7 clear while transmitting, bit 5 clear with split on; no power reading here.
            return QByteArray(1, char((ptt_ ? 0 : 0x80) | (split_ ? 0 : 0x20)));
        }
        break;
    default:
        break;
    }
    return {};
}

uint8_t YaesuRadio::eeprom(int address) const { return address == model_.vfoEeprom ? uint8_t(current_) : 0; }

QByteArray YaesuRadio::executeHandshake(const Block& b) {
    const QByteArray bytes(reinterpret_cast<const char*>(b.b), 5);
    if (b.op() == kAck767) {
        if (awaitingAck_.isEmpty()) return {};
        Block command;
        std::copy_n(awaitingAck_.constData(), 5, reinterpret_cast<char*>(command.b));
        awaitingAck_.clear();
        return reply767(command);
    }
    // Another block instead of the acknowledge drops the one echoed before.
    awaitingAck_.clear();
    const bool catOnBlock = b.op() == 0x00 && b.param() == 0x00;
    if (!catOn_ && !catOnBlock) return {};
    awaitingAck_ = bytes;
    return bytes;
}

QByteArray YaesuRadio::reply767(const Block& command) {
    const uint8_t p = command.param();
    int length = 5;  // status and frequency
    switch (command.op()) {
    case 0x00:  // CAT on, CAT off: everything, then (for off) deaf again
        catOn_ = p == 0x00;
        length = 86;
        break;
    case 0x08: {
        const qint64 tens = fromBcd(command.b, false);
        if (tens >= 0) tune(tens * 10);
        break;
    }
    case 0x09:
        if (p <= 1) current_ = p;
        break;
    case 0x0A:
        // Mode codes answer with the mode in the reply; the rest (split among them) with both VFOs.
        if (setModeCode(p)) {
            length = 8;
        } else {
            if (p == 0x30) split_ = !split_;
            length = 26;
        }
        break;
    default:
        break;
    }
    QByteArray data = read(0).left(length);
    std::reverse(data.begin(), data.end());
    return data;
}

QByteArray YaesuRadio::read(int layout) const {
    const Read& r = model_.reads.row[layout];
    QByteArray out(r.length, '\0');
    if (r.status >= 0 && model_.status) {
        setBit(out, r.status, model_.status->split, split_);
        setBit(out, r.status, model_.status->vfoB, current_ == 1);
    }
    if (r.current >= 0) putRecord(out, r.current, current_);
    if (r.vfoA >= 0) putRecord(out, r.vfoA, 0);
    if (r.vfoB >= 0) putRecord(out, r.vfoB, 1);
    if (r.other >= 0) putRecord(out, r.other, 1 - current_);
    return out;
}

void YaesuRadio::putRecord(QByteArray& out, int at, int vfo) const {
    const Record& rec = *model_.record;
    const Vfo& v = vfo_[vfo];
    putNumber(out, at + rec.freqAt, rec.freqBytes, rec.coding, quint64(v.hz) * rec.perHzNum / rec.perHzDen);
    // The offset is kept while the clarifier is off, and reported so.
    if (rec.clarAt >= 0 && vfo == current_) {
        const int counts = clarHz_ * rec.clarPerHzNum / rec.clarPerHzDen;
        putNumber(out, at + rec.clarAt, 2, Coding::Binary, quint64(uint16_t(int16_t(counts))));
        setBit(out, at, rec.clarOn, clarOn_);
    }
    const ModeCode* code = nullptr;
    for (const ModeCode& c : model_.modes) {
        if (c.mode != v.mode) continue;
        if (c.narrow == v.narrow) {
            code = &c;
            break;
        }
        if (!code) code = &c;
    }
    if (code) {
        out[at + rec.modeAt] = char(code->report & 0xFF);
        setBit(out, at, rec.variant, (code->report & kVariant) != 0);
    }
    if (rec.filterAt >= 0) {
        // The main receiver (VFO A) shows its two IF filters, one per nibble; the sub receiver its own.
        const int codes = vfo == 0 ? (filterStatus(filter_[0]) << 4) | filterStatus(filter_[1]) : filterStatus(filter_[2]);
        out[at + rec.filterAt] = char(uint8_t(out[at + rec.filterAt]) | codes);
    }
}

QByteArray YaesuRadio::flags() const {
    const Flags& f = *model_.flags;
    QByteArray out(f.length, '\0');
    setBit(out, 0, f.split, split_);
    setBit(out, 0, f.dual, dualWatch_);
    setBit(out, 0, f.vfoB, current_ == 1);
    setBit(out, 0, f.onVfo, true);
    return out;
}

QByteArray YaesuRadio::meterReply() const {
    const Meter& m = model_.meter;
    switch (m.form) {
    case MeterForm::Repeated: {
        QByteArray out(m.length, char(meter_));
        out[m.length - 1] = char(m.op);
        return out;
    }
    case MeterForm::Single:
        return QByteArray(1, char(meter_));
    case MeterForm::FromTop: {
        QByteArray out(m.length, '\0');
        out[m.at] = char(m.top - meter_);
        return out;
    }
    case MeterForm::None:
        break;
    }
    return {};
}

}  // namespace tv::sim
