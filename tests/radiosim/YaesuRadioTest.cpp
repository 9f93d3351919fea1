// The simulated Yaesu radios against replies written out by hand from the radios' published layouts
// (the program answering at serial pace is in CivRadioTest). A controller tested against a
// simulator that lays a reply out wrongly would pass against a radio that doesn't exist.

#include "tools/radiosim/YaesuRadio.h"

#include <gtest/gtest.h>

namespace tv::sim {
namespace {

QByteArray hex(const char* h) { return QByteArray::fromHex(h); }
uint8_t at1(const QByteArray& b, int position) { return uint8_t(b.at(position - 1)); }  // from 1, as the manuals count

YaesuRadio radio(const char* name) {
    const YaesuModel* m = YaesuRadio::model(QString::fromLatin1(name));
    EXPECT_TRUE(m) << name;
    return YaesuRadio(*m);
}

TEST(YaesuRadio, KnowsTheSixteenModelsByEitherSpelling) {
    EXPECT_EQ(YaesuRadio::modelNames().size(), 16);
    EXPECT_EQ(radio("ft817").name(), QStringLiteral("FT-817"));
    EXPECT_EQ(radio("MP1000MKV").name(), QStringLiteral("FT-1000MP-MKV"));
    EXPECT_EQ(radio("ft-1000mp mkv").name(), QStringLiteral("FT-1000MP-MKV"));
    EXPECT_FALSE(YaesuRadio::model(QStringLiteral("FT-991")));
    EXPECT_FALSE(YaesuRadio::model(QStringLiteral("IC-7300")));
}

TEST(YaesuRadio, Ft817GroupReadsBcdMostSignificantFirstAndAnswersStateChanges) {
    for (const char* name : {"FT-817", "FT-857", "FT-897"}) {
        YaesuRadio r = radio(name);
        EXPECT_TRUE(r.receive(hex("0142500001")).isEmpty()) << name;
        EXPECT_TRUE(r.receive(hex("0200000007")).isEmpty());
        EXPECT_EQ(r.receive(hex("0000000003")), hex("01425000" "02")) << name;
    }
    YaesuRadio r = radio("FT-817");
    r.receive(hex("8800000007"));  // FM narrow: the high bit is the width
    EXPECT_EQ(r.receive(hex("0000000003")), hex("01402550" "88"));
    EXPECT_EQ(r.mode(), YaesuRadio::FM);
    // Split, PTT and lock say 00 when they change something and F0 when it already was so.
    EXPECT_EQ(r.receive(hex("0000000002" "0000000002" "0000000082")), hex("00F000"));
    EXPECT_EQ(r.receive(hex("0000000008")), hex("00"));
    EXPECT_TRUE(r.ptt());
    EXPECT_EQ(r.receive(hex("00000000F7")), hex("20"));  // transmitting, split off
    EXPECT_EQ(r.receive(hex("0000000088" "0000000000" "0000000000")), hex("0000F0"));
    EXPECT_TRUE(r.locked());
    // VFO toggle, seen in the memory byte at 0055, bit 0.
    EXPECT_EQ(r.receive(hex("00550000BB")), hex("0000"));
    EXPECT_TRUE(r.receive(hex("0000000081")).isEmpty());
    EXPECT_EQ(r.receive(hex("00550000BB")), hex("0100"));
    EXPECT_EQ(r.frequency(), 14'025'500);  // VFO B's own
    r.setMeter(40);  // the meter has sixteen steps
    EXPECT_EQ(r.receive(hex("00000000E7")), hex("0F"));
    // Clarifier offset -12.34 kHz is clamped to what the radio holds; on and off.
    r.receive(hex("01001234F5" "0000000005"));
    EXPECT_TRUE(r.clarifierOn());
    EXPECT_EQ(r.clarifierHz(), -9'999);
    // Off, it hears only power on.
    r.receive(hex("000000008F" "0000000003"));
    EXPECT_FALSE(r.powered());
    EXPECT_EQ(r.receive(hex("0000000003" "000000000F" "0000000003")), hex("01402550" "01"));
}

TEST(YaesuRadio, Ft847IsDeafUntilCatOnAndReportsNarrowInTheHighBit) {
    YaesuRadio r = radio("FT-847");
    EXPECT_TRUE(r.receive(hex("0000000003" "0142500001")).isEmpty());
    EXPECT_EQ(r.frequency(), 14'025'500);
    EXPECT_TRUE(r.receive(hex("0000000000")).isEmpty());
    r.receive(hex("0142500001" "8400000007"));
    EXPECT_EQ(r.receive(hex("0000000003")), hex("01425000" "84"));
    EXPECT_TRUE(r.receive(hex("0000000008")).isEmpty());  // PTT without an answer
    EXPECT_TRUE(r.ptt());
    EXPECT_FALSE(r.selectVfo(1));
    r.receive(hex("0000000080"));
    EXPECT_TRUE(r.receive(hex("0000000003")).isEmpty());
}

TEST(YaesuRadio, Ft1000MpReadsBothVfosInSixteenthsOfTenHertz) {
    for (const char* name : {"FT-1000MP", "FT-1000MP-MKV"}) {
        YaesuRadio r = radio(name);
        EXPECT_TRUE(r.receive(hex("005042010A" "000000030C")).isEmpty());
        r.setClarifier(true, -100);
        const QByteArray both = r.receive(hex("0000000310"));
        ASSERT_EQ(both.size(), 32) << name;
        EXPECT_EQ(both.mid(1, 4), hex("015BE680"));  // 14,250,000 Hz as 0.625 Hz steps
        EXPECT_EQ(both.mid(5, 2), hex("FF60"));
        EXPECT_EQ(at1(both, 8), 0x02);               // CW ...
        EXPECT_EQ(at1(both, 9) & 0x80, 0x80);        // ... on the lower side
        EXPECT_EQ(at1(both, 10) & 0x02, 0x02);       // clarifier on
        EXPECT_EQ(both.mid(17, 4), hex("01566B60"));  // VFO B at 14,025.5 kHz
        EXPECT_EQ(r.receive(hex("0000000210")), both.left(16));
    }
    YaesuRadio r = radio("FT-1000MP");
    // Filters: the second IF to 500, the third to through, the sub receiver to 500; reported as codes
    // with through first, the sub receiver's in VFO B's record.
    r.receive(hex("010000028C" "020000048C" "000000828C"));
    const QByteArray both = r.receive(hex("0000000310"));
    EXPECT_EQ(at1(both, 9), 0x30);
    EXPECT_EQ(at1(both, 25), 0x03);
    // Split, dual watch, and flags: six bytes, working a VFO.
    r.receive(hex("0000000101" "0000000183"));
    EXPECT_EQ(r.receive(hex("00000001FA")), hex("230000000000"));
    r.setMeter(200);
    EXPECT_EQ(r.receive(hex("00000000F7")), hex("C8C8C8C8F7"));
    // The A/B key exchanges the VFOs: main stays A.
    r.receive(hex("005042010A" "0000000105"));
    EXPECT_EQ(r.currentVfo(), 0);
    EXPECT_EQ(r.frequency(), 14'025'500);
    EXPECT_EQ(r.vfoFrequency(1), 14'250'000);
}

TEST(YaesuRadio, Ft1000DAndFt990CountTensOfHertzInThreeBytes) {
    YaesuRadio d = radio("FT-1000D");
    d.receive(hex("005042010A" "000000090C" "000000008E"));
    const QByteArray both = d.receive(hex("0000000310"));
    ASSERT_EQ(both.size(), 32);
    EXPECT_EQ(both.mid(1, 3), hex("15BE69"));  // one step of 10 Hz up
    EXPECT_EQ(at1(both, 8), 0x05);             // RTTY ...
    EXPECT_EQ(at1(both, 9) & 0x01, 0x01);      // ... upper side
    EXPECT_TRUE(d.receive(hex("00000001FA")).isEmpty());

    YaesuRadio r = radio("FT-990");
    EXPECT_EQ(r.receive(hex("0000000110")).size(), 1);  // the memory channel, its start-up probe
    r.receive(hex("0000000105" "005042010A" "000000040C"));
    r.setClarifier(true, -50);
    const QByteArray op = r.receive(hex("0000000210"));
    ASSERT_EQ(op.size(), 16);
    EXPECT_EQ(op.mid(1, 3), hex("15BE68"));
    EXPECT_EQ(op.mid(5, 2), hex("FFCE"));  // the clarifier in hertz
    EXPECT_EQ(at1(op, 5) & 0x02, 0x02);
    EXPECT_EQ(at1(op, 8), 0x03);           // AM
    EXPECT_EQ(r.receive(hex("00000001FA")), hex("0200000000"));  // VFO B
    EXPECT_EQ(r.vfoFrequency(0), 14'025'500);
    const QByteArray ab = r.receive(hex("0000000310"));
    EXPECT_EQ(ab.mid(1, 3), hex("1566B6"));   // A first ...
    EXPECT_EQ(ab.mid(17, 3), hex("15BE68"));  // ... then B
    r.receive(hex("0000000085"));
    EXPECT_EQ(r.vfoFrequency(0), 14'250'000);
}

TEST(YaesuRadio, Ft920ReportsHertzAndTheSidebandBit) {
    YaesuRadio r = radio("FT-920");
    r.receive(hex("005042010A" "000000020C"));
    const QByteArray both = r.receive(hex("0000000210"));
    ASSERT_EQ(both.size(), 28);
    EXPECT_EQ(both.mid(1, 4), hex("00D97010"));
    EXPECT_EQ(at1(both, 8), 0x41);  // CW, upper side
    EXPECT_EQ(both.mid(15, 4), hex("00D6031C"));  // VFO B
}

TEST(YaesuRadio, Ft890FamilyGivesTheVfoInUseThenTheOther) {
    for (const char* name : {"FT-900", "FT-890", "FT-840"}) {
        YaesuRadio r = radio(name);
        r.receive(hex("0000000105" "005042010A" "000000030C" "0000000101"));
        r.setClarifier(false, 0);
        const QByteArray op = r.receive(hex("0000000210"));
        ASSERT_EQ(op.size(), 19) << name;
        EXPECT_EQ(op.mid(2, 3), hex("15BE68"));  // VFO B, in use
        EXPECT_EQ(at1(op, 8), 0x82);             // CW narrow
        EXPECT_EQ(op.mid(11, 3), hex("1566B6"));  // VFO A, the other
        EXPECT_EQ(r.receive(hex("00000001FA")), hex("4400000000")) << name;
    }
}

TEST(YaesuRadio, Ft100CountsInStepsOfOneAndAQuarterHertz) {
    YaesuRadio r = radio("FT-100");
    r.receive(hex("005042010A" "000000070C" "0000000101"));
    const QByteArray op = r.receive(hex("0000000010"));
    ASSERT_EQ(op.size(), 16);
    EXPECT_EQ(op.mid(1, 4), hex("00ADF340"));  // 11,400,000 steps
    EXPECT_EQ(at1(op, 6) & 0x0F, 7);            // wide FM
    r.receive(hex("0000000105"));
    EXPECT_EQ(r.receive(hex("00000001FA")), hex("0104000000000000"));  // split; VFO B in the second byte
    // The S-meter counts down from 204 as the signal rises.
    r.setMeter(120);
    EXPECT_EQ(r.receive(hex("00000000F7")), hex("000000" "54" "0000000000"));
}

TEST(YaesuRadio, Ft757And747LongReadsCarryTheShownVfoAandB) {
    YaesuRadio r = radio("FT-757");
    r.receive(hex("005042010A" "000000040C" "0000000105" "000000030C"));
    const QByteArray s757 = r.receive(hex("0000000010"));
    ASSERT_EQ(s757.size(), 75);
    EXPECT_EQ(s757.mid(5, 5), hex("50254001" "03"));  // shown (B): 14,025.5 kHz, CW narrow, BCD least first
    EXPECT_EQ(s757.mid(10, 5), hex("00504201" "04"));  // A: 14,250 kHz AM
    EXPECT_EQ(s757.mid(15, 5), hex("50254001" "03"));  // B
    r.setMeter(9);
    EXPECT_EQ(r.receive(hex("0000000110")), hex("09"));

    YaesuRadio f = radio("FT-747");
    f.receive(hex("005042010A" "000000040C"));
    f.selectVfo(1);
    f.setFrequency(7'010'500);
    const QByteArray s747 = f.receive(hex("0000000010"));
    ASSERT_EQ(s747.size(), 345);
    EXPECT_EQ(s747.mid(1, 6), hex("0007010500" "20"));  // shown: hertz in BCD, most first; USB
    EXPECT_EQ(s747.mid(8, 6), hex("0014250000" "80"));  // A: AM
    EXPECT_EQ(s747.mid(15, 6), hex("0007010500" "20"));  // B
    // No meter, no flags read on these.
    EXPECT_TRUE(f.receive(hex("00000000F7" "00000001FA")).isEmpty());
}

// The FT-767 runs a block only when it is acknowledged, and answers newest byte first: the status
// byte comes last, the frequency just before it.
TEST(YaesuRadio, Ft767HandshakeEchoesAcknowledgesAndAnswersBackwards) {
    YaesuRadio r = radio("FT-767");
    const QByteArray ack = hex("000000000B");
    EXPECT_TRUE(r.receive(hex("005042010" "8")).isEmpty());  // CAT off: deaf
    EXPECT_TRUE(r.receive(ack).isEmpty());
    EXPECT_EQ(r.receive(hex("0000000000")), hex("0000000000"));
    const QByteArray all = r.receive(ack);
    ASSERT_EQ(all.size(), 86);
    EXPECT_TRUE(r.catOn());
    EXPECT_EQ(all.right(5), hex("50254001" "00"));  // shown frequency, then status
    EXPECT_EQ(at1(all, 86 + 1 - 7), 1);            // USB
    // Frequency: echo, then five bytes.
    EXPECT_EQ(r.receive(hex("005042010" "8")), hex("0050420108"));
    EXPECT_EQ(r.receive(ack), hex("00504201" "00"));
    EXPECT_EQ(r.frequency(), 14'250'000);
    // Mode: eight bytes, the mode seventh from the end.
    r.receive(hex("000000120A"));
    const QByteArray mode = r.receive(ack);
    ASSERT_EQ(mode.size(), 8);
    EXPECT_EQ(at1(mode, 2), 2);  // CW
    // VFO B, then split toggled: 26 bytes, A and B among them, split bit 3 and VFO B bit 4 in status.
    r.receive(hex("0000000109"));
    EXPECT_EQ(r.receive(ack).size(), 5);
    r.receive(hex("000000300A"));
    const QByteArray split = r.receive(ack);
    ASSERT_EQ(split.size(), 26);
    EXPECT_EQ(at1(split, 26), 0x18);
    EXPECT_EQ(split.mid(26 - 18, 4), hex("00504201"));  // VFO A, positions 15 to 18 from the end
    EXPECT_EQ(split.mid(26 - 24, 4), hex("50254001"));  // VFO B, 21 to 24
    // A block in place of the acknowledge drops the one before; an acknowledge alone does nothing.
    r.receive(hex("000000150A"));
    EXPECT_EQ(r.receive(hex("0000000009")), hex("0000000009"));
    EXPECT_EQ(r.receive(ack).size(), 5);
    EXPECT_EQ(r.mode(), YaesuRadio::CW);
    EXPECT_TRUE(r.receive(ack).isEmpty());
    // CAT off still answers in full, then the radio is deaf again.
    EXPECT_EQ(r.receive(hex("0000000100")), hex("0000000100"));
    EXPECT_EQ(r.receive(ack).size(), 86);
    EXPECT_FALSE(r.catOn());
    EXPECT_TRUE(r.receive(hex("0000000009")).isEmpty());
}

TEST(YaesuRadio, OnlyCompleteBlocksAreRunAndNoiseDoesNoHarm) {
    YaesuRadio r = radio("FT-817");
    // Split over writes: answered once, when the fifth byte comes.
    EXPECT_TRUE(r.receive(hex("00")).isEmpty());
    EXPECT_TRUE(r.receive(hex("000000")).isEmpty());
    EXPECT_EQ(r.receive(hex("03" "0000")).size(), 5);
    EXPECT_TRUE(r.receive(hex("00")).isEmpty());  // still two short of a block
    EXPECT_EQ(r.receive(hex("0003" "0000000003")).size(), 10);
    // Unknown opcodes and a frequency with a nibble that isn't a digit: no answer, no change.
    EXPECT_TRUE(r.receive(hex("00000000AA" "1A42500001" "0000000099")).isEmpty());
    EXPECT_EQ(r.frequency(), 14'025'500);
    // Silent: nothing answered and nothing obeyed.
    r.setSilent(true);
    EXPECT_TRUE(r.receive(hex("0142500001" "0000000003")).isEmpty());
    EXPECT_EQ(r.frequency(), 14'025'500);
    r.setSilent(false);
    // Beyond what a radio tunes: ignored, from the line or from its operator.
    YaesuRadio hf = radio("FT-990");
    hf.receive(hex("000000150A"));  // 150 MHz
    hf.setFrequency(31'000'000);
    EXPECT_EQ(hf.frequency(), 14'025'500);
    // Any radio fed noise in odd pieces survives it and stays on a frequency it can tune.
    const QByteArray noise = YaesuRadio::garbage(4000, 7);
    EXPECT_EQ(noise, YaesuRadio::garbage(4000, 7));
    for (const QString& name : YaesuRadio::modelNames()) {
        YaesuRadio n(*YaesuRadio::model(name));
        for (int i = 0; i < noise.size(); i += 7) n.receive(noise.mid(i, 7));
        EXPECT_GT(n.frequency(), 0) << name.toStdString();
        EXPECT_LE(n.frequency(), 512'000'000) << name.toStdString();
    }
}

}  // namespace
}  // namespace tv::sim
