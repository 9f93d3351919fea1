// The queue's timing rules, in virtual time: what leaves on which tick, and what never leaves.

#include "support/TestStation.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

class Scheduler : public ::testing::Test {
protected:
    void SetUp() override {
        st.preset(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(QStringLiteral("General"), QStringLiteral("Interrogate"), QStringLiteral("F"));
        icom = &st.record(QLatin1Char('I'));
        kenwood = &st.record(QLatin1Char('K'));
        yaesu = &st.record(QLatin1Char('Y'));
        ASSERT_TRUE(st.start());
    }
    KavModule& m() { return st.m(); }
    Timer& timer() { return st.p().main.XcvrCmdTimer; }
    TestStation st;
    RecordingProtocol* icom = nullptr;
    RecordingProtocol* kenwood = nullptr;
    RecordingProtocol* yaesu = nullptr;
};

TEST_F(Scheduler, NothingIsQueuedOrSentWithoutARadio) {
    EXPECT_EQ(m().RadioIndex, -1);
    m().SetXcvrFreq(14025.5);
    m().SetXcvrMode(ModeCW);
    EXPECT_EQ(m().XcvrCmdCount, 0);
    st.loop.advance(2000);
    EXPECT_TRUE(icom->executed.empty());
    EXPECT_TRUE(kenwood->executed.empty());
    // The display still follows the operator.
    EXPECT_DOUBLE_EQ(m().RadioFreq, 14025.5);
}

TEST_F(Scheduler, OverflowShowsOneBoxPerFurtherCallAndKeepsTheBufferInOrder) {
    st.selectRadio(QStringLiteral("TS-2000"));
    m().InitializeXcvrCmdBuffer();
    for (int i = 0; i < 256; ++i) m().SetXcvrFreq(1000 + i);
    EXPECT_TRUE(st.dialogs.boxTexts().isEmpty());
    m().SetXcvrFreq(5000);
    m().SetXcvrFreq(5001);
    const QStringList boxes = st.dialogs.boxTexts();
    ASSERT_EQ(boxes.size(), 2);
    EXPECT_EQ(boxes[0], QStringLiteral("transceiver command buffer overflow"));
    EXPECT_EQ(st.dialogs.shown.back().title, QStringLiteral("Tolvane"));
    EXPECT_EQ(m().XcvrCmdCount, 256);
    // A Kenwood tick drains the whole buffer, in the order it was filled.
    st.loop.advance(timer().Interval());
    ASSERT_EQ(kenwood->executed.size(), 256u);
    for (int i = 0; i < 256; ++i) EXPECT_DOUBLE_EQ(kenwood->executed[size_t(i)].theFreq, 1000 + i);
}

TEST_F(Scheduler, HeadAndTailWrapToSlotOneNeverZero) {
    st.selectRadio(QStringLiteral("TS-2000"));
    m().InitializeXcvrCmdBuffer();
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 200; ++i) m().SetXcvrFilters(round, i);
        st.loop.advance(timer().Interval());
        EXPECT_EQ(m().XcvrCmdCount, 0);
        EXPECT_GE(m().XcvrCmdHead, 1);
        EXPECT_GE(m().XcvrCmdTail, 1);
    }
    // 600 records through 256 slots: the tail wrapped past 256 to 1 twice.
    EXPECT_EQ(m().XcvrCmdTail, (600 % 256) + 1);
    EXPECT_EQ(kenwood->executed.size(), 600u);
    EXPECT_EQ(kenwood->executed.back().theArg2, 199);
}

TEST_F(Scheduler, PollIntervalIsClampedAndLettersMeanTheDefault) {
    st.selectRadio(QStringLiteral("TS-2000"));
    struct Case {
        const char* text;
        int interval;
    } cases[] = {{"10", 50}, {"100000", 60000}, {"99999999999999999999", 60000}, {"200", 200},
                 {"abc", 200}, {"12ab", 200},   {"", 200},                        {"0", 50}};
    for (const auto& c : cases) {
        st.p().config.PollInterval.setText(QString::fromLatin1(c.text));
        m().SetXcvrCmdTimerInterval();
        EXPECT_EQ(timer().Interval(), c.interval) << c.text;
        EXPECT_TRUE(timer().Enabled());
    }
}

