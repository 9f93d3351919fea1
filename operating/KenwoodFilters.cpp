#include "operating/KenwoodFilters.h"

#include "core/KavModule.h"
#include "forms/KavMain.h"
#include "operating/ModeControl.h"
#include "platform/EventLoop.h"
#include "protocols/Kenwood.h"
#include "services/Common.h"
#include "services/Convert.h"
#include "services/Errors.h"

#include <cmath>

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
void fill(ComboBox& list, const QStringList& items) {
    list.Clear();
    for (const QString& s : items) list.AddItem(s);
}
std::vector<int> ascending(int n) {
    std::vector<int> v;
    for (int i = 0; i < n; ++i) v.push_back(i);
    return v;
}
const QStringList kCwWidthsWide = numbers({50, 80, 100, 150, 200, 300, 400, 500, 600, 1000, 2000});
const QStringList kRttyWidths = numbers({250, 500, 1000, 1500});
}  // namespace

KenwoodFilters::KenwoodFilters(KavModule& m, KenwoodProtocol& kenwood, ModeControl& modes)
    : m_(m), kenwood_(kenwood), modes_(modes) {}

void KenwoodFilters::connect() {
    kenwood_.onFillFilterLists = [this](const QString& model) {
        Guard("KavModule.FillKenwoodFilterLists", [&] { FillFilterLists(model); });
    };
    kenwood_.onModeReported = [this] {
        Guard("KavModule.UpdateKenwoodFilterSettings", [&] { UpdateKenwoodFilterSettings(); });
    };
    kenwood_.onFilterReply = [this](const QByteArray& letters) {
        Guard("KavModule.DecodeKenwoodMessage", [&] { MirrorReply(letters); });
    };
    // A newly chosen radio lays its controls out afresh at its first mode report.
    auto previous = m_.hooks.ResetModeTables;
    m_.hooks.ResetModeTables = [this, previous] {
        LastFilterMode = 65535;
        if (previous) previous();
    };
}

void KenwoodFilters::FillFilterLists(const QString& model) {
    KavMain& w = m_.main();
    if (model == QLatin1String("TS2000")) {
        fill(w.LowCutoffCombo, numbers({0, 50, 100, 200, 300, 400, 500, 600, 700, 800, 900, 1000}));
        modes_.LowCutoffCodes = ascending(12);
        fill(w.HighCutoffCombo, numbers({1400, 1600, 1800, 2000, 2200, 2400, 2600, 2800, 3000, 3400, 4000, 5000}));
        modes_.HighCutoffCodes = ascending(12);
        fill(w.ShiftCombo, steps(400, 1000, 50));
    } else if (model == QLatin1String("TS570")) {
        fill(w.LowCutoffCombo, QStringList{QStringLiteral("10"), QStringLiteral("50")} + steps(100, 1000, 50));
        modes_.LowCutoffCodes = ascending(21);
        fill(w.HighCutoffCombo, numbers({1000, 1100, 1200, 1300, 1400, 1500, 1600, 1700, 1800, 2000, 2200, 2400,
                                         2600, 2800, 3000, 3200, 3400, 3600, 4000, 4400, 5000}));
        // This radio counts its high cut-offs from the top.
        modes_.HighCutoffCodes.clear();
        for (int i = 20; i >= 0; --i) modes_.HighCutoffCodes.push_back(i);
        fill(w.ShiftCombo, steps(-1100, 1100, 100));
    } else if (model == QLatin1String("TS870")) {
        fill(w.LowCutoffCombo, numbers({0, 50, 100, 200, 300, 400, 500, 600, 800, 1000}));
        fill(w.HighCutoffCombo, numbers({1400, 1600, 1800, 2000, 2200, 2400, 2600, 2800, 3000, 3400, 4600, 6000}));
        fill(w.ShiftCombo, steps(400, 1000, 50));
        modes_.LowCutoffCodes.clear();
        modes_.HighCutoffCodes.clear();
    }
}

