#include "operating/Memories.h"

#include "core/KavModule.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "forms/MemoryNotes.h"
#include "operating/FrequencyDisplay.h"
#include "operating/ModeControl.h"
#include "platform/Dialogs.h"
#include "platform/EventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Convert.h"
#include "services/Errors.h"

#include <QApplication>
#include <QFileInfo>
#include <QLocale>

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");
constexpr int kRows = KavMain::kMemoryRows;
const QString kFileFilter = QStringLiteral("Text Files (*.txt)");

int wrapRow(int row) { return row < 1 ? kRows : row > kRows ? 1 : row; }
}  // namespace

Memories::Memories(KavModule& m, FrequencyDisplay& display, ModeControl& modes, MemoryNotes& notes)
    : m_(m), display_(display), modes_(modes), notes_(notes) {}

void Memories::connect() {
    m_.hooks.LoadMemories = [this] { Guard("KavModule.LoadMemories", [this] { LoadMemories(); }); };
    m_.hooks.SetCurrentMemoryBank = [this] {
        Guard("KavModule.SetCurrentMemoryBank", [this] { SetCurrentMemoryBank(currentBank_); });
    };
    m_.hooks.UpdateMemoryNotesDisplay = [this] {
        Guard("KavModule.UpdateMemoryNotesDisplay", [this] { UpdateMemoryNotesDisplay(); });
    };
    modes_.ClearMemoryFilterLists = [this] { ClearMemoryFilterLists(); };
    modes_.FillMemoryFilterLists = [this](const QStringList& names) { FillMemoryFilterLists(names); };
    RadioState& s = m_.state();
    QObject::connect(&s, &RadioState::modeReported, &s, [this](int) {
        Guard("KavModule.PendingMemoryFilter", [this] { applyPendingFilter(); });
    });
    connectBank();
    connectNotes();
    connectConfig();
}

void Memories::connectBank() {
    KavMain& w = m_.main();
    for (int i = 1; i <= kRows; ++i) {
        w.SelCmd[i].MouseDown = [this](int, int shift, double, double) { selShift_ = shift; };
        w.SelCmd[i].Click = [this, i] {
            Guard("KavMain.SelCmd_Click", [this, i] {
                const int shift = selShift_;
                selShift_ = 0;
                if (shift == kCtrl) {
                    DisplayNotesEditor(memoryOf(i), i);
                    return;
                }
                SelectMemory(i);
                focusRule();
            });
        };
        w.StoreCmd[i].Click = [this, i] { Guard("KavMain.StoreCmd_Click", [this, i] { SaveMemory(i); }); };
        TextBox& freq = w.FreqMemoryTextbox[i];
        freq.Change = [this, i] { Guard("KavMain.FreqMemoryTextbox_Change", [this, i] { SaveFreqMemory(i); }); };
        freq.KeyPress = [this](int& key) {
            if ((key >= '0' && key <= '9') || key == ',' || key == '.') return;
            key = 0;
            if (beep)
                beep();
            else if (qApp)
                QApplication::beep();
        };
        freq.KeyDown = [this, i](int& key, int) {
            Guard("KavMain.FreqMemoryTextbox_KeyDown", [&] { FreqMemoryTextbox_KeyDown(i, key); });
        };
        w.ModeMemoryPulldown[i].Click = [this, i] {
            Guard("KavMain.ModeMemoryPulldown_Click", [this, i] {
                if (m_.ControlFlag(FlagFilterGroupList)) return;
                SelectMemoryMode(i);
                EnableMemorySelectCmd(i);
                focusRule();
            });
        };
        w.FilterMemoryCombo[i].Click = [this, i] {
            Guard("KavMain.FilterMemoryCombo_Click", [this, i] {
                if (m_.ControlFlag(FlagFilterGroupList)) return;
                SelectMemoryFilter(i);
                focusRule();
            });
        };
        w.MemoryNotesDisplay[i].Change = [this, i] {
            Guard("KavMain.MemoryNotesDisplay_Change", [this, i] { UpdateMemoryNotesFromDisplay(i); });
        };
    }
    for (int b = 0; b <= 9; ++b) {
        w.MemoryBankCmd[b].MouseDown = [this](int, int shift, double, double) { bankShift_ = shift; };
        w.MemoryBankCmd[b].Click = [this, b] {
            Guard("KavMain.MemoryBankCmd_Click", [this, b] {
                const int shift = bankShift_;
                bankShift_ = 0;
                if (shift == kCtrl) {
                    focusRule();
                    EditBankTitle(b);
                    return;
                }
                SetCurrentMemoryBank(b);
                focusRule();
            });
        };
    }
    auto toggle = [this] {
        Guard("KavMain.ToggleMemoryNotesCmd_Click", [this] {
            ToggleMemoryNotesDisplay();
            focusRule();
        });
    };
    w.ToggleMemoryNotesCmd.Click = toggle;
    for (Label* head : {&w.FreqLabel, &w.ModeLabel, &w.FilterMemoryLabel, &w.MemoryNotesLabel}) head->Click = toggle;
}

