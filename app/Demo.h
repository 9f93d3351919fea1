#pragma once
// Demo mode: a simulated radio on a pseudo-terminal, and throw-away settings that select a matching
// catalogue radio on it, so that a newcomer sees the program work without any hardware.

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <optional>

namespace tv {

class Program;
class SettingsStore;

// A radio the demo can simulate: its name as makers write it, its catalogue name, and what the
// settings need for it.
struct DemoModel {
    const char* name;
    const char* catalogue;
    const char* address;  // "" for radios without a bus address
    const char* speed;
    bool console = false;  // driven through a console program on the session bus, not on a line
    bool folder = false;   // driven through files in a control folder, not on a line
};

class DemoRadio {
public:
    // The model by either of its names (any case); nullptr for one the demo doesn't offer.
    static const DemoModel* find(const QString& name);
    static const DemoModel& defaultModel();
    // The names the demo offers, for the help text and the error message.
    static QString names();

    explicit DemoRadio(const DemoModel& model = defaultModel()) : model_(&model) {}
    ~DemoRadio();
    void setModel(const DemoModel& model) { model_ = &model; }
    const DemoModel& model() const { return *model_; }
    // A console radio needs a session bus: without one, a private bus is started for the demo and named
    // in this process's environment (for this program and the simulator). False with a reason.
    bool ensureSessionBus(QString* error);
    // Starts the simulator found beside this program; returns the pty it serves (for a console, the bus
    // name it holds), or "" with a reason.
    QString start(const QString& exeDir, QString* error);
    void stop();
    // Settings that select the simulated radio on the pty, written into the given store file.
    void presetSettings(const QString& iniPath, const QString& pty) const;
    // A device table beside the settings and the demo radio as the first transceiver.
    void presetStation(SettingsStore& s, const QString& folder) const;

private:
    const DemoModel* model_;
    QProcess sim_;
    QProcess bus_;
    std::optional<QTemporaryDir> controlFolder_;  // made only for a radio driven through files
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
// The demo's monitor starts capturing when the operator first opens it.
void captureFromFirstLook(Program& program);

}  // namespace tv
