#pragma once
// The real program (tolvane --headless beside the benchmark) driving the radio simulator, a simulated
// IC-7300, on a socat pty pair: started once for a benchmark's socket figures.

#include "tests/support/PtyPair.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTcpServer>
#include <QTemporaryDir>

#include <initializer_list>
#include <string>

namespace tv::bench {

struct BenchStation {
    // The radio at kHz and mode; the program with its own arguments besides the settings and data
    // folders. Ready when each of the texts has shown in the program's output.
    bool start(const QString& kHz, const QString& mode, const QStringList& arguments,
               std::initializer_list<const char*> ready) {
        const QString bin = QDir(QCoreApplication::applicationDirPath() + QStringLiteral("/..")).absolutePath();
        if (!tv::test::PtyPair::available() || !pty.start()) return fail("socat is needed");
        sim.setStandardErrorFile(dir.filePath(QStringLiteral("radio.log")));
        sim.start(bin + QStringLiteral("/tolvane-radiosim"),
                  {QStringLiteral("--device"), pty.ends[1], QStringLiteral("--model"), QStringLiteral("IC-7300"),
                   QStringLiteral("--freq"), kHz, QStringLiteral("--mode"), mode});
        if (!sim.waitForStarted(5000)) return fail("tolvane-radiosim did not start");
        QFile ini(dir.filePath(QStringLiteral("Tolvane.ini")));
        if (!ini.open(QIODevice::WriteOnly)) return fail("no settings file");
        ini.write(QStringLiteral("[General]\nRadio=IC-7300\nRadioId=94\nCommPort=1\nCommPortDevice1=%1\n"
                                 "InterrogateInterval=200\nMessageCapture=F\n")
                      .arg(pty.ends[0])
                      .toUtf8());
        ini.close();
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(bin + QStringLiteral("/tolvane"),
                      QStringList{QStringLiteral("--headless"), QStringLiteral("--config-dir"), dir.path(),
                                  QStringLiteral("--app-dir"), QStringLiteral(TOLVANE_SOURCE_DIR "/data")} +
                          arguments);
        QByteArray out;
        const bool up = tv::test::waitFor(
            [&] {
                out += program.readAll();
                for (const char* text : ready)
                    if (!out.contains(text)) return false;
                return true;
            },
            30000);
        return up || fail("the program did not follow the radio");
    }
    ~BenchStation() {
        program.terminate();
        if (!program.waitForFinished(5000)) program.kill();
        sim.write("quit\n");
        if (!sim.waitForFinished(3000)) sim.kill();
    }
    bool fail(const char* why) {
        error = why;
        return false;
    }
    // Messages the radio has heard so far (the simulator logs each with "<- ").
    qsizetype heard() {
        QFile log(dir.filePath(QStringLiteral("radio.log")));
        return log.open(QIODevice::ReadOnly) ? log.readAll().count("\n<- ") : 0;
    }
    // A TCP port of loopback that nobody listens on now.
    static quint16 freePort() {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost, 0);
        return probe.serverPort();
    }
    QTemporaryDir dir;
    tv::test::PtyPair pty;
    QProcess sim, program;
    std::string error;
};

}  // namespace tv::bench
