// The rig server as the Linux ham programs meet it: the real program, headless, drives the radio
// simulator over a pty pair, and Debian's rigctl (Hamlib's NET rigctl, model 2) opens it, reads and
// sets. Then ten clients read it as fast as it answers: the radio hears nothing but the program's own
// polls. (How fast the answers come is measured by benchmarks/rigctl.cpp.) A contest logger hears the
// same radio in UDP datagrams and tunes it with one.

#include "platform/SettingsStore.h"

#include <QElapsedTimer>
#include <QMap>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUdpSocket>
#include <QXmlStreamReader>

#include "support/PtyPair.h"
#include "support/QtPrinters.h"
#include "support/RequiredTool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace tv {
namespace {

using test::PtyPair;
using test::stopProcess;
using test::waitFor;

QString bin(const QString& name) {
    return QStringLiteral(TOLVANE_BINARY_DIR "/") + name;
}


// A model, its address, and what the simulator receives for F 14025500, M CW 500, T 1, T 0, S 1 VFOB.
struct Model {
    const char *name, *address, *freq, *modeCW, *transmit, *receive, *split;
    const char* usbWidth;  // "m" in USB: the Icom's first filter, the Kenwood's nominal width
};

const Model kIcom{"IC-7300",
                  "94",
                  "FE FE 94 E0 05 00 55 02 14 00 FD",
                  "FE FE 94 E0 06 03",
                  "FE FE 94 E0 1C 00 01 FD",
                  "FE FE 94 E0 1C 00 00 FD",
                  "FE FE 94 E0 0F 01 FD",
                  "3000"};
const Model kKenwood{"TS-2000", "", "FA00014025500;", "MD3;", "TX;", "RX;", "FT1;", "2400"};

class RigctlStation : public ::testing::Test {
  protected:
    void startStation(const Model& model) {
        if (QStandardPaths::findExecutable(QStringLiteral("rigctl")).isEmpty())
            GTEST_SKIP() << "rigctl not installed (Debian package libhamlib-utils)";
        ASSERT_TRUE(PtyPair::available()) << "socat not installed";
        ASSERT_TRUE(pty.start());
        sim.start(bin(QStringLiteral("tolvane-radiosim")),
                  {QStringLiteral("--device"), pty.ends[1], QStringLiteral("--model"),
                   QString::fromLatin1(model.name), QStringLiteral("--freq"), QStringLiteral("7010"),
                   QStringLiteral("--mode"), QStringLiteral("USB")});
        ASSERT_TRUE(sim.waitForStarted(5000));
        ASSERT_TRUE(waitFor([&] { return sim.canReadLine(); }, 5000));
        {
            SettingsStore s(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr);
            const QString g = QStringLiteral("General");
            s.SaveSetting(g, QStringLiteral("Radio"), QString::fromLatin1(model.name));
            if (*model.address)
                s.SaveSetting(g, QStringLiteral("RadioId"), QString::fromLatin1(model.address));
            s.SaveSetting(g, QStringLiteral("CommPort"), QStringLiteral("1"));
            s.SaveSetting(g, QStringLiteral("CommPortDevice1"), pty.ends[0]);
            s.SaveSetting(g, QStringLiteral("InterrogateInterval"), QStringLiteral("200"));
            if (presettings) presettings(s);
        }
        for (quint16* free : {&port, &xmlrpcPort}) {
            QTcpServer probe;  // a free port
            probe.listen(QHostAddress::LocalHost, 0);
            *free = probe.serverPort();
        }
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(bin(QStringLiteral("tolvane")),
                      {QStringLiteral("--headless"), QStringLiteral("--config-dir"), dir.path(),
                       QStringLiteral("--app-dir"), QStringLiteral(TOLVANE_SOURCE_DIR "/data"),
                       QStringLiteral("--net-port"), QString::number(port), QStringLiteral("--xmlrpc-port"),
                       QString::number(xmlrpcPort)});
        ASSERT_TRUE(program.waitForStarted(10000));
        ASSERT_TRUE(waitFor(
            [&] {
                output += program.readAll();
                return output.contains("Radio: 7010.000 kHz") && output.contains("Radio: mode USB");
            },
            30000))
            << output.toStdString();
        ASSERT_TRUE(output.contains("NetServer: listening on 127.0.0.1:" + QByteArray::number(port)));
    }
    void TearDown() override {
        stopProcess(program);
        stopProcess(sim);
        pty.stop();
    }
    // Runs rigctl against the program to its end: exit code and what it printed.
    std::pair<int, QString> rigctl(const QStringList& commands) {
        QProcess p;
        p.setProcessChannelMode(QProcess::MergedChannels);
        p.start(QStringLiteral("rigctl"),
                QStringList{QStringLiteral("-m"), QStringLiteral("2"), QStringLiteral("-r"),
                            QStringLiteral("127.0.0.1:%1").arg(port)} +
                    commands);
        if (!p.waitForFinished(20000)) return {-1, QString()};
        return {p.exitCode(), QString::fromLocal8Bit(p.readAll()).trimmed()};
    }
    // The simulator logs each message it receives ("<- ") and sends ("-> ").
    QString readSim() { return simLog += QString::fromLocal8Bit(sim.readAllStandardError()); }
    bool simReceived(const QString& text, int ms = 5000) {
        return waitFor(
            [&] {
                for (const QString& line : readSim().split(QLatin1Char('\n')))
                    if (line.startsWith(QLatin1String("<- ")) && line.contains(text)) return true;
                return false;
            },
            ms);
    }

