#include "tools/radiosim/KenwoodRadio.h"

#include <algorithm>
#include <random>

namespace tv::sim {

namespace {

const QByteArray kRefused = QByteArrayLiteral("?;");
// A command that never ends would otherwise hold the buffer forever.
constexpr int kMaxCommand = 64;

bool allDigits(const QByteArray& p) {
    return !p.isEmpty() && std::all_of(p.begin(), p.end(), [](char c) { return c >= '0' && c <= '9'; });
}

QByteArray padded(qint64 value, int width) { return QByteArray::number(value).rightJustified(width, '0'); }

}  // namespace

KenwoodRadio::KenwoodRadio(KenwoodModelSpec model) : model_(std::move(model)) {}

std::optional<KenwoodModelSpec> KenwoodRadio::model(const QString& name) {
    static const KenwoodModelSpec models[] = {
        {.name = QStringLiteral("TS-2000"), .id = "019", .maxHz = 1'300'000'000, .meterFullScale = 30,
         .meterReceiver = true, .cutoffCodes = true, .widthAndShift = true, .powerSetting = true},
        {.name = QStringLiteral("TS-570"), .id = "017", .maxHz = 60'000'000, .meterFullScale = 15, .cutoffCodes = true,
         .widthAndShift = true, .powerSetting = true},
        {.name = QStringLiteral("TS-870"), .id = "015", .maxHz = 30'000'000, .meterFullScale = 30, .widthAndShift = true,
         .powerSetting = true},
        {.name = QStringLiteral("TS-440"), .id = "004", .maxHz = 30'000'000, .meterFullScale = 0, .singleVfoSelect = true},
        // A radio this controller has never heard of.
        {.name = QStringLiteral("TS-990"), .id = "023", .maxHz = 60'000'000, .meterFullScale = 0},
    };
    for (const KenwoodModelSpec& m : models)
        if (m.name.compare(name.trimmed(), Qt::CaseInsensitive) == 0) return m;
    return std::nullopt;
}

QStringList KenwoodRadio::modelNames() {
    return {QStringLiteral("TS-2000"), QStringLiteral("TS-570"), QStringLiteral("TS-870"), QStringLiteral("TS-440"),
            QStringLiteral("TS-990")};
}

int KenwoodRadio::modeDigit(int mode) {
    static const int digits[ModeCount] = {1, 2, 5, 3, 6, 4, 0, 7, 9};
    return mode >= 0 && mode < ModeCount ? digits[mode] : 0;
}

int KenwoodRadio::modeOfDigit(int digit) {
    for (int m = 0; m < ModeCount; ++m)
        if (digit != 0 && modeDigit(m) == digit) return m;
    return -1;
}

void KenwoodRadio::setMeter(int value) { meter_ = std::clamp(value, 0, model_.meterFullScale); }

QByteArray KenwoodRadio::status() const {
    // Positions from 1: frequency 3-13, step 14-18, RIT/XIT offset 19-23, RIT 24, XIT 25, memory
    // channel 26-28, TX 29, mode 30, VFO 31, scan 32, split 33, tone 34, tone number 35-36, offset 37.
    QByteArray s = "IF" + padded(frequency(), 11);
    s += "     ";
    s += "+0000";
    s += "00";
    s += "000";
    s += ptt_ ? '1' : '0';
    s += char('0' + modeDigit(mode()));
    s += char('0' + rx_);
    s += '0';
    s += split() ? '1' : '0';
    s += "0080;";
    return s;
}

QByteArray KenwoodRadio::report() const { return ai_ != 0 && transceive_ && !silent_ ? status() : QByteArray(); }

QByteArray KenwoodRadio::setFrequency(qint64 hz) {
    if (!validHz(hz)) return {};
    vfo_[receiveVfo()].hz = hz;
    return report();
}

QByteArray KenwoodRadio::turnDial(qint64 deltaHz) { return setFrequency(frequency() + deltaHz); }

QByteArray KenwoodRadio::setMode(int mode) {
    if (modeDigit(mode) == 0) return {};
    vfo_[receiveVfo()].mode = mode;
    return report();
}

QByteArray KenwoodRadio::garbage(int n, quint32 seed) {
    std::mt19937 rng(seed);
    QByteArray out;
    while (out.size() < n) {
        const char c = char(rng() % 256);
        if (c != ';') out.append(c);
    }
    return out;
}

QByteArray KenwoodRadio::receive(const QByteArray& bytes) {
    QByteArray out;
    for (char c : bytes) {
        if (c != ';') {
            // Line ends and blanks between commands are the terminal program's, not the radio's.
            if (partial_.isEmpty() && (c == '\r' || c == '\n' || c == ' ')) continue;
            partial_.append(c);
            if (partial_.size() > kMaxCommand) partial_.clear();
            continue;
        }
        const QByteArray command = partial_;
        partial_.clear();
        if (silent_) continue;
        if (rejectNext_) {
            rejectNext_ = false;
            out += kRefused;
            continue;
        }
        out += execute(command);
    }
    return out;
}

QByteArray KenwoodRadio::frequencyCommand(int vfo, const QByteArray& p) {
    const QByteArray letters = vfo ? "FB" : "FA";
    if (p.isEmpty()) return letters + padded(vfo_[vfo].hz, 11) + ';';
    if (p.size() != 11 || !allDigits(p) || !validHz(p.toLongLong())) return kRefused;
    vfo_[vfo].hz = p.toLongLong();
    return {};
}

QByteArray KenwoodRadio::execute(const QByteArray& command) {
    if (command.size() < 2) return kRefused;
    const QByteArray letters = command.left(2).toUpper();
    const QByteArray p = command.mid(2);
    const bool query = p.isEmpty();
    const bool oneDigit = p.size() == 1 && allDigits(p);

    if (letters == "ID" && query) return "ID" + model_.id + ';';
    if (letters == "IF" && query) return status();
    if (letters == "FA") return frequencyCommand(0, p);
    if (letters == "FB") return frequencyCommand(1, p);
    if (letters == "MD") {
        if (query) return "MD" + QByteArray::number(modeDigit(mode())) + ';';
        if (!oneDigit || modeOfDigit(p.toInt()) < 0) return kRefused;
        vfo_[receiveVfo()].mode = modeOfDigit(p.toInt());
        return {};
    }
    if (letters == "AI") {
        if (query) return "AI" + QByteArray::number(ai_) + ';';
        if (!oneDigit || p.toInt() > 2) return kRefused;
        ai_ = p.toInt();
        return {};
    }
    if (letters == "TX" || letters == "RX") {
        // The TS-2000 takes an optional digit (transmit from the data input); the rest only the bare command.
        if (!query && !(oneDigit && letters == "TX")) return kRefused;
        ptt_ = letters == "TX";
        return {};
    }
    if (model_.singleVfoSelect) {
        if (letters == "FN") {
            if (query) return "FN" + QByteArray::number(rx_) + ';';
            if (!oneDigit || p.toInt() > 1) return kRefused;
            rx_ = tx_ = p.toInt();
            return {};
        }
        if (letters == "SP") {
            if (query) return QByteArray("SP") + (singleSplit_ ? '1' : '0') + ';';
            if (!oneDigit || p.toInt() > 1) return kRefused;
            singleSplit_ = p.toInt() == 1;
            return {};
        }
    } else if (letters == "FR" || letters == "FT") {
        int& which = letters == "FR" ? rx_ : tx_;
        if (query) return letters + QByteArray::number(which) + ';';
        if (!oneDigit || p.toInt() > 1) return kRefused;
        which = p.toInt();
        return {};
    }
    if (letters == "PC" && model_.powerSetting) {
        if (query) return "PC" + padded(watts_, 3) + ';';
        if (p.size() != 3 || !allDigits(p) || p.toInt() < 5 || p.toInt() > 100) return kRefused;
        watts_ = p.toInt();
        return {};
    }
    if (letters == "SM" && model_.meterFullScale > 0) {
        if (model_.meterReceiver) {
            // Main receiver 0, sub receiver 1 (never busy here).
            if (!oneDigit || p.toInt() > 1) return kRefused;
            return "SM" + p + padded(p == "0" ? meter_ : 0, 4) + ';';
        }
        if (!query) return kRefused;
        return "SM" + padded(meter_, 4) + ';';
    }
    if ((letters == "SL" || letters == "SH") && model_.cutoffCodes) {
        int& code = letters == "SL" ? low_ : high_;
        if (query) return letters + padded(code, 2) + ';';
        if (p.size() != 2 || !allDigits(p) || p.toInt() > 20) return kRefused;
        code = p.toInt();
        return {};
    }
    if (letters == "FW" && model_.widthAndShift) {
        if (query) return "FW" + padded(width_, 4) + ';';
        if (p.size() != 4 || !allDigits(p)) return kRefused;
        width_ = p.toInt();
        return {};
    }
    if (letters == "IS" && model_.widthAndShift) {
        if (query) {
            const char sign = shift_ < 0 ? '-' : shift_ > 0 ? '+' : ' ';
            return "IS" + QByteArray(1, sign) + padded(std::abs(shift_), 4) + ';';
        }
        // A sign or a blank, then four digits.
        if (p.size() != 5 || !(p[0] == ' ' || p[0] == '+' || p[0] == '-') || !allDigits(p.mid(1))) return kRefused;
        const int v = p.mid(1).toInt();
        if (v > 9999) return kRefused;
        shift_ = p[0] == '-' ? -v : v;
        return {};
    }
    return kRefused;
}

}  // namespace tv::sim
