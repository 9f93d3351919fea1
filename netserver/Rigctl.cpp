#include "netserver/Rigctl.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace tv {

namespace {

using Op = RigctlOp;

// The commands this server answers, and the rest of the protocol's commands, which are known so that
// they get "not implemented" rather than "malformed".
constexpr RigctlCommand kCommands[] = {
    {'F', "set_freq", Op::SetFreq, 1, 1, {}},
    {'f', "get_freq", Op::GetFreq, 0, 0, {"Frequency"}},
    {'M', "set_mode", Op::SetMode, 1, 2, {}},
    {'m', "get_mode", Op::GetMode, 0, 0, {"Mode", "Passband"}},
    {'V', "set_vfo", Op::SetVfo, 1, 1, {}},
    {'v', "get_vfo", Op::GetVfo, 0, 0, {"VFO"}},
    {'T', "set_ptt", Op::SetPtt, 1, 1, {}},
    {'t', "get_ptt", Op::GetPtt, 0, 0, {"PTT"}},
    {'S', "set_split_vfo", Op::SetSplitVfo, 1, 2, {}},
    {'s', "get_split_vfo", Op::GetSplitVfo, 0, 0, {"Split", "TX VFO"}},
    {'I', "set_split_freq", Op::SetSplitFreq, 1, 1, {}},
    {'i', "get_split_freq", Op::GetSplitFreq, 0, 0, {"TX Frequency"}},
    {'X', "set_split_mode", Op::SetSplitMode, 1, 2, {}},
    {'x', "get_split_mode", Op::GetSplitMode, 0, 0, {"TX Mode", "TX Passband"}},
    {'l', "get_level", Op::GetLevel, 1, 1, {}},
    {'\x88', "get_powerstat", Op::GetPowerstat, 0, 0, {"Power Status"}},
    {'_', "get_info", Op::GetInfo, 0, 0, {"Info"}},
    {0, "dump_state", Op::DumpState, 0, 0, {}},
    {0, "chk_vfo", Op::ChkVfo, 0, 0, {"ChkVFO"}},
    {0, "set_vfo_opt", Op::SetVfoOpt, 1, 1, {}},
    {0, "get_lock_mode", Op::GetLockMode, 0, 0, {"Locked"}},
    {'q', "quit", Op::Quit, 0, 0, {}},
    {'Q', "quit", Op::Quit, 0, 0, {}},
    {'J', "set_rit", Op::NotImplemented, 0, 9, {}},
    {'j', "get_rit", Op::NotImplemented, 0, 9, {}},
    {'Z', "set_xit", Op::NotImplemented, 0, 9, {}},
    {'z', "get_xit", Op::NotImplemented, 0, 9, {}},
    {'Y', "set_ant", Op::NotImplemented, 0, 9, {}},
    {'y', "get_ant", Op::NotImplemented, 0, 9, {}},
    {'b', "send_morse", Op::NotImplemented, 0, 9, {}},
    {'R', "set_rptr_shift", Op::NotImplemented, 0, 9, {}},
    {'r', "get_rptr_shift", Op::NotImplemented, 0, 9, {}},
    {'O', "set_rptr_offs", Op::NotImplemented, 0, 9, {}},
    {'o', "get_rptr_offs", Op::NotImplemented, 0, 9, {}},
    {'C', "set_ctcss_tone", Op::NotImplemented, 0, 9, {}},
    {'c', "get_ctcss_tone", Op::NotImplemented, 0, 9, {}},
    {'D', "set_dcs_code", Op::NotImplemented, 0, 9, {}},
    {'d', "get_dcs_code", Op::NotImplemented, 0, 9, {}},
    {'N', "set_ts", Op::NotImplemented, 0, 9, {}},
    {'n', "get_ts", Op::NotImplemented, 0, 9, {}},
    {'U', "set_func", Op::NotImplemented, 0, 9, {}},
    {'u', "get_func", Op::NotImplemented, 0, 9, {}},
    {'L', "set_level", Op::NotImplemented, 0, 9, {}},
    {'P', "set_parm", Op::NotImplemented, 0, 9, {}},
    {'p', "get_parm", Op::NotImplemented, 0, 9, {}},
    {'B', "set_bank", Op::NotImplemented, 0, 9, {}},
    {'E', "set_mem", Op::NotImplemented, 0, 9, {}},
    {'e', "get_mem", Op::NotImplemented, 0, 9, {}},
    {'G', "vfo_op", Op::NotImplemented, 0, 9, {}},
    {'g', "scan", Op::NotImplemented, 0, 9, {}},
    {'H', "set_channel", Op::NotImplemented, 0, 9, {}},
    {'h', "get_channel", Op::NotImplemented, 0, 9, {}},
    {'A', "set_trn", Op::NotImplemented, 0, 9, {}},
    {'a', "get_trn", Op::NotImplemented, 0, 9, {}},
    {'*', "reset", Op::NotImplemented, 0, 9, {}},
    {'w', "send_cmd", Op::NotImplemented, 0, 9, {}},
    {'1', "dump_caps", Op::NotImplemented, 0, 9, {}},
    {'2', "power2mW", Op::NotImplemented, 0, 9, {}},
    {'4', "mW2power", Op::NotImplemented, 0, 9, {}},
    {'\x87', "set_powerstat", Op::NotImplemented, 0, 9, {}},
    {'\x89', "send_dtmf", Op::NotImplemented, 0, 9, {}},
    {'\x8a', "recv_dtmf", Op::NotImplemented, 0, 9, {}},
    {'\x8b', "get_dcd", Op::NotImplemented, 0, 9, {}},
    {'\xf3', "get_vfo_info", Op::NotImplemented, 0, 9, {}},
    {'\xf5', "get_rig_info", Op::NotImplemented, 0, 9, {}},
    {0, "set_clock", Op::NotImplemented, 0, 9, {}},
    {0, "get_clock", Op::NotImplemented, 0, 9, {}},
    {0, "set_lock_mode", Op::NotImplemented, 0, 9, {}},
};

struct ModeRow {
    int mode;
    const char* name;
    quint64 bit;
    int passband;  // Hz
};
// One row per program mode, in mode number order.
constexpr ModeRow kModes[] = {
    {RigLSB, "LSB", 0x8, 2400},      {RigUSB, "USB", 0x4, 2400},   {RigAM, "AM", 0x1, 6000},
    {RigCW, "CW", 0x2, 500},         {RigRTTY, "RTTY", 0x10, 500}, {RigFM, "FM", 0x20, 15000},
    {RigWBFM, "WFM", 0x40, 230000},  {RigCWR, "CWR", 0x80, 500},   {RigRTTYR, "RTTYR", 0x100, 500},
    {RigPKT, "PKTUSB", 0x800, 2400},
};
static_assert(std::size(kModes) == kRigModeCount, "one row per program mode");

// Mode tokens of the protocol that no radio of the program has.
constexpr const char* kForeignModes[] = {"AMS", "PKTLSB", "PKTFM", "ECSSUSB", "ECSSLSB", "FA",
                                         "FAX", "SAM",    "SAL",   "SAH",     "DSB"};

// Level names of the protocol; only the two meter readings are answered.
// clang-format off
constexpr const char* kLevels[] = {
    "PREAMP",  "ATT",        "VOXDELAY",   "AF",        "RF",         "SQL",        "IF",
    "APF",     "NR",         "PBT_IN",     "PBT_OUT",   "CWPITCH",    "RFPOWER",    "MICGAIN",
    "KEYSPD",  "NOTCHF",     "COMP",       "AGC",       "BKINDL",     "BAL",        "METER",
    "VOXGAIN", "ANTIVOX",    "SLOPE_LOW",  "SLOPE_HIGH", "BKIN_DLYMS", "RAWSTR",    "SWR",
    "ALC",     "STRENGTH",   "RFPOWER_METER", "COMP_METER", "VD_METER", "ID_METER", "NOTCHF_RAW",
    "MONITOR_GAIN", "NB",    "RFPOWER_METER_WATTS", "USB_AF"};
// clang-format on

// VFO tokens of the protocol that name nothing the program can select.
constexpr const char* kForeignVfos[] = {"VFOC",  "MEM",   "TX",   "RX",   "MainA",
                                        "MainB", "MainC", "SubA", "SubB", "SubC"};

bool isForeignVfo(QByteArrayView name) {
    for (const char* v : kForeignVfos)
        if (name.compare(QByteArrayView(v), Qt::CaseInsensitive) == 0) return true;
    return false;
}

// Bits of the protocol's VFO and level masks.
constexpr quint64 kVfoA = 1u << 0, kVfoB = 1u << 1, kVfoSub = 1u << 25, kVfoMain = 1u << 26;
constexpr quint64 kLevelRawStr = 1u << 26, kLevelStrength = 1u << 30;
// Frequency-targetable and mode-targetable: a client then sends the split frequency as one command
// instead of switching VFOs around it.
constexpr quint64 kTargetableFreqMode = 0x3;
// The catalogue has no frequency ranges: the range offered is what the program itself will tune.
constexpr double kMaxFrequencyHz = 999999990.0;

bool equalsNoCase(QByteArrayView a, const char* b) {
    return a.compare(QByteArrayView(b), Qt::CaseInsensitive) == 0;
}

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

// The extended response is asked for by a leading punctuation mark, except these, which begin a
// command or a comment.
bool isExtendedMark(char c) {
    return std::ispunct(static_cast<unsigned char>(c)) && c != '\\' && c != '?' && c != '_' && c != '#' &&
           c != '*';
}

QByteArray hex(quint64 v) {
    return QByteArrayLiteral("0x") + QByteArray::number(v, 16);
}

std::optional<double> parseFrequency(const QByteArray& text) {
    bool ok = false;
    const double hz = text.toDouble(&ok);
    if (!ok || !std::isfinite(hz) || hz < 0 || hz > kMaxFrequencyHz) return std::nullopt;
    return hz;
}

std::optional<int> parseInt(const QByteArray& text) {
    bool ok = false;
    const int v = text.toInt(&ok);
    return ok ? std::optional<int>(v) : std::nullopt;
}

bool returnsValues(Op op) {
    switch (op) {
        case Op::GetFreq:
        case Op::GetMode:
        case Op::GetVfo:
        case Op::GetPtt:
        case Op::GetSplitVfo:
        case Op::GetSplitFreq:
        case Op::GetSplitMode:
        case Op::GetLevel:
        case Op::GetPowerstat:
        case Op::GetInfo:
        case Op::DumpState:
        case Op::ChkVfo:
        case Op::GetLockMode:
            return true;
        default:
            return false;
    }
}

QByteArray hz(double v) {
    return QByteArray::number(qint64(std::llround(v)));
}

}  // namespace

