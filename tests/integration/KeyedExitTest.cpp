// A transmitter is never left keyed by the way the program ends. The real program, headless, drives the
// radio simulator on the simulator's own pty (it outlives the program, as a radio does) and is keyed by a
// rig-server client. Killed outright while keyed, the program's next start unkeys the radio before it
// says anything else; hung up on (a closed terminal, a dropped SSH session) while keyed, it unkeys the
// radio before it closes the port, and ends in order.

#include "platform/SettingsStore.h"
#include "support/PtyPair.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

#include <csignal>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <ostream>

namespace tv {
namespace {

using test::waitFor;

struct Family {
    const char *name, *model, *address, *transmit, *receive;
};

const Family kFamilies[] = {
    {"Icom", "IC-7300", "94", "FE FE 94 E0 1C 00 01 FD", "FE FE 94 E0 1C 00 00 FD"},
    {"Kenwood", "TS-2000", "", "TX;", "RX;"},
    {"Yaesu", "FT817", "", "00 00 00 00 08", "00 00 00 00 88"},
};

void PrintTo(const Family& f, std::ostream* os) {
    *os << f.name;
}

QString bin(const char* name) {
    return QStringLiteral(TOLVANE_BINARY_DIR "/") + QLatin1String(name);
}

class KeyedExit : public ::testing::TestWithParam<Family> {
  protected:
    void SetUp() override {
        const Family& f = GetParam();
        sim.start(bin("tolvane-radiosim"),
                  {QStringLiteral("--model"), QLatin1String(f.model), QStringLiteral("--freq"),
                   QStringLiteral("7010"), QStringLiteral("--mode"), QStringLiteral("CW")});
        ASSERT_TRUE(waitFor([&] { return sim.canReadLine(); }, 5000));
        const QString pty = QString::fromLocal8Bit(sim.readLine()).trimmed().section(QLatin1Char(' '), 1);
        ASSERT_TRUE(pty.startsWith(QStringLiteral("/dev/"))) << pty.toStdString();
        SettingsStore s(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr);
        const QString g = QStringLiteral("General");
        s.SaveSetting(g, QStringLiteral("Radio"), QLatin1String(f.model));
        if (*f.address) s.SaveSetting(g, QStringLiteral("RadioId"), QLatin1String(f.address));
        s.SaveSetting(g, QStringLiteral("CommPort"), QStringLiteral("1"));
        s.SaveSetting(g, QStringLiteral("CommPortDevice1"), pty);
        simPty = pty;
        QTcpServer probe;  // a free port
        probe.listen(QHostAddress::LocalHost, 0);
        port = probe.serverPort();
    }
    void TearDown() override {
        program.kill();
        program.waitForFinished(5000);
        sim.write("quit\n");
        if (!sim.waitForFinished(3000)) sim.kill();
    }
    // Starts the program and waits until it shows the radio and serves clients.
    ::testing::AssertionResult startProgram() {
        output.clear();
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(bin("tolvane"),
                      {QStringLiteral("--headless"), QStringLiteral("--config-dir"), dir.path(),
                       QStringLiteral("--app-dir"), QStringLiteral(TOLVANE_SOURCE_DIR "/data"),
                       QStringLiteral("--net-port"), QString::number(port)});
        const bool up = waitFor(
            [&] {
                output += program.readAll();
                return output.contains("Radio: 7010.000 kHz") && output.contains("NetServer: listening");
            },
            30000);
        if (up) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << output.toStdString();
    }
    // One line to the rig server and its answer.
    QByteArray ask(const QByteArray& line) {
        QTcpSocket s;
        s.connectToHost(QHostAddress::LocalHost, port);
        if (!s.waitForConnected(5000)) return {};
        s.write(line + '\n');
        QByteArray in;
        waitFor([&] { return (in += s.readAll()).endsWith('\n'); }, 5000);
        return in.trimmed();
    }
    // The simulator's log (it logs each message it receives with "<- ").
    QString& simLog() { return log += QString::fromLocal8Bit(sim.readAllStandardError()); }
    bool simReceived(const char* what, qsizetype from) {
        const QString line = QStringLiteral("<- ") + QLatin1String(what);
        return waitFor([&] { return simLog().indexOf(line, from) >= 0; }, 8000);
    }
    // Keys the radio through a client that stays connected (one that leaves takes its transmission with
    // it), and waits until the radio has heard it.
    void key(qsizetype from) {
        keyer = std::make_unique<QTcpSocket>();
        keyer->connectToHost(QHostAddress::LocalHost, port);
        ASSERT_TRUE(keyer->waitForConnected(5000));
        keyer->write("T 1\n");
        QByteArray in;
        EXPECT_TRUE(waitFor([&] { return (in += keyer->readAll()).endsWith('\n'); }, 5000));
        EXPECT_EQ(in.trimmed(), QByteArray("RPRT 0"));
        ASSERT_TRUE(simReceived(GetParam().transmit, from)) << simLog().mid(from).toStdString();
    }

