// The real program, started as an operator would start it without a display: it comes up, says what
// it does, and on SIGTERM or Ctrl-C goes down in order with its settings written.

#include "platform/SettingsStore.h"
#include "support/PtyPair.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString programPath() { return QStringLiteral(TOLVANE_BINARY_DIR "/tolvane"); }

QString readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// Starts tolvane --headless with the options (through the launcher's command, if one is given) and waits
// until it reports that it runs; what it said so far is in *out.
bool startRunning(QProcess& p, QStringList options, QByteArray* out = nullptr, QStringList launcher = {}) {
    const QStringList args = QStringList{QStringLiteral("--headless"), QStringLiteral("--app-dir"),
                                         QStringLiteral(TOLVANE_SOURCE_DIR "/data")} +
                             options;
    if (launcher.isEmpty()) launcher = QStringList{programPath()};
    else launcher << programPath();
    p.setProgram(launcher.takeFirst());
    p.setArguments(launcher + args);
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

// Started as `tolvane --headless | head -n 0` would be: its standard output a pipe nobody reads, and
// SIGPIPE at its default as a shell leaves it. A write there must not end it; each stop signal does, in
// order.
TEST_P(HeadlessRun, StopsInOrderOnSignalWithSettingsWrittenThoughItsOutputIsClosed) {
    QTemporaryDir dir;
    QProcess p;
    p.setChildProcessModifier([] {
        int ends[2];
        if (::pipe(ends) != 0) return;
        ::close(ends[0]);
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[1]);
        ::signal(SIGPIPE, SIG_DFL);
    });
    p.start(programPath(),
            {QStringLiteral("--headless"), QStringLiteral("--app-dir"),
             QStringLiteral(TOLVANE_SOURCE_DIR "/data"), QStringLiteral("--config-dir"), dir.path()});
    ASSERT_TRUE(p.waitForStarted(10000));
    const QString logPath = dir.path() + QStringLiteral("/ErrorLog.txt");
    ASSERT_TRUE(tv::test::waitFor(
        [&] { return readAll(logPath).contains(QStringLiteral("running headless")); }, 20000))
        << readAll(logPath).toStdString();
    ::kill(pid_t(p.processId()), GetParam());
    ASSERT_TRUE(p.waitForFinished(20000));
    EXPECT_EQ(p.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(p.exitCode(), 0);
    const QString log = readAll(logPath);
    EXPECT_TRUE(log.contains(QStringLiteral("KavModule.Initialize: complete")));
    EXPECT_TRUE(log.contains(QStringLiteral("Tolvane shutdown")));
    const QString ini = readAll(dir.path() + QStringLiteral("/Tolvane.ini"));
    EXPECT_TRUE(ini.contains(QStringLiteral("InterrogateInterval=200")));
    EXPECT_TRUE(ini.contains(QStringLiteral("Debug=0")));
}

INSTANTIATE_TEST_SUITE_P(Signals, HeadlessRun, ::testing::Values(SIGTERM, SIGINT, SIGHUP, SIGQUIT));

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

TEST(HeadlessRunOptions, TheDemoRunsAYaesuRadioWhenAskedAndRefusesAModelItDoesntOffer) {
    QTemporaryDir runtime;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
    QProcess demo;
    demo.setProcessEnvironment(env);
    QByteArray out;
    ASSERT_TRUE(startRunning(demo, {QStringLiteral("--demo"), QStringLiteral("--model"), QStringLiteral("FT-817")}, &out))
        << demo.readAll().toStdString();
    EXPECT_TRUE(out.contains("Demo: a simulated FT-817 answers on"));
    // The simulator's dial turns 100 Hz a second from 14,025.5 kHz: the program follows it in CW.
    EXPECT_TRUE(tv::test::waitFor([&] {
        out += demo.readAll();
        return out.contains("Radio: mode CW") && out.contains("Radio: 14025.600 kHz");
    }, 15000)) << out.toStdString();
    ::kill(pid_t(demo.processId()), SIGTERM);
    ASSERT_TRUE(demo.waitForFinished(20000));
    EXPECT_EQ(demo.exitCode(), 0);

    QProcess wrong;
    wrong.start(programPath(), {QStringLiteral("--demo"), QStringLiteral("--model"), QStringLiteral("FT-991")});
    ASSERT_TRUE(wrong.waitForFinished(20000));
    EXPECT_EQ(wrong.exitCode(), 2);
    EXPECT_TRUE(wrong.readAllStandardError().contains("--model goes with --demo and names one of IC-7300"));
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
    EXPECT_TRUE(err.contains(QStringLiteral("Terminating due to inability to open radio configuration file: ") +
                             empty.path()))
        << err.toStdString();
}

// The message every Linux operator meets once: the port is there, but the user may not open it. Made real
// with a pty the test's user can't open; as root, whom nothing refuses, the program runs as nobody.
TEST(HeadlessRunOptions, AtStartUpAPortTheUserMayNotOpenNamesTheGroupAndTheFix) {
    if (!tv::test::PtyPair::available()) GTEST_SKIP() << "socat is not installed";
    const bool root = ::geteuid() == 0;
    const QString runuser = QStandardPaths::findExecutable(QStringLiteral("runuser"));
    if (root && runuser.isEmpty()) {
        GTEST_SKIP() << "running as root, whom no device refuses, and runuser is missing to run as nobody";
    }
    tv::test::PtyPair pty;
    ASSERT_TRUE(pty.start());
    const QString device = pty.ends[0];
    const QByteArray devicePath = QFile::encodeName(device);
    QString groupName;
    if (root) {
        // As a USB adapter is on a Debian system: root's, group dialout, which nobody isn't in.
        const group* dialout = ::getgrnam("dialout");
        if (!dialout) {
            GTEST_SKIP() << "running as root, and this system has no group dialout to test with";
        }
        ASSERT_EQ(::chown(devicePath.constData(), 0, dialout->gr_gid), 0);
        ASSERT_EQ(::chmod(devicePath.constData(), 0660), 0);
        groupName = QStringLiteral("dialout");
    } else {
        ASSERT_EQ(::chmod(devicePath.constData(), 0), 0);
        groupName = QFileInfo(device).group();
    }

    QTemporaryDir dir;
    // Nobody writes the settings and the log there too.
    ASSERT_EQ(::chmod(QFile::encodeName(dir.path()).constData(), 0777), 0);
    {
        tv::SettingsStore s(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr);
        const QString g = QStringLiteral("General");
        s.SaveSetting(g, QStringLiteral("Radio"), QStringLiteral("IC-7300"));
        s.SaveSetting(g, QStringLiteral("CommPort"), QStringLiteral("1"));
        s.SaveSetting(g, QStringLiteral("CommPortDevice1"), device);
    }
    if (root) {
        ASSERT_EQ(::chmod(QFile::encodeName(dir.filePath(QStringLiteral("Tolvane.ini"))).constData(), 0666), 0);
    }
    QProcess p;
    // Not root's session bus: nobody may not use it, and the suite link is beside the point here.
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    p.setProcessEnvironment(env);
    QByteArray said;
    const QStringList asNobody{runuser, QStringLiteral("-u"), QStringLiteral("nobody"), QStringLiteral("--")};
    ASSERT_TRUE(startRunning(p, {QStringLiteral("--config-dir"), dir.path()}, &said, root ? asNobody : QStringList()))
        << p.readAll().toStdString();
    ::kill(pid_t(p.processId()), SIGTERM);
    p.waitForFinished(20000);
    const QString out = QString::fromLocal8Bit(said + p.readAll());
    // The usual box, and the reason with its fix in the log (which a headless program prints).
    EXPECT_TRUE(out.contains(QStringLiteral("[Tolvane] Unable to open Com1"))) << out.toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("Com1: "))) << out.toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("group ") + groupName)) << out.toStdString();
    if (root) {
        EXPECT_TRUE(out.contains(QStringLiteral("you are not in group dialout, which may use ") + device +
                                 QStringLiteral(": run sudo usermod -aG dialout $USER, then log out and in")))
            << out.toStdString();
    }
}

}  // namespace
