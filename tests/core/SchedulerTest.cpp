// The queue's timing rules, in virtual time, on the core alone: what leaves on which tick, and what
// never leaves.

#include "coresupport/CoreRig.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

class Scheduler : public ::testing::Test {
protected:
    void SetUp() override { rig.view.interrogation = false; }
    CommandQueue& q() { return rig.queue; }
    Timer& timer() { return rig.queue.XcvrCmdTimer; }
    CoreRig rig;
    Recording& icom = rig.record(QLatin1Char('I'));
    Recording& kenwood = rig.record(QLatin1Char('K'));
    Recording& yaesu = rig.record(QLatin1Char('Y'));
};

TEST_F(Scheduler, NothingIsQueuedOrSentWithoutARadio) {
    EXPECT_EQ(rig.radio.RadioIndex, -1);
    q().SetXcvrFreq(14025.5);
    q().SetXcvrMode(ModeCW);
    EXPECT_EQ(q().count(), 0);
    rig.loop.advance(2000);
    EXPECT_TRUE(icom.executed.empty());
    EXPECT_TRUE(kenwood.executed.empty());
    // The display still follows the operator.
    EXPECT_DOUBLE_EQ(rig.state.RadioFreq, 14025.5);
}

TEST_F(Scheduler, OverflowShowsOneBoxPerFurtherCallAndKeepsTheBufferInOrder) {
    rig.withRadio(QStringLiteral("TS-2000"));
    for (int i = 0; i < 256; ++i) q().SetXcvrFreq(1000 + i);
    EXPECT_TRUE(rig.dialogs.boxTexts().isEmpty());
    q().SetXcvrFreq(5000);
    q().SetXcvrFreq(5001);
    const QStringList boxes = rig.dialogs.boxTexts();
    ASSERT_EQ(boxes.size(), 2);
    EXPECT_EQ(boxes[0], QStringLiteral("transceiver command buffer overflow"));
    EXPECT_EQ(rig.dialogs.shown.back().title, QStringLiteral("Tolvane"));
    EXPECT_EQ(rig.log().count(QStringLiteral("transceiver command buffer overflow")), 2);
    EXPECT_EQ(q().count(), 256);
    // A Kenwood tick drains the whole buffer, in the order it was filled.
    rig.loop.advance(timer().Interval());
    ASSERT_EQ(kenwood.executed.size(), 256u);
    for (int i = 0; i < 256; ++i) EXPECT_DOUBLE_EQ(kenwood.executed[size_t(i)].theFreq, 1000 + i);
}

TEST_F(Scheduler, RecordsKeepTheirOrderAcrossTheEndOfTheRing) {
    rig.withRadio(QStringLiteral("TS-2000"));
    // 600 records through 256 slots, each round queued whole before it drains.
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 200; ++i) q().SetXcvrFilters(round, i);
        const std::vector<XcvrCmd> held = q().queued();
        ASSERT_EQ(held.size(), 200u);
        for (int i = 0; i < 200; ++i) EXPECT_EQ(held[size_t(i)].theArg2, i) << round;
        rig.loop.advance(timer().Interval());
        EXPECT_TRUE(q().queued().empty());
    }
    EXPECT_EQ(kenwood.executed.size(), 600u);
    EXPECT_EQ(kenwood.executed.back().theArg2, 199);
}

TEST_F(Scheduler, PollIntervalIsClampedAndLettersMeanTheDefault) {
    rig.withRadio(QStringLiteral("TS-2000"));
    struct Case {
        const char* text;
        int interval;
    } cases[] = {{"10", 50}, {"100000", 60000}, {"99999999999999999999", 60000}, {"200", 200},
                 {"abc", 200}, {"12ab", 200},   {"", 200},                        {"0", 50},
                 {"-5", 50},  {"+300", 300}};
    for (const auto& c : cases) {
        rig.view.pollInterval = QString::fromLatin1(c.text);
        q().SetXcvrCmdTimerInterval();
        EXPECT_EQ(timer().Interval(), c.interval) << c.text;
        EXPECT_TRUE(timer().Enabled());
    }
}

TEST_F(Scheduler, WaitAloneSendsNothingThatTickAndTheNextTickPolls) {
    rig.view.interrogation = true;
    rig.withRadio(QStringLiteral("TS-2000"));
    q().SetXcvrWait();
    rig.loop.advance(200);
    EXPECT_TRUE(kenwood.steps.empty());
    EXPECT_EQ(q().count(), 0);
    rig.loop.advance(200);
    EXPECT_EQ(kenwood.steps, std::vector<int>({0}));
}

TEST_F(Scheduler, InterrogationGoesBehindQueuedCommands) {
    rig.withRadio(QStringLiteral("TS-2000"));
    q().SetXcvrSplit(true);
    q().InterrogateRadio();
    EXPECT_EQ(q().count(), 5);
    // Split leaves, then the first Wait stops the burst; the requests follow one interval apart.
    rig.loop.advance(200);
    ASSERT_EQ(kenwood.executed.size(), 1u);
    EXPECT_EQ(kenwood.executed[0].theCmd, XcvrCmdSplit);
    EXPECT_EQ(kenwood.frequencyRequests, 0);
    rig.loop.advance(200);
    EXPECT_EQ(kenwood.frequencyRequests, 1);
    EXPECT_EQ(kenwood.modeRequests, 0);
    rig.loop.advance(200);
    EXPECT_EQ(kenwood.modeRequests, 1);
}