    std::function<void(SettingsStore&)> presettings;  // more settings for a test
    QTemporaryDir dir;
    PtyPair pty;
    QProcess sim, program;
    QByteArray output;
    QString simLog;
    quint16 port = 0, xmlrpcPort = 0;
};

class RigctlLink : public RigctlStation, public ::testing::WithParamInterface<const Model*> {};

// rigctl opens the program, tunes, keys and splits the radio.
TEST_P(RigctlLink, RigctlTunesKeysAndSplitsTheRadio) {
    const Model& model = *GetParam();
    startStation(model);
    auto run = [&](const char* commands) {
        return rigctl(QString::fromLatin1(commands).split(QLatin1Char(' ')));
    };
    // Opening reads the state dump; a failure to parse it ends rigctl with an error.
    EXPECT_EQ(run("f m"), std::make_pair(0, QStringLiteral("7010000\nUSB\n") + QLatin1String(model.usbWidth)));
    // Each set reaches the radio as its own command, and a client reads it back.
    const struct {
        const char *set, *frame, *get, *answer;
    } steps[] = {{"F 14025500", model.freq, "f", "14025500"},
                 {"M CW 500", model.modeCW, "m", "CW\n500"},
                 {"S 1 VFOB", model.split, "s", "1\nVFOB"}};
    for (const auto& step : steps) {
        EXPECT_EQ(run(step.set).first, 0) << step.set;
        EXPECT_TRUE(simReceived(QString::fromLatin1(step.frame)))
            << step.set << simLog.right(800).toStdString();
        EXPECT_EQ(run(step.get), std::make_pair(0, QString::fromLatin1(step.answer))) << step.set;
    }
    // Keyed for as long as the client that keyed is there: one run keys and reads, and its end unkeys.
    EXPECT_EQ(run("T 1 t"), std::make_pair(0, QStringLiteral("1")));
    EXPECT_TRUE(simReceived(QString::fromLatin1(model.transmit)));
    EXPECT_TRUE(simReceived(QString::fromLatin1(model.receive)));
    EXPECT_EQ(run("t"), std::make_pair(0, QStringLiteral("0")));
    // The radio's own dial moves on, and a client reads where it went.
    sim.write("dial +100\n");
    EXPECT_TRUE(waitFor([&] { return run("f").second == QLatin1String("14025600"); }, 15000));
}

INSTANTIATE_TEST_SUITE_P(IcomAndKenwood, RigctlLink, ::testing::Values(&kIcom, &kKenwood),
                         [](const auto& info) { return info.index == 0 ? "Icom" : "Kenwood"; });

// WSJT-X's sequence through Hamlib's own network client (Debian's Python bindings): it opens the
// program, probes the dial, polls, asks for its data mode, splits, keys and unkeys, and closes. The
// IC-7300 gets USB with data on by its data sub-command, and a fresh client reads PKTUSB back.
TEST_F(RigctlStation, HamlibsNetworkClientRunsWsjtxsSequenceAndTheDataModeReachesTheRadio) {
    startStation(kIcom);
    QProcess python;
    python.setProcessChannelMode(QProcess::MergedChannels);
    python.start(
        QStringLiteral("/usr/bin/python3"),
        {QStringLiteral(TOLVANE_SOURCE_DIR "/tests/integration/hamlib-wsjtx.py"), QString::number(port)});
    ASSERT_TRUE(python.waitForFinished(60000));
    const QString said = QString::fromLocal8Bit(python.readAll());
    if (python.exitCode() == 2) {
        if (::tv::test::toolsRequired()) FAIL() << "python3-hamlib is not installed";
        GTEST_SKIP() << "python3-hamlib is not installed";
    }
    EXPECT_EQ(python.exitCode(), 0) << said.toStdString();
    EXPECT_TRUE(said.endsWith(QLatin1String("closed\n"))) << said.toStdString();
    // USB, then data on with the filter in force.
    EXPECT_TRUE(simReceived(QStringLiteral("FE FE 94 E0 06 01"))) << simLog.right(800).toStdString();
    EXPECT_TRUE(simReceived(QStringLiteral("FE FE 94 E0 1A 06 01"))) << simLog.right(800).toStdString();
    EXPECT_TRUE(simReceived(QStringLiteral("FE FE 94 E0 1C 00 01 FD")));
    EXPECT_TRUE(simReceived(QStringLiteral("FE FE 94 E0 1C 00 00 FD")));
    EXPECT_TRUE(waitFor(
        [&] { return rigctl({QStringLiteral("m")}).second.startsWith(QLatin1String("PKTUSB\n")); }, 10000));
}

// The programs set up for the XML-RPC rig server reach the same radio: every method Python's own client
// calls is answered from what the radio has, its sets reach the radio, and Hamlib's own client for that
// server (model 4) reads and tunes.
TEST_F(RigctlStation, XmlRpcClientsAndHamlibsFlrigModelDriveTheRadio) {
    startStation(kIcom);
    ASSERT_TRUE(output.contains("XmlRpc: listening on 127.0.0.1:" + QByteArray::number(xmlrpcPort))) << output.toStdString();
    QProcess python;
    python.setProcessChannelMode(QProcess::MergedChannels);
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral(TOLVANE_SOURCE_DIR "/tests/integration/xmlrpc-clients.py"), QString::number(xmlrpcPort)});
    ASSERT_TRUE(python.waitForFinished(60000));
    const QString said = QString::fromLocal8Bit(python.readAll());
    EXPECT_EQ(python.exitCode(), 0) << said.toStdString();
    EXPECT_TRUE(said.endsWith(QLatin1String("done\n"))) << said.toStdString();
    EXPECT_TRUE(simReceived(QStringLiteral("FE FE 94 E0 05 00 40 07 14 00 FD"))) << simLog.right(800).toStdString();
    EXPECT_TRUE(simReceived(QStringLiteral("FE FE 94 E0 06 03 02 FD"))) << simLog.right(800).toStdString();
    EXPECT_TRUE(simReceived(QStringLiteral("FE FE 94 E0 1C 00 00 FD")));

    auto hamlib = [&](const QStringList& commands) {
        QProcess p;
        p.setProcessChannelMode(QProcess::MergedChannels);
        p.start(QStringLiteral("rigctl"), QStringList{QStringLiteral("-m"), QStringLiteral("4"), QStringLiteral("-r"),
                                                      QStringLiteral("127.0.0.1:%1").arg(xmlrpcPort)} +
                                              commands);
        p.waitForFinished(20000);
        return std::make_pair(p.exitCode(), QString::fromLocal8Bit(p.readAll()).trimmed());
    };
    EXPECT_EQ(hamlib({QStringLiteral("F"), QStringLiteral("7074000")}).first, 0);
    EXPECT_TRUE(simReceived(QStringLiteral("FE FE 94 E0 05 00 40 07 07 00 FD"))) << simLog.right(800).toStdString();
    EXPECT_TRUE(waitFor([&] { return hamlib({QStringLiteral("f")}).second.endsWith(QLatin1String("7074000")); }, 10000));
    EXPECT_EQ(hamlib({QStringLiteral("M"), QStringLiteral("LSB"), QStringLiteral("0")}).first, 0);
    EXPECT_TRUE(simReceived(QStringLiteral("FE FE 94 E0 06 00"))) << simLog.right(800).toStdString();
}

