// The windows' handlers on their models, with no toolkit: what the operator's gestures do, what the
// program's own changes must not do, and what each window keeps or stores.

#include "app/Demo.h"
#include "support/TestStation.h"

#include <QFile>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");

class Handlers : public ::testing::Test {
protected:
    void SetUp() override {
        st.preset(G, QStringLiteral("Radio"), QStringLiteral("IC-756PRO"));
        st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(G, QStringLiteral("Interrogate"), QStringLiteral("F"));
        st.preset(G, QStringLiteral("RadioId"), QStringLiteral("5C"));
        ASSERT_TRUE(st.start());
        m().queue().InitializeXcvrCmdBuffer();
    }
    KavModule& m() { return st.m(); }
    KavMain& w() { return st.p().main; }
    KavConfig& c() { return st.p().config; }
    KavMessages& mon() { return st.p().messages; }
    // A general setting as stored once the loop has turned.
    QString stored(const char* key) {
        st.loop.runPosted();
        return st.stored(G, QString::fromLatin1(key));
    }
    TestStation st;
};

TEST_F(Handlers, TheSharedAreaShowsBanksOrFiltersDevicesAndPtt) {
    KavMainLogic& logic = st.p().mainLogic;
    logic.SetFilterFrameVisibility(true);
    w().MBCmd.click();
    EXPECT_TRUE(w().MemoryBankFrame.visible());
    EXPECT_FALSE(w().FilterFrame.visible());
    EXPECT_FALSE(w().PTTFrame.visible());
    EXPECT_FALSE(w().MBCmd.visible());
    EXPECT_TRUE(w().FDCmd.visible());
    EXPECT_EQ(stored("ShowMemoryBank"), QStringLiteral("True"));
    // The third device stands in the PTT frame's place even in the filter view.
    c().DeviceEnabled[2].setChecked(true);
    w().FDCmd.click();
    EXPECT_TRUE(w().FilterFrame.visible());
    EXPECT_TRUE(w().DeviceFrame[2].visible());
    EXPECT_FALSE(w().DeviceFrame[0].visible());
    EXPECT_FALSE(w().PTTFrame.visible());
    // While the banks are shown the filter frame's wish is kept, not shown.
    w().MBCmd.click();
    logic.SetFilterFrameVisibility(true);
    EXPECT_FALSE(w().FilterFrame.visible());
    EXPECT_TRUE(w().FreqDisplay.hasFocus());
}

TEST_F(Handlers, TheWindowKeepsItsSizeAndGrowsForTheSequenceButtons) {
    w().OriginalFormHeight.setCaption(QStringLiteral("420"));
    w().UserCommandFrame.setBounds(0, 0, 600, 60);
    c().UserCommandsEnableBox.setChecked(true);
    EXPECT_EQ(w().height(), 420);
    c().UserCommandsEnableBox.setChecked(false);
    EXPECT_EQ(w().height(), 420 - 60 - 8);
    EXPECT_EQ(stored("UserCommandsEnabled"), QStringLiteral("F"));
    w().MemoryBankFrame.setBounds(12, 0, 500, 100);
    w().VFOFrame.setBounds(30, 0, 300, 100);
    w().setWindowState(Form::Maximized);
    st.p().mainLogic.UpdateWindow();
    EXPECT_EQ(w().windowState(), Form::Normal);
    EXPECT_EQ(w().width(), 500 + 30 + 12);
}

TEST_F(Handlers, XfcListensToTheOtherVfoWhileHeld) {
    w().XFCCmd.mouseDown(kLeftButton, 0, 0, 0);
    EXPECT_TRUE(st.p().mainLogic.xfcHeld());
    EXPECT_EQ(m().queue().count(), 5);  // exchange, then Wait, frequency, Wait, mode
    w().XFCCmd.mouseUp(kLeftButton, 0, 0, 0);
    EXPECT_FALSE(st.p().mainLogic.xfcHeld());
    EXPECT_EQ(m().queue().count(), 10);
    EXPECT_EQ(m().queue().queued()[5].theCmd, XcvrCmdVFOXch);
}

