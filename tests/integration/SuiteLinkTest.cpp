// The suite link as a sibling sees it: the real program, headless, on a private session bus, driving
// the radio simulator over a pty pair; tolvane-send plays the sibling.

#include "platform/SettingsStore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include "support/PtyPair.h"
#include "support/RequiredTool.h"

#include <gtest/gtest.h>

#include <csignal>
#include <tuple>
#include <vector>

namespace tv {
namespace {

using test::stopProcess;
using test::waitFor;
using test::PtyPair;


class SuiteLink : public ::testing::Test {
protected:
    void SetUp() override {
        TV_REQUIRE_TOOL("dbus-daemon");
        TV_REQUIRE_TOOL("socat");
        // A bus of our own, so that nothing on the desktop's bus sees or disturbs the test.
        daemon.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                     QStringLiteral("--print-address")});
        ASSERT_TRUE(daemon.waitForStarted(5000));
        ASSERT_TRUE(waitFor([&] { return daemon.canReadLine(); }, 5000));
        address = QString::fromLocal8Bit(daemon.readLine()).trimmed();
        ASSERT_FALSE(address.isEmpty());
        env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address);

        ASSERT_TRUE(pty.start());
        const QStringList& ends = pty.ends;
        sim.start(bin(QStringLiteral("tolvane-radiosim")),
                  {QStringLiteral("--device"), ends[1], QStringLiteral("--model"), QStringLiteral("IC-7300"),
                   QStringLiteral("--freq"), QStringLiteral("7010"), QStringLiteral("--mode"), QStringLiteral("CW")});
        ASSERT_TRUE(sim.waitForStarted(5000));
        // The simulator has its end of the line set up once it names it.
        ASSERT_TRUE(waitFor([&] { return sim.canReadLine(); }, 5000));

        {
            SettingsStore s(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr);
            const QString g = QStringLiteral("General");
            s.SaveSetting(g, QStringLiteral("Radio"), QStringLiteral("IC-7300"));
            s.SaveSetting(g, QStringLiteral("RadioId"), QStringLiteral("94"));
            s.SaveSetting(g, QStringLiteral("CommPort"), QStringLiteral("1"));
            s.SaveSetting(g, QStringLiteral("CommPortDevice1"), ends[0]);
            s.SaveSetting(g, QStringLiteral("InterrogateInterval"), QStringLiteral("200"));
            for (const auto& [section, key, value] : extraSettings) s.SaveSetting(section, key, value);
        }
        program.setProcessEnvironment(env);
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(bin(QStringLiteral("tolvane")),
                      {QStringLiteral("--headless"), QStringLiteral("--config-dir"), dir.path(),
                       QStringLiteral("--app-dir"), QStringLiteral(TOLVANE_SOURCE_DIR "/data")});
        ASSERT_TRUE(program.waitForStarted(10000));
        ASSERT_TRUE(waitFor([&] { return (output += program.readAll()).contains("running headless"); }, 30000))
            << output.toStdString();
    }
    void TearDown() override {
        stopProcess(watcher);
        stopProcess(program);
        if (sim.state() != QProcess::NotRunning) {
            sim.write("quit\n");
            if (!sim.waitForFinished(3000)) sim.kill();
        }
        pty.stop();
        stopProcess(daemon);
    }
    static QString bin(const QString& name) { return QStringLiteral(TOLVANE_BINARY_DIR "/") + name; }

    // Runs tolvane-send to its end: exit code and standard output.
    std::pair<int, QString> send(const QStringList& args) {
        QProcess p;
        p.setProcessEnvironment(env);
        p.start(bin(QStringLiteral("tolvane-send")), args);
        if (!p.waitForFinished(15000)) {
            p.kill();
            p.waitForFinished();
            return {-1, QString()};
        }
        return {p.exitCode(), QString::fromLocal8Bit(p.readAllStandardOutput()).trimmed()};
    }
    // The simulator says its state after each stdin command.
    QString simState() {
        simLog += QString::fromLocal8Bit(sim.readAllStandardError());
        const qsizetype from = simLog.size();
        sim.write("dial 0\n");
        waitFor(
            [&] {
                simLog += QString::fromLocal8Bit(sim.readAllStandardError());
                return simLog.indexOf(QLatin1String("dial 0:"), from) >= 0;
            },
            3000);
        return simLog.mid(simLog.indexOf(QLatin1String("dial 0:"), from)).section(QLatin1Char('\n'), 0, 0);
    }
    QString simLog;

    // Settings a test adds before the program starts: section, key, value.
    std::vector<std::tuple<QString, QString, QString>> extraSettings;
    QTemporaryDir dir;
    PtyPair pty;
    QProcess daemon, sim, program, watcher;
    QString address;
    QProcessEnvironment env;
    QByteArray output;
};

