// tolvane: the transceiver controller. Parses the command line, chooses the window or headless mode,
// wires the program to the real loop, serial ports and dialogs, and runs it.

#include "app/Demo.h"
#include "app/MemoryCommands.h"
#include "app/Program.h"
#include "platform/Dialogs.h"
#include "platform/QtDialogs.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialDevice.h"
#include "platform/SuiteBus.h"
#include "windows/qt/Windows.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QScreen>
#include <QSocketNotifier>
#include <QTimer>

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
    QCommandLineOption shotsOpt(QStringLiteral("screenshots"),
                                QStringLiteral("Save pictures of the windows into DIR after a few seconds, then quit."),
                                QStringLiteral("DIR"));
    QCommandLineOption netPortOpt(QStringLiteral("net-port"),
                                  QStringLiteral("Serve rigctld clients on TCP port PORT (over the setting NetServerPort)."),
                                  QStringLiteral("PORT"));
    QCommandLineOption noNetOpt(QStringLiteral("no-net"), QStringLiteral("Run no rig server for other programs."));
    QCommandLineOption xmlrpcPortOpt(QStringLiteral("xmlrpc-port"),
                                     QStringLiteral("Serve XML-RPC rig clients on TCP port PORT of loopback (over the "
                                                    "setting XmlRpcPort, default 12345)."),
                                     QStringLiteral("PORT"));
    QCommandLineOption noXmlrpcOpt(QStringLiteral("no-xmlrpc"), QStringLiteral("Run no XML-RPC server."));
    QCommandLineOption modelOpt(QStringLiteral("model"),
                                QStringLiteral("The demo's simulated radio: ") + tv::DemoRadio::names() +
                                    QStringLiteral(" (default ") + QLatin1String(tv::DemoRadio::defaultModel().name) +
                                    QStringLiteral(")."),
                                QStringLiteral("NAME"));
    parser.addOptions({headlessOpt, demoOpt, configOpt, appOpt, shotsOpt, netPortOpt, noNetOpt, xmlrpcPortOpt,
                       noXmlrpcOpt, modelOpt});
    // ---- memories from the shell ----
    QCommandLineOption exportMemoriesOpt(QStringLiteral("export-memories"),
                                         QStringLiteral("Write all stored memories to FILE and exit."), QStringLiteral("FILE"));
    QCommandLineOption importMemoriesOpt(QStringLiteral("import-memories"),
                                         QStringLiteral("Read memories from FILE into the stored ones and exit."),
                                         QStringLiteral("FILE"));
    parser.addOptions({exportMemoriesOpt, importMemoriesOpt});
    parser.process(*app);
    const bool headless = parser.isSet(headlessOpt);
    tv::NetServerOptions netOptions;
    netOptions.allowed = !parser.isSet(noNetOpt);
    if (parser.isSet(netPortOpt)) {
        bool ok = false;
        const uint port = parser.value(netPortOpt).toUInt(&ok);
        if (!ok || port == 0 || port > 65535) {
            std::fprintf(stderr, "tolvane: --net-port wants a port number from 1 to 65535\n");
            return 2;
        }
        netOptions.port = quint16(port);
    }
    tv::FlrigServerOptions flrigOptions;
    flrigOptions.allowed = !parser.isSet(noXmlrpcOpt);
    if (parser.isSet(xmlrpcPortOpt)) {
        bool ok = false;
        const uint port = parser.value(xmlrpcPortOpt).toUInt(&ok);
        if (!ok || port == 0 || port > 65535) {
            std::fprintf(stderr, "tolvane: --xmlrpc-port wants a port number from 1 to 65535\n");
            return 2;
        }
        flrigOptions.port = quint16(port);
    }

    const QString exeDir = QCoreApplication::applicationDirPath();
    tv::ProgramPaths paths;
    paths.configDir = parser.isSet(configOpt) ? QDir(parser.value(configOpt)).absolutePath() : tv::defaultConfigDir();
    paths.appDir = parser.isSet(appOpt) ? QDir(parser.value(appOpt)).absolutePath() : tv::defaultAppDir(exeDir);
    paths.exeName = QFileInfo(QCoreApplication::applicationFilePath()).fileName();

    // ---- memories from the shell: no window, no port ----
    if (parser.isSet(exportMemoriesOpt) || parser.isSet(importMemoriesOpt)) {
        if (parser.isSet(exportMemoriesOpt) && parser.isSet(importMemoriesOpt)) {
            std::fprintf(stderr, "tolvane: --export-memories and --import-memories go one at a time\n");
            return 2;
        }
        tv::MemoryCommand command;
        command.kind = parser.isSet(exportMemoriesOpt) ? tv::MemoryCommand::Export : tv::MemoryCommand::Import;
        command.file = parser.value(parser.isSet(exportMemoriesOpt) ? exportMemoriesOpt : importMemoriesOpt);
        command.configDir = paths.configDir;
        command.appDir = paths.appDir;
        return tv::RunMemoryCommand(command, stdout, stderr);
    }

    // Demo: a simulated radio and settings of its own, thrown away at the end.
    const bool demo = parser.isSet(demoOpt);
    tv::DemoRadio demoRadio;
    std::optional<tv::DemoFolder> demoDir;
    if (parser.isSet(modelOpt)) {
        const tv::DemoModel* chosen = tv::DemoRadio::find(parser.value(modelOpt));
        if (!demo || !chosen) {
            std::fprintf(stderr, "tolvane: --model goes with --demo and names one of %s\n",
                         tv::DemoRadio::names().toLocal8Bit().constData());
            return 2;
        }
        demoRadio.setModel(*chosen);
    }
    if (demo) {
        if (!parser.isSet(configOpt)) {
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
    }

    tv::QtEventLoop loop;
    std::unique_ptr<tv::Dialogs> dialogs;
    tv::HeadlessDialogs* headlessDialogs = nullptr;
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
    program.netOptions = netOptions;
    program.flrigOptions = flrigOptions;
    if (headlessDialogs) headlessDialogs->setSink([&program](const QString& line) { program.common.LogLine(line); });
    if (demo) tv::captureFromFirstLook(program);
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

    // The stop signals shut down in order, with the radio unkeyed and every setting written.
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) == 0) {
        struct sigaction sa {};
        sa.sa_handler = onSignal;
        sigemptyset(&sa.sa_mask);
        sa.sa_flags = SA_RESTART;
        for (const auto& s : kStopSignals) sigaction(s.number, &sa, nullptr);
    }
    QSocketNotifier notifier(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&] {
        char c = 0;
        [[maybe_unused]] ssize_t n = ::read(signalPipe[0], &c, 1);
        QString name;
        for (const auto& s : kStopSignals)
            if (s.number == int(c)) name = QLatin1String(s.name);
        program.common.LogLine(QStringLiteral("KavMain: stop requested by signal ") + name);
        program.FormUnload();
    });
    program.onUnloaded = [&loop] { loop.quit(0); };

    if (!program.FormLoad()) return 1;
    if (headless) {
        program.common.LogLine(QStringLiteral("Tolvane is running headless; Ctrl-C stops it."));
    } else {
        program.main.Show();
        program.main.FreqDisplay.SetFocus();
    }

    if (parser.isSet(shotsOpt) && windows) {
        // Pictures for the documentation: every window open, side by side, after the radio has spoken.
        const QString dir = QDir(parser.value(shotsOpt)).absolutePath();
        QDir().mkpath(dir);
        program.config.setLeft(program.main.left() + program.main.width() + 20);
        program.config.Show();
        program.messages.setTop(program.main.top() + program.main.height() + 40);
        program.messages.CaptureEnabled.setChecked(true);
        program.messages.Show();
        QTimer::singleShot(2500, [&] { program.config.ConfigTab.setTab(1); });
        QTimer::singleShot(5000, [&, dir] {
            const struct {
                const char* form;
                const char* file;
            } shots[] = {{"KavMain", "main.png"}, {"KavConfig", "config-com.png"}, {"KavMessages", "messages.png"}};
            for (const auto& s : shots)
                if (QWidget* w = windows->window(QString::fromLatin1(s.form)))
                    w->grab().save(dir + QLatin1Char('/') + QString::fromLatin1(s.file));
            program.config.ConfigTab.setTab(0);
            QCoreApplication::processEvents();
            if (QWidget* w = windows->window(QStringLiteral("KavConfig"))) w->grab().save(dir + QStringLiteral("/config-general.png"));
            // The station around the radio: the first device's page and the transceivers.
            const std::pair<int, const char*> stationTabs[] = {{2, "/config-device.png"}, {7, "/config-multiradio.png"}};
            for (const auto& [tab, file] : stationTabs) {
                program.config.ConfigTab.setTab(tab);
                QCoreApplication::processEvents();
                if (QWidget* w = windows->window(QStringLiteral("KavConfig"))) w->grab().save(dir + QString::fromLatin1(file));
            }
            // ---- the memory bank, with frequencies and then with notes ----
            if (QWidget* w = windows->window(QStringLiteral("KavMain"))) {
                auto shoot = [&, w](const char* file) {
                    QCoreApplication::processEvents();
                    w->adjustSize();
                    QCoreApplication::processEvents();
                    w->grab().save(dir + QLatin1Char('/') + QString::fromLatin1(file));
                };
                program.mainLogic.ShowMemoryBanks(true);
                shoot("main-memories.png");
                program.memories.ToggleMemoryNotesDisplay();
                shoot("main-notes.png");
                program.memories.ToggleMemoryNotesDisplay();
                program.mainLogic.ShowMemoryBanks(false);
            }
            program.config.ConfigTab.setTab(6);
            QCoreApplication::processEvents();
            if (QWidget* w = windows->window(QStringLiteral("KavConfig"))) w->grab().save(dir + QStringLiteral("/config-memories.png"));
            program.config.ConfigTab.setTab(program.config.networkTab());
            QCoreApplication::processEvents();
            if (QWidget* w = windows->window(QStringLiteral("KavConfig"))) w->grab().save(dir + QStringLiteral("/config-network.png"));
            program.FormUnload();
        });
    }
    const int code = loop.run();
    windows.reset();
    return code;
}