const RigctlCommand* findRigctlCommand(QByteArrayView word) {
    if (word.size() > 1 && word.front() == '\\') {
        const QByteArrayView name = word.sliced(1);
        for (const RigctlCommand& c : kCommands)
            if (name == QByteArrayView(c.longName)) return &c;
        return nullptr;
    }
    if (word.size() != 1) return nullptr;
    for (const RigctlCommand& c : kCommands)
        if (c.shortName != 0 && c.shortName == word.front()) return &c;
    return nullptr;
}

RigctlRequest parseRigctlLine(QByteArrayView line) {
    RigctlRequest r;
    QList<QByteArray> tokens;
    qsizetype i = 0;
    const qsizetype n = line.size();
    while (i < n && isSpace(line[i])) ++i;
    if (i == n || line[i] == '#') {
        r.empty = true;
        return r;
    }
    if (isExtendedMark(line[i])) {
        r.separator = line[i] == '+' ? '\n' : line[i];
        ++i;
    }
    while (i < n) {
        while (i < n && isSpace(line[i])) ++i;
        const qsizetype start = i;
        while (i < n && !isSpace(line[i])) ++i;
        if (i > start) tokens.append(line.sliced(start, i - start).toByteArray());
    }
    if (tokens.isEmpty()) {
        r.empty = true;
        return r;
    }
    r.word = tokens.takeFirst();
    r.args = tokens;
    r.command = findRigctlCommand(r.word);
    r.malformed = !r.command || r.args.size() < r.command->minArgs;
    return r;
}

