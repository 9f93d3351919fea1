#pragma once
// The program's command line: what it asks for, read once at start.

#include "app/MemoryCommands.h"
#include "netserver/FlrigServer.h"
#include "netserver/NetServer.h"

#include <QString>

#include <optional>

class QCoreApplication;

namespace tv {

struct CommandLine {
    bool headless = false;
    bool demo = false;
    QString configDir, appDir;  // empty: the usual places
    QString screenshots;        // a folder for the documentation's pictures, or empty
    QString model;              // the demo's simulated radio, or empty for its default
    NetServerOptions net;
    FlrigServerOptions flrig;
    std::optional<MemoryCommand::Kind> memories;  // --export-memories or --import-memories
    QString memoryFile;
};

// Reads the options; --help and --version print and exit here. Returns the exit code of a command line
// that can't run (its message already on standard error), or nothing.
std::optional<int> ParseCommandLine(const QCoreApplication& app, CommandLine& out);

}  // namespace tv
