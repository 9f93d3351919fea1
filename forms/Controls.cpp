#include "forms/Controls.h"

#include "forms/Form.h"
#include "platform/EventLoop.h"

#include <algorithm>

namespace tv {

// ---- Control ----

Control::Control(Form* form, QString name, int index) : form_(form), name_(std::move(name)), index_(index) {
    if (form_) form_->controls_.push_back(this);
}

Control::~Control() {
    if (form_) {
        auto& v = form_->controls_;
        v.erase(std::remove(v.begin(), v.end(), this), v.end());
        if (form_->focus_ == this) form_->focus_ = nullptr;
    }
}

QString Control::fullName() const {
    return index_ < 0 ? name_ : QStringLiteral("%1(%2)").arg(name_).arg(index_);
}

void Control::setCaption(const QString& c) {
    if (c == caption_) return;
    caption_ = c;
    changed();
}

void Control::setToolTip(const QString& t) {
    if (t == toolTip_) return;
    toolTip_ = t;
    changed();
}

void Control::setVisible(bool v) {
    if (v == visible_) return;
    visible_ = v;
    changed();
}

void Control::setEnabled(bool e) {
    if (e == enabled_) return;
    enabled_ = e;
    changed();
}

void Control::setBounds(int left, int top, int width, int height) {
    if (left == left_ && top == top_ && width == width_ && height == height_) return;
    left_ = left;
    top_ = top;
    width_ = width;
    height_ = height;
    changed();
}

bool Control::hasFocus() const { return form_ && form_->activeControl() == this; }

void Control::SetFocus() {
    if (form_) form_->focusTo(this);
}

// ---- CheckBox ----

void CheckBox::setValue(int v) {
    if (v == value_) return;
    value_ = v;
    changed();
    fire(Click);
}

// ---- OptionButton ----

OptionButton* OptionGroup::selected() const {
    for (OptionButton* b : members_)
        if (b->value()) return b;
    return nullptr;
}

OptionButton::OptionButton(Form* form, QString name, int index, OptionGroup* group)
    : Control(form, std::move(name), index), group_(group) {
    if (group_) group_->add(this);
}

void OptionButton::setValue(bool v) {
    if (v == value_) return;
    value_ = v;
    if (v && group_)
        for (OptionButton* other : group_->members())
            if (other != this && other->value_) {
                other->value_ = false;
                other->changed();
            }
    changed();
    if (v) fire(Click);
}

// ---- TextBox ----

void TextBox::appendText(const QString& t) {
    if (t.isEmpty()) return;
    text_ += t;
    appended_ = true;
    changed();
    fire(Change);
}

void TextBox::setText(const QString& t) {
    if (t == text_) return;
    appended_ = false;
    text_ = t;
    selStart_ = std::min<int>(selStart_, int(text_.size()));
    selLength_ = std::min<int>(selLength_, int(text_.size()) - selStart_);
    changed();
    fire(Change);
}

void TextBox::setSelStart(int s) {
    selStart_ = std::clamp(s, 0, int(text_.size()));
    selLength_ = 0;
    changed();
}

void TextBox::setSelLength(int n) {
    selLength_ = std::clamp(n, 0, int(text_.size()) - selStart_);
    changed();
}

void TextBox::typeChar(int keyAscii) {
    fire(KeyPress, keyAscii);
    if (keyAscii == 0 || locked_ || !enabled()) return;
    if (keyAscii < 32 && keyAscii != 8) return;  // other control keys don't edit the text
    QString t = text_;
    int caret = selStart_;
    if (selLength_ > 0) {
        t.remove(selStart_, selLength_);
    } else if (keyAscii == 8) {
        if (caret == 0) return;
        t.remove(--caret, 1);
    }
    if (keyAscii >= 32) t.insert(caret++, QChar(keyAscii));
    selLength_ = 0;
    setText(t);
    selStart_ = std::min<int>(caret, int(text_.size()));
    changed();
}

// ---- ComboBox ----

ComboBox::ComboBox(Form* form, QString name, int index, bool editable)
    : Control(form, std::move(name), index), editable_(editable) {}

void ComboBox::AddItem(const QString& text, int at) {
    if (at < 0 || at > ListCount()) at = ListCount();
    items_.insert(items_.begin() + at, Item{text, 0});
    if (listIndex_ >= at) ++listIndex_;
    changed();
}

void ComboBox::RemoveItem(int i) {
    if (i < 0 || i >= ListCount()) return;
    items_.erase(items_.begin() + i);
    if (listIndex_ == i) {
        listIndex_ = -1;
        if (!editable_) text_.clear();
    } else if (listIndex_ > i) {
        --listIndex_;
    }
    changed();
}

void ComboBox::Clear() {
    items_.clear();
    listIndex_ = -1;
    if (!editable_) text_.clear();
    changed();
}

QStringList ComboBox::items() const {
    QStringList out;
    for (const auto& it : items_) out << it.text;
    return out;
}

void ComboBox::setListIndex(int i) {
    if (i < -1 || i >= ListCount()) i = -1;
    if (i == listIndex_) return;
    listIndex_ = i;
    text_ = i >= 0 ? items_[size_t(i)].text : (editable_ ? text_ : QString());
    changed();
    fire(Click);
}

void ComboBox::setText(const QString& t) {
    if (!editable_) {
        for (int i = 0; i < ListCount(); ++i)
            if (items_[size_t(i)].text == t) {
                setListIndex(i);
                return;
            }
        return;
    }
    if (t == text_) return;
    text_ = t;
    changed();
    fire(Change);
}

// ---- ScrollBar ----

int ScrollBar::clamp(int v) const { return std::clamp(v, std::min(min_, max_), std::max(min_, max_)); }

void ScrollBar::setRange(int min, int max) {
    min_ = min;
    max_ = max;
    const int v = clamp(value_);
    if (v != value_) {
        value_ = v;
        changed();
        fire(Change);
    } else {
        changed();
    }
}

void ScrollBar::setValue(int v) {
    v = clamp(v);
    // The release after a drag reports the value the thumb came to rest at, even if it didn't move
    // since the last Scroll.
    const bool endOfDrag = dragging_;
    dragging_ = false;
    if (v == value_ && !endOfDrag) return;
    value_ = v;
    changed();
    fire(Change);
}

void ScrollBar::dragTo(int v) {
    v = clamp(v);
    dragging_ = true;
    if (v == value_) return;
    value_ = v;
    changed();
    fire(Scroll);
}

// ---- Timer ----

Timer::Timer(Form* form, QString name) : Timer(form, form->loop(), std::move(name)) {}

Timer::Timer(EventLoop& loop, QString name) : Timer(nullptr, loop, std::move(name)) {}

Timer::Timer(Form* form, EventLoop& loop, QString name) : Control(form, std::move(name)), timer_(loop.createTimer()) {
    setVisible(false);
    timer_->onTick = [this] { fire(TimerEvent); };
}

Timer::~Timer() = default;

int Timer::Interval() const { return timer_->interval(); }

void Timer::setInterval(int ms) { timer_->setInterval(ms); }

bool Timer::Enabled() const { return timer_->enabled(); }

void Timer::setEnabled(bool on) { timer_->setEnabled(on); }

}  // namespace tv
