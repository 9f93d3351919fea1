#include "forms/Form.h"

namespace tv {

Form::Form(EventLoop& loop, QString name, QString caption, int borderStyle)
    : loop_(loop), name_(std::move(name)), caption_(std::move(caption)), borderStyle_(borderStyle) {}

void Form::setCaption(const QString& c) {
    if (c == caption_) return;
    caption_ = c;
    changed();
}

void Form::setLeft(int v) {
    left_ = v;
    changed();
}
void Form::setTop(int v) {
    top_ = v;
    changed();
}
void Form::setWidth(int v) {
    width_ = v;
    changed();
}
void Form::setHeight(int v) {
    height_ = v;
    changed();
}
void Form::setWindowState(int s) {
    if (s < Normal || s > Maximized) s = Normal;
    state_ = s;
    changed();
}

void Form::Show() {
    if (visible_) return;
    visible_ = true;
    changed();
}

void Form::Hide() {
    if (!visible_) return;
    visible_ = false;
    changed();
}

bool Form::userClose() {
    int cancel = 0;
    if (QueryUnload) QueryUnload(cancel, 0);
    if (cancel) return false;
    Hide();
    return true;
}

Control* Form::findControl(const QString& fullName) const {
    for (Control* c : controls_)
        if (c->fullName() == fullName) return c;
    return nullptr;
}

void Form::focusTo(Control* c) {
    if (c == focus_) return;
    Control* old = focus_;
    focus_ = c;
    if (old && old->LostFocus) old->LostFocus();
    if (c && c->GotFocus) c->GotFocus();
    changed();
}

}  // namespace tv
