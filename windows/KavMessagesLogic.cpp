#include "windows/KavMessagesLogic.h"

#include "core/KavModule.h"
#include "forms/KavMessages.h"
#include "platform/Dialogs.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");
}

KavMessagesLogic::KavMessagesLogic(KavModule& module) : m_(module) {}

void KavMessagesLogic::FormLoad() {
    KavMessages& w = m_.messages();
    w.ClearMessageDisplay();
    w.SetUnsavedData(false);
    m_.link().ExpectTimer.setEnabled(false);
    m_.common().RestoreWindowPosition(w);
}

void KavMessagesLogic::connect() {
    KavMessages& w = m_.messages();
    auto handler = [](const char* label, auto body) {
        return [label, body] { Guard(label, body); };
    };
    w.CaptureEnabled.Click = handler("KavMessages.CaptureEnabled_Click", [this] {
        // The program's own change (a restore, or the overflow) only clears the flag.
        if (m_.ControlFlag(FlagCaptureEnabled)) {
            m_.SetControlFlag(FlagCaptureEnabled, false);
            return;
        }
        m_.settings().SaveSetting(kGeneral, QStringLiteral("MessageCapture"),
                                  m_.messages().CaptureEnabled.checked() ? QStringLiteral("T") : QStringLiteral("F"));
    });
    for (int view = 0; view <= 2; ++view)
        w.MessageDisplayMode[view].Click = handler("KavMessages.MessageDisplayMode_Click", [this, view] {
            m_.messages().SelectMessageDisplay(view);
            m_.settings().SaveSetting(kGeneral, QStringLiteral("MessageDisplayMode"), QString::number(view));
        });
    w.NoteCmd.Click = handler("KavMessages.NoteCmd_Click", [this] {
        Note& n = m_.messages().note;
        n.Show();
        n.NoteText.SetFocus();
        if (n.raiseRequested) n.raiseRequested();
    });
    w.ClrCmd.Click = handler("KavMessages.ClrCmd_Click", [this] { clear(); });
    w.SaveCmd.Click = handler("KavMessages.SaveCmd_Click", [this] { save(); });
    w.ReqModeCmd.Click = handler("KavMessages.ReqModeCmd_Click", [this] { m_.queue().RequestMode(); });
    w.ReqFreqCmd.Click = handler("KavMessages.ReqFreqCmd_Click", [this] { m_.queue().RequestFrequency(); });
    w.MessageHelpCmd.Click =
        handler("KavMessages.MessageHelpCmd_Click", [this] { m_.common().InvokeHelp(QStringLiteral("MonitoringMessages.htm")); });
    // Closing by the operator only hides the window; capture goes on.
    w.QueryUnload = [this](int& cancel, int mode) {
        if (mode == 0) {
            cancel = 1;
            m_.messages().Hide();
        }
    };
    Note& n = w.note;
    n.NoteText.KeyPress = [this](int& key) {
        Guard("Note.NoteText_KeyPress", [&] {
            Note& note = m_.messages().note;
            // An empty label is the signal: the receive path inserts the note with the next message.
            if (!note.NoteLabel.caption().isEmpty() && key == kKeyReturn) {
                key = 0;
                note.NoteLabel.setCaption(QString());
            }
        });
    };
    n.QueryUnload = [this](int& cancel, int mode) {
        if (mode == 0) {
            cancel = 1;
            m_.messages().note.Hide();
        }
    };
    w.overflow.OKCmd.Click = [this] { m_.messages().overflow.Hide(); };
    w.overflow.QueryUnload = [this](int& cancel, int) {
        cancel = 1;
        m_.messages().overflow.Hide();
    };
    w.reject.QueryUnload = [this](int& cancel, int) {
        cancel = 1;
        m_.messages().reject.Hide();
    };
}

void KavMessagesLogic::clear() {
    KavMessages& w = m_.messages();
    if (w.UnsavedData &&
        m_.dialogs().messageBox(QStringLiteral("log contains unsaved data; confirm command to clear it"),
                                m_.common().info().title, MsgButtons::YesNo) == MsgAnswer::No)
        return;
    w.SetUnsavedData(false);
    w.ClearMessageDisplay();
    m_.common().SaveWindowPosition(w);
}

void KavMessagesLogic::save() {
    KavMessages& w = m_.messages();
    if (w.MessageDisplay.text().isEmpty()) {
        m_.dialogs().messageBox(QStringLiteral("No CI-V messages have been captured"), m_.common().info().title);
        return;
    }
    const QString start = m_.settings().GetSetting(kGeneral, QStringLiteral("LogDirectory"), QDir::homePath());
    QString path = m_.dialogs().saveFile(QStringLiteral("Save captured messages"), start, QStringLiteral("(*.txt)"));
    if (path.isEmpty()) return;  // a cancel ends it without a word
    if (QFileInfo(path).suffix().isEmpty()) path += QStringLiteral(".txt");
    m_.settings().SaveSetting(kGeneral, QStringLiteral("LogDirectory"), QFileInfo(path).absolutePath());
    // One line per line of the view, cut at its CR; the file is replaced whole or not at all.
    QString out;
    for (const QString& line : w.MessageDisplay.text().split(QStringLiteral("\r\n"), Qt::SkipEmptyParts))
        out += line + QLatin1Char('\n');
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(out.toLatin1()) < 0 || !f.commit())
        throw TvError(kErrPathFileAccess, path + QStringLiteral(": ") + f.errorString());
    w.SetUnsavedData(false);
}

}  // namespace tv
