#pragma once
// The mode selector and the vendor-neutral shell of filter control: the filter group remembered per
// mode and shown on the mode options, the filter group list, and the filter lists of the filter frame.
// What a group or a list entry means on a given radio is the vendor filter model's business; it plugs
// into the std::function members below.

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace tv {

class Common;
class RadioState;
class SelectedRadio;
class CommandQueue;
struct ControlFlagSet;
class KavMain;
class KavConfig;
struct UpperHooks;
class ComboBox;

class ModeControl {
  public:
    ModeControl(Common& common, RadioState& state, SelectedRadio& radio, CommandQueue& queue,
                UpperHooks& hooks, ControlFlagSet& flags, KavMain& main, KavConfig& config);
    ModeControl(const ModeControl&) = delete;
    ModeControl& operator=(const ModeControl&) = delete;

    // Installs the module's hooks and the handlers of the mode options and the filter lists.
    void connect();

    // The key of a mode into a filter group table: the mode family ("SSB" for LSB and USB ...).
    static QString FilterGroupModeName(int mode);

    void UpdateModeCaption(int mode);
    void UpdateCurrentModeCaptions();
    // After groups were deleted: a mode whose group is no longer listed forgets it.
    void UpdateModeFilters();
    // A Wide/Narrow/Normal group commanded or reported (0: none, which changes nothing).
    void UpdateIcomXcvrFilter(int index);
    // Fills the group list and the per-mode memory of groups for the selected radio.
    void InitializeIcomFilterSettings();
    // A group by name (a report or a click); the radio's mode remembers it.
    void UpdateYaesuXcvrFilter(const QString& groupName);
    // The clean slate before a radio's own filter set-up.
    void InitializeFilterSettings();
    // After the supplier's set-up: the mode captions follow the new radio's groups.
    void ResetModeTables();

    // ---- handlers ----
    void ModeSel_Click(int index);
    void ModeSel_GotFocus(int index);
    void FilterGroupCombo_Click();
    void FilterGroupClick();
    void MainFilter1Click();
    void MainFilter2Click();
    void SubFilterClick();

    // While set, every filter list click returns at once: the decoders and the group logic set lists.
    bool FilterComboUpdating = false;
    // Last selected list indexes; -1 after InitializeFilterSettings.
    int MainFilter1Index = -1, MainFilter2Index = -1, SubFilterIndex = -1;
    int HighCutoffIndex = -1, LowCutoffIndex = -1;

    // ---- extension points of the filter models ----
    // Named groups from a table (operating/FilterGroups): whether the radio has one, applying a group's
    // row for the current mode (called with FilterComboUpdating held; false when the mode has no row),
    // the command value of a list entry (kind 0 first IF, 1 second IF, 2 sub receiver), and finding the
    // group that the three lists now make up.
    std::function<bool()> HasGroupTable;
    std::function<bool(const QString& groupName)> ApplyFilterGroup;
    std::function<int(int kind, int listIndex)> FilterCode;
    std::function<void()> MatchFilterGroup;
    // Parts of the clean slate owned elsewhere: the memory bank's filter column, the group editor.
    std::function<void()> ClearMemoryFilterLists;
    std::function<void()> ResetFilterGroups;
    // The memory bank's filter column offers these groups.
    std::function<void(const QStringList& names)> FillMemoryFilterLists;

  private:
    void focusRule();
    QString captionOf(int mode) const;
    bool groupsShown() const;
    void filterListClick(ComboBox& list, int& lastIndex, int kind);

    Common& common_;
    RadioState& state_;
    SelectedRadio& radio_;
    CommandQueue& queue_;
    UpperHooks& hooks_;
    ControlFlagSet& flags_;
    KavMain& main_;
    KavConfig& config_;
};

}  // namespace tv
