// The serial link as the operator meets it: opening with the chosen parameters, the reasons a port
// can't be had, PTT by modem lines, a port that vanishes, and what a closed port does with writes.

#include "services/Errors.h"
#include "support/TestStation.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");

// A station with a Kenwood radio on port 1 (/dev/ttyUSB0 unless set otherwise).
void presetKenwoodOnPort1(TestStation& st) {
    st.preset(G, QStringLiteral("Radio"), QStringLiteral("TS-2000"));
    st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
}

TEST(SerialLink, PortBusyAndOtherFailuresSayWhyInCaptionAndBox) {
    // Busy: another program has the device.
    {
        TestStation st;
        presetKenwoodOnPort1(st);
        st.dialogs.onShow = nullptr;
        ASSERT_TRUE(st.start());
        ASSERT_NE(st.serial(), nullptr);
        st.serial()->failOpenWith = 8005;
        st.serial()->failOpenText = QStringLiteral("Device or resource busy");
        st.dialogs.shown.clear();
        st.m().port().SelectCommPort(1);
        EXPECT_FALSE(st.p().comm.PortOpened());
        EXPECT_TRUE(st.p().main.caption().contains(QStringLiteral(" - selected Com port already in use")));
        ASSERT_EQ(st.dialogs.shown.size(), 1u);
        EXPECT_EQ(st.dialogs.shown[0].text, QStringLiteral("Unable to open Com1"));
        EXPECT_EQ(st.dialogs.shown[0].title, QStringLiteral("Already in use"));
    }
    // Anything else: the description reaches the caption and the details the log.
    {
        TestStation st;
        st.preset(G, QStringLiteral("Radio"), QStringLiteral("TS-2000"));
        ASSERT_TRUE(st.start());
        st.m().port().SelectCommPort(3);  // makes the device
        ASSERT_NE(st.serial(), nullptr);
        st.serial()->failOpenWith = 8015;
        st.serial()->failOpenText = QStringLiteral("Permission denied");
        st.dialogs.shown.clear();
        st.m().port().SelectCommPort(3);
        EXPECT_FALSE(st.p().comm.PortOpened());
        EXPECT_TRUE(st.p().main.caption().contains(
            QStringLiteral(" - selected Com port failed to open: Permission denied")));
        ASSERT_EQ(st.dialogs.shown.size(), 1u);
        EXPECT_EQ(st.dialogs.shown[0].text, QStringLiteral("Unable to open Com3"));
        EXPECT_EQ(st.dialogs.shown[0].title, QStringLiteral("Tolvane"));
        EXPECT_TRUE(st.log().contains(QStringLiteral(" (8015), port = 3, settings = 9600,n,8,2")));
        // A closed port swallows writes without a word, and polling goes on harmlessly.
        const auto boxes = st.dialogs.shown.size();
        st.m().link().SendCommand(QByteArray("FA;"));
        st.loop.advance(2000);
        EXPECT_TRUE(st.serial()->written.isEmpty());
        EXPECT_EQ(st.dialogs.shown.size(), boxes);
    }
}

TEST(SerialLink, AtStartUpADeviceThatRefusesTheUserNamesTheGroupAndTheFix) {
    TestStation st;
    presetKenwoodOnPort1(st);
    // Not there, so that the group named is the usual one whatever this computer has.
    st.preset(G, QStringLiteral("CommPortDevice1"), QStringLiteral("/nonexistent/ttyUSB0"));
    st.dialogs.onShow = nullptr;
    st.onDevice = [](FakeSerialDevice& d) {
        d.failOpenWith = kSerialOpenFailed;
        d.failOpenText = QStringLiteral("Permission denied");
        d.failOpenReason = SerialOpenFailure::PermissionDenied;
    };
    ASSERT_TRUE(st.start());
    EXPECT_FALSE(st.p().comm.PortOpened());
    // The box is the usual one; the caption and the log say why and what to do.
    ASSERT_EQ(st.dialogs.shown.size(), 1u);
    EXPECT_EQ(st.dialogs.shown[0].text, QStringLiteral("Unable to open Com1"));
    EXPECT_EQ(st.dialogs.shown[0].title, QStringLiteral("Tolvane"));
    const QString caption = st.p().main.caption();
    EXPECT_TRUE(caption.contains(QStringLiteral(" - selected Com port failed to open: Permission denied; ")))
        << caption.toStdString();
    EXPECT_TRUE(caption.contains(QStringLiteral("group dialout"))) << caption.toStdString();
    EXPECT_TRUE(st.log().contains(QStringLiteral("Com1: Permission denied; "))) << st.log().toStdString();
    EXPECT_TRUE(st.log().contains(QStringLiteral(" (8015), port = 1, settings = ")));
    // Once the operator has fixed it, choosing the port again opens it and the caption forgets the advice.
    st.serial()->failOpenWith = 0;
    st.m().port().SelectCommPort(1);
    EXPECT_TRUE(st.p().comm.PortOpened());
    EXPECT_FALSE(st.p().main.caption().contains(QStringLiteral("dialout")));
}

