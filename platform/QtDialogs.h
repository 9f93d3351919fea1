#pragma once
// Message boxes and file dialogs on the desktop. Needs a QApplication: only used when windows are shown.

#include "platform/Dialogs.h"

#include <map>
#include <utility>

class QMessageBox;
class QWidget;

namespace tv {

class QtDialogs : public Dialogs {
public:
    // Boxes and dialogs are modal to the parent's window when one is given.
    explicit QtDialogs(QWidget* parent = nullptr) : parent_(parent) {}
    void setParent(QWidget* parent) { parent_ = parent; }

    MsgAnswer messageBox(const QString& text, const QString& title, MsgButtons buttons = MsgButtons::Ok,
                         MsgIcon icon = MsgIcon::None) override;
    QString openFile(const QString& title, const QString& folder, const QString& filter) override;
    QString saveFile(const QString& title, const QString& folder, const QString& filter) override;
    QString pickFolder(const QString& title, const QString& start) override;
    bool openWithDefault(const QString& path) override;
    bool startProgram(const QString& program, const QStringList& args) override;

    // Boxes of the same title and text that came while one was up, counted into it (for tests).
    int repeatsOf(const QString& text, const QString& title) const;

private:
    QWidget* parent_;
    // A notice that is already up is not stacked again: each modal box is a nested loop, and a flood
    // of the same notice would nest thousands. The repeats are counted into the box on screen.
    std::map<std::pair<QString, QString>, std::pair<QMessageBox*, int>> open_;
};

}  // namespace tv
