#pragma once
// A fixture for tests of the real program on the real Qt loop and serial layer against
// tolvane-radiosim on a socat pty pair: the simulator on one end, the program on the other.

#include "app/Program.h"
#include "platform/Dialogs.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialDevice.h"
#include "support/PtyPair.h"
#include "support/RequiredTool.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tv::test {

class SimulatedRadio : public ::testing::Test {
protected:
    // Starts the simulator as the model (at 7010 kHz, CW) and the program with that radio on port 1
    // (the catalogue's name for it, when that differs).
    void startStation(const QString& model, const QString& address = QString(), const QStringList& simArgs = {},
                      const QString& catalogue = QString()) {
        const QString simPath = QStringLiteral(TOLVANE_BINARY_DIR "/tolvane-radiosim");
        TV_REQUIRE_TOOL("socat");
        ASSERT_TRUE(QFileInfo(simPath).isExecutable()) << "build tolvane-radiosim first";
        ASSERT_TRUE(pty.start());
        sim.setProcessChannelMode(QProcess::SeparateChannels);
        sim.start(simPath, QStringList{QStringLiteral("--device"), pty.ends[1], QStringLiteral("--model"), model,
                                       QStringLiteral("--freq"), QStringLiteral("7010"), QStringLiteral("--mode"),
                                       QStringLiteral("CW")} +
                               simArgs);
        ASSERT_TRUE(sim.waitForStarted(5000));

        ProgramPaths paths;
        paths.configDir = dir.path();
        paths.appDir = QStringLiteral(TOLVANE_SOURCE_DIR "/data");
        {
            SettingsStore s(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr);
            const QString g = QStringLiteral("General");
            s.SaveSetting(g, QStringLiteral("Radio"), catalogue.isEmpty() ? model : catalogue);
            if (!address.isEmpty()) s.SaveSetting(g, QStringLiteral("RadioId"), address);
            s.SaveSetting(g, QStringLiteral("CommPort"), QStringLiteral("1"));
            s.SaveSetting(g, QStringLiteral("CommPortDevice1"), pty.ends[0]);
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
    // Waits until the simulator's log (standard error) holds the text; it logs each message it receives.
    bool waitSim(const QString& text, int ms = 5000) {
        return waitFor(
            [&] {
                simLog += QString::fromLocal8Bit(sim.readAllStandardError());
                return simLog.contains(text);
            },
            ms);
    }

    // Where the simulator's log stands now, for checks of what it receives from here on.
    qsizetype logMark() {
        waitSim(QString(), 0);
        return simLog.size();
    }
    // Waits until the simulator has received `last` after the mark, and checks `first` came before it.
    ::testing::AssertionResult receivedInOrder(const QString& first, const QString& last, qsizetype from) {
        if (!waitFor([&] { return waitSim(QString(), 0) && simLog.indexOf(last, from) >= 0; }, 5000))
            return ::testing::AssertionFailure() << "never received " << last.toStdString() << " in\n"
                                                 << simLog.mid(from).toStdString();
        const qsizetype at = simLog.indexOf(first, from);
        if (at < 0 || at > simLog.indexOf(last, from))
            return ::testing::AssertionFailure() << first.toStdString() << " not before " << last.toStdString()
                                                 << " in\n" << simLog.mid(from).toStdString();
        return ::testing::AssertionSuccess();
    }

    QTemporaryDir dir;
    PtyPair pty;
    QProcess sim;
    QtEventLoop loop;
    HeadlessDialogs dialogs;
    std::unique_ptr<Program> program;
    QString simLog;
};

}  // namespace tv::test