QByteArray rigctlModeName(int mode) {
    return mode >= 0 && mode < kRigModeCount ? kModes[mode].name : "";
}

int rigctlModeFromName(QByteArrayView name) {
    for (const ModeRow& m : kModes)
        if (equalsNoCase(name, m.name)) return m.mode;
    return -1;
}

quint64 rigctlModeBit(int mode) {
    return mode >= 0 && mode < kRigModeCount ? kModes[mode].bit : 0;
}

int rigctlNormalPassband(int mode) {
    return mode >= 0 && mode < kRigModeCount ? kModes[mode].passband : 0;
}

std::optional<RigVfo> rigctlVfoFromName(QByteArrayView name, bool* current) {
    if (current) *current = false;
    if (equalsNoCase(name, "VFOA")) return RigVfo::A;
    if (equalsNoCase(name, "VFOB")) return RigVfo::B;
    if (equalsNoCase(name, "Main")) return RigVfo::Main;
    if (equalsNoCase(name, "Sub")) return RigVfo::Sub;
    if (equalsNoCase(name, "currVFO") || equalsNoCase(name, "VFO")) {
        if (current) *current = true;
        return RigVfo::A;
    }
    return std::nullopt;
}

QByteArray rigctlVfoName(RigVfo vfo) {
    switch (vfo) {
        case RigVfo::A:
            return "VFOA";
        case RigVfo::B:
            return "VFOB";
        case RigVfo::Main:
            return "Main";
        case RigVfo::Sub:
            return "Sub";
    }
    return "VFOA";
}

