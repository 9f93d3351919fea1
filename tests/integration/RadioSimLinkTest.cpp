// The program's real logic on the real Qt loop and serial layer, against the radio simulator as an
// IC-7300 on a socat pty pair: the program follows the radio, commands it, recalls a memory mode first,
// and stays responsive when the radio falls silent.

#include <QElapsedTimer>
#include <QFile>

#include "support/SimulatedRadio.h"

#include <gtest/gtest.h>

#include <set>

namespace tv {
namespace {

using test::waitFor;

class RadioSimLink : public test::SimulatedRadio {
protected:
    void SetUp() override { startStation(QStringLiteral("IC-7300"), QStringLiteral("94")); }
};

TEST_F(RadioSimLink, FollowsTheRadioCommandsItRecallsAMemoryAndASilentRadioHangsNothing) {
    // Polling brings the radio's frequency and mode in.
    ASSERT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == ModeCW; }, 10000))
        << m().state().RadioFreq << " " << m().state().RadioMode;
    KavMain& w = program->main;
    w.MBCmd.click();
    ASSERT_TRUE(w.MemoryBankFrame.visible());
    w.StoreCmd[1].click();
    EXPECT_EQ(w.FreqMemoryTextbox[1].text(), QStringLiteral("7,010.00"));
    // The operator picks the narrow group for this memory.
    w.FilterMemoryCombo[1].setListIndex(1);
    ASSERT_EQ(program->memories.memory(1).filter, QStringLiteral("Narrow"));

    // A command reaches the radio: its own dial then moves on from the new frequency.
    m().queue().SetXcvrFreq(14025.5);
    ASSERT_TRUE(waitSim(QStringLiteral("<- FE FE 94 E0 05 00 55 02 14 00 FD")));
    simCommand("dial +100");
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 14025.6; }, 5000)) << m().state().RadioFreq;
    simCommand("mode USB");
    EXPECT_TRUE(waitFor([&] { return m().state().RadioMode == ModeUSB; }, 5000));

    // The recall commands mode CW with group 2 (narrow) before 7010.000 kHz; the group lands with the report.
    const qsizetype from = logMark();
    w.SelCmd[1].click();
    EXPECT_TRUE(receivedInOrder(QStringLiteral("<- FE FE 94 E0 06 03 02 FD"),
                                QStringLiteral("<- FE FE 94 E0 05 00 00 01 07 00 FD"), from));
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == ModeCW; }, 10000))
        << m().state().RadioFreq << " " << m().state().RadioMode;
    EXPECT_TRUE(waitFor([&] { return w.FilterGroupCombo.text() == QLatin1String("Narrow"); }, 5000))
        << w.FilterGroupCombo.text().toStdString();

    // A pty has no modem lines: said once in the log, and the link works regardless.
    QFile log(dir.filePath(QStringLiteral("ErrorLog.txt")));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(log.readAll()).count(QStringLiteral("has no modem lines")), 1);

    // No polls from here on: the command alone goes to the silent radio.
    program->config.Interrogation.setChecked(false);
    ASSERT_TRUE(waitFor([&] { return m().queue().XcvrCmdCount == 0; }, 5000));
    simCommand("silent on");
    QElapsedTimer t;
    t.start();
    m().queue().SetXcvrFreq(21074);
    int ticks = 0;
    w.ClockTimer.TimerEvent = [&] { ++ticks; };
    waitFor([&] { return ticks >= 2; }, 5000);
    EXPECT_GE(ticks, 2);  // the loop keeps running
    EXPECT_LT(t.elapsed(), 5000);
    EXPECT_EQ(m().queue().XcvrCmdCount, 0);  // the command went out; nobody waits for an answer
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 21074);
}

// The demo's radio, its dial turning by itself: the meter the program shows rises and falls with it.
class WanderingRadio : public test::SimulatedRadio {};

TEST_F(WanderingRadio, TheWanderingDialBringsAMeterThatMoves) {
    startStation(QStringLiteral("IC-7300"), QStringLiteral("94"),
                 {QStringLiteral("--dial-step"), QStringLiteral("100"), QStringLiteral("--dial-every"), QStringLiteral("300")});
    std::set<double> readings;
    QObject::connect(&m().state(), &RadioState::meterReported, &m().state(), [&](double v) { readings.insert(v); });
    EXPECT_TRUE(waitFor([&] { return readings.size() >= 3; }, 15000)) << readings.size();
}

}  // namespace
}  // namespace tv
