#pragma once
// A window as a model: its caption, position, state and visibility, the controls it owns, and which of
// them has the keyboard focus. The Qt view draws it; the logic and the tests work on it directly.

#include "forms/Controls.h"

#include <functional>
#include <vector>

namespace tv {

class EventLoop;

class Form {
public:
    enum WindowState { Normal = 0, Minimized = 1, Maximized = 2 };
    // Border styles: 0 none, 1 fixed single, 2 sizable, 3 fixed dialog, 4 fixed tool, 5 sizable tool.
    Form(EventLoop& loop, QString name, QString caption, int borderStyle = 2);
    virtual ~Form() = default;
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    EventLoop& loop() const { return loop_; }
    const QString& name() const { return name_; }
    const QString& caption() const { return caption_; }
    void setCaption(const QString& c);
    int borderStyle() const { return borderStyle_; }
    bool resizable() const { return borderStyle_ == 2 || borderStyle_ == 5; }

    int left() const { return left_; }
    int top() const { return top_; }
    int width() const { return width_; }
    int height() const { return height_; }
    void setLeft(int v);
    void setTop(int v);
    void setWidth(int v);
    void setHeight(int v);
    int windowState() const { return state_; }
    void setWindowState(int s);

    bool visible() const { return visible_; }
    void Show();
    void Hide();
    // Closing by the operator (mode 0) asks QueryUnload first, which may cancel.
    // Returns true when the window closed (was unloaded or hidden by its handler's choice).
    bool userClose();

    // The controls of the form, in the order they were made.
    const std::vector<Control*>& controls() const { return controls_; }
    Control* findControl(const QString& fullName) const;

    Control* activeControl() const { return focus_; }
    void focusTo(Control* c);

    // Form events.
    std::function<void(int& cancel, int unloadMode)> QueryUnload;
    std::function<void()> Activate, Resize;
    // With KeyPreview, the form sees keys before the focused control.
    bool KeyPreview = false;
    std::function<void(int& keyCode, int shift)> KeyDown, KeyUp;
    std::function<void(int& keyAscii)> KeyPress;

    std::function<void()> viewChanged;
    // Asks the view to bring the window to the front.
    std::function<void()> raiseRequested;

private:
    friend class Control;
    void changed() {
        if (viewChanged) viewChanged();
    }
    EventLoop& loop_;
    QString name_, caption_;
    int borderStyle_;
    int left_ = 0, top_ = 0, width_ = 0, height_ = 0, state_ = Normal;
    bool visible_ = false;
    std::vector<Control*> controls_;
    Control* focus_ = nullptr;
};

}  // namespace tv
