// A memory stored from the radio, the radio tuned away, the memory recalled: the real program on the
// real loop and serial layer against the simulator on a pty, as an Icom and as a Kenwood radio. The
// radio must be commanded back with the mode before the frequency, and the filter group must land once
// the radio has reported the mode.

#include "support/SimulatedRadio.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

using test::waitFor;

class MemoryRecall : public test::SimulatedRadio {
protected:
    // The simulator's log from here on (what is still under way matches none of the frames looked for).
    void mark() {
        waitSim(QString(), 0);
        from = simLog.size();
    }
    // Where the text first stands in the log since the mark, waited for; -1 if it never comes.
    qsizetype seen(const QString& text) {
        qsizetype at = -1;
        waitFor(
            [&] {
                waitSim(QString(), 0);
                at = simLog.indexOf(text, from);
                return at >= 0;
            },
            5000);
        return at;
    }
    KavMain& w() { return program->main; }
    qsizetype from = 0;
};

TEST_F(MemoryRecall, IcomIsCommandedBackModeFirstAndTheFilterFollowsTheReport) {
    startStation(QStringLiteral("IC-7300"), QStringLiteral("94"));
    ASSERT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == ModeCW; }, 10000));
    w().MBCmd.click();
    ASSERT_TRUE(w().MemoryBankFrame.visible());
    w().StoreCmd[1].click();
    EXPECT_EQ(w().FreqMemoryTextbox[1].text(), QStringLiteral("7,010.00"));
    // The operator picks the narrow group for this memory.
    w().FilterMemoryCombo[1].setListIndex(1);
    ASSERT_EQ(program->memories.memory(1).filter, QStringLiteral("Narrow"));

    m().queue().SetXcvrMode(ModeUSB);
    m().queue().SetXcvrFreq(14100);
    ASSERT_TRUE(waitFor([&] { return m().state().RadioMode == ModeUSB && m().state().RadioFreq == 14100.0; }, 10000));
    mark();
    w().SelCmd[1].click();
    // Mode CW with group 2 (narrow), then 7010.000 kHz.
    const qsizetype mode = seen(QStringLiteral("<- FE FE 94 E0 06 03 02 FD"));
    const qsizetype freq = seen(QStringLiteral("<- FE FE 94 E0 05 00 00 01 07 00 FD"));
    ASSERT_GE(mode, 0) << simLog.mid(from).toStdString();
    ASSERT_GE(freq, 0) << simLog.mid(from).toStdString();
    EXPECT_LT(mode, freq);
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == ModeCW; }, 10000))
        << m().state().RadioFreq << " " << m().state().RadioMode;
    EXPECT_TRUE(waitFor([&] { return w().FilterGroupCombo.text() == QLatin1String("Narrow"); }, 5000))
        << w().FilterGroupCombo.text().toStdString();
}

TEST_F(MemoryRecall, KenwoodIsCommandedBackModeFirst) {
    startStation(QStringLiteral("TS-2000"));
    ASSERT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == ModeCW; }, 10000));
    w().MBCmd.click();
    w().MemoryBankCmd[3].click();
    w().StoreCmd[2].click();
    EXPECT_EQ(program->memories.memory(32).freq, QStringLiteral("7,010.00"));
    EXPECT_EQ(program->memories.memory(32).mode, int(ModeCW));

    m().queue().SetXcvrMode(ModeLSB);
    m().queue().SetXcvrFreq(3650);

    ASSERT_TRUE(waitFor([&] { return m().state().RadioMode == ModeLSB && m().state().RadioFreq == 3650.0; }, 10000));
    mark();
    w().SelCmd[2].click();
    const qsizetype mode = seen(QStringLiteral("MD3;"));
    const qsizetype freq = seen(QStringLiteral("FA00007010000;"));
    ASSERT_GE(mode, 0) << simLog.mid(from).toStdString();
    ASSERT_GE(freq, 0) << simLog.mid(from).toStdString();
    EXPECT_LT(mode, freq);
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == ModeCW; }, 10000))
        << m().state().RadioFreq << " " << m().state().RadioMode;
}

}  // namespace
}  // namespace tv
