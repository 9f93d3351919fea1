// The program's one picture of the radio: reports change it only when they differ, the caption tells
// the operator what state the link and the radio are in, and the choice of receiver.

#include "services/Errors.h"
#include "support/TestStation.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");

class RadioState : public ::testing::Test {
protected:
    void start(const char* radio, const char* port = "1") {
        if (radio) st.preset(G, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(G, QStringLiteral("CommPort"), QString::fromLatin1(port));
        st.preset(G, QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
        QObject::connect(&m().state(), &tv::RadioState::frequencyChanged, &m().state(), [this] { ++displayUpdates; });
        m().queue().InitializeXcvrCmdBuffer();
    }
    KavModule& m() { return st.m(); }
    TestStation st;
    int displayUpdates = 0;
};

TEST_F(RadioState, EqualReportsCostNothingAndUnknownModesChangeNothing) {
    start("TS-2000");
    m().state().UpdateRadioFreq(7010);
    m().state().UpdateRadioFreq(7010);
    EXPECT_EQ(displayUpdates, 1);
    QStringList items;
    QObject::connect(&m().state(), &tv::RadioState::itemChanged, &m().state(),
                     [&](const QString& n, const QString& v) { items << n + QLatin1Char('=') + v; });
    m().state().UpdateXcvrMode(7);
    EXPECT_EQ(items, (QStringList{QStringLiteral("Mode=CW"), QStringLiteral("RadioMode=CW-R")}));
    EXPECT_TRUE(st.p().main.ModeSel[7].value());
    EXPECT_EQ(st.p().main.ModeFrame.caption(), QStringLiteral("Mode: CW-R"));
    // The option is set under its flag, so its handler doesn't send the report back as a command.
    bool flagSeen = false;
    st.p().main.ModeSel[1].Click = [&] { flagSeen = m().ControlFlag(FlagModeSel); };
    m().state().UpdateXcvrMode(1);
    EXPECT_TRUE(flagSeen);
    EXPECT_FALSE(m().ControlFlag(FlagModeSel));
    m().state().UpdateXcvrMode(10);
    m().state().UpdateXcvrMode(-1);
    EXPECT_EQ(m().state().RadioMode, 1);
    EXPECT_EQ(st.p().main.ModeFrame.caption(), QStringLiteral("Mode: USB"));
}

TEST_F(RadioState, TuningStopsAtTheTopAndTheNextStepDownWorks) {
    start("TS-2000");
    m().state().UpdateRadioFreq(999999.98);
    m().queue().AdjustRadioFreq(0.01);
    EXPECT_EQ(m().queue().count(), 1);  // exactly 999999.99 is allowed
    m().queue().AdjustRadioFreq(0.02);
    EXPECT_EQ(m().queue().count(), 1);
    m().queue().AdjustRadioFreq(-0.01);
    EXPECT_EQ(m().queue().count(), 2);
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 999999.98);
    m().queue().SetXcvrFreq(-1);
    EXPECT_EQ(m().queue().count(), 2);
}

TEST_F(RadioState, WithoutASubReceiverTheSecondaryIsVfoB) {
    start("TS-2000");
    m().queue().SelectSecondary();
    ASSERT_EQ(m().queue().queued().size(), 1u);
    EXPECT_EQ(m().queue().queued().front().theCmd, XcvrCmdVFOB);
}

TEST_F(RadioState, TheCaptionTellsTheStateOfLinkRadioAndLog) {
    start("IC-756PRO");
    const QString head = QStringLiteral("Tolvane %1").arg(st.p().common.info().version());
    st.p().main.FreqDisplay.setText(QStringLiteral("14,025.50"));
    m().state().UpdateXcvrMode(3);
    st.p().main.SplitBox.setChecked(true);
    m().UpdateCaption();
    EXPECT_EQ(st.p().main.caption(), head + QStringLiteral(" [Icom IC-756PRO] @ 12:00:00Z 14,025.50 CW Split"));
    // Polled for a minute with no answer: the caption says so, the log names the likely causes, and the
    // first reply clears it.
    st.loop.advance(61000);
    EXPECT_EQ(st.p().main.caption(), head + QStringLiteral(" [Icom IC-756PRO - not answering] "));
    EXPECT_EQ(st.log().count(QStringLiteral("the radio doesn't answer")), 1);
    EXPECT_TRUE(st.log().contains(QStringLiteral("is its CI-V address 5C the radio's own?")));
    st.serial()->feed(QByteArray::fromHex("FEFEE05CFBFD"));
    st.loop.runPosted();
    EXPECT_TRUE(st.p().main.caption().contains(QStringLiteral("@ 12:01:01Z")));
    EXPECT_TRUE(st.log().contains(QStringLiteral("the radio answers again")));
    // A part beside the radio in trouble (a web logger that doesn't answer) is told at the end, until it's well.
    m().SetCaptionNote(QStringLiteral("web logger not answering"));
    EXPECT_TRUE(st.p().main.caption().endsWith(QStringLiteral("CW Split - web logger not answering")));
    m().SetCaptionNote(QString());
    EXPECT_TRUE(st.p().main.caption().endsWith(QStringLiteral("CW Split")));

    // A failure written to the log: the caption points there from now on.
    Guard("KavModule.Test", [] { throw TvError(kErrDeviceIO); });
    EXPECT_TRUE(st.p().main.caption().endsWith(QStringLiteral(" - see ErrorLog in ") + st.configDir +
                                               QStringLiteral("/ErrorLog.txt")));
    // The port's trouble goes before the radio.
    m().SetCommCaption(QStringLiteral(" - selected Com port already in use"));
    m().UpdateCaption();
    EXPECT_TRUE(st.p().main.caption().startsWith(head + QStringLiteral("  - selected Com port already in use - see")));

    // A small Yaesu that stopped answering shows as offline.
    m().SetCommCaption(QString());
    st.selectRadio(QStringLiteral("FT817"));
    m().state().Responding = false;
    m().UpdateCaption();
    EXPECT_TRUE(st.p().main.caption().startsWith(head + QStringLiteral(" [Yaesu FT817 - offline] ")));
    // A console radio whose console isn't running.
    st.selectRadio(QStringLiteral("FLEX-5000"));
    m().UpdateCaption();
    EXPECT_TRUE(st.p().main.caption().startsWith(head + QStringLiteral(" [FlexRadio FLEX-5000 - not running] ")));
}

TEST_F(RadioState, WithoutARadioTheCaptionShowsThePortAndNothingFails) {
    start(nullptr, "");
    m().UpdateCaption();
    EXPECT_EQ(st.p().main.caption(),
              QStringLiteral("Tolvane %1  [no Com port selected]").arg(st.p().common.info().version()));
    EXPECT_FALSE(st.log().contains(QStringLiteral("program error")));
}

}  // namespace
}  // namespace tv::test
