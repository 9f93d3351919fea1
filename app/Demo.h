#pragma once
// Demo mode: a simulated radio on a pseudo-terminal, and throw-away settings that select a matching
// catalogue radio on it, so that a newcomer sees the program work without any hardware.

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace tv {

class Program;
class SettingsStore;

class DemoRadio {
public:
    // The simulated model: in the catalogue, and known to the simulator.
    static constexpr const char* kModel = "IC-7300";
    static constexpr const char* kAddress = "94";

    ~DemoRadio();
    // Starts the simulator found beside this program; returns the pty it serves, or "" with a reason.
    QString start(const QString& exeDir, QString* error);
    void stop();
    // Settings that select the simulated radio on the pty, written into the given store file.
    static void presetSettings(const QString& iniPath, const QString& pty);
    // A device table beside the settings and the demo radio as the first transceiver.
    static void presetStation(SettingsStore& s, const QString& folder);

private:
    QProcess sim_;
};

// The demo's throw-away settings folder, "tolvane-demo-*" in the user's runtime folder ($XDG_RUNTIME_DIR,
// else the temporary folder). Removed at the end of the demo; one left behind by a demo that crashed is
// removed at the next demo's start, once nothing holds the lock on its ".owner" file any more.
class DemoFolder {
public:
    DemoFolder();
    ~DemoFolder();
    DemoFolder(const DemoFolder&) = delete;
    DemoFolder& operator=(const DemoFolder&) = delete;
    bool isValid() const { return lockFd_ >= 0; }
    QString path() const { return dir_.path(); }
    // Where the folders are made.
    static QString base();
    // Removes the folders whose demo is gone; returns how many.
    static int removeStale(const QString& base);

private:
    QTemporaryDir dir_;
    int lockFd_ = -1;
};

// Prints the radio's state to standard output as it changes (headless runs have no window to show it).
void reportStateOnStdout(Program& program);

}  // namespace tv
