#include "operating/ModeControl.h"

#include "core/CommandQueue.h"
#include "core/ControlFlags.h"
#include "core/Hooks.h"
#include "core/RadioState.h"
#include "core/SelectedRadio.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "platform/EventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <cmath>

namespace tv {

namespace {
const QString kGeneralSection = QStringLiteral("General");

QString modeFilterKey(int mode) {
    return QStringLiteral("ModeFilter%1").arg(mode);
}
}  // namespace

ModeControl::ModeControl(Common& common, RadioState& state, SelectedRadio& radio, CommandQueue& queue,
                         UpperHooks& hooks, ControlFlagSet& flags, KavMain& main, KavConfig& config)
    : common_(common),
      state_(state),
      radio_(radio),
      queue_(queue),
      hooks_(hooks),
      flags_(flags),
      main_(main),
      config_(config) {}

void ModeControl::connect() {
    KavMain& w = main_;
    hooks_.InitializeFilterSettings = [this] { InitializeFilterSettings(); };
    hooks_.InitializeIcomFilterSettings = [this] { InitializeIcomFilterSettings(); };
    RadioState& s = state_;
    QObject::connect(&s, &RadioState::modeReported, &s, [this](int mode) {
        // Every mode reply repeats the mode: the caption is composed only when it would change.
        static constexpr QLatin1String prefix("Mode: ");
        const QString name = ModeName(mode);
        const QString& shown = main_.ModeFrame.caption();
        if (shown.size() == prefix.size() + name.size() && shown.startsWith(prefix) && shown.endsWith(name))
            return;
        main_.ModeFrame.setCaption(prefix + name);
    });
    QObject::connect(&s, &RadioState::modeChanged, &s, [this](int mode) {
        // The option's click handler sees the flag and doesn't send the report back to the radio.
        flags_.SetControlFlag(FlagModeSel, true);
        main_.ModeSel[mode].setValue(true);
        common_.loop().yield();
        flags_.SetControlFlag(FlagModeSel, false);
    });
    QObject::connect(&s, &RadioState::filterGroupReported, &s,
                     [this](int group) { UpdateIcomXcvrFilter(group); });
    QObject::connect(&s, &RadioState::identified, &s, [this](const RadioIdentity& who) {
        if (!who.reverseModes) return;
        main_.ModeSel[ModeCWR].setVisible(true);
        main_.ModeSel[ModeRTTYR].setVisible(true);
    });
    for (int i = w.ModeSel.lbound(); i <= w.ModeSel.ubound(); ++i) {
        w.ModeSel[i].Click = [this, i] { Guard("KavMain.ModeSel_Click", [&] { ModeSel_Click(i); }); };
        w.ModeSel[i].GotFocus = [this, i] {
            Guard("KavMain.ModeSel_GotFocus", [&] { ModeSel_GotFocus(i); });
        };
    }
    auto click = [this](ComboBox& list, const char* label, void (ModeControl::*handler)()) {
        list.Click = [this, label, handler] { Guard(label, [&] { (this->*handler)(); }); };
    };
    click(w.FilterGroupCombo, "KavMain.FilterGroupCombo_Click", &ModeControl::FilterGroupCombo_Click);
    click(w.MainFilter1Combo, "KavMain.MainFilter1Combo_Click", &ModeControl::MainFilter1Click);
    click(w.MainFilter2Combo, "KavMain.MainFilter2Combo_Click", &ModeControl::MainFilter2Click);
    click(w.SubFilterCombo, "KavMain.SubFilterCombo_Click", &ModeControl::SubFilterClick);
    config_.ModeFiltersEnabledCheck.Click = [this] {
        Guard("KavConfig.ModeFiltersEnabledCheck_Click", [this] { UpdateCurrentModeCaptions(); });
    };
}

QString ModeControl::FilterGroupModeName(int mode) {
    // The same families as the log's mode names today; a separate function because the group tables
    // and the log are read by different parties and may part ways.
    return LogModeName(mode);
}

void ModeControl::focusRule() {
    TextBox& f = main_.FreqDisplay;
    if (f.visible()) f.SetFocus();
}

bool ModeControl::groupsShown() const {
    const RadioInfo* r = radio_.info();
    return r && r->filterGroups && config_.ModeFiltersEnabledCheck.checked();
}

QString ModeControl::captionOf(int mode) const {
    if (!groupsShown()) return ModeName(mode);
    return ModeName(mode) + QStringLiteral(" (") + state_.ModeFilters[size_t(mode)] + QStringLiteral(")");
}

void ModeControl::UpdateCurrentModeCaptions() {
    KavMain& w = main_;
    w.ModeFrame.setCaption(groupsShown() ? QStringLiteral("Mode (Filter Group)") : QStringLiteral("Mode"));
    for (int i = 0; i <= 9; ++i) w.ModeSel[i].setCaption(captionOf(i));
}

void ModeControl::UpdateModeCaption(int mode) {
    if (mode < 0 || mode > 9) return;
    main_.ModeSel[mode].setCaption(captionOf(mode));
}

void ModeControl::UpdateModeFilters() {
    for (int i = 0; i <= 9; ++i)
        if (SearchCombo(main_.FilterGroupCombo, state_.ModeFilters[size_t(i)]) == -1)
            state_.ModeFilters[size_t(i)].clear();
    UpdateCurrentModeCaptions();
}

void ModeControl::UpdateYaesuXcvrFilter(const QString& groupName) {
    const int mode = state_.RadioMode;
    if (mode < 0 || mode >= ModeUnknown) return;
    common_.settings().SaveSetting(kGeneralSection, modeFilterKey(mode), groupName);
    state_.ModeFilters[size_t(mode)] = groupName;
    UpdateModeCaption(mode);
    ComboBox& list = main_.FilterGroupCombo;
    flags_.SetControlFlag(FlagFilterGroupList, true);
    if (!SetCombo(list, groupName) && !SetCombo(list, QString())) list.setListIndex(-1);
    common_.loop().yield();
    flags_.SetControlFlag(FlagFilterGroupList, false);
}

void ModeControl::InitializeFilterSettings() {
    KavMain& w = main_;
    // Every mode starts on its Wide group.
    for (int i = 0; i <= 9; ++i) state_.ModeFilters[size_t(i)] = QStringLiteral("Wide");
    // The memories' filter lists follow.
    if (ClearMemoryFilterLists) ClearMemoryFilterLists();
    // Hide the filter lists and labels.
    for (Control* c : {static_cast<Control*>(&w.MainFilter1Combo), static_cast<Control*>(&w.MainFilter1Label),
                       static_cast<Control*>(&w.MainFilter2Combo), static_cast<Control*>(&w.MainFilter2Label),
                       static_cast<Control*>(&w.SubFilterCombo), static_cast<Control*>(&w.SubFilterLabel),
                       static_cast<Control*>(&w.HighCutoffCombo), static_cast<Control*>(&w.HighCutLabel),
                       static_cast<Control*>(&w.LowCutoffCombo), static_cast<Control*>(&w.LowCutLabel),
                       static_cast<Control*>(&w.WidthCombo), static_cast<Control*>(&w.WidthLabel),
                       static_cast<Control*>(&w.ShiftCombo), static_cast<Control*>(&w.ShiftLabel)})
        c->setVisible(false);
    // Hide the filter frame; the groups go back to their defaults.
    hooks_.SetFilterFrameVisibility(false);
    if (ResetFilterGroups) ResetFilterGroups();
    // Empty the filter lists.
    w.MainFilter1Combo.Clear();
    w.MainFilter2Combo.Clear();
    w.SubFilterCombo.Clear();
    MainFilter1Index = MainFilter2Index = SubFilterIndex = -1;
    HighCutoffIndex = LowCutoffIndex = -1;
}

void ModeControl::ResetModeTables() {
    UpdateCurrentModeCaptions();
}

void ModeControl::ModeSel_Click(int index) {
    // Consuming: the report that checked this option must not go back to the radio.
    if (flags_.ControlFlag(FlagModeSel)) {
        flags_.SetControlFlag(FlagModeSel, false);
        return;
    }
    queue_.SetXcvrMode(index);
    focusRule();
}

void ModeControl::ModeSel_GotFocus(int index) {
    // Only the checked option gives the focus back; arrow keys between options must still work.
    if (main_.ModeSel[index].value()) focusRule();
}

void ModeControl::FilterGroupCombo_Click() {
    if (flags_.ControlFlag(FlagFilterGroupList)) return;
    FilterGroupClick();
    focusRule();
}

void ModeControl::FilterGroupClick() {
    if (FilterComboUpdating || radio_.RadioIndex < 0) return;
    if (radio_.traits().filterGroupsInModeCommands) {
        queue_.SetXcvrFilterGroup(IcomFilterGroupIndex(main_.FilterGroupCombo.text()));
    } else {
        if (!ApplyFilterGroup || !(HasGroupTable && HasGroupTable())) return;
        const QString selection = main_.FilterGroupCombo.text();
        if (selection.isEmpty()) return;
        {
            FlagHold hold(FilterComboUpdating);
            ApplyFilterGroup(selection);
        }
        // A name with no row for this mode sends nothing, and is still remembered for the mode.
        UpdateYaesuXcvrFilter(selection);
    }
}

void ModeControl::filterListClick(ComboBox& list, int& lastIndex, int kind) {
    if (FilterComboUpdating) return;
    const int index = list.listIndex();
    if (index != lastIndex) {
        lastIndex = index;
        if (FilterCode) queue_.SetXcvrFilters(FilterCode(kind, index), kind);
        if (MatchFilterGroup) MatchFilterGroup();
    }
    focusRule();
}

void ModeControl::MainFilter1Click() {
    filterListClick(main_.MainFilter1Combo, MainFilter1Index, 0);
}
void ModeControl::MainFilter2Click() {
    filterListClick(main_.MainFilter2Combo, MainFilter2Index, 1);
}
void ModeControl::SubFilterClick() {
    filterListClick(main_.SubFilterCombo, SubFilterIndex, 2);
}

void ModeControl::UpdateIcomXcvrFilter(int index) {
    const int mode = state_.RadioMode;
    if (!(index > 0 && index < 4) || mode < 0 || mode >= 10) return;
    const QString name = FilterGroupName(index);
    // Each mode reply repeats the group: when the state, the store and the list already hold it,
    // there is nothing to save, show or let through.
    ComboBox& shown = main_.FilterGroupCombo;
    if (state_.RadioFilterGroup == index && state_.ModeFilters[size_t(mode)] == name &&
        (shown.text() == name || (SearchCombo(shown, name) == -1 && shown.listIndex() == -1)))
        return;
    state_.RadioFilterGroup = index;
    common_.settings().SaveSetting(kGeneralSection, modeFilterKey(mode), name);
    state_.ModeFilters[size_t(mode)] = name;
    UpdateModeCaption(mode);
    ComboBox& list = main_.FilterGroupCombo;
    flags_.SetControlFlag(FlagFilterGroupList, true);
    if (!SetCombo(list, name)) list.setListIndex(-1);
    common_.loop().yield();
    flags_.SetControlFlag(FlagFilterGroupList, false);
}

void ModeControl::InitializeIcomFilterSettings() {
    const RadioInfo* r = radio_.info();
    if (!r) return;
    ComboBox& list = main_.FilterGroupCombo;
    if (r->filterGroups) {
        list.Clear();
        list.AddItem(QStringLiteral("Wide"));
        list.AddItem(QStringLiteral("Narrow"));
        if (r->filter0) list.AddItem(QStringLiteral("Normal"));
        list.setVisible(true);
        main_.FilterGroupLabel.setVisible(true);
        // The list lives in the filter frame, which the clean slate of a new radio hid.
        hooks_.SetFilterFrameVisibility(true);
        const QString restore = common_.settings().GetSetting(
            kGeneralSection, QStringLiteral("RestoreModeFilter"), QStringLiteral("1"));
        config_.ModeFiltersEnabledCheck.setChecked(restore.trimmed() == QLatin1String("1"));
    }
    for (int mode = 0; mode < 10; ++mode) {
        int group = 1;
        if (r->filterGroups) {
            const QString key = modeFilterKey(mode);
            group = IcomFilterGroupIndex(
                common_.settings().GetSetting(kGeneralSection, key, QStringLiteral("Wide")));
            // The stored name is put right as it was meant ("normal" becomes "Normal") before the radio
            // decides what it can do with it: "Normal" exists only with the third filter position.
            common_.settings().SaveSetting(kGeneralSection, key, FilterGroupName(group));
            if (group == 0 || (group == 3 && !r->filter0)) group = 1;
        }
        state_.ModeFilters[size_t(mode)] = FilterGroupName(group);
    }
    QStringList names = {QStringLiteral("Wide"), QStringLiteral("Narrow")};
    if (r->filter0) names << QStringLiteral("Normal");
    if (FillMemoryFilterLists) FillMemoryFilterLists(names);
}

}  // namespace tv