TEST(SerialLink, ChosenParametersReachTheDeviceWithOneAndAHalfStopBitsAsOne) {
    TestStation st;
    presetKenwoodOnPort1(st);
    st.preset(G, QStringLiteral("CommPortDevice1"), QStringLiteral("/tmp/radio-link"));
    st.preset(G, QStringLiteral("CommSpeed"), QStringLiteral("4800"));
    st.preset(G, QStringLiteral("CommParity"), QStringLiteral("3"));
    st.preset(G, QStringLiteral("CommWordLength"), QStringLiteral("2"));
    st.preset(G, QStringLiteral("CommStopBits"), QStringLiteral("2"));
    ASSERT_TRUE(st.start());
    ASSERT_NE(st.serial(), nullptr);
    ASSERT_TRUE(st.serial()->isOpen());
    EXPECT_EQ(st.serial()->path(), QStringLiteral("/tmp/radio-link"));
    EXPECT_EQ(st.serial()->lastSettings.baud, 4800);
    EXPECT_EQ(st.serial()->lastSettings.parity, 'E');
    EXPECT_EQ(st.serial()->lastSettings.dataBits, 7);
    EXPECT_EQ(st.serial()->lastSettings.stopBits, 1);
    EXPECT_EQ(st.p().comm.settingsText(), QStringLiteral("4800,e,7,1"));
}

TEST(SerialLink, PttByModemLinesKeysAheadOfTheQueue) {
    TestStation st;
    presetKenwoodOnPort1(st);
    st.preset(G, QStringLiteral("DTR"), QStringLiteral("2"));
    st.preset(G, QStringLiteral("RTS"), QStringLiteral("1"));
    ASSERT_TRUE(st.start());
    auto* dev = st.serial();
    ASSERT_TRUE(dev && dev->isOpen());
    EXPECT_FALSE(dev->dtr);  // "on to xmit" stays off while receiving
    EXPECT_TRUE(dev->rts);   // "always on"
    st.p().comm.Transmit();
    EXPECT_TRUE(dev->dtr);
    EXPECT_TRUE(dev->rts);
    st.p().comm.Receive();
    EXPECT_FALSE(dev->dtr);

    // Flow control comes only from a later RTS choice, never from opening.
    st.m().port().RTSControl = 3;
    st.p().comm.ConfigureRTS(3);
    EXPECT_TRUE(dev->rtsCts);
    st.m().port().SelectCommPort(1);
    EXPECT_FALSE(dev->rtsCts);
}

// However the program ends, a radio it keyed is unkeyed first: the line dropped, the receive command
// sent ahead of the queue while the port is still open. A port lost while keyed says it first when back.
TEST(SerialLink, TheRadioIsNeverLeftKeyed) {
    TestStation st;
    st.preset(G, QStringLiteral("Radio"), QStringLiteral("IC-756PRO"));
    st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
    st.preset(G, QStringLiteral("Interrogate"), QStringLiteral("F"));
    st.preset(G, QStringLiteral("DTR"), QStringLiteral("2"));
    ASSERT_TRUE(st.start());
    st.p().config.Interrogation.setChecked(false);
    auto* dev = st.serial();
    st.p().main.PTTonCmd.click();
    st.loop.advance(1000);
    EXPECT_TRUE(dev->dtr);
    EXPECT_TRUE(dev->written.endsWith(QByteArray::fromHex("FEFE5CE01C0001FD")));
    // Keyed again by the keyboard and lost with the port: nothing can be said until it comes back.
    dev->unplug();
    st.loop.runPosted();
    st.p().main.PTTonCmd.click();
    dev->written.clear();
    st.m().port().SelectCommPort(1);
    EXPECT_TRUE(dev->written.startsWith(QByteArray::fromHex("FEFE5CE01C0000FD"))) << dev->written.toHex(' ').toStdString();
    EXPECT_FALSE(st.m().state().transmitting());
    // Keyed at shutdown: the receive command is the last thing on the line, the line is down.
    st.p().main.PTTonCmd.click();
    st.loop.advance(1000);
    dev->written.clear();
    st.p().FormUnload();
    EXPECT_EQ(dev->written, QByteArray::fromHex("FEFE5CE01C0000FD"));
    EXPECT_FALSE(dev->dtr);
    EXPECT_TRUE(st.log().contains(QStringLiteral("the transmitter was keyed at shutdown; unkeyed")));
}

TEST(SerialLink, DeviceWithoutModemLinesIsLoggedOnceAndStillWorks) {
    TestStation st;
    presetKenwoodOnPort1(st);
    st.preset(G, QStringLiteral("DTR"), QStringLiteral("2"));
    ASSERT_TRUE(st.start());
    auto* dev = st.serial();
    ASSERT_NE(dev, nullptr);
    dev->modemLinesSupported = false;  // as a pseudo-terminal
    st.m().port().SelectCommPort(1);
    for (int i = 0; i < 3; ++i) {
        st.p().comm.Transmit();
        st.p().comm.Receive();
    }
    EXPECT_TRUE(st.p().comm.PortOpened());
    EXPECT_EQ(st.log().count(QStringLiteral("has no modem lines")), 1);
    st.m().link().SendCommand(QByteArray("IF;"));
    EXPECT_TRUE(dev->written.endsWith("IF;"));
}

