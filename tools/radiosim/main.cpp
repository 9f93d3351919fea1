// tolvane-radiosim: a simulated radio (CI-V, Kenwood or Yaesu) on a pseudo-terminal (or on a given tty), driven
// by the controller through the line and by a person or a test through stdin.

#include "tools/radiosim/LineRadio.h"
#include "tools/radiosim/PegasusFolder.h"
#include "tools/radiosim/SdrConsole.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <termios.h>
#include <unistd.h>

using tv::sim::CivLine;
using tv::sim::CivModel;
using tv::sim::CivRadio;
using tv::sim::KenwoodLine;
using tv::sim::KenwoodModelSpec;
using tv::sim::KenwoodRadio;
using tv::sim::LineRadio;
using tv::sim::PegasusFolder;
using tv::sim::SdrConsole;
using tv::sim::TenTecLine;
using tv::sim::TenTecModelSpec;
using tv::sim::TenTecRadio;
using tv::sim::YaesuLine;
using tv::sim::YaesuModel;
using tv::sim::YaesuRadio;

namespace {

int g_signalPipe[2] = {-1, -1};

void onSignal(int) {
    const char c = 1;
    [[maybe_unused]] const ssize_t n = ::write(g_signalPipe[1], &c, 1);
}

void logLine(const QString& line) {
    std::fputs(qPrintable(line + QLatin1Char('\n')), stderr);
    std::fflush(stderr);
}

bool setNonBlocking(int fd) {
    const int flags = ::fcntl(fd, F_GETFL);
    return flags >= 0 && ::fcntl(fd, F_SETFL, flags | O_NONBLOCK) == 0;
}

bool makeRaw(int fd) {
    termios t{};
    if (::tcgetattr(fd, &t) != 0) return false;
    ::cfmakeraw(&t);
    return ::tcsetattr(fd, TCSANOW, &t) == 0;
}

// The line end of the simulator: reads the controller's bytes, writes the radio's, and queues what a
// full pty buffer won't take yet.
class Bus : public QObject {
public:
    // `slave` is our own hold on the pty's other end, or -1 on a device.
    Bus(int fd, int slave, LineRadio& radio, QObject* parent)
        : QObject(parent), fd_(fd), slave_(slave), radio_(radio) {
        setNonBlocking(fd_);
        reader_ = new QSocketNotifier(fd_, QSocketNotifier::Read, this);
        writer_ = new QSocketNotifier(fd_, QSocketNotifier::Write, this);
        writer_->setEnabled(false);
        connect(reader_, &QSocketNotifier::activated, this, [this] { readAll(); });
        connect(writer_, &QSocketNotifier::activated, this, [this] { flush(); });
        pacer_.setInterval(10);
        connect(&pacer_, &QTimer::timeout, this, [this] { flush(); });
    }

    void send(const QByteArray& bytes) {
        if (bytes.isEmpty()) return;
        logLine(QStringLiteral("-> ") + radio_.shown(bytes));
        pending_.append(bytes);
        flush();
    }

    // Answer at the pace of a serial line of this many baud (ten bits a byte), in small pieces, so that
    // a long reply takes as long as on the real radio. 0: at once.
    // The radio obeys what it hears, but nothing it says reaches the line (a broken wire back).
    void setMuted(bool on) { muted_ = on; }

    void setPace(int baud) {
        baud_ = baud;
        paceStarted_ = false;
        if (baud_ <= 0) pacer_.stop();
        flush();
    }

private:
    void readAll() {
        QByteArray in;
        char buf[512];
        for (;;) {
            const ssize_t n = ::read(fd_, buf, sizeof buf);
            if (n > 0) {
                in.append(buf, int(n));
                continue;
            }
            if (n < 0 && errno == EINTR) continue;
            if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) {
                // EIO while nobody holds the other end: wait a little instead of spinning.
                reader_->setEnabled(false);
                QTimer::singleShot(200, this, [this] { reader_->setEnabled(true); });
            }
            break;
        }
        if (in.isEmpty()) return;
        logLine(QStringLiteral("<- ") + radio_.shown(in));
        const QByteArray out = radio_.receive(in);
        // A CI-V echo is the interface's and always comes back; log only the radio's own answer.
        const QByteArray answer = out.mid(radio_.echoLength(in));
        if (muted_) {
            if (!out.isEmpty())
                logLine(QStringLiteral("-- ") + radio_.shown(out) + QStringLiteral(" (muted)"));
            return;
        }
        if (!answer.isEmpty()) logLine(QStringLiteral("-> ") + radio_.shown(answer));
        pending_.append(out);
        flush();
    }

