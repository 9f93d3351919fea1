#pragma once
// What sets the Yaesu models apart, as data: one row per catalogue model naming how it takes each queue
// command, which read it answers and how long that reply is, and how its replies are laid out. Beside
// the table, the pure functions that make command blocks and read replies; Yaesu.cpp only follows them.

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace tv {

// ---- command blocks ----

// Five bytes: four parameters, the opcode last.
QByteArray YaesuBlock(std::uint8_t b1, std::uint8_t b2, std::uint8_t b3, std::uint8_t b4, std::uint8_t op);

// The three command sets. They differ in where a value stands and which opcodes set frequency and mode.
enum class YaesuCommandSet : std::uint8_t {
    Classic,    // frequency pairs least significant first, opcode 0A; mode 00 00 00 m 0C
    Modern,     // frequency pairs most significant first, opcode 01; mode m 00 00 00 07
    Handshake,  // frequency least significant first, opcode 08; mode 00 00 00 m 0A; all inside the
                // FT-767's CAT handshake
};
// Eight BCD digits of tens of hertz, in the set's byte order and with its opcode.
QByteArray YaesuFrequencyBlock(YaesuCommandSet set, double kHz);
// The set's mode block for a mode byte.
QByteArray YaesuModeBlock(YaesuCommandSet set, int modeByte);

// The twelve series of models. A series fixes the bytes its mode commands send, the layout of its frequency
// read and how that read's mode byte decodes; models that share a series differ only in their other columns.
enum class YaesuSeries : std::uint8_t {
    MP,
    FT1000D,
    FT990,
    FT920,
    FT900,
    FT890,
    FT100,
    FT817,
    FT847,
    FT757,
    FT747,
    FT767
};
// The byte a series' mode command gives system mode 0..9; 0 for a mode that it doesn't list. Not the
// inverse of YaesuModeFromStatus.
int YaesuModeByte(YaesuSeries series, int mode);

// ---- replies ----

// A mode byte (and the model's flag bit, where it has one) to a system mode; 10 for a byte not listed.
int YaesuModeFromStatus(YaesuSeries series, int byte, bool flag);

// What a frequency read says. Positions past the end of a short reply read as 0.
struct YaesuOpData {
    double kHz = 0;  // the frequency shown, clarifier included where the model adds it
    // Where the frequency is kept besides the display.
    enum class Store : std::uint8_t { None, VfoA, Selected } store = Store::None;
    std::optional<double> vfoA, vfoB;  // the VFOs the read also carries
    std::optional<double> other;       // the VFO not in use (FT-900)
    int mode = 10;
    // The MP family's filter byte (byte 9, its mode flag taken off) and the sub receiver's (byte 25),
    // -1 where the reply doesn't carry it.
    int filterByte = -1, subFilterByte = -1;
    bool clearsSplit = false;  // the radio never reports split: a shown split is stale
    int modeDigit = 0;         // the mode byte as read, for the log
};
// readSelector matters to the MP family alone (0: the long read with both VFOs).
YaesuOpData DecodeYaesuOpData(YaesuSeries series, const QByteArray& reply, int readSelector);

// The FT-767's block, newest byte last.
struct Yaesu767Status {
    bool split = false;
    int vfo = 0;  // 16 on VFO B, else 0
    double kHz = 0;
    std::optional<int> mode;           // from 8 bytes on
    std::optional<double> vfoA, vfoB;  // from 9 bytes on
    int modeDigit = 0;
};
Yaesu767Status Decode767Status(const QByteArray& reply);

// The flags read: which bits tell split, dual watch and the VFO in use.
enum class YaesuFlagsForm : std::uint8_t { None, MP, FT990, FT890, FT100 };
struct YaesuFlags {
    bool split = false;
    std::optional<bool> dual;
    int vfo = 0;
    std::optional<int> readSelector;  // what the MP family's next frequency read is to be
};
YaesuFlags DecodeYaesuFlags(YaesuFlagsForm form, const QByteArray& reply);

// The S-meter reply as a fraction of full scale (not clamped: a radio may go past its own scale).
enum class YaesuMeterForm : std::uint8_t { None, Byte1Of255, FT100, Low4Of15, Byte1Of15 };
double DecodeYaesuMeter(YaesuMeterForm form, const QByteArray& reply);

// The MP family's filter byte split into the codes of the two main filters: q rounded to nearest with
// ties to even, r what remains (so it may be negative and then matches no list entry).
struct YaesuFilterCodes {
    int q = 0, r = 0;
};
YaesuFilterCodes SplitYaesuFilterByte(int byte);

// A packed-decimal group at 1-based positions, in the order the positions are given.
std::uint64_t YaesuBcdGroup(const QByteArray& reply, std::initializer_list<int> positions);

// ---- the models ----

enum class YaesuSplitForm : std::uint8_t { None, Classic01, Answered02, Toggle767 };
enum class YaesuVfoForm : std::uint8_t { None, Classic05, ReadFlag, Handshake09 };
enum class YaesuCopyForm : std::uint8_t { None, Op85, Switching81, ByQueue };   // "VFO A <- VFO B"
enum class YaesuExchangeForm : std::uint8_t { None, Op05, Toggle81, ByQueue };  // "Exchange VFOs"
enum class YaesuPttForm : std::uint8_t { None, Classic0F, Answered08, Plain08 };
enum class YaesuPowerForm : std::uint8_t { None, Small0F, CatOn00 };
enum class YaesuSecondForm : std::uint8_t {
    None,
    ExchangeWithWaits,
    ViaVfoB,
    ViaExchange
};  // VFO B's frequency
enum class YaesuStart : std::uint8_t { None, Handshake, CatOn, Probe, OwnStep, FilterGroups };

// One catalogue model. A row names the columns it sets (the first three it must); a column left out is
// "none", 0 or false.
struct YaesuModel {
    const char* name;  // the catalogue's model, upper case
    YaesuSeries series;
    YaesuCommandSet commands;
    // The frequency read: its parameter and reply length (0 for the FT-767, which reads inside its
    // handshake); the MP family reads shorter once its flags say so.
    std::uint8_t readParam = 0, readOp = 0;
    std::int16_t readLength = 0;
    bool readBySelector = false;
    bool modeOnFrequencyRead = false;  // the mode request sends nothing: it rides on the frequency read
    YaesuMeterForm meter = YaesuMeterForm::None;
    std::uint8_t meterParam = 0, meterOp = 0;
    std::int8_t meterLength = 0;
    YaesuFlagsForm flags = YaesuFlagsForm::None;
    std::int8_t flagsLength = 0;  // 0: no flags read, and polling skips its phase
    bool dual = false;            // takes the dual watch command
    YaesuSplitForm split = YaesuSplitForm::None;
    YaesuVfoForm vfo = YaesuVfoForm::None;
    YaesuCopyForm copy = YaesuCopyForm::None;
    YaesuExchangeForm exchange = YaesuExchangeForm::None;
    YaesuPttForm ptt = YaesuPttForm::None;
    bool smallGroup = false;  // VFO switching, lock and power by the small radios' opcodes
    YaesuPowerForm power = YaesuPowerForm::None;
    YaesuSecondForm second = YaesuSecondForm::None;
    bool ownStep = false;  // the 10 Hz buttons send the radio's own step
    bool filters = false;  // takes the IF filter commands
    YaesuStart start = YaesuStart::None;
    bool slowWhenSilent = false;  // tried only seldom once it stops answering
};

// The row of a catalogue model, or nullptr: a model outside the table sends nothing.
const YaesuModel* FindYaesuModel(const QString& name);
int YaesuModelCount();

}  // namespace tv