TEST(SerialLink, UnpluggedAdapterIsReportedAndLaterWritesVanish) {
    TestStation st;
    presetKenwoodOnPort1(st);
    ASSERT_TRUE(st.start());
    auto* dev = st.serial();
    ASSERT_TRUE(dev && dev->isOpen());
    dev->unplug();
    st.loop.runPosted();
    EXPECT_FALSE(st.p().comm.PortOpened());
    EXPECT_TRUE(st.p().main.caption().contains(QStringLiteral("Com port was lost")));
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavComm.CommError: ")));
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavComm: Com1 is gone; it is opened again when it comes back")));
    // While it stays away, writes vanish and it is looked for again and again.
    dev->failOpenWith = kSerialPortNotFound;
    const auto before = dev->written.size();
    st.loop.advance(5000);
    st.m().link().SendCommand(QByteArray("FA;"));
    EXPECT_EQ(dev->written.size(), before);
    EXPECT_FALSE(st.p().comm.PortOpened());
    EXPECT_TRUE(st.p().comm.waitingForDevice());
    // Back: opened on its own within the interval, said in the log and gone from the caption.
    dev->failOpenWith = 0;
    st.loop.advance(KavComm::kReopenEveryMs);
    EXPECT_TRUE(st.p().comm.PortOpened());
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavComm: Com1 is back (")));
    EXPECT_FALSE(st.p().main.caption().contains(QStringLiteral("was lost")));
    EXPECT_FALSE(st.p().comm.waitingForDevice());
    // Choosing the port again works as ever.
    st.m().port().SelectCommPort(1);
    EXPECT_TRUE(st.p().comm.PortOpened());
}

TEST(SerialLink, FlushOnAClosedPortIsAnErrorForTheCaller) {
    TestStation st;
    ASSERT_TRUE(st.start());
    EXPECT_THROW(st.p().comm.FlushPort(), TvError);
}

TEST(SerialLink, SentFramesAreCapturedForTextRadiosButNotForTheEchoingBus) {
    TestStation st;
    presetKenwoodOnPort1(st);
    st.preset(G, QStringLiteral("MessageCapture"), QStringLiteral("T"));
    st.preset(G, QStringLiteral("Debug"), QStringLiteral("1"));
    ASSERT_TRUE(st.start());
    auto& mon = st.p().messages;
    mon.ClearMessageDisplay();
    const int counter = st.m().link().MessageCounter;
    st.m().link().SendCommand(QByteArray("FA;"));
    EXPECT_EQ(st.m().link().MessageCounter, counter + 1);
    EXPECT_TRUE(mon.DecimalDisplay.endsWith(QStringLiteral(": 070 065 059 \r\n")));
    EXPECT_TRUE(mon.HexDisplay.endsWith(QStringLiteral(": 46 41 3B \r\n")));
    EXPECT_TRUE(mon.AsciiDisplay.endsWith(QStringLiteral(": FA;\r\n")));
    EXPECT_TRUE(mon.DecimalDisplay.startsWith(QStringLiteral("%1@").arg(counter + 1, 4, 10, QLatin1Char('0'))));

    // A CI-V radio's bus echoes the frame, so sending shows nothing; the debug log has both images.
    st.selectRadio(QStringLiteral("IC-756PRO"));
    mon.ClearMessageDisplay();
    st.m().link().SendCommand(QByteArray("\xFE\xFE\x5C\xE0\x03\xFD", 6));
    EXPECT_TRUE(mon.DecimalDisplay.isEmpty());
    // Hexadecimal digits are right-aligned in two places: 3 is " 3".
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavModule.SendCommand: Hex = FE FE 5C E0  3 FD ")));
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavModule.SendCommand: Dec = 254 254 092 224 003 253 ")));
}

TEST(SerialLink, FullMonitorStopsCaptureAndDropsTheLine) {
    TestStation st;
    presetKenwoodOnPort1(st);
    st.preset(G, QStringLiteral("MessageCapture"), QStringLiteral("T"));
    ASSERT_TRUE(st.start());
    auto& mon = st.p().messages;
    mon.ClearMessageDisplay();
    mon.AppendToMessageDisplay(QString(32001, QLatin1Char('x')), 0);
    st.m().link().SendCommand(QByteArray("FA;"));
    EXPECT_FALSE(mon.CaptureEnabled.checked());
    EXPECT_TRUE(mon.overflow.visible());
    EXPECT_EQ(mon.DecimalDisplay.size(), 32001);
    EXPECT_TRUE(mon.HexDisplay.isEmpty());
}

}  // namespace
}  // namespace tv::test
