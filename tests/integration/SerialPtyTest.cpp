// The real serial device on a pseudo-terminal pair made by socat, on Qt's own loop: the settings reach
// the device, bytes cross through the arrival callback, a pty's missing modem lines are an answer and
// not a fault, a held port is told as busy, and the far side vanishing is a removed device.

#include "platform/QtSerialDevice.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include "support/PtyPair.h"
#include "support/QtPrinters.h"
#include "support/RequiredTool.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace tv {
namespace {

using test::waitFor;
using test::PtyPair;

struct Faults {
    std::vector<SerialFault> kinds;
    QStringList texts;
    void attach(SerialDevice& d) {
        d.onFault = [this](SerialFault f, const QString& t) {
            kinds.push_back(f);
            texts << t;
        };
    }
};

class SerialPty : public ::testing::Test {
protected:
    void SetUp() override {
        TV_REQUIRE_TOOL("socat");
        ASSERT_TRUE(pty.start());
    }
    bool openEnd(QtSerialDevice& d, int end, SerialSettings s = {}) {
        int number = 0;
        QString text;
        const bool ok = d.open(pty.ends[end], s, &number, &text);
        EXPECT_TRUE(ok) << number << " " << text.toStdString();
        return ok;
    }
    PtyPair pty;
};

TEST_F(SerialPty, SettingsReachTheDeviceAndBytesCrossBothWays) {
    QtSerialDevice program, radio;
    Faults faults;
    faults.attach(program);
    SerialSettings s;  // 9600 8N2
    ASSERT_TRUE(openEnd(program, 0, s));
    ASSERT_TRUE(openEnd(radio, 1, s));
    EXPECT_EQ(program.path(), pty.ends[0]);
    QCoreApplication::processEvents();
    EXPECT_TRUE(faults.kinds.empty());  // what a pty can't do while being set up is no fault of the link

    // The line settings are the device's, not only the object's. (A second descriptor is refused to
    // anyone but root while the port is held exclusively; then this part can't be seen from here.)
    const int fd = ::open(QFile::encodeName(pty.ends[0]).constData(), O_RDONLY | O_NOCTTY | O_NONBLOCK);
    if (fd >= 0) {
        termios t{};
        ASSERT_EQ(::tcgetattr(fd, &t), 0);
        ::close(fd);
        EXPECT_EQ(cfgetospeed(&t), speed_t(B9600));
        EXPECT_EQ(t.c_cflag & CSIZE, tcflag_t(CS8));
        EXPECT_NE(t.c_cflag & CSTOPB, 0u);
        EXPECT_EQ(t.c_cflag & PARENB, 0u);
        EXPECT_EQ(t.c_cflag & CRTSCTS, 0u);
    }

    QByteArray atRadio, atProgram;
    radio.onBytesArrived = [&] { atRadio += radio.readAll(); };
    program.onBytesArrived = [&] { atProgram += program.readAll(); };
    // Every byte value arrives unchanged: a raw line, no translation of CR, NL, XON or XOFF.
    QByteArray all("\xFE\xFE\x5C\xE0\x03\xFD", 6);
    for (int i = 0; i < 256; ++i) all += char(i);
    program.write(all);
    ASSERT_TRUE(waitFor([&] { return atRadio.size() >= all.size(); }));
    EXPECT_EQ(atRadio, all);
    radio.write("FA00014025500;");
    ASSERT_TRUE(waitFor([&] { return atProgram == "FA00014025500;"; })) << atProgram.toStdString();

    // A pseudo-terminal has no modem lines: the answer is "no", the link goes on.
    EXPECT_FALSE(program.setDtr(true));
    EXPECT_FALSE(program.setRts(true));
    EXPECT_TRUE(program.setRtsCtsFlowControl(false));
    QCoreApplication::processEvents();
    EXPECT_TRUE(faults.kinds.empty());
    EXPECT_TRUE(program.isOpen());
    program.write("IF;");
    EXPECT_TRUE(waitFor([&] { return atRadio.endsWith("IF;"); }));
}

TEST_F(SerialPty, AHeldPortIsBusyAndAMissingOneNotFound) {
    QtSerialDevice first, second;
    ASSERT_TRUE(openEnd(first, 0));
    int number = 0;
    QString text;
    EXPECT_FALSE(second.open(pty.ends[0], SerialSettings{}, &number, &text));
    EXPECT_EQ(number, kSerialPortAlreadyOpen) << text.toStdString();
    EXPECT_FALSE(text.isEmpty());
    EXPECT_TRUE(first.isOpen());
    // Once let go, the port is free again.
    first.close();
    EXPECT_TRUE(openEnd(second, 0));

    QtSerialDevice none;
    Faults faults;
    faults.attach(none);
    number = 0;
    EXPECT_FALSE(none.open(QStringLiteral("/dev/ttyUSB-not-there"), SerialSettings{}, &number, &text));
    EXPECT_EQ(number, kSerialPortNotFound);
    // A file that is no terminal fails otherwise, and no fault is raised by a failed open.
    number = 0;
    EXPECT_FALSE(none.open(QStringLiteral(TOLVANE_SOURCE_DIR "/CMakeLists.txt"), SerialSettings{}, &number, &text));
    EXPECT_EQ(number, kSerialOpenFailed) << text.toStdString();
    EXPECT_FALSE(none.isOpen());
    EXPECT_TRUE(faults.kinds.empty());
    none.write("into nothing");  // a closed device swallows writes
    EXPECT_TRUE(none.readAll().isEmpty());
}

TEST_F(SerialPty, TheFarSideVanishingIsARemovedDevice) {
    QtSerialDevice program;
    Faults faults;
    faults.attach(program);
    ASSERT_TRUE(openEnd(program, 0));
    program.onBytesArrived = [&] { program.readAll(); };
    pty.stop();
    // Found without a write: the loop alone sees the hang-up.
    EXPECT_TRUE(waitFor([&] { return !faults.kinds.empty(); }, 2000));
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < 20; ++i) {
        program.write("FA;");
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    EXPECT_TRUE(waitFor([&] { return !faults.kinds.empty(); }, 2000));
    EXPECT_LT(t.elapsed(), 4000);  // no write blocks on a dead line
    ASSERT_EQ(faults.kinds.size(), 1u);  // told once, and the port is shut so it can't repeat
    EXPECT_EQ(faults.kinds[0], SerialFault::DeviceRemoved);
    // Said in words, not in whatever error number the library last saw.
    EXPECT_EQ(faults.texts[0], pty.ends[0] + QStringLiteral(" was unplugged or hung up"));
    EXPECT_FALSE(program.isOpen());
    program.write("FA;");
    QCoreApplication::processEvents();
    EXPECT_EQ(faults.kinds.size(), 1u);
    // The pty is gone with socat: opening it again is "not found", as an unplugged adapter's would be.
    int number = 0;
    QString text;
    EXPECT_FALSE(program.open(pty.ends[0], SerialSettings{}, &number, &text));
    EXPECT_EQ(number, kSerialPortNotFound) << text.toStdString();
}

}  // namespace
}  // namespace tv