TEST_F(SuiteLink, ASiblingTunesTheRadioFollowsItsModeAndShutsTheProgramDown) {
    watcher.setProcessEnvironment(env);
    watcher.start(bin(QStringLiteral("tolvane-send")), {QStringLiteral("--watch")});
    ASSERT_TRUE(watcher.waitForStarted(5000));
    ASSERT_TRUE(waitFor([&] { return watcher.readAllStandardError().contains("watching"); }, 10000));

    // Once the program follows the radio, a sibling tunes it.
    ASSERT_TRUE(waitFor([&] { return (output += program.readAll()).contains("Radio: 7010.000 kHz"); }, 15000))
        << output.toStdString();
    EXPECT_EQ(send({QStringLiteral("001qsy14025.5")}), std::make_pair(0, QStringLiteral("accepted")));
    // Asked gently: each probe makes the radio report its frequency on the line, and a report
    // restarts the program's poll interval, so probes come seldom enough for the queue to move.
    QString state;
    EXPECT_TRUE(waitFor(
        [&] {
            QElapsedTimer pause;
            pause.start();
            while (pause.elapsed() < 800) QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
            return (state = simState()).contains(QLatin1String("14025500 Hz"));
        },
        10000))
        << simLog.left(600).toStdString() << "\n--- program:\n" << (output += program.readAll()).right(1500).toStdString();
    EXPECT_EQ(send({QStringLiteral("000te")}), std::make_pair(1, QStringLiteral("refused")));
    EXPECT_EQ(send({QStringLiteral("--topic"), QStringLiteral("TolvaneUI"), QStringLiteral("--request"),
                    QStringLiteral("FreqDisplay")})
                  .first,
              0);

    // The item as it stands is read; the watch then must see the change, whenever it subscribed.
    ASSERT_TRUE(waitFor([&] { return send({QStringLiteral("--request"), QStringLiteral("RadioMode")}).second == QLatin1String("CW"); },
                        10000));
    QString seen;
    sim.write("mode USB\n");
    EXPECT_TRUE(waitFor(
        [&] {
            seen += QString::fromLocal8Bit(watcher.readAllStandardOutput());
            return seen.contains(QLatin1String("RadioMode=USB")) && seen.contains(QLatin1String("Mode=SSB"));
        },
        10000))
        << seen.toStdString();
    EXPECT_EQ(send({QStringLiteral("--request"), QStringLiteral("RadioMode")}), std::make_pair(0, QStringLiteral("USB")));

    EXPECT_EQ(send({QStringLiteral("000shutdown")}), std::make_pair(0, QStringLiteral("accepted")));
    ASSERT_TRUE(program.waitForFinished(20000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
    QFile ini(dir.filePath(QStringLiteral("Tolvane.ini")));
    ASSERT_TRUE(ini.open(QIODevice::ReadOnly));
    EXPECT_TRUE(ini.readAll().contains("Debug=0"));
    // Gone from the bus with the program.
    EXPECT_EQ(send({QStringLiteral("000test")}).first, 2);
}

// A sequence that loops for ever, started by a sibling: the program must stay usable while it runs,
// the sibling must hear that no answer came (not that it was refused), and a stop request must end it.
class SuiteLinkLoop : public SuiteLink {
protected:
    void SetUp() override {
        const QString seq = QStringLiteral("CommandSequences");
        // Debug lines show each round of the loop.
        extraSettings = {{QStringLiteral("General"), QStringLiteral("Debug"), QStringLiteral("1")},
                         {seq, QStringLiteral("SequenceName_15"), QStringLiteral("Spin")},
                         {seq, QStringLiteral("CommandValue_15_0"), QStringLiteral("<GOTO 1>")}};
        SuiteLink::SetUp();
    }
};

TEST_F(SuiteLinkLoop, ALoopingSequenceLeavesTheProgramAnsweringAndEndsWithIt) {
    QProcess caller;
    caller.setProcessEnvironment(env);
    caller.start(bin(QStringLiteral("tolvane-send")), {QStringLiteral("--timeout"), QStringLiteral("1500"),
                                                       QStringLiteral("001seqindex15")});
    ASSERT_TRUE(waitFor([&] { return (output += program.readAll()).count("command: <GOTO 1>") >= 2; }, 15000))
        << output.right(2000).toStdString();
    // The call that started the loop never returns; its caller says so, apart from a refusal.
    ASSERT_TRUE(caller.waitForFinished(15000));
    EXPECT_EQ(caller.exitCode(), 3);
    EXPECT_TRUE(caller.readAllStandardError().contains("no answer from ham.dde.Tolvane within 1500 ms"));
    EXPECT_TRUE(caller.readAllStandardOutput().isEmpty());
    // Meanwhile other siblings are served.
    EXPECT_EQ(send({QStringLiteral("--request"), QStringLiteral("RadioMode")}).first, 0);

    ::kill(pid_t(program.processId()), SIGTERM);
    ASSERT_TRUE(program.waitForFinished(20000)) << (output += program.readAll()).right(2000).toStdString();
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
    QFile log(dir.filePath(QStringLiteral("ErrorLog.txt")));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_TRUE(log.readAll().contains("Tolvane shutdown"));
}

}  // namespace
}  // namespace tv
