#pragma once
// Named filter groups of the radios that publish a group model (core/FilterGroups.h): the three filter
// lists filled with the model's entries, the table of groups edited in the configuration window's grid
// and kept in a file, choosing a group (its three filters go to the radio through the queue), and the
// reverse: filters reported by the radio that make up another group move the group list, and nothing is
// sent back. What the entries are and mean is the radio family's table; this side knows no model.

#include "core/FilterGroups.h"

#include <QString>

namespace tv {

class ComboBox;
class KavModule;
class ModeControl;

class FilterGroups {
  public:
    FilterGroups(KavModule& m, ModeControl& modes);
    FilterGroups(const FilterGroups&) = delete;
    FilterGroups& operator=(const FilterGroups&) = delete;
    // Installs the filter model's extension points, the handlers of the group editor and the shutdown
    // question.
    void connect();

    static QString DefaultFilename() { return QStringLiteral("FilterGroupSettings.txt"); }

    const FilterGroupModel* model() const { return model_; }
    std::vector<FilterGroupRow> rows() const;
    // Changes in the grid that are not in the file yet.
    bool unsaved() const;

    // A radio with a group model was chosen (nullptr: none): the lists, the table (from the stored file
    // or the defaults), the group list and each mode's group.
    void Initialize(const FilterGroupModel* model);
    // The clean slate of a newly chosen radio: no model, the editor hidden.
    void Reset();
    void SetDefaultGroups();
    void AddGroup(const FilterGroupRow& row);
    void LoadFilterGroupData(const QString& path);
    void SaveFilterGroupData(const QString& path);

    // The group's row for the current mode, applied: the three lists and the three filter commands.
    // False, with nothing sent, when the mode has no row of that name.
    bool ApplyGroup(const QString& name);
    // The three lists changed: the first group of the current mode that they make up is shown.
    void MatchGroup();
    // The filters the radio reported with its frequency read.
    void StatusReported(const FilterStatus& status);

    // ---- the group editor ----
    void GridColumnUpdated(int col);
    void GridRowsChanged();
    void SelectGroupFilename();
    void SaveGroupCmdClick();

  private:
    void fillGroupList();
    void refillGroupListKeepingText();
    void fillMemoryLists();
    int commandOf(int list, int index) const;
    ComboBox& filterList(int list);
    QString defaultPath() const;

    KavModule& m_;
    ModeControl& modes_;
    const FilterGroupModel* model_ = nullptr;
    QString EditedGroupName;
    // A group was sent since the radio's last read, for this mode: that read's filters are older.
    bool appliedSinceRead_ = false;
    int appliedMode_ = -1;
};

}  // namespace tv
