#include "operating/PassbandLists.h"

#include "core/CommandQueue.h"
#include "core/Hooks.h"
#include "core/RadioState.h"
#include "forms/KavMain.h"
#include "operating/ModeControl.h"
#include "platform/EventLoop.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <QObject>

#include <cmath>

namespace tv {

namespace {
void fill(ComboBox& list, const QStringList& items) {
    list.Clear();
    for (const QString& s : items) list.AddItem(s);
}

// The list's text as a number; a text that isn't one is an error of the handler.
double numberOf(const QString& text) {
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (!ok) throw TvError(kErrTypeMismatch, text);
    return v;
}
}  // namespace

PassbandLists::PassbandLists(Common& common, RadioState& state, CommandQueue& queue, UpperHooks& hooks,
                             KavMain& main, ModeControl& modes)
    : common_(common), state_(state), queue_(queue), hooks_(hooks), main_(main), modes_(modes) {}

void PassbandLists::connect() {
    RadioState& s = state_;
    QObject::connect(&s, &RadioState::passbandModelChosen, &s, [this](const PassbandModel* model) {
        Guard("KavModule.FillKenwoodFilterLists", [&] { FillFilterLists(model); });
    });
    QObject::connect(&s, &RadioState::passbandLayoutDue, &s, [this] {
        Guard("KavModule.UpdateKenwoodFilterSettings", [&] { UpdateFilterSettings(); });
    });
    QObject::connect(&s, &RadioState::passbandTextReported, &s,
                     [this](int list, const QString& text) { MirrorText(list, text); });
    QObject::connect(&s, &RadioState::passbandCodeReported, &s,
                     [this](int list, int code) { MirrorCode(list, code); });
    KavMain& w = main_;
    auto click = [](ComboBox& list, const char* label, std::function<void()> handler) {
        list.Click = [label, handler] { Guard(label, handler); };
    };
    click(w.HighCutoffCombo, "KavMain.HighCutoffCombo_Click", [this] { HighCutoffComboClick(); });
    click(w.LowCutoffCombo, "KavMain.LowCutoffCombo_Click", [this] { LowCutoffComboClick(); });
    click(w.WidthCombo, "KavMain.WidthCombo_Click", [this] { WidthComboClick(); });
    click(w.ShiftCombo, "KavMain.ShiftCombo_Click", [this] { ShiftComboClick(); });
}

void PassbandLists::Reset() {
    LastFilterMode = 65535;
    model_ = nullptr;
}

void PassbandLists::FillFilterLists(const PassbandModel* model) {
    model_ = model;
    hooks_.SetFilterFrameVisibility(false);
    if (!model) return;
    KavMain& w = main_;
    fill(w.LowCutoffCombo, model->lowCuts);
    fill(w.HighCutoffCombo, model->highCuts);
    fill(w.ShiftCombo, model->shifts);
    hooks_.SetFilterFrameVisibility(true);
}

void PassbandLists::UpdateFilterSettings() {
    const int mode = state_.RadioMode;
    if (mode == LastFilterMode) return;
    LastFilterMode = mode;
    if (!model_ || mode < 0 || mode > 9) return;
    const PassbandLayout& l = model_->layouts[size_t(mode)];
    if (!l.known) return;  // WBFM, PKT: the layout stays
    KavMain& w = main_;
    for (Control* c : {static_cast<Control*>(&w.HighCutoffCombo), static_cast<Control*>(&w.HighCutLabel),
                       static_cast<Control*>(&w.LowCutoffCombo), static_cast<Control*>(&w.LowCutLabel)})
        c->setVisible(l.cuts);
    w.WidthCombo.setVisible(l.width);
    w.WidthLabel.setVisible(l.width);
    w.ShiftCombo.setVisible(l.shift);
    w.ShiftLabel.setVisible(l.shift);
    if (!l.widths.isEmpty()) {
        FlagHold hold(modes_.FilterComboUpdating);
        fill(w.WidthCombo, l.widths);
    }
}

void PassbandLists::mirrorText(ComboBox& list, const QString& text) {
    if (list.text() == text) return;
    modes_.FilterComboUpdating = true;
    SetCombo(list, text);
    common_.loop().yield();
    modes_.FilterComboUpdating = false;
}

void PassbandLists::mirrorCode(ComboBox& list, bool high, int code) {
    if (!model_) return;
    const std::vector<int>& codes = high ? model_->highCodes : model_->lowCodes;
    int& last = high ? modes_.HighCutoffIndex : modes_.LowCutoffIndex;
    for (int i = 0; i < list.ListCount() && i < int(codes.size()); ++i) {
        if (codes[size_t(i)] < 0) return;
        if (codes[size_t(i)] != code) continue;
        if (i != last) {
            modes_.FilterComboUpdating = true;
            list.setListIndex(i);
            last = i;
            common_.loop().yield();
            modes_.FilterComboUpdating = false;
        }
        return;
    }
}

void PassbandLists::MirrorText(int list, const QString& text) {
    KavMain& w = main_;
    switch (list) {
        case FilterHighCut:
            mirrorText(w.HighCutoffCombo, text);
            break;
        case FilterLowCut:
            mirrorText(w.LowCutoffCombo, text);
            break;
        case FilterWidth:
            mirrorText(w.WidthCombo, text);
            break;
        case FilterShift:
            mirrorText(w.ShiftCombo, text);
            break;
        default:
            break;
    }
}

void PassbandLists::MirrorCode(int list, int code) {
    KavMain& w = main_;
    if (list == FilterHighCut) mirrorCode(w.HighCutoffCombo, true, code);
    if (list == FilterLowCut) mirrorCode(w.LowCutoffCombo, false, code);
}

void PassbandLists::focusRule() {
    TextBox& f = main_.FreqDisplay;
    if (f.visible()) f.SetFocus();
}

void PassbandLists::send(const ComboBox& list, const PassbandValueRule& rule, const std::vector<int>* codes,
                         int selector) {
    if (rule.none) return;
    if (rule.byCode) {
        const int i = list.listIndex();
        if (!codes || i < 0 || i >= int(codes->size())) throw TvError(kErrSubscript);
        queue_.SetXcvrFilters((*codes)[size_t(i)], selector);
    } else {
        queue_.SetXcvrFilters(int(std::nearbyint(numberOf(list.text()) / rule.divisor)), selector);
    }
}

void PassbandLists::HighCutoffComboClick() {
    if (modes_.FilterComboUpdating) return;
    const ComboBox& list = main_.HighCutoffCombo;
    modes_.HighCutoffIndex = list.listIndex();
    if (model_) send(list, model_->high, &model_->highCodes, FilterHighCut);
    focusRule();
}

void PassbandLists::LowCutoffComboClick() {
    if (modes_.FilterComboUpdating) return;
    const ComboBox& list = main_.LowCutoffCombo;
    modes_.LowCutoffIndex = list.listIndex();
    if (model_) send(list, model_->low, &model_->lowCodes, FilterLowCut);
    focusRule();
}

void PassbandLists::WidthComboClick() {
    if (modes_.FilterComboUpdating) return;
    if (model_) send(main_.WidthCombo, model_->width, nullptr, FilterWidth);
    focusRule();
}

void PassbandLists::ShiftComboClick() {
    if (modes_.FilterComboUpdating) return;
    // Whatever the radio: a shift is its number.
    send(main_.ShiftCombo, PassbandValueRule{}, nullptr, FilterShift);
    focusRule();
}

}  // namespace tv
