// Two simulated radios of different families on two pty pairs, the real program on the real Qt loop
// and serial layer between them: a sibling's qsy to a band of the second radio switches to it, the
// operator's button switches back, and nothing but the link starts anew.

#include "app/Program.h"
#include "platform/Dialogs.h"
#include "platform/FakeSuiteBus.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialDevice.h"
#include "support/PtyPair.h"
#include "support/RequiredTool.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

struct Sim {
    PtyPair pty;
    QProcess process;
    QString log;
    // Everything the radio received since the mark.
    QString receivedSince(qsizetype mark) {
        log += QString::fromLocal8Bit(process.readAllStandardError());
        QString out;
        for (const QString& line : log.mid(mark).split(QLatin1Char('\n')))
            if (line.startsWith(QLatin1String("<- "))) out += line.mid(3) + QLatin1Char('\n');
        return out;
    }
    qsizetype mark() {
        log += QString::fromLocal8Bit(process.readAllStandardError());
        return log.size();
    }
    void stop() {
        if (process.state() != QProcess::NotRunning) {
            process.write("quit\n");
            if (!process.waitForFinished(3000)) process.kill();
        }
        pty.stop();
    }
};

class MultiRadio : public ::testing::Test {
  protected:
    void startSim(Sim& s, const char* model, const char* freq) {
        const QString simPath = QStringLiteral(TOLVANE_BINARY_DIR "/tolvane-radiosim");
        ASSERT_TRUE(QFileInfo(simPath).isExecutable()) << "build tolvane-radiosim first";
        ASSERT_TRUE(s.pty.start());
        s.process.start(simPath, {QStringLiteral("--device"), s.pty.ends[1], QStringLiteral("--model"),
                                  QString::fromLatin1(model), QStringLiteral("--freq"),
                                  QString::fromLatin1(freq), QStringLiteral("--mode"), QStringLiteral("CW")});
        ASSERT_TRUE(s.process.waitForStarted(5000));
    }
    void SetUp() override {
        TV_REQUIRE_TOOL("socat");
        startSim(icom, "IC-7300", "7010");
        startSim(kenwood, "TS-2000", "21050");
        SettingsStore s(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr);
        const QString g = QStringLiteral("General"), x = QStringLiteral("MultiXCVR");
        s.SaveSetting(g, QStringLiteral("Radio"), QStringLiteral("IC-7300"));
        s.SaveSetting(g, QStringLiteral("RadioId"), QStringLiteral("94"));
        s.SaveSetting(g, QStringLiteral("CommPort"), QStringLiteral("1"));
        s.SaveSetting(g, QStringLiteral("CommPortDevice1"), icom.pty.ends[0]);
        s.SaveSetting(g, QStringLiteral("CommPortDevice2"), kenwood.pty.ends[0]);
        s.SaveSetting(g, QStringLiteral("InterrogateInterval"), QStringLiteral("200"));
        const char* models[2] = {"IC-7300", "TS-2000"};
        const char* addresses[2] = {"94", ""};
        for (int n = 0; n < 2; ++n) {
            auto set = [&](const char* k, const QString& v) {
                s.SaveSetting(x, QString::fromLatin1(k) + QString::number(n), v);
            };
            set("MultiModel", QString::fromLatin1(models[n]));
            set("MultiAddr", QString::fromLatin1(addresses[n]));
            set("MultiPort", QString::number(n));
            set("MultiBaud", QStringLiteral("9600"));
            set("MultiParity", QStringLiteral("N"));
            set("MultiWordlength", QStringLiteral("8"));
            set("MultiStop", QStringLiteral("1"));
            set("MultiPoll", QStringLiteral("1"));
            set("MultiInterval", QStringLiteral("200"));
            set("MultiEnabled", QStringLiteral("1"));
        }
        s.SaveSetting(x, QStringLiteral("MultiAutoSelect"), QStringLiteral("1"));
        s.SaveSetting(x, QStringLiteral("MultiBandRadio8"), QStringLiteral("2"));  // 15 m: the Kenwood
        s.flush();
        ProgramPaths paths;
        paths.configDir = dir.path();
        paths.appDir = QStringLiteral(TOLVANE_SOURCE_DIR "/data");
        program = std::make_unique<Program>(loop, dialogs, paths,
                                            [] { return std::make_unique<QtSerialDevice>(); });
        ASSERT_TRUE(program->FormLoad());
    }
    void TearDown() override {
        if (program) program->FormUnload();
        program.reset();
        icom.stop();
        kenwood.stop();
    }
    KavModule& m() { return program->module; }

