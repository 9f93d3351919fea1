// tolvane: the transceiver controller. Parses the command line, chooses the window or headless mode,
// wires the program to the real loop, serial ports and dialogs, and runs it.

#include "app/CommandLine.h"
#include "app/Demo.h"
#include "app/MemoryCommands.h"
#include "app/Program.h"
#include "app/Screenshots.h"
#include "platform/Dialogs.h"
#include "platform/QtDialogs.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialDevice.h"
#include "platform/SuiteBus.h"
#include "windows/qt/Windows.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QScreen>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int signalPipe[2] = {-1, -1};

void onSignal(int number) {
    const char c = char(number);
    // Only async-signal-safe work here: the loop reads the pipe and shuts down in order.
    [[maybe_unused]] ssize_t n = ::write(signalPipe[1], &c, 1);
}

// The signals that end the program in order: Ctrl-C, a stop, a closed terminal or dropped SSH session,
// Ctrl-\. Each would otherwise kill it before the radio is unkeyed and the settings are written.
constexpr struct {
    int number;
    const char* name;
} kStopSignals[] = {{SIGINT, "SIGINT"}, {SIGTERM, "SIGTERM"}, {SIGHUP, "SIGHUP"}, {SIGQUIT, "SIGQUIT"}};

bool wantsNoWindows(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const QByteArray a(argv[i]);
        if (a == "--headless" || a == "--help" || a == "-h" || a == "--version" || a == "-v") return true;
        if (a.startsWith("--export-memories") || a.startsWith("--import-memories")) return true;
    }
    return false;
}

// Qt aborts inside its platform plugin when there is no display: say it plainly instead.
bool displayAvailable() {
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}


// The demo: a simulated radio on a pseudo-terminal, and settings of its own thrown away at the end
// unless a folder was given. Returns the exit code when it can't start.
std::optional<int> startDemo(const tv::CommandLine& options, const QString& exeDir, tv::ProgramPaths& paths,
                             tv::DemoRadio& demoRadio, std::optional<tv::DemoFolder>& demoDir) {
    if (!options.model.isEmpty()) demoRadio.setModel(*tv::DemoRadio::find(options.model));
    if (options.configDir.isEmpty()) {
        demoDir.emplace();
        if (!demoDir->isValid()) {
            std::fprintf(stderr, "tolvane: cannot make a folder for the demo's settings in %s\n",
                         tv::DemoFolder::base().toLocal8Bit().constData());
            return 1;
        }
        paths.configDir = demoDir->path();
    }
    QString error;
    const QString pty = demoRadio.ensureSessionBus(&error) ? demoRadio.start(exeDir, &error) : QString();
    if (pty.isEmpty()) {
        std::fprintf(stderr, "tolvane: %s\n", error.toLocal8Bit().constData());
        return 1;
    }
    demoRadio.presetSettings(paths.configDir + QStringLiteral("/Tolvane.ini"), pty);
    std::fprintf(stdout, "Demo: a simulated %s answers on %s; its dial turns by itself.\n", demoRadio.model().name,
                 pty.toLocal8Bit().constData());
    std::fflush(stdout);
    return std::nullopt;
}

// The stop signals shut down in order, with the radio unkeyed and every setting written: the handler
// only writes the signal's number to a pipe that the loop reads.
std::unique_ptr<QSocketNotifier> watchStopSignals(tv::Program& program) {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) == 0) {
        struct sigaction sa {};
        sa.sa_handler = onSignal;
        sigemptyset(&sa.sa_mask);
        sa.sa_flags = SA_RESTART;
        for (const auto& s : kStopSignals) sigaction(s.number, &sa, nullptr);
    }
    auto notifier = std::make_unique<QSocketNotifier>(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [&program] {
        char c = 0;
        [[maybe_unused]] ssize_t n = ::read(signalPipe[0], &c, 1);
        QString name;
        for (const auto& s : kStopSignals)
            if (s.number == int(c)) name = QLatin1String(s.name);
        program.common.LogLine(QStringLiteral("KavMain: stop requested by signal ") + name);
        program.FormUnload();
    });
    return notifier;
}

}  // namespace

