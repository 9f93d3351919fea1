// The program's real logic on the real Qt loop and serial layer, against the simulator as a TS-2000 on
// a socat pty pair: the radio is identified, polled, commanded, its meter followed, and a memory
// recalled mode first.

#include "support/SimulatedRadio.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

using test::waitFor;

class KenwoodLink : public test::SimulatedRadio {
protected:
    void SetUp() override {
        startStation(QStringLiteral("TS-2000"));
        if (program)
            QObject::connect(&m().state(), &RadioState::meterReported, &m().state(), [this](double v) { meter = v; });
    }
    bool simReceived(const QString& text) { return waitSim(text, 0); }
    double meter = -1;
};

TEST_F(KenwoodLink, IdentifiesPollsCommandsFollowsTheMeterAndRecallsAMemoryModeFirst) {
    ASSERT_TRUE(waitFor([&] { return m().state().RadioDisplayName == QLatin1String("Kenwood TS-2000"); }, 10000));
    // Polling brings frequency and mode in through the status reply.
    ASSERT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == ModeCW; }, 10000))
        << m().state().RadioFreq << " " << m().state().RadioMode;
    EXPECT_TRUE(waitFor([&] { return simReceived(QStringLiteral("AI1;")) && simReceived(QStringLiteral("SM0;")); }, 5000));
    KavMain& w = program->main;
    w.MBCmd.click();
    w.MemoryBankCmd[3].click();
    w.StoreCmd[2].click();
    EXPECT_EQ(program->memories.memory(32).freq, QStringLiteral("7,010.00"));
    EXPECT_EQ(program->memories.memory(32).mode, int(ModeCW));

    m().queue().SetXcvrFreq(14025.5);
    ASSERT_TRUE(waitFor([&] { return simReceived(QStringLiteral("FA00014025500;")); }, 5000));
    // The radio's own dial moves on from there, and the program follows.
    simCommand("dial +100");
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 14025.6; }, 5000)) << m().state().RadioFreq;

    m().queue().SetXcvrMode(ModeUSB);
    EXPECT_TRUE(waitFor([&] { return simReceived(QStringLiteral("MD2;")); }, 5000));
    EXPECT_TRUE(waitFor([&] { return m().state().RadioMode == ModeUSB; }, 5000));

    simCommand("meter 15");
    EXPECT_TRUE(waitFor([&] { return meter == 0.5; }, 5000)) << meter;

    // The recall commands the mode before the frequency.
    const qsizetype from = logMark();
    w.SelCmd[2].click();
    EXPECT_TRUE(receivedInOrder(QStringLiteral("MD3;"), QStringLiteral("FA00007010000;"), from));
    // In CW the width list is offered and shows the width the radio reports through the filter chain.
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == ModeCW; }, 10000))
        << m().state().RadioFreq << " " << m().state().RadioMode;
    EXPECT_TRUE(waitFor([&] { return w.WidthCombo.visible(); }, 5000));
    EXPECT_TRUE(waitFor([&] { return waitSim(QString(), 0) && simLog.indexOf(QStringLiteral("FW;"), from) >= 0; }, 5000));
    EXPECT_TRUE(waitFor([&] { return !w.WidthCombo.text().isEmpty(); }, 5000));
}

}  // namespace
}  // namespace tv
