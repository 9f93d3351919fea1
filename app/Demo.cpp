#include "app/Demo.h"

#include "app/Program.h"
#include "core/XcvrCmd.h"
#include "platform/SettingsStore.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringList>

#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace tv {

namespace {
// One radio of each family the simulator speaks, and of each kind of Yaesu line: the small radios'
// own command set, the long reads of the FT-1000MP, and the FT-767's handshake; and an SDR through its
// console.
constexpr DemoModel kDemoModels[] = {
    {"IC-7300", "IC-7300", "94", "19200"},
    {"TS-2000", "TS-2000", "", "9600"},
    {"FT-817", "FT817", "", "4800"},
    {"FT-1000MP", "MP1000", "", "4800"},
    {"FT-767", "FT767", "", "4800"},
    {"FLEX-5000", "FLEX-5000", "", "9600", true},
    {"ORION", "ORION", "", "57600"},
    {"PEGASUS", "PEGASUS", "", "", false, true},
};
// The demo line's framing (8N1), written to the Com tab (option positions from 1) and to the demo's
// transceiver entry (the captions at those positions) from this one row, so the two pages agree.
struct DemoFraming {
    const char* parityOption;
    const char* parity;
    const char* wordOption;
    const char* word;
    const char* stopOption;
    const char* stop;
};
constexpr DemoFraming kDemoLine{"1", "N", "1", "8", "1", "1"};
// How long a helper program (the simulator, a private bus) gets to say where it can be reached.
constexpr int kHelperStartMs = 5000;
}  // namespace

const DemoModel* DemoRadio::find(const QString& name) {
    for (const DemoModel& m : kDemoModels)
        if (name.compare(QLatin1String(m.name), Qt::CaseInsensitive) == 0 ||
            name.compare(QLatin1String(m.catalogue), Qt::CaseInsensitive) == 0)
            return &m;
    return nullptr;
}

const DemoModel& DemoRadio::defaultModel() { return kDemoModels[0]; }

QString DemoRadio::names() {
    QStringList out;
    for (const DemoModel& m : kDemoModels) out << QString::fromLatin1(m.name);
    return out.join(QStringLiteral(", "));
}

DemoRadio::~DemoRadio() { stop(); }

