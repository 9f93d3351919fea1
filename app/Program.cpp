#include "app/Program.h"

#include "platform/Dialogs.h"
#include "platform/EventLoop.h"
#include "platform/FakeSuiteBus.h"
#include "protocols/Families.h"
#include "services/Errors.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");
// Long enough for the suite link's reply to "shutdown" to leave before the program goes.
constexpr int kShutdownDelayMs = 100;

AppInfo makeInfo(const ProgramPaths& p) {
    AppInfo info;
    info.title = QStringLiteral("Tolvane");
    info.major = TOLVANE_VERSION_MAJOR;
    info.minor = TOLVANE_VERSION_MINOR;
    info.revision = TOLVANE_VERSION_PATCH;
    info.appPath = p.appDir;
    info.exeName = p.exeName;
    info.logDir = p.configDir;
    return info;
}
}  // namespace

QString defaultConfigDir() {
    QString base = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    if (base.isEmpty()) base = QDir::homePath() + QStringLiteral("/.config");
    return base + QStringLiteral("/Tolvane");
}

QString defaultAppDir(const QString& exeDir) {
    const QStringList candidates = {exeDir, exeDir + QStringLiteral("/../share/tolvane"),
                                    QStringLiteral("/usr/local/share/tolvane"), QStringLiteral("/usr/share/tolvane")};
    for (const QString& c : candidates)
        if (QFileInfo::exists(c + QStringLiteral("/Radios.txt"))) return QDir(c).absolutePath();
    return exeDir;
}

Program::Program(EventLoop& l, Dialogs& dialogs, ProgramPaths paths, SerialFactory serialFactory, SuiteBus* bus)
    : loop(l),
      settings((QDir().mkpath(paths.configDir), paths.configDir + QStringLiteral("/Tolvane.ini")), &l),
      common(l, settings, dialogs, makeInfo(paths)),
      main(l),
      config(l),
      messages(l),
      sequenceEditor(l),
      comm(common, std::move(serialFactory)),
      module(common, main, config, messages, comm),
      mainLogic(module, comm),
      configLogic(module, comm),
      messagesLogic(module),
      sequences(common, module.queue(), module.hooks, main, config, sequenceEditor),
      ownSuiteBus(bus ? nullptr : std::make_unique<FakeSuiteBus>()),
      suiteBus(bus ? *bus : *ownSuiteBus),
      suiteLink(module, suiteBus),
      netServer(rig, settings, common, main.NetServerLabel,
                QStringLiteral("Tolvane %1").arg(common.info().version())) {
    mainLogic.connect();
    configLogic.connect();
    messagesLogic.connect();
    bands.connect();
    tuning.connect();
    freqDisplay.connect();
    modes.connect();
    meter.connect();
    passbands.connect();
    filterGroups.connect();
    memories.connect();
    module.hooks.ResetModeTables = [this] {
        passbands.Reset();
        modes.ResetModeTables();
    };
    tuning.DoRcv = [this] { mainLogic.DoRcv(); };
    tuning.DoXmit = [this] { mainLogic.DoXmit(); };
    tuning.EditSequence = [this](int i) { sequences.EditSequence(i); };
    devices.connect(freqDisplay);
    multiXcvr.connect();
    memories.DoRcv = [this] { mainLogic.DoRcv(); };
    memories.DoXmit = [this] { mainLogic.DoXmit(); };
    // Last: the sequences take F5 to F12 in front of the frequency box's other keys.
    sequences.connect();
    module.attachBus(suiteBus);
    registerFamilies(module.radio());
    setErrorReporter([this](int number, const QString& label, const QString& description) {
        common.ReportError(number, label, description);
    });
    settings.onWriteFailure = [this](const QString& why) { common.LogLine(QStringLiteral("Settings: ") + why); };
    // A failure in the caption's own update must not report itself round and round.
    common.onErrorReported = [this] {
        if (reportingError_) return;
        reportingError_ = true;
        module.ErrorLogExists();
        reportingError_ = false;
    };
    for (Form* f : std::initializer_list<Form*>{&main, &config, &messages, &messages.note, &messages.overflow,
                                                &messages.reject, &sequenceEditor, &memoryNotes})
        common.registerForm(f);
    main.ClockTimer.TimerEvent = [this] { module.UpdateCaption(); };
    // Closing the main window ends the program, everything saved on the way.
    main.QueryUnload = [this](int&, int) { FormUnload(); };
    main.ShutdownTimer.TimerEvent = [this] {
        main.ShutdownTimer.setEnabled(false);
        FormUnload();
    };
    main.ShutdownTimer.setInterval(kShutdownDelayMs);
    comm.onData = [this] { module.link().HandleIncomingChar(QByteArray()); };
    SuiteActions& suite = suiteLink.actions;
    suite.RequestShutdown = [this] { RequestShutdown(); };
    suite.ExecuteNamedSequence = [this](const QString& name) { sequences.ExecuteNamedSequence(name); };
    suite.ExecuteSequence = [this](int index) { sequences.ExecuteSequence(index); };
    suite.ExecuteCommand = [this](const QString& text) { sequences.ExecuteCommand(text); };
    suite.OpenWindows = [this] { return openWindows(); };
    suiteLink.connect();
    rig.connect();
    rig.multiXcvr = &multiXcvr;
    loggers.web.onStatus = [this](const QString& note) {
        netServer.setNote(note);
        module.SetCaptionNote(note);
    };
    QObject::connect(&module.state(), &RadioState::transmitOwnerChanged, &module.state(),
                     [this](const QString& owner) { netServer.setTransmitOwner(owner); });
    QObject::connect(&module.state(), &RadioState::clientLockChanged, &module.state(),
                     [this](bool locked) {
                         netServer.setLocked(locked);
                         main.NetServerUnlockCmd.setVisible(locked);
                     });
    main.NetServerUnlockCmd.Click = [this] { module.LockClientSets(false, QStringLiteral("the operator")); };
    networkLogic.connect();
    networkLogic.RestartServers = [this] {
        netServer.Terminate();
        flrigServer.Terminate();
        netServer.Initialize(netOptions);
        flrigServer.Initialize(flrigOptions);
    };
}

