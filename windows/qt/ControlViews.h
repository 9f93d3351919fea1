#pragma once
// Qt widgets as views on the form models' controls. A gesture on a widget becomes the same call on
// the control that a program's change would be (so the control raises its event); a change of the
// control redraws the widget with its signals blocked, so the view never echoes a change back.

#include "forms/Controls.h"
#include "forms/Form.h"

#include <QLayout>
#include <QWidget>

#include <map>

class QPlainTextEdit;

namespace tv {

class ViewBinder {
public:
    // Makes the widget of a control, bound both ways; nullptr for controls without one (timers).
    QWidget* make(Control& c, QWidget* parent);
    QWidget* widgetOf(const Control& c) const;
    const std::map<const Control*, QWidget*>& widgets() const { return widgets_; }
    // A multi-line, read-only view of a text box (the message display), appended to cheaply.
    QPlainTextEdit* makeLog(TextBox& t, QWidget* parent);

private:
    std::map<const Control*, QWidget*> widgets_;
};

// The window of a form: its caption, place, size and visibility follow the model; closing asks the
// model, which may refuse (most windows only hide).
class FormWindow : public QWidget {
public:
    FormWindow(Form& form, ViewBinder& binder);
    Form& form() const { return form_; }
    ViewBinder& binder() const { return binder_; }
    // The control's widget, made on first use.
    QWidget* w(Control& c);

protected:
    void closeEvent(QCloseEvent* e) override;
    void keyPressEvent(QKeyEvent* e) override;
    void moveEvent(QMoveEvent* e) override;
    void resizeEvent(QResizeEvent* e) override;
    void changeEvent(QEvent* e) override;
    void syncFromModel();

    Form& form_;
    ViewBinder& binder_;
    bool syncing_ = false;
};

// Tab captions with a keyboard mnemonic each ("&General", "Device &1"), no key taken twice.
QStringList withMnemonics(const QStringList& captions);

// Key codes and modifier masks of the models, from Qt's.
int modelKeyCode(int qtKey);
int modelShift(Qt::KeyboardModifiers m);

// The layout of a frame's group box, made on first use with the windows' margins and spacing.
template <class L>
L* layoutOf(QWidget* frame) {
    if (auto* l = qobject_cast<L*>(frame->layout())) return l;
    auto* l = new L(frame);
    l->setContentsMargins(8, 6, 8, 6);
    l->setSpacing(4);
    return l;
}


}  // namespace tv
