// The real program, started as an operator would start it without a display: it comes up, says what
// it does, and on SIGTERM or Ctrl-C goes down in order with its settings written.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include "support/PtyPair.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

QString programPath() { return QStringLiteral(TOLVANE_BINARY_DIR "/tolvane"); }

QString readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// Starts tolvane --headless with the options and waits until it reports that it runs; what it said
// so far is in *out.
bool startRunning(QProcess& p, QStringList options, QByteArray* out = nullptr) {
    p.setProgram(programPath());
    p.setArguments(QStringList{QStringLiteral("--headless"), QStringLiteral("--app-dir"),
                               QStringLiteral(TOLVANE_SOURCE_DIR "/data")} +
                   options);
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

// Settings and log in configDir.
bool startHeadless(QProcess& p, const QString& configDir, QByteArray* out = nullptr) {
    return startRunning(p, {QStringLiteral("--config-dir"), configDir}, out);
}

// The first child of a process, 0 when it has none.
qint64 firstChild(qint64 pid) {
    QFile f(QStringLiteral("/proc/%1/task/%1/children").arg(pid));
    return f.open(QIODevice::ReadOnly) ? f.readAll().split(' ').first().trimmed().toLongLong() : 0;
}

// Ended: gone, or a zombie nobody has reaped yet.
bool processEnded(qint64 pid) {
    QFile f(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!f.open(QIODevice::ReadOnly)) return true;
    const QByteArray stat = f.readAll();
    return stat.mid(stat.lastIndexOf(')') + 2, 1) == "Z";
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

TEST(HeadlessRunOptions, ACrashedDemoLeavesNothingBehindOnceTheNextDemoStarts) {
    QTemporaryDir runtime;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
    env.insert(QStringLiteral("TMPDIR"), runtime.path());
    auto leftovers = [&] { return QDir(runtime.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot); };
    const QStringList demo{QStringLiteral("--demo")};

    QProcess crashed;
    crashed.setProcessEnvironment(env);
    ASSERT_TRUE(startRunning(crashed, demo)) << crashed.readAll().toStdString();
    const QStringList first = leftovers();
    ASSERT_EQ(first.size(), 1);
    EXPECT_TRUE(first[0].startsWith(QStringLiteral("tolvane-demo-")));
    const qint64 simulator = firstChild(crashed.processId());
    ASSERT_NE(simulator, 0);
    ::kill(pid_t(crashed.processId()), SIGKILL);
    ASSERT_TRUE(crashed.waitForFinished(20000));
    EXPECT_EQ(leftovers(), first);  // what a crash leaves
    EXPECT_TRUE(tv::test::waitFor([&] { return processEnded(simulator); }, 10000));  // no orphaned radio

    QProcess next;
    next.setProcessEnvironment(env);
    ASSERT_TRUE(startRunning(next, demo)) << next.readAll().toStdString();
    const QStringList now = leftovers();
    ASSERT_EQ(now.size(), 1);
    EXPECT_NE(now, first);
    ::kill(pid_t(next.processId()), SIGTERM);
    ASSERT_TRUE(next.waitForFinished(20000));
    EXPECT_EQ(next.exitCode(), 0);
    EXPECT_EQ(leftovers(), QStringList());
}

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
