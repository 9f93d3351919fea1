#include "tools/radiosim/TenTecRadio.h"

#include <QRandomGenerator>

namespace tv::sim {

namespace {
constexpr char kCR = 13;

// Argonaut V / Jupiter mode numbers (commands take the number as a byte, replies as its digit).
constexpr int kBinaryModes[] = {TenTecRadio::AM, TenTecRadio::USB, TenTecRadio::LSB, TenTecRadio::CW,
                                TenTecRadio::FM};
// Orion mode numbers, the same both ways.
constexpr int kOrionModes[] = {TenTecRadio::USB, TenTecRadio::LSB, TenTecRadio::CW,  TenTecRadio::CWR,
                               TenTecRadio::AM,  TenTecRadio::FM,  TenTecRadio::RTTY};

template <size_t N>
int numberOf(const int (&table)[N], int mode) {
    for (size_t i = 0; i < N; ++i)
        if (table[i] == mode) return int(i);
    return -1;
}
// A mode byte: its value, or its digit character.
template <size_t N>
int modeOfByte(const int (&table)[N], char b) {
    int v = std::uint8_t(b);
    if (v >= '0' && v <= '9') v -= '0';
    return v < int(N) ? table[v] : -1;
}

QByteArray hertzBytes(qint64 hz) {
    QByteArray b;
    for (int shift : {24, 16, 8, 0}) b.append(char(std::uint8_t(quint32(hz) >> shift)));
    return b;
}
}  // namespace

TenTecRadio::TenTecRadio(TenTecModelSpec model) : model_(std::move(model)) {}

std::optional<TenTecModelSpec> TenTecRadio::model(const QString& name) {
    static const TenTecModelSpec models[] = {
        {.name = QStringLiteral("ARGONAUT-V"), .splitCommand = true, .pttCommand = true},
        {.name = QStringLiteral("JUPITER"), .vfoCommand = true},
        {.name = QStringLiteral("ORION"), .orion = true},
    };
    const QString n = name.trimmed().toUpper().replace(QLatin1Char(' '), QLatin1Char('-'));
    for (const auto& m : models)
        if (m.name == n) return m;
    return std::nullopt;
}

QStringList TenTecRadio::modelNames() {
    return {QStringLiteral("ARGONAUT-V"), QStringLiteral("JUPITER"), QStringLiteral("ORION")};
}

QByteArray TenTecRadio::receive(const QByteArray& bytes) {
    if (silent_) return {};
    QByteArray out;
    for (char c : bytes) {
        if (c != kCR || partial_.isEmpty()) {
            if (c != kCR) partial_.append(c);
            continue;
        }
        // A binary frequency may hold a 13: the four bytes after "*A" or "*B" are taken whole.
        if (!model_.orion && partial_.size() >= 2 && partial_[0] == '*' &&
            (partial_[1] == 'A' || partial_[1] == 'B') && partial_.size() < 6) {
            partial_.append(c);
            continue;
        }
        out += command(partial_);
        partial_.clear();
    }
    return out;
}

QByteArray TenTecRadio::refuse(const QByteArray& line) const {
    if (!model_.orion) return QByteArray("Z") + kCR;
    return QByteArray("Z!") + line.mid(1, 2) + kCR;
}

QByteArray TenTecRadio::command(const QByteArray& line) {
    // The refusal waits for a command that sets something: polls keep being answered.
    if (rejectNext_ && line.startsWith('*')) {
        rejectNext_ = false;
        return refuse(line);
    }
    const QByteArray r = model_.orion ? orionCommand(line) : binaryCommand(line);
    return r.isNull() ? refuse(line) : r;
}

QByteArray TenTecRadio::binaryCommand(const QByteArray& l) {
    auto ok = [] { return QByteArray(""); };
    const char vfoLetter = current_ ? 'B' : 'A';
    if (l.startsWith("*A") || l.startsWith("*B")) {
        if (l.size() != 6) return {};
        qint64 hz = 0;
        for (int i = 2; i < 6; ++i) hz = hz * 256 + std::uint8_t(l[i]);
        hz_[l[1] == 'B'] = hz;
        return ok();
    }
    if (l.startsWith("*M") && l.size() == 4) {
        const int a = modeOfByte(kBinaryModes, l[2]), b = modeOfByte(kBinaryModes, l[3]);
        if (a < 0 || b < 0) return {};
        mode_[0] = a, mode_[1] = b;
        return ok();
    }
    if (model_.vfoCommand && (l == "*EVA" || l == "*EVB")) {
        current_ = l[3] == 'B';
        return ok();
    }
    if (model_.splitCommand && (l == "*O1" || l == "*O0")) {
        split_ = l[2] == '1';
        return ok();
    }
    if (model_.pttCommand && (l == "*1" || l == "*0")) {
        ptt_ = l[1] == '1';
        return ok();
    }
    if (l == "?A" || l == "?B") return l.mid(1, 1) + hertzBytes(hz_[l[1] == 'B']) + kCR;
    if (l == "?M") {
        QByteArray r("M");
        for (int m : mode_) r.append(char('0' + std::max(0, numberOf(kBinaryModes, m))));
        return r + kCR;
    }
    if (l == "?S") return QByteArray("S0") + "0123456789ABCDEF"[meter_] + kCR;
    if (l == "?E") return QByteArray("E") + vfoLetter + kCR;
    if (model_.splitCommand && l == "?O") return QByteArray("O") + (split_ ? '1' : '0') + kCR;
    return {};
}

QByteArray TenTecRadio::orionCommand(const QByteArray& l) {
    auto ok = [] { return QByteArray(""); };
    if (l.startsWith("*AF") || l.startsWith("*BF")) {
        // Whole hertz, or MHz with a decimal point.
        const QByteArray text = l.mid(3);
        bool good = false;
        const double v = text.toDouble(&good);
        if (!good || v < 0) return {};
        hz_[l[1] == 'B'] = text.contains('.') ? qRound64(v * 1e6) : qRound64(v);
        return ok();
    }
    if ((l.startsWith("*RMM") || l.startsWith("*RSM")) && l.size() == 5) {
        const int m = modeOfByte(kOrionModes, l[4]);
        if (m < 0) return {};
        mode_[l[2] == 'S'] = m;
        return ok();
    }
    if (l.startsWith("*KV") && l.size() == 6) {
        const QByteArray kv = l.mid(3);
        if (kv != "AAA" && kv != "ABA" && kv != "AAB" && kv != "ABB") return {};
        dual_ = kv[1] == 'B';
        split_ = kv[2] == 'B';
        return ok();
    }
    if (l == "*TK" || l == "*TU") {
        ptt_ = l[2] == 'K';
        return ok();
    }
    if (l == "?AF" || l == "?BF")
        return QByteArray("@") + l.mid(1, 2) + QByteArray::number(hz_[l[1] == 'B']) + kCR;
    if (l == "?RMM" || l == "?RSM")
        return QByteArray("@") + l.mid(1) +
               char('0' + std::max(0, numberOf(kOrionModes, mode_[l[2] == 'S']))) + kCR;
    if (l == "?S") return QByteArray("@SRM") + QByteArray::number(meter_ * 8) + "S0" + kCR;
    if (l == "?KV") return QByteArray("@KVA") + (dual_ ? 'B' : 'A') + (split_ ? 'B' : 'A') + kCR;
    return {};
}

QByteArray TenTecRadio::turnDial(qint64 deltaHz) {
    return setFrequency(hz_[current_] + deltaHz);
}

QByteArray TenTecRadio::setFrequency(qint64 hz) {
    hz_[current_] = std::max<qint64>(0, hz);
    return {};
}

QByteArray TenTecRadio::setMode(int mode) {
    mode_[current_] = mode;
    return {};
}

QByteArray TenTecRadio::garbage(int n, quint32 seed) {
    QRandomGenerator g(seed);
    QByteArray b;
    while (b.size() < n) {
        const char c = char(g.bounded(256));
        if (c != kCR) b.append(c);
    }
    return b;
}

}  // namespace tv::sim
