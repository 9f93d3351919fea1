#pragma once
// For tests on the real Qt loop: waiting for a condition while the loop runs, and a pair of connected
// pseudo-terminals made by socat (a radio on one end, the program on the other).

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QStringList>

namespace tv::test {

// Runs the loop until the condition holds (true) or the time is up (false).
template <class F>
bool waitFor(F cond, int ms = 5000) {
    QElapsedTimer t;
    t.start();
    while (!cond()) {
        if (t.elapsed() > ms) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

// Asks a program of the test to end, and ends it when it won't.
inline void stopProcess(QProcess& p) {
    if (p.state() == QProcess::NotRunning) return;
    p.terminate();
    if (!p.waitForFinished(5000)) {
        p.kill();
        p.waitForFinished(3000);
    }
}

class PtyPair {
public:
    static bool available() { return !QStandardPaths::findExecutable(QStringLiteral("socat")).isEmpty(); }
    ~PtyPair() { stop(); }
    // Starts socat and learns the two device paths; false when that fails.
    bool start() {
        socat.start(QStringLiteral("socat"), {QStringLiteral("-d"), QStringLiteral("-d"),
                                              QStringLiteral("pty,raw,echo=0"), QStringLiteral("pty,raw,echo=0")});
        if (!socat.waitForStarted(5000)) return false;
        QString err;
        const QRegularExpression re(QStringLiteral("PTY is (\\S+)"));
        return waitFor([&] {
            err += QString::fromLocal8Bit(socat.readAllStandardError());
            ends.clear();
            for (auto it = re.globalMatch(err); it.hasNext();) ends << it.next().captured(1);
            return ends.size() >= 2;
        });
    }
    // Both ends vanish, as when an adapter is pulled out.
    void stop() {
        if (socat.state() == QProcess::NotRunning) return;
        socat.kill();
        socat.waitForFinished(3000);
    }
    QProcess socat;
    QStringList ends;
};

}  // namespace tv::test
