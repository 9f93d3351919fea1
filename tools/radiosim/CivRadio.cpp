#include "tools/radiosim/CivRadio.h"

#include <algorithm>
#include <random>

namespace tv::sim {

namespace {

const char* const kModeNames[] = {"LSB", "USB", "AM", "CW", "RTTY", "FM", "WBFM", "CW-R", "RTTY-R"};

// A frame that never ends would otherwise hold the buffer forever; real radios drop it too.
constexpr int kMaxFrame = 64;

QByteArray bytesOf(std::initializer_list<uint8_t> list) {
    QByteArray b;
    for (uint8_t v : list) b.append(char(v));
    return b;
}

uint8_t at(const QByteArray& b, int i) { return uint8_t(b.at(i)); }

bool carriesData(int mode) {
    return mode == CivRadio::LSB || mode == CivRadio::USB || mode == CivRadio::AM || mode == CivRadio::FM;
}

}  // namespace

CivRadio::CivRadio(CivModel model) : model_(std::move(model)) {}

std::optional<CivModel> CivRadio::model(const QString& name) {
    static const CivModel models[] = {
        {.name = QStringLiteral("IC-7300"), .address = 0x94, .hasMeter = true, .hasDataMode = true, .hasTxLevels = true},
        {.name = QStringLiteral("IC-756PRO"), .address = 0x5C, .hasMeter = true},
        {.name = QStringLiteral("IC-706MKIIG"), .address = 0x58},
        {.name = QStringLiteral("IC-735"), .address = 0x04, .filterByte = false, .shortFreq = true},
        {.name = QStringLiteral("IC-775"), .address = 0x46},
        // TenTec's Omni VI speaks CI-V at its own address.
        {.name = QStringLiteral("OMNI-VI"), .address = 0x04},
    };
    for (const CivModel& m : models)
        if (m.name.compare(name.trimmed(), Qt::CaseInsensitive) == 0) return m;
    return std::nullopt;
}

QStringList CivRadio::modelNames() {
    return {QStringLiteral("IC-7300"), QStringLiteral("IC-756PRO"), QStringLiteral("IC-706MKIIG"), QStringLiteral("OMNI-VI"),
            QStringLiteral("IC-735"), QStringLiteral("IC-775")};
}

int CivRadio::modeIndex(const QString& name) {
    const QString wanted = name.trimmed().toUpper().remove(QLatin1Char('-'));
    for (int i = 0; i < ModeCount; ++i)
        if (QString::fromLatin1(kModeNames[i]).remove(QLatin1Char('-')) == wanted) return i;
    return -1;
}

QString CivRadio::modeName(int mode) {
    return mode >= 0 && mode < ModeCount ? QString::fromLatin1(kModeNames[mode]) : QStringLiteral("?");
}

QByteArray CivRadio::toBcd(qint64 value, int bytes) {
    QByteArray out;
    value = std::max<qint64>(value, 0);
    for (int i = 0; i < bytes; ++i) {
        const int two = int(value % 100);
        out.append(char(((two / 10) << 4) | (two % 10)));
        value /= 100;
    }
    return out;
}

std::optional<qint64> CivRadio::fromBcd(const QByteArray& bytes) {
    qint64 value = 0;
    for (int i = bytes.size() - 1; i >= 0; --i) {
        const int hi = at(bytes, i) >> 4, lo = at(bytes, i) & 0x0F;
        if (hi > 9 || lo > 9) return std::nullopt;
        value = value * 100 + hi * 10 + lo;
    }
    return value;
}

void CivRadio::setMeter(int value) { meter_ = std::clamp(value, 0, 255); }

qint64 CivRadio::maxFrequency() const { return model_.shortFreq ? 99'999'999LL : 9'999'999'999LL; }

QByteArray CivRadio::reply(uint8_t to, uint8_t cmd, const QByteArray& data) const {
    QByteArray f = bytesOf({kPreamble, kPreamble, to, model_.address, cmd});
    f.append(data);
    f.append(char(kEnd));
    return f;
}

QByteArray CivRadio::frequencyReport() const { return toBcd(frequency(), freqBytes()); }

QByteArray CivRadio::modeReport() const {
    QByteArray d(1, char(mode()));
    if (model_.filterByte) d.append(char(filter()));
    return d;
}

QByteArray CivRadio::receive(const QByteArray& bytes) {
    QByteArray out = bytes;  // the bus hears the controller's own bytes first
    partial_.append(bytes);
    const QByteArray preamble = bytesOf({kPreamble, kPreamble});
    for (;;) {
        const int start = partial_.indexOf(preamble);
        if (start < 0) {
            // Only a lone preamble byte at the end can still grow into a frame.
            partial_ = partial_.endsWith(char(kPreamble)) ? QByteArray(1, char(kPreamble)) : QByteArray();
            break;
        }
        int body = start;
        while (body < partial_.size() && at(partial_, body) == kPreamble) ++body;  // extra FEs are allowed
        const int end = partial_.indexOf(char(kEnd), body);
        // A preamble byte inside a frame means the sender gave up on it and started again.
        const int fe = partial_.indexOf(char(kPreamble), body);
        if (fe >= 0 && (end < 0 || fe < end)) {
            partial_.remove(0, fe);
            continue;
        }
        if (end < 0) {
            partial_.remove(0, start);
            if (partial_.size() > kMaxFrame) partial_.clear();
            break;
        }
        const QByteArray frame = partial_.mid(body, end - body);
        partial_.remove(0, end + 1);
        out.append(handleFrame(frame));
    }
    return out;
}

QByteArray CivRadio::handleFrame(const QByteArray& frame) {
    if (frame.size() < 2) return {};  // no addresses: nobody can tell whose it is
    const uint8_t to = at(frame, 0), from = at(frame, 1);
    if (to != model_.address && to != kBroadcast) return {};
    if (from == model_.address) return {};  // our own report coming round
    if (silent_) return {};
    if (frame.size() < 3) return reply(from, kNg, {});
    if (rejectNext_) {
        rejectNext_ = false;
        return reply(from, kNg, {});
    }
    const QByteArray ok = reply(from, kOk, {}), ng = reply(from, kNg, {});
    const uint8_t cmd = at(frame, 2);
    const QByteArray data = frame.mid(3);
    Vfo& v = vfo_[current_];
    switch (cmd) {
    case 0x03:
        return data.isEmpty() ? reply(from, 0x03, frequencyReport()) : ng;
    case 0x04:
        return data.isEmpty() ? reply(from, 0x04, modeReport()) : ng;
    case 0x05: {
        if (data.size() != 4 && data.size() != 5) return ng;
        const auto hz = fromBcd(data);
        if (!hz || *hz > maxFrequency()) return ng;
        v.hz = *hz;
        return ok;
    }
    case 0x06: {
        const int maxLen = model_.filterByte ? 2 : 1;
        if (data.isEmpty() || data.size() > maxLen || at(data, 0) >= ModeCount) return ng;
        if (data.size() == 2 && (at(data, 1) < 1 || at(data, 1) > 3)) return ng;
        v.mode = at(data, 0);
        if (data.size() == 2) v.filter = at(data, 1);
        v.data = v.data && carriesData(v.mode);
        return ok;
    }
    case 0x1A:
        // 1A 06: read the data mode, or set it with its filter (00 with data off, 01 to 03 with it on).
        if (!model_.hasDataMode || data.isEmpty() || at(data, 0) != 0x06) return ng;
        if (data.size() == 1)
            return reply(from, 0x1A, bytesOf({0x06, uint8_t(v.data ? 1 : 0), uint8_t(v.data ? v.filter : 0)}));
        if (data.size() != 3 || at(data, 1) > 1 || at(data, 2) > 3) return ng;
        if (at(data, 1) == 1 && (!carriesData(v.mode) || at(data, 2) == 0)) return ng;
        v.data = at(data, 1) == 1;
        if (v.data) v.filter = at(data, 2);
        return ok;
    case 0x07:
        if (data.size() != 1) return ng;
        switch (at(data, 0)) {
        case 0x00: case 0xD0: current_ = 0; return ok;
        case 0x01: case 0xD1: current_ = 1; return ok;
        case 0xA0: vfo_[1 - current_] = vfo_[current_]; return ok;  // equalise: the other takes the shown one
        case 0xB0: std::swap(vfo_[0], vfo_[1]); return ok;
        case 0xB1: vfo_[1] = vfo_[0]; return ok;  // sub takes main
        case 0xC0: dualWatch_ = false; return ok;
        case 0xC1: dualWatch_ = true; return ok;
        default: return ng;
        }
    case 0x19:
        // The radio's identity: its default address (other controllers ask it before they poll).
        if (data.size() != 1 || at(data, 0) != 0x00) return ng;
        return reply(from, 0x19, bytesOf({0x00, model_.address}));
    case 0x0F:
        if (data.size() != 1 || at(data, 0) > 1) return ng;
        split_ = at(data, 0) == 1;
        return ok;
    case 0x1C:
        if (data.size() != 2 || at(data, 0) != 0x00 || at(data, 1) > 1) return ng;
        ptt_ = at(data, 1) == 1;
        return ok;
    case 0x14: {
        if (!model_.hasTxLevels || data.isEmpty() || at(data, 0) != 0x0A) return ng;
        if (data.size() == 1) return reply(from, 0x14, levelReport(0x0A, power_));
        const auto value = data.size() == 3 ? fromBcd(data.mid(1).right(1) + data.mid(1, 1)) : std::nullopt;
        if (!value || *value > 255) return ng;
        power_ = int(*value);
        return ok;
    }
    case 0x15:
        if (data.size() != 1) return ng;
        if (model_.hasMeter && at(data, 0) == 0x02) return reply(from, 0x15, levelReport(0x02, meter_));
        // While transmitting into the simulated load: SWR 1.5 (48), ALC at half its zone (60).
        if (model_.hasTxLevels && at(data, 0) == 0x12) return reply(from, 0x15, levelReport(0x12, ptt_ ? 48 : 0));
        if (model_.hasTxLevels && at(data, 0) == 0x13) return reply(from, 0x15, levelReport(0x13, ptt_ ? 60 : 0));
        return ng;
    default:
        return ng;
    }
}

QByteArray CivRadio::levelReport(uint8_t sub, int value) {
    // Hundreds as a plain byte, then tens and units packed: 255 goes out as 02 55.
    return bytesOf({sub, uint8_t(value / 100), uint8_t((((value / 10) % 10) << 4) | (value % 10))});
}

QByteArray CivRadio::setFrequency(qint64 hz) {
    vfo_[current_].hz = std::clamp<qint64>(hz, 0, maxFrequency());
    if (!transceive_ || silent_) return {};
    return reply(kBroadcast, 0x00, frequencyReport());
}

QByteArray CivRadio::turnDial(qint64 deltaHz) { return setFrequency(frequency() + deltaHz); }

QByteArray CivRadio::setMode(int mode, int filter) {
    if (mode < 0 || mode >= ModeCount) return {};
    vfo_[current_].mode = mode;
    vfo_[current_].filter = std::clamp(filter, 1, 3);
    if (!transceive_ || silent_) return {};
    return reply(kBroadcast, 0x01, modeReport());
}

bool CivRadio::setData(bool on) {
    if (!model_.hasDataMode || (on && !carriesData(mode()))) return false;
    vfo_[current_].data = on;
    return true;
}

QByteArray CivRadio::garbage(int n, quint32 seed) {
    std::mt19937 gen(seed);
    std::uniform_int_distribution<int> byte(0x00, kPreamble - 1);
    QByteArray out;
    for (int i = 0; i < n; ++i) out.append(char(byte(gen)));
    return out;
}

}  // namespace tv::sim
