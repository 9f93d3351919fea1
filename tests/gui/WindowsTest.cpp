// The Qt windows, built offscreen over a whole program on virtual time: every control of the models
// has its widget, and a click on a widget reaches its model as the operator's gesture.

#include "platform/QtDialogs.h"
#include "support/TestStation.h"
#include "windows/qt/Windows.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");

class Gui : public ::testing::Test {
protected:
    void SetUp() override {
        st.preset(G, QStringLiteral("Radio"), QStringLiteral("IC-756PRO"));
        st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(G, QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
        windows = std::make_unique<Windows>(st.p().main, st.p().config, st.p().messages, st.p().sequenceEditor);
        st.p().main.Show();
        st.m().queue().InitializeXcvrCmdBuffer();
    }
    void TearDown() override {
        windows.reset();
        st.stop();
    }
    template <class T>
    T* widget(const Control& c) {
        return qobject_cast<T*>(windows->binder().widgetOf(c));
    }
    // The codes of the records waiting in the queue, in order.
    std::vector<int> queued() {
        std::vector<int> codes;
        for (const XcvrCmd& c : st.m().queue().queued()) codes.push_back(c.theCmd);
        return codes;
    }
    TestStation st;
    std::unique_ptr<Windows> windows;
};

TEST_F(Gui, EveryControlOfEveryWindowHasAWidget) {
    int checked = 0;
    for (FormWindow* w : windows->all())
        for (Control* c : w->form().controls()) {
            if (dynamic_cast<Timer*>(c)) continue;
            EXPECT_NE(windows->binder().widgetOf(*c), nullptr) << w->form().name().toStdString() << "."
                                                             << c->fullName().toStdString();
            ++checked;
        }
    EXPECT_GT(checked, 150);
    EXPECT_EQ(windows->window(QStringLiteral("KavMain"))->windowTitle(), st.p().main.caption());
}

TEST_F(Gui, ClicksReachTheModelsAndTheModelsRedrawTheWidgets) {
    // PTT on: the radio is keyed through the queue and both frames say so.
    widget<QAbstractButton>(st.p().main.PTTonCmd)->click();
    EXPECT_EQ(queued(), (std::vector<int>{XcvrCmdPTT}));
    EXPECT_EQ(st.p().main.PTTFrame.caption(), QStringLiteral("PTT: Transmitting"));
    EXPECT_EQ(widget<QGroupBox>(st.p().main.PTTFrame)->title(), QStringLiteral("PTT: Transmitting"));
    EXPECT_EQ(st.p().config.PTTFrame.caption(), QStringLiteral("PTT: Transmitting"));
    widget<QAbstractButton>(st.p().main.PTTOffCmd)->click();
    EXPECT_EQ(widget<QGroupBox>(st.p().main.PTTFrame)->title(), QStringLiteral("PTT"));

    // Split: the operator's click sends it with the other receiver; a report sets the box under its
    // flag and sends nothing back.
    st.m().queue().InitializeXcvrCmdBuffer();
    widget<QCheckBox>(st.p().main.SplitBox)->click();
    EXPECT_TRUE(st.p().main.SplitBox.checked());
    EXPECT_EQ(queued(), (std::vector<int>{XcvrCmdSplit, XcvrCmdVFOB, XcvrCmdWait, XcvrCmdRequestFreq, XcvrCmdWait,
                                          XcvrCmdRequestMode}));
    st.m().queue().InitializeXcvrCmdBuffer();
    st.m().SetControlFlag(FlagSplitBox, true);
    st.p().main.SplitBox.setChecked(false);
    EXPECT_TRUE(queued().empty());
    EXPECT_FALSE(widget<QCheckBox>(st.p().main.SplitBox)->isChecked());

    // A mode button sends "Set Mode"; a mode the radio reports moves the button and sends nothing.
    st.m().queue().InitializeXcvrCmdBuffer();
    auto* cw = widget<QAbstractButton>(st.p().main.ModeSel[ModeCW]);
    cw->click();
    EXPECT_EQ(queued(), (std::vector<int>{XcvrCmdMode}));
    EXPECT_EQ(CommandName(queued().front()), QStringLiteral("Set Mode"));
    st.m().queue().InitializeXcvrCmdBuffer();
    st.m().state().UpdateXcvrMode(ModeUSB);
    EXPECT_TRUE(widget<QAbstractButton>(st.p().main.ModeSel[ModeUSB])->isChecked());
    EXPECT_FALSE(cw->isChecked());
    EXPECT_TRUE(queued().empty());

    // "A = B" alone asks for no interrogation.
    widget<QAbstractButton>(st.p().main.VFOEqualCmd)->click();
    EXPECT_EQ(queued(), (std::vector<int>{XcvrCmdVFOEqual}));
}

TEST_F(Gui, TheConfigurationWindowOpensAndClosingItOnlyHidesIt) {
    widget<QAbstractButton>(st.p().main.ConfigCmd)->click();
    FormWindow* config = windows->window(QStringLiteral("KavConfig"));
    EXPECT_TRUE(st.p().config.visible());
    EXPECT_TRUE(config->isVisible());
    config->close();
    EXPECT_FALSE(st.p().config.visible());
    EXPECT_FALSE(st.p().unloaded());
    // A text typed while the window is shown is stored at once.
    st.p().config.Show();
    st.p().config.Address.setText(QStringLiteral("5D"));
    st.loop.runPosted();
    EXPECT_EQ(st.stored(G, QStringLiteral("RadioId")), QStringLiteral("5D"));
    EXPECT_EQ(widget<QLineEdit>(st.p().config.Address)->text(), QStringLiteral("5D"));
}

TEST_F(Gui, F4TransmitsWithoutChangingThePttFrame) {
    int key = kKeyF4;
    st.p().main.KeyDown(key, 0);
    EXPECT_EQ(queued(), (std::vector<int>{XcvrCmdPTT}));
    EXPECT_EQ(st.p().main.PTTFrame.caption(), QStringLiteral("PTT"));
}

// The operator selects the frequency (all of it, or a word by a double-click) and types over it, while
// the radio goes on reporting: the new frequency is what reaches the radio.
TEST_F(Gui, TypingOverASelectedFrequencyReplacesIt) {
    auto report = [this](const char* hex) {
        st.serial()->feed(QByteArray::fromHex(hex));
        st.loop.runPosted();
    };
    report("FEFEE05C030000051400FD");  // 14,050.00 kHz
    auto* box = widget<QLineEdit>(st.p().main.FreqDisplay);
    ASSERT_NE(box, nullptr);
    ASSERT_EQ(box->text(), QStringLiteral("14,050.00"));
    box->selectAll();  // what Ctrl+A or a triple click leaves in the editor
    QTest::keyClicks(box, QStringLiteral("70"));
    report("FEFEE05C030000051400FD");  // the same frequency polled again leaves the digits alone
    QTest::keyClicks(box, QStringLiteral("10.5"));
    EXPECT_EQ(box->text(), QStringLiteral("7010.5"));
    st.serial()->written.clear();
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_DOUBLE_EQ(st.m().state().RadioFreq, 7010.5);
    st.loop.advance(st.m().queue().XcvrCmdTimer.Interval());
    EXPECT_EQ(st.serial()->written, QByteArray::fromHex("FEFE5CE0050005010700FD"));
    EXPECT_EQ(box->text(), QStringLiteral("7,010.50"));
    // A part selected with the mouse is replaced, the rest stays.
    box->setSelection(0, 1);
    QTest::keyClicks(box, QStringLiteral("1"));
    EXPECT_EQ(box->text(), QStringLiteral("1,010.50"));
}

}  // namespace
}  // namespace tv::test

