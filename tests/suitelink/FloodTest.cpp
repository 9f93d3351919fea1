// A flood from the suite link: a hundred thousand commands, far more than the queue holds. The program
// keeps answering, the queue stays at its size, every overflow is in the log, and the radio still gets
// its commands once the flood is over.

#include "platform/FakeSuiteBus.h"
#include "support/TestStation.h"

#include <QFileInfo>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

TEST(SuiteFlood, AHundredThousandCommandsLeaveTheProgramWorking) {
    TestStation st;
    st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QStringLiteral("TS-2000"));
    st.preset(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("1"));
    st.preset(QStringLiteral("General"), QStringLiteral("Interrogate"), QStringLiteral("F"));
    FakeSuiteBus* bus = nullptr;
    st.onCreate = [&](Program& p) { bus = dynamic_cast<FakeSuiteBus*>(&p.suiteBus); };
    ASSERT_TRUE(st.start());
    ASSERT_NE(bus, nullptr);
    st.m().InitializeXcvrCmdBuffer();
    // Counted as the lines are written: a log this long is rotated, and only the latest files stay.
    int overflowLines = 0;
    st.p().common.echo = [&](const QString& line) {
        if (line.endsWith(QLatin1String("transceiver command buffer overflow"))) ++overflowLines;
    };
    int accepted = 0;
    for (int i = 0; i < 100000; ++i) {
        // Every 1000 commands the loop gets a turn: ticks drain the queue meanwhile, as they would.
        if (bus->send(QStringLiteral("DDEServer"), QStringLiteral("001qsy%1").arg(7000 + i % 300)).value_or(false))
            ++accepted;
        if (i % 1000 == 999) st.loop.advance(1);
        ASSERT_LE(st.m().XcvrCmdCount, KavModule::kBufferSlots);
    }
    EXPECT_EQ(accepted, 100000);
    const int boxes = int(st.dialogs.shown.size());
    EXPECT_GT(boxes, 90000);
    EXPECT_EQ(overflowLines, boxes);
    EXPECT_LE(QFileInfo(st.configDir + QStringLiteral("/ErrorLog.txt")).size(), Common::kLogLimitBytes);
    // Afterwards the radio is commanded as usual.
    st.m().InitializeXcvrCmdBuffer();
    st.serial()->written.clear();
    st.m().SetXcvrFreq(14025.5);
    st.loop.advance(1000);
    EXPECT_TRUE(st.serial()->written.contains("FA00014025500;"));
    EXPECT_TRUE(bus->send(QStringLiteral("DDEServer"), QStringLiteral("000test")).value_or(false));
}

}  // namespace
}  // namespace tv::test