void Memories::connectNotes() {
    notes_.Notes.KeyPress = [](int& key) {
        // "<" and ">" mark the fields of the export file; a line end would split its line.
        if (key == '<' || key == '>' || key == '\r' || key == '\n') key = 0;
    };
    notes_.Notes.Change = [this] { Guard("MemoryNotes.Notes_Change", [this] { Notes_Change(); }); };
    notes_.DateCmd.Click = [this] { Guard("MemoryNotes.DateCmd_Click", [this] { DateCmd_Click(); }); };
    notes_.QueryUnload = [this](int& cancel, int mode) {
        Guard("MemoryNotes.Form_QueryUnload", [&] {
            if (mode != 0) return;
            // The operator's close only hides: the text and the window stay for the next Ctrl-click.
            cancel = 1;
            notes_.Hide();
            focusRule();
        });
    };
}

void Memories::connectConfig() {
    KavConfig& c = m_.config();
    for (int b = 0; b <= 9; ++b)
        c.BankToolTip[b].Change = [this, b] {
            Guard("KavConfig.BankToolTip_Change", [this, b] {
                const QString title = m_.config().BankToolTip[b].text();
                m_.main().MemoryBankCmd[b].setToolTip(title);
                if (b == currentBank_) m_.main().MemoryBankFrame.setCaption(title);
                m_.settings().SaveSetting(kMemorySection, BankTitleKey(b), title);
            });
        };
    c.ExportMemoriesCmd.Click = [this] { Guard("KavConfig.ExportMemoriesCmd_Click", [this] { ExportMemories(); }); };
    c.ImportMemoriesCmd.Click = [this] { Guard("KavConfig.ImpportMemoriesCmd_Click", [this] { ImportMemories(); }); };
    c.MemoryHelpCmd.Click = [this] {
        Guard("KavConfig.MemoryHelpCmd_Click", [this] { m_.common().InvokeHelp(QStringLiteral("UsingMemories.htm")); });
    };
}

void Memories::focusRule() {
    TextBox& f = m_.main().FreqDisplay;
    if (f.visible()) f.SetFocus();
}

bool Memories::filterGroups() const {
    const RadioInfo* r = m_.radio().info();
    return r && r->filterGroups;
}

void Memories::saveKey(const char* field, int n, const QString& value) {
    if (qstrcmp(field, "Freq") == 0)
        SaveMemoryFrequency(m_.settings(), n, value, display_.locale());
    else
        m_.settings().SaveSetting(kMemorySection, MemoryKey(field, n), value);
}

// ---- the banks ----

