#include "forms/KavMessages.h"

namespace tv {

const char* const KavMessages::kColumnHeader =
    "seq#@hhmm.ss    1   2   3   4   5   6   7   8   9  10  11  12  13  14";

KavMessages::KavMessages(EventLoop& loop)
    : Form(loop, QStringLiteral("KavMessages"), QStringLiteral("Tolvane Messages"), 2),
      note(loop),
      overflow(loop),
      reject(loop) {
    setWidth(720);
    setHeight(480);
    Describe(MessageDisplayFrame, QStringLiteral("Message Display"));
    Describe(MessageDisplayMode[0], QStringLiteral("Decimal"), QStringLiteral("Display captured messages in decimal"));
    Describe(MessageDisplayMode[1], QStringLiteral("Hexadecimal"),
        QStringLiteral("Display captured messages in hexadecimal"));
    Describe(MessageDisplayMode[2], QStringLiteral("Ascii"), QStringLiteral("Display captured messages in ascii"));
    Describe(CapturedMessagesFrame, QStringLiteral("Captured Messages"));
    Describe(CaptureEnabled, QStringLiteral("Capture and display messages"),
        QStringLiteral("check to capture messages (may reduce performance)"));
    Describe(NoteCmd, QStringLiteral("Note"),
        QStringLiteral("enter a note into the captured message store when the next message arrives"));
    Describe(ClrCmd, QStringLiteral("Clear"), QStringLiteral("clear captured messages"));
    Describe(SaveCmd, QStringLiteral("Save"), QStringLiteral("save captured messages to file"));
    Describe(InterrogateFrame, QStringLiteral("Interrogate Radio"), QStringLiteral("Request Report From Target Radio"));
    Describe(ReqModeCmd, QStringLiteral("Mode?"), QStringLiteral("request mode report"));
    Describe(ReqFreqCmd, QStringLiteral("Freq?"), QStringLiteral("request frequency report"));
    Describe(MessageHelpCmd, QStringLiteral("Help"), QStringLiteral("display help panel for Messages"));
    Describe(ColumnHeader, QString::fromLatin1(kColumnHeader));
    MessageDisplay.setLocked(true);
}

QString& KavMessages::logRef(int view) {
    return view == 1 ? HexDisplay : view == 2 ? AsciiDisplay : DecimalDisplay;
}

const QString& KavMessages::log(int view) const {
    return view == 1 ? HexDisplay : view == 2 ? AsciiDisplay : DecimalDisplay;
}

void KavMessages::ClearMessageDisplay() {
    DecimalDisplay.clear();
    HexDisplay.clear();
    AsciiDisplay.clear();
    MessageDisplay.setText(QString());
}

void KavMessages::SelectMessageDisplay(int view) {
    if (view < 0 || view > 2) view = 0;
    DisplayView = view;
    MessageDisplay.setText(log(view));
}

void KavMessages::AppendToMessageDisplay(const QString& line, int view) {
    if (view < 0 || view > 2) return;
    logRef(view) += line;
    // The text box keeps its own copy, grown the same way: sharing one buffer would copy it whole on
    // every line, and capture would slow down as the log fills.
    if (view == DisplayView) MessageDisplay.appendText(line);
}

const char* const Note::kPermCaption =
    "Note (strike the <enter> key to insert into captured message display when next message arrives)";

Note::Note(EventLoop& loop) : Form(loop, QStringLiteral("Note"), QStringLiteral("Tolvane: Note"), 3) {
    PermLabel.setCaption(QString::fromLatin1(kPermCaption));
    PermLabel.setVisible(false);
    NoteLabel.setCaption(PermLabel.caption());
}

MessageOverflow::MessageOverflow(EventLoop& loop)
    : Form(loop, QStringLiteral("MessageOverflow"), QStringLiteral("Tolvane: Message buffer is full"), 3) {
    Message.setCaption(QStringLiteral("Message capture has been disabled"));
    OKCmd.setCaption(QStringLiteral("OK"));
}

KavReject::KavReject(EventLoop& loop)
    : Form(loop, QStringLiteral("KavReject"), QStringLiteral("Tolvane: Command rejected"), 3) {
    Label1.setCaption(QStringLiteral("The radio rejected the command"));
    Label2.setCaption(QStringLiteral("at"));
}

}  // namespace tv
