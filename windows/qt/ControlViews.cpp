#include "windows/qt/ControlViews.h"

#include "forms/Grid.h"
#include "windows/qt/GridView.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSet>
#include <QTabBar>

namespace tv {

int modelShift(Qt::KeyboardModifiers m) {
    return (m & Qt::ShiftModifier ? kShift : 0) | (m & Qt::ControlModifier ? kCtrl : 0) |
           (m & Qt::AltModifier ? kAlt : 0);
}

int modelKeyCode(int k) {
    switch (k) {
        case Qt::Key_Backspace: return kKeyBack;
        case Qt::Key_Tab: return kKeyTab;
        case Qt::Key_Return:
        case Qt::Key_Enter: return kKeyReturn;
        case Qt::Key_Escape: return kKeyEscape;
        case Qt::Key_PageUp: return kKeyPageUp;
        case Qt::Key_PageDown: return kKeyPageDown;
        case Qt::Key_End: return kKeyEnd;
        case Qt::Key_Home: return kKeyHome;
        case Qt::Key_Left: return kKeyLeft;
        case Qt::Key_Up: return kKeyUp;
        case Qt::Key_Right: return kKeyRight;
        case Qt::Key_Down: return kKeyDown;
        case Qt::Key_Insert: return kKeyInsert;
        case Qt::Key_Delete: return kKeyDelete;
        default: break;
    }
    if (k >= Qt::Key_F1 && k <= Qt::Key_F12) return kKeyF1 + (k - Qt::Key_F1);
    if (k >= Qt::Key_A && k <= Qt::Key_Z) return k;  // letters: same codes as the upper-case characters
    if (k >= Qt::Key_0 && k <= Qt::Key_9) return k;
    return 0;
}

QStringList withMnemonics(const QStringList& captions) {
    QSet<QChar> used;
    QStringList out;
    for (const QString& caption : captions) {
        QString text = caption;
        text.replace(QLatin1Char('&'), QStringLiteral("&&"));  // a caption's own "&" is shown, not a key
        // A number tells pages of one kind apart ("Device 0", "Device 1"); otherwise the first letter
        // of a word, then any letter, that no earlier caption took.
        int at = -1;
        auto free = [&](int i) { return text[i].isLetterOrNumber() && !used.contains(text[i].toLower()); };
        for (int i = 0; i < text.size() && at < 0; ++i)
            if (text[i].isDigit() && free(i)) at = i;
        for (int i = 0; i < text.size() && at < 0; ++i)
            if ((i == 0 || text[i - 1] == QLatin1Char(' ')) && free(i)) at = i;
        for (int i = 0; i < text.size() && at < 0; ++i)
            if (free(i) && text[i] != QLatin1Char('&')) at = i;
        if (at >= 0) {
            used.insert(text[at].toLower());
            text.insert(at, QLatin1Char('&'));
        }
        out << text;
    }
    return out;
}

namespace {

// Colours of the models are 0xBBGGRR.
QColor qcolor(unsigned c) { return QColor(int(c & 0xFF), int((c >> 8) & 0xFF), int((c >> 16) & 0xFF)); }

void syncCommon(Control& c, QWidget* w) {
    w->setToolTip(c.toolTip());
    w->setEnabled(c.enabled());
    // A control the layout has no place for stays hidden whatever the model says.
    const bool want = c.visible() && !w->property("tvUnplaced").toBool();
    if (w->isVisibleTo(w->parentWidget()) != want) w->setVisible(want);
    if (c.foreColor() != 0 || w->property("tvColoured").toBool()) {
        QPalette p = w->palette();
        p.setColor(QPalette::WindowText, c.foreColor() ? qcolor(c.foreColor()) : QApplication::palette().color(QPalette::WindowText));
        w->setPalette(p);
        w->setProperty("tvColoured", c.foreColor() != 0);
    }
}

// Keys typed into a text box reach the model: KeyDown first, then the character through KeyPress.
class KeyFilter : public QObject {
public:
    KeyFilter(TextBox& t, QLineEdit* e) : QObject(e), t_(t), e_(e) {}
    bool eventFilter(QObject*, QEvent* ev) override {
        if (ev->type() == QEvent::FocusIn) {
            if (!t_.hasFocus()) t_.SetFocus();
            return false;
        }
        if (ev->type() != QEvent::KeyPress) return false;
        auto* k = static_cast<QKeyEvent*>(ev);
        // The caret and selection as the operator left them, both read before either is handed over:
        // handing over the start redraws the editor, which drops its selection.
        const bool selected = e_->hasSelectedText();
        const int start = selected ? e_->selectionStart() : e_->cursorPosition();
        const int length = selected ? int(e_->selectedText().size()) : 0;
        t_.setSelStart(start);
        t_.setSelLength(length);
        int code = modelKeyCode(k->key());
        if (code) {
            const bool ownHandler = bool(t_.KeyDown);
            t_.keyDown(code, modelShift(k->modifiers()));
            if (code == 0) return true;
            // A key without a character that the box handles itself goes no further (the window's
            // own key map would act on it a second time). A function key its handler left alone (it
            // says it acted by clearing the code) goes on to the window's key map: F4 keys from any box.
            const bool functionKey = code >= kKeyF1 && code <= kKeyF12;
            if (functionKey) return false;
            if (ownHandler && k->text().isEmpty() && !(code >= kKeyPageUp && code <= kKeyDown)) return true;
        }
        // Keys that only move the caret stay with the editor.
        if (code >= kKeyPageUp && code <= kKeyDown && code != 0) return false;
        if (k->key() == Qt::Key_Home || k->key() == Qt::Key_End) return false;
        const QString text = k->text();
        if (text.size() == 1 && (text[0].unicode() >= 32 || text[0] == QLatin1Char('\r') || text[0] == QChar(8))) {
            int ascii = text[0] == QLatin1Char('\r') ? 13 : text[0].unicode();
            if (!t_.locked())
                t_.typeChar(ascii);
            else
                t_.keyPress(ascii);
            return true;
        }
        if (k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter) {
            int ascii = 13;
            t_.typeChar(ascii);
            return true;
        }
        if (k->key() == Qt::Key_Backspace) {
            t_.typeChar(8);
            return true;
        }
        return k->key() != Qt::Key_Delete ? false : false;
    }

private:
    TextBox& t_;
    QLineEdit* e_;
};

// A picture box: draws the model's shapes on its scale, and hands mouse gestures back in that scale.
class PictureView : public QWidget {
public:
    PictureView(PictureBox& p, QWidget* parent) : QWidget(parent), p_(p) {
        setMouseTracking(false);
        // It fills its whole area: what lies behind it (the meter's frame) is not painted again.
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter g(this);
        g.fillRect(rect(), qcolor(p_.backColor()));
        const double sx = width() / (p_.scaleWidth() > 0 ? p_.scaleWidth() : 1);
        const double sy = height() / (p_.scaleHeight() > 0 ? p_.scaleHeight() : 1);
        for (const auto& s : p_.shapes()) {
            const QRectF r(QPointF(s.x1 * sx, s.y1 * sy), QPointF(s.x2 * sx, s.y2 * sy));
            g.setPen(qcolor(s.color));
            switch (s.kind) {
                case PictureBox::Shape::Line: g.drawLine(r.topLeft(), r.bottomRight()); break;
                case PictureBox::Shape::Box: g.drawRect(r.normalized()); break;
                case PictureBox::Shape::FilledBox: g.fillRect(r.normalized(), qcolor(s.color)); break;
                case PictureBox::Shape::Text: g.drawText(r.topLeft() + QPointF(0, 10), s.text); break;
            }
        }
    }
    QPointF scaled(const QPointF& p) const {
        return {p.x() * p_.scaleWidth() / std::max(1, width()), p.y() * p_.scaleHeight() / std::max(1, height())};
    }
    int button(Qt::MouseButton b) const {
        return b == Qt::RightButton ? kRightButton : b == Qt::MiddleButton ? kMiddleButton : kLeftButton;
    }
    void mousePressEvent(QMouseEvent* e) override {
        const QPointF p = scaled(e->position());
        p_.mouseDown(button(e->button()), modelShift(e->modifiers()), p.x(), p.y());
    }
    void mouseMoveEvent(QMouseEvent* e) override {
        const QPointF p = scaled(e->position());
        p_.mouseMove(e->buttons() & Qt::LeftButton ? kLeftButton : 0, modelShift(e->modifiers()), p.x(), p.y());
    }
    void mouseReleaseEvent(QMouseEvent* e) override {
        const QPointF p = scaled(e->position());
        p_.mouseUp(button(e->button()), modelShift(e->modifiers()), p.x(), p.y());
    }

private:
    PictureBox& p_;
};

// One maker per kind of control: the widget, its redraw from the model, and its events to the model.
QWidget* makeLabel(Label& control, QWidget* parent) {
    Label* l = &control;
    auto* w = new QLabel(parent);
    auto sync = [l, w] {
        w->setText(l->caption());
        syncCommon(*l, w);
    };
    l->viewChanged = sync;
    sync();
    return w;
}

QWidget* makeFrame(Frame& control, QWidget* parent) {
    Frame* f = &control;
    auto* w = new QGroupBox(parent);
    auto sync = [f, w] {
        w->setTitle(f->caption());
        syncCommon(*f, w);
    };
    f->viewChanged = sync;
    sync();
    return w;
}

QWidget* makeCommandButton(CommandButton& control, QWidget* parent) {
    CommandButton* b = &control;
    auto* w = new QPushButton(parent);
    w->setFocusPolicy(Qt::NoFocus);
    QObject::connect(w, &QPushButton::pressed, w, [b] {
        b->mouseDown(kLeftButton, modelShift(QApplication::keyboardModifiers()), 0, 0);
    });
    QObject::connect(w, &QPushButton::released, w, [b] {
        b->mouseUp(kLeftButton, modelShift(QApplication::keyboardModifiers()), 0, 0);
    });
    QObject::connect(w, &QPushButton::clicked, w, [b] { b->click(); });
    // A button drawn as a symbol has no caption: the view shows its own text for it.
    auto sync = [b, w] {
        w->setText(b->caption().isEmpty() ? w->property("tvEmptyText").toString() : b->caption());
        syncCommon(*b, w);
    };
    b->viewChanged = sync;
    sync();
    return w;
}

QWidget* makeCheckBox(CheckBox& control, QWidget* parent) {
    CheckBox* x = &control;
    auto* w = new QCheckBox(parent);
    w->setFocusPolicy(Qt::NoFocus);
    auto sync = [x, w] {
        QSignalBlocker block(w);
        w->setText(x->caption());
        w->setTristate(x->value() == CheckBox::Grayed);
        w->setCheckState(x->value() == CheckBox::Checked   ? Qt::Checked
                         : x->value() == CheckBox::Grayed ? Qt::PartiallyChecked
                                                          : Qt::Unchecked);
        syncCommon(*x, w);
    };
    QObject::connect(w, &QCheckBox::clicked, w, [x, sync] {
        x->userClick();
        sync();
    });
    x->viewChanged = sync;
    sync();
    return w;
}

QWidget* makeOptionButton(OptionButton& control, QWidget* parent) {
    OptionButton* o = &control;
    auto* w = new QRadioButton(parent);
    w->setAutoExclusive(false);  // the model's group decides
    w->setFocusPolicy(Qt::NoFocus);
    auto sync = [o, w] {
        QSignalBlocker block(w);
        w->setText(o->caption());
        w->setChecked(o->value());
        syncCommon(*o, w);
    };
    QObject::connect(w, &QRadioButton::clicked, w, [o, sync] {
        o->userClick();
        sync();
    });
    // The others of the group are cleared without events: redraw them too.
    o->viewChanged = sync;
    sync();
    return w;
}

QWidget* makeTextBox(TextBox& control, QWidget* parent) {
    TextBox* t = &control;
    auto* w = new QLineEdit(parent);
    w->installEventFilter(new KeyFilter(*t, w));
    auto sync = [t, w] {
        QSignalBlocker block(w);
        if (w->text() != t->text()) w->setText(t->text());
        w->setReadOnly(t->locked());
        w->setEchoMode(t->masked() ? QLineEdit::Password : QLineEdit::Normal);
        if (t->selLength() > 0)
            w->setSelection(t->selStart(), t->selLength());
        else
            w->setCursorPosition(t->selStart());
        syncCommon(*t, w);
    };
    // Edits other than typed keys (paste, cut) are handed over as a change of the text.
    QObject::connect(w, &QLineEdit::textEdited, w, [t, w] { t->setText(w->text()); });
    t->viewChanged = sync;
    sync();
    return w;
}

QWidget* makeComboBox(ComboBox& control, QWidget* parent) {
    ComboBox* cb = &control;
    auto* w = new QComboBox(parent);
    w->setEditable(cb->editable());
    w->setFocusPolicy(Qt::NoFocus);
    auto sync = [cb, w] {
        QSignalBlocker block(w);
        const QStringList items = cb->items();
        QStringList have;
        for (int i = 0; i < w->count(); ++i) have << w->itemText(i);
        if (have != items) {
            w->clear();
            w->addItems(items);
        }
        w->setCurrentIndex(cb->listIndex());
        if (cb->editable()) w->setEditText(cb->text());
        syncCommon(*cb, w);
    };
    QObject::connect(w, qOverload<int>(&QComboBox::activated), w, [cb, sync](int i) {
        cb->setListIndex(i);
        sync();
    });
    if (cb->editable())
        QObject::connect(w, &QComboBox::editTextChanged, w, [cb](const QString& s) { cb->setText(s); });
    cb->viewChanged = sync;
    sync();
    return w;
}

QWidget* makeScrollBar(ScrollBar& control, QWidget* parent) {
    ScrollBar* s = &control;
    auto* w = new QScrollBar(Qt::Horizontal, parent);
    w->setFocusPolicy(Qt::NoFocus);
    auto sync = [s, w] {
        QSignalBlocker block(w);
        w->setRange(s->min(), s->max());
        w->setSingleStep(s->smallChange());
        w->setPageStep(s->largeChange());
        w->setValue(s->value());
        syncCommon(*s, w);
    };
    // Dragging raises Scroll as the thumb moves; the value is set (Change) at release or on a step.
    QObject::connect(w, &QScrollBar::sliderMoved, w, [s](int v) { s->dragTo(v); });
    QObject::connect(w, &QScrollBar::sliderReleased, w, [s, w] { s->setValue(w->value()); });
    QObject::connect(w, &QScrollBar::actionTriggered, w, [s, w](int action) {
        if (action != QAbstractSlider::SliderMove) s->setValue(w->sliderPosition());
    });
    s->viewChanged = sync;
    sync();
    return w;
}

QWidget* makePictureBox(PictureBox& control, QWidget* parent) {
    PictureBox* p = &control;
    auto* w = new PictureView(*p, parent);
    p->viewChanged = [p, w] {
        syncCommon(*p, w);
        w->update();
    };
    syncCommon(*p, w);
    return w;
}

QWidget* makeTabStrip(TabStrip& control, QWidget* parent) {
    TabStrip* tabs = &control;
    auto* w = new QTabBar(parent);
    for (int i = 0; i < tabs->count(); ++i) w->addTab(tabs->tabCaption(i));
    auto sync = [tabs, w] {
        QSignalBlocker block(w);
        QStringList captions;
        for (int i = 0; i < tabs->count(); ++i) captions << tabs->tabCaption(i);
        captions = withMnemonics(captions);
        for (int i = 0; i < tabs->count(); ++i) w->setTabText(i, captions[i]);
        w->setCurrentIndex(tabs->tab());
        syncCommon(*tabs, w);
    };
    QObject::connect(w, &QTabBar::currentChanged, w, [tabs](int i) { tabs->setTab(i); });
    tabs->viewChanged = sync;
    sync();
    return w;
}

}  // namespace

QWidget* ViewBinder::widgetOf(const Control& c) const {
    const auto it = widgets_.find(&c);
    return it == widgets_.end() ? nullptr : it->second;
}

QPlainTextEdit* ViewBinder::makeLog(TextBox& t, QWidget* parent) {
    auto* e = new QPlainTextEdit(parent);
    e->setReadOnly(true);
    e->setLineWrapMode(QPlainTextEdit::NoWrap);
    QFont mono(QStringLiteral("Monospace"));
    mono.setStyleHint(QFont::TypeWriter);
    e->setFont(mono);
    auto shownLength = std::make_shared<qsizetype>(0);
    auto sync = [&t, e, shownLength] {
        const QString& now = t.text();
        // Appending costs the new line only; anything else (a clear, another view) redraws.
        if (t.lastChangeAppended() && now.size() > *shownLength && *shownLength > 0) {
            QString tail = now.mid(*shownLength);
            if (tail.endsWith(QLatin1String("\r\n"))) tail.chop(2);
            tail.replace(QLatin1String("\r\n"), QLatin1String("\n"));
            if (tail.startsWith(QLatin1Char('\n'))) tail.remove(0, 1);
            e->appendPlainText(tail);
        } else if (now.size() != *shownLength || !t.lastChangeAppended()) {
            QString all = now;
            if (all.endsWith(QLatin1String("\r\n"))) all.chop(2);
            all.replace(QLatin1String("\r\n"), QLatin1String("\n"));
            e->setPlainText(all);
        }
        *shownLength = now.size();
        syncCommon(t, e);
    };
    t.viewChanged = sync;
    sync();
    widgets_[&t] = e;
    return e;
}

QWidget* ViewBinder::make(Control& c, QWidget* parent) {
    if (QWidget* existing = widgetOf(c)) return existing;
    QWidget* made = nullptr;
    if (auto* x = dynamic_cast<Label*>(&c))
        made = makeLabel(*x, parent);
    else if (auto* x = dynamic_cast<Frame*>(&c))
        made = makeFrame(*x, parent);
    else if (auto* x = dynamic_cast<CommandButton*>(&c))
        made = makeCommandButton(*x, parent);
    else if (auto* x = dynamic_cast<CheckBox*>(&c))
        made = makeCheckBox(*x, parent);
    else if (auto* x = dynamic_cast<OptionButton*>(&c))
        made = makeOptionButton(*x, parent);
    else if (auto* x = dynamic_cast<TextBox*>(&c))
        made = makeTextBox(*x, parent);
    else if (auto* x = dynamic_cast<ComboBox*>(&c))
        made = makeComboBox(*x, parent);
    else if (auto* x = dynamic_cast<ScrollBar*>(&c))
        made = makeScrollBar(*x, parent);
    else if (auto* x = dynamic_cast<PictureBox*>(&c))
        made = makePictureBox(*x, parent);
    else if (auto* x = dynamic_cast<Grid*>(&c))
        made = makeGridView(*x, parent);
    else if (auto* x = dynamic_cast<TabStrip*>(&c))
        made = makeTabStrip(*x, parent);
    if (made) {
        made->setObjectName(c.fullName());
        widgets_[&c] = made;
    }
    return made;
}

FormWindow::FormWindow(Form& form, ViewBinder& binder) : QWidget(nullptr), form_(form), binder_(binder) {
    setObjectName(form.name());
    form_.viewChanged = [this] { syncFromModel(); };
    form_.raiseRequested = [this] {
        raise();
        activateWindow();
    };
}

QWidget* FormWindow::w(Control& c) { return binder_.make(c, this); }

void FormWindow::syncFromModel() {
    if (syncing_) return;
    syncing_ = true;
    setWindowTitle(form_.caption());
    if (form_.width() > 0 && form_.height() > 0 && (width() != form_.width() || height() != form_.height()))
        resize(form_.width(), form_.height());
    if (pos() != QPoint(form_.left(), form_.top())) move(form_.left(), form_.top());
    const Qt::WindowStates want = form_.windowState() == Form::Minimized   ? Qt::WindowMinimized
                                  : form_.windowState() == Form::Maximized ? Qt::WindowMaximized
                                                                           : Qt::WindowNoState;
    if (windowState() != want) setWindowState(want);
    if (isVisible() != form_.visible()) setVisible(form_.visible());
    if (Control* c = form_.activeControl())
        if (QWidget* fw = binder_.widgetOf(*c); fw && isVisible() && !fw->hasFocus() && fw->focusPolicy() != Qt::NoFocus)
            fw->setFocus();
    syncing_ = false;
}

void FormWindow::closeEvent(QCloseEvent* e) {
    // The model decides: most windows refuse and hide; the main window unloads the program.
    form_.userClose();
    if (form_.visible())
        e->ignore();
    else
        e->accept();
}

void FormWindow::keyPressEvent(QKeyEvent* e) {
    int code = modelKeyCode(e->key());
    if (code && form_.KeyDown) {
        form_.KeyDown(code, modelShift(e->modifiers()));
        return;
    }
    QWidget::keyPressEvent(e);
}

void FormWindow::moveEvent(QMoveEvent* e) {
    QWidget::moveEvent(e);
    if (syncing_ || !isVisible()) return;
    syncing_ = true;
    form_.setLeft(x());
    form_.setTop(y());
    syncing_ = false;
}

void FormWindow::resizeEvent(QResizeEvent* e) {
    QWidget::resizeEvent(e);
    if (syncing_ || !isVisible()) return;
    syncing_ = true;
    form_.setWidth(width());
    form_.setHeight(height());
    syncing_ = false;
    if (form_.Resize) form_.Resize();
}

void FormWindow::changeEvent(QEvent* e) {
    QWidget::changeEvent(e);
    if (e->type() != QEvent::WindowStateChange || syncing_) return;
    syncing_ = true;
    form_.setWindowState(isMinimized() ? Form::Minimized : isMaximized() ? Form::Maximized : Form::Normal);
    syncing_ = false;
    if (form_.Resize) form_.Resize();
}

}  // namespace tv
