#include "protocols/kenwood/KenwoodPassband.h"

#include "core/XcvrCmd.h"

#include <initializer_list>

namespace tv {

namespace {
QStringList numbers(std::initializer_list<int> values) {
    QStringList out;
    for (int v : values) out << QString::number(v);
    return out;
}
QStringList steps(int from, int to, int step) {
    QStringList out;
    for (int v = from; v <= to; v += step) out << QString::number(v);
    return out;
}
std::vector<int> ascending(int n) {
    std::vector<int> v;
    for (int i = 0; i < n; ++i) v.push_back(i);
    return v;
}

const QStringList kCwWidthsWide = numbers({50, 80, 100, 150, 200, 300, 400, 500, 600, 1000, 2000});
const QStringList kRttyWidths = numbers({250, 500, 1000, 1500});

PassbandLayout layout(bool cuts, bool width, bool shift, const QStringList& widths = {}) {
    return PassbandLayout{true, cuts, width, shift, widths};
}

// Lays the same layout on both modes of a family (LSB and USB, CW and CW-R, RTTY and RTTY-R).
void set(PassbandModel& m, std::initializer_list<int> modes, const PassbandLayout& l) {
    for (int mode : modes) m.layouts[size_t(mode)] = l;
}
}  // namespace

const PassbandModel* TS2000Passband() {
    static const PassbandModel m = [] {
        PassbandModel p;
        p.lowCuts = numbers({0, 50, 100, 200, 300, 400, 500, 600, 700, 800, 900, 1000});
        p.lowCodes = ascending(12);
        p.highCuts = numbers({1400, 1600, 1800, 2000, 2200, 2400, 2600, 2800, 3000, 3400, 4000, 5000});
        p.highCodes = ascending(12);
        p.shifts = steps(400, 1000, 50);
        p.high = p.low = PassbandValueRule{true, 1, false};
        set(p, {ModeLSB, ModeUSB, ModeFM}, layout(true, false, false));
        set(p, {ModeAM}, layout(false, false, false));
        set(p, {ModeCW, ModeCWR}, layout(false, true, true, kCwWidthsWide));
        set(p, {ModeRTTY, ModeRTTYR}, layout(false, true, false, kRttyWidths));
        return p;
    }();
    return &m;
}

const PassbandModel* TS570Passband() {
    static const PassbandModel m = [] {
        PassbandModel p;
        p.lowCuts = QStringList{QStringLiteral("10"), QStringLiteral("50")} + steps(100, 1000, 50);
        p.lowCodes = ascending(21);
        p.highCuts = numbers({1000, 1100, 1200, 1300, 1400, 1500, 1600, 1700, 1800, 2000, 2200, 2400, 2600, 2800,
                              3000, 3200, 3400, 3600, 4000, 4400, 5000});
        // This radio counts its high cut-offs from the top.
        for (int i = 20; i >= 0; --i) p.highCodes.push_back(i);
        p.shifts = steps(-1100, 1100, 100);
        p.high = p.low = PassbandValueRule{true, 1, false};
        set(p, {ModeLSB, ModeUSB}, layout(true, false, true));
        set(p, {ModeAM, ModeFM}, layout(true, false, false));
        set(p, {ModeCW, ModeCWR}, layout(false, true, true, kCwWidthsWide));
        set(p, {ModeRTTY, ModeRTTYR}, layout(false, true, true, kRttyWidths));
        return p;
    }();
    return &m;
}

const PassbandModel* TS870Passband() {
    static const PassbandModel m = [] {
        PassbandModel p;
        p.lowCuts = numbers({0, 50, 100, 200, 300, 400, 500, 600, 800, 1000});
        p.highCuts = numbers({1400, 1600, 1800, 2000, 2200, 2400, 2600, 2800, 3000, 3400, 4600, 6000});
        p.shifts = steps(400, 1000, 50);
        // Its values are the numbers themselves; the low cut and the width go in tens of hertz.
        p.low = PassbandValueRule{false, 10, false};
        p.width = PassbandValueRule{false, 10, false};
        set(p, {ModeLSB, ModeUSB}, layout(true, false, false));
        set(p, {ModeAM}, layout(false, false, false));
        set(p, {ModeCW, ModeCWR}, layout(false, true, true, numbers({50, 100, 200, 400, 800, 1000})));
        set(p, {ModeRTTY, ModeRTTYR}, layout(false, true, false, kRttyWidths));
        set(p, {ModeFM}, layout(false, true, false, numbers({5000, 6000, 8000, 10000, 12000, 14000})));
        return p;
    }();
    return &m;
}

}  // namespace tv
