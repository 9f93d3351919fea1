// A flood from the suite link: thousands of commands, far more than the queue holds, in bursts between
// which the queue drains. The program keeps answering, the queue stays at its size, every overflow is
// in the log, and the radio still gets its commands once the flood is over.

#include "platform/FakeSuiteBus.h"
#include "support/TestStation.h"

#include <QFileInfo>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

TEST(SuiteFlood, BurstsBeyondTheQueueLeaveTheProgramWorking) {
    TestStation st;
    st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QStringLiteral("TS-2000"));
    st.preset(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("1"));
    st.preset(QStringLiteral("General"), QStringLiteral("Interrogate"), QStringLiteral("F"));
    FakeSuiteBus* bus = nullptr;
    st.onCreate = [&](Program& p) { bus = dynamic_cast<FakeSuiteBus*>(&p.suiteBus); };
    ASSERT_TRUE(st.start());
    ASSERT_NE(bus, nullptr);
    st.m().queue().InitializeXcvrCmdBuffer();
    int accepted = 0;
    constexpr int kBursts = 5, kBurst = 1000;
    for (int i = 0; i < kBursts * kBurst; ++i) {
        if (bus->send(QStringLiteral("DDEServer"), QStringLiteral("001qsy%1").arg(7000 + i % 300)).value_or(false))
            ++accepted;
        ASSERT_LE(st.m().queue().XcvrCmdCount, CommandQueue::kBufferSlots);
        // After each burst a tick drains the whole queue, as a Kenwood tick does.
        if (i % kBurst == kBurst - 1) st.loop.advance(st.m().queue().XcvrCmdTimer.Interval());
    }
    EXPECT_EQ(accepted, kBursts * kBurst);
    // Each burst fills the 256 slots and overflows with the rest: exactly that many boxes and lines.
    const int boxes = int(st.dialogs.shown.size());
    EXPECT_EQ(boxes, kBursts * (kBurst - CommandQueue::kBufferSlots));
    EXPECT_EQ(st.log().count(QStringLiteral("transceiver command buffer overflow")), boxes);
    // Afterwards the radio is commanded as usual.
    st.m().queue().InitializeXcvrCmdBuffer();
    st.serial()->written.clear();
    st.m().queue().SetXcvrFreq(14025.5);
    st.loop.advance(1000);
    EXPECT_TRUE(st.serial()->written.contains("FA00014025500;"));
    EXPECT_TRUE(bus->send(QStringLiteral("DDEServer"), QStringLiteral("000test")).value_or(false));
}

}  // namespace
}  // namespace tv::test
