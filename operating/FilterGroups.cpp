#include "operating/FilterGroups.h"

#include "core/KavModule.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "operating/ModeControl.h"
#include "platform/Dialogs.h"
#include "platform/EventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>
#include <QSaveFile>

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");

bool same(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

FilterGroupRow toRow(const GridRow& g) {
    FilterGroupRow r;
    for (size_t c = 0; c < r.size() && c < g.size(); ++c) r[c] = g[c];
    return r;
}

GridRow toGrid(const FilterGroupRow& r) {
    return GridRow(r.begin(), r.end());
}
}  // namespace

FilterGroups::FilterGroups(KavModule& m, ModeControl& modes) : m_(m), modes_(modes) {}

void FilterGroups::connect() {
    modes_.HasGroupTable = [this] { return model_ != nullptr; };
    modes_.ApplyFilterGroup = [this](const QString& name) { return ApplyGroup(name); };
    modes_.FilterCode = [this](int list, int index) { return commandOf(list, index); };
    modes_.MatchFilterGroup = [this] { MatchGroup(); };
    modes_.ResetFilterGroups = [this] { Reset(); };
    RadioState& s = m_.state();
    QObject::connect(&s, &RadioState::filterGroupModelChosen, &s, [this](const FilterGroupModel* model) {
        Guard("KavModule.InitializeYaesuFT1000XFilters", [&] { Initialize(model); });
    });
    QObject::connect(&s, &RadioState::filterStatusReported, &s, [this](const FilterStatus& status) {
        Guard("KavModule.DecodeYaesuFilterStatus", [&] { StatusReported(status); });
    });
    m_.hooks.FilterGroupChangesUnsaved = [this] { return unsaved(); };
    m_.hooks.SaveFilterGroupData = [this] {
        Guard("KavConfig.SaveGroupCmd_Click", [this] { SaveGroupCmdClick(); });
    };

    KavConfig& c = m_.config();
    auto handler = [](const char* label, auto body) { return [label, body] { Guard(label, body); }; };
    Grid& g = c.YaesuFilterGroupGrid;
    g.AfterColUpdate = [this](int col) {
        Guard("KavConfig.YaesuFilterGroupGrid_AfterColUpdate", [&] { GridColumnUpdated(col); });
    };
    g.AfterDelete = handler("KavConfig.YaesuFilterGroupGrid_AfterDelete", [this] { GridRowsChanged(); });
    g.AfterInsert = handler("KavConfig.YaesuFilterGroupGrid_AfterInsert", [this] { GridRowsChanged(); });
    c.GroupFilename.Change = [this] { m_.FilterGroupFilename = m_.config().GroupFilename.text(); };
    c.LoadGroupCmd.Click = handler("KavConfig.LoadGroupCmd_Click",
                                   [this] { LoadFilterGroupData(m_.config().GroupFilename.text()); });
    c.SelectGroupFilenameCmd.Click =
        handler("KavConfig.SelectGroupFilenameCmd_Click", [this] { SelectGroupFilename(); });
    c.SaveGroupCmd.Click = handler("KavConfig.SaveGroupCmd_Click", [this] { SaveGroupCmdClick(); });
    c.ConfigGroupHelpCmd.Click = handler("KavConfig.ConfigGroupHelpCmd_Click", [this] {
        m_.common().InvokeHelp(QStringLiteral("Changing Mode.htm"));
    });
}

std::vector<FilterGroupRow> FilterGroups::rows() const {
    std::vector<FilterGroupRow> out;
    for (const GridRow& g : m_.config().YaesuFilterGroupGrid.rows()) out.push_back(toRow(g));
    return out;
}

bool FilterGroups::unsaved() const {
    return model_ && m_.config().SaveGroupCmd.enabled();
}

ComboBox& FilterGroups::filterList(int list) {
    KavMain& w = m_.main();
    return list == 0 ? w.MainFilter1Combo : list == 1 ? w.MainFilter2Combo : w.SubFilterCombo;
}

