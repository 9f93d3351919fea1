#pragma once
// Message boxes and file dialogs: one interface, with a Qt implementation, a scripted one for tests
// and a headless one that writes to the log and standard error.

#include <QString>
#include <QStringList>

#include <deque>
#include <functional>
#include <vector>

namespace tv {

enum class MsgButtons { Ok, OkCancel, YesNo, YesNoCancel, RetryCancel };
enum class MsgAnswer { Ok, Cancel, Yes, No, Retry };
enum class MsgIcon { None, Information, Warning, Critical, Question };

class Dialogs {
public:
    virtual ~Dialogs() = default;
    virtual MsgAnswer messageBox(const QString& text, const QString& title,
                                 MsgButtons buttons = MsgButtons::Ok, MsgIcon icon = MsgIcon::None) = 0;
    // Returns the chosen path, or an empty string on cancel.
    virtual QString openFile(const QString& title, const QString& folder, const QString& filter) = 0;
    virtual QString saveFile(const QString& title, const QString& folder, const QString& filter) = 0;
    virtual QString pickFolder(const QString& title, const QString& start) = 0;
    // Opens a file or address with the desktop's default program; false when nothing could open it.
    virtual bool openWithDefault(const QString& path) = 0;
    // Starts a program with arguments, detached; false when it could not be started.
    virtual bool startProgram(const QString& program, const QStringList& args) = 0;
};

// Headless: a box is written to standard error and to the sink (the log); it answers its default
// (Ok, or the first button). File dialogs answer "cancel".
class HeadlessDialogs : public Dialogs {
public:
    explicit HeadlessDialogs(std::function<void(const QString&)> sink = {}) : sink_(std::move(sink)) {}
    MsgAnswer messageBox(const QString& text, const QString& title, MsgButtons buttons, MsgIcon icon) override;
    QString openFile(const QString&, const QString&, const QString&) override { return {}; }
    QString saveFile(const QString&, const QString&, const QString&) override { return {}; }
    QString pickFolder(const QString&, const QString&) override { return {}; }
    bool openWithDefault(const QString& path) override;
    bool startProgram(const QString& program, const QStringList& args) override;
    void setSink(std::function<void(const QString&)> sink) { sink_ = std::move(sink); }

private:
    std::function<void(const QString&)> sink_;
};

// Scripted: records every request, answers from queues set by the test (defaults: Ok / first button,
// empty paths).
class ScriptedDialogs : public Dialogs {
public:
    struct Shown {
        QString kind;  // "box", "open", "save", "folder", "default", "program"
        QString text;
        QString title;
        MsgButtons buttons = MsgButtons::Ok;
    };
    MsgAnswer messageBox(const QString& text, const QString& title, MsgButtons buttons, MsgIcon icon) override;
    QString openFile(const QString& title, const QString& folder, const QString& filter) override;
    QString saveFile(const QString& title, const QString& folder, const QString& filter) override;
    QString pickFolder(const QString& title, const QString& start) override;
    bool openWithDefault(const QString& path) override;
    bool startProgram(const QString& program, const QStringList& args) override;

    std::vector<Shown> shown;
    std::deque<MsgAnswer> answers;
    std::deque<QString> paths;
    bool openSucceeds = true;

    // The texts of the boxes shown so far, in order.
    QStringList boxTexts() const;
    // Called while a box is "up", before it answers: a test can act inside the modal moment.
    std::function<void(const Shown&)> onShow;
};

}  // namespace tv
