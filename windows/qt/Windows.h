#pragma once
// The program's windows drawn with Qt: the main window, the configuration window, the message monitor
// and the small notices. Each is a view on its form model; none holds state of its own.

#include "windows/qt/ControlViews.h"

#include <memory>
#include <vector>

namespace tv {

class KavConfig;
class KavMain;
class KavMessages;
class MemoryNotes;
class UserCommandSequenceDefinition;

class Windows {
public:
    Windows(KavMain& main, KavConfig& config, KavMessages& messages, UserCommandSequenceDefinition& editor);
    ~Windows();
    ViewBinder& binder() { return binder_; }
    const std::vector<FormWindow*>& all() const { return windows_; }
    FormWindow* window(const QString& formName) const;
    // The memory notes editor's window (the program's, built beside the others).
    FormWindow* addMemoryNotes(MemoryNotes& notes);

private:
    FormWindow* buildMain(KavMain& m);
    FormWindow* buildConfig(KavConfig& c);
    FormWindow* buildMessages(KavMessages& m);
    FormWindow* buildSmall(Form& f, const std::vector<Control*>& rows);
    FormWindow* buildEditor(UserCommandSequenceDefinition& e);
    // The memory bank's rows and bank buttons in their frame; the frame's widget.
    QWidget* layoutMemoryBank(KavMain& m, FormWindow* win);
    void layoutMemoriesTab(KavConfig& c, FormWindow* win, QWidget* page);

    ViewBinder binder_;
    std::vector<FormWindow*> windows_;
};

}  // namespace tv
