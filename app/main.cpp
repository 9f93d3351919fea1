// tolvane: the transceiver controller. Parses the command line, chooses the window or headless mode,
// wires the program to the real loop, serial ports and dialogs, and runs it.

#include "app/Demo.h"
#include "app/Program.h"
#include "platform/Dialogs.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialDevice.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int signalPipe[2] = {-1, -1};

void onSignal(int) {
    const char c = 1;
    // Only async-signal-safe work here: the loop reads the pipe and shuts down in order.
    [[maybe_unused]] ssize_t n = ::write(signalPipe[1], &c, 1);
}

}  // namespace

int main(int argc, char** argv) {
    // Parse the command line before choosing the kind of application, so --help works without a display.
    bool headless = false;
    for (int i = 1; i < argc; ++i) {
        const QByteArray a(argv[i]);
        if (a == "--headless" || a == "--help" || a == "-h" || a == "--version" || a == "-v") headless = true;
    }
    std::unique_ptr<QCoreApplication> app;
    if (headless)
        app = std::make_unique<QCoreApplication>(argc, argv);
    else
        app = std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Tolvane"));
    QCoreApplication::setApplicationVersion(QStringLiteral("%1.%2.%3")
                                                .arg(TOLVANE_VERSION_MAJOR)
                                                .arg(TOLVANE_VERSION_MINOR)
                                                .arg(TOLVANE_VERSION_PATCH));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Tolvane transceiver controller"));
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption headlessOpt(QStringLiteral("headless"),
                                   QStringLiteral("Run without windows; messages go to the log and standard error."));
    QCommandLineOption demoOpt(QStringLiteral("demo"),
                               QStringLiteral("Control a simulated radio on a pseudo-terminal, with throw-away settings."));
    QCommandLineOption configOpt(QStringLiteral("config-dir"),
                                 QStringLiteral("Keep settings (Tolvane.ini) and ErrorLog.txt in DIR."), QStringLiteral("DIR"));
    QCommandLineOption appOpt(QStringLiteral("app-dir"),
                              QStringLiteral("Read Radios.txt, SMeter/ and Help/ from DIR."), QStringLiteral("DIR"));
    parser.addOptions({headlessOpt, demoOpt, configOpt, appOpt});
    parser.process(*app);

    const QString exeDir = QCoreApplication::applicationDirPath();
    tv::ProgramPaths paths;
    paths.configDir = parser.isSet(configOpt) ? QDir(parser.value(configOpt)).absolutePath() : tv::defaultConfigDir();
    paths.appDir = parser.isSet(appOpt) ? QDir(parser.value(appOpt)).absolutePath() : tv::defaultAppDir(exeDir);
    paths.exeName = QFileInfo(QCoreApplication::applicationFilePath()).fileName();

    // Demo: a simulated radio and settings of its own, thrown away at the end.
    const bool demo = parser.isSet(demoOpt);
    tv::DemoRadio demoRadio;
    QTemporaryDir demoDir;
    if (demo) {
        if (!parser.isSet(configOpt)) {
            if (!demoDir.isValid()) {
                std::fprintf(stderr, "tolvane: cannot make a folder for the demo's settings\n");
                return 1;
            }
            paths.configDir = demoDir.path();
        }
        QString error;
        const QString pty = demoRadio.start(exeDir, &error);
        if (pty.isEmpty()) {
            std::fprintf(stderr, "tolvane: %s\n", error.toLocal8Bit().constData());
            return 1;
        }
        tv::DemoRadio::presetSettings(paths.configDir + QStringLiteral("/Tolvane.ini"), pty);
        std::fprintf(stdout, "Demo: a simulated %s answers on %s; its dial turns by itself.\n",
                     tv::DemoRadio::kModel, pty.toLocal8Bit().constData());
    }
    if (!parser.isSet(headlessOpt) && !demo)
        std::fprintf(stderr, "tolvane: the main window is not part of this build yet; running headless.\n");

    tv::QtEventLoop loop;
    tv::HeadlessDialogs dialogs;
    tv::Program program(loop, dialogs, paths, [] { return std::make_unique<tv::QtSerialDevice>(); });
    dialogs.setSink([&program](const QString& line) { program.common.LogLine(line); });
    program.common.echo = [](const QString& line) {
        std::fprintf(stdout, "%s\n", line.toLocal8Bit().constData());
        std::fflush(stdout);
    };

    // Ctrl-C and SIGTERM shut down in order, with every setting written.
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) == 0) {
        struct sigaction sa {};
        sa.sa_handler = onSignal;
        sigemptyset(&sa.sa_mask);
        sa.sa_flags = SA_RESTART;
        sigaction(SIGINT, &sa, nullptr);
        sigaction(SIGTERM, &sa, nullptr);
    }
    QSocketNotifier notifier(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&] {
        char c;
        [[maybe_unused]] ssize_t n = ::read(signalPipe[0], &c, 1);
        program.common.LogLine(QStringLiteral("KavMain: stop requested by signal"));
        program.FormUnload();
    });
    program.onUnloaded = [&loop] { loop.quit(0); };

    tv::reportStateOnStdout(program);
    if (!program.FormLoad()) return 1;
    program.common.LogLine(QStringLiteral("Tolvane is running headless; Ctrl-C stops it."));
    return loop.run();
}
