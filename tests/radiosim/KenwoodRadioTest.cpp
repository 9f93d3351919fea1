// The simulated Kenwood radios against replies written out by hand: a simulator that answered wrongly
// would let the controller's tests pass against a radio that doesn't exist.

#include "tools/radiosim/KenwoodRadio.h"

#include <gtest/gtest.h>

namespace tv::sim {
namespace {

KenwoodRadio radio(const char* name) { return KenwoodRadio(*KenwoodRadio::model(QString::fromLatin1(name))); }

TEST(KenwoodRadio, IdentifiesItselfAndReportsStatusWithoutEcho) {
    KenwoodRadio r = radio("ts-2000");
    EXPECT_EQ(r.receive("ID;"), QByteArray("ID019;"));
    EXPECT_EQ(radio("TS-570").receive("ID;"), QByteArray("ID017;"));
    EXPECT_EQ(radio("TS-870").receive("ID;"), QByteArray("ID015;"));
    EXPECT_EQ(radio("TS-440").receive("ID;"), QByteArray("ID004;"));
    EXPECT_EQ(radio("TS-990").receive("ID;"), QByteArray("ID023;"));
    EXPECT_FALSE(KenwoodRadio::model(QStringLiteral("IC-7300")));
    // Commands split across writes, and several in one.
    EXPECT_TRUE(r.receive("FA000070").isEmpty());
    EXPECT_TRUE(r.receive("10500;MD3;").isEmpty());
    // Mode 3 at position 30, VFO 0 at 31, split 0 at 33.
    EXPECT_EQ(r.receive("IF;"), QByteArray("IF00007010500     +00000000003000008" "0;"));
}

TEST(KenwoodRadio, VfosSplitAndPtt) {
    KenwoodRadio r = radio("TS-2000");
    EXPECT_TRUE(r.receive("FB00021074000;FR1;FT0;").isEmpty());
    EXPECT_EQ(r.frequency(), 21'074'000);
    EXPECT_TRUE(r.split());
    EXPECT_EQ(r.receive("FA;FB;FR;FT;"), QByteArray("FA00014025500;FB00021074000;FR1;FT0;"));
    EXPECT_EQ(r.receive("IF;").mid(30, 3), QByteArray("101"));
    EXPECT_TRUE(r.receive("FT1;TX;").isEmpty());
    EXPECT_FALSE(r.split());
    EXPECT_TRUE(r.ptt());
    EXPECT_EQ(r.receive("IF;").mid(28, 1), QByteArray("1"));
    r.receive("RX;");
    EXPECT_FALSE(r.ptt());
    // The old radio selects with FN and splits with SP; it knows neither FR nor the "N0;" it is sent.
    KenwoodRadio old = radio("TS-440");
    EXPECT_EQ(old.receive("FN1;SP1;FR0;N0;SM;"), QByteArray("?;?;?;"));
    EXPECT_EQ(old.receiveVfo(), 1);
    EXPECT_TRUE(old.split());
}

TEST(KenwoodRadio, ModesUseTheRadiosDigits) {
    KenwoodRadio r = radio("TS-570");
    EXPECT_TRUE(r.receive("MD2;").isEmpty());
    EXPECT_EQ(r.mode(), KenwoodRadio::USB);
    r.receive("MD9;");
    EXPECT_EQ(r.mode(), KenwoodRadio::RTTYR);
    EXPECT_EQ(r.receive("MD;"), QByteArray("MD9;"));
    EXPECT_EQ(r.receive("MD0;MD8;MDX;MD12;"), QByteArray("?;?;?;?;"));
    EXPECT_EQ(r.mode(), KenwoodRadio::RTTYR);
}

TEST(KenwoodRadio, MeterAndPassbandByModel) {
    KenwoodRadio ts2000 = radio("TS-2000");
    ts2000.setMeter(99);  // clamped to the scale
    EXPECT_EQ(ts2000.receive("SM0;SM1;SM;"), QByteArray("SM00030;SM10000;?;"));
    EXPECT_TRUE(ts2000.receive("SL03;SH07;FW0500;IS-0300;").isEmpty());
    EXPECT_EQ(ts2000.receive("SL;SH;FW;IS;"), QByteArray("SL03;SH07;FW0500;IS-0300;"));
    // A blank and then a signed number is no shift this radio understands.
    EXPECT_EQ(ts2000.receive("IS -0300;"), QByteArray("?;"));
    EXPECT_EQ(ts2000.receive("IS 0200;IS;"), QByteArray("IS+0200;"));

    KenwoodRadio ts570 = radio("TS-570");
    ts570.setMeter(12);
    EXPECT_EQ(ts570.receive("SM;SM0;"), QByteArray("SM0012;?;"));
    EXPECT_EQ(ts570.receive("SL21;SH;"), QByteArray("?;SH11;"));

    KenwoodRadio ts870 = radio("TS-870");
    EXPECT_EQ(ts870.receive("SL;FW;IS;"), QByteArray("?;FW0500;IS 0000;"));
    EXPECT_EQ(radio("TS-990").receive("SM;FW;"), QByteArray("?;?;"));
}

TEST(KenwoodRadio, KnobsReportOnlyWithAutoInformationAndRefusalsAndSilence) {
    KenwoodRadio r = radio("TS-2000");
    EXPECT_TRUE(r.turnDial(100).isEmpty());
    EXPECT_EQ(r.receive("AI;AI1;AI;"), QByteArray("AI0;AI1;"));
    EXPECT_EQ(r.turnDial(400).left(13), QByteArray("IF00014026000"));
    EXPECT_EQ(r.setMode(KenwoodRadio::CW).mid(29, 1), QByteArray("3"));
    EXPECT_TRUE(r.setMode(KenwoodRadio::WBFM).isEmpty());  // no such mode on the radio
    r.setTransceive(false);
    EXPECT_TRUE(r.setFrequency(7'000'000).isEmpty());
    EXPECT_TRUE(r.setFrequency(2'000'000'000).isEmpty());
    EXPECT_EQ(r.frequency(), 7'000'000);
    EXPECT_EQ(r.receive("XX;;FA123;FA0000700000a;ID1;"), QByteArray("?;?;?;?;?;"));
    r.setRejectNext(true);
    EXPECT_EQ(r.receive("FA;FA;"), QByteArray("?;FA00007000000;"));
    r.setSilent(true);
    EXPECT_TRUE(r.receive("ID;IF;").isEmpty());
    r.setSilent(false);
    // Line ends from a terminal are not part of the next command.
    EXPECT_EQ(r.receive("\r\nID;"), QByteArray("ID019;"));
}

TEST(KenwoodRadio, GarbageNeverEndsAMessageAndIsRepeatable) {
    const QByteArray g = KenwoodRadio::garbage(500, 7);
    EXPECT_EQ(g.size(), 500);
    EXPECT_FALSE(g.contains(';'));
    EXPECT_EQ(g, KenwoodRadio::garbage(500, 7));
    EXPECT_NE(g, KenwoodRadio::garbage(500, 8));
}

}  // namespace
}  // namespace tv::sim
