// Coming up and going down: what a first start shows, what shutdown writes, and what a second start
// reads back; and the reactions to stored values that can't be right.

#include "support/TestStation.h"

#include <QFile>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");

TEST(Startup, FirstStartWithAnEmptyStoreSelectsNothingAndSendsNothing) {
    TestStation st;
    ASSERT_TRUE(st.start());
    EXPECT_EQ(st.m().radio().RadioIndex, -1);
    EXPECT_TRUE(st.p().main.caption().contains(QStringLiteral(" [no Com port selected]")));
    EXPECT_EQ(st.p().module.queue().XcvrCmdTimer.Interval(), 200);
    EXPECT_TRUE(st.p().main.ClockTimer.Enabled());
    st.loop.advance(5000);
    EXPECT_TRUE(st.devices.empty());  // no port was even opened
    EXPECT_TRUE(st.dialogs.boxTexts().isEmpty());
    // The start-up order is in the log.
    const QString log = st.log();
    const QStringList order = {QStringLiteral("KavComm.Form_Load"),
                               QStringLiteral("KavMain.Form_load: forms loaded"),
                               QStringLiteral("KavModule.Initialize: start"),
                               QStringLiteral("KavModule.Initialize: radio info loaded"),
                               QStringLiteral("KavModule.Initialize: commport initialized"),
                               QStringLiteral("KavModule.Initialize: radix selection complete"),
                               QStringLiteral("KavModule.Initialize: radio setting = "),
                               QStringLiteral("KavModule.Initialize: complete"),
                               QStringLiteral("KavMain.Form_load: KavModule intialized"),
                               QStringLiteral("KavMain.Form_load: DDEServerModule initialized")};
    qsizetype at = 0;
    for (const QString& line : order) {
        const qsizetype found = log.indexOf(line, at);
        EXPECT_GE(found, 0) << line.toStdString();
        if (found >= 0) at = found;
    }
}

TEST(Startup, ShutdownWritesTheSettingsAndASecondStartReadsThemBack) {
    TestStation st;
    ASSERT_TRUE(st.start());
    st.p().config.PollInterval.setText(QStringLiteral("350"));
    st.m().port().DTRControl = 2;
    st.m().port().RTSControl = 3;
    st.p().config.DebugCheck.setChecked(true);
    st.stop();
    EXPECT_EQ(st.stored(G, QStringLiteral("InterrogateInterval")), QStringLiteral("350"));
    EXPECT_EQ(st.stored(G, QStringLiteral("DTR")), QStringLiteral("2"));
    EXPECT_EQ(st.stored(G, QStringLiteral("RTS")), QStringLiteral("3"));
    EXPECT_EQ(st.stored(G, QStringLiteral("Debug")), QStringLiteral("1"));
    EXPECT_NE(st.stored(G, QStringLiteral("RestoreModeFilter")), QStringLiteral("<none>"));
    EXPECT_NE(st.stored(QStringLiteral("Windows"), QStringLiteral("KavMainLeft")), QStringLiteral("<none>"));

    ASSERT_TRUE(st.start());
    EXPECT_EQ(st.p().config.PollInterval.text(), QStringLiteral("350"));
    EXPECT_EQ(st.p().module.queue().XcvrCmdTimer.Interval(), 350);
    EXPECT_TRUE(st.p().config.DTRButton[2].value());
    EXPECT_TRUE(st.p().config.RTSButton[3].value());
    EXPECT_TRUE(st.p().config.DebugCheck.checked());
    EXPECT_TRUE(st.p().common.DebugEnabled());
}

TEST(Startup, StoredRadioThatLeftTheCatalogueSelectsNothingAndIsKept) {
    TestStation st;
    st.preset(G, QStringLiteral("Radio"), QStringLiteral("IC-9999"));
    ASSERT_TRUE(st.start());
    EXPECT_EQ(st.m().radio().RadioIndex, -1);
    // Said, not polled in silence.
    ASSERT_EQ(st.dialogs.boxTexts().size(), 1);
    EXPECT_TRUE(st.dialogs.boxTexts()[0].startsWith(QStringLiteral("The radio \"IC-9999\" chosen before is not in Radios.txt")));
    st.stop();
    EXPECT_EQ(st.stored(G, QStringLiteral("Radio")), QStringLiteral("IC-9999"));
}

