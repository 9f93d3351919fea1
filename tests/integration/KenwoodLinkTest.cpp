// The program's real logic on the real Qt loop and serial layer, against the simulator as a TS-2000 on
// a socat pty pair: the radio is identified, polled, commanded, and its meter followed.

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

class KenwoodLink : public ::testing::Test {
protected:
    void SetUp() override {
        const QString simPath = QStringLiteral(TOLVANE_BINARY_DIR "/tolvane-radiosim");
        if (!PtyPair::available()) GTEST_SKIP() << "socat not installed";
        ASSERT_TRUE(QFileInfo(simPath).isExecutable()) << "build tolvane-radiosim first";
        ASSERT_TRUE(pty.start());
        const QStringList& ends = pty.ends;
        sim.setProcessChannelMode(QProcess::SeparateChannels);
        sim.start(simPath, {QStringLiteral("--device"), ends[1], QStringLiteral("--model"), QStringLiteral("TS-2000"),
                            QStringLiteral("--freq"), QStringLiteral("7010"), QStringLiteral("--mode"), QStringLiteral("CW")});
        ASSERT_TRUE(sim.waitForStarted(5000));

        ProgramPaths paths;
        paths.configDir = dir.path();
        paths.appDir = QStringLiteral(TOLVANE_SOURCE_DIR "/data");
        {
            SettingsStore s(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr);
            const QString g = QStringLiteral("General");
            s.SaveSetting(g, QStringLiteral("Radio"), QStringLiteral("TS-2000"));
            s.SaveSetting(g, QStringLiteral("CommPort"), QStringLiteral("1"));
            s.SaveSetting(g, QStringLiteral("CommPortDevice1"), ends[0]);
            s.SaveSetting(g, QStringLiteral("InterrogateInterval"), QStringLiteral("200"));
        }
        program = std::make_unique<Program>(loop, dialogs, paths, [] { return std::make_unique<QtSerialDevice>(); });
        ASSERT_TRUE(program->FormLoad());
        ASSERT_TRUE(program->comm.PortOpened());
        m().hooks.UpdateSMeter = [this](double v) { meter = v; };
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
    void simCommand(const char* line) {
        sim.write(line);
        sim.write("\n");
        sim.waitForBytesWritten(1000);
    }

    QTemporaryDir dir;
    PtyPair pty;
    QProcess sim;
    QtEventLoop loop;
    HeadlessDialogs dialogs;
    std::unique_ptr<Program> program;
    double meter = -1;
    QString simLog;
    bool simReceived(const QString& text) {
        simLog += QString::fromLocal8Bit(sim.readAllStandardError());
        return simLog.contains(text);
    }
};

TEST_F(KenwoodLink, IdentifiesPollsCommandsAndFollowsTheMeter) {
    ASSERT_TRUE(waitFor([&] { return m().KenwoodModelName == QLatin1String("TS2000"); }, 10000));
    EXPECT_EQ(m().RadioDisplayName, QStringLiteral("Kenwood TS-2000"));
    // Polling brings frequency and mode in through the status reply.
    ASSERT_TRUE(waitFor([&] { return m().RadioFreq == 7010.0 && m().RadioMode == 3; }, 10000))
        << m().RadioFreq << " " << m().RadioMode;
    EXPECT_TRUE(waitFor([&] { return simReceived(QStringLiteral("AI1;")) && simReceived(QStringLiteral("SM0;")); }, 5000));

    m().SetXcvrFreq(14025.5);
    ASSERT_TRUE(waitFor([&] { return simReceived(QStringLiteral("FA00014025500;")); }, 5000));
    // The radio's own dial moves on from there, and the program follows.
    simCommand("dial +100");
    EXPECT_TRUE(waitFor([&] { return m().RadioFreq == 14025.6; }, 5000)) << m().RadioFreq;

    m().SetXcvrMode(1);
    EXPECT_TRUE(waitFor([&] { return simReceived(QStringLiteral("MD2;")); }, 5000));
    EXPECT_TRUE(waitFor([&] { return m().RadioMode == 1; }, 5000));

    simCommand("meter 15");
    EXPECT_TRUE(waitFor([&] { return meter == 0.5; }, 5000)) << meter;

    // In CW the width list is offered and shows the width the radio reports through the filter chain.
    m().SetXcvrMode(3);
    EXPECT_TRUE(waitFor([&] { return m().RadioMode == 3 && program->main.WidthCombo.visible(); }, 5000));
    EXPECT_TRUE(waitFor([&] { return simReceived(QStringLiteral("FW;")); }, 5000));
    EXPECT_TRUE(waitFor([&] { return !program->main.WidthCombo.text().isEmpty(); }, 5000));
}

}  // namespace
}  // namespace tv