void Memories::LoadMemories() {
    for (int n = 1; n <= kMemoryCount; ++n) table_[size_t(n)] = LoadMemoryRow(m_.settings(), n, display_.locale());
    KavMain& w = m_.main();
    // Filled once: a change of radio doesn't change the names of the modes.
    for (int i = 1; i <= kRows; ++i) {
        ComboBox& list = w.ModeMemoryPulldown[i];
        if (list.ListCount() > 0) continue;
        for (int mode = 0; mode <= 9; ++mode) list.AddItem(ModeName(mode));
    }
    for (int b = 0; b <= 9; ++b) {
        const QString title = m_.settings().GetSetting(kMemorySection, BankTitleKey(b), DefaultBankTitle(b));
        m_.config().BankToolTip[b].setText(title);
        w.MemoryBankCmd[b].setToolTip(title);
    }
    bool ok = false;
    const int bank = m_.settings().GetSetting(kMemorySection, QStringLiteral("CurrentMemoryBank"), QStringLiteral("0")).trimmed().toInt(&ok);
    SetCurrentMemoryBank(ok && bank >= 0 && bank <= 9 ? bank : 0);
}

void Memories::SetCurrentMemoryBank(int bank) {
    CheckSubscript(bank, 0, kMemoryBanks - 1);
    currentBank_ = bank;
    m_.settings().SaveSetting(kMemorySection, QStringLiteral("CurrentMemoryBank"), QString::number(bank));
    KavMain& w = m_.main();
    w.MemoryBankFrame.setCaption(m_.config().BankToolTip[bank].text());
    for (int i = 1; i <= kRows; ++i) {
        const int n = memoryOf(i);
        const QString number = QString::number(n);
        // The memory's select button.
        w.SelCmd[i].setCaption(number);
        // The notes box; its change event stores the same text again.
        w.MemoryNotesDisplay[i].setText(table_[size_t(n)].notes);
        w.MemoryNotesDisplay[i].setToolTip(QStringLiteral("notes for memory ") + number);
        // The notes tooltip.
        UpdateMemoryNotesTooltip(i);
        // The store button.
        w.StoreCmd[i].setCaption(number);
        w.StoreCmd[i].setToolTip(QStringLiteral("click to store current frequency, mode, and filter into memory ") + number);
        // The frequency box; its change event stores the same text again.
        w.FreqMemoryTextbox[i].setText(table_[size_t(n)].freq);
        w.FreqMemoryTextbox[i].setToolTip(QStringLiteral("click to modify frequency for memory ") + number);
        // The filter list for the memory's mode.
        m_.SetControlFlag(FlagFilterGroupList, true);
        if (table_[size_t(n)].mode != ModeUnknown) {
            w.ModeMemoryPulldown[i].setListIndex(table_[size_t(n)].mode);
            showFilter(i, n);
        } else {
            w.ModeMemoryPulldown[i].setListIndex(-1);
            w.FilterMemoryCombo[i].setListIndex(-1);
        }
        m_.SetControlFlag(FlagFilterGroupList, false);
        // Enable the select button when the memory holds a frequency.
        EnableMemorySelectCmd(i);
        // The tooltips of the mode and filter lists.
        w.ModeMemoryPulldown[i].setToolTip(QStringLiteral("click to modify mode for memory ") + number);
        w.FilterMemoryCombo[i].setToolTip(QStringLiteral("click to modify filter for memory ") + number);
    }
}

void Memories::showFilter(int row, int n) {
    ComboBox& list = m_.main().FilterMemoryCombo[row];
    if (SetCombo(list, table_[size_t(n)].filter)) return;
    if (!SetCombo(list, QString())) list.setListIndex(-1);
    if (list.ListCount() > 0) table_[size_t(n)].filter.clear();
}

void Memories::ClearMemoryFilterLists() {
    KavMain& w = m_.main();
    w.FilterMemoryLabel.setVisible(false);
    for (int i = 1; i <= kRows; ++i) {
        w.FilterMemoryCombo[i].Clear();
        w.FilterMemoryCombo[i].setVisible(false);
    }
}

