// The real program, started as an operator would start it without a display: it comes up, says what
// it does, and on SIGTERM or Ctrl-C goes down in order with its settings written.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace {

QString programPath() { return QStringLiteral(TOLVANE_BINARY_DIR "/tolvane"); }

QString readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// Starts tolvane --headless with its settings in configDir and waits until it reports that it runs;
// what it said so far is in *out.
bool startHeadless(QProcess& p, const QString& configDir, QByteArray* out = nullptr) {
    p.setProgram(programPath());
    p.setArguments({QStringLiteral("--headless"), QStringLiteral("--config-dir"), configDir,
                    QStringLiteral("--app-dir"), QStringLiteral(TOLVANE_SOURCE_DIR "/data")});
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start();
    if (!p.waitForStarted(10000)) return false;
    QByteArray said;
    while (!said.contains("running headless")) {
        if (!p.waitForReadyRead(20000)) return false;
        said += p.readAll();
    }
    if (out) *out = said;
    return true;
}

class HeadlessRun : public ::testing::TestWithParam<int> {};

TEST_P(HeadlessRun, StopsInOrderOnSignalWithSettingsWritten) {
    QTemporaryDir dir;
    QProcess p;
    ASSERT_TRUE(startHeadless(p, dir.path())) << p.readAll().toStdString();
    ::kill(pid_t(p.processId()), GetParam());
    ASSERT_TRUE(p.waitForFinished(20000));
    EXPECT_EQ(p.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(p.exitCode(), 0);
    const QString log = readAll(dir.path() + QStringLiteral("/ErrorLog.txt"));
    EXPECT_TRUE(log.contains(QStringLiteral("KavModule.Initialize: complete")));
    EXPECT_TRUE(log.contains(QStringLiteral("Tolvane shutdown")));
    const QString ini = readAll(dir.path() + QStringLiteral("/Tolvane.ini"));
    EXPECT_TRUE(ini.contains(QStringLiteral("InterrogateInterval=200")));
    EXPECT_TRUE(ini.contains(QStringLiteral("Debug=0")));
}

INSTANTIATE_TEST_SUITE_P(Signals, HeadlessRun, ::testing::Values(SIGTERM, SIGINT));

TEST(HeadlessRunOptions, AConfigFolderThatCantBeWrittenIsSaidOnceAndTheProgramStillStopsCleanly) {
    // A plain file where the folder should be: nothing can be written under it, not even by root.
    QTemporaryDir dir;
    const QString notAFolder = dir.filePath(QStringLiteral("plain-file"));
    {
        QFile f(notAFolder);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    }
    QProcess p;
    QByteArray out;
    ASSERT_TRUE(startHeadless(p, notAFolder, &out)) << p.readAll().toStdString();
    ::kill(pid_t(p.processId()), SIGTERM);
    ASSERT_TRUE(p.waitForFinished(20000));
    out += p.readAll();
    EXPECT_EQ(p.exitStatus(), QProcess::NormalExit) << out.right(3000).toStdString();
    EXPECT_EQ(p.exitCode(), 0) << out.right(3000).toStdString();
    EXPECT_EQ(out.count("Tolvane version"), 1);
    EXPECT_EQ(out.count("cannot write the log"), 1);
    EXPECT_EQ(out.count("Settings: cannot write"), 1);
}

TEST(HeadlessRunOptions, HelpNeedsNoDisplayAndMissingCatalogueEndsWithItsMessage) {
    QProcess help;
    help.start(programPath(), {QStringLiteral("--help")});
    ASSERT_TRUE(help.waitForFinished(20000));
    const QString text = QString::fromUtf8(help.readAllStandardOutput());
    for (const char* opt : {"--headless", "--config-dir", "--app-dir", "--demo"})
        EXPECT_TRUE(text.contains(QLatin1String(opt))) << opt;

    QTemporaryDir config, empty;
    QProcess p;
    p.start(programPath(), {QStringLiteral("--headless"), QStringLiteral("--config-dir"), config.path(),
                            QStringLiteral("--app-dir"), empty.path()});
    ASSERT_TRUE(p.waitForFinished(20000));
    EXPECT_NE(p.exitCode(), 0);
    const QString err = QString::fromUtf8(p.readAllStandardError() + p.readAllStandardOutput());
    EXPECT_TRUE(err.contains(QStringLiteral("Terminating due to inability to open radio configuration file: ")));
}

}  // namespace