TEST_F(Handlers, ConfigurationFieldsStoreOnlyWhenTheOperatorChangesThem) {
    // Filling the address while the window is hidden (as the load does) writes nothing back.
    c().Address.setText(QStringLiteral("70"));
    EXPECT_EQ(stored("RadioId"), QStringLiteral("5C"));
    c().Show();
    c().Address.setText(QStringLiteral(" 72 "));
    EXPECT_EQ(stored("RadioId"), QStringLiteral("72"));

    // The poll interval takes digits and backspace only.
    c().PollInterval.setText(QString());
    for (char ch : QByteArray("3x5;0")) c().PollInterval.typeChar(ch);
    EXPECT_EQ(c().PollInterval.text(), QStringLiteral("350"));

    // Interrogation (forced on for a radio with a meter): the operator's click is stored and the
    // interval is available exactly while the box is checked.
    ASSERT_TRUE(c().Interrogation.checked());
    c().Interrogation.userClick();
    EXPECT_FALSE(c().PollInterval.enabled());
    EXPECT_FALSE(c().PollLabel1.enabled());
    EXPECT_EQ(stored("Interrogate"), QStringLiteral("F"));
    c().Interrogation.userClick();
    EXPECT_TRUE(c().PollInterval.enabled());
    EXPECT_EQ(stored("Interrogate"), QStringLiteral("T"));

    c().InitialXcvrCommand.setText(QStringLiteral("'PS1;"));
    c().DebugCheck.setChecked(true);
    EXPECT_TRUE(st.p().common.DebugEnabled());
    EXPECT_EQ(stored("InitialXcvrCommand"), QStringLiteral("'PS1;"));
}

TEST_F(Handlers, TheProgramsChoiceOfRadioDoesNotBringItUpAgainButTheOperatorsDoes) {
    auto starts = [&] { return st.log().count(QStringLiteral("KavModule.UpdateRadio: Start")); };
    const int before = starts();
    m().SetControlFlag(FlagRadioCombo, true);
    c().RadioCombo.setListIndex(SearchCombo(c().RadioCombo, QStringLiteral("TS-2000")));
    EXPECT_EQ(starts(), before);
    EXPECT_FALSE(m().ControlFlag(FlagRadioCombo));
    // Enter in the list brings the shown radio up, even the one already selected.
    int enter = kKeyReturn;
    c().RadioCombo.keyPress(enter);
    EXPECT_EQ(enter, 0);
    EXPECT_EQ(starts(), before + 1);
    EXPECT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood (model unknown)"));
}

TEST_F(Handlers, PortOptionsActOnlyWhileTheWindowIsShownAndLinesFollowTheirButtons) {
    const int opens = st.serial()->openCount;
    c().CommPort[1].setValue(false);
    c().CommPort[1].setValue(true);  // as the load would: hidden, so no reopen
    EXPECT_EQ(st.serial()->openCount, opens);
    c().Show();
    c().CommPort[2].userClick();
    EXPECT_EQ(st.serial()->path(), QStringLiteral("/dev/ttyUSB1"));
    c().DTRButton[1].userClick();
    EXPECT_TRUE(st.serial()->dtr);
    EXPECT_EQ(m().port().DTRControl, 1);
    c().RTSButton[3].userClick();
    EXPECT_TRUE(st.serial()->rtsCts);
    c().Speed[3].userClick();
    EXPECT_EQ(st.serial()->lastSettings.baud, 4800);
}

// Each port number shows its device; another device chosen from the list is kept and opened at once,
// a typed path is kept and opened at Enter; the ninth speed is 115200 and is stored as such.
TEST_F(Handlers, ThePortsDevicesAreChosenOrTypedAndTheFastSpeedIsOffered) {
    EXPECT_EQ(c().CommPortDevice[1].text(), QStringLiteral("/dev/ttyUSB0"));
    EXPECT_EQ(c().CommPortDevice[8].text(), QStringLiteral("/dev/ttyUSB7"));
    c().Show();
    ComboBox& dev1 = c().CommPortDevice[1];
    dev1.AddItem(QStringLiteral("/dev/serial/by-id/usb-radio-if00"));
    dev1.setListIndex(dev1.ListCount() - 1);
    EXPECT_EQ(st.serial()->path(), QStringLiteral("/dev/serial/by-id/usb-radio-if00"));
    EXPECT_EQ(stored("CommPortDevice1"),
              QStringLiteral("/dev/serial/by-id/usb-radio-if00"));
    const int opens = st.serial()->openCount;
    dev1.setText(QStringLiteral("/dev/ttyACM0"));
    EXPECT_EQ(st.serial()->openCount, opens);  // typing doesn't reopen at each key
    int enter = 13;
    dev1.keyPress(enter);
    EXPECT_EQ(st.serial()->path(), QStringLiteral("/dev/ttyACM0"));
    c().Speed[9].userClick();
    EXPECT_EQ(c().Speed[9].caption(), QStringLiteral("115200"));
    EXPECT_EQ(st.serial()->lastSettings.baud, 115200);
    EXPECT_EQ(stored("CommSpeed"), QStringLiteral("115200"));
}

