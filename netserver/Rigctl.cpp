#include "netserver/Rigctl.h"

#include <QCryptographicHash>

#include <algorithm>
#include <cctype>
#include <cmath>

namespace tv {

namespace {

using Op = RigctlOp;
using Tail = RigctlTail;

// The command takes the rest of the line as its one argument (a Morse text, a raw command).
constexpr int kRestOfLine = -1;

// Every command of the protocol, one row each: those this server answers, and the rest, which are known
// so that their arguments are taken off the line and they get a code rather than "unknown".
// clang-format off
constexpr RigctlCommand kCommands[] = {
    {'F', "set_freq", Op::SetFreq, 1, 0, true, {}, Tail::Plain},
    {'f', "get_freq", Op::GetFreq, 0, 0, true, {"Frequency"}, Tail::Plain},
    {'M', "set_mode", Op::SetMode, 2, 1, true, {}, Tail::Plain},
    {'m', "get_mode", Op::GetMode, 0, 0, true, {"Mode", "Passband"}, Tail::Plain},
    {'V', "set_vfo", Op::SetVfo, 1, 0, false, {}, Tail::Plain},
    {'v', "get_vfo", Op::GetVfo, 0, 0, false, {"VFO"}, Tail::Plain},
    {'T', "set_ptt", Op::SetPtt, 1, 0, true, {}, Tail::Plain},
    {'t', "get_ptt", Op::GetPtt, 0, 0, true, {"PTT"}, Tail::Plain},
    {'S', "set_split_vfo", Op::SetSplitVfo, 2, 1, true, {}, Tail::Plain},
    {'s', "get_split_vfo", Op::GetSplitVfo, 0, 0, true, {"Split", "TX VFO"}, Tail::Plain},
    {'I', "set_split_freq", Op::SetSplitFreq, 1, 0, true, {}, Tail::Plain},
    {'i', "get_split_freq", Op::GetSplitFreq, 0, 0, true, {"TX Frequency"}, Tail::Plain},
    {'X', "set_split_mode", Op::SetSplitMode, 2, 1, true, {}, Tail::Plain},
    {'x', "get_split_mode", Op::GetSplitMode, 0, 0, true, {"TX Mode", "TX Passband"}, Tail::Plain},
    {'K', "set_split_freq_mode", Op::SetSplitFreqMode, 3, 1, true, {}, Tail::Plain},
    {'k', "get_split_freq_mode", Op::GetSplitFreqMode, 0, 0, true, {"TX Frequency", "TX Mode", "TX Passband"}, Tail::Plain},
    {'L', "set_level", Op::SetLevel, 2, 0, true, {}, Tail::Plain},
    {'l', "get_level", Op::GetLevel, 1, 0, true, {}, Tail::Plain},
    {'U', "set_func", Op::SetFunc, 2, 0, true, {}, Tail::Plain},
    {'u', "get_func", Op::GetFunc, 1, 0, true, {}, Tail::Plain},
    {'J', "set_rit", Op::SetRit, 1, 0, true, {}, Tail::Plain},
    {'j', "get_rit", Op::GetRit, 0, 0, true, {"RIT"}, Tail::Plain},
    {'Z', "set_xit", Op::SetXit, 1, 0, true, {}, Tail::Plain},
    {'z', "get_xit", Op::GetXit, 0, 0, true, {"XIT"}, Tail::Plain},
    {0x8b, "get_dcd", Op::GetDcd, 0, 0, true, {"DCD"}, Tail::Plain},
    {0x87, "set_powerstat", Op::SetPowerstat, 1, 0, false, {}, Tail::Plain},
    {0x88, "get_powerstat", Op::GetPowerstat, 0, 0, false, {"Power Status"}, Tail::Plain},
    {'_', "get_info", Op::GetInfo, 0, 0, false, {"Info"}, Tail::Plain},
    {0xf5, "get_rig_info", Op::GetRigInfo, 0, 0, false, {}, Tail::Plain},
    {0xf3, "get_vfo_info", Op::GetVfoInfo, 1, 0, false, {"Freq", "Mode", "Width", "Split", "SatMode"}, Tail::Plain},
    {0x8f, "dump_state", Op::DumpState, 0, 0, false, {}, Tail::Plain},
    {'1', "dump_caps", Op::DumpCaps, 0, 0, false, {}, Tail::Rprt},
    {0, "stream_caps", Op::StreamCaps, 0, 0, false, {}, Tail::Plain},
    {0xf0, "chk_vfo", Op::ChkVfo, 0, 0, false, {"ChkVFO"}, Tail::Plain},
    {0xf2, "set_vfo_opt", Op::SetVfoOpt, 1, 0, false, {}, Tail::Plain},
    {0, "get_lock_mode", Op::GetLockMode, 0, 0, false, {"Locked"}, Tail::Rprt},
    {0, "set_lock_mode", Op::SetLockMode, 1, 0, false, {}, Tail::Plain},
    {0, "get_clock", Op::GetClock, 0, 0, false, {}, Tail::Rprt},
    {0, "set_clock", Op::NotAvailable, 1, 0, false, {}, Tail::Plain},
    {'2', "power2mW", Op::Power2mW, 3, 0, false, {"Power mW"}, Tail::Plain},
    {'4', "mW2power", Op::MW2Power, 3, 0, false, {"Power [0.0..1.0]"}, Tail::Plain},
    {'b', "send_morse", Op::SendMorse, kRestOfLine, 0, true, {}, Tail::Plain},
    {0xbb, "stop_morse", Op::StopMorse, 0, 0, true, {}, Tail::Plain},
    {0xbc, "wait_morse", Op::WaitMorse, 0, 0, true, {}, Tail::Plain},
    {0x98, "password", Op::Password, 1, 0, false, {}, Tail::Plain},
    {'w', "send_cmd", Op::SendCmd, kRestOfLine, 0, false, {}, Tail::Plain},
    {'W', "send_cmd_rx", Op::SendCmd, kRestOfLine, 0, false, {}, Tail::Plain},
    {'q', "quit", Op::Quit, 0, 0, false, {}, Tail::Plain},
    {'Q', "quit", Op::Quit, 0, 0, false, {}, Tail::Plain},
    // What no radio of this program does through it.
    {'Y', "set_ant", Op::NotAvailable, 2, 1, true, {}, Tail::Plain},
    {'y', "get_ant", Op::NotAvailable, 1, 1, true, {}, Tail::Plain},
    {'R', "set_rptr_shift", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {'r', "get_rptr_shift", Op::NotAvailable, 0, 0, true, {}, Tail::Plain},
    {'O', "set_rptr_offs", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {'o', "get_rptr_offs", Op::NotAvailable, 0, 0, true, {}, Tail::Plain},
    {'C', "set_ctcss_tone", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {'c', "get_ctcss_tone", Op::NotAvailable, 0, 0, true, {}, Tail::Plain},
    {'D', "set_dcs_code", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {'d', "get_dcs_code", Op::NotAvailable, 0, 0, true, {}, Tail::Plain},
    {0x90, "set_ctcss_sql", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {0x91, "get_ctcss_sql", Op::NotAvailable, 0, 0, true, {}, Tail::Plain},
    {0x92, "set_dcs_sql", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {0x93, "get_dcs_sql", Op::NotAvailable, 0, 0, true, {}, Tail::Plain},
    {'N', "set_ts", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {'n', "get_ts", Op::NotAvailable, 0, 0, true, {}, Tail::Plain},
    {'P', "set_parm", Op::NotAvailable, 2, 0, false, {}, Tail::Plain},
    {'p', "get_parm", Op::NotAvailable, 1, 0, false, {}, Tail::Plain},
    {'B', "set_bank", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {'E', "set_mem", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {'e', "get_mem", Op::NotAvailable, 0, 0, true, {}, Tail::Plain},
    {'G', "vfo_op", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {'g', "scan", Op::NotAvailable, 2, 0, true, {}, Tail::Plain},
    {'H', "set_channel", Op::NotAvailable, kRestOfLine, 0, false, {}, Tail::Plain},
    {'h', "get_channel", Op::NotAvailable, 1, 0, false, {}, Tail::Plain},
    {'A', "set_trn", Op::NotAvailable, 1, 0, false, {}, Tail::Plain},
    {'a', "get_trn", Op::NotAvailable, 0, 0, false, {}, Tail::Plain},
    {'*', "reset", Op::NotAvailable, 1, 0, false, {}, Tail::Plain},
    {0x89, "send_dtmf", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    {0x8a, "recv_dtmf", Op::NotAvailable, 0, 0, true, {}, Tail::Plain},
    {0x94, "send_voice_mem", Op::NotAvailable, 1, 0, true, {}, Tail::Plain},
    // The protocol's own housekeeping that this server has no use for.
    {'3', "dump_conf", Op::NotImplemented, 0, 0, false, {}, Tail::Plain},
    {0, "set_conf", Op::NotImplemented, 2, 0, false, {}, Tail::Plain},
    {0, "get_conf", Op::NotImplemented, 1, 0, false, {}, Tail::Plain},
    {0xf1, "halt", Op::NotImplemented, 0, 0, false, {}, Tail::Plain},
    {0, "pause", Op::NotImplemented, 1, 0, false, {}, Tail::Plain},
    {0, "get_vfo_list", Op::NotImplemented, 0, 0, false, {}, Tail::Plain},
    {0, "get_mode_bandwidths", Op::NotImplemented, 1, 0, false, {}, Tail::Plain},
};
// clang-format on

struct ModeRow {
    int mode;
    const char* name;
    quint64 bit;
    int passband;  // Hz
};
// One row per program mode, in mode number order. PKT is the radio's data mode on the upper sideband.
constexpr ModeRow kModes[] = {
    {RigLSB, "LSB", 0x8, 2400},      {RigUSB, "USB", 0x4, 2400},   {RigAM, "AM", 0x1, 6000},
    {RigCW, "CW", 0x2, 500},         {RigRTTY, "RTTY", 0x10, 500}, {RigFM, "FM", 0x20, 15000},
    {RigWBFM, "WFM", 0x40, 230000},  {RigCWR, "CWR", 0x80, 500},   {RigRTTYR, "RTTYR", 0x100, 500},
    {RigPKT, "PKTUSB", 0x800, 2400},
};
static_assert(std::size(kModes) == kRigModeCount, "one row per program mode");

// Mode tokens of the protocol that no radio of the program has.
constexpr const char* kForeignModes[] = {"AMS", "PKTLSB", "PKTFM", "ECSSUSB", "ECSSLSB", "FA",  "FAX",
                                         "SAM", "SAL",    "SAH",   "DSB",     "C4FM",    "AMN", "FMN"};

// Level names of the protocol; the program reads only the meter.
// clang-format off
constexpr const char* kLevels[] = {
    "PREAMP",  "ATT",        "VOXDELAY",   "AF",        "RF",         "SQL",        "IF",
    "APF",     "NR",         "PBT_IN",     "PBT_OUT",   "CWPITCH",    "RFPOWER",    "MICGAIN",
    "KEYSPD",  "NOTCHF",     "COMP",       "AGC",       "BKINDL",     "BAL",        "METER",
    "VOXGAIN", "ANTIVOX",    "SLOPE_LOW",  "SLOPE_HIGH", "BKIN_DLYMS", "RAWSTR",    "SWR",
    "ALC",     "STRENGTH",   "RFPOWER_METER", "COMP_METER", "VD_METER", "ID_METER", "NOTCHF_RAW",
    "MONITOR_GAIN", "NB",    "RFPOWER_METER_WATTS", "SPECTRUM_MODE", "SPECTRUM_SPAN",
    "SPECTRUM_EDGE_LOW", "SPECTRUM_EDGE_HIGH", "SPECTRUM_SPEED", "SPECTRUM_REF", "SPECTRUM_AVG",
    "SPECTRUM_ATT", "TEMP_METER", "BAND_SELECT", "USB_AF", "AGC_TIME"};
// Function names of the protocol. RIT and XIT are read as off: the program applies no offset.
constexpr const char* kFuncs[] = {
    "FAGC", "NB", "COMP", "VOX", "TONE", "TSQL", "SBKIN", "FBKIN", "ANF", "NR", "AIP", "APF", "MON",
    "MN", "RF", "ARO", "LOCK", "MUTE", "VSC", "REV", "SQL", "ABM", "BC", "MBC", "RIT", "AFC", "SATMODE",
    "SCOPE", "RESUME", "TBURST", "TUNER", "XIT", "NB2", "CSQL", "AFLT", "ANL", "BC2", "DUAL_WATCH",
    "DIVERSITY", "DSQL", "SCEN", "SLICE", "TRANSCEIVE", "SPECTRUM", "SPECTRUM_HOLD", "SEND_MORSE",
    "SEND_VOICE_MEM", "OVF_STATUS", "SYNC"};
// clang-format on

// VFO tokens of the protocol that name nothing the program can select.
constexpr const char* kForeignVfos[] = {"VFOC", "MEM", "MainA", "MainB", "MainC", "SubA", "SubB", "SubC"};

bool equalsNoCase(QByteArrayView a, const char* b) {
    return a.compare(QByteArrayView(b), Qt::CaseInsensitive) == 0;
}

template <size_t N>
bool listed(const char* const (&list)[N], QByteArrayView name) {
    return std::any_of(std::begin(list), std::end(list),
                       [&](const char* l) { return equalsNoCase(name, l); });
}

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

// The extended response is asked for by a punctuation mark in front of a command, except these, which
// begin a command or a comment.
bool isExtendedMark(char c) {
    return std::ispunct(static_cast<unsigned char>(c)) && c != '\\' && c != '?' && c != '_' && c != '#' &&
           c != '*';
}

// Bits of the protocol's VFO and level masks.
constexpr quint64 kVfoA = 1u << 0, kVfoB = 1u << 1, kVfoSub = 1u << 25, kVfoMain = 1u << 26;
constexpr quint64 kLevelRawStr = 1u << 26, kLevelStrength = 1u << 30;
// The transmit levels, in RigLevel's order: their names and bits.
constexpr const char* kTxLevelNames[kRigLevelCount] = {"RFPOWER", "SWR", "ALC"};
constexpr quint64 kTxLevelBits[kRigLevelCount] = {1u << 12, 1u << 28, 1u << 29};

// The transmit level a level name asks for, none for other names.
std::optional<RigLevel> txLevel(QByteArrayView name) {
    for (int i = 0; i < kRigLevelCount; ++i)
        if (equalsNoCase(name, kTxLevelNames[i])) return RigLevel(i);
    return std::nullopt;
}

quint64 readLevelBits(const RigCaps& caps) {
    quint64 bits = caps.meter ? kLevelRawStr | kLevelStrength : 0;
    for (int i = 0; i < kRigLevelCount; ++i)
        if (caps.levels[size_t(i)]) bits |= kTxLevelBits[i];
    return bits;
}

// The names of the levels read, as "l ?" lists them, each followed by a blank; with ranges for
// \dump_caps.
QByteArray readLevelNames(const RigCaps& caps, bool ranges) {
    QByteArray out;
    if (caps.meter) out += ranges ? "RAWSTR(0..255/0) STRENGTH(0..0/0) " : "RAWSTR STRENGTH ";
    for (int i = 0; i < kRigLevelCount; ++i)
        if (caps.levels[size_t(i)]) out += QByteArray(kTxLevelNames[i]) + (ranges ? "(0..0/0) " : " ");
    return out;
}
// Frequency-targetable and mode-targetable: a client then sends the split frequency as one command
// instead of switching VFOs around it.
constexpr quint64 kTargetableFreqMode = 0x3;
// The catalogue has no frequency ranges: the range offered is what the program itself will tune.
constexpr double kMaxFrequencyHz = 999999990.0;
// A client's whole wait for an answer, when the radio's own pace gives none longer.
constexpr int kMinAnswerTimeoutMs = 1000;

QByteArray hex(quint64 v) {
    return QByteArrayLiteral("0x") + QByteArray::number(v, 16);
}

QByteArray hz(double v) {
    return QByteArray::number(qint64(std::llround(v)));
}

std::optional<double> parseNumber(const QByteArray& text) {
    bool ok = false;
    const double v = text.toDouble(&ok);
    if (!ok || !std::isfinite(v)) return std::nullopt;
    return v;
}

std::optional<double> parseFrequency(const QByteArray& text) {
    const auto hz = parseNumber(text);
    if (!hz || *hz < 0 || *hz > kMaxFrequencyHz) return std::nullopt;
    return hz;
}

// A whole number, written as one or with a decimal point ("2400", "2400.0", "-1").
std::optional<int> parseInt(const QByteArray& text) {
    const auto v = parseNumber(text);
    if (!v || *v < -1e9 || *v > 1e9 || *v != std::trunc(*v)) return std::nullopt;
    return int(*v);
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
        case Op::GetSplitFreqMode:
        case Op::GetLevel:
        case Op::GetFunc:
        case Op::GetRit:
        case Op::GetXit:
        case Op::GetDcd:
        case Op::GetPowerstat:
        case Op::GetInfo:
        case Op::GetRigInfo:
        case Op::GetVfoInfo:
        case Op::DumpState:
        case Op::DumpCaps:
        case Op::ChkVfo:
        case Op::GetLockMode:
        case Op::GetClock:
        case Op::Power2mW:
        case Op::MW2Power:
            return true;
        default:
            return false;
    }
}

// Answers that are a block of text of their own, sent as they are.
// What the radio would have to answer: with a radio that doesn't, a client gets the timeout code, not a
// value that may be minutes old.
bool readsRadio(Op op) {
    switch (op) {
        case Op::GetFreq:
        case Op::GetMode:
        case Op::GetVfo:
        case Op::GetSplitVfo:
        case Op::GetSplitFreq:
        case Op::GetSplitMode:
        case Op::GetSplitFreqMode:
        case Op::GetLevel:
        case Op::GetVfoInfo:
        case Op::GetRigInfo:
            return true;
        default:
            return false;
    }
}

// What changes the radio; lockable: what retunes it.
bool changesRadio(Op op, bool* lockable) {
    *lockable = false;
    switch (op) {
        case Op::SetFreq:
        case Op::SetMode:
        case Op::SetSplitFreq:
        case Op::SetSplitMode:
        case Op::SetSplitFreqMode:
            *lockable = true;
            return true;
        case Op::SetVfo:
        case Op::SetPtt:
        case Op::SetSplitVfo:
        case Op::SendCmd:
        case Op::SendMorse:
            return true;
        default:
            return false;
    }
}

// What a client asks when it opens the rig, before it logs in.
bool answeredBeforeLogin(Op op) {
    return op == Op::Password || op == Op::ChkVfo || op == Op::DumpState || op == Op::Quit;
}

bool isTextBlock(Op op) {
    return op == Op::DumpState || op == Op::DumpCaps || op == Op::GetRigInfo;
}

// A word that names a command, split off the front of a token: a long name is the whole token, a
// short one its first byte (rigctld reads "fm" as f then m).
const RigctlCommand* takeCommand(QByteArray& token) {
    if (token.startsWith('\\')) {
        const RigctlCommand* c = findRigctlCommand(token);
        token.clear();
        return c;
    }
    const RigctlCommand* c = findRigctlCommand(QByteArrayView(token).first(1));
    token.remove(0, 1);
    return c;
}

QByteArray modesList(const RigCaps& caps) {
    QByteArray list;
    for (const ModeRow& m : kModes)
        if (caps.modes[size_t(m.mode)]) list += QByteArray(m.name) + ' ';
    return list;
}

QByteArray vfoList(const RigCaps& caps) {
    QByteArray list;
    if (caps.vfoAB || !caps.mainSub) list += "VFOA VFOB ";
    if (caps.mainSub) list += "Main Sub ";
    return list + "currVFO ";
}

QByteArray widthText(int hz) {
    return hz >= 1000 ? QByteArray::number(hz / 1000.0, 'f', 4) + " kHz"
                      : QByteArray::number(hz, 'f', 1) + " Hz";
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
        if (c.shortName != 0 && c.shortName == static_cast<unsigned char>(word.front())) return &c;
    return nullptr;
}

QList<RigctlRequest> parseRigctlLine(QByteArrayView line, bool vfoMode) {
    QList<QByteArray> tokens;
    for (qsizetype i = 0, n = line.size(); i < n;) {
        while (i < n && isSpace(line[i])) ++i;
        const qsizetype start = i;
        while (i < n && !isSpace(line[i])) ++i;
        if (i > start) tokens.append(line.sliced(start, i - start).toByteArray());
    }
    QList<RigctlRequest> out;
    char separator = 0;
    for (qsizetype t = 0; t < tokens.size();) {
        QByteArray& token = tokens[t];
        if (token.isEmpty()) {
            ++t;
            continue;
        }
        if (token.front() == '#') break;  // a comment to the end of the line
        if (isExtendedMark(token.front())) {
            separator = token.front() == '+' ? '\n' : token.front();
            token.remove(0, 1);
            continue;
        }
        RigctlRequest r;
        r.separator = separator;
        separator = 0;
        r.word = token.startsWith('\\') ? token : token.left(1);
        r.command = takeCommand(token);
        if (token.isEmpty()) ++t;  // what is left of a short command's token is the next word
        if (!r.command) {
            out.append(r);
            continue;
        }
        auto take = [&] {
            QByteArray word = tokens[t];
            ++t;
            return word;
        };
        if (vfoMode && r.command->vfoArg) {
            if (t < tokens.size())
                r.vfo = take();
            else
                r.malformed = true;
        }
        if (r.command->args == kRestOfLine) {
            QByteArray rest;
            while (t < tokens.size()) rest += (rest.isEmpty() ? "" : " ") + take();
            if (rest.isEmpty())
                r.malformed = true;
            else
                r.args.append(rest);
        } else {
            for (int a = 0; a < r.command->args && t < tokens.size(); ++a) r.args.append(take());
            if (r.args.size() < r.command->args - r.command->optionalArgs) r.malformed = true;
        }
        out.append(r);
    }
    return out;
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
    out += hex(readLevelBits(caps)) + "\n0x0\n";
    out += "0x0\n0x0\n";
    out += "vfo_ops=0x0\n";
    out += "ptt_type=" + hex(caps.ptt ? 1 : 0) + '\n';
    out += "targetable_vfo=" + hex(kTargetableFreqMode) + '\n';
    out += "has_set_vfo=" + QByteArray(caps.vfoAB || caps.mainSub ? "1" : "0") + '\n';
    out += "has_get_vfo=1\nhas_set_freq=1\nhas_get_freq=1\n";
    out += "has_set_conf=0\nhas_get_conf=0\nhas_power2mW=0\nhas_mW2power=0\n";
    out += "timeout=" + QByteArray::number(std::max(caps.answerTimeoutMs, kMinAnswerTimeoutMs)) + '\n';
    out += "rig_model=2\n";
    out += "rigctld_version=" + serverName.toUtf8() + '\n';
    out += "done\n";
    return out;
}

QByteArray rigctlDumpCaps(const RigCaps& caps) {
    const QByteArray name = caps.radio ? caps.name.toUtf8() : QByteArray("no radio");
    const QByteArray modes = modesList(caps), vfos = vfoList(caps);
    const int timeout = std::max(caps.answerTimeoutMs, kMinAnswerTimeoutMs);
    QByteArray out;
    out += "Caps dump for model: 2\n";
    out += "Model name:\t" + name + '\n';
    out += "Mfg name:\tTolvane\n";
    out += "Backend version:\t1.0\nBackend copyright:\tGPL\nBackend status:\tStable\n";
    out += "Rig type:\tTransceiver\n";
    out += QByteArray("PTT type:\t") + (caps.ptt ? "Rig capable" : "None") + '\n';
    out += "DCD type:\tNone\nPort type:\tNetwork link\n";
    out += "Write delay: 0mS, timeout " + QByteArray::number(timeout) + "mS, 0 retry\n";
    out += "Post Write delay: 0mS\n";
    out += "Has targetable VFO: Y\nHas async data support: N\nAnnounce: 0x0\n";
    out += "Max RIT: -0.0kHz/+0.0kHz\nMax XIT: -0.0kHz/+0.0kHz\nMax IF-SHIFT: -0.0kHz/+0.0kHz\n";
    out += "Preamp: None\nAttenuator: None\nAGC levels: \nCTCSS: None\nDCS: None\n";
    out += "Get functions: \nSet functions: \n";
    out += QByteArray("Get level: ") + readLevelNames(caps, true) + '\n';
    out += "Set level: \nGet parameters: \nSet parameters: \n";
    out += "Mode list: " + modes + '\n';
    out += "VFO list: " + vfos + '\n';
    out += "VFO Ops: \nScan Ops: \nNumber of banks:\t0\nMemory name desc size:\t0\nMemories: None\n";
    for (const char* way : {"TX", "RX"}) {
        out += QByteArray(way) + " ranges #1 for " + name + ":\n";
        out += "\t0 Hz - " + hz(kMaxFrequencyHz) + " Hz\n";
        out += "\t\tVFO list: " + vfos + "\n\t\tMode list: " + modes + '\n';
    }
    out += "Tuning steps:\n\t1.0 Hz:   \t" + modes + "\nTuning steps status:\tOK (0)\n";
    out += "Filters:\n";
    for (const ModeRow& m : kModes)
        if (caps.modes[size_t(m.mode)]) out += '\t' + widthText(m.passband) + ":   \t" + m.name + " \n";
    out += "Has priv data:\tN\nHas Init:\tY\nHas Cleanup:\tY\nHas Open:\tY\nHas Close:\tY\n";
    const bool vfoSel = caps.vfoAB || caps.mainSub;
    const struct {
        const char* what;
        bool can;
    } can[] = {{"set Conf", false},
               {"get Conf", false},
               {"set Frequency", caps.radio},
               {"get Frequency", true},
               {"set Mode", caps.radio},
               {"get Mode", true},
               {"set VFO", vfoSel},
               {"get VFO", true},
               {"set PTT", caps.ptt},
               {"get PTT", caps.ptt},
               {"get DCD", false},
               {"set Repeater Duplex", false},
               {"get Repeater Duplex", false},
               {"set Repeater Offset", false},
               {"get Repeater Offset", false},
               {"set Split Freq", caps.split},
               {"get Split Freq", true},
               {"set Split Mode", caps.split},
               {"get Split Mode", true},
               {"set Split VFO", caps.split},
               {"get Split VFO", true},
               {"set Tuning Step", false},
               {"get Tuning Step", false},
               {"set RIT", false},
               {"get RIT", false},
               {"set XIT", false},
               {"get XIT", false},
               {"set CTCSS", false},
               {"get CTCSS", false},
               {"set DCS", false},
               {"get DCS", false},
               {"set CTCSS Squelch", false},
               {"get CTCSS Squelch", false},
               {"set DCS Squelch", false},
               {"get DCS Squelch", false},
               {"set Power Stat", false},
               {"get Power Stat", true},
               {"Reset", false},
               {"get Ant", false},
               {"set Ant", false},
               {"set Transceive", false},
               {"get Transceive", false},
               {"set Func", false},
               {"get Func", false},
               {"set Level", false},
               {"get Level", readLevelBits(caps) != 0},
               {"set Param", false},
               {"get Param", false},
               {"send DTMF", false},
               {"recv DTMF", false},
               {"send Morse", false},
               {"send Voice", false},
               {"decode Events", false},
               {"set Bank", false},
               {"set Mem", false},
               {"get Mem", false},
               {"set Channel", false},
               {"get Channel", false},
               {"ctl Mem/VFO", false},
               {"Scan", false},
               {"get Info", true},
               {"get power2mW", false},
               {"get mW2power", false}};
    for (const auto& c : can) out += QByteArray("Can ") + c.what + ":\t" + (c.can ? "Y" : "N") + '\n';
    out += "\nOverall backend warnings: 0\n";
    return out;
}

RigctlSession::RigctlSession(RigBackend& backend, QString serverName, bool rawCommands, bool readOnly)
    : rig_(backend), serverName_(std::move(serverName)), rawCommands_(rawCommands), readOnly_(readOnly) {}

QByteArray RigctlSession::loginSecret(const QString& password) {
    return QCryptographicHash::hash(password.toUtf8(), QCryptographicHash::Md5).toHex();
}

RigctlSession::Result RigctlSession::refuseLogin() {
    if (++loginFailures_ >= kMaxLoginFailures) {
        closing_ = true;
        closeReason_ = QStringLiteral("dropped: %1 commands without the password").arg(loginFailures_);
    }
    return {RigctlCode::Security, {}};
}

RigctlSession::Result RigctlSession::set(bool queued) const {
    return {queued ? RigctlCode::Ok : RigctlCode::Rejected, {}};
}

std::optional<int> RigctlSession::target(const RigctlRequest& r) const {
    if (r.vfo.isEmpty() || equalsNoCase(r.vfo, "currVFO") || equalsNoCase(r.vfo, "VFO") ||
        equalsNoCase(r.vfo, "RX"))
        return 0;
    if (equalsNoCase(r.vfo, "TX")) return rig_.split() ? 1 : 0;
    const auto vfo = rigctlVfoFromName(r.vfo);
    if (!vfo) return std::nullopt;
    const auto index = [](RigVfo v) { return v == RigVfo::B || v == RigVfo::Sub ? 1 : 0; };
    return index(*vfo) == index(rig_.vfo()) ? 0 : 1;
}

RigctlSession::Result RigctlSession::run(const RigctlRequest& r) {
    using namespace RigctlCode;
    const QList<QByteArray>& a = r.args;
    const RigCaps caps = rig_.caps();
    const Op op = r.command->op;

    // The VFO in front of the arguments, in VFO mode: the one received on (0) or the other (1).
    int vfo = 0;
    if (r.command->vfoArg) {
        const auto t = target(r);
        if (!t) return {listed(kForeignVfos, r.vfo) ? NotAvailable : Invalid, {}};
        vfo = *t;
    }
    const bool otherVfo = vfo == 1;
    bool lockable = false;
    const bool changes = changesRadio(op, &lockable);
    // An unkey is never refused: not by a silent radio, a read-only server or a lock.
    const bool unkey = op == Op::SetPtt && !a.isEmpty() && parseInt(a[0]).value_or(1) == 0;
    const bool asking = !a.isEmpty() && a.back() == "?";
    if (changes && !unkey && !asking && readOnly_) return {Rejected, {}};
    if (caps.radio && !rig_.responding() && !asking) {
        if (readsRadio(op)) return {Timeout, {}};
        if (changes && !unkey) return {IoError, {}};
    }
    if (lockable && !asking && rig_.locked()) return {Ok, {}};  // ignored, as a locked rigctld does
    const int rxMode = rig_.mode();
    auto width = [this](int mode) {
        const int inForce = rig_.passbandHz();
        return QByteArray::number(inForce > 0 ? inForce : rigctlNormalPassband(mode));
    };
    auto modeAndPassband = [&](int mode) {
        // Before the radio has told its mode there is nothing true to say.
        if (mode < 0) return QList<QByteArray>{"None", "0"};
        return QList<QByteArray>{rigctlModeName(mode), width(mode)};
    };
    // A mode token and an optional passband: the program's mode, or an error code as a negative.
    auto parseMode = [&caps](const QByteArray& name, const QByteArray* passbandText, int* passband) {
        *passband = 0;
        if (passbandText) {
            const auto pb = parseInt(*passbandText);
            if (!pb || *pb < -1) return Invalid;
            *passband = *pb;
        }
        const int mode = rigctlModeFromName(name);
        if (mode >= 0) return caps.modes[size_t(mode)] ? mode : NotAvailable;
        return listed(kForeignModes, name) ? NotAvailable : Invalid;
    };
    auto txFrequency = [&]() -> Result {
        // The other VFO only as the program knows it.
        return {Ok, {hz(rig_.txFrequencyHz())}};
    };
    // The transmit mode can only be agreed to: a split frequency takes the receive mode along.
    auto agreeTxMode = [&](int mode) -> Result {
        if (!caps.split) return {NotAvailable, {}};
        return {mode == rxMode ? Ok : NotAvailable, {}};
    };
    auto onOff = [](const QByteArray& text) -> std::optional<bool> {
        const auto v = parseInt(text);
        if (!v || *v < 0 || *v > 1) return std::nullopt;
        return *v == 1;
    };

    switch (op) {
        case Op::GetFreq:
            if (otherVfo) return txFrequency();
            return {Ok, {hz(rig_.frequencyHz())}};
        case Op::SetFreq: {
            const auto f = parseFrequency(a[0]);
            if (!f) return {Invalid, {}};
            if (otherVfo) {
                if (!caps.vfoAB && !caps.mainSub) return {NotAvailable, {}};
                return set(rig_.setTxFrequency(*f));
            }
            return set(rig_.setFrequency(*f));
        }
        case Op::GetMode:
            return {Ok, modeAndPassband(otherVfo ? rig_.txMode() : rxMode)};
        case Op::SetMode: {
            if (a[0] == "?") return {Ok, {modesList(caps)}};
            int passband = 0;
            const int mode = parseMode(a[0], a.size() > 1 ? &a[1] : nullptr, &passband);
            if (mode < 0) return {mode, {}};
            if (otherVfo) return agreeTxMode(mode);
            return set(rig_.setMode(mode, passband));
        }
        case Op::GetVfo:
            return {Ok, {rigctlVfoName(rig_.vfo())}};
        case Op::SetVfo: {
            if (a[0] == "?") return {Ok, {vfoList(caps)}};
            bool current = false;
            const auto v = rigctlVfoFromName(a[0], &current);
            if (!v)
                return {listed(kForeignVfos, a[0]) || equalsNoCase(a[0], "TX") || equalsNoCase(a[0], "RX")
                            ? NotAvailable
                            : Invalid,
                        {}};
            if (current) return {Ok, {}};
            // As Hamlib does: Main and Sub are A and B on a radio with only those, and the other way.
            const bool second = *v == RigVfo::B || *v == RigVfo::Sub;
            if (caps.vfoAB && (*v == RigVfo::A || *v == RigVfo::B || !caps.mainSub))
                return set(rig_.setVfo(second ? RigVfo::B : RigVfo::A));
            if (caps.mainSub) return set(rig_.setVfo(second ? RigVfo::Sub : RigVfo::Main));
            return {NotAvailable, {}};
        }
        case Op::GetPtt:
            if (!caps.ptt) return {NotAvailable, {}};
            return {Ok, {rig_.ptt() ? "1" : "0"}};
        case Op::SetPtt: {
            const auto on = parseInt(a[0]);
            if (!on || *on < 0 || *on > 3) return {Invalid, {}};
            if (!caps.ptt) return {NotAvailable, {}};
            return set(rig_.setPtt(*on != 0, client_));
        }
        case Op::GetSplitVfo: {
            const bool mainSubOnly = caps.mainSub && !caps.vfoAB;
            const bool on = caps.split && rig_.split();
            const RigVfo tx =
                on ? (mainSubOnly ? RigVfo::Sub : RigVfo::B) : (mainSubOnly ? RigVfo::Main : RigVfo::A);
            return {Ok, {on ? "1" : "0", rigctlVfoName(tx)}};
        }
        case Op::SetSplitVfo: {
            const auto on = onOff(a[0]);
            if (!on) return {Invalid, {}};
            // The transmit VFO is whichever the radio's split uses; any token of the protocol will do.
            if (a.size() > 1 && !rigctlVfoFromName(a[1]) && !listed(kForeignVfos, a[1]) &&
                !equalsNoCase(a[1], "TX") && !equalsNoCase(a[1], "RX"))
                return {Invalid, {}};
            if (!caps.split) return {NotAvailable, {}};
            return set(rig_.setSplit(*on));
        }
        case Op::GetSplitFreq:
            return txFrequency();
        case Op::SetSplitFreq: {
            const auto f = parseFrequency(a[0]);
            if (!f) return {Invalid, {}};
            if (!caps.split) return {NotAvailable, {}};
            return set(rig_.setTxFrequency(*f));
        }
        case Op::GetSplitMode:
            return {Ok, modeAndPassband(rig_.txMode())};
        case Op::SetSplitMode: {
            int passband = 0;
            const int mode = parseMode(a[0], a.size() > 1 ? &a[1] : nullptr, &passband);
            if (mode < 0) return {mode, {}};
            return agreeTxMode(mode);
        }
        case Op::GetSplitFreqMode:
            return {Ok, QList<QByteArray>{hz(rig_.txFrequencyHz())} + modeAndPassband(rig_.txMode())};
        case Op::SetSplitFreqMode: {
            const auto f = parseFrequency(a[0]);
            if (!f) return {Invalid, {}};
            int passband = 0;
            const int mode = parseMode(a[1], a.size() > 2 ? &a[2] : nullptr, &passband);
            if (mode < 0) return {mode, {}};
            if (!caps.split) return {NotAvailable, {}};
            if (mode != rxMode) return {NotAvailable, {}};
            return set(rig_.setTxFrequency(*f));
        }
        case Op::GetLevel: {
            const QByteArray& level = a[0];
            if (level == "?") return {Ok, {readLevelNames(caps, false)}};
            if (const auto which = txLevel(level)) {
                if (!caps.levels[size_t(*which)]) return {NotAvailable, {}};
                const auto value = rig_.level(*which);
                // Held until the radio has reported it; a radio that never does times out.
                if (!value) return {RigctlCode::Timeout, {}};
                return {Ok, {QByteArray::number(*value, 'f', 6)}};
            }
            const bool strength = equalsNoCase(level, "STRENGTH"), raw = equalsNoCase(level, "RAWSTR");
            if (strength || raw) {
                if (!caps.meter) return {NotAvailable, {}};
                const double fraction = std::clamp(rig_.meter(), 0.0, 1.0);
                const int value =
                    strength ? rigctlStrength(fraction, rig_.meterLabel()) : int(std::lround(fraction * 255));
                return {Ok, {QByteArray::number(value)}};
            }
            return {listed(kLevels, level) ? NotAvailable : Invalid, {}};
        }
        case Op::SetLevel:
            if (a[0] == "?") return {Ok, {""}};
            if (!parseNumber(a[1])) return {Invalid, {}};
            return {listed(kLevels, a[0]) ? NotAvailable : Invalid, {}};
        case Op::GetFunc:
            if (a[0] == "?") return {Ok, {""}};
            if (equalsNoCase(a[0], "RIT") || equalsNoCase(a[0], "XIT")) return {Ok, {"0"}};
            return {listed(kFuncs, a[0]) ? NotAvailable : Invalid, {}};
        case Op::SetFunc: {
            if (a[0] == "?") return {Ok, {""}};
            const auto on = onOff(a[1]);
            if (!on || !listed(kFuncs, a[0])) return {Invalid, {}};
            // Switching an offset off is what the program has already; on, it can't.
            const bool offset = equalsNoCase(a[0], "RIT") || equalsNoCase(a[0], "XIT");
            return {offset && !*on ? Ok : NotAvailable, {}};
        }
        case Op::GetRit:
        case Op::GetXit:
            return {Ok, {"0"}};
        case Op::SetRit:
        case Op::SetXit: {
            const auto offset = parseInt(a[0]);
            if (!offset) return {Invalid, {}};
            return {*offset == 0 ? Ok : NotAvailable, {}};
        }
        case Op::GetDcd:
            return {Ok, {"0"}};  // no squelch reading: closed
        case Op::GetPowerstat:
            return {Ok, {caps.radio && rig_.responding() ? "1" : "0"}};
        case Op::SetPowerstat: {
            const auto on = parseInt(a[0]);
            if (!on || *on < 0 || *on > 4) return {Invalid, {}};
            // The program can't switch a radio on or off; it can say whether it is already so.
            const bool isOn = caps.radio && rig_.responding();
            return {(*on == 1) == isOn ? Ok : NotAvailable, {}};
        }
        case Op::GetInfo:
            return {
                Ok,
                {serverName_.toUtf8() + ", " + (caps.radio ? caps.name.toUtf8() : QByteArray("no radio"))}};
        case Op::GetRigInfo: {
            const int txMode = rig_.txMode();
            auto line = [&](const char* name, double freq, int mode, bool rx, bool tx) {
                return QByteArray("VFO=") + name + " Freq=" + hz(freq) +
                       " Mode=" + (mode < 0 ? QByteArray("None") : rigctlModeName(mode)) +
                       " Width=" + (mode < 0 ? QByteArray("0") : width(mode)) + " RX=" + (rx ? "1" : "0") +
                       " TX=" + (tx ? "1" : "0") + '\n';
            };
            const bool split = caps.split && rig_.split();
            QByteArray text = line("Main", rig_.frequencyHz(), rxMode, true, !split) +
                              line("Sub", rig_.txFrequencyHz(), txMode, false, split);
            text += QByteArray("Split=") + (split ? "1" : "0") + " SatMode=0\n";
            text += "Rig=" + (caps.radio ? caps.name.toUtf8() : QByteArray("None")) + '\n';
            text += "App=" + serverName_.section(QLatin1Char(' '), 0, 0).toUtf8() + '\n';
            text += "Version=" + serverName_.section(QLatin1Char(' '), 1).toUtf8() + '\n';
            // rigctld closes the block with a check sum of what precedes it, then an empty line.
            text += "CRC=" + hex(qChecksum(text)) + "\n\n";
            return {Ok, {text}};
        }
        case Op::GetVfoInfo: {
            bool current = false;
            const auto v = rigctlVfoFromName(a[0], &current);
            if (!v) return {listed(kForeignVfos, a[0]) ? NotAvailable : Invalid, {}};
            RigctlRequest asked;
            asked.vfo = current ? QByteArray("currVFO") : a[0];
            const bool other = target(asked).value_or(0) == 1;
            const int mode = other ? rig_.txMode() : rxMode;
            const QList<QByteArray> mp = modeAndPassband(mode);
            return {Ok,
                    {hz(other ? rig_.txFrequencyHz() : rig_.frequencyHz()), mp[0], mp[1],
                     caps.split && rig_.split() ? "1" : "0", "0"}};
        }
        case Op::DumpState:
            return {Ok, {rigctlDumpState(caps, serverName_)}};
        case Op::DumpCaps:
            return {Ok, {rigctlDumpCaps(caps)}};
        case Op::StreamCaps:
            return {NotAvailable, {}};  // no audio or spectrum is streamed from here
        case Op::ChkVfo:
            return {Ok, {vfoMode_ ? "1" : "0"}};
        case Op::SetVfoOpt: {
            const auto on = onOff(a[0]);
            if (!on) return {Invalid, {}};
            vfoMode_ = *on;
            return {Ok, {}};
        }
        case Op::GetLockMode:
            return {Ok, {rig_.locked() ? "1" : "0"}};
        case Op::SetLockMode: {
            const auto on = onOff(a[0]);
            if (!on) return {Invalid, {}};
            rig_.setLocked(*on, client_);
            return {Ok, {}};
        }
        case Op::GetClock:
            return {NotAvailable, {}};  // the radio's clock isn't read
        case Op::Power2mW:
        case Op::MW2Power:
            // No radio in the catalogue says its power: nothing to scale by.
            if (!parseNumber(a[0]) || !parseFrequency(a[1])) return {Invalid, {}};
            return {NotAvailable, {}};
        case Op::SendMorse:
        case Op::StopMorse:
        case Op::WaitMorse:
            return {NotAvailable, {}};  // no radio here keys Morse by command
        case Op::SendCmd:
            // A client may put bytes of its own on the radio's line only when the operator allows it.
            if (!rawCommands_) return {NotAvailable, {}};
            return set(rig_.sendRaw(a[0]));
        case Op::Password:
            if (secret_.isEmpty()) return {Ok, {}};  // none asked: a client that has one set still works
            if (a[0].compare(secret_, Qt::CaseInsensitive) == 0) {
                loggedIn_ = true;
                loginFailures_ = 0;
                return {Ok, {}};
            }
            loggedIn_ = false;  // a wrong one takes back an earlier login
            return refuseLogin();
        case Op::Quit:
            closing_ = true;
            closeReason_ = QStringLiteral("quit");
            return {Ok, {}};
        case Op::NotAvailable:
            return {RigctlCode::NotAvailable, {}};
        case Op::NotImplemented:
            return {RigctlCode::NotImplemented, {}};
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
        for (const QByteArray& v : result.values) out += isTextBlock(op) ? v : v + '\n';
        if (!returnsValues(op) || r.command->tail == Tail::Rprt) out += rprt;
        return out;
    }
    // The extended response: the command echoed, "Key: value" records, and RPRT last.
    const char sep = r.separator;
    if (op == Op::ChkVfo) return "ChkVFO: " + result.values.value(0) + '\n';
    if (op == Op::Quit) return rprt;
    QByteArray out = QByteArray(r.command->longName) + ':';
    // In VFO mode rigctld echoes a VFO even for the commands that take none.
    if (vfoMode_) out += ' ' + (r.vfo.isEmpty() ? QByteArray("currVFO") : r.vfo);
    // A secret is never echoed.
    if (op != Op::Password)
        for (const QByteArray& arg : r.args) out += ' ' + arg;
    out += sep;
    if (result.code == RigctlCode::Ok) {
        for (int i = 0; i < result.values.size(); ++i) {
            const char* key = i < int(std::size(r.command->keys)) ? r.command->keys[i] : nullptr;
            if (isTextBlock(op))
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
    // A line read while one waits is answered after it, in order (a server holds the lines back).
    const bool waiting = holding();
    held_ += parseRigctlLine(line, vfoMode_);
    return waiting ? QByteArray() : answerHeld(false);
}

QByteArray RigctlSession::resume(bool force) {
    return answerHeld(force);
}

bool RigctlSession::awaitsLevel(const RigctlRequest& r) {
    // A level the radio reads but hasn't reported yet: asking starts its reads.
    if (r.command->op != Op::GetLevel || r.args.isEmpty()) return false;
    const auto which = txLevel(r.args[0]);
    return which && rig_.caps().levels[size_t(*which)] && !rig_.level(*which);
}

QByteArray RigctlSession::answerHeld(bool force) {
    QByteArray out;
    while (!held_.isEmpty() && !closing_) {
        const RigctlRequest& r = held_.front();
        // What a client reads right after tuning is where the radio went: it may round the number.
        const bool awaitsRadio = r.command && !r.malformed &&
                                 ((r.command->op == Op::GetFreq && target(r).value_or(1) == 0 &&
                                   !rig_.frequencySettled()) ||
                                  awaitsLevel(r));
        if (awaitsRadio && !force) return out;
        force = false;
        if (!r.command)
            out += format(r, {RigctlCode::Protocol, {}});
        else if (!loggedIn_ && !answeredBeforeLogin(r.command->op))
            out += format(r, refuseLogin());
        else if (r.malformed)
            out += format(r, {RigctlCode::Invalid, {}});
        else
            out += format(r, run(r));
        held_.removeFirst();
    }
    if (closing_) held_.clear();
    return out;
}

}  // namespace tv
