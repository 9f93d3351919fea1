#pragma once
// A whole program on virtual time for tests: a temporary config folder and data folder, the simulated
// loop, scripted dialogs, in-memory serial devices, and the program built from them.

#include "app/Program.h"
#include "coresupport/Recording.h"
#include "support/QtPrinters.h"
#include "platform/Dialogs.h"
#include "platform/FakeSerialDevice.h"
#include "platform/SimEventLoop.h"

#include <QTemporaryDir>

#include <map>
#include <memory>

namespace tv::test {

// A few radios of each supplier, enough for the core's tests.
extern const char* const kTestCatalogue;

class TestStation {
public:
    explicit TestStation(const QString& catalogue = QString::fromLatin1(kTestCatalogue));
    ~TestStation();

    // Settings written before the program starts (section, key, value).
    void preset(const QString& section, const QString& key, const QString& value);
    // Called with the new program before its load: tests attach what they need to it there.
    std::function<void(Program&)> onCreate;
    // Called with each serial device as the program makes it, before it is opened.
    std::function<void(FakeSerialDevice&)> onDevice;
    // Builds the program and runs its load. Returns what FormLoad returned.
    bool start();
    // Unloads (as the window's close) and destroys the program; the files stay for a second start.
    void stop();

    Program& p() { return *program; }
    KavModule& m() { return program->module; }
    // Full text of ErrorLog.txt.
    QString log() const;
    // The settings file as a fresh store reads it.
    QString stored(const QString& section, const QString& key, const QString& def = QStringLiteral("<none>")) const;
    // The serial devices the program made, in order; the last is the one in use.
    FakeSerialDevice* serial() const { return devices.empty() ? nullptr : devices.back(); }
    // Selects a catalogue radio as the operator would and brings it up.
    void selectRadio(const QString& name);
    // Records what the queue asks of a supplier letter's family instead of sending it.
    Recording& record(QChar supplier);

    QTemporaryDir dir;
    QString configDir, appDir;
    SimEventLoop loop;
    ScriptedDialogs dialogs;
    std::vector<FakeSerialDevice*> devices;
    std::unique_ptr<Program> program;
    std::map<QChar, std::unique_ptr<Recording>> recordings;

private:
    void wrap(QChar supplier, Recording& rec);
};

}  // namespace tv::test