    QTemporaryDir dir;
    QString simPty;
    std::unique_ptr<QTcpSocket> keyer;
    QProcess sim, program;
    QByteArray output;
    QString log;
    quint16 port = 0;
};

TEST_P(KeyedExit, AKillWhileKeyedIsMadeGoodByTheNextStartAndAHangUpUnkeysBeforeTheEnd) {
    const Family& f = GetParam();
    ASSERT_TRUE(startProgram());
    key(0);
    program.kill();
    ASSERT_TRUE(program.waitForFinished(10000));
    // A poll the killed run wrote just before its end may still wait in the line for a busy simulator:
    // the next run's frames begin once the simulator has logged nothing new for a while.
    QElapsedTimer still;
    still.start();
    qsizetype seen = simLog().size();
    waitFor(
        [&] {
            if (simLog().size() != seen) {
                seen = log.size();
                still.restart();
            }
            return still.elapsed() >= 1000;
        },
        10000);

    // The next start: the radio hears its receive command first, and the log says why.
    const qsizetype restart = simLog().size();
    ASSERT_TRUE(startProgram());
    EXPECT_TRUE(simReceived(f.receive, restart)) << simLog().mid(restart).toStdString();
    const QString first = simLog().mid(restart).section(QStringLiteral("<- "), 1, 1);
    EXPECT_TRUE(first.startsWith(QLatin1String(f.receive))) << simLog().mid(restart).toStdString();
    EXPECT_TRUE(
        output.contains("the transmitter was keyed by a run of the program that ended without unkeying it; "
                        "unkeyed"))
        << output.toStdString();
    EXPECT_EQ(ask("t"), QByteArray("0"));

    // SIGHUP while keyed: the receive command goes before the port closes, and the program ends as on
    // SIGTERM.
    const qsizetype keyedFrom = simLog().size();
    key(keyedFrom);
    const qsizetype keyedAt = simLog().indexOf(QLatin1String(f.transmit), keyedFrom);
    ::kill(pid_t(program.processId()), SIGHUP);
    ASSERT_TRUE(program.waitForFinished(10000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_TRUE(simReceived(f.receive, keyedAt)) << simLog().mid(keyedFrom).toStdString();
    output += program.readAll();
    EXPECT_TRUE(output.contains("stop requested by signal SIGHUP")) << output.right(600).toStdString();
    EXPECT_TRUE(output.contains("the transmitter was keyed at shutdown; unkeyed"))
        << output.right(600).toStdString();
}

// A client's transmission is its own: another client's unkey is refused and the radio stays keyed; the
// owner dies (its socket reset, as a crashed program's is) and the radio hears its receive command within
// a second, with the client named in the log; so does one that keys and stops reading its answers.
TEST_P(KeyedExit, AClientsTransmissionIsItsOwnAndEndsWhenItDies) {
    const Family& f = GetParam();
    ASSERT_TRUE(startProgram());
    key(0);
    const qsizetype keyedAt = simLog().indexOf(QLatin1String(f.transmit));
    EXPECT_EQ(ask("T 0"), QByteArray("RPRT -9"));
    EXPECT_EQ(ask("t"), QByteArray("1"));
    const qsizetype before = simLog().size();
    EXPECT_EQ(simLog().indexOf(QLatin1String(f.receive), keyedAt), -1) << "still keyed";
    QElapsedTimer gone;
    gone.start();
    keyer->abort();
    EXPECT_TRUE(simReceived(f.receive, before)) << simLog().mid(before).toStdString();
    EXPECT_LT(gone.elapsed(), 1000);
    EXPECT_TRUE(waitFor([&] { return (output += program.readAll()).contains(", which has gone; unkeyed"); }))
        << output.right(600).toStdString();

    // A client keys, then goes on polling and never reads an answer (hung, or its reader died): once its
    // answers have waited unread for a few seconds it is gone too, and the radio hears the receive command.
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    const int small = 4096;
    ::setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::connect(fd, reinterpret_cast<const sockaddr*>(&to), sizeof to), 0);
    const qsizetype rekeyed = simLog().size();
    ASSERT_EQ(::send(fd, "T 1\n", 4, MSG_NOSIGNAL), 4);
    ASSERT_TRUE(simReceived(f.transmit, rekeyed)) << simLog().mid(rekeyed).toStdString();
    const qsizetype stalled = simLog().size();
    const QByteArray polls = QByteArray("f\n").repeated(100);
    QElapsedTimer pace;
    pace.start();
    EXPECT_TRUE(waitFor(
        [&] {
            if (pace.elapsed() >= 20) {
                pace.restart();
                ::send(fd, polls.constData(), size_t(polls.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
            }
            return simLog().indexOf(QLatin1String(f.receive), stalled) >= 0;
        },
        15000))
        << simLog().mid(stalled).toStdString();
    ::close(fd);
    EXPECT_TRUE(waitFor([&] { return (output += program.readAll()).contains("its answers have waited unread"); }))
        << output.right(600).toStdString();
}

// The cable pulled while keyed and put back: the program opens the port again by itself, and the first
// thing the radio hears over it is the receive command. The radio stays; the adapter (a socat bridge to
// the simulator's pty, whose program end keeps its path) goes and comes.
TEST_P(KeyedExit, APortUnpluggedWhileKeyedSaysReceiveFirstWhenItComesBack) {
    const Family& f = GetParam();
    ASSERT_TRUE(test::PtyPair::available());
    const QString adapter = dir.filePath(QStringLiteral("adapter"));
    QProcess bridge;
    auto plugIn = [&] {
        bridge.start(QStringLiteral("socat"), {QStringLiteral("pty,raw,echo=0,link=") + adapter,
                                               simPty + QStringLiteral(",raw,echo=0")});
        return bridge.waitForStarted(5000) && waitFor([&] { return QFileInfo::exists(adapter); });
    };
    ASSERT_TRUE(plugIn());
    SettingsStore(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr)
        .SaveSetting(QStringLiteral("General"), QStringLiteral("CommPortDevice1"), adapter);
    ASSERT_TRUE(startProgram());
    key(0);
    test::stopProcess(bridge);
    EXPECT_TRUE(waitFor([&] { return (output += program.readAll()).contains("KavComm: Com1 is gone"); }))
        << output.right(600).toStdString();
    const qsizetype unplugged = simLog().size();
    ASSERT_TRUE(plugIn());
    EXPECT_TRUE(simReceived(f.receive, unplugged)) << simLog().mid(unplugged).toStdString();
    const QString first = simLog().mid(unplugged).section(QStringLiteral("<- "), 1, 1);
    EXPECT_TRUE(first.startsWith(QLatin1String(f.receive))) << simLog().mid(unplugged).toStdString();
    EXPECT_TRUE(waitFor([&] { return (output += program.readAll()).contains("when the port was lost; unkeyed"); }))
        << output.right(600).toStdString();
    EXPECT_EQ(ask("t"), QByteArray("0"));
    test::stopProcess(bridge);
}

INSTANTIATE_TEST_SUITE_P(Families, KeyedExit, ::testing::ValuesIn(kFamilies),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tv
