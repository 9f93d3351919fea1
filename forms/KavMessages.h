#pragma once
// The message monitor as a model: the captured messages in three renderings at once (decimal,
// hexadecimal, ascii), the view on screen, and its controls; plus the small windows around it: the
// note to insert, the overflow notice and the notice of a command the radio rejected.

#include "forms/Controls.h"
#include "forms/Form.h"

namespace tv {

// A note typed by the operator, inserted into the capture between messages.
class Note : public Form {
public:
    static const char* const kPermCaption;
    explicit Note(EventLoop& loop);
    Label PermLabel{this, QStringLiteral("PermLabel")};
    Label NoteLabel{this, QStringLiteral("NoteLabel")};
    TextBox NoteText{this, QStringLiteral("NoteText")};
    // The note waits for the next message once the operator pressed Enter (the label is then empty).
    bool pending() const { return NoteLabel.caption().isEmpty(); }
};

class MessageOverflow : public Form {
public:
    explicit MessageOverflow(EventLoop& loop);
    Label Message{this, QStringLiteral("Message")};
    CommandButton OKCmd{this, QStringLiteral("OKCmd")};
};

// The notice that the radio refused a command.
class KavReject : public Form {
public:
    explicit KavReject(EventLoop& loop);
    Label Label1{this, QStringLiteral("Label1")};
    Label Label2{this, QStringLiteral("Label2")};
    Label Command{this, QStringLiteral("Command")};
    Label Time{this, QStringLiteral("Time")};
};

class KavMessages : public Form {
public:
    // The display is a text box of this many characters; capture stops beyond it.
    static constexpr int kDisplayLimit = 32000;
    static const char* const kColumnHeader;

    explicit KavMessages(EventLoop& loop);

    Frame MessageDisplayFrame{this, QStringLiteral("MessageDisplayFrame")};
    OptionGroup viewGroup;
    ControlArray<OptionButton> MessageDisplayMode{this, QStringLiteral("MessageDisplayMode"), 0, 2, &viewGroup};
    Frame CapturedMessagesFrame{this, QStringLiteral("CapturedMessagesFrame")};
    CheckBox CaptureEnabled{this, QStringLiteral("CaptureEnabled")};
    CommandButton NoteCmd{this, QStringLiteral("NoteCmd")};
    CommandButton ClrCmd{this, QStringLiteral("ClrCmd")};
    CommandButton SaveCmd{this, QStringLiteral("SaveCmd")};
    Frame InterrogateFrame{this, QStringLiteral("InterrogateFrame")};
    CommandButton ReqModeCmd{this, QStringLiteral("ReqModeCmd")};
    CommandButton ReqFreqCmd{this, QStringLiteral("ReqFreqCmd")};
    CommandButton MessageHelpCmd{this, QStringLiteral("MessageHelpCmd")};
    Label ColumnHeader{this, QStringLiteral("ColumnHeader")};
    TextBox MessageDisplay{this, QStringLiteral("MessageDisplay")};

    // The three logs; the one of DisplayView is what the text box shows.
    QString DecimalDisplay, HexDisplay, AsciiDisplay;
    int DisplayView = 0;
    bool UnsavedData = false;

    void ClearMessageDisplay();
    void SelectMessageDisplay(int view);
    void AppendToMessageDisplay(const QString& line, int view);
    void SetUnsavedData(bool value) { UnsavedData = value; }
    const QString& log(int view) const;
    // Length of the text on screen, without copying it.
    int displayLength() const { return int(log(DisplayView).size()); }

    // The small windows that belong to the monitor.
    Note note;
    MessageOverflow overflow;
    KavReject reject;

private:
    QString& logRef(int view);
};

}  // namespace tv