void Memories::FillMemoryFilterLists(const QStringList& names) {
    const RadioInfo* r = m_.radio().info();
    if (!r) return;
    KavMain& w = m_.main();
    // The notes, when shown, stand where the filter column would.
    const bool shown = r->filterGroups && !DisplayingMemoryNotes();
    w.FilterMemoryLabel.setVisible(shown);
    for (int i = 1; i <= kRows; ++i) {
        ComboBox& list = w.FilterMemoryCombo[i];
        list.Clear();
        for (const QString& name : names) list.AddItem(name);
        list.setVisible(shown);
        const int n = memoryOf(i);
        if (table_[size_t(n)].mode == ModeUnknown) continue;
        m_.SetControlFlag(FlagFilterGroupList, true);
        w.ModeMemoryPulldown[i].setListIndex(table_[size_t(n)].mode);
        showFilter(i, n);
        m_.SetControlFlag(FlagFilterGroupList, false);
    }
}

void Memories::EnableMemorySelectCmd(int row) {
    const MemoryRow& r = table_[size_t(memoryOf(row))];
    m_.main().SelCmd[row].setEnabled(!r.freq.isEmpty() && r.mode != ModeUnknown);
}

void Memories::SaveFreqMemory(int row) {
    const int n = memoryOf(row);
    table_[size_t(n)].freq = m_.main().FreqMemoryTextbox[row].text();
    saveKey("Freq", n, table_[size_t(n)].freq);
    EnableMemorySelectCmd(row);
}

void Memories::FreqMemoryTextbox_KeyDown(int row, int& key) {
    KavMain& w = m_.main();
    switch (key) {
        case kKeyUp: w.FreqMemoryTextbox[wrapRow(row - 1)].SetFocus(); break;
        case kKeyDown: w.FreqMemoryTextbox[wrapRow(row + 1)].SetFocus(); break;
        case kKeyInsert: SelectAllText(w.FreqMemoryTextbox[row]); break;
        case kKeyBack:
            LeftDeleteText(w.FreqMemoryTextbox[row]);
            w.FreqMemoryTextbox[row].SetFocus();
            break;
        // Done here: the window's key map mustn't act on them again.
        case kKeyF2:
            if (DoRcv) DoRcv();
            key = 0;
            break;
        case kKeyF4:
            if (DoXmit) DoXmit();
            key = 0;
            break;
        default: break;
    }
}

void Memories::SelectMemoryMode(int row) {
    const int n = memoryOf(row);
    ComboBox& list = m_.main().ModeMemoryPulldown[row];
    const int index = list.listIndex();
    const RadioInfo* r = m_.radio().info();
    struct Refusal {
        int mode;
        bool RadioInfo::*has;
    };
    static constexpr Refusal kRefused[] = {
        {ModeRTTY, &RadioInfo::rtty}, {ModeRTTYR, &RadioInfo::rttyR}, {ModeCWR, &RadioInfo::cwR}, {ModeWBFM, &RadioInfo::wbfm}};
    if (r && list.visible())
        for (const Refusal& f : kRefused)
            if (index == f.mode && !(r->*f.has)) {
                m_.dialogs().messageBox(QStringLiteral("error in memory %1: mode not supported by this radio").arg(row),
                                        m_.common().info().title);
                // Put back by the program: not a new choice.
                m_.SetControlFlag(FlagFilterGroupList, true);
                list.setListIndex(table_[size_t(n)].mode != ModeUnknown ? table_[size_t(n)].mode : -1);
                m_.SetControlFlag(FlagFilterGroupList, false);
                return;
            }
    table_[size_t(n)].mode = index < 0 ? int(ModeUnknown) : index;
    saveKey("Mode", n, QString::number(table_[size_t(n)].mode));
}