    void flush() {
        if (baud_ <= 0) {
            writeSome(int(pending_.size()));
            return;
        }
        if (pending_.isEmpty()) {
            pacer_.stop();
            paceStarted_ = false;
            return;
        }
        if (!paceStarted_) {
            // A fresh reply: the line has been idle, the clock starts with its first byte.
            paceClock_.start();
            paceSent_ = 0;
            paceStarted_ = true;
        }
        const qint64 due = paceClock_.elapsed() * baud_ / 10'000 + 1 - paceSent_;
        if (due > 0) paceSent_ += writeSome(int(std::min<qint64>(due, pending_.size())));
        if (pending_.isEmpty()) {
            pacer_.stop();
            paceStarted_ = false;
        } else if (!pacer_.isActive()) {
            pacer_.start();
        }
    }

    // Writes up to `limit` pending bytes; returns how many went out.
    int writeSome(int limit) {
        int written = 0;
        while (!pending_.isEmpty() && written < limit) {
            const ssize_t n = ::write(fd_, pending_.constData(), size_t(std::min<int>(limit - written, int(pending_.size()))));
            if (n > 0) {
                pending_.remove(0, int(n));
                written += int(n);
                flushedSlave_ = false;
                continue;
            }
            if (n < 0 && errno == EINTR) continue;
            if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK) && slave_ >= 0 && !flushedSlave_) {
                // The pty is full because nobody reads it: what we said went unheard, as on a line
                // with no listener. Drop it so that a client opening later doesn't get stale reports.
                ::tcflush(slave_, TCIFLUSH);
                flushedSlave_ = true;
                continue;
            }
            if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) {
                logLine(QStringLiteral("write failed: ") + QString::fromLocal8Bit(std::strerror(errno)));
                pending_.clear();  // a dead line: what the radio said is lost, as on a real bus
            }
            break;
        }
        // Paced, the timer brings the rest; the notifier only when the line itself is full.
        writer_->setEnabled(!pending_.isEmpty() && (baud_ <= 0 || written < limit));
        return written;
    }

    int fd_;
    int slave_;
    bool flushedSlave_ = false;
    LineRadio& radio_;
    QSocketNotifier* reader_;
    QSocketNotifier* writer_;
    QByteArray pending_;
    int baud_ = 0;
    bool muted_ = false;
    QTimer pacer_;
    QElapsedTimer paceClock_;
    bool paceStarted_ = false;
    qint64 paceSent_ = 0;
};

// The demo's restless operator: every `every` ms the dial turns by `step` Hz, twenty times up, then
// twenty down; `turn` is given the signed step and how many steps have been taken. A step of 0: never.
void turnRestlessly(QTimer& dial, QCoreApplication& app, qint64 step, int every,
                    std::function<void(qint64 delta, int steps)> turn) {
    if (step == 0) return;
    QObject::connect(&dial, &QTimer::timeout, &app, [step, turn = std::move(turn), steps = 0]() mutable {
        ++steps;
        turn((((steps - 1) / 20) % 2 == 0 ? 1 : -1) * step, steps);
    });
    dial.start(every);
}
// Signals come and go as the dial moves: the meter rises and falls over the band, in tenths of its top.
constexpr int kMeterShape[] = {2, 4, 6, 5, 3, 7, 9, 6, 4, 3};

// SIGTERM and SIGINT end the loop through a pipe, so that the exit is a normal one.
void quitOnSignals(QCoreApplication& app) {
    if (::pipe(g_signalPipe) == 0) {
        setNonBlocking(g_signalPipe[0]);
        struct sigaction sa {};
        sa.sa_handler = onSignal;
        sigemptyset(&sa.sa_mask);
        ::sigaction(SIGTERM, &sa, nullptr);
        ::sigaction(SIGINT, &sa, nullptr);
        auto* sig = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, &app);
        QObject::connect(sig, &QSocketNotifier::activated, &app, [] {
            char c;
            while (::read(g_signalPipe[0], &c, 1) > 0) {}
            QCoreApplication::quit();
        });
    }
    ::signal(SIGPIPE, SIG_IGN);
}

