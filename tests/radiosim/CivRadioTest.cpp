// The simulated CI-V radio against byte-exact frames. (The simulator as a program on its pty is met by
// the integration tests, which drive it through its stdin.)
// A simulator that answers wrongly would make the controller's tests pass against a radio that
// doesn't exist, so the frames here are written out by hand, not built with the simulator's helpers.

#include "tools/radiosim/CivRadio.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tv::sim