std::vector<Form*> Program::openWindows() {
    return {&main, &config, &messages, &messages.note, &messages.overflow, &messages.reject, &memoryNotes, &sequenceEditor};
}

Program::~Program() {
    FormUnload();
    setErrorReporter({});
}

void Program::loadConfigForm() {
    common.LogLine(QStringLiteral("KavConfig.Form_Load"));
    common.RestoreWindowPosition(config);
    const QString browser = settings.GetSetting(kGeneral, QStringLiteral("BrowserPathname"), QString());
    config.BrowserPathname.setText(browser);
    common.SetBrowserPathname(browser);
    config.DualMonitorCheck.setChecked(common.dualMonitor());
    common.LogLine(QStringLiteral("KavConfig.Form_Load complete"));
}

bool Program::FormLoad() {
    if (loaded_) return true;
    loaded_ = true;
    bool ok = true;
    Guard("KavMain.Form_load", [&] {
        // The log and error flags first.
        common.Initialize();
        module.ClearErrorLogFlag();
        // A step of start-up or bring-up that nobody answers would be skipped without a word.
        for (const QString& name : module.hooks.missing())
            common.ReportError(kErrInvalidCall, QStringLiteral("KavMain.Form_load"),
                               QStringLiteral("no part of the program answers the step ") + name);
        // Debug logging as the settings say.
        const bool debug = settings.GetSetting(kGeneral, QStringLiteral("Debug"), QStringLiteral("0")).trimmed() ==
                           QLatin1String("1");
        config.DebugCheck.setChecked(debug);
        common.SetDebug(debug);
        // Stop the shutdown timer; note the form's height.
        main.ShutdownTimer.setEnabled(false);
        main.OriginalFormHeight.setCaption(QString::number(main.height()));
        // Load the other windows and put them where they were.
        loadConfigForm();
        messagesLogic.FormLoad();
        common.RestoreWindowPosition(sequenceEditor);
        comm.InitializePort();
        // Start the core: catalogue, radio, settings.
        common.LogLine(QStringLiteral("KavMain.Form_load: forms loaded"));
        // Without a catalogue there is nothing more to start.
        module.Initialize();
        if (module.terminateRequested()) {
            // Without a catalogue the program ends at once; there is nothing to save yet.
            ok = false;
            unloaded_ = true;
            return;
        }
        common.LogLine(QStringLiteral("KavMain.Form_load: KavModule intialized"));
        // Open the suite link and the network front doors.
        module.hooks.DDEInitialize();
        netServer.Initialize(netOptions);
        flrigServer.Initialize(flrigOptions);
        loggers.Initialize();
        networkLogic.ShowSettings();
        // The clock and the caption run from here on.
        main.ClockTimer.setInterval(1000);
        main.ClockTimer.setEnabled(true);
        common.LogLine(QStringLiteral("KavMain.Form_load: DDEServerModule initialized"));
    });
    return ok;
}

void Program::FormUnload() {
    if (unloaded_ || !loaded_) return;
    unloaded_ = true;
    // A sequence looping in a handler below us must not keep the program from ending.
    sequences.StopRunning();
    Guard("KavMain.Form_Unload", [&] {
        main.ClockTimer.setEnabled(false);
        // Whatever the way out (the window, a signal, the suite link), the radio is not left keyed.
        module.ReleaseTransmitter(QStringLiteral("at shutdown"));
        // Save the debug flag.
        settings.SaveSetting(kGeneral, QStringLiteral("Debug"), config.DebugCheck.checked() ? QStringLiteral("1")
                                                                                          : QStringLiteral("0"));
        // Close the suite link and the network front doors.
        module.hooks.DDETerminate();
        netServer.Terminate();
        flrigServer.Terminate();
        loggers.Terminate();
        // The shared services end.
        common.Terminate();
        // The core stops last.
        module.Terminate();
        // The windows go; the port is closed with its window.
        common.SaveWindowPosition(sequenceEditor);
        if (memoryNotes.loaded) Guard("MemoryNotes.Form_Unload", [this] { common.SaveWindowPosition(memoryNotes); });
        common.SaveWindowPosition(config);
        common.SaveWindowPosition(messages);
        sequenceEditor.Hide();
        memoryNotes.Hide();
        config.Hide();
        messages.Hide();
        comm.ClosePort();
        module.queue().XcvrCmdTimer.setEnabled(false);
        main.AutoRepeatTimer.setEnabled(false);
        module.link().ExpectTimer.setEnabled(false);
        main.Hide();
    });
    // Nothing is left unwritten when the process ends.
    settings.flush();
    if (onUnloaded) onUnloaded();
}

void Program::RequestShutdown() { main.ShutdownTimer.setEnabled(true); }

}  // namespace tv