// Calls stdin's lines, one at a time, until one returns false or the input ends (the program runs on).
void readStdinLines(QCoreApplication& app, std::function<bool(const QString&)> run) {
    auto* in = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, &app);
    auto line = std::make_shared<QByteArray>();
    QObject::connect(in, &QSocketNotifier::activated, &app, [in, line, run] {
        char buf[256];
        const ssize_t n = ::read(STDIN_FILENO, buf, sizeof buf);
        if (n <= 0) {
            if (n == 0 || (errno != EINTR && errno != EAGAIN)) in->setEnabled(false);
            return;
        }
        line->append(buf, int(n));
        int nl;
        while ((nl = line->indexOf('\n')) >= 0) {
            const QString text = QString::fromLocal8Bit(line->left(nl));
            line->remove(0, nl + 1);
            if (!run(text)) {
                in->setEnabled(false);
                QCoreApplication::quit();
                return;
            }
        }
    });
}

// ---- the SDR console on the session bus ----

// The console's topic: the controller's execute strings arrive here.
class ConsoleTopic : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "ham.dde.Topic")

public:
    std::function<bool(const QString&)> onExecute;
    bool hung = false;  // takes calls and never answers them

public slots:
    bool Execute(const QString& command) {
        if (hung) {
            logLine(QStringLiteral("<- %1 (hung: no answer)").arg(command));
            setDelayedReply(true);
            return false;
        }
        return onExecute ? onExecute(command) : false;
    }
};

const QString kConsoleName = QStringLiteral("ham.dde.SDRConsole");

// The console until "quit" or a signal: owns its name, says "start" to the controller when it comes up,
// and tells it every change.
int serveConsole(QCoreApplication& app, SdrConsole& console, qint64 dialStep, int dialEvery) {
    auto fail = [](const QString& msg) {
        logLine(QStringLiteral("tolvane-radiosim: ") + msg);
        return 2;
    };
    quitOnSignals(app);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return fail(QStringLiteral("no session bus (DBUS_SESSION_BUS_ADDRESS)"));
    // What the console tells the controller goes as calls of its own, after the answer to the call
    // that caused it; their answers are of no interest.
    auto tell = [&bus](const QStringList& strings) {
        for (const QString& s : strings) {
            logLine(QStringLiteral("-> ") + s);
            QDBusMessage m = QDBusMessage::createMethodCall(QStringLiteral("ham.dde.Tolvane"), QStringLiteral("/SDRDDEClient"),
                                                            QStringLiteral("ham.dde.Topic"), QStringLiteral("Execute"));
            m << s;
            bus.send(m);
        }
    };
    auto later = [&app, tell](const QStringList& strings) {
        if (!strings.isEmpty()) QTimer::singleShot(0, &app, [tell, strings] { tell(strings); });
    };
    ConsoleTopic topic;
    topic.onExecute = [&](const QString& command) {
        const SdrConsole::Answer a = console.execute(command);
        logLine(QStringLiteral("<- %1%2").arg(command, a.accepted ? QString() : QStringLiteral(" (refused)")));
        later(a.reports);
        return a.accepted;
    };
    if (!bus.registerObject(QStringLiteral("/frmOmbrelDDE"), &topic, QDBusConnection::ExportAllSlots))
        return fail(QStringLiteral("can't offer /frmOmbrelDDE"));
    auto comeUp = [&] {
        if (!bus.registerService(kConsoleName)) return false;
        later({QStringLiteral("start")});
        return true;
    };
    if (!comeUp()) return fail(kConsoleName + QStringLiteral(" is held by another program"));
    std::printf("CONSOLE %s\n", qPrintable(kConsoleName));
    std::fflush(stdout);
    logLine(QStringLiteral("SDR console, VFO A %1 Hz %2").arg(console.frequency(0)).arg(SdrConsole::modeName(console.mode(0))));

    auto state = [&] {
        return QStringLiteral("VFO A %1 Hz %2, VFO B %3 Hz %4%5")
            .arg(console.frequency(0))
            .arg(SdrConsole::modeName(console.mode(0)))
            .arg(console.frequency(1))
            .arg(SdrConsole::modeName(console.mode(1)), console.split() ? QStringLiteral(", split") : QString());
    };
    readStdinLines(app, [&](const QString& line) {
        const QStringList w = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (w.isEmpty()) return true;
        const QString cmd = w[0].toLower(), arg = w.size() > 1 ? w[1] : QString();
        bool ok = false;
        if (cmd == QLatin1String("quit") || cmd == QLatin1String("exit")) return false;
        if (cmd == QLatin1String("dial")) {
            const qint64 delta = arg.toLongLong(&ok);
            if (ok) tell(console.turnDial(delta));
        } else if (cmd == QLatin1String("freq") || cmd == QLatin1String("freqb")) {
            const double khz = arg.toDouble(&ok);
            ok = ok && khz >= 0;
            if (ok) tell(console.setFrequency(cmd == QLatin1String("freqb") ? 1 : 0, qRound64(khz * 1000.0)));
        } else if (cmd == QLatin1String("mode") || cmd == QLatin1String("modeb")) {
            const int m = SdrConsole::modeOfName(arg);
            ok = m >= 0;
            if (ok) tell(console.setMode(cmd == QLatin1String("modeb") ? 1 : 0, m));
        } else if (cmd == QLatin1String("split") || cmd == QLatin1String("hang")) {
            ok = arg == QLatin1String("on") || arg == QLatin1String("off");
            if (ok && cmd == QLatin1String("split")) tell(console.setSplit(arg == QLatin1String("on")));
            if (ok && cmd == QLatin1String("hang")) topic.hung = arg == QLatin1String("on");
        } else if (cmd == QLatin1String("meter")) {
            const int v = arg.toInt(&ok);
            ok = ok && v >= 0 && v <= 100;
            if (ok) console.setMeter(v);
        } else if (cmd == QLatin1String("vanish")) {
            // The console ends as far as the controller can tell: its name goes.
            ok = bus.unregisterService(kConsoleName);
        } else if (cmd == QLatin1String("return")) {
            ok = comeUp();
        } else {
            logLine(QStringLiteral("unknown command: %1 (dial, freq, freqb, mode, modeb, split, meter, hang, vanish, "
                                   "return, quit)").arg(line.trimmed()));
            return true;
        }
        logLine(ok ? QStringLiteral("%1: %2").arg(line.trimmed(), state()) : QStringLiteral("bad argument: %1").arg(line.trimmed()));
        return true;
    });

    QTimer dial;
    turnRestlessly(dial, app, dialStep, dialEvery, [&](qint64 delta, int steps) {
        tell(console.turnDial(delta));
        console.setMeter(kMeterShape[steps % 10] * 10);  // a percentage
    });
    const int rc = app.exec();
    bus.unregisterService(kConsoleName);
    logLine(QStringLiteral("tolvane-radiosim: done"));
    return rc;
}

