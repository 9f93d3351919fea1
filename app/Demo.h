#pragma once
// Demo mode: a simulated radio on a pseudo-terminal, and throw-away settings that select a matching
// catalogue radio on it, so that a newcomer sees the program work without any hardware.

#include <QProcess>
#include <QString>

namespace tv {

class Program;

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

private:
    QProcess sim_;
};

// Prints the radio's state to standard output as it changes (headless runs have no window to show it).
void reportStateOnStdout(Program& program);

}  // namespace tv