namespace tv::test {
namespace {

// A notice that comes again while it is up is counted into the box on screen, not stacked as another
// modal loop inside it; a question is always asked.
TEST(QtBoxes, ARepeatedNoticeIsCountedIntoTheBoxAlreadyUp) {
    QtDialogs dialogs;
    int repeatsSeen = 0;
    QString info;
    QTimer::singleShot(0, [&] {
        for (int i = 0; i < 1000; ++i)
            EXPECT_EQ(dialogs.messageBox(QStringLiteral("transceiver command buffer overflow"), QStringLiteral("Tolvane")),
                      MsgAnswer::Ok);
        repeatsSeen = dialogs.repeatsOf(QStringLiteral("transceiver command buffer overflow"), QStringLiteral("Tolvane"));
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            info = box->informativeText();
            box->accept();
        }
    });
    EXPECT_EQ(dialogs.messageBox(QStringLiteral("transceiver command buffer overflow"), QStringLiteral("Tolvane")),
              MsgAnswer::Ok);
    EXPECT_EQ(repeatsSeen, 1000);
    EXPECT_EQ(info, QStringLiteral("(1001 times)"));
    EXPECT_EQ(dialogs.repeatsOf(QStringLiteral("transceiver command buffer overflow"), QStringLiteral("Tolvane")), 0);
}

}  // namespace
}  // namespace tv::test