void Memories::SelectMemoryFilter(int row) {
    const RadioInfo* r = m_.radio().info();
    if (!r) return;
    const int n = memoryOf(row);
    const ComboBox& list = m_.main().FilterMemoryCombo[row];
    QString name = list.text();
    // "Normal" can't be chosen on a radio without its filter position: the first group stands in.
    if (m_.radio().traits().filterGroupsInModeCommands && IcomFilterGroupIndex(name) == 3 && !r->filter0 && list.visible())
        name = list.List(0);
    table_[size_t(n)].filter = name;
    saveKey("Filter", n, name);
}

void Memories::SaveMemory(int row) {
    const int n = memoryOf(row);
    KavMain& w = m_.main();
    MemoryRow& mem = table_[size_t(n)];
    // The mode first: the text box's change event below reads it.
    mem.mode = m_.state().RadioMode;
    w.FreqMemoryTextbox[row].setText(display_.PreviewText(m_.state().RadioFreq));
    mem.freq = w.FreqMemoryTextbox[row].text();
    mem.filter = w.FilterGroupCombo.text();
    mem.split = w.SplitBox.checked();
    mem.ham = w.HamBandSequence.checked();
    mem.dual = w.DualBox.checked();
    m_.SetControlFlag(FlagFilterGroupList, true);
    w.ModeMemoryPulldown[row].setListIndex(mem.mode);
    ComboBox& filters = w.FilterMemoryCombo[row];
    if (!SetCombo(filters, mem.filter)) {
        if (!SetCombo(filters, QString())) filters.setListIndex(-1);
        mem.filter.clear();
    }
    m_.loop().yield();
    m_.SetControlFlag(FlagFilterGroupList, false);
    saveKey("Freq", n, mem.freq);
    saveKey("Mode", n, QString::number(mem.mode));
    saveKey("Filter", n, mem.filter);
    saveKey("Split", n, mem.split ? QStringLiteral("1") : QStringLiteral("0"));
    saveKey("Ham", n, mem.ham ? QStringLiteral("1") : QStringLiteral("0"));
    saveKey("Dual", n, mem.dual ? QStringLiteral("1") : QStringLiteral("0"));
    EnableMemorySelectCmd(row);
}

void Memories::SelectMemory(int row) {
    if (m_.radio().RadioIndex < 0 || !m_.radio().info()) return;
    const RadioInfo& r = *m_.radio().info();
    const int n = memoryOf(row);
    const MemoryRow& mem = table_[size_t(n)];
    const QString title = m_.common().info().title;
    // A memory without a mode is incomplete: ask first.
    if (mem.mode == ModeUnknown) {
        m_.dialogs().messageBox(QString::fromLatin1(kIncompleteMessage), title, MsgButtons::OkCancel);
        return;
    }
    // An empty frequency box recalls nothing.
    TextBox& box = m_.main().FreqMemoryTextbox[row];
    if (box.text().trimmed().isEmpty()) {
        m_.dialogs().messageBox(QString::fromLatin1(kNoFrequencyMessage), title);
        return;
    }
    // The frequency as the frequency box reads it.
    bool ok = false;
    const double freq = ParseFrequency(box.text(), display_.locale(), &ok);
    if (!ok) {
        m_.dialogs().messageBox(QString::fromLatin1(FrequencyDisplay::kBadEntryMessage), title);
        box.setText(QString());  // its change event forgets the stored text too
        return;
    }
    // The filter group: the memory's, or Wide.
    QString filter = QStringLiteral("Wide");
    if (r.filterGroups && !mem.filter.isEmpty()) filter = mem.filter;
    // Queue frequency, mode and filter in the radio's order.
    CommandQueue& q = m_.queue();
    const ProtocolTraits& t = m_.radio().traits();
    // Stored before the radio had reported a mode (-1): it goes as the first mode of the radio's set.
    const int mode = std::max(mem.mode, 0);
    if (t.filterGroupsInModeCommands) {
        int group = IcomFilterGroupIndex(filter);
        if (group == 3 && !r.filter0) group = 1;
        q.SetXcvrModeAndFilterGroup(mode, group);
    } else {
        if (t.filterGroupAfterModeReport) PendingMemoryFilter = n;
        q.SetXcvrModeAndFilterGroup(mode, 0);
    }
    q.SetXcvrWait();
    q.SetXcvrFreq(freq);
    if (t.waitsAfterFrequency) q.SetXcvrWait();
    // As the operator's own clicks: each queues its commands after the frequency, an unchanged box none.
    KavMain& w = m_.main();
    if (w.SplitBox.visible()) w.SplitBox.setChecked(mem.split);
    if (w.HamBandSequence.visible()) w.HamBandSequence.setChecked(mem.ham);
    if (w.DualBox.visible()) w.DualBox.setChecked(mem.dual);
}