int FilterGroups::commandOf(int list, int index) const {
    if (!model_ || list < 0 || list > 2)
        throw TvError(kErrSubscript, QStringLiteral("filter list %1").arg(list));
    const std::vector<FilterChoice>& choices = model_->lists[size_t(list)];
    if (index < 0 || index >= int(choices.size()))
        throw TvError(kErrSubscript, QStringLiteral("filter entry %1").arg(index));
    return choices[size_t(index)].command;
}

QString FilterGroups::defaultPath() const {
    return QDir(m_.common().info().logDir).filePath(DefaultFilename());
}

// ---- bring-up ----

void FilterGroups::Reset() {
    model_ = nullptr;
    KavConfig& c = m_.config();
    c.YaesuFilterGroupFrame.setVisible(false);
    c.GroupFileFrame.setVisible(false);
}

void FilterGroups::Initialize(const FilterGroupModel* model) {
    Reset();
    if (!model) return;
    model_ = model;
    KavMain& w = m_.main();
    KavConfig& c = m_.config();
    Control* labels[3] = {&w.MainFilter1Label, &w.MainFilter2Label, &w.SubFilterLabel};
    for (int l = 0; l < 3; ++l) {
        ComboBox& list = filterList(l);
        list.Clear();
        for (const FilterChoice& choice : model->lists[size_t(l)]) list.AddItem(choice.item);
        list.setVisible(true);
        labels[l]->setVisible(true);
    }
    // The table: the stored file, or the defaults when there is none or it is gone.
    const QString file =
        m_.settings().GetSetting(kGeneral, QStringLiteral("FilterGroupFilename"), QString()).trimmed();
    c.GroupFilename.setText(file);
    if (!file.isEmpty() && QFileInfo::exists(file)) {
        LoadFilterGroupData(file);
    } else {
        if (!file.isEmpty())
            m_.dialogs().messageBox(QStringLiteral("unable to load Filter Group definitions from ") + file +
                                        QStringLiteral(" - using default definitions"),
                                    m_.common().info().title);
        SetDefaultGroups();
    }
    c.YaesuFilterGroupFrame.setCaption(model->frameCaption);
    c.YaesuFilterGroupFrame.setVisible(true);
    c.GroupFileFrame.setVisible(true);

    // The group list and each mode's group, for a radio the catalogue gives filters.
    const RadioInfo* r = m_.radio().info();
    if (!r || !r->filterGroups) return;
    m_.hooks.SetFilterFrameVisibility(true);
    fillGroupList();
    w.FilterGroupCombo.setVisible(true);
    w.FilterGroupLabel.setVisible(true);
    const QString restore =
        m_.settings().GetSetting(kGeneral, QStringLiteral("RestoreModeFilter"), QStringLiteral("1"));
    c.ModeFiltersEnabledCheck.setChecked(restore.trimmed() == QLatin1String("1"));
    for (int mode = 0; mode < 10; ++mode) {
        const QString key = QStringLiteral("ModeFilter%1").arg(mode);
        QString name = m_.settings().GetSetting(kGeneral, key, QStringLiteral("Wide"));
        // Another radio's name ("Normal") that no group here has falls back to the first choice.
        const int at = SearchCombo(w.FilterGroupCombo, name);
        if (at < 0 || name.isEmpty()) {
            name = QStringLiteral("Wide");
            m_.settings().SaveSetting(kGeneral, key, name);
        } else {
            name = w.FilterGroupCombo.List(at);
        }
        m_.state().ModeFilters[size_t(mode)] = name;
    }
    fillMemoryLists();
}

// ---- the table ----

void FilterGroups::SetDefaultGroups() {
    m_.config().YaesuFilterGroupGrid.setRows({});
    if (model_)
        for (const FilterGroupRow& r : model_->defaults) AddGroup(r);
}

void FilterGroups::AddGroup(const FilterGroupRow& row) {
    m_.config().YaesuFilterGroupGrid.appendRow(toGrid(row));
}