TEST_F(Scheduler, WaitAloneSendsNothingThatTickAndTheNextTickPolls) {
    st.p().config.Interrogation.setChecked(true);
    st.selectRadio(QStringLiteral("TS-2000"));
    m().InitializeXcvrCmdBuffer();
    m().SetXcvrWait();
    st.loop.advance(200);
    EXPECT_TRUE(kenwood->steps.empty());
    EXPECT_EQ(m().XcvrCmdCount, 0);
    st.loop.advance(200);
    EXPECT_EQ(kenwood->steps, std::vector<int>({0}));
}

TEST_F(Scheduler, InterrogationGoesBehindQueuedCommands) {
    st.selectRadio(QStringLiteral("TS-2000"));
    m().InitializeXcvrCmdBuffer();
    m().SetXcvrSplit(true);
    m().InterrogateRadio();
    EXPECT_EQ(m().XcvrCmdCount, 5);
    // Split leaves, then the first Wait stops the burst; the requests follow one interval apart.
    st.loop.advance(200);
    ASSERT_EQ(kenwood->executed.size(), 1u);
    EXPECT_EQ(kenwood->executed[0].theCmd, XcvrCmdSplit);
    EXPECT_EQ(kenwood->frequencyRequests, 0);
    st.loop.advance(200);
    EXPECT_EQ(kenwood->frequencyRequests, 1);
    EXPECT_EQ(kenwood->modeRequests, 0);
    st.loop.advance(200);
    EXPECT_EQ(kenwood->modeRequests, 1);
}

TEST_F(Scheduler, KenwoodBurstLeavesInOneTickIcomTakesTenTicksOrTenAcknowledgements) {
    st.selectRadio(QStringLiteral("TS-2000"));
    m().InitializeXcvrCmdBuffer();
    for (int i = 0; i < 10; ++i) m().SetXcvrFreq(7000 + i);
    st.loop.advance(199);
    EXPECT_TRUE(kenwood->executed.empty());  // a queued command waits for the regular tick
    st.loop.advance(1);
    EXPECT_EQ(kenwood->executed.size(), 10u);

    st.selectRadio(QStringLiteral("IC-756PRO"));
    m().InitializeXcvrCmdBuffer();
    for (int i = 0; i < 10; ++i) m().SetXcvrFreq(7000 + i);
    st.loop.advance(200);
    EXPECT_EQ(icom->executed.size(), 1u);
    st.loop.advance(200 * 4);
    EXPECT_EQ(icom->executed.size(), 5u);
    // Each acknowledgement lets the next record out 1 ms later, once.
    for (int i = 0; i < 5; ++i) {
        m().AccelerateNextXcvrCmd();
        st.loop.advance(1);
    }
    EXPECT_EQ(icom->executed.size(), 10u);
    EXPECT_EQ(timer().Interval(), 200);
}

TEST_F(Scheduler, LastCommandNameSkipsRequestsAndCodeThreeHasNoName) {
    st.selectRadio(QStringLiteral("TS-2000"));
    m().InitializeXcvrCmdBuffer();
    m().SetXcvrSplit(true);
    st.loop.advance(200);
    EXPECT_EQ(m().LastCommandName, QStringLiteral("Set Split Mode"));
    m().InterrogateRadio();
    st.loop.advance(1000);
    EXPECT_EQ(m().LastCommandName, QStringLiteral("Set Split Mode"));
    m().SetXcvrFilters(1, 2);
    st.loop.advance(200);
    EXPECT_EQ(m().LastCommandName, QString());
}