bool DemoRadio::ensureSessionBus(QString* error) {
    if (!model_->console) return true;
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
        (!runtime.isEmpty() && QFileInfo::exists(runtime + QStringLiteral("/bus"))))
        return true;
    bus_.setProgram(QStringLiteral("dbus-daemon"));
    bus_.setArguments({QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    bus_.setStandardErrorFile(QProcess::nullDevice());
    bus_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
    bus_.start();
    QByteArray address;
    QElapsedTimer t;
    t.start();
    if (bus_.waitForStarted(kHelperStartMs))
        while (!bus_.canReadLine() && t.elapsed() < kHelperStartMs)
            if (!bus_.waitForReadyRead(200) && bus_.state() == QProcess::NotRunning) break;
    if (bus_.canReadLine()) address = bus_.readLine().trimmed();
    if (address.isEmpty()) {
        if (error) *error = QStringLiteral("the demo's console needs a session bus, and dbus-daemon did not start one");
        bus_.kill();
        bus_.waitForFinished(2000);
        return false;
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    return true;
}

QString DemoRadio::start(const QString& exeDir, QString* error) {
    const QString program = exeDir + QStringLiteral("/tolvane-radiosim");
    if (!QFileInfo(program).isExecutable()) {
        if (error) *error = QStringLiteral("the radio simulator is missing: ") + program;
        return {};
    }
    // The dial turns by itself, so that the demo shows the program following the radio.
    sim_.setProgram(program);
    QStringList args{QStringLiteral("--freq"), QStringLiteral("14025.5"), QStringLiteral("--dial-step"),
                     QStringLiteral("100"), QStringLiteral("--dial-every"), QStringLiteral("1000")};
    if (model_->console)
        args << QStringLiteral("--sdr-console") << QStringLiteral("--mode") << QStringLiteral("CWL");
    else if (model_->folder)
        args << QStringLiteral("--pegasus-folder") << controlFolder_.emplace().path() << QStringLiteral("--mode")
             << QStringLiteral("CW");
    else
        args << QStringLiteral("--model") << QString::fromLatin1(model_->name) << QStringLiteral("--mode") << QStringLiteral("CW");
    sim_.setArguments(args);
    sim_.setProcessChannelMode(QProcess::SeparateChannels);
    sim_.setStandardErrorFile(QProcess::nullDevice());
    // Should this program die without stopping it, the simulator goes too, rather than turning its
    // dial for nobody.
    sim_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
    sim_.start();
    if (!sim_.waitForStarted(kHelperStartMs)) {
        if (error) *error = QStringLiteral("the radio simulator did not start: ") + sim_.errorString();
        return {};
    }
    // A radio names its pseudo-terminal, a console the bus name it holds, a folder radio its folder.
    const QByteArray tag = model_->console  ? QByteArrayLiteral("CONSOLE ")
                           : model_->folder ? QByteArrayLiteral("FOLDER ")
                                            : QByteArrayLiteral("PTY ");
    QByteArray out;
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < kHelperStartMs) {
        const qsizetype at = out.indexOf(tag);
        if (at >= 0 && out.indexOf('\n', at) > at)
            return QString::fromLocal8Bit(out.mid(at + tag.size(), out.indexOf('\n', at) - at - tag.size())).trimmed();
        if (!sim_.waitForReadyRead(200) && sim_.state() == QProcess::NotRunning) break;
        out += sim_.readAllStandardOutput();
    }
    if (error)
        *error = model_->console ? QStringLiteral("the console simulator did not come up on the session bus")
                                 : QStringLiteral("the radio simulator did not name its pseudo-terminal");
    stop();
    return {};
}

void DemoRadio::stop() {
    if (sim_.state() != QProcess::NotRunning) {
        sim_.write("quit\n");
        if (!sim_.waitForFinished(2000)) {
            sim_.kill();
            sim_.waitForFinished(2000);
        }
    }
    // The private bus goes after everyone on it.
    if (bus_.state() != QProcess::NotRunning) {
        bus_.terminate();
        if (!bus_.waitForFinished(2000)) {
            bus_.kill();
            bus_.waitForFinished(2000);
        }
    }
}

void DemoRadio::presetSettings(const QString& iniPath, const QString& pty) const {
    SettingsStore s(iniPath, nullptr);
    const QString g = QStringLiteral("General");
    s.SaveSetting(g, QStringLiteral("Radio"), QString::fromLatin1(model_->catalogue));
    s.SaveSetting(g, QStringLiteral("RadioId"), QString::fromLatin1(model_->address));
    s.SaveSetting(g, QStringLiteral("Radix"), QStringLiteral("Hexadecimal"));
    if (model_->folder) {
        s.SaveSetting(g, QStringLiteral("ControlFolder"), pty);
    } else if (!model_->console) {
        s.SaveSetting(g, QStringLiteral("CommPort"), QStringLiteral("1"));
        s.SaveSetting(g, QStringLiteral("CommPortDevice1"), pty);
        s.SaveSetting(g, QStringLiteral("CommSpeed"), QString::fromLatin1(model_->speed));
        s.SaveSetting(g, QStringLiteral("CommParity"), QString::fromLatin1(kDemoLine.parityOption));
        s.SaveSetting(g, QStringLiteral("CommWordLength"), QString::fromLatin1(kDemoLine.wordOption));
        s.SaveSetting(g, QStringLiteral("CommStopBits"), QString::fromLatin1(kDemoLine.stopOption));
    }
    s.SaveSetting(g, QStringLiteral("Interrogate"), QStringLiteral("T"));
    s.SaveSetting(g, QStringLiteral("InterrogateInterval"), QStringLiteral("200"));
    // Captured from the moment the operator first looks (captureFromFirstLook): a monitor filling
    // unseen would be full by the time anyone opened it.
    s.SaveSetting(g, QStringLiteral("MessageCapture"), QStringLiteral("F"));
    presetStation(s, QFileInfo(iniPath).absolutePath());
}

void DemoRadio::presetStation(SettingsStore& s, const QString& folder) const {
    // A manual tuner's table, so that the main window shows a device following the dial.
    const QString table = folder + QStringLiteral("/tuner.txt");
    QSaveFile f(table);
    if (f.open(QIODevice::WriteOnly)) {
        f.write("Band,Tune,Load\n");
        for (int k = 0; k < 15; ++k) f.write(QByteArray::number(14000 + 25 * k) + ",B," + QByteArray::number(40 + k) + "," +
                                             QByteArray::number(80 - 2 * k) + "\n");
        f.commit();
    }
    const QString d = QStringLiteral("Devices");
    s.SaveSetting(d, QStringLiteral("DeviceEnabled0"), QStringLiteral("1"));
    s.SaveSetting(d, QStringLiteral("DeviceName0"), QStringLiteral("Tuner"));
    s.SaveSetting(d, QStringLiteral("DeviceFilename0"), table);
    // The demo radio as the first of the transceivers, on its port.
    const QString x = QStringLiteral("MultiXCVR");
    s.SaveSetting(x, QStringLiteral("MultiModel0"), QString::fromLatin1(model_->catalogue));
    s.SaveSetting(x, QStringLiteral("MultiAddr0"), QString::fromLatin1(model_->address));
    s.SaveSetting(x, QStringLiteral("MultiName0"), QStringLiteral("Demo ") + QString::fromLatin1(model_->name));
    s.SaveSetting(x, QStringLiteral("MultiPort0"), QStringLiteral("0"));
    s.SaveSetting(x, QStringLiteral("MultiBaud0"), QString::fromLatin1(model_->speed));
    s.SaveSetting(x, QStringLiteral("MultiParity0"), QString::fromLatin1(kDemoLine.parity));
    s.SaveSetting(x, QStringLiteral("MultiWordlength0"), QString::fromLatin1(kDemoLine.word));
    s.SaveSetting(x, QStringLiteral("MultiStop0"), QString::fromLatin1(kDemoLine.stop));
    s.SaveSetting(x, QStringLiteral("MultiPoll0"), QStringLiteral("1"));
    s.SaveSetting(x, QStringLiteral("MultiEnabled0"), QStringLiteral("1"));
}

namespace {
const char kOwnerFile[] = "/.owner";
// A folder being made has no lock yet: give its maker this long before taking it for abandoned.
constexpr qint64 kUnlockedGraceSeconds = 60;
}  // namespace

QString DemoFolder::base() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QFileInfo info(runtime);
    return !runtime.isEmpty() && info.isDir() && info.isWritable() ? runtime : QDir::tempPath();
}

