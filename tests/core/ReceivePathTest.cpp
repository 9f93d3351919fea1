// Bytes from the wire, on the core alone: framing by family, the monitor's images, the overflow of a
// run without an end mark, the reply wait of radios without end marks, the operator's note, and random
// garbage through the real decoders.

#include "coresupport/CoreRig.h"


#include <gtest/gtest.h>

namespace tv::test {
namespace {

class ReceivePath : public ::testing::Test {
protected:
    // The radio's family records the messages it is handed instead of decoding them.
    void start(const char* radio, bool capture = true) {
        for (QChar s : QStringLiteral("ITKNYF")) recordings.push_back(&rig.record(s));
        rig.view.capture = capture;
        rig.view.interrogation = false;
        rig.withRadio(QString::fromLatin1(radio));
    }
    std::vector<QByteArray> decoded() const {
        std::vector<QByteArray> all;
        for (const Recording* r : recordings) all.insert(all.end(), r->decoded.begin(), r->decoded.end());
        return all;
    }
    QStringList hexLines() const {
        QStringList out;
        for (const auto& l : rig.view.lines) out << l.hex;
        return out;
    }
    CoreRig rig;
    std::vector<Recording*> recordings;
};

TEST_F(ReceivePath, CivFramesSplitOrSharedDecodeInOrder) {
    start("IC-756PRO");
    rig.wire(QByteArray::fromHex("FEFEE05C0300"));
    EXPECT_TRUE(decoded().empty());
    rig.wire(QByteArray::fromHex("55021400FDFEFEE05CFBFD"));
    ASSERT_EQ(decoded().size(), 2u);
    EXPECT_EQ(decoded()[0], QByteArray::fromHex("FEFEE05C030055021400FD"));
    EXPECT_EQ(decoded()[1], QByteArray::fromHex("FEFEE05CFBFD"));
    // Each message is one line of the monitor, in all three views.
    ASSERT_EQ(rig.view.lines.size(), 2u);
    EXPECT_EQ(rig.view.lines[1].decimal, QStringLiteral("254 254 224 092 251 253 "));
    EXPECT_EQ(rig.view.lines[1].hex, QStringLiteral("FE FE E0 5C FB FD "));
    EXPECT_EQ(rig.view.lines[0].ascii.count(QChar(1)), 5);  // control bytes show as one placeholder
    EXPECT_TRUE(rig.view.lines[1].prefix.startsWith(QStringLiteral("0002@")));
    // Garbage in front stays with the next frame, which then has no preamble in place.
    rig.wire(QByteArray::fromHex("00FEFEE05CFBFD"));
    EXPECT_EQ(decoded().back(), QByteArray::fromHex("00FEFEE05CFBFD"));
}

TEST_F(ReceivePath, ARunWithoutEndMarkReportsOnceAndStartsAfresh) {
    start("TS-2000");
    rig.wire(QByteArray(3000, 'x'));
    EXPECT_EQ(rig.log().count(QStringLiteral("Receive buffer overflow")), 1);
    EXPECT_TRUE(decoded().empty());
    EXPECT_LT(rig.link.RcvCount, 2048);
    // Reading goes on at the next event; a reply with no ';' waits for its ';'.
    rig.wire("FA00014025500");
    rig.wire(";IF");
    ASSERT_EQ(decoded().size(), 1u);
    EXPECT_TRUE(decoded()[0].endsWith("FA00014025500;"));
    EXPECT_TRUE(rig.comm.rxEventsEnabled());
}

TEST_F(ReceivePath, FixedLengthRepliesNeedAnAnnouncementAndTimeOut) {
    start("FT1000D");
    rig.wire(QByteArray::fromHex("0102030405"));
    EXPECT_TRUE(decoded().empty());
    EXPECT_TRUE(rig.view.lines.empty());  // never shown either
    rig.link.Expect(QStringLiteral("YaesuMeter"), 5);
    EXPECT_EQ(rig.view.awaited, QStringLiteral("YaesuMeter expecting 5 bytes"));
    rig.wire(QByteArray::fromHex("0102"));
    rig.wire(QByteArray::fromHex("030405AA"));
    ASSERT_EQ(decoded().size(), 1u);
    EXPECT_EQ(decoded()[0], QByteArray::fromHex("0102030405"));
    EXPECT_FALSE(rig.link.ExpectTimer.Enabled());
    // A reply that never completes: after five seconds the radio counts as offline.
    rig.view.lines.clear();
    rig.link.Expect(QStringLiteral("YaesuStatus"), 16);
    rig.wire(QByteArray::fromHex("0102"));
    rig.loop.advance(4999);
    EXPECT_TRUE(rig.state.Responding);
    rig.loop.advance(1);
    EXPECT_FALSE(rig.state.Responding);
    EXPECT_EQ(rig.link.ExpectedBytes, 0);
    EXPECT_EQ(rig.radio.protocol()->OfflineCaption(rig.state.Responding), QStringLiteral(" - offline"));
    EXPECT_TRUE(rig.view.awaited.isEmpty());
    // The partial reply, behind what followed the last complete one in its chunk.
    EXPECT_EQ(hexLines(), QStringList{QStringLiteral("AA  1  2 ")});
    // A radio already silent keeps its wait: queued records stay behind it until a reply comes.
    rig.link.Expect(QStringLiteral("YaesuStatus"), 16);
    rig.loop.advance(5000);
    EXPECT_EQ(rig.link.ExpectedBytes, 16);
}

TEST_F(ReceivePath, LongRepliesShowInRowsOfFourteen) {
    start("FT1000D");
    rig.link.Expect(QStringLiteral("YaesuStatus"), 16);
    rig.wire(QByteArray(16, '\x11'));
    EXPECT_EQ(rig.view.lines.size(), 2u);
    EXPECT_EQ(decoded().size(), 1u);
}

TEST_F(ReceivePath, WithCaptureOffNothingIsShownOrCounted) {
    start("IC-756PRO", false);
    const int counter = rig.link.MessageCounter;
    rig.wire(QByteArray::fromHex("FEFEE05CFBFD"));
    EXPECT_EQ(decoded().size(), 1u);
    EXPECT_EQ(rig.link.MessageCounter, counter);
    EXPECT_TRUE(rig.view.lines.empty());
}

TEST_F(ReceivePath, ANoteLandsBetweenMessagesWhenTheNextOneArrives) {
    start("IC-756PRO");
    rig.view.note = QStringLiteral("tuned the antenna");
    rig.wire(QByteArray::fromHex("FEFEE05C"));
    ASSERT_EQ(rig.view.lines.size(), 1u);
    EXPECT_EQ(rig.view.lines[0].prefix.left(5), QStringLiteral("    @"));
    EXPECT_EQ(rig.view.lines[0].decimal, QStringLiteral("tuned the antenna"));
    EXPECT_TRUE(rig.view.note.isEmpty());
}

TEST_F(ReceivePath, NothingIsReadWithoutARadioOrAnOpenPort) {
    start("IC-756PRO");
    rig.comm.ClosePort();
    rig.link.HandleIncomingChar(QByteArray::fromHex("FEFEE05CFBFD"));
    EXPECT_EQ(rig.view.portUnavailable, 1);
    EXPECT_TRUE(decoded().empty());
}

}  // namespace
}  // namespace tv::test