    QTemporaryDir dir;
    Sim icom, kenwood;
    QtEventLoop loop;
    HeadlessDialogs dialogs;
    std::unique_ptr<Program> program;
};

TEST_F(MultiRadio, AQsyToTheSecondRadiosBandSwitchesToItAndTheButtonSwitchesBack) {
    ASSERT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0; }, 10000)) << m().state().RadioFreq;
    EXPECT_EQ(program->multiXcvr.SelectedXcvr, 0);
    // Things the switch must leave as they are: the monitor's lines, the sequences' bank.
    const QString monitorBefore = program->messages.MessageDisplay.text();
    ASSERT_FALSE(monitorBefore.isEmpty());
    program->main.AltCheckBox.setChecked(true);
    const auto names = program->sequences.SequenceNames;

    const qsizetype icomMark = icom.mark();
    auto& bus = static_cast<FakeSuiteBus&>(program->suiteBus);
    ASSERT_EQ(bus.send(QStringLiteral("DDEServer"), QStringLiteral("001qsy21200")),
              std::optional<bool>(true));
    EXPECT_EQ(program->multiXcvr.SelectedXcvr, 1);
    EXPECT_EQ(m().radio().model(), QStringLiteral("TS-2000"));
    ASSERT_TRUE(program->comm.PortOpened());
    EXPECT_EQ(program->comm.device()->path(), kenwood.pty.ends[0]);
    ASSERT_TRUE(
        waitFor([&] { return kenwood.receivedSince(0).contains(QLatin1String("FA00021200000;")); }, 10000))
        << kenwood.receivedSince(0).toStdString();
    // The Kenwood is polled from here on; the Icom hears nothing more, and never heard the frequency.
    const qsizetype afterSwitch = icom.mark();
    const qsizetype kenwoodMark = kenwood.mark();
    ASSERT_TRUE(
        waitFor([&] { return kenwood.receivedSince(kenwoodMark).count(QLatin1Char('\n')) >= 6; }, 10000));
    EXPECT_EQ(icom.receivedSince(afterSwitch), QString());
    EXPECT_FALSE(icom.receivedSince(icomMark).contains(QLatin1String("FE FE 94 E0 05")));
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 21200.0; }, 5000)) << m().state().RadioFreq;

    // Back by the operator's button: the Icom is asked again, and its frequency comes back.
    const qsizetype icomBack = icom.mark();
    program->main.XcvrSelButton[0].userClick();
    EXPECT_EQ(program->multiXcvr.SelectedXcvr, 0);
    EXPECT_EQ(m().radio().model(), QStringLiteral("IC-7300"));
    EXPECT_EQ(program->comm.device()->path(), icom.pty.ends[0]);
    EXPECT_TRUE(waitFor(
        [&] { return icom.receivedSince(icomBack).contains(QLatin1String("FE FE 94 E0 03 FD")); }, 10000));
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0; }, 10000)) << m().state().RadioFreq;

    // Nothing else started anew.
    EXPECT_TRUE(program->messages.MessageDisplay.text().startsWith(monitorBefore));
    EXPECT_TRUE(program->main.AltCheckBox.checked());
    EXPECT_EQ(program->sequences.SequenceNames, names);
}

}  // namespace
}  // namespace tv::test
