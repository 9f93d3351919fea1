// TenTec radios against the simulator: the Omni VI on CI-V with its nudge after a VFO switch, the
// Jupiter's binary frequencies and the Orion's text on a socat pty pair, and the Pegasus through a
// control folder shared with the simulator as its control program.

#include "support/SimulatedRadio.h"

#include <QFile>

#include <gtest/gtest.h>

namespace tv {
namespace {

using test::waitFor;

class TenTecLink : public test::SimulatedRadio {};

TEST_F(TenTecLink, OmniViIsNudgedAfterAVfoSwitch) {
    startStation(QStringLiteral("OMNI-VI"), QString(), {}, QStringLiteral("OMNIV.9"));
    program->config.Interrogation.setChecked(true);
    ASSERT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0; }, 10000)) << m().state().RadioFreq;
    const qsizetype from = logMark();
    m().queue().SetXcvrVFOB();
    // Up a kilohertz and back, once the radio has reported where it is.
    // VFO B stands at 14,025.5 kHz.
    const QString up = QStringLiteral("FE FE 04 E0 05 00 65 02 14 00 FD");
    EXPECT_TRUE(receivedInOrder(QStringLiteral("FE FE 04 E0 07 01 FD"), up, from));
    EXPECT_TRUE(
        receivedInOrder(up, QStringLiteral("FE FE 04 E0 05 00 55 02 14 00 FD"), simLog.indexOf(up, from)));
}

TEST_F(TenTecLink, JupiterIsPolledCommandedAndFollowed) {
    startStation(QStringLiteral("JUPITER"));
    ASSERT_TRUE(
        waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == ModeCW; }, 10000))
        << m().state().RadioFreq << " " << m().state().RadioMode;
    m().queue().SetXcvrFreq(14025.5);
    EXPECT_TRUE(waitSim(QStringLiteral("*A<00><d6><03><1c><0d>")));
    simCommand("dial +100");
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 14025.6; }, 5000)) << m().state().RadioFreq;
    m().queue().SetXcvrMode(ModeUSB);
    EXPECT_TRUE(waitFor([&] { return m().state().RadioMode == ModeUSB; }, 5000));
}

TEST_F(TenTecLink, OrionSetsSplitAndShowsARefusal) {
    startStation(QStringLiteral("ORION"));
    ASSERT_TRUE(
        waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == ModeCW; }, 10000))
        << m().state().RadioFreq << " " << m().state().RadioMode;
    m().queue().SetXcvrFreq(14025.5);
    EXPECT_TRUE(waitSim(QStringLiteral("*AF14.0255<0d>")));
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 14025.5; }, 5000));
    simCommand("reject");
    m().queue().SetXcvrMode(ModeUSB);
    EXPECT_TRUE(waitFor([&] { return program->messages.reject.visible(); }, 5000));
    EXPECT_EQ(program->messages.reject.Command.caption(), QStringLiteral("Set Mode (RM)"));
    program->main.SplitBox.setChecked(true);
    EXPECT_TRUE(waitSim(QStringLiteral("*KVAAB<0d>")));
}

TEST(PegasusLink, TunedFromTheWindowTheSuiteLinkAndTheRigServerAndFollowsTheDial) {
    QTemporaryDir dir, folder;
    QProcess sim;
    sim.setProcessChannelMode(QProcess::SeparateChannels);
    sim.start(QStringLiteral(TOLVANE_BINARY_DIR "/tolvane-radiosim"),
              {QStringLiteral("--pegasus-folder"), folder.path(), QStringLiteral("--freq"),
               QStringLiteral("7010")});
    ASSERT_TRUE(sim.waitForStarted(5000));
    ASSERT_TRUE(waitFor([&] { return QFile::exists(folder.filePath(QStringLiteral("PEGASUS.OUT"))); }, 5000));
    ProgramPaths paths;
    paths.configDir = dir.path();
    paths.appDir = QStringLiteral(TOLVANE_SOURCE_DIR "/data");
    {
        SettingsStore s(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr);
        const QString g = QStringLiteral("General");
        s.SaveSetting(g, QStringLiteral("Radio"), QStringLiteral("PEGASUS"));
        s.SaveSetting(g, QStringLiteral("ControlFolder"), folder.path());
        s.SaveSetting(g, QStringLiteral("InterrogateInterval"), QStringLiteral("200"));
    }
    QtEventLoop loop;
    HeadlessDialogs dialogs;
    auto program =
        std::make_unique<Program>(loop, dialogs, paths, [] { return std::make_unique<QtSerialDevice>(); });
    ASSERT_TRUE(program->FormLoad());
    KavModule& m = program->module;
    QString simLog;
    // The stand-in logs each "PEGASUS.IN" it takes.
    auto simTook = [&](const char* hz) {
        return waitFor(
            [&] {
                simLog += QString::fromLocal8Bit(sim.readAllStandardError());
                return simLog.contains(QStringLiteral("PEGASUS.IN: %1 Hz").arg(QLatin1String(hz)));
            },
            5000);
    };
    EXPECT_TRUE(waitFor([&] { return m.state().RadioFreq == 7010.0; }, 10000)) << m.state().RadioFreq;
    m.state().RadioMode = ModeUSB;
    program->main.FreqDisplay.setText(QStringLiteral("14025.5"));
    int enter = '\r';
    program->main.FreqDisplay.keyPress(enter);
    EXPECT_TRUE(simTook("14025500")) << simLog.toStdString();
    program->suiteLink.DoQSY(QStringLiteral("7012"));
    EXPECT_TRUE(simTook("7012000")) << simLog.toStdString();
    program->rig.setFrequency(3573000);
    EXPECT_TRUE(simTook("3573000")) << simLog.toStdString();
    sim.write("dial +500\n");
    EXPECT_TRUE(waitFor([&] { return m.state().RadioFreq == 3573.5; }, 5000)) << m.state().RadioFreq;
    program->FormUnload();
    program.reset();
    sim.write("quit\n");
    if (!sim.waitForFinished(3000)) sim.kill();
}

}  // namespace
}  // namespace tv