int main(int argc, char** argv) {
    // A write to a closed standard output or socket fails with an error instead of killing the program
    // (`tolvane --headless | head` must not leave a keyed radio behind).
    ::signal(SIGPIPE, SIG_IGN);
    // The kind of application is chosen before parsing, so that --help works without a display.
    const bool noWindows = wantsNoWindows(argc, argv);
    if (!noWindows && !displayAvailable()) {
        std::fprintf(stderr,
                     "tolvane: no display to open a window on (DISPLAY is not set); use --headless to run without "
                     "windows\n");
        return 1;
    }
    std::unique_ptr<QCoreApplication> app;
    if (noWindows)
        app = std::make_unique<QCoreApplication>(argc, argv);
    else
        app = std::make_unique<QApplication>(argc, argv);
    // The desktop matches the window to the menu entry (its name and icon) by this.
    if (!noWindows) QGuiApplication::setDesktopFileName(QStringLiteral("org.tolvane.Tolvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Tolvane"));
    QCoreApplication::setApplicationVersion(QStringLiteral("%1.%2.%3")
                                                .arg(TOLVANE_VERSION_MAJOR)
                                                .arg(TOLVANE_VERSION_MINOR)
                                                .arg(TOLVANE_VERSION_PATCH));

    tv::CommandLine options;
    if (const std::optional<int> code = tv::ParseCommandLine(*app, options)) return *code;

    const QString exeDir = QCoreApplication::applicationDirPath();
    tv::ProgramPaths paths;
    paths.configDir = !options.configDir.isEmpty() ? QDir(options.configDir).absolutePath() : tv::defaultConfigDir();
    paths.appDir = !options.appDir.isEmpty() ? QDir(options.appDir).absolutePath() : tv::defaultAppDir(exeDir);
    paths.exeName = QFileInfo(QCoreApplication::applicationFilePath()).fileName();

    if (options.memories) {
        tv::MemoryCommand command;
        command.kind = *options.memories;
        command.file = options.memoryFile;
        command.configDir = paths.configDir;
        command.appDir = paths.appDir;
        return tv::RunMemoryCommand(command, stdout, stderr);
    }

    tv::DemoRadio demoRadio;
    std::optional<tv::DemoFolder> demoDir;
    if (options.demo)
        if (const std::optional<int> code = startDemo(options, exeDir, paths, demoRadio, demoDir)) return *code;

    tv::QtEventLoop loop;
    std::unique_ptr<tv::Dialogs> dialogs;
    tv::HeadlessDialogs* headlessDialogs = nullptr;
    const bool headless = options.headless;
    if (headless) {
        auto d = std::make_unique<tv::HeadlessDialogs>();
        headlessDialogs = d.get();
        dialogs = std::move(d);
    } else {
        dialogs = std::make_unique<tv::QtDialogs>();
    }
    // The suite link on the session bus; without one the program runs on unlinked.
    const std::unique_ptr<tv::SuiteBus> suiteBus = tv::makeSessionSuiteBus();
    tv::Program program(loop, *dialogs, paths, [] { return std::make_unique<tv::QtSerialDevice>(); },
                        suiteBus.get());
    program.netOptions = options.net;
    program.flrigOptions = options.flrig;
    if (headlessDialogs) headlessDialogs->setSink([&program](const QString& line) { program.common.LogLine(line); });
    if (options.demo) tv::captureFromFirstLook(program);
    if (headless) {
        program.common.echo = [](const QString& line) {
            std::fprintf(stdout, "%s\n", line.toLocal8Bit().constData());
            std::fflush(stdout);
        };
        tv::reportStateOnStdout(program);
    }

    // The windows, as views on the program's form models.
    std::unique_ptr<tv::Windows> windows;
    if (!headless) {
        if (QScreen* screen = QGuiApplication::primaryScreen())
            program.common.setScreenSize(screen->geometry().width(), screen->geometry().height());
        windows = std::make_unique<tv::Windows>(program.main, program.config, program.messages, program.sequenceEditor);
        windows->addMemoryNotes(program.memoryNotes);
    }

    const std::unique_ptr<QSocketNotifier> stopSignals = watchStopSignals(program);
    program.onUnloaded = [&loop] { loop.quit(0); };

    if (!program.FormLoad()) return 1;
    if (headless) {
        program.common.LogLine(QStringLiteral("Tolvane is running headless; Ctrl-C stops it."));
    } else {
        program.main.Show();
        program.main.FreqDisplay.SetFocus();
    }

    if (!options.screenshots.isEmpty() && windows) tv::TakeScreenshots(program, *windows, options.screenshots);
    const int code = loop.run();
    windows.reset();
    return code;
}