void KenwoodFilters::UpdateKenwoodFilterSettings() {
    const int mode = m_.RadioMode;
    if (mode == LastFilterMode) return;
    LastFilterMode = mode;
    const QString& model = m_.KenwoodModelName;
    struct Layout {
        bool cut, width, shift;
        const QStringList* widths;
    };
    const Layout none{false, false, false, nullptr};
    Layout l{};
    bool known = true;
    const bool ssb = mode == ModeLSB || mode == ModeUSB;
    const bool cw = mode == ModeCW || mode == ModeCWR;
    const bool rtty = mode == ModeRTTY || mode == ModeRTTYR;
    static const QStringList ts870Cw = numbers({50, 100, 200, 400, 800, 1000});
    static const QStringList ts870Fm = numbers({5000, 6000, 8000, 10000, 12000, 14000});
    if (model == QLatin1String("TS870")) {
        if (ssb) l = {true, false, false, nullptr};
        else if (mode == ModeAM) l = none;
        else if (cw) l = {false, true, true, &ts870Cw};
        else if (rtty) l = {false, true, false, &kRttyWidths};
        else if (mode == ModeFM) l = {false, true, false, &ts870Fm};
        else known = false;
    } else if (model == QLatin1String("TS2000")) {
        if (ssb || mode == ModeFM) l = {true, false, false, nullptr};
        else if (mode == ModeAM) l = none;
        else if (cw) l = {false, true, true, &kCwWidthsWide};
        else if (rtty) l = {false, true, false, &kRttyWidths};
        else known = false;
    } else if (model == QLatin1String("TS570")) {
        if (ssb) l = {true, false, true, nullptr};
        else if (mode == ModeAM || mode == ModeFM) l = {true, false, false, nullptr};
        else if (cw) l = {false, true, true, &kCwWidthsWide};
        else if (rtty) l = {false, true, true, &kRttyWidths};
        else known = false;
    } else {
        return;
    }
    if (!known) return;  // WBFM, PKT: the layout stays
    KavMain& w = m_.main();
    for (Control* c : {static_cast<Control*>(&w.HighCutoffCombo), static_cast<Control*>(&w.HighCutLabel),
                       static_cast<Control*>(&w.LowCutoffCombo), static_cast<Control*>(&w.LowCutLabel)})
        c->setVisible(l.cut);
    w.WidthCombo.setVisible(l.width);
    w.WidthLabel.setVisible(l.width);
    w.ShiftCombo.setVisible(l.shift);
    w.ShiftLabel.setVisible(l.shift);
    if (l.widths) {
        modes_.FilterComboUpdating = true;
        fill(w.WidthCombo, *l.widths);
        modes_.FilterComboUpdating = false;
    }
}

QString KenwoodFilters::field(int from, int to) const {
    QString s;
    for (int i = from; i <= to && i <= m_.RcvCount; ++i) s += QLatin1Char(char(m_.RcvBuffer[size_t(i)]));
    return s;
}

void KenwoodFilters::mirrorText(ComboBox& list, const QString& text) {
    if (list.text() == text) return;
    modes_.FilterComboUpdating = true;
    SetCombo(list, text);
    m_.loop().yield();
    modes_.FilterComboUpdating = false;
}

void KenwoodFilters::mirrorCode(ComboBox& list, bool high, int code) {
    const std::vector<int>& codes = high ? modes_.HighCutoffCodes : modes_.LowCutoffCodes;
    int& last = high ? modes_.HighCutoffIndex : modes_.LowCutoffIndex;
    for (int i = 0; i < list.ListCount() && i < int(codes.size()); ++i) {
        if (codes[size_t(i)] < 0) return;
        if (codes[size_t(i)] != code) continue;
        if (i != last) {
            modes_.FilterComboUpdating = true;
            list.setListIndex(i);
            last = i;
            m_.loop().yield();
            modes_.FilterComboUpdating = false;
        }
        return;
    }
}

void KenwoodFilters::MirrorReply(const QByteArray& letters) {
    const QString& model = m_.KenwoodModelName;
    const int mode = m_.RadioMode;
    KavMain& w = m_.main();
    const bool ssb = mode == ModeLSB || mode == ModeUSB;
    auto number = [](const QString& t) { return CLng(t); };  // raises on text that isn't a number
    if (letters == "FW") {
        const int v = number(field(3, 6));
        if (model == QLatin1String("TS2000") || model == QLatin1String("TS570")) {
            mirrorText(w.WidthCombo, QString::number(v));
        } else if (model == QLatin1String("TS870")) {
            const QString t = QString::number(v * 10);
            if (ssb) {
                m_.common().DebugLog(QStringLiteral("FW SSB: ") + t);
                mirrorText(w.LowCutoffCombo, t);
            } else if (mode == ModeCW || mode == ModeRTTY || mode == ModeFM || mode == ModeCWR || mode == ModeRTTYR) {
                m_.common().DebugLog(QStringLiteral("FW CW/RTTY/FM: ") + t);
                mirrorText(w.WidthCombo, t);
            }
        }
    } else if (letters == "IS") {
        if (model == QLatin1String("TS2000")) {
            mirrorText(w.ShiftCombo, QString::number(number(field(4, 7))));
        } else if (model == QLatin1String("TS870")) {
            const QString t = QString::number(number(field(4, 7)));
            m_.common().DebugLog(QStringLiteral("IS freq: ") + t);
            if (ssb)
                mirrorText(w.HighCutoffCombo, t);
            else if (mode == ModeCW || mode == ModeCWR)
                mirrorText(w.ShiftCombo, t);
        } else if (model == QLatin1String("TS570") && m_.RcvCount >= 8) {
            // The radio reports finer steps than the list: round to the nearest hundred, away from zero.
            const int n = number(field(3, 7));
            const int rounded = (n >= 0 ? (n + 50) / 100 : (n - 50) / 100) * 100;
            m_.common().DebugLog(QStringLiteral("TS570S rounded IS argument: ") + QString::number(rounded));
            mirrorText(w.ShiftCombo, QString::number(rounded));
        }
    } else if (letters == "SL" || letters == "SH") {
        if (model != QLatin1String("TS2000") && !(model == QLatin1String("TS570") && m_.RcvCount >= 5)) return;
        const int code = number(field(3, 4));
        if (letters == "SH")
            mirrorCode(w.HighCutoffCombo, true, code);
        else
            mirrorCode(w.LowCutoffCombo, false, code);
    }
}

}  // namespace tv