void FilterGroups::LoadFilterGroupData(const QString& path) {
    Common& common = m_.common();
    if (path.isEmpty()) {
        m_.dialogs().messageBox(QStringLiteral("no filename specified"), common.info().title);
        return;
    }
    if (!QFileInfo::exists(path)) {
        m_.dialogs().messageBox(QStringLiteral("unable to find ") + path, common.info().title);
        return;
    }
    if (!model_) return;
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        throw TvError(kErrPathFileAccess, path + QStringLiteral(": ") + f.errorString());
    const std::vector<FilterGroupRow> read = ParseFilterGroupText(QString::fromUtf8(f.readAll()));
    std::vector<GridRow> grid;
    for (const FilterGroupRow& r : read) grid.push_back(toGrid(r));
    m_.config().YaesuFilterGroupGrid.setRows(std::move(grid));
    fillGroupList();
    fillMemoryLists();
    MatchGroup();
    m_.config().SaveGroupCmd.setEnabled(false);
}

void FilterGroups::SaveFilterGroupData(const QString& path) {
    if (!model_) return;
    // Written beside and then put in place: a crash leaves the old file or the new one, never half.
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        throw TvError(kErrPathFileAccess, path + QStringLiteral(": ") + f.errorString());
    f.write(FormatFilterGroupText(rows()).toUtf8());
    if (!f.commit()) throw TvError(kErrPathFileAccess, path + QStringLiteral(": ") + f.errorString());
    m_.config().SaveGroupCmd.setEnabled(false);
}

void FilterGroups::fillGroupList() {
    ComboBox& list = m_.main().FilterGroupCombo;
    list.Clear();
    list.AddItem(QString());
    for (const FilterGroupRow& r : rows())
        if (SearchCombo(list, r[GroupName]) < 0) list.AddItem(r[GroupName]);
}

void FilterGroups::refillGroupListKeepingText() {
    ComboBox& list = m_.main().FilterGroupCombo;
    const QString text = list.text();
    fillGroupList();
    m_.SetControlFlag(FlagFilterGroupList, true);
    if (!SetCombo(list, text)) SetCombo(list, QString());
    m_.loop().yield();
    m_.SetControlFlag(FlagFilterGroupList, false);
}

void FilterGroups::fillMemoryLists() {
    QStringList names = m_.main().FilterGroupCombo.items();
    names.removeAll(QString());
    if (modes_.FillMemoryFilterLists) modes_.FillMemoryFilterLists(names);
}

// ---- choosing and following groups ----

bool FilterGroups::ApplyGroup(const QString& name) {
    if (!model_) return false;
    const QString mode = ModeControl::FilterGroupModeName(m_.state().RadioMode);
    for (const FilterGroupRow& r : rows()) {
        if (!same(r[GroupName], name) || !same(r[GroupMode], mode)) continue;
        // Every entry is checked before any is sent: a row that names no entry sends nothing at all.
        int index[3];
        for (int l = 0; l < 3; ++l) {
            index[l] = -1;
            const std::vector<FilterChoice>& choices = model_->lists[size_t(l)];
            for (size_t i = 0; i < choices.size(); ++i)
                if (same(choices[i].item, r[size_t(GroupFirst + l)])) index[l] = int(i);
            if (index[l] < 0)
                throw TvError(kErrSubscript, QStringLiteral("group ") + name +
                                                 QStringLiteral(": no filter ") + r[size_t(GroupFirst + l)]);
        }
        int* held[3] = {&modes_.MainFilter1Index, &modes_.MainFilter2Index, &modes_.SubFilterIndex};
        for (int l = 0; l < 3; ++l) {
            filterList(l).setListIndex(index[l]);
            *held[l] = index[l];
        }
        for (int l = 0; l < 3; ++l) m_.queue().SetXcvrFilters(commandOf(l, index[l]), l);
        appliedSinceRead_ = true;
        appliedMode_ = m_.state().RadioMode;
        return true;
    }
    return false;
}

