#pragma once
// One running program: the store, the services, the windows' models, the link and the central module,
// brought up and taken down in their order.

#include "automation/Devices.h"
#include "automation/MultiXcvr.h"
#include "automation/UserSequences.h"
#include "core/KavComm.h"
#include "core/KavModule.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "forms/KavMessages.h"
#include "forms/MemoryNotes.h"
#include "forms/UserCommandSequenceDefinition.h"
#include "netserver/FlrigServer.h"
#include "netserver/Loggers.h"
#include "netserver/NetServer.h"
#include "netserver/ProgramRig.h"
#include "operating/Bands.h"
#include "operating/FilterGroups.h"
#include "operating/FrequencyDisplay.h"
#include "operating/Memories.h"
#include "operating/PassbandLists.h"
#include "operating/ModeControl.h"
#include "operating/SMeter.h"
#include "operating/Tuning.h"
#include "platform/SettingsStore.h"
#include "platform/SuiteBus.h"
#include "services/Common.h"
#include "suitelink/DDEServerModule.h"
#include "windows/KavConfigLogic.h"
#include "windows/KavConfigNetworkLogic.h"
#include "windows/KavMainLogic.h"
#include "windows/KavMessagesLogic.h"

#include <QString>

#include <functional>
#include <memory>

namespace tv {

class Dialogs;
class EventLoop;

struct ProgramPaths {
    QString configDir;  // Tolvane.ini and ErrorLog.txt
    QString appDir;     // Radios.txt, SMeter/, Help/
    QString exeName = QStringLiteral("tolvane");
};

class Program {
public:
    // Without a bus the suite link runs on one in memory (tests reach it through suiteBus).
    Program(EventLoop& loop, Dialogs& dialogs, ProgramPaths paths, SerialFactory serialFactory,
            SuiteBus* bus = nullptr);
    ~Program();

    // The main window's load: everything comes up in order. False when the program must end at once
    // (the catalogue could not be read).
    bool FormLoad();
    // The main window's unload: everything is saved and closed in order. Safe to call twice.
    void FormUnload();
    // "shutdown" from the suite link: the unload runs from a timer, so that the caller's reply leaves first.
    void RequestShutdown();
    bool unloaded() const { return unloaded_; }
    // Told when the unload has finished (the application then quits).
    std::function<void()> onUnloaded;

    EventLoop& loop;
    SettingsStore settings;
    Common common;
    KavMain main;
    KavConfig config;
    KavMessages messages;
    UserCommandSequenceDefinition sequenceEditor;
    KavComm comm;
    KavModule module;
    // The windows' handlers, toolkit-free: the same with or without a display.
    KavMainLogic mainLogic;
    KavConfigLogic configLogic;
    KavMessagesLogic messagesLogic;
    // Bands, the frequency box and tuning.
    Bands bands{common, module.state(), module.queue(), module.hooks, module.flags, main};
    Tuning tuning{common, module.state(), module.radio(), module.queue(), module.hooks, module.flags, main, config, bands};
    FrequencyDisplay freqDisplay{common, module.state(), module.queue(), main, bands, tuning};
    // Modes and filters, and the meter.
    ModeControl modes{common, module.state(), module.radio(), module.queue(), module.hooks, module.flags, main, config};
    SMeter meter{common, module.state(), module.radio(), module.hooks, main};
    PassbandLists passbands{common, module.state(), module.queue(), module.hooks, main, modes};
    FilterGroups filterGroups{module, modes};
    // The hundred memories, their bank pane and their notes window.
    MemoryNotes memoryNotes{loop};
    Memories memories{module, freqDisplay, modes, memoryNotes};
    UserSequences sequences;
    // The station around the radio: frequency-driven devices, and three transceivers to switch among.
    Devices devices{common, module.state(), module.hooks, main, config};
    MultiXcvr multiXcvr{module};
    std::unique_ptr<SuiteBus> ownSuiteBus;  // set only when no bus was given
    SuiteBus& suiteBus;
    DDEServerModule suiteLink;
    // The rig server for the Linux ham programs; the command line decides whether it may run.
    ProgramRig rig{module};
    NetServer netServer;
    NetServerOptions netOptions;
    // The XML-RPC front door, over the same backend.
    FlrigServer flrigServer{rig, settings, common};
    FlrigServerOptions flrigOptions;
    // The radio pushed to a web logger and to the contest loggers on UDP, over the same backend.
    Loggers loggers{rig, loop, settings, common, config};
    // The configuration window's tab for both servers.
    KavConfigNetworkLogic networkLogic{module};
    // The program's windows in the order they load ("iconify", "resetwindows").
    std::vector<Form*> openWindows();

private:
    void loadConfigForm();
    bool unloaded_ = false;
    bool reportingError_ = false;
    bool loaded_ = false;
};

// Where settings and the log live when no folder is given: the user's configuration folder.
QString defaultConfigDir();
// Where data files are found when no folder is given: beside the executable, else the install prefix.
QString defaultAppDir(const QString& exeDir);

}  // namespace tv