// fldigi's and Hamlib's own calls, recorded against flrig with scripts/record-xmlrpc.py, sent again: each is
// answered with the type the client got there, or a fault for a method not served, on connections that hold;
// and the radio ends where the recorded sets put it.
TEST_F(RigctlStation, RecordedFldigiAndHamlibCallsGetTheAnswersTheyExpect) {
    startStation(kIcom);
    for (const char* client : {"fldigi", "hamlib"}) {
        SCOPED_TRACE(client);
        sim.write("freq 7010\nmode USB\n");  // each from where its recording began
        ASSERT_TRUE(waitFor([&] { return readSim().contains(QLatin1String("mode USB: 7010000 Hz")); }));
        simLog.clear();
        QProcess python;
        python.setProcessChannelMode(QProcess::MergedChannels);
        python.start(QStringLiteral("/usr/bin/python3"),
                     {QStringLiteral(TOLVANE_SOURCE_DIR "/tests/integration/xmlrpc-replay.py"),
                      QStringLiteral(TOLVANE_SOURCE_DIR "/tests/data/xmlrpc/%1.txt").arg(QLatin1String(client)),
                      QString::number(xmlrpcPort)});
        ASSERT_TRUE(python.waitForFinished(120000));
        const QString said = QString::fromLocal8Bit(python.readAll());
        ASSERT_EQ(python.exitCode(), 0) << said.toStdString();
        ASSERT_TRUE(said.endsWith(QLatin1String("done\n"))) << said.toStdString();
        // What the sets left the radio at: its own word for frequency and mode, the last PTT and split
        // commands it heard.
        QMap<QString, QString> expect;
        for (const QString& line : said.split(QLatin1Char('\n')))
            if (line.startsWith(QLatin1String("expect ")))
                expect[line.section(QLatin1Char(' '), 1, 1)] = line.section(QLatin1Char(' '), 2);
        ASSERT_TRUE(expect.contains(QStringLiteral("freq")) && expect.contains(QStringLiteral("mode"))) << said.toStdString();
        const QString state = QStringLiteral("meter 0: %1 Hz %2").arg(expect[QStringLiteral("freq")], expect[QStringLiteral("mode")]);
        EXPECT_TRUE(waitFor([&] {
            sim.write("meter 0\n");
            return waitFor([&] { return readSim().contains(state); }, 500);
        }, 10000)) << state.toStdString() << "\n" << simLog.right(800).toStdString();
        // The last such command the radio heard, once the queue has sent it.
        auto lastIs = [&](const char* command, const char* key) {
            if (!expect.contains(QLatin1String(key))) return true;
            const QString want = QStringLiteral("<- FE FE 94 E0 %1 0%2 FD").arg(QLatin1String(command), expect.value(QLatin1String(key)));
            return waitFor([&] {
                QString found;
                for (const QString& line : readSim().split(QLatin1Char('\n')))
                    if (line.startsWith(QLatin1String("<- FE FE 94 E0 %1 0").arg(QLatin1String(command)))) found = line;
                return found == want;
            });
        };
        EXPECT_TRUE(lastIs("1C 00", "ptt")) << simLog.right(800).toStdString();
        EXPECT_TRUE(lastIs("0F", "split")) << simLog.right(800).toStdString();
    }
}