int rigctlStrength(double fraction, const QString& label) {
    const QString l = label.trimmed().toUpper();
    bool ok = false;
    if (l.startsWith(QLatin1Char('S'))) {
        // "S7", and "S9+20" as some scales write it.
        const qsizetype plus = l.indexOf(QLatin1Char('+'));
        const int units = l.mid(1, plus < 0 ? -1 : plus - 1).toInt(&ok);
        if (ok && plus < 0) return (units - 9) * 6;
        const int over = l.mid(plus + 1).toInt(&ok);
        if (ok) return over;
    } else if (l.startsWith(QLatin1Char('+'))) {
        const int over = l.mid(1).toInt(&ok);
        if (ok) return over;
    }
    return int(std::lround(-54.0 + std::clamp(fraction, 0.0, 1.0) * 114.0));
}

QByteArray rigctlDumpState(const RigCaps& caps, const QString& serverName) {
    quint64 modes = 0;
    for (int m = 0; m < kRigModeCount; ++m)
        if (caps.modes[size_t(m)]) modes |= kModes[m].bit;
    quint64 vfos = (caps.vfoAB ? kVfoA | kVfoB : 0) | (caps.mainSub ? kVfoMain | kVfoSub : 0);
    if (vfos == 0) vfos = kVfoA;
    const QByteArray range = QByteArrayLiteral("0.000000 ") + QByteArray::number(kMaxFrequencyHz, 'f', 6) +
                             ' ' + hex(modes) + " -1 -1 " + hex(vfos) + " 0x1\n";
    const QByteArray endOfList = "0 0 0 0 0 0 0\n";
    QByteArray out;
    out += "1\n";  // protocol version
    out += "2\n";  // model: what the client itself chose, NET rigctl
    out += "0\n";  // ITU region: not known
    out += range + endOfList;
    out += range + endOfList;
    out += hex(modes) + " 1\n0 0\n";  // any mode tunes in 1 Hz steps
    for (const ModeRow& m : kModes)
        if (caps.modes[size_t(m.mode)]) out += hex(m.bit) + ' ' + QByteArray::number(m.passband) + '\n';
    out += "0 0\n";
    out += "0\n0\n0\n";  // no RIT, XIT or IF shift
    out += "0\n";        // announcements
    out += "\n\n";       // no preamplifier or attenuator steps
    // Functions, levels and parameters, each got and set: only the meter's levels are read.
    out += "0x0\n0x0\n";
    out += hex(caps.meter ? kLevelRawStr | kLevelStrength : 0) + "\n0x0\n";
    out += "0x0\n0x0\n";
    out += "vfo_ops=0x0\n";
    out += "ptt_type=" + hex(caps.ptt ? 1 : 0) + '\n';
    out += "targetable_vfo=" + hex(kTargetableFreqMode) + '\n';
    out += "has_set_vfo=" + QByteArray(caps.vfoAB || caps.mainSub ? "1" : "0") + '\n';
    out += "has_get_vfo=1\nhas_set_freq=1\nhas_get_freq=1\n";
    out += "has_set_conf=0\nhas_get_conf=0\nhas_power2mW=0\nhas_mW2power=0\n";
    out += "timeout=0\n";
    out += "rig_model=2\n";
    out += "rigctld_version=" + serverName.toUtf8() + '\n';
    out += "done\n";
    return out;
}

