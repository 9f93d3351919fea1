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

#include "support/PtyPair.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

using test::waitFor;
using test::PtyPair;

class RadioSimLink : public ::testing::Test {
protected:
    void SetUp() override {
        const QString simPath = QStringLiteral(TOLVANE_BINARY_DIR "/tolvane-radiosim");
        if (!PtyPair::available()) GTEST_SKIP() << "socat not installed";
        ASSERT_TRUE(QFileInfo(simPath).isExecutable()) << "build tolvane-radiosim first";
        ASSERT_TRUE(pty.start());
        const QStringList& ends = pty.ends;
        sim.setProcessChannelMode(QProcess::SeparateChannels);
        sim.start(simPath, {QStringLiteral("--device"), ends[1], QStringLiteral("--model"), QStringLiteral("IC-7300"),
                            QStringLiteral("--freq"), QStringLiteral("7010"), QStringLiteral("--mode"), QStringLiteral("CW")});
        ASSERT_TRUE(sim.waitForStarted(5000));

        ProgramPaths paths;
        paths.configDir = dir.path();
        paths.appDir = QStringLiteral(TOLVANE_SOURCE_DIR "/data");
        {
            SettingsStore s(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr);
            const QString g = QStringLiteral("General");
            s.SaveSetting(g, QStringLiteral("Radio"), QStringLiteral("IC-7300"));
            s.SaveSetting(g, QStringLiteral("RadioId"), QStringLiteral("94"));
            s.SaveSetting(g, QStringLiteral("CommPort"), QStringLiteral("1"));
            s.SaveSetting(g, QStringLiteral("CommPortDevice1"), ends[0]);
            s.SaveSetting(g, QStringLiteral("InterrogateInterval"), QStringLiteral("200"));
        }
        program = std::make_unique<Program>(loop, dialogs, paths, [] { return std::make_unique<QtSerialDevice>(); });
        ASSERT_TRUE(program->FormLoad());
        ASSERT_TRUE(program->comm.PortOpened());
    }
    void TearDown() override {
        if (program) program->FormUnload();
        program.reset();
        if (sim.state() != QProcess::NotRunning) {
            sim.write("quit\n");
            if (!sim.waitForFinished(3000)) sim.kill();
        }
        pty.stop();
    }
    KavModule& m() { return program->module; }
    // A command on the simulator's stdin, waited for until the simulator says it has done it.
    void simCommand(const char* line) {
        sim.write(line);
        sim.write("\n");
        sim.waitForBytesWritten(1000);
        waitSim(QString::fromLatin1(line) + QLatin1Char(':'));
    }
    // Waits until the simulator's log (standard error) holds the text; it logs each frame it receives.
    bool waitSim(const QString& text, int ms = 5000) {
        return waitFor(
            [&] {
                simLog += QString::fromLocal8Bit(sim.readAllStandardError());
                return simLog.indexOf(text, simSeen) >= 0;
            },
            ms);
    }
    QString simLog;
    qsizetype simSeen = 0;

    QTemporaryDir dir;
    PtyPair pty;
    QProcess sim;
    QtEventLoop loop;
    HeadlessDialogs dialogs;
    std::unique_ptr<Program> program;
};

TEST_F(RadioSimLink, FollowsTheRadioAndCommandsIt) {
    // Polling brings the radio's frequency and mode in.
    ASSERT_TRUE(waitFor([&] { return m().RadioFreq == 7010.0 && m().RadioMode == 3; }, 10000))
        << m().RadioFreq << " " << m().RadioMode;
    // A command reaches the radio: its own dial then moves on from the new frequency.
    m().SetXcvrFreq(14025.5);
    ASSERT_TRUE(waitSim(QStringLiteral("<- FE FE 94 E0 05 00 55 02 14 00 FD")));
    simCommand("dial +100");
    EXPECT_TRUE(waitFor([&] { return m().RadioFreq == 14025.6; }, 5000)) << m().RadioFreq;
    simCommand("mode USB");
    EXPECT_TRUE(waitFor([&] { return m().RadioMode == 1; }, 5000));
    // A pty has no modem lines: said once in the log, and the link works regardless.
    QFile log(dir.filePath(QStringLiteral("ErrorLog.txt")));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(log.readAll()).count(QStringLiteral("has no modem lines")), 1);
}

TEST_F(RadioSimLink, ABurstIsPacedByAcknowledgementsNotByThePollInterval) {
    program->config.PollInterval.setText(QStringLiteral("1000"));
    ASSERT_TRUE(waitFor([&] { return m().RadioFreq == 7010.0; }, 10000));
    ASSERT_TRUE(waitFor([&] { return m().XcvrCmdCount == 0; }, 5000));
    // Ten commands at one per second would take ten seconds; answered with OK they take a few ticks.
    QElapsedTimer t;
    t.start();
    for (int i = 1; i <= 10; ++i) m().SetXcvrFreq(7000 + i);
    ASSERT_TRUE(waitFor([&] { return m().XcvrCmdCount == 0; }, 15000));
    EXPECT_LT(t.elapsed(), 3000);
}

TEST_F(RadioSimLink, ARefusalShowsTheNoticeAndARadioFallingSilentHangsNothing) {
    ASSERT_TRUE(waitFor([&] { return m().RadioFreq == 7010.0; }, 10000));
    // No polls in between, so the refusal meets the command: a poll already on its way is answered first.
    program->config.Interrogation.setChecked(false);
    ASSERT_TRUE(waitFor([&] { return m().XcvrCmdCount == 0; }, 5000));
    waitFor([] { return false; }, 500);
    simCommand("reject");
    m().SetXcvrFreq(3550);
    ASSERT_TRUE(waitFor([&] { return program->messages.reject.visible(); }, 5000));
    EXPECT_EQ(program->messages.reject.Command.caption(), QStringLiteral("Set Frequency"));
    // The fresh interrogation reads the radio's real frequency back.
    EXPECT_TRUE(waitFor([&] { return m().RadioFreq == 7010.0; }, 5000)) << m().RadioFreq;

    simCommand("silent on");
    QElapsedTimer t;
    t.start();
    m().SetXcvrFreq(21074);
    int ticks = 0;
    program->main.ClockTimer.TimerEvent = [&] { ++ticks; };
    waitFor([&] { return ticks >= 2; }, 5000);
    EXPECT_GE(ticks, 2);  // the loop keeps running
    EXPECT_LT(t.elapsed(), 5000);
    EXPECT_EQ(m().XcvrCmdCount, 0);  // the command went out; nobody waits for an answer
    EXPECT_DOUBLE_EQ(m().RadioFreq, 21074);
}

}  // namespace
}  // namespace tv
