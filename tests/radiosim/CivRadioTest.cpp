// The simulated CI-V radio against byte-exact frames, and the program on a real pseudo-terminal (as a
// CI-V radio and as a Yaesu at serial pace).
// A simulator that answers wrongly would make the controller's tests pass against a radio that
// doesn't exist, so the frames here are written out by hand, not built with the simulator's helpers.

#include "tools/radiosim/CivRadio.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace tv::sim {
namespace {

QByteArray hex(const char* h) { return QByteArray::fromHex(h); }

CivRadio radio(const char* name) { return CivRadio(*CivRadio::model(QString::fromLatin1(name))); }

TEST(CivRadio, EchoComesFirstThenTheReply) {
    CivRadio r = radio("ic-7300");  // names are case-insensitive
    r.setFrequency(14'025'500);
    EXPECT_EQ(r.receive(hex("FEFE94E003FD")), hex("FEFE94E003FD" "FEFEE09403" "0055021400" "FD"));
    EXPECT_EQ(r.receive(hex("FEFE94E004FD")), hex("FEFE94E004FD" "FEFEE0940401" "01" "FD"));
}

TEST(CivRadio, FramesAreFoundAcrossAndWithinCalls) {
    CivRadio r = radio("IC-7300");
    r.setFrequency(7'000'000);
    // Split in the middle: the first part is echoed alone, the reply waits for FD.
    EXPECT_EQ(r.receive(hex("FEFE94")), hex("FEFE94"));
    EXPECT_EQ(r.receive(hex("E003FD")), hex("E003FD" "FEFEE09403" "0000000700" "FD"));
    // Two frames in one write: one echo of everything, then both replies in order.
    EXPECT_EQ(r.receive(hex("FEFE94E00F01FD" "FEFE94E003FD")),
              hex("FEFE94E00F01FD" "FEFE94E003FD" "FEFEE094FBFD" "FEFEE09403" "0000000700" "FD"));
    EXPECT_TRUE(r.split());
    // Noise before a frame and an abandoned frame restarted by a new preamble don't hide the real one.
    EXPECT_EQ(r.receive(hex("1234FEFE94E005" "FEFE94E003FD")).mid(13), hex("FEFEE09403" "0000000700" "FD"));
}

TEST(CivRadio, SetFrequencyAndReadBack) {
    CivRadio r = radio("IC-7300");
    EXPECT_EQ(r.receive(hex("FEFE94E0050055021400FD")).mid(11), hex("FEFEE094FBFD"));
    EXPECT_EQ(r.frequency(), 14'025'500);
    EXPECT_EQ(r.receive(hex("FEFE94E003FD")).mid(6), hex("FEFEE09403" "0055021400" "FD"));
    // Four bytes are taken too; a digit that isn't decimal is refused and changes nothing.
    EXPECT_EQ(r.receive(hex("FEFE94E00500100107FD")).mid(10), hex("FEFEE094FBFD"));
    EXPECT_EQ(r.frequency(), 7'011'000);
    EXPECT_EQ(r.receive(hex("FEFE94E005000A021400FD")).mid(11), hex("FEFEE094FAFD"));
    EXPECT_EQ(r.frequency(), 7'011'000);
}

TEST(CivRadio, OldRadioUsesFourByteFrequenciesAndNoFilterByte) {
    CivRadio r = radio("IC-735");
    EXPECT_EQ(r.address(), 0x04);
    r.setFrequency(3'525'000);
    r.setMode(CivRadio::CW, 2);
    EXPECT_EQ(r.receive(hex("FEFE04E003FD")).mid(6), hex("FEFEE00403" "00505203" "FD"));
    EXPECT_EQ(r.receive(hex("FEFE04E004FD")).mid(6), hex("FEFEE00404" "03" "FD"));
    // Its mode command has no filter byte: with one it is refused.
    EXPECT_EQ(r.receive(hex("FEFE04E00600FD")).mid(7), hex("FEFEE004FBFD"));
    EXPECT_EQ(r.mode(), CivRadio::LSB);
    EXPECT_EQ(r.receive(hex("FEFE04E0060102FD")).mid(8), hex("FEFEE004FAFD"));
    // Above what eight digits hold: refused.
    EXPECT_EQ(r.receive(hex("FEFE04E0050000000001FD")).mid(11), hex("FEFEE004FAFD"));
}

TEST(CivRadio, ModeWithFilterByte) {
    CivRadio r = radio("IC-756PRO");
    EXPECT_EQ(r.receive(hex("FEFE5CE0060302FD")).mid(8), hex("FEFEE05CFBFD"));
    EXPECT_EQ(r.mode(), CivRadio::CW);
    EXPECT_EQ(r.filter(), 2);
    EXPECT_EQ(r.receive(hex("FEFE5CE004FD")).mid(6), hex("FEFEE05C04" "0302" "FD"));
    // Unknown mode or filter: NG, state kept.
    EXPECT_EQ(r.receive(hex("FEFE5CE0060902FD")).mid(8), hex("FEFEE05CFAFD"));
    EXPECT_EQ(r.receive(hex("FEFE5CE0060104FD")).mid(8), hex("FEFEE05CFAFD"));
    EXPECT_EQ(r.mode(), CivRadio::CW);
}

TEST(CivRadio, MeterHundredsPlainThenPackedDecimal) {
    CivRadio r = radio("IC-7300");
    for (const auto& [level, digits] : {std::pair{255, "0255"}, {120, "0120"}, {9, "0009"}}) {
        r.setMeter(level);
        EXPECT_EQ(r.receive(hex("FEFE94E01502FD")).mid(7), hex("FEFEE0941502") + hex(digits) + hex("FD"));
    }
    // A radio without a meter refuses the poll.
    CivRadio old = radio("IC-706MKIIG");
    EXPECT_EQ(old.receive(hex("FEFE58E01502FD")).mid(7), hex("FEFEE058FAFD"));
}

TEST(CivRadio, VfoSplitAndPttCommands) {
    CivRadio r = radio("IC-7300");
    r.setFrequency(14'000'000);
    const QByteArray ok = hex("FEFEE094FBFD");
    EXPECT_EQ(r.receive(hex("FEFE94E00701FD")).mid(7), ok);
    EXPECT_EQ(r.currentVfo(), 1);
    r.setFrequency(7'000'000);
    EXPECT_EQ(r.receive(hex("FEFE94E007B0FD")).mid(7), ok);  // exchange
    EXPECT_EQ(r.frequency(), 14'000'000);
    EXPECT_EQ(r.otherFrequency(), 7'000'000);
    EXPECT_EQ(r.receive(hex("FEFE94E007C1FD")).mid(7), ok);
    EXPECT_TRUE(r.dualWatch());
    EXPECT_EQ(r.receive(hex("FEFE94E01C0001FD")).mid(8), ok);
    EXPECT_TRUE(r.ptt());
    EXPECT_EQ(r.receive(hex("FEFE94E01C0000FD")).mid(8), ok);
    EXPECT_FALSE(r.ptt());
    EXPECT_EQ(r.receive(hex("FEFE94E007EEFD")).mid(7), hex("FEFEE094FAFD"));
    EXPECT_EQ(r.receive(hex("FEFE94E00F02FD")).mid(7), hex("FEFEE094FAFD"));
}

TEST(CivRadio, RefusalsAndFramesThatGetOnlyTheEcho) {
    CivRadio r = radio("IC-7300");
    const QByteArray ng = hex("FEFEE094FAFD");
    EXPECT_EQ(r.receive(hex("FEFE94E019FD")).mid(6), ng);  // unknown command
    EXPECT_EQ(r.receive(hex("FEFE94E0FD")).mid(5), ng);    // no command at all
    // "reject" refuses exactly one command, even a good one.
    r.setRejectNext(true);
    EXPECT_EQ(r.receive(hex("FEFE94E003FD")).mid(6), ng);
    EXPECT_FALSE(r.rejectNext());
    EXPECT_EQ(r.receive(hex("FEFE94E003FD")).size(), 6 + 11);
    // Silent: the interface still echoes, the radio says nothing and doesn't obey.
    r.setSilent(true);
    EXPECT_EQ(r.receive(hex("FEFE94E0050000000700FD")), hex("FEFE94E0050000000700FD"));
    EXPECT_NE(r.frequency(), 7'000'000);
    r.setSilent(false);
    // Another radio's frame: echo only. A broadcast is answered.
    EXPECT_EQ(r.receive(hex("FEFE5CE003FD")), hex("FEFE5CE003FD"));
    EXPECT_EQ(r.receive(hex("FEFE00E004FD")).mid(6), hex("FEFEE0940401" "01" "FD"));
}

TEST(CivRadio, KnobsReportOnlyWithTransceive) {
    CivRadio r = radio("IC-7300");
    r.setFrequency(14'025'500);
    EXPECT_EQ(r.turnDial(100), hex("FEFE009400" "0056021400" "FD"));
    EXPECT_EQ(r.setMode(CivRadio::CW, 1), hex("FEFE009401" "0301" "FD"));
    EXPECT_EQ(r.turnDial(-30'000'000), hex("FEFE009400" "0000000000" "FD"));  // stops at zero
    r.setTransceive(false);
    EXPECT_TRUE(r.turnDial(100).isEmpty());
    EXPECT_EQ(r.frequency(), 100);  // the knob still turned
    r.setTransceive(true);
    r.setSilent(true);
    EXPECT_TRUE(r.setMode(CivRadio::USB, 1).isEmpty());
}

TEST(CivRadio, GarbageNeverHoldsAPreambleAndIsRepeatable) {
    const QByteArray g = CivRadio::garbage(2000, 7);
    EXPECT_EQ(g.size(), 2000);
    EXPECT_FALSE(g.contains(char(0xFE)));
    EXPECT_EQ(g, CivRadio::garbage(2000, 7));
    EXPECT_NE(g, CivRadio::garbage(2000, 8));
}

// ---- The program on its own pseudo-terminal ----

class RadiosimProgram : public ::testing::Test {
protected:
    // Starts the simulator with the arguments and opens the pseudo-terminal it names, raw.
    void start(const QStringList& args) {
        const QString exe = QStringLiteral(TOLVANE_BINARY_DIR "/tolvane-radiosim");
        ASSERT_TRUE(QFileInfo(exe).isExecutable())
            << exe.toStdString() << " is not built; build the target tolvane-radiosim first";
        proc.start(exe, args);
        ASSERT_TRUE(proc.waitForStarted(5000));
        QElapsedTimer t;
        t.start();
        while (!proc.canReadLine() && t.elapsed() < 10000) proc.waitForReadyRead(100);
        const QString line = QString::fromLocal8Bit(proc.readLine()).trimmed();
        ASSERT_TRUE(line.startsWith(QLatin1String("PTY /"))) << line.toStdString();
        fd = ::open(QFile::encodeName(line.mid(4)).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        ASSERT_GE(fd, 0) << line.toStdString();
        termios tio{};
        ASSERT_EQ(::tcgetattr(fd, &tio), 0);
        ::cfmakeraw(&tio);
        ASSERT_EQ(::tcsetattr(fd, TCSANOW, &tio), 0);
    }
    void TearDown() override {
        if (fd >= 0) ::close(fd);
        if (proc.state() != QProcess::NotRunning) {
            proc.kill();
            proc.waitForFinished(3000);
        }
    }
    void send(const QByteArray& b) { EXPECT_EQ(::write(fd, b.constData(), size_t(b.size())), b.size()); }
    // Reads until n bytes came or the time is up, counting the pieces they came in.
    QByteArray readBytes(int n, int* pieces = nullptr) {
        QByteArray got;
        QElapsedTimer t;
        t.start();
        char buf[512];
        while (got.size() < n && t.elapsed() < 5000) {
            const ssize_t k = ::read(fd, buf, sizeof buf);
            if (k <= 0) {
                QThread::msleep(2);
                continue;
            }
            got.append(buf, int(k));
            if (pieces) ++*pieces;
        }
        return got;
    }
    void expectCleanExit() {
        ASSERT_TRUE(proc.waitForFinished(5000));
        EXPECT_EQ(proc.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(proc.exitCode(), 0);
    }
    QProcess proc;
    int fd = -1;
};

TEST_F(RadiosimProgram, AnswersOnThePtyFollowsStdinAndEndsCleanlyOnTerminate) {
    start({QStringLiteral("--freq"), QStringLiteral("14025.5")});
    const QByteArray request = hex("FEFE94E003FD");
    send(request);
    EXPECT_EQ(readBytes(17), request + hex("FEFEE09403" "0055021400" "FD"));
    // A command on stdin turns the radio's dial, and the transceive report reaches the line.
    proc.write("freq 7010.5\n");
    ASSERT_TRUE(proc.waitForBytesWritten(5000));
    EXPECT_EQ(readBytes(11), hex("FEFE009400" "0005010700" "FD"));
    proc.terminate();
    expectCleanExit();
}

TEST_F(RadiosimProgram, AsAYaesuAnswersTheLongReadAtSerialPaceAndQuits) {
    start({QStringLiteral("--model"), QStringLiteral("FT-747"), QStringLiteral("--slow"), QStringLiteral("4800")});
    // The first three bytes alone get nothing.
    send(QByteArray(3, '\0'));
    QThread::msleep(100);
    char probe[16];
    EXPECT_LE(::read(fd, probe, sizeof probe), 0);
    QElapsedTimer t;
    t.start();
    int pieces = 0;
    send(hex("0010"));
    const QByteArray status = readBytes(345, &pieces);
    const qint64 took = t.elapsed();
    ASSERT_EQ(status.size(), 345);
    EXPECT_EQ(status.mid(2, 4), hex("14025500"));
    // 345 bytes of ten bits at 4800 baud: 0.72 s.
    EXPECT_GE(took, 600);
    EXPECT_LT(took, 3000);
    EXPECT_GT(pieces, 10);

    proc.write("freq 7010.5\nslow off\nmode AM\n");
    ASSERT_TRUE(proc.waitForBytesWritten(5000));
    QThread::msleep(200);
    t.restart();
    send(hex("0000000010"));
    EXPECT_EQ(readBytes(345).mid(1, 6), hex("0007010500" "80"));
    EXPECT_LT(t.elapsed(), 500);
    proc.write("quit\n");
    expectCleanExit();
    EXPECT_TRUE(QString::fromLocal8Bit(proc.readAllStandardError()).contains(QLatin1String("Yaesu FT-747")));
}

}  // namespace
}  // namespace tv::sim
