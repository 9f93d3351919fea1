#include "platform/Dialogs.h"

#include <QProcess>
#include <QUrl>

#include <cstdio>

namespace tv {
namespace {
MsgAnswer firstAnswer(MsgButtons b) {
    switch (b) {
        case MsgButtons::Ok:
        case MsgButtons::OkCancel: return MsgAnswer::Ok;
        case MsgButtons::YesNo:
        case MsgButtons::YesNoCancel: return MsgAnswer::Yes;
        case MsgButtons::RetryCancel: return MsgAnswer::Retry;
    }
    return MsgAnswer::Ok;
}
}  // namespace

MsgAnswer HeadlessDialogs::messageBox(const QString& text, const QString& title, MsgButtons buttons, MsgIcon) {
    // Without an operator the safe answer is the one that keeps data: "No" to a question would lose
    // nothing either, but the first button is what a box offers as its default.
    const MsgAnswer answer = firstAnswer(buttons);
    QString line = QStringLiteral("[%1] %2").arg(title, text);
    // A question is logged with the answer given in the operator's place.
    if (buttons == MsgButtons::YesNo || buttons == MsgButtons::YesNoCancel)
        line += answer == MsgAnswer::Yes ? QStringLiteral(" (answered yes)") : QStringLiteral(" (answered no)");
    std::fprintf(stderr, "%s\n", line.toLocal8Bit().constData());
    std::fflush(stderr);
    if (sink_) sink_(QStringLiteral("message box: ") + line);
    return answer;
}

bool HeadlessDialogs::openWithDefault(const QString& path) {
    return QProcess::startDetached(QStringLiteral("xdg-open"), {path});
}

bool HeadlessDialogs::startProgram(const QString& program, const QStringList& args) {
    return QProcess::startDetached(program, args);
}

MsgAnswer ScriptedDialogs::messageBox(const QString& text, const QString& title, MsgButtons buttons, MsgIcon) {
    shown.push_back({QStringLiteral("box"), text, title, buttons});
    if (onShow) onShow(shown.back());
    if (answers.empty()) return firstAnswer(buttons);
    MsgAnswer a = answers.front();
    answers.pop_front();
    return a;
}

static QString nextPath(std::deque<QString>& paths) {
    if (paths.empty()) return {};
    QString p = paths.front();
    paths.pop_front();
    return p;
}

QString ScriptedDialogs::openFile(const QString& title, const QString& folder, const QString&) {
    shown.push_back({QStringLiteral("open"), folder, title});
    return nextPath(paths);
}

QString ScriptedDialogs::saveFile(const QString& title, const QString& folder, const QString&) {
    shown.push_back({QStringLiteral("save"), folder, title});
    return nextPath(paths);
}

QString ScriptedDialogs::pickFolder(const QString& title, const QString& start) {
    shown.push_back({QStringLiteral("folder"), start, title});
    return nextPath(paths);
}

bool ScriptedDialogs::openWithDefault(const QString& path) {
    shown.push_back({QStringLiteral("default"), path, {}});
    return openSucceeds;
}

bool ScriptedDialogs::startProgram(const QString& program, const QStringList& args) {
    shown.push_back({QStringLiteral("program"), program + QLatin1Char(' ') + args.join(QLatin1Char(' ')), {}});
    return openSucceeds;
}

QStringList ScriptedDialogs::boxTexts() const {
    QStringList out;
    for (const auto& s : shown)
        if (s.kind == QLatin1String("box")) out << s.text;
    return out;
}

}  // namespace tv