// One stdin command; returns false for "quit".
bool runCommand(const QString& line, LineRadio& radio, Bus& bus) {
    const QStringList w = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (w.isEmpty()) return true;
    const QString cmd = w[0].toLower();
    const QString arg = w.size() > 1 ? w[1] : QString();
    bool ok = false;
    if (cmd == QLatin1String("quit") || cmd == QLatin1String("exit")) return false;
    if (cmd == QLatin1String("dial")) {
        const qint64 delta = arg.toLongLong(&ok);
        if (ok) bus.send(radio.turnDial(delta));
    } else if (cmd == QLatin1String("freq")) {
        const double khz = arg.toDouble(&ok);
        if (ok) bus.send(radio.setFrequency(qRound64(khz * 1000.0)));
    } else if (cmd == QLatin1String("mode")) {
        const int m = radio.modeIndex(arg);
        ok = m >= 0;
        if (ok) bus.send(radio.setMode(m, w));
    } else if (cmd == QLatin1String("silent") || cmd == QLatin1String("transceive") ||
               cmd == QLatin1String("mute")) {
        ok = arg == QLatin1String("on") || arg == QLatin1String("off");
        if (ok && cmd == QLatin1String("silent")) radio.setSilent(arg == QLatin1String("on"));
        if (ok && cmd == QLatin1String("mute")) bus.setMuted(arg == QLatin1String("on"));
        if (ok && cmd == QLatin1String("transceive") && !radio.setTransceive(arg == QLatin1String("on"))) {
            logLine(QStringLiteral("%1: not on this radio").arg(line.trimmed()));
            return true;
        }
    } else if (cmd == QLatin1String("reject")) {
        if (!radio.rejectNext()) {
            logLine(QStringLiteral("%1: not on this radio").arg(line.trimmed()));
            return true;
        }
        ok = true;
    } else if (cmd == QLatin1String("slow")) {
        const int baud = arg == QLatin1String("off") ? 0 : arg.toInt(&ok);
        ok = arg == QLatin1String("off") || (ok && baud > 0);
        if (ok) bus.setPace(baud);
    } else if (radio.familyCommand(w, ok)) {
        // done; `ok` tells how it went
    } else if (cmd == QLatin1String("garbage")) {
        const int n = arg.isEmpty() ? 20 : arg.toInt(&ok);
        ok = arg.isEmpty() || (ok && n >= 0 && n <= 4096);
        if (ok) bus.send(radio.garbage(n, QRandomGenerator::global()->generate()));
    } else if (cmd == QLatin1String("meter")) {
        const int v = arg.toInt(&ok);
        if (ok) radio.setMeter(v);
    } else {
        logLine(QStringLiteral("unknown command: %1 (dial, freq, mode, silent, mute, transceive, reject, "
                               "garbage, meter, slow, quit; Yaesu also vfo, split, clar, filter)")
                    .arg(line.trimmed()));
        return true;
    }
    logLine(ok ? QStringLiteral("%1: %2 Hz %3").arg(line.trimmed()).arg(radio.frequency()).arg(radio.modeName())
               : QStringLiteral("bad argument: %1").arg(line.trimmed()));
    return true;
}