int DemoFolder::removeStale(const QString& base) {
    int removed = 0;
    const QFileInfoList folders =
        QDir(base).entryInfoList({QStringLiteral("tolvane-demo-*")}, QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    for (const QFileInfo& folder : folders) {
        const QString owner = folder.absoluteFilePath() + QLatin1String(kOwnerFile);
        const int fd = ::open(QFile::encodeName(owner).constData(), O_RDONLY | O_CLOEXEC);
        bool gone;
        if (fd < 0)
            gone = folder.lastModified().secsTo(QDateTime::currentDateTime()) > kUnlockedGraceSeconds;
        else
            gone = ::flock(fd, LOCK_EX | LOCK_NB) == 0;  // its demo holds the lock for as long as it runs
        if (gone && QDir(folder.absoluteFilePath()).removeRecursively()) ++removed;
        if (fd >= 0) ::close(fd);
    }
    return removed;
}

namespace {
// The template of a new folder, once the ones of dead demos are gone.
QString freshFolderTemplate() {
    DemoFolder::removeStale(DemoFolder::base());
    return DemoFolder::base() + QStringLiteral("/tolvane-demo-XXXXXX");
}
}  // namespace

DemoFolder::DemoFolder() : dir_(freshFolderTemplate()) {
    if (!dir_.isValid()) return;
    const QByteArray owner = QFile::encodeName(dir_.path() + QLatin1String(kOwnerFile));
    lockFd_ = ::open(owner.constData(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    if (lockFd_ >= 0 && ::flock(lockFd_, LOCK_EX) != 0) {
        ::close(lockFd_);
        lockFd_ = -1;
    }
}

DemoFolder::~DemoFolder() {
    // The folder goes first (QTemporaryDir's own end), then the lock: no one takes it for stale meanwhile.
    dir_.remove();
    if (lockFd_ >= 0) ::close(lockFd_);
}

void captureFromFirstLook(Program& program) {
    auto open = program.main.MessagesCmd.Click;
    auto first = std::make_shared<bool>(true);
    program.main.MessagesCmd.Click = [&program, open, first] {
        if (*first) {
            *first = false;
            program.messages.CaptureEnabled.setChecked(true);
        }
        if (open) open();
    };
}

void reportStateOnStdout(Program& program) {
    auto print = [](const QString& line) {
        std::fprintf(stdout, "%s\n", line.toLocal8Bit().constData());
        std::fflush(stdout);
    };
    RadioState& s = program.module.state();
    QObject::connect(&s, &RadioState::frequencyChanged, &s,
                     [print](double kHz) { print(QStringLiteral("Radio: %1 kHz").arg(kHz, 0, 'f', 3)); });
    // Mode reports repeat with every poll: only a change is worth a line.
    QObject::connect(&s, &RadioState::modeChanged, &s,
                     [print](int mode) { print(QStringLiteral("Radio: mode ") + ModeName(mode)); });
}

}  // namespace tv