TEST_F(Scheduler, KenwoodBurstLeavesInOneTickIcomTakesTenTicksOrTenAcknowledgements) {
    rig.withRadio(QStringLiteral("TS-2000"));
    for (int i = 0; i < 10; ++i) q().SetXcvrFreq(7000 + i);
    rig.loop.advance(199);
    EXPECT_TRUE(kenwood.executed.empty());  // a queued command waits for the regular tick
    rig.loop.advance(1);
    EXPECT_EQ(kenwood.executed.size(), 10u);

    rig.withRadio(QStringLiteral("IC-756PRO"));
    for (int i = 0; i < 10; ++i) q().SetXcvrFreq(7000 + i);
    rig.loop.advance(200);
    EXPECT_EQ(icom.executed.size(), 1u);
    rig.loop.advance(200 * 4);
    EXPECT_EQ(icom.executed.size(), 5u);
    // Each acknowledgement lets the next record out 1 ms later, once.
    for (int i = 0; i < 5; ++i) {
        q().AccelerateNextXcvrCmd();
        rig.loop.advance(1);
    }
    EXPECT_EQ(icom.executed.size(), 10u);
    EXPECT_EQ(timer().Interval(), 200);
}

TEST_F(Scheduler, LastCommandNameSkipsRequestsAndCodeThreeHasNoName) {
    rig.withRadio(QStringLiteral("TS-2000"));
    q().SetXcvrSplit(true);
    rig.loop.advance(200);
    EXPECT_EQ(q().LastCommandName, QStringLiteral("Set Split Mode"));
    q().InterrogateRadio();
    rig.loop.advance(1000);
    EXPECT_EQ(q().LastCommandName, QStringLiteral("Set Split Mode"));
    q().SetXcvrFilters(1, 2);
    rig.loop.advance(200);
    EXPECT_EQ(q().LastCommandName, QString());
}

TEST_F(Scheduler, RawOddLengthAndStringGoOutAsBytes) {
    rig.withRadio(QStringLiteral("TS-2000"));
    ASSERT_TRUE(rig.serial && rig.serial->isOpen());
    rig.sent();
    q().SetXcvrRaw(QStringLiteral("ABC"));
    q().SetXcvrstring(QStringLiteral("PS1;"));
    rig.loop.advance(200);
    EXPECT_EQ(rig.sent(), QByteArray("\x0A\xBC" "PS1;", 6));
    // A pair that isn't upper-case hexadecimal sends nothing and is reported with the record's fields.
    q().SetXcvrRaw(QStringLiteral("zz"));
    rig.loop.advance(200);
    EXPECT_TRUE(rig.sent().isEmpty());
    EXPECT_TRUE(rig.log().contains(QStringLiteral("in module KavModule.ExecuteNextXcvrCmd")));
    EXPECT_TRUE(rig.log().contains(QStringLiteral("theMide = ")));
    EXPECT_EQ(q().count(), 0);
}

TEST_F(Scheduler, CivRadioWithoutAddressGetsNoCommands) {
    rig.withRadio(QStringLiteral("IC-756PRO"));
    rig.view.address = QStringLiteral("  ");
    q().SetXcvrFreq(3500);
    EXPECT_EQ(q().count(), 0);
    // Leading zeros don't make a decimal address a different number.
    rig.view.decimal = true;
    rig.view.address = QStringLiteral("0255");
    ASSERT_TRUE(rig.radio.ValidID());
    EXPECT_EQ(rig.radio.address(), 255);
    EXPECT_TRUE(rig.dialogs.boxTexts().isEmpty());
    rig.view.decimal = false;
    rig.view.address = QStringLiteral("5C");
    ASSERT_TRUE(rig.radio.ValidID());
    q().SetXcvrFreq(3500);
    EXPECT_EQ(q().count(), 1);
    EXPECT_EQ(q().queued().front().theRadio, 0x5C);
}

TEST_F(Scheduler, YaesuRecordsWaitWhileAReplyIsOutstanding) {
    rig.withRadio(QStringLiteral("FT1000D"));
    rig.link.Expect(QStringLiteral("YaesuStatus"), 5);
    q().SetXcvrFreq(14200);
    q().SetXcvrMode(ModeUSB);
    rig.loop.advance(1000);
    EXPECT_TRUE(yaesu.executed.empty());
    EXPECT_EQ(q().count(), 2);
    rig.wire(QByteArray(5, '\0'));
    rig.loop.advance(200);
    EXPECT_EQ(yaesu.executed.size(), 2u);
}

TEST_F(Scheduler, PttNeedsTheRadiosFlagAndSubReceiverComesBeforeVfos) {
    rig.withRadio(QStringLiteral("IC-735"));
    q().SetXcvrTransmit();
    EXPECT_EQ(q().count(), 0);
    rig.withRadio(QStringLiteral("IC-756PRO"));
    q().SelectSecondary();
    q().SelectPrimary();
    rig.loop.advance(400);
    ASSERT_EQ(icom.executed.size(), 2u);
    EXPECT_EQ(icom.executed[0].theCmd, XcvrCmdSub);
    EXPECT_EQ(icom.executed[1].theCmd, XcvrCmdMain);
}

}  // namespace
}  // namespace tv::test
