// The memory bank pane of the main window, the Memories tab of the configuration window and the notes
// editor, drawn with Qt over their form models.

#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "forms/MemoryNotes.h"
#include "windows/qt/Windows.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace tv {

namespace {

// The column heads of the bank answer a click (they switch between notes and frequencies).
class LabelClick : public QObject {
public:
    LabelClick(Label& l, QLabel* w) : QObject(w), l_(l) { w->setCursor(Qt::PointingHandCursor); }
    bool eventFilter(QObject*, QEvent* e) override {
        if (e->type() == QEvent::MouseButtonRelease && l_.Click) {
            l_.Click();
            return true;
        }
        return false;
    }

private:
    Label& l_;
};

}  // namespace

QWidget* Windows::layoutMemoryBank(KavMain& m, FormWindow* win) {
    auto W = [win](Control& c) { return win->w(c); };
    QWidget* frame = W(m.MemoryBankFrame);
    auto* outer = new QVBoxLayout(frame);
    outer->setContentsMargins(8, 6, 8, 6);
    outer->setSpacing(4);
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(4);
    grid->setVerticalSpacing(2);
    // Column heads: the notes head stands over the three middle columns, as the notes do in the rows.
    grid->addWidget(W(m.Label35), 0, 0);
    for (Label* head : {&m.FreqLabel, &m.ModeLabel, &m.FilterMemoryLabel, &m.MemoryNotesLabel}) {
        auto* l = qobject_cast<QLabel*>(W(*head));
        l->installEventFilter(new LabelClick(*head, l));
    }
    grid->addWidget(W(m.FreqLabel), 0, 1);
    grid->addWidget(W(m.ModeLabel), 0, 2);
    grid->addWidget(W(m.FilterMemoryLabel), 0, 3);
    grid->addWidget(W(m.MemoryNotesLabel), 0, 1, 1, 3);
    grid->addWidget(W(m.Label38), 0, 4);
    QWidget* toggle = W(m.ToggleMemoryNotesCmd);
    toggle->setProperty("tvEmptyText", QStringLiteral("Notes \u21C4"));
    if (m.ToggleMemoryNotesCmd.viewChanged) m.ToggleMemoryNotesCmd.viewChanged();
    grid->addWidget(toggle, 0, 5);
    for (int i = 1; i <= KavMain::kMemoryRows; ++i) {
        QWidget* sel = W(m.SelCmd[i]);
        sel->setFixedWidth(44);
        grid->addWidget(sel, i, 0);
        QWidget* freq = W(m.FreqMemoryTextbox[i]);
        freq->setMinimumWidth(110);
        qobject_cast<QLineEdit*>(freq)->setAlignment(Qt::AlignRight);
        grid->addWidget(freq, i, 1);
        grid->addWidget(W(m.ModeMemoryPulldown[i]), i, 2);
        grid->addWidget(W(m.FilterMemoryCombo[i]), i, 3);
        QWidget* notes = W(m.MemoryNotesDisplay[i]);
        notes->setMinimumWidth(300);
        grid->addWidget(notes, i, 1, 1, 3);
        QWidget* store = W(m.StoreCmd[i]);
        store->setFixedWidth(44);
        grid->addWidget(store, i, 4);
    }
    grid->setColumnStretch(1, 2);
    grid->setColumnStretch(2, 1);
    grid->setColumnStretch(3, 1);
    outer->addLayout(grid);
    auto* banks = new QHBoxLayout;
    banks->setSpacing(2);
    for (int b = 0; b <= 9; ++b) {
        QWidget* button = W(m.MemoryBankCmd[b]);
        QFont small = button->font();
        small.setPointSizeF(small.pointSizeF() * 0.85);
        button->setFont(small);
        button->setMinimumWidth(36);
        banks->addWidget(button);
    }
    outer->addLayout(banks);
    return frame;
}

void Windows::layoutMemoriesTab(KavConfig& c, FormWindow* win, QWidget* page) {
    auto place = [win](Control& ctl, QWidget* parent) {
        QWidget* w = win->w(ctl);
        w->setParent(parent);
        return w;
    };
    auto* l = new QVBoxLayout(page);
    QWidget* frame = place(c.Frame7, page);
    auto* grid = new QGridLayout(frame);
    grid->setContentsMargins(8, 6, 8, 6);
    grid->addWidget(place(c.BankColumnLabel, frame), 0, 0);
    grid->addWidget(place(c.TitleColumnLabel, frame), 0, 1);
    for (int b = 0; b <= 9; ++b) {
        grid->addWidget(place(c.BankNumberLabel[b], frame), b + 1, 0);
        QWidget* title = place(c.BankToolTip[b], frame);
        title->setMinimumWidth(280);
        grid->addWidget(title, b + 1, 1);
    }
    grid->setColumnStretch(1, 1);
    l->addWidget(frame);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(place(c.ExportMemoriesCmd, page));
    buttons->addWidget(place(c.ImportMemoriesCmd, page));
    buttons->addStretch(1);
    buttons->addWidget(place(c.MemoryHelpCmd, page));
    l->addLayout(buttons);
    l->addStretch(1);
}

FormWindow* Windows::addMemoryNotes(MemoryNotes& n) {
    auto* win = new FormWindow(n, binder_);
    auto W = [win](Control& c) { return win->w(c); };
    auto* root = new QVBoxLayout(win);
    root->addWidget(W(n.Label1));
    QWidget* notes = W(n.Notes);
    notes->setMinimumWidth(360);
    root->addWidget(notes);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(W(n.DateCmd));
    root->addLayout(row);
    root->addStretch(1);
    for (Control* c : {static_cast<Control*>(&n.Memory), static_cast<Control*>(&n.Offset)}) {
        W(*c)->setProperty("tvUnplaced", true);
        W(*c)->setVisible(false);
    }
    windows_.push_back(win);
    return win;
}

}  // namespace tv