void Memories::applyPendingFilter() {
    if (PendingMemoryFilter < 1 || PendingMemoryFilter > kMemoryCount) return;
    const int n = PendingMemoryFilter;
    PendingMemoryFilter = -1;
    // As if chosen in the group list: the list's handler applies the group to the new mode.
    SetCombo(m_.main().FilterGroupCombo, table_[size_t(n)].filter);
}

void Memories::EditBankTitle(int bank) {
    KavConfig& c = m_.config();
    c.Show();
    c.setWindowState(Form::Normal);
    if (c.raiseRequested) c.raiseRequested();
    c.ConfigTab.setTab(6);
    TextBox& title = c.BankToolTip[bank];
    SelectAllText(title);
    title.SetFocus();
}

// ---- notes ----

bool Memories::DisplayingMemoryNotes() const { return m_.MemoryNotesShown; }

void Memories::ToggleMemoryNotesDisplay() {
    m_.MemoryNotesShown = !m_.MemoryNotesShown;
    UpdateMemoryNotesDisplay();
}

void Memories::UpdateMemoryNotesDisplay() {
    const bool shown = m_.MemoryNotesShown;
    m_.settings().SaveSetting(kGeneral, QStringLiteral("MemoryNotesDisplay"), shown ? QStringLiteral("True") : QStringLiteral("False"));
    KavMain& w = m_.main();
    for (int i = 1; i <= kRows; ++i) {
        w.MemoryNotesDisplay[i].setVisible(shown);
        w.FreqMemoryTextbox[i].setVisible(!shown);
        w.ModeMemoryPulldown[i].setVisible(!shown);
        w.FilterMemoryCombo[i].setVisible(!shown && filterGroups());
        UpdateMemoryNotesTooltip(i);
    }
    w.MemoryNotesLabel.setVisible(shown);
    w.FreqLabel.setVisible(!shown);
    w.ModeLabel.setVisible(!shown);
    // Without a radio nobody knows of groups: the head stands as the column would.
    w.FilterMemoryLabel.setVisible(!shown && (filterGroups() || m_.radio().RadioIndex < 0));
    w.ToggleMemoryNotesCmd.setToolTip(shown ? QStringLiteral("click to display each memory's frequency and mode")
                                            : QStringLiteral("click to display each memory's notes"));
}

void Memories::UpdateMemoryNotesFromDisplay(int row) {
    SaveMemoryNotes(m_.main().MemoryNotesDisplay[row].text(), memoryOf(row));
}

void Memories::UpdateMemoryNotesTooltip(int row) {
    KavMain& w = m_.main();
    const int n = memoryOf(row);
    const QString& note = table_[size_t(n)].notes;
    QString tip;
    if (DisplayingMemoryNotes())
        tip = QStringLiteral("click to set frequency to ") + w.FreqMemoryTextbox[row].text() + QStringLiteral(" and mode to ") +
              w.ModeMemoryPulldown[row].text();
    else if (note.isEmpty())
        tip = QStringLiteral("click to set frequency, mode, and filter from memory %1, CTRL-click to display or edit memory notes").arg(n);
    else
        tip = QStringLiteral("click to set frequency, mode, and filter for ") + note +
              QStringLiteral(", CTRL-click to display or edit memory notes");
    w.SelCmd[row].setToolTip(tip);
}

