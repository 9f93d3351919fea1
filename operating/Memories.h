#pragma once
// The hundred channel memories in ten banks: the bank pane of the main window (one bank of ten rows on
// view, edited in place), storing the radio's state into a row, recalling a row through the queue, the
// bank titles of the configuration window, the notes of each memory (in the pane or in their own
// window), and the export and import of all memories as a text file.

#include "operating/MemoryFile.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace tv {

class FrequencyDisplay;
class KavModule;
class MemoryNotes;
class ModeControl;

class Memories {
public:
    static constexpr const char* kIncompleteMessage = "Incomplete memory: A mode for this memory has not be selected";
    static constexpr const char* kNoFrequencyMessage = "Invalid memory frequency: enter or store a valid frequency";

    Memories(KavModule& m, FrequencyDisplay& display, ModeControl& modes, MemoryNotes& notes);
    Memories(const Memories&) = delete;
    Memories& operator=(const Memories&) = delete;

    // Installs the hooks and the handlers of the bank pane, the notes window and the Memories tab.
    void connect();

    // ---- the banks ----
    const MemoryRow& memory(int n) const { return table_[size_t(n)]; }
    const MemoryTable& table() const { return table_; }
    // At each change of radio: every memory, the bank titles and the bank on view from the store.
    void LoadMemories();
    void SetCurrentMemoryBank(int bank);
    int GetCurrentMemoryBank() const { return currentBank_; }
    // The memory of a row (1..10) of the bank on view.
    int memoryOf(int row) const { return currentBank_ * 10 + row; }
    void EnableMemorySelectCmd(int row);
    void SelectMemory(int row);
    void SaveMemory(int row);
    void SaveFreqMemory(int row);
    void SelectMemoryMode(int row);
    void SelectMemoryFilter(int row);
    void EditBankTitle(int bank);
    // A memory whose filter group is to be chosen once the radio reports the new mode; -1 for none.
    int PendingMemoryFilter = -1;

    // ---- notes ----
    bool DisplayingMemoryNotes() const;
    void ToggleMemoryNotesDisplay();
    void UpdateMemoryNotesDisplay();
    void UpdateMemoryNotesFromDisplay(int row);
    void UpdateMemoryNotesTooltip(int row);
    void SaveMemoryNotes(const QString& text, int n);
    void DisplayNotesEditor(int n, int row);

    // ---- the file ----
    void ExportMemories();
    void ImportMemories();

    // The receive and transmit keys (F2, F4) of the frequency boxes, as the main window has them.
    std::function<void()> DoRcv, DoXmit;
    // The refusal of a typed character; the system's beep when unset.
    std::function<void()> beep;

private:
    void connectBank();
    void connectNotes();
    void connectConfig();
    void focusRule();
    bool filterGroups() const;
    // Selects the memory's filter in the row's list; a name the list lacks is forgotten unless the list
    // is empty (a radio without groups keeps the names of another's).
    void showFilter(int row, int n);
    void FillMemoryFilterLists(const QStringList& names);
    void ClearMemoryFilterLists();
    void FreqMemoryTextbox_KeyDown(int row, int& key);
    void Notes_Change();
    void DateCmd_Click();
    void applyPendingFilter();
    void saveKey(const char* field, int n, const QString& value);

    KavModule& m_;
    FrequencyDisplay& display_;
    ModeControl& modes_;
    MemoryNotes& notes_;
    MemoryTable table_;
    int currentBank_ = 0;
    int selShift_ = 0;
    int bankShift_ = 0;
};

}  // namespace tv
