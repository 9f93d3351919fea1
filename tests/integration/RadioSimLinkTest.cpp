// The program's real logic on the real Qt loop and serial layer, against the radio simulator on a
// socat pty pair: the program follows the radio, commands it, paces itself on acknowledgements,
// reacts to a refusal, and stays responsive when the radio falls silent.

#include "app/Program.h"
#include "platform/Dialogs.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialDevice.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "support/SimulatedRadio.h"

#include <gtest/gtest.h>

#include <set>

namespace tv {
namespace {

using test::waitFor;
using test::PtyPair;

class RadioSimLink : public test::SimulatedRadio {
protected:
    void SetUp() override { startStation(QStringLiteral("IC-7300"), QStringLiteral("94")); }
};

TEST_F(RadioSimLink, FollowsTheRadioAndCommandsIt) {
    // Polling brings the radio's frequency and mode in.
    ASSERT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == 3; }, 10000))
        << m().state().RadioFreq << " " << m().state().RadioMode;
    // A command reaches the radio: its own dial then moves on from the new frequency.
    m().queue().SetXcvrFreq(14025.5);
    ASSERT_TRUE(waitSim(QStringLiteral("<- FE FE 94 E0 05 00 55 02 14 00 FD")));
    simCommand("dial +100");
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 14025.6; }, 5000)) << m().state().RadioFreq;
    simCommand("mode USB");
    EXPECT_TRUE(waitFor([&] { return m().state().RadioMode == 1; }, 5000));
    // A pty has no modem lines: said once in the log, and the link works regardless.
    QFile log(dir.filePath(QStringLiteral("ErrorLog.txt")));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(log.readAll()).count(QStringLiteral("has no modem lines")), 1);
}

TEST_F(RadioSimLink, ABurstIsPacedByAcknowledgementsNotByThePollInterval) {
    program->config.PollInterval.setText(QStringLiteral("1000"));
    ASSERT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0; }, 10000));
    ASSERT_TRUE(waitFor([&] { return m().queue().XcvrCmdCount == 0; }, 5000));
    // Ten commands at one per second would take ten seconds; answered with OK they take a few ticks.
    QElapsedTimer t;
    t.start();
    for (int i = 1; i <= 10; ++i) m().queue().SetXcvrFreq(7000 + i);
    ASSERT_TRUE(waitFor([&] { return m().queue().XcvrCmdCount == 0; }, 15000));
    EXPECT_LT(t.elapsed(), 3000);
}

TEST_F(RadioSimLink, ARefusalShowsTheNoticeAndARadioFallingSilentHangsNothing) {
    ASSERT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0; }, 10000));
    // No polls in between, so the refusal meets the command: a poll already on its way is answered first.
    program->config.Interrogation.setChecked(false);
    ASSERT_TRUE(waitFor([&] { return m().queue().XcvrCmdCount == 0; }, 5000));
    waitFor([] { return false; }, 500);
    simCommand("reject");
    m().queue().SetXcvrFreq(3550);
    ASSERT_TRUE(waitFor([&] { return program->messages.reject.visible(); }, 5000));
    EXPECT_EQ(program->messages.reject.Command.caption(), QStringLiteral("Set Frequency"));
    // The fresh interrogation reads the radio's real frequency back.
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0; }, 5000)) << m().state().RadioFreq;

    simCommand("silent on");
    QElapsedTimer t;
    t.start();
    m().queue().SetXcvrFreq(21074);
    int ticks = 0;
    program->main.ClockTimer.TimerEvent = [&] { ++ticks; };
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