// A contest logger on this computer hears the radio in RadioInfo datagrams and tunes it with a
// Radio_SetFrequency datagram; garbage on the command port is logged and dropped.
TEST_F(RigctlStation, ContestLoggersHearTheRadioOnUdpAndTuneIt) {
    QUdpSocket logger, probe;
    ASSERT_TRUE(logger.bind(QHostAddress::LocalHost, 0));
    ASSERT_TRUE(probe.bind(QHostAddress::LocalHost, 0));
    const quint16 commandPort = probe.localPort();
    probe.close();
    presettings = [&](SettingsStore& s) {
        const QString l = QStringLiteral("Loggers");
        s.SaveSetting(l, QStringLiteral("UdpRadioInfoEnabled"), QStringLiteral("True"));
        s.SaveSetting(l, QStringLiteral("UdpRadioInfoTo"), QStringLiteral("127.0.0.1:%1").arg(logger.localPort()));
        s.SaveSetting(l, QStringLiteral("UdpCommandsEnabled"), QStringLiteral("True"));
        s.SaveSetting(l, QStringLiteral("UdpCommandsPort"), QString::number(commandPort));
    };
    startStation(kKenwood);
    // The fields of the next datagram that parses as RadioInfo with the frequency asked for.
    auto heard = [&](const QString& freq) {
        std::map<QString, QString> fields;
        const bool got = waitFor(
            [&] {
                while (logger.hasPendingDatagrams()) {
                    QByteArray d(qsizetype(logger.pendingDatagramSize()), '\0');
                    d.truncate(qsizetype(logger.readDatagram(d.data(), d.size())));
                    QXmlStreamReader x(d);
                    fields.clear();
                    if (!x.readNextStartElement() || x.name() != QLatin1String("RadioInfo")) continue;
                    while (x.readNextStartElement()) fields[x.name().toString()] = x.readElementText();
                    if (!x.hasError() && fields[QStringLiteral("Freq")] == freq) return true;
                }
                return false;
            },
            15000);
        return got ? fields : std::map<QString, QString>{};
    };
    auto fields = heard(QStringLiteral("701000"));
    EXPECT_EQ(fields[QStringLiteral("TXFreq")], QStringLiteral("701000"));
    EXPECT_EQ(fields[QStringLiteral("Mode")], QStringLiteral("USB"));
    EXPECT_EQ(fields[QStringLiteral("RadioNr")], QStringLiteral("1"));
    EXPECT_EQ(fields[QStringLiteral("IsTransmitting")], QStringLiteral("False"));

    QUdpSocket sender;
    sender.writeDatagram("<Radio_SetFrequency>not xml", QHostAddress::LocalHost, commandPort);
    sender.writeDatagram("<?xml version=\"1.0\"?><Radio_SetFrequency><RadioNr>1</RadioNr>"
                         "<Frequency>1402550</Frequency></Radio_SetFrequency>",
                         QHostAddress::LocalHost, commandPort);
    EXPECT_TRUE(simReceived(QStringLiteral("FA00014025500;"))) << simLog.right(800).toStdString();
    EXPECT_EQ(heard(QStringLiteral("1402550"))[QStringLiteral("Mode")], QStringLiteral("USB"));
    output += program.readAll();
    EXPECT_TRUE(output.contains("ContestUdp: datagram from 127.0.0.1:")) << output.toStdString();
}

