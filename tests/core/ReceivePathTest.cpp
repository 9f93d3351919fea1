// Bytes from the wire: framing by family, the monitor's images, the overflow of a run without an end
// mark, the reply wait of radios without end marks, the operator's note, and random garbage.

#include "support/TestStation.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");

// Counts the messages the receive path hands to a family's decoder, with their bytes.
class CountingDecoder : public RecordingProtocol {
public:
    explicit CountingDecoder(KavModule*& m) : m_(m) {}
    void Decode() override {
        QByteArray b;
        for (int i = 1; i <= m_->RcvCount; ++i) b.append(char(m_->RcvBuffer[size_t(i)]));
        messages.push_back(b);
    }
    std::vector<QByteArray> messages;

private:
    KavModule*& m_;
};

class ReceivePath : public ::testing::Test {
protected:
    void start(const char* radio, bool capture = true) {
        st.preset(G, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(G, QStringLiteral("Interrogate"), QStringLiteral("F"));
        st.preset(G, QStringLiteral("MessageCapture"), capture ? QStringLiteral("T") : QStringLiteral("F"));
        ASSERT_TRUE(st.start());
        module = &st.m();
        for (QChar s : QStringLiteral("ITKNYF")) st.p().module.setProtocol(s, &decoder);
        st.p().messages.ClearMessageDisplay();
    }
    void wire(const QByteArray& bytes) {
        st.serial()->feed(bytes);
        st.loop.runPosted();
    }
    TestStation st;
    KavModule* module = nullptr;
    CountingDecoder decoder{module};
};

TEST_F(ReceivePath, CivFramesSplitOrSharedDecodeInOrder) {
    start("IC-756PRO");
    wire(QByteArray::fromHex("FEFEE05C0300"));
    EXPECT_TRUE(decoder.messages.empty());
    wire(QByteArray::fromHex("55021400FDFEFEE05CFBFD"));
    ASSERT_EQ(decoder.messages.size(), 2u);
    EXPECT_EQ(decoder.messages[0], QByteArray::fromHex("FEFEE05C030055021400FD"));
    EXPECT_EQ(decoder.messages[1], QByteArray::fromHex("FEFEE05CFBFD"));
    // Each message is one line of the monitor, in all three views.
    const auto& mon = st.p().messages;
    EXPECT_EQ(mon.HexDisplay.count(QStringLiteral("\r\n")), 2);
    EXPECT_TRUE(mon.DecimalDisplay.contains(QStringLiteral(": 254 254 224 092 251 253 \r\n")));
    EXPECT_TRUE(mon.AsciiDisplay.contains(QChar(1)));  // control bytes show as one placeholder
    // Garbage in front stays with the next frame, which then has no preamble in place.
    wire(QByteArray::fromHex("00FEFEE05CFBFD"));
    EXPECT_EQ(decoder.messages.back(), QByteArray::fromHex("00FEFEE05CFBFD"));
}

TEST_F(ReceivePath, ARunWithoutEndMarkReportsOnceAndStartsAfresh) {
    start("TS-2000");
    wire(QByteArray(3000, 'x'));
    EXPECT_EQ(st.log().count(QStringLiteral("Receive buffer overflow")), 1);
    EXPECT_TRUE(decoder.messages.empty());
    EXPECT_LT(st.m().RcvCount, 2048);
    // Reading goes on at the next event; a reply with no ';' waits for its ';'.
    wire("FA00014025500");
    wire(";IF");
    ASSERT_EQ(decoder.messages.size(), 1u);
    EXPECT_TRUE(decoder.messages[0].endsWith("FA00014025500;"));
    EXPECT_TRUE(st.p().comm.rxEventsEnabled());
}

TEST_F(ReceivePath, FixedLengthRepliesNeedAnAnnouncementAndTimeOut) {
    start("FT1000D");
    wire(QByteArray::fromHex("0102030405"));
    EXPECT_TRUE(decoder.messages.empty());
    EXPECT_TRUE(st.p().messages.HexDisplay.isEmpty());  // never shown either
    st.m().Expect(QStringLiteral("YaesuMeter"), 5);
    EXPECT_TRUE(st.p().messages.caption().endsWith(QStringLiteral(" (YaesuMeter expecting 5 bytes)")));
    wire(QByteArray::fromHex("0102"));
    wire(QByteArray::fromHex("030405AA"));
    ASSERT_EQ(decoder.messages.size(), 1u);
    EXPECT_EQ(decoder.messages[0], QByteArray::fromHex("0102030405"));
    EXPECT_FALSE(st.p().messages.ExpectTimer.Enabled());
    // A reply that never completes: after five seconds the radio counts as offline.
    st.m().Expect(QStringLiteral("YaesuStatus"), 16);
    wire(QByteArray::fromHex("0102"));
    st.loop.advance(4999);
    EXPECT_TRUE(st.m().YaesuResponding);
    st.loop.advance(1);
    EXPECT_FALSE(st.m().YaesuResponding);
    EXPECT_EQ(st.m().ExpectedBytes, 0);
    EXPECT_TRUE(st.p().main.caption().contains(QStringLiteral(" - offline] ")));
    EXPECT_EQ(st.p().messages.caption(), st.m().MessagesCaption);
    EXPECT_TRUE(st.p().messages.HexDisplay.contains(QStringLiteral(" 1  2 \r\n")));  // the partial reply
}

TEST_F(ReceivePath, LongRepliesShowInRowsOfFourteen) {
    start("FT1000D");
    st.m().Expect(QStringLiteral("YaesuStatus"), 16);
    wire(QByteArray(16, '\x11'));
    EXPECT_EQ(st.p().messages.HexDisplay.count(QStringLiteral("\r\n")), 2);
    EXPECT_EQ(decoder.messages.size(), 1u);
}

TEST_F(ReceivePath, WithCaptureOffNothingIsShownOrCounted) {
    start("IC-756PRO", false);
    const int counter = st.m().MessageCounter;
    wire(QByteArray::fromHex("FEFEE05CFBFD"));
    EXPECT_EQ(decoder.messages.size(), 1u);
    EXPECT_EQ(st.m().MessageCounter, counter);
    EXPECT_TRUE(st.m().CaptureHexLine.isEmpty());
}

TEST_F(ReceivePath, ANoteLandsBetweenMessagesWhenTheNextOneArrives) {
    start("IC-756PRO");
    Note& note = st.p().messages.note;
    note.NoteText.setText(QStringLiteral("tuned the antenna"));
    note.NoteLabel.setCaption(QString());  // Enter was pressed
    wire(QByteArray::fromHex("FEFEE05C"));
    const QString& dec = st.p().messages.DecimalDisplay;
    EXPECT_TRUE(dec.startsWith(QStringLiteral("    @")));
    EXPECT_TRUE(dec.endsWith(QStringLiteral(": tuned the antenna\r\n")));
    EXPECT_EQ(note.NoteLabel.caption(), note.PermLabel.caption());
    EXPECT_TRUE(note.NoteText.text().isEmpty());
}

TEST_F(ReceivePath, NothingIsReadWithoutARadioOrAnOpenPort) {
    start("IC-756PRO");
    st.p().comm.ClosePort();
    st.m().HandleIncomingChar(QByteArray::fromHex("FEFEE05CFBFD"));
    EXPECT_EQ(st.p().main.caption(), QStringLiteral("Tolvane (could not obtain comm port)"));
    EXPECT_TRUE(decoder.messages.empty());
}

// Random bytes, in random chunks, for every family, through the real decoders: no crash, no
// sanitizer finding, and the buffer count always within its bounds.
TEST(ReceivePathFuzz, RandomBytesForEveryFamily) {
    for (const char* radio : {"IC-756PRO", "IC-735", "OMNI VI", "TS-2000", "FT817", "FT1000D", "ORION", "PEGASUS"}) {
        TestStation st;
        st.preset(G, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(G, QStringLiteral("MessageCapture"), QStringLiteral("T"));
        ASSERT_TRUE(st.start());
        QRandomGenerator rng(20261123);
        for (int round = 0; round < 300; ++round) {
            QByteArray chunk(int(rng.bounded(1, 64)), '\0');
            for (auto& c : chunk) {
                // Frame bytes often, so frames of every length and address turn up.
                const quint32 pick = rng.bounded(10);
                c = char(pick < 2 ? 0xFE : pick < 3 ? 0xFD : pick < 4 ? ';' : pick < 5 ? 13 : rng.bounded(256));
            }
            if (round % 50 == 0 && QByteArray(radio).startsWith("FT")) st.m().Expect(QStringLiteral("YaesuStatus"), 5);
            if (st.serial() && st.serial()->isOpen()) st.serial()->feed(chunk);
            st.m().HandleIncomingChar(chunk);
            st.loop.advance(int(rng.bounded(300)));
            ASSERT_GE(st.m().RcvCount, 0);
            ASSERT_LE(st.m().RcvCount, 2048);
        }
        st.stop();
    }
}

}  // namespace
}  // namespace tv::test