void Memories::SaveMemoryNotes(const QString& text, int n) {
    Guard("KavModule.SaveMemoryNotes", [&] {
        CheckSubscript(n, 1, kMemoryCount);
        table_[size_t(n)].notes = text;
        saveKey("Notes", n, text);
    });
}

void Memories::DisplayNotesEditor(int n, int row) {
    Guard("KavModule.DisplayNotesEditor", [&] {
        if (!notes_.loaded) {
            notes_.loaded = true;
            m_.common().RestoreWindowPosition(notes_);
        }
        const QString number = QString::number(n);
        notes_.setCaption(QStringLiteral("Tolvane Memory Notes Editor: Memory ") + number);
        notes_.Notes.setToolTip(QStringLiteral("Edit notes for memory ") + number);
        notes_.Memory.setText(number);
        notes_.Offset.setText(QString::number(row));
        notes_.Notes.setText(table_[size_t(n)].notes);
        notes_.Show();
        if (notes_.raiseRequested) notes_.raiseRequested();
        focusRule();
        notes_.Notes.setSelStart(int(notes_.Notes.text().size()));
        notes_.Notes.SetFocus();
    });
}

void Memories::Notes_Change() {
    if (notes_.Memory.text().isEmpty() || notes_.Offset.text().isEmpty()) return;
    const int row = CInt(notes_.Offset.text());
    const int n = CInt(notes_.Memory.text());
    CheckSubscript(row, 1, kRows);
    CheckSubscript(n, 1, kMemoryCount);
    const QString text = notes_.Notes.text();
    KavMain& w = m_.main();
    if (!DisplayingMemoryNotes())
        w.SelCmd[row].setToolTip(QStringLiteral("click to recall frequency, mode, and filter from ") + text +
                                 QStringLiteral(", CTRL-click to edit notes"));
    // Its change event stores the text under the row's memory of the bank on view.
    w.MemoryNotesDisplay[row].setText(text);
    SaveMemoryNotes(text, n);
}

void Memories::DateCmd_Click() {
    TextBox& box = notes_.Notes;
    const QDateTime now = UTC::CurrentTime(m_.loop());
    const QLocale locale = display_.locale();
    box.setText(box.text() + locale.toString(now.date(), QLocale::ShortFormat) + now.toString(QStringLiteral(" hh:mm")));
    box.setSelStart(int(box.text().size()));
    box.SetFocus();
}

// ---- the file ----

void Memories::ExportMemories() {
    Guard("KavModule.ExportMemories", [this] {
        QString path = m_.dialogs().saveFile(QStringLiteral("Export Memories"), m_.common().info().logDir, kFileFilter);
        if (path.isEmpty()) return;  // cancelled: nothing to say
        if (QFileInfo(path).suffix().isEmpty()) path += QStringLiteral(".txt");
        ExportMemoryFile(path, table_, filterGroups());
    });
}

void Memories::ImportMemories() {
    Guard("KavModule.ImportMemories", [this] {
        const QString path = m_.dialogs().openFile(QStringLiteral("Import Memories"), m_.common().info().logDir, kFileFilter);
        if (path.isEmpty()) return;
        QString errorsPath;
        const MemoryImportResult result = ImportMemoryFile(path, table_, &errorsPath);
        if (result.failure) throw TvError(*result.failure, result.failureText + QStringLiteral(" in ") + result.failedLine);
        // Only the rows on view reach the store now, through their change events; the others are kept
        // in memory until the operator stores them or the next radio loads the store again.
        SetCurrentMemoryBank(currentBank_);
        if (!errorsPath.isEmpty()) m_.common().RunShellExecute(QStringLiteral("Open"), errorsPath, QString(), QString(), 1);
    });
}

}  // namespace tv
