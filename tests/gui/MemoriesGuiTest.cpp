// The memory bank pane, its bank buttons, the notes editor and the Memories tab drawn offscreen: each
// widget reaches its model as the operator's gesture, and the model's changes reach the widgets.

#include "forms/MemoryNotes.h"
#include "support/TestStation.h"
#include "windows/qt/Windows.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

class MemoriesGui : public ::testing::Test {
protected:
    void SetUp() override {
        st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QStringLiteral("IC-756PRO"));
        st.preset(QStringLiteral("General"), QStringLiteral("Interrogate"), QStringLiteral("F"));
        st.preset(QStringLiteral("Memory"), QStringLiteral("FreqMemory12"), QStringLiteral("14,025.00"));
        st.preset(QStringLiteral("Memory"), QStringLiteral("ModeMemory12"), QStringLiteral("3"));
        st.preset(QStringLiteral("Memory"), QStringLiteral("MemoryNotes12"), QStringLiteral("DX window"));
        ASSERT_TRUE(st.start());
        windows = std::make_unique<Windows>(st.p().main, st.p().config, st.p().messages, st.p().sequenceEditor);
        windows->addMemoryNotes(st.p().memoryNotes);
        st.p().main.Show();
    }
    void TearDown() override {
        windows.reset();
        st.stop();
    }
    template <class T>
    T* widget(const Control& c) {
        return qobject_cast<T*>(windows->binder().widgetOf(c));
    }
    KavMain& w() { return st.p().main; }
    TestStation st;
    std::unique_ptr<Windows> windows;
};

TEST_F(MemoriesGui, TheBankItsButtonsAndTheNotesEditorReachTheirModels) {
    // "Mem" shows the bank in the shared area.
    widget<QAbstractButton>(w().MBCmd)->click();
    EXPECT_TRUE(w().MemoryBankFrame.visible());
    EXPECT_FALSE(widget<QGroupBox>(w().MemoryBankFrame)->isHidden());
    // Bank 2 by its button: memory 12 on row 2, its note as the recall button's tooltip.
    widget<QAbstractButton>(w().MemoryBankCmd[1])->click();
    EXPECT_EQ(st.p().memories.GetCurrentMemoryBank(), 1);
    EXPECT_EQ(widget<QLineEdit>(w().FreqMemoryTextbox[2])->text(), QStringLiteral("14,025.00"));
    EXPECT_TRUE(widget<QAbstractButton>(w().SelCmd[2])->toolTip().contains(QStringLiteral("DX window")));
    // A mode chosen in the widget is the memory's.
    auto* mode = widget<QComboBox>(w().ModeMemoryPulldown[2]);
    mode->setCurrentIndex(1);
    emit mode->activated(1);
    EXPECT_EQ(st.p().memories.memory(12).mode, int(ModeUSB));

    // A column head switches the pane to the notes.
    QLabel* head = widget<QLabel>(w().FreqLabel);
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(head, &release);
    EXPECT_TRUE(st.m().MemoryNotesShown);
    EXPECT_FALSE(widget<QLineEdit>(w().MemoryNotesDisplay[2])->isHidden());

    // Ctrl-click on the recall button opens the editor (the press's modifiers are the keyboard's, which
    // an offscreen test can't hold down: the press is given to the model); typing in its widget edits
    // the note.
    w().SelCmd[2].mouseDown(kLeftButton, kCtrl, 0, 0);
    w().SelCmd[2].click();
    MemoryNotes& ed = st.p().memoryNotes;
    ASSERT_TRUE(ed.visible());
    FormWindow* edWindow = windows->window(QStringLiteral("MemoryNotes"));
    ASSERT_NE(edWindow, nullptr);
    EXPECT_EQ(edWindow->windowTitle(), QStringLiteral("Tolvane Memory Notes Editor: Memory 12"));
    auto* notes = widget<QLineEdit>(ed.Notes);
    for (QChar ch : QStringLiteral(" <20m>")) {
        QKeyEvent key(QEvent::KeyPress, 0, Qt::NoModifier, QString(ch));
        QCoreApplication::sendEvent(notes, &key);
    }
    EXPECT_EQ(ed.Notes.text(), QStringLiteral("DX window 20m"));
    EXPECT_EQ(widget<QLineEdit>(w().MemoryNotesDisplay[2])->text(), QStringLiteral("DX window 20m"));

    // The Memories tab: a bank title typed there is the bank's caption.
    auto* title = widget<QLineEdit>(st.p().config.BankToolTip[1]);
    title->setText(QStringLiteral("20 m DX"));
    emit title->textEdited(title->text());
    EXPECT_EQ(widget<QGroupBox>(w().MemoryBankFrame)->title(), QStringLiteral("20 m DX"));
}

}  // namespace
}  // namespace tv::test