// The radio on its line until "quit" or a signal. `device` empty: a pseudo-terminal of our own.
int serve(QCoreApplication& app, LineRadio& radio, const QString& device, const QString& banner, qint64 dialStep,
          int dialEvery, int baud) {
    auto fail = [](const QString& msg) {
        logLine(QStringLiteral("tolvane-radiosim: ") + msg);
        return 2;
    };

    // Installed before the line is announced: whoever reads the announcement may stop us at once.
    quitOnSignals(app);

    // Open the line: our own pseudo-terminal, or the tty we were given.
    int fd = -1, slave = -1;
    if (!device.isEmpty()) {
        const QByteArray path = QFile::encodeName(device);
        fd = ::open(path.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (fd < 0) return fail(QStringLiteral("can't open %1: %2").arg(device, QString::fromLocal8Bit(std::strerror(errno))));
        if (::isatty(fd)) makeRaw(fd);
        std::printf("DEVICE %s\n", path.constData());
    } else {
        fd = ::posix_openpt(O_RDWR | O_NOCTTY);
        if (fd < 0 || ::grantpt(fd) != 0 || ::unlockpt(fd) != 0)
            return fail(QStringLiteral("can't make a pseudo-terminal: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
        const char* name = ::ptsname(fd);
        if (!name) return fail(QStringLiteral("ptsname failed"));
        const QByteArray slavePath(name);
        // Held open so that reads on the master don't fail with EIO before a client opens the slave;
        // raw, so that the client sees the bytes unchanged even if it doesn't set the line up itself.
        slave = ::open(slavePath.constData(), O_RDWR | O_NOCTTY);
        if (slave < 0 || !makeRaw(slave)) return fail(QStringLiteral("can't set up %1").arg(QString::fromLocal8Bit(slavePath)));
        std::printf("PTY %s\n", slavePath.constData());
    }
    std::fflush(stdout);
    logLine(banner);

    Bus bus(fd, slave, radio, &app);
    bus.setPace(baud);

    // Stdin: one command a line. At end of input (e.g. started with </dev/null) the radio keeps running.
    readStdinLines(app, [&](const QString& line) { return runCommand(line, radio, bus); });

    // Now and then the restless operator changes mode too.
    QTimer dial;
    turnRestlessly(dial, app, dialStep, dialEvery, [&](qint64 delta, int steps) {
        bus.send(radio.turnDial(delta));
        radio.setMeter(radio.meterTop() * kMeterShape[steps % 10] / 10);
        if (steps % 10 == 0) bus.send(radio.setMode(radio.mode() == CivRadio::USB ? CivRadio::CW : CivRadio::USB, {}));
    });

    const int rc = app.exec();
    dial.stop();
    ::close(fd);
    if (slave >= 0) ::close(slave);
    logLine(QStringLiteral("tolvane-radiosim: done"));
    return rc;
}

// The Pegasus's control program on its folder until "quit" or a signal: PEGASUS.IN is looked at ten
// times a second, and the operator's dial and the restless demo dial are told in PEGASUS.OUT.
int servePegasus(QCoreApplication& app, PegasusFolder& pegasus, qint64 dialStep, int dialEvery) {
    quitOnSignals(app);
    if (!pegasus.writeOut()) {
        logLine(QStringLiteral("tolvane-radiosim: can't write PEGASUS.OUT in the folder"));
        return 2;
    }
    std::printf("FOLDER %s\n", QFile::encodeName(pegasus.folder()).constData());
    std::fflush(stdout);
    auto report = [&pegasus](const QString& what) {
        logLine(QStringLiteral("%1: %2 Hz %3").arg(what).arg(pegasus.frequency()).arg(pegasus.mode()));
    };
    report(QStringLiteral("Pegasus"));
    readStdinLines(app, [&](const QString& line) {
        const QStringList w = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (w.isEmpty()) return true;
        const QString cmd = w[0].toLower();
        const QString arg = w.size() > 1 ? w[1] : QString();
        if (cmd == QLatin1String("quit") || cmd == QLatin1String("exit")) return false;
        bool ok = false;
        if (cmd == QLatin1String("dial")) {
            const qint64 d = arg.toLongLong(&ok);
            if (ok) pegasus.turnDial(d);
        } else if (cmd == QLatin1String("freq")) {
            const double khz = arg.toDouble(&ok);
            if (ok) pegasus.setFrequency(qRound64(khz * 1000.0));
        } else if (cmd == QLatin1String("mode")) {
            ok = pegasus.setMode(arg);
        }
        if (ok) report(line.trimmed());
        else logLine(QStringLiteral("bad command: %1 (dial, freq, mode, quit)").arg(line.trimmed()));
        return true;
    });
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &app, [&] {
        if (pegasus.poll()) report(QStringLiteral("PEGASUS.IN"));
    });
    watch.start(100);
    QTimer dial;
    turnRestlessly(dial, app, dialStep, dialEvery, [&](qint64 delta, int) { pegasus.turnDial(delta); });
    const int rc = app.exec();
    logLine(QStringLiteral("tolvane-radiosim: done"));
    return rc;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tolvane-radiosim"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "A simulated CI-V, Kenwood, Yaesu or TenTec radio on a pseudo-terminal. Prints \"PTY <path>\" on stdout, "
        "logs the line on stderr (CI-V and Yaesu in hexadecimal, Kenwood as text), and reads commands on "
        "stdin: dial +100, freq 7010.5, mode CW, silent on|off (hears nothing), mute on|off (obeys, answers "
        "nothing), transceive on|off, reject, garbage 20, "
        "meter 120, slow 4800|off, quit; for Yaesu radios also vfo a|b, split on|off, clar -120|off, filter 2nd|3rd|sub VALUE."));
    parser.addHelpOption();
    const QStringList allModels =
        CivRadio::modelNames() + KenwoodRadio::modelNames() + YaesuRadio::modelNames() + TenTecRadio::modelNames();
    const QCommandLineOption modelOpt(QStringLiteral("model"),
                                      QStringLiteral("Radio model: %1.").arg(allModels.join(QStringLiteral(", "))),
                                      QStringLiteral("NAME"), QStringLiteral("IC-7300"));
    const QCommandLineOption addressOpt(QStringLiteral("address"), QStringLiteral("CI-V address in hex, instead of the model's."),
                                        QStringLiteral("HEX"));
    const QCommandLineOption deviceOpt(QStringLiteral("device"), QStringLiteral("Use this tty instead of making a pseudo-terminal."),
                                       QStringLiteral("PATH"));
    const QCommandLineOption freqOpt(QStringLiteral("freq"), QStringLiteral("Initial frequency in kHz."), QStringLiteral("KHZ"));
    const QCommandLineOption modeOpt(QStringLiteral("mode"), QStringLiteral("Initial mode (LSB, USB, AM, CW, RTTY, FM, WBFM, CW-R, RTTY-R)."),
                                     QStringLiteral("NAME"));
    const QCommandLineOption noTransceiveOpt(QStringLiteral("no-transceive"),
                                             QStringLiteral("Don't report changes made at the radio (Kenwood: not even after AI1)."));
    const QCommandLineOption dialStepOpt(QStringLiteral("dial-step"), QStringLiteral("Turn the dial by itself by this many Hz."),
                                         QStringLiteral("HZ"));
    const QCommandLineOption dialEveryOpt(QStringLiteral("dial-every"), QStringLiteral("... every this many milliseconds."),
                                          QStringLiteral("MS"), QStringLiteral("1000"));
    const QCommandLineOption slowOpt(QStringLiteral("slow"),
                                     QStringLiteral("Answer in pieces at the pace of a serial line of this many baud."),
                                     QStringLiteral("BAUD"));
    const QCommandLineOption consoleOpt(
        QStringLiteral("sdr-console"),
        QStringLiteral("Be an SDR console on the session bus (ham.dde.SDRConsole) instead of a radio on a line; stdin "
                       "then takes dial +100, freq 7010.5, freqb, mode USB, modeb, split on|off, meter 0-100, hang on|off, "
                       "vanish, return, quit."));
    const QCommandLineOption pegasusOpt(
        QStringLiteral("pegasus-folder"),
        QStringLiteral("Be the Pegasus's control program on this folder instead of a radio on a line: follows "
                       "PEGASUS.IN, writes PEGASUS.OUT; stdin then takes dial +100, freq 7010.5, mode USB, quit."),
        QStringLiteral("DIR"));
    parser.addOptions({modelOpt, addressOpt, deviceOpt, freqOpt, modeOpt, noTransceiveOpt, dialStepOpt, dialEveryOpt, slowOpt,
                       consoleOpt, pegasusOpt});
    parser.process(app);

    auto fail = [](const QString& msg) {
        logLine(QStringLiteral("tolvane-radiosim: ") + msg);
        return 2;
    };
    // --dial-step and --dial-every, for every kind of simulated radio: false when either is no number.
    auto dialOptions = [&parser, &dialStepOpt, &dialEveryOpt](qint64* step, int* every) {
        *step = 0;
        *every = 1000;
        if (!parser.isSet(dialStepOpt)) return true;
        bool ok1 = false, ok2 = false;
        *step = parser.value(dialStepOpt).toLongLong(&ok1);
        *every = parser.value(dialEveryOpt).toInt(&ok2);
        return ok1 && ok2 && *every > 0;
    };

    if (parser.isSet(consoleOpt)) {
        SdrConsole console;
        bool ok = true;
        if (parser.isSet(freqOpt)) {
            const double khz = parser.value(freqOpt).toDouble(&ok);
            if (!ok || khz < 0) return fail(QStringLiteral("bad frequency %1").arg(parser.value(freqOpt)));
            console.setFrequency(0, qRound64(khz * 1000.0));
        }
        if (parser.isSet(modeOpt)) {
            const int m = SdrConsole::modeOfName(parser.value(modeOpt));
            if (m < 0) return fail(QStringLiteral("bad mode %1 (LSB, USB, DSB, CWL, CWU, FMN, AM, DIGU, SPEC, DIGL, SAM, DRM)")
                                       .arg(parser.value(modeOpt)));
            console.setMode(0, m);
        }
        qint64 step = 0;
        int every = 1000;
        if (!dialOptions(&step, &every)) return fail(QStringLiteral("bad --dial-step or --dial-every"));
        return serveConsole(app, console, step, every);
    }

    if (parser.isSet(pegasusOpt)) {
        PegasusFolder pegasus(parser.value(pegasusOpt));
        bool ok = true;
        if (parser.isSet(freqOpt)) {
            const double khz = parser.value(freqOpt).toDouble(&ok);
            if (!ok || khz < 0) return fail(QStringLiteral("bad frequency %1").arg(parser.value(freqOpt)));
            pegasus.setFrequency(qRound64(khz * 1000.0));
        }
        if (parser.isSet(modeOpt) && !pegasus.setMode(parser.value(modeOpt)))
            return fail(QStringLiteral("bad mode %1 (LSB, USB, AM, CW, FM)").arg(parser.value(modeOpt)));
        qint64 step = 0;
        int every = 1000;
        if (!dialOptions(&step, &every)) return fail(QStringLiteral("bad --dial-step or --dial-every"));
        return servePegasus(app, pegasus, step, every);
    }

    std::optional<TenTecModelSpec> tenTecModel = TenTecRadio::model(parser.value(modelOpt));
    std::optional<CivModel> model = CivRadio::model(parser.value(modelOpt));
    std::optional<KenwoodModelSpec> kenwoodModel = KenwoodRadio::model(parser.value(modelOpt));
    const YaesuModel* yaesuModel = YaesuRadio::model(parser.value(modelOpt));
    if (!model && !kenwoodModel && !yaesuModel && !tenTecModel)
        return fail(QStringLiteral("unknown model %1; known: %2").arg(parser.value(modelOpt), allModels.join(QStringLiteral(", "))));
    if (parser.isSet(addressOpt)) {
        if (!model) return fail(QStringLiteral("--address is for CI-V radios only"));
        bool ok = false;
        const uint address = parser.value(addressOpt).toUInt(&ok, 16);
        if (!ok || address > 0xFF || address == 0x00 || address == 0xE0)
            return fail(QStringLiteral("bad address %1 (hex 01..FF, not E0)").arg(parser.value(addressOpt)));
        model->address = uint8_t(address);
    }
    qint64 initialHz = -1;
    if (parser.isSet(freqOpt)) {
        bool ok = false;
        const double khz = parser.value(freqOpt).toDouble(&ok);
        if (!ok || khz < 0) return fail(QStringLiteral("bad frequency %1").arg(parser.value(freqOpt)));
        initialHz = qRound64(khz * 1000.0);
    }
    int initialMode = -1;
    if (parser.isSet(modeOpt)) {
        initialMode = yaesuModel ? YaesuRadio::modeIndex(parser.value(modeOpt)) : CivRadio::modeIndex(parser.value(modeOpt));
        if (initialMode < 0) return fail(QStringLiteral("bad mode %1").arg(parser.value(modeOpt)));
    }
    int baud = 0;
    if (parser.isSet(slowOpt)) {
        bool ok = false;
        baud = parser.value(slowOpt).toInt(&ok);
        if (!ok || baud <= 0) return fail(QStringLiteral("bad --slow %1 (baud, e.g. 4800)").arg(parser.value(slowOpt)));
    }
    qint64 dialStep = 0;
    int dialEvery = 1000;
    if (!dialOptions(&dialStep, &dialEvery)) return fail(QStringLiteral("bad --dial-step or --dial-every"));
    const QString device = parser.isSet(deviceOpt) ? parser.value(deviceOpt) : QString();

    if (yaesuModel) {
        YaesuRadio radio(*yaesuModel);
        if (initialHz >= 0) {
            radio.setFrequency(initialHz);
            if (radio.frequency() != initialHz)
                return fail(QStringLiteral("%1 can't tune %2 kHz").arg(radio.name(), parser.value(freqOpt)));
        }
        if (initialMode >= 0) {
            if (!radio.knowsMode(initialMode)) return fail(QStringLiteral("%1 has no mode %2").arg(radio.name(), parser.value(modeOpt)));
            radio.setMode(initialMode);
        }
        YaesuLine line(radio);
        QString banner = QStringLiteral("Yaesu %1, %2 Hz %3").arg(radio.name()).arg(radio.frequency()).arg(line.modeName());
        if (baud > 0) banner += QStringLiteral(", answering at %1 baud").arg(baud);
        return serve(app, line, device, banner, dialStep, dialEvery, baud);
    }

    if (tenTecModel) {
        TenTecRadio radio(*tenTecModel);
        if (initialHz >= 0) radio.setFrequency(initialHz);
        if (initialMode >= 0) radio.setMode(initialMode);
        TenTecLine line(radio);
        QString banner = QStringLiteral("TenTec %1, %2 Hz %3").arg(tenTecModel->name).arg(radio.frequency()).arg(line.modeName());
        return serve(app, line, device, banner, dialStep, dialEvery, baud);
    }

    if (kenwoodModel) {
        KenwoodRadio radio(*kenwoodModel);
        radio.setTransceive(!parser.isSet(noTransceiveOpt));
        if (initialHz >= 0) radio.setFrequency(initialHz);
        if (initialMode >= 0) radio.setMode(initialMode);
        const QString banner = QStringLiteral("%1 (ID %2), %3 Hz %4")
                                   .arg(kenwoodModel->name, QString::fromLatin1(kenwoodModel->id))
                                   .arg(radio.frequency())
                                   .arg(CivRadio::modeName(radio.mode()));
        KenwoodLine line(radio);
        return serve(app, line, device, banner, dialStep, dialEvery, baud);
    }
    CivRadio radio(*model);
    radio.setTransceive(!parser.isSet(noTransceiveOpt));
    if (initialHz >= 0) radio.setFrequency(initialHz);
    if (initialMode >= 0) radio.setMode(initialMode, radio.filter());
    const QString banner = QStringLiteral("%1 at address %2, %3 Hz %4")
                               .arg(model->name)
                               .arg(model->address, 2, 16, QLatin1Char('0'))
                               .arg(radio.frequency())
                               .arg(CivRadio::modeName(radio.mode()));
    CivLine line(radio);
    return serve(app, line, device, banner, dialStep, dialEvery, baud);
}

#include "main.moc"
