// An SDR through its console, as an operator runs them: the real program, headless, and the console
// stand-in (tolvane-radiosim --sdr-console) on a private session bus, started in either order; a
// rigctld client tunes through the program while the console comes and goes.

#include "platform/SettingsStore.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include "support/PtyPair.h"
#include "support/RequiredTool.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

using test::stopProcess;
using test::waitFor;

QString bin(const QString& name) {
    return QStringLiteral(TOLVANE_BINARY_DIR "/") + name;
}


class SdrConsoleLink : public ::testing::Test {
  protected:
    void SetUp() override {
        TV_REQUIRE_TOOL("dbus-daemon");
        // A bus of our own: the console's name and the program's are nobody else's business.
        daemon.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                     QStringLiteral("--print-address")});
        ASSERT_TRUE(daemon.waitForStarted(5000));
        ASSERT_TRUE(waitFor([&] { return daemon.canReadLine(); }, 5000));
        env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                   QString::fromLocal8Bit(daemon.readLine()).trimmed());
    }
    void TearDown() override {
        stopProcess(program);
        if (console.state() != QProcess::NotRunning) {
            console.write("quit\n");
            if (!console.waitForFinished(3000)) stopProcess(console);
        }
        stopProcess(daemon);
    }

    void startProgram() {
        {
            SettingsStore s(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr);
            const QString g = QStringLiteral("General");
            s.SaveSetting(g, QStringLiteral("Radio"), QStringLiteral("FLEX-5000"));
            s.SaveSetting(g, QStringLiteral("InterrogateInterval"), QStringLiteral("200"));
        }
        {
            QTcpServer probe;  // a free port
            probe.listen(QHostAddress::LocalHost, 0);
            port = probe.serverPort();
        }
        program.setProcessEnvironment(env);
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(bin(QStringLiteral("tolvane")),
                      {QStringLiteral("--headless"), QStringLiteral("--config-dir"), dir.path(),
                       QStringLiteral("--app-dir"), QStringLiteral(TOLVANE_SOURCE_DIR "/data"),
                       QStringLiteral("--net-port"), QString::number(port)});
        ASSERT_TRUE(program.waitForStarted(10000));
        ASSERT_TRUE(said("running headless", 30000)) << output.toStdString();
    }
    void startConsole() {
        console.setProcessEnvironment(env);
        console.start(bin(QStringLiteral("tolvane-radiosim")),
                      {QStringLiteral("--sdr-console"), QStringLiteral("--freq"), QStringLiteral("7010"),
                       QStringLiteral("--mode"), QStringLiteral("USB")});
        ASSERT_TRUE(console.waitForStarted(5000));
        ASSERT_TRUE(waitFor([&] { return console.canReadLine(); }, 5000));
        ASSERT_TRUE(console.readLine().startsWith("CONSOLE ham.dde.SDRConsole"));
    }
    // The program's output holds the text (the n-th time).
    bool said(const char* text, int ms = 10000, int times = 1) {
        return waitFor(
            [&] {
                output += program.readAll();
                return output.count(text) >= times;
            },
            ms);
    }
    // The console logs each string it takes as "<- ".
    bool consoleHeard(const QString& text, int times = 1, int ms = 10000) {
        return waitFor(
            [&] {
                consoleLog += QString::fromLocal8Bit(console.readAllStandardError());
                return consoleLog.count(QStringLiteral("<- ") + text + QLatin1Char('\n')) >= times;
            },
            ms);
    }
    // One rigctld command on the program's rig server: its answer, and how long it took.
    std::pair<QString, qint64> rig(const QByteArray& line) {
        if (sock.state() != QAbstractSocket::ConnectedState) {
            sock.connectToHost(QHostAddress::LocalHost, port);
            if (!sock.waitForConnected(5000)) return {QStringLiteral("no connection"), -1};
        }
        QElapsedTimer t;
        t.start();
        sock.write(line + '\n');
        QByteArray reply;
        while (!reply.endsWith('\n') && sock.waitForReadyRead(3000)) reply += sock.readAll();
        return {QString::fromLatin1(reply).trimmed(), t.elapsed()};
    }

    QTemporaryDir dir;
    QProcess daemon, program, console;
    QProcessEnvironment env;
    QByteArray output;
    QString consoleLog;
    QTcpSocket sock;
    quint16 port = 0;
};

TEST_F(SdrConsoleLink, ProgramFirstThenTheConsoleWhichVanishesAndComesBack) {
    startProgram();
    EXPECT_TRUE(said("the console is not running")) << output.toStdString();
    // The console's "start" arms the program's start timer, whose tick links it.
    startConsole();
    ASSERT_TRUE(consoleHeard(QStringLiteral("Start"))) << consoleLog.toStdString();
    EXPECT_TRUE(said("linked to the console")) << output.toStdString();
    EXPECT_TRUE(said("Radio: 7010.000 kHz")) << output.toStdString();

    // A client's frequency and mode reach the console; the console's dial reaches the program.
    EXPECT_EQ(rig("F 14025500").first, QStringLiteral("RPRT 0"));
    EXPECT_TRUE(consoleHeard(QStringLiteral("NewVFOAFreq,14.0255"))) << consoleLog.toStdString();
    EXPECT_EQ(rig("M CW 0").first, QStringLiteral("RPRT 0"));
    EXPECT_TRUE(consoleHeard(QStringLiteral("NewVFOAMode,3"))) << consoleLog.toStdString();
    console.write("dial 1000\n");
    EXPECT_TRUE(said("Radio: 14026.500 kHz")) << output.toStdString();
    EXPECT_TRUE(consoleHeard(QStringLiteral("SendSMeter")));

    // It goes: the program says so, and its rig server keeps answering at once, honestly: the radio
    // can't be read.
    console.write("vanish\n");
    EXPECT_TRUE(said("the console has gone")) << output.toStdString();
    for (int i = 0; i < 5; ++i) {
        const auto [answer, ms] = rig("f");
        EXPECT_EQ(answer, QStringLiteral("RPRT -5"));
        EXPECT_LT(ms, 100);
    }
    // It comes back and says "start": linked again.
    console.write("return\n");
    EXPECT_TRUE(consoleHeard(QStringLiteral("Start"), 2)) << consoleLog.toStdString();
    EXPECT_TRUE(said("linked to the console", 10000, 2)) << output.toStdString();
}

TEST_F(SdrConsoleLink, ConsoleFirstIsLinkedAtTheProgramsBringUp) {
    startConsole();
    startProgram();
    EXPECT_TRUE(consoleHeard(QStringLiteral("Start"))) << consoleLog.toStdString();
    EXPECT_TRUE(said("linked to the console")) << output.toStdString();
    EXPECT_TRUE(said("Radio: 7010.000 kHz")) << output.toStdString();
    EXPECT_FALSE(output.contains("program error")) << output.toStdString();
}

}  // namespace
}  // namespace tv