// The demo doesn't fill a monitor nobody looks at: it captures from the first time the operator opens it.
TEST_F(Handlers, TheDemoCapturesFromTheFirstLookAtTheMonitor) {
    mon().CaptureEnabled.setChecked(false);
    captureFromFirstLook(st.p());
    st.loop.advance(5000);
    EXPECT_TRUE(mon().DecimalDisplay.isEmpty());
    st.p().main.MessagesCmd.click();
    EXPECT_TRUE(mon().visible());
    EXPECT_TRUE(mon().CaptureEnabled.checked());
    // A later choice of the operator stands: the second look changes nothing.
    mon().CaptureEnabled.setChecked(false);
    st.p().main.MessagesCmd.click();
    EXPECT_FALSE(mon().CaptureEnabled.checked());
}

TEST_F(Handlers, TheMonitorAsksBeforeLosingUnsavedLinesAndSavesTheViewOnScreen) {
    mon().AppendToMessageDisplay(QStringLiteral("0001@1200.00: 254 254 \r\n"), 0);
    mon().SetUnsavedData(true);
    st.dialogs.answers.push_back(MsgAnswer::No);
    mon().ClrCmd.click();
    EXPECT_TRUE(st.dialogs.boxTexts().contains(QStringLiteral("log contains unsaved data; confirm command to clear it")));
    EXPECT_FALSE(mon().DecimalDisplay.isEmpty());

    const QString file = st.dir.filePath(QStringLiteral("capture"));
    st.dialogs.paths.push_back(file);
    mon().SaveCmd.click();
    QFile saved(file + QStringLiteral(".txt"));
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    EXPECT_EQ(saved.readAll(), QByteArray("0001@1200.00: 254 254 \n"));
    EXPECT_FALSE(mon().UnsavedData);
    st.dialogs.shown.clear();
    mon().ClrCmd.click();  // saved: no question
    EXPECT_TRUE(st.dialogs.shown.empty());
    EXPECT_TRUE(mon().MessageDisplay.text().isEmpty());
    mon().SaveCmd.click();
    EXPECT_EQ(st.dialogs.boxTexts().last(), QStringLiteral("No CI-V messages have been captured"));

    // After an overflow and a clear, capture stays off until the operator checks it.
    mon().CaptureEnabled.setChecked(true);
    mon().AppendToMessageDisplay(QString(32001, QLatin1Char('x')), 0);
    m().DisplayLine(QStringLiteral("p"), QStringLiteral("d"), QStringLiteral("h"), QStringLiteral("a"));
    EXPECT_FALSE(mon().CaptureEnabled.checked());
    EXPECT_FALSE(m().ControlFlag(FlagCaptureEnabled));  // consumed by the box's handler
    st.dialogs.answers.push_back(MsgAnswer::Yes);
    mon().ClrCmd.click();
    EXPECT_FALSE(mon().CaptureEnabled.checked());
    mon().CaptureEnabled.userClick();
    EXPECT_EQ(stored("MessageCapture"), QStringLiteral("T"));
}

TEST_F(Handlers, ANoteWaitsForEnterAndTheViewsSwitchWithoutLosingLines) {
    Note& n = mon().note;
    mon().NoteCmd.click();
    EXPECT_TRUE(n.visible());
    for (char ch : QByteArray("73")) n.NoteText.typeChar(ch);
    EXPECT_FALSE(n.pending());
    int enter = kKeyReturn;
    n.NoteText.keyPress(enter);
    EXPECT_EQ(enter, 0);
    EXPECT_TRUE(n.pending());
    mon().AppendToMessageDisplay(QStringLiteral("dec\r\n"), 0);
    mon().AppendToMessageDisplay(QStringLiteral("hex\r\n"), 1);
    mon().MessageDisplayMode[1].userClick();
    EXPECT_EQ(mon().MessageDisplay.text(), QStringLiteral("hex\r\n"));
    mon().MessageDisplayMode[0].userClick();
    EXPECT_EQ(mon().MessageDisplay.text(), QStringLiteral("dec\r\n"));
    EXPECT_EQ(stored("MessageDisplayMode"), QStringLiteral("0"));
}

// The demo's radio is on one port: the Com tab and its transceiver entry show the same framing.
TEST(DemoStation, TheComTabAndTheTransceiverEntryAgreeOnTheLine) {
    for (const char* model : {"IC-7300", "FT-817"}) {
        TestStation st;
        DemoRadio(*DemoRadio::find(QString::fromLatin1(model)))
            .presetSettings(st.configDir + QStringLiteral("/Tolvane.ini"), QStringLiteral("/dev/null"));
        ASSERT_TRUE(st.start());
        KavConfig& c = st.p().config;
        auto chosen = [](auto& options) {
            for (int i = options.lbound(); i <= options.ubound(); ++i)
                if (options[i].value()) return options[i].caption();
            return QString();
        };
        EXPECT_EQ(c.MultiStop[0].text(), chosen(c.StopBits)) << model;
        EXPECT_EQ(c.MultiWord[0].text(), chosen(c.WordLength)) << model;
    }
}

}  // namespace
}  // namespace tv::test