TEST_F(Scheduler, RawOddLengthAndStringGoOutAsBytes) {
    st.selectRadio(QStringLiteral("TS-2000"));
    m().InitializeXcvrCmdBuffer();
    ASSERT_TRUE(st.serial() && st.serial()->isOpen());
    st.serial()->written.clear();
    m().SetXcvrRaw(QStringLiteral("ABC"));
    m().SetXcvrstring(QStringLiteral("PS1;"));
    st.loop.advance(200);
    EXPECT_EQ(st.serial()->written, QByteArray("\x0A\xBC" "PS1;", 6));
    // A pair that isn't upper-case hexadecimal sends nothing and is reported with the record's fields.
    st.serial()->written.clear();
    m().SetXcvrRaw(QStringLiteral("zz"));
    st.loop.advance(200);
    EXPECT_TRUE(st.serial()->written.isEmpty());
    EXPECT_TRUE(st.log().contains(QStringLiteral("in module KavModule.ExecuteNextXcvrCmd")));
    EXPECT_TRUE(st.log().contains(QStringLiteral("theMide = ")));
    EXPECT_EQ(m().XcvrCmdCount, 0);
}

TEST_F(Scheduler, CivRadioWithoutAddressGetsNoCommands) {
    st.selectRadio(QStringLiteral("IC-756PRO"));
    m().InitializeXcvrCmdBuffer();
    st.p().config.Address.setText(QStringLiteral("  "));
    m().SetXcvrFreq(3500);
    EXPECT_EQ(m().XcvrCmdCount, 0);
    st.p().config.Address.setText(QStringLiteral("5C"));
    ASSERT_TRUE(m().ValidID());
    m().SetXcvrFreq(3500);
    EXPECT_EQ(m().XcvrCmdCount, 1);
    EXPECT_EQ(m().XcvrCmdBuffer[size_t(m().XcvrCmdHead)].theRadio, 0x5C);
}

TEST_F(Scheduler, SilentSmallYaesuIsTriedEveryFiveSecondsUntilItAnswers) {
    st.selectRadio(QStringLiteral("FT817"));
    m().InitializeXcvrCmdBuffer();
    EXPECT_EQ(timer().Interval(), 200);
    m().YaesuResponding = false;
    m().SetXcvrCmdTimerInterval();
    EXPECT_EQ(timer().Interval(), 5000);
    m().SetXcvrFreq(14200);
    st.loop.advance(4999);
    EXPECT_TRUE(yaesu->executed.empty());
    st.loop.advance(1);
    EXPECT_EQ(yaesu->executed.size(), 1u);
    m().YaesuResponding = true;
    m().SetXcvrCmdTimerInterval();
    EXPECT_EQ(timer().Interval(), 200);
}

TEST_F(Scheduler, YaesuRecordsWaitWhileAReplyIsOutstanding) {
    st.selectRadio(QStringLiteral("FT1000D"));
    m().InitializeXcvrCmdBuffer();
    m().ExpectedBytes = 5;
    m().SetXcvrFreq(14200);
    m().SetXcvrMode(ModeUSB);
    st.loop.advance(1000);
    EXPECT_TRUE(yaesu->executed.empty());
    EXPECT_EQ(m().XcvrCmdCount, 2);
    m().ExpectedBytes = 0;
    st.loop.advance(200);
    EXPECT_EQ(yaesu->executed.size(), 2u);
}

TEST_F(Scheduler, ChangingRadioDropsQueuedRecords) {
    st.selectRadio(QStringLiteral("IC-756PRO"));
    m().SetXcvrFreq(7050);
    m().SetXcvrMode(ModeLSB);
    st.selectRadio(QStringLiteral("TS-2000"));
    st.loop.advance(1000);
    EXPECT_TRUE(icom->executed.empty());
    for (const auto& c : kenwood->executed) EXPECT_NE(c.theCmd, XcvrCmdFreq);
}

TEST_F(Scheduler, PttNeedsTheRadiosFlagAndSubReceiverComesBeforeVfos) {
    st.selectRadio(QStringLiteral("IC-735"));
    m().InitializeXcvrCmdBuffer();
    m().SetXcvrTransmit();
    EXPECT_EQ(m().XcvrCmdCount, 0);
    st.selectRadio(QStringLiteral("IC-775"));
    m().InitializeXcvrCmdBuffer();
    m().SelectSecondary();
    m().SelectPrimary();
    st.loop.advance(400);
    ASSERT_EQ(icom->executed.size(), 2u);
    EXPECT_EQ(icom->executed[0].theCmd, XcvrCmdSub);
    EXPECT_EQ(icom->executed[1].theCmd, XcvrCmdMain);
}

}  // namespace
}  // namespace tv::test
