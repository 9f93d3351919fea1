// The real serial layer on a real pseudo-terminal pair made by socat: bytes cross byte-exact in both
// directions through the arrival callback, a pty's missing modem lines are an answer and not a fault,
// and the far end vanishing neither crashes nor hangs the program.

#include "platform/QtSerialDevice.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <gtest/gtest.h>

namespace tv {
namespace {

// Spins the Qt loop until the condition holds or the time is up.
template <class F>
bool waitFor(F cond, int ms = 5000) {
    QElapsedTimer t;
    t.start();
    while (!cond()) {
        if (t.elapsed() > ms) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

class PtyPair : public ::testing::Test {
protected:
    void SetUp() override {
        if (QStandardPaths::findExecutable(QStringLiteral("socat")).isEmpty()) GTEST_SKIP() << "socat not installed";
        socat.setProgram(QStringLiteral("socat"));
        socat.setArguments({QStringLiteral("-d"), QStringLiteral("-d"), QStringLiteral("pty,raw,echo=0"),
                            QStringLiteral("pty,raw,echo=0")});
        socat.start();
        ASSERT_TRUE(socat.waitForStarted(5000));
        QString err;
        const QRegularExpression re(QStringLiteral("PTY is (\\S+)"));
        ASSERT_TRUE(waitFor([&] {
            err += QString::fromLocal8Bit(socat.readAllStandardError());
            ends.clear();
            for (auto it = re.globalMatch(err); it.hasNext();) ends << it.next().captured(1);
            return ends.size() >= 2;
        })) << err.toStdString();
    }
    void TearDown() override {
        if (socat.state() != QProcess::NotRunning) {
            socat.kill();
            socat.waitForFinished(3000);
        }
    }
    QProcess socat;
    QStringList ends;
};

TEST_F(PtyPair, FramesCrossByteExactBothWaysAt9600With2StopBits) {
    QtSerialDevice radio, program;
    SerialSettings s;  // 9600 8N2
    int number = 0;
    QString text;
    ASSERT_TRUE(program.open(ends[0], s, &number, &text)) << text.toStdString();
    ASSERT_TRUE(radio.open(ends[1], s, &number, &text)) << text.toStdString();
    QByteArray atRadio, atProgram;
    radio.onBytesArrived = [&] { atRadio += radio.readAll(); };
    program.onBytesArrived = [&] { atProgram += program.readAll(); };
    int faults = 0;
    program.onFault = [&](SerialFault, const QString&) { ++faults; };

    // Every byte value, the frame bytes among them, arrives unchanged.
    QByteArray all;
    for (int i = 0; i < 256; ++i) all += char(i);
    const QByteArray frame("\xFE\xFE\x5C\xE0\x05\x00\x55\x02\x14\x00\xFD", 11);
    program.write(frame + all);
    ASSERT_TRUE(waitFor([&] { return atRadio.size() >= frame.size() + all.size(); }));
    EXPECT_EQ(atRadio, frame + all);

    radio.write("FA00014025500;");
    ASSERT_TRUE(waitFor([&] { return atProgram.size() >= 14; }));
    EXPECT_EQ(atProgram, QByteArray("FA00014025500;"));

    // A pseudo-terminal has no modem lines: that is an answer, not a fault of the link.
    program.setDtr(true);
    program.setRts(false);
    QCoreApplication::processEvents();
    EXPECT_EQ(faults, 0);
    EXPECT_TRUE(program.isOpen());
    program.write("IF;");
    ASSERT_TRUE(waitFor([&] { return atRadio.endsWith("IF;"); }));
}

TEST_F(PtyPair, FarEndVanishingNeitherCrashesNorHangs) {
    QtSerialDevice program;
    int number = 0;
    QString text;
    ASSERT_TRUE(program.open(ends[0], SerialSettings{}, &number, &text)) << text.toStdString();
    bool removed = false;
    program.onFault = [&](SerialFault f, const QString&) { removed = removed || f == SerialFault::DeviceRemoved; };
    program.onBytesArrived = [&] { program.readAll(); };
    socat.kill();
    socat.waitForFinished(3000);
    // Writing into a pty whose other side is gone must come back at once, whatever it reports.
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < 50; ++i) {
        program.write("FA;");
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    waitFor([&] { return removed || !program.isOpen(); }, 1000);
    EXPECT_LT(t.elapsed(), 5000);
    // Linux reports the hang-up of the far side as a vanished device, like an unplugged adapter.
    EXPECT_TRUE(removed);
    program.close();
    EXPECT_FALSE(program.isOpen());
}

TEST(SerialOpen, MissingDeviceIsNotFoundAndAPlainFileIsNoPort) {
    QtSerialDevice dev;
    int number = 0;
    QString text;
    EXPECT_FALSE(dev.open(QStringLiteral("/dev/ttyUSB-not-there"), SerialSettings{}, &number, &text));
    EXPECT_EQ(number, kSerialPortNotFound);
    EXPECT_FALSE(text.isEmpty());
    number = 0;
    EXPECT_FALSE(dev.open(QStringLiteral(TOLVANE_SOURCE_DIR "/README.md"), SerialSettings{}, &number, &text));
    EXPECT_NE(number, 0);
    EXPECT_FALSE(dev.isOpen());
    dev.write("ignored");  // a closed device swallows writes
    EXPECT_TRUE(dev.readAll().isEmpty());
}

}  // namespace
}  // namespace tv