RigctlSession::RigctlSession(RigBackend& backend, QString serverName)
    : rig_(backend), serverName_(std::move(serverName)) {}

RigctlSession::Result RigctlSession::set(bool queued) const {
    return {queued ? RigctlCode::Ok : RigctlCode::Rejected, {}};
}

RigctlSession::Result RigctlSession::run(const RigctlRequest& r) {
    using namespace RigctlCode;
    const QList<QByteArray>& a = r.args;
    const RigCaps caps = rig_.caps();
    auto modeAndPassband = [](int mode) {
        return QList<QByteArray>{rigctlModeName(mode), QByteArray::number(rigctlNormalPassband(mode))};
    };
    // A mode token and an optional passband: the program's mode, or an error code as a negative.
    auto parseMode = [&caps, &a](int* passband) {
        *passband = 0;
        if (a.size() > 1) {
            const auto pb = parseInt(a[1]);
            if (!pb || *pb < -1) return Invalid;
            *passband = *pb;
        }
        const int mode = rigctlModeFromName(a[0]);
        if (mode >= 0) return caps.modes[size_t(mode)] ? mode : NotAvailable;
        for (const char* foreign : kForeignModes)
            if (equalsNoCase(a[0], foreign)) return NotAvailable;
        return Invalid;
    };

    switch (r.command->op) {
        case Op::GetFreq:
            return {Ok, {hz(rig_.frequencyHz())}};
        case Op::SetFreq: {
            const auto f = parseFrequency(a[0]);
            if (!f) return {Invalid, {}};
            return set(rig_.setFrequency(*f));
        }
        case Op::GetMode: {
            const int mode = rig_.mode();
            // Before the radio has told its mode there is nothing true to say.
            if (mode < 0) return {Ok, {"None", "0"}};
            return {Ok, modeAndPassband(mode)};
        }
        case Op::SetMode: {
            if (a[0] == "?") {
                QByteArray list;
                for (const ModeRow& m : kModes)
                    if (caps.modes[size_t(m.mode)]) list += QByteArray(m.name) + ' ';
                return {Ok, {list}};
            }
            int passband = 0;
            const int mode = parseMode(&passband);
            if (mode < 0) return {mode, {}};
            return set(rig_.setMode(mode, passband));
        }
        case Op::GetVfo:
            return {Ok, {rigctlVfoName(rig_.vfo())}};
        case Op::SetVfo: {
            bool current = false;
            const auto vfo = rigctlVfoFromName(a[0], &current);
            if (!vfo) return {isForeignVfo(a[0]) ? NotAvailable : Invalid, {}};
            if (current) return {Ok, {}};
            const bool ab = *vfo == RigVfo::A || *vfo == RigVfo::B;
            if (ab ? !caps.vfoAB : !caps.mainSub) return {NotAvailable, {}};
            return set(rig_.setVfo(*vfo));
        }
        case Op::GetPtt:
            if (!caps.ptt) return {NotAvailable, {}};
            return {Ok, {rig_.ptt() ? "1" : "0"}};
        case Op::SetPtt: {
            const auto on = parseInt(a[0]);
            if (!on || *on < 0 || *on > 3) return {Invalid, {}};
            if (!caps.ptt) return {NotAvailable, {}};
            return set(rig_.setPtt(*on != 0));
        }
        case Op::GetSplitVfo: {
            const bool mainSubOnly = caps.mainSub && !caps.vfoAB;
            const bool on = caps.split && rig_.split();
            const RigVfo tx =
                on ? (mainSubOnly ? RigVfo::Sub : RigVfo::B) : (mainSubOnly ? RigVfo::Main : RigVfo::A);
            return {Ok, {on ? "1" : "0", rigctlVfoName(tx)}};
        }
        case Op::SetSplitVfo: {
            const auto on = parseInt(a[0]);
            if (!on || *on < 0 || *on > 1) return {Invalid, {}};
            // The transmit VFO is whichever the radio's split uses; any token of the protocol will do.
            if (a.size() > 1 && !rigctlVfoFromName(a[1]) && !isForeignVfo(a[1])) return {Invalid, {}};
            if (!caps.split) return {NotAvailable, {}};
            return set(rig_.setSplit(*on == 1));
        }
        case Op::GetSplitFreq:
            return {Ok, {hz(rig_.txFrequencyHz())}};
        case Op::SetSplitFreq: {
            const auto f = parseFrequency(a[0]);
            if (!f) return {Invalid, {}};
            if (!caps.split) return {NotAvailable, {}};
            return set(rig_.setTxFrequency(*f));
        }
        case Op::GetSplitMode: {
            const int mode = rig_.txMode();
            if (mode < 0) return {Ok, {"None", "0"}};
            return {Ok, modeAndPassband(mode)};
        }
        case Op::SetSplitMode: {
            int passband = 0;
            const int mode = parseMode(&passband);
            if (mode < 0) return {mode, {}};
            if (!caps.split) return {NotAvailable, {}};
            // A split frequency takes the receive mode along; the program has no other way to set the
            // transmit mode, so only that one can be agreed to.
            return {mode == rig_.mode() ? Ok : NotAvailable, {}};
        }
        case Op::GetLevel: {
            const QByteArray& level = a[0];
            if (level == "?") return {Ok, {caps.meter ? "RAWSTR STRENGTH " : ""}};
            const bool strength = equalsNoCase(level, "STRENGTH"), raw = equalsNoCase(level, "RAWSTR");
            if (strength || raw) {
                if (!caps.meter) return {NotAvailable, {}};
                const double fraction = std::clamp(rig_.meter(), 0.0, 1.0);
                const int value =
                    strength ? rigctlStrength(fraction, rig_.meterLabel()) : int(std::lround(fraction * 255));
                return {Ok, {QByteArray::number(value)}};
            }
            for (const char* known : kLevels)
                if (equalsNoCase(level, known)) return {NotAvailable, {}};
            return {Invalid, {}};
        }
        case Op::GetPowerstat:
            return {Ok, {"1"}};
        case Op::GetInfo:
            return {
                Ok,
                {serverName_.toUtf8() + ", " + (caps.radio ? caps.name.toUtf8() : QByteArray("no radio"))}};
        case Op::DumpState:
            return {Ok, {rigctlDumpState(caps, serverName_)}};
        case Op::ChkVfo:
            return {Ok, {"0"}};
        case Op::SetVfoOpt: {
            // Commands with a VFO in front of their arguments aren't spoken here.
            const auto on = parseInt(a[0]);
            if (!on) return {Invalid, {}};
            return {*on == 0 ? Ok : NotAvailable, {}};
        }
        case Op::GetLockMode:
            return {Ok, {"0"}};
        case Op::Quit:
            closing_ = true;
            return {Ok, {}};
        case Op::NotImplemented:
            return {NotImplemented, {}};
    }
    return {Invalid, {}};
}