TEST(Startup, StoredRadioIsBroughtUpAndItsPortOpened) {
    TestStation st;
    st.preset(G, QStringLiteral("Radio"), QStringLiteral("TS-2000"));
    st.preset(G, QStringLiteral("CommPort"), QStringLiteral("3"));
    st.preset(G, QStringLiteral("CommPortDevice3"), QStringLiteral("/dev/pts/77"));
    ASSERT_TRUE(st.start());
    ASSERT_GE(st.m().radio().RadioIndex, 0);
    EXPECT_EQ(st.p().config.RadioCombo.text(), QStringLiteral("TS-2000"));
    ASSERT_NE(st.serial(), nullptr);
    EXPECT_TRUE(st.serial()->isOpen());
    EXPECT_EQ(st.serial()->path(), QStringLiteral("/dev/pts/77"));
    // 9600 baud, no parity, 8 bits, 2 stop bits unless told otherwise.
    EXPECT_EQ(st.serial()->lastSettings.baud, 9600);
    EXPECT_EQ(st.serial()->lastSettings.parity, 'N');
    EXPECT_EQ(st.serial()->lastSettings.dataBits, 8);
    EXPECT_EQ(st.serial()->lastSettings.stopBits, 2);
    EXPECT_FALSE(st.p().main.caption().contains(QStringLiteral("no Com port")));
}

TEST(Startup, BadStoredPortSpeedAndIntervalGetTheirReactions) {
    TestStation st;
    st.preset(G, QStringLiteral("CommPort"), QStringLiteral("9"));
    st.preset(G, QStringLiteral("CommSpeed"), QStringLiteral("1234"));
    st.preset(G, QStringLiteral("InterrogateInterval"), QStringLiteral("fast"));
    st.preset(G, QStringLiteral("CommStopBits"), QStringLiteral("banana"));
    ASSERT_TRUE(st.start());
    const QStringList boxes = st.dialogs.boxTexts();
    EXPECT_TRUE(boxes.contains(QStringLiteral("previously saved Com port is invalid; select a valid one")));
    EXPECT_TRUE(boxes.contains(QStringLiteral("previously saved Com Speed is invalid; using default of 9600")));
    EXPECT_TRUE(st.p().main.caption().contains(QStringLiteral(" [no Com port selected]")));
    EXPECT_TRUE(st.p().config.Speed[2].value());
    EXPECT_EQ(st.m().port().CommSpeed, 9600);
    EXPECT_EQ(st.p().module.queue().XcvrCmdTimer.Interval(), 200);
    EXPECT_TRUE(st.p().config.StopBits[3].value());
    // Nothing is stored about the port until the operator chooses one.
    st.loop.runPosted();
    EXPECT_EQ(st.stored(G, QStringLiteral("CommPort")), QStringLiteral("9"));
}

TEST(Startup, CorruptSettingsFileIsReadAsFarAsItGoesAndKept) {
    TestStation st;
    {
        QFile f(st.configDir + QStringLiteral("/Tolvane.ini"));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("[General]\nInterrogateInterval=400\n\x01\x02\xff\xfe garbage\n[broken\nRadio\n=x\n");
    }
    ASSERT_TRUE(st.start());
    EXPECT_EQ(st.p().config.PollInterval.text(), QStringLiteral("400"));
    // The operator hears of it once, in a box and in the log, with where the original went.
    const QString kept = st.configDir + QStringLiteral("/Tolvane.ini.corrupt");
    const QStringList boxes = st.dialogs.boxTexts().filter(QStringLiteral("could not be read"));
    ASSERT_EQ(boxes.size(), 1);
    EXPECT_TRUE(boxes[0].endsWith(kept));
    EXPECT_EQ(st.log().count(QStringLiteral("could not be read")), 1);
    st.stop();
    EXPECT_TRUE(QFile::exists(kept));
    EXPECT_EQ(st.stored(G, QStringLiteral("InterrogateInterval")), QStringLiteral("400"));
    // What could be read was written back, so the next start is quiet.
    ASSERT_TRUE(st.start());
    EXPECT_EQ(st.dialogs.boxTexts().filter(QStringLiteral("could not be read")).size(), 1);
}

}  // namespace
}  // namespace tv::test