// One client of the load test: asks "f", "m" and "t" again as soon as they are answered, so many times.
struct Reader {
    static constexpr int kRounds = 100;
    explicit Reader(quint16 port) {
        QObject::connect(&socket, &QTcpSocket::connected, &socket, [this] { socket.write("f\nm\nt\n"); });
        QObject::connect(&socket, &QTcpSocket::readyRead, &socket, [this] {
            in += socket.readAll();
            while (in.count('\n') >= 4) {
                const QList<QByteArray> lines = in.split('\n');
                if (lines[0] != "7010000" || lines[1] != "USB" || lines[2] != "3000" || lines[3] != "0")
                    ++wrong;
                in = in.mid(lines[0].size() + lines[1].size() + lines[2].size() + lines[3].size() + 4);
                if (++answers < kRounds) socket.write("f\nm\nt\n");
            }
        });
        socket.connectToHost(QHostAddress::LocalHost, port);
    }
    QTcpSocket socket;
    QByteArray in;
    int answers = 0, wrong = 0;
};

TEST_F(RigctlStation, TenClientsReadingAsFastAsTheyCanCostTheRadioNothing) {
    startStation(kIcom);
    const qsizetype from = readSim().size();
    QElapsedTimer elapsed;
    elapsed.start();
    std::vector<std::unique_ptr<Reader>> clients;
    for (int i = 0; i < 10; ++i) clients.push_back(std::make_unique<Reader>(port));
    const bool done = waitFor(
        [&] {
            return std::all_of(clients.begin(), clients.end(),
                               [](const auto& c) { return c->answers == Reader::kRounds; });
        },
        60000);
    const qint64 ms = elapsed.elapsed();
    ASSERT_TRUE(done);
    for (const auto& c : clients) EXPECT_EQ(c->wrong, 0);
    // Three thousand reads, answered from what the program knows: on the line only its own polls of
    // frequency, mode and meter, at most one a poll interval (a loaded machine makes them later, never
    // sooner), and a few that were on their way when the count began — the data-mode read that
    // follows the first mode report among them.
    int frames = 0;
    for (const QString& line : readSim().mid(from).split(QLatin1Char('\n'))) {
        if (!line.startsWith(QLatin1String("<- "))) continue;
        ++frames;
        EXPECT_TRUE(line == QLatin1String("<- FE FE 94 E0 03 FD") ||
                    line == QLatin1String("<- FE FE 94 E0 04 FD") ||
                    line == QLatin1String("<- FE FE 94 E0 15 02 FD") ||
                    line == QLatin1String("<- FE FE 94 E0 1A 06 FD"))
            << line.toStdString();
    }
    EXPECT_LE(frames, ms / 200 + 3) << ms << " ms";
}

}  // namespace
}  // namespace tv