QByteArray RigctlSession::format(const RigctlRequest& r, const Result& result) const {
    const QByteArray rprt = "RPRT " + QByteArray::number(result.code) + '\n';
    if (!r.command) return rprt;
    const Op op = r.command->op;
    if (r.separator == 0) {
        // The default protocol: the values one a line, or one RPRT line for a set or a failure.
        if (result.code != RigctlCode::Ok) return rprt;
        QByteArray out;
        for (const QByteArray& v : result.values) out += op == Op::DumpState ? v : v + '\n';
        // A set ends with its RPRT, and so does the lock state, as rigctld sends it.
        if (!returnsValues(op) || op == Op::GetLockMode) out += rprt;
        return out;
    }
    // The extended response: the command echoed, "Key: value" records, and RPRT last.
    const char sep = r.separator;
    if (op == Op::ChkVfo) return "ChkVFO: " + result.values.value(0) + '\n';
    if (op == Op::Quit) return rprt;
    QByteArray out = QByteArray(r.command->longName) + ':';
    for (const QByteArray& arg : r.args) out += ' ' + arg;
    out += sep;
    if (result.code == RigctlCode::Ok) {
        for (int i = 0; i < result.values.size(); ++i) {
            const char* key = i < 2 ? r.command->keys[i] : nullptr;
            if (op == Op::DumpState)
                out += result.values[i];
            else if (key)
                out += QByteArray(key) + ": " + result.values[i] + sep;
            else
                out += result.values[i] + sep;  // a level's value goes without its name
        }
    }
    return out + rprt;
}

QByteArray RigctlSession::answer(QByteArrayView line) {
    const RigctlRequest r = parseRigctlLine(line);
    if (r.empty) return {};
    if (r.malformed) return format(r, {RigctlCode::Invalid, {}});
    return format(r, run(r));
}

}  // namespace tv
