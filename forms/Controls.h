#pragma once
// The controls that form models are made of. The program's logic relies on how they answer: setting a
// check box, option button, list index, text or scroll value raises the control's own Click or Change
// event, and only when the value really changes. Qt widgets are views on these (see windows/).

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace tv {

class EventLoop;
class Form;
class LoopTimer;

// Modifier masks of mouse and key events.
enum ShiftMask : int { kShift = 1, kCtrl = 2, kAlt = 4 };
// Key codes of KeyDown and KeyUp (the virtual-key numbering the handlers are written in).
enum KeyCode : int {
    kKeyBack = 8, kKeyTab = 9, kKeyReturn = 13, kKeyEscape = 27, kKeyPageUp = 33, kKeyPageDown = 34,
    kKeyEnd = 35, kKeyHome = 36, kKeyLeft = 37, kKeyUp = 38, kKeyRight = 39, kKeyDown = 40,
    kKeyInsert = 45, kKeyDelete = 46, kKeyF1 = 112, kKeyF2 = 113, kKeyF3 = 114, kKeyF4 = 115,
    kKeyF5 = 116, kKeyF12 = 123
};
// Mouse buttons.
enum MouseButton : int { kLeftButton = 1, kRightButton = 2, kMiddleButton = 4 };

class Control {
public:
    Control(Form* form, QString name, int index = -1);
    virtual ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    Form* form() const { return form_; }
    const QString& name() const { return name_; }
    int index() const { return index_; }
    // "Name" or "Name(3)" for a member of a control array: how logs and the tooltip table name it.
    QString fullName() const;

    const QString& caption() const { return caption_; }
    void setCaption(const QString& c);
    const QString& toolTip() const { return toolTip_; }
    void setToolTip(const QString& t);
    bool visible() const { return visible_; }
    void setVisible(bool v);
    bool enabled() const { return enabled_; }
    void setEnabled(bool e);
    int left() const { return left_; }
    int top() const { return top_; }
    int width() const { return width_; }
    int height() const { return height_; }
    void setBounds(int left, int top, int width, int height);
    // Text colour as 0xBBGGRR (255 is red); 0 is the default black.
    unsigned foreColor() const { return foreColor_; }
    void setForeColor(unsigned c) {
        if (c == foreColor_) return;
        foreColor_ = c;
        changed();
    }
    const QString& tag() const { return tag_; }
    void setTag(const QString& t) { tag_ = t; }

    // Focus, as the form sees it. SetFocus raises LostFocus on the old holder and GotFocus here.
    bool hasFocus() const;
    void SetFocus();

    // Events, connected by the window layer. Key and mouse arguments follow the usual conventions:
    // a KeyPress handler may set keyAscii to 0 to swallow the key, a KeyDown handler keyCode to 0.
    std::function<void()> Click, DblClick, Change, GotFocus, LostFocus;
    std::function<void(int& keyAscii)> KeyPress;
    std::function<void(int& keyCode, int shift)> KeyDown, KeyUp;
    std::function<void(int button, int shift, double x, double y)> MouseDown, MouseUp, MouseMove;

    // Gestures, as a view delivers them.
    void keyPress(int& keyAscii) { fire(KeyPress, keyAscii); }
    void keyDown(int& keyCode, int shift) { fire(KeyDown, keyCode, shift); }
    void keyUp(int& keyCode, int shift) { fire(KeyUp, keyCode, shift); }
    void mouseDown(int button, int shift, double x, double y) { fire(MouseDown, button, shift, x, y); }
    void mouseUp(int button, int shift, double x, double y) { fire(MouseUp, button, shift, x, y); }
    void mouseMove(int button, int shift, double x, double y) { fire(MouseMove, button, shift, x, y); }
    void doubleClick() { fire(DblClick); }

    // The view's hook: told after any property of the control has changed.
    std::function<void()> viewChanged;

protected:
    template <class F, class... A>
    static void fire(const F& f, A&&... a) {
        if (f) f(std::forward<A>(a)...);
    }
    void changed() {
        if (viewChanged) viewChanged();
    }

private:
    friend class Form;
    Form* form_;
    QString name_;
    int index_;
    QString caption_, toolTip_, tag_;
    bool visible_ = true, enabled_ = true;
    int left_ = 0, top_ = 0, width_ = 0, height_ = 0;
    unsigned foreColor_ = 0;
};

class Label : public Control {
public:
    using Control::Control;
    // A label's caption change raises Change, as labels do.
    void setCaption(const QString& c) {
        if (c == caption()) return;
        Control::setCaption(c);
        fire(Change);
    }
};

class Frame : public Control {
public:
    using Control::Control;
};

class CommandButton : public Control {
public:
    using Control::Control;
    // Pressing the button, by the operator or by code (setting its value), raises Click.
    void click() { fire(Click); }
};

class CheckBox : public Control {
public:
    using Control::Control;
    enum { Unchecked = 0, Checked = 1, Grayed = 2 };
    int value() const { return value_; }
    bool checked() const { return value_ == Checked; }
    // Raises Click when the value changes, whoever changes it.
    void setValue(int v);
    void setChecked(bool on) { setValue(on ? Checked : Unchecked); }
    // The operator's click: toggles between checked and unchecked.
    void userClick() { setValue(value_ == Checked ? Unchecked : Checked); }

private:
    int value_ = Unchecked;
};

class OptionButton;

// The option buttons that exclude one another (those in one container).
class OptionGroup {
public:
    void add(OptionButton* b) { members_.push_back(b); }
    const std::vector<OptionButton*>& members() const { return members_; }
    // The selected member, or nullptr.
    OptionButton* selected() const;

private:
    std::vector<OptionButton*> members_;
};

class OptionButton : public Control {
public:
    OptionButton(Form* form, QString name, int index = -1, OptionGroup* group = nullptr);
    bool value() const { return value_; }
    // Setting true clears the others of the group (without events) and raises Click here, when it
    // wasn't set before. Setting false raises nothing.
    void setValue(bool v);
    void userClick() { setValue(true); }
    OptionGroup* group() const { return group_; }

private:
    bool value_ = false;
    OptionGroup* group_;
};

class TextBox : public Control {
public:
    using Control::Control;
    const QString& text() const { return text_; }
    // Raises Change when the text changes.
    void setText(const QString& t);
    // Adds to the end (a log that grows): costs the added text only, raises Change.
    void appendText(const QString& t);
    // Whether the last change only added text at the end (a view can then add just that).
    bool lastChangeAppended() const { return appended_; }
    int selStart() const { return selStart_; }
    int selLength() const { return selLength_; }
    void setSelStart(int s);
    void setSelLength(int n);
    QString selText() const { return text_.mid(selStart_, selLength_); }
    bool locked() const { return locked_; }
    void setLocked(bool l) {
        locked_ = l;
        changed();
    }
    // The operator types a character: KeyPress first (which may swallow it), then the text changes at
    // the caret, replacing the selection. Backspace (8) removes before the caret.
    void typeChar(int keyAscii);
    // A secret (a password, an API key): the view shows dots in place of its characters.
    bool masked() const { return masked_; }
    void setMasked(bool on) {
        masked_ = on;
        changed();
    }

private:
    QString text_;
    bool masked_ = false;
    int selStart_ = 0, selLength_ = 0;
    bool locked_ = false;
    bool appended_ = false;
};

// A list: a drop-down list or a combo with an editable text.
class ComboBox : public Control {
public:
    ComboBox(Form* form, QString name, int index = -1, bool editable = false);
    int ListCount() const { return int(items_.size()); }
    QString List(int i) const { return i >= 0 && i < ListCount() ? items_[size_t(i)].text : QString(); }
    long ItemData(int i) const { return i >= 0 && i < ListCount() ? items_[size_t(i)].data : 0; }
    void setItemData(int i, long d) {
        if (i >= 0 && i < ListCount()) items_[size_t(i)].data = d;
    }
    void AddItem(const QString& text, int at = -1);
    void RemoveItem(int i);
    // Empties the list; the selection goes to -1 without an event.
    void Clear();
    QStringList items() const;

    int listIndex() const { return listIndex_; }
    // Raises Click when the index changes; the text follows the selected entry.
    void setListIndex(int i);
    const QString& text() const { return text_; }
    // For an editable combo: raises Change when the text changes. For a plain list: selects the entry
    // equal to the text (Click when that changes the selection).
    void setText(const QString& t);
    bool editable() const { return editable_; }

private:
    struct Item {
        QString text;
        long data = 0;
    };
    std::vector<Item> items_;
    int listIndex_ = -1;
    QString text_;
    bool editable_;
};

class ScrollBar : public Control {
public:
    using Control::Control;
    int min() const { return min_; }
    int max() const { return max_; }
    int smallChange() const { return small_; }
    int largeChange() const { return large_; }
    void setRange(int min, int max);
    void setSmallChange(int s) { small_ = s; }
    void setLargeChange(int l) { large_ = l; }
    int value() const { return value_; }
    // Raises Change when the value changes, and always at the end of a drag. Values outside the range
    // are held at its ends.
    void setValue(int v);
    // The operator drags the thumb: the value follows and Scroll is raised (Change comes at release,
    // when the view sets the final value).
    void dragTo(int v);
    bool dragging() const { return dragging_; }
    std::function<void()> Scroll;

private:
    int clamp(int v) const;
    int min_ = 0, max_ = 32767, small_ = 1, large_ = 1, value_ = 0;
    bool dragging_ = false;
};

// A picture box: colours, a scale, and what has been drawn on it since it was last cleared.
class PictureBox : public Control {
public:
    using Control::Control;
    struct Shape {
        enum Kind { Line, Box, FilledBox, Text } kind;
        double x1, y1, x2, y2;
        unsigned color;
        QString text;
    };
    unsigned backColor() const { return back_; }
    void setBackColor(unsigned c) {
        back_ = c;
        changed();
    }
    double scaleWidth() const { return scaleW_; }
    double scaleHeight() const { return scaleH_; }
    void setScale(double w, double h) {
        scaleW_ = w;
        scaleH_ = h;
        changed();
    }
    void Cls() {
        shapes_.clear();
        changed();
    }
    void draw(const Shape& s) {
        shapes_.push_back(s);
        changed();
    }
    const std::vector<Shape>& shapes() const { return shapes_; }

private:
    unsigned back_ = 0xFFFFFF;
    double scaleW_ = 1000, scaleH_ = 100;
    std::vector<Shape> shapes_;
};

// A tabbed control: the captions of its tabs and the one in front. Changing the tab raises Click.
class TabStrip : public Control {
public:
    TabStrip(Form* form, QString name, const QStringList& tabs) : Control(form, std::move(name)), tabs_(tabs) {}
    int count() const { return int(tabs_.size()); }
    QString tabCaption(int i) const { return i >= 0 && i < count() ? tabs_[i] : QString(); }
    void setTabCaption(int i, const QString& c) {
        if (i < 0 || i >= count() || tabs_[i] == c) return;
        tabs_[i] = c;
        changed();
    }
    int tab() const { return tab_; }
    void setTab(int i) {
        if (i < 0 || i >= count() || i == tab_) return;
        tab_ = i;
        changed();
        fire(Click);
    }

private:
    QStringList tabs_;
    int tab_ = 0;
};

// A form's timer control, on the program's loop: Interval in ms, Enabled, and the Timer event.
// Enabling, or setting the interval of an enabled timer, restarts the count. Interval 0 never ticks.
class Timer : public Control {
public:
    Timer(Form* form, QString name);
    // A timer of no window, for the parts of the program that run without one.
    Timer(EventLoop& loop, QString name);
    ~Timer() override;
    int Interval() const;
    void setInterval(int ms);
    bool Enabled() const;
    void setEnabled(bool on);
    std::function<void()> TimerEvent;

private:
    Timer(Form* form, EventLoop& loop, QString name);
    std::unique_ptr<LoopTimer> timer_;
};

// Members of a control array, addressed by their index (which may start at 0 or 1).
template <class T>
class ControlArray {
public:
    template <class... A>
    ControlArray(Form* form, const QString& name, int lbound, int ubound, A&&... extra) : lbound_(lbound) {
        for (int i = lbound; i <= ubound; ++i) items_.push_back(std::make_unique<T>(form, name, i, extra...));
    }
    T& operator[](int i) { return *items_.at(size_t(i - lbound_)); }
    const T& operator[](int i) const { return *items_.at(size_t(i - lbound_)); }
    int lbound() const { return lbound_; }
    int ubound() const { return lbound_ + int(items_.size()) - 1; }
    int count() const { return int(items_.size()); }
    bool has(int i) const { return i >= lbound_ && i <= ubound(); }

private:
    int lbound_;
    std::vector<std::unique_ptr<T>> items_;
};

// A control's designed caption and tooltip, as a form sets them up (no events: nothing listens yet).
inline void Describe(Control& c, const QString& caption, const QString& tip = QString()) {
    c.setCaption(caption);
    if (!tip.isNull()) c.setToolTip(tip);
}

// Raises a guard flag for the life of the scope: the program's own change of a control, made inside
// it, is seen by the control's handler as not being a gesture.
class FlagHold {
public:
    explicit FlagHold(bool& flag) : flag_(flag) { flag_ = true; }
    ~FlagHold() { flag_ = false; }
    FlagHold(const FlagHold&) = delete;
    FlagHold& operator=(const FlagHold&) = delete;

private:
    bool& flag_;
};

}  // namespace tv