void FilterGroups::MatchGroup() {
    if (!model_) return;
    const int radioMode = m_.state().RadioMode;
    const QString mode = ModeControl::FilterGroupModeName(radioMode);
    KavMain& w = m_.main();
    QString found;
    // Top down: of two groups with the same filters, the first is the one shown.
    for (const FilterGroupRow& r : rows())
        if (same(r[GroupMode], mode) && same(r[GroupFirst], w.MainFilter1Combo.text()) &&
            same(r[GroupSecond], w.MainFilter2Combo.text()) && same(r[GroupSub], w.SubFilterCombo.text())) {
            found = r[GroupName];
            break;
        }
    ComboBox& list = w.FilterGroupCombo;
    FlagHold hold(modes_.FilterComboUpdating);
    if (found.isEmpty()) {
        if (!SetCombo(list, QString())) list.setListIndex(-1);
        return;
    }
    if (!SetCombo(list, found)) {
        list.AddItem(found);
        list.setListIndex(list.ListCount() - 1);
    }
    if (radioMode >= 0 && radioMode < 10) {
        m_.state().ModeFilters[size_t(radioMode)] = found;
        modes_.UpdateModeCaption(radioMode);
    }
}

void FilterGroups::StatusReported(const FilterStatus& status) {
    if (!model_) return;
    // A group sent for this mode since the last read (the operator's, or a recalled memory's as its
    // mode command left) stands: the read may have been asked before it went.
    const bool fresh = appliedSinceRead_ && appliedMode_ == m_.state().RadioMode;
    appliedSinceRead_ = false;
    if (fresh) return;
    if (status.modeChanged) {
        // The new mode brings the group remembered for it.
        const int mode = m_.state().RadioMode;
        if (mode < 0 || mode > 9) return;
        ComboBox& list = m_.main().FilterGroupCombo;
        m_.SetControlFlag(FlagFilterGroupList, true);
        const bool listed = SetCombo(list, m_.state().ModeFilters[size_t(mode)]);
        m_.SetControlFlag(FlagFilterGroupList, false);
        if (listed) modes_.FilterGroupClick();
        return;
    }
    bool changed = false;
    {
        FlagHold hold(modes_.FilterComboUpdating);
        int* held[3] = {&modes_.MainFilter1Index, &modes_.MainFilter2Index, &modes_.SubFilterIndex};
        for (int l = 0; l < 3; ++l) {
            const int code = status.codes[size_t(l)];
            if (code < 0) continue;
            const int index = FilterChoiceByStatus(model_->lists[size_t(l)], code);
            if (index < 0 || index == filterList(l).listIndex()) continue;
            filterList(l).setListIndex(index);
            *held[l] = index;
            changed = true;
        }
    }
    if (changed) MatchGroup();
}

// ---- the group editor ----

void FilterGroups::GridColumnUpdated(int col) {
    const Grid& g = m_.config().YaesuFilterGroupGrid;
    if (col == GroupName) EditedGroupName = g.cell(g.row(), col);
    if (!model_) return;
    if (SearchCombo(m_.main().FilterGroupCombo, EditedGroupName) < 0) {
        refillGroupListKeepingText();
        fillMemoryLists();
    }
    m_.config().SaveGroupCmd.setEnabled(true);
}

void FilterGroups::GridRowsChanged() {
    if (!model_) return;
    refillGroupListKeepingText();
    fillMemoryLists();
    modes_.UpdateModeFilters();
    m_.config().SaveGroupCmd.setEnabled(true);
}

void FilterGroups::SelectGroupFilename() {
    TextBox& name = m_.config().GroupFilename;
    const QString start = name.text().isEmpty() ? defaultPath() : name.text();
    const QString path = m_.dialogs().openFile(QStringLiteral("Select a filter group file"), start,
                                               QStringLiteral("Filter groups (*.txt);;All files (*)"));
    if (path.isEmpty()) return;
    name.setText(path);
    LoadFilterGroupData(path);
}

void FilterGroups::SaveGroupCmdClick() {
    TextBox& name = m_.config().GroupFilename;
    // No file named yet: the groups go to the usual one beside the settings, which is then the file.
    if (name.text().trimmed().isEmpty()) name.setText(defaultPath());
    SaveFilterGroupData(name.text().trimmed());
}

}  // namespace tv
