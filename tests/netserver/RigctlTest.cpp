// The rigctld protocol as a client sees it, line by line, on a fake radio: the default and the
// extended response, what each set hands to the program, the codes for what the radio can't do and for
// malformed lines, the state dump a client reads when it opens, and random input.

#include "netserver/Rigctl.h"

#include "FakeRig.h"
#include "support/QtPrinters.h"

#include <QRandomGenerator>

#include <memory>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

struct Exchange {
    const char* line;
    const char* reply;
};

void converse(RigctlSession& s, std::initializer_list<Exchange> exchanges) {
    for (const Exchange& e : exchanges)
        EXPECT_EQ(s.answer(QByteArray(e.line)), QByteArray(e.reply)) << "line: " << e.line;
}

TEST(Rigctl, DefaultProtocolAnswersGetsWithValuesAndSetsWithTheirCode) {
    FakeRig rig;
    RigctlSession s(rig, QStringLiteral("Tolvane 0.1.0"));
    converse(s, {
                    {"\\chk_vfo", "0\n"},
                    {"f", "7010000\n"},
                    {"m", "CW\n500\n"},
                    {"v", "VFOA\n"},
                    {"t", "0\n"},
                    {"s", "0\nVFOA\n"},
                    {"\\get_powerstat", "1\n"},
                    {"\\get_lock_mode", "0\nRPRT 0\n"},
                    {"_", "Tolvane 0.1.0, Icom IC-7300\n"},
                    // The client sends six decimals; a set is answered when it is queued, and a get
                    // right after it has the new value.
                    {"F 14025500.000000", "RPRT 0\n"},
                    {"f", "14025500\n"},
                    {"\\set_freq 7000000", "RPRT 0\n"},
                    {"\\get_freq", "7000000\n"},
                    {"M USB 2400", "RPRT 0\n"},
                    {"m", "USB\n2400\n"},
                    {"M PKTUSB", "RPRT 0\n"},
                    {"m", "PKTUSB\n2400\n"},
                    {"V VFOB", "RPRT 0\n"},
                    {"v", "VFOB\n"},
                    {"V currVFO", "RPRT 0\n"},
                    {"T 1", "RPRT 0\n"},
                    {"t", "1\n"},
                    {"T 0", "RPRT 0\n"},
                    {"S 1 VFOB", "RPRT 0\n"},
                    {"s", "1\nVFOB\n"},
                    {"I 14030000", "RPRT 0\n"},
                    {"i", "14030000\n"},
                    {"M ?", "LSB USB AM CW RTTY FM CWR RTTYR PKTUSB \nRPRT 0\n"},
                    {"  ", ""},
                    {"# a comment", ""},
                    {"f\r", "7000000\n"},
                });
    EXPECT_EQ(rig.sets, QStringList({"freq 14025500", "freq 7000000", "mode 1 2400", "mode 9 0", "vfo 1", "ptt 1",
                                     "ptt 0", "split 1", "tx 14030000"}));
    EXPECT_FALSE(s.closing());
    EXPECT_EQ(s.answer("q"), QByteArray("RPRT 0\n"));
    EXPECT_TRUE(s.closing());
}

TEST(Rigctl, ExtendedResponseEchoesTheCommandAndNamesEachValue) {
    FakeRig rig;
    rig.label = QStringLiteral("S7");
    RigctlSession s(rig, QStringLiteral("Tolvane"));
    converse(s, {
                    {"+f", "get_freq:\nFrequency: 7010000\nRPRT 0\n"},
                    {"+\\get_mode", "get_mode:\nMode: CW\nPassband: 500\nRPRT 0\n"},
                    {";m", "get_mode:;Mode: CW;Passband: 500;RPRT 0\n"},
                    {"|s", "get_split_vfo:|Split: 0|TX VFO: VFOA|RPRT 0\n"},
                    {",v", "get_vfo:,VFO: VFOA,RPRT 0\n"},
                    {"+F 7000000", "set_freq: 7000000\nRPRT 0\n"},
                    {";\\set_mode USB 2400", "set_mode: USB 2400;RPRT 0\n"},
                    {"+l STRENGTH", "get_level: STRENGTH\n-12\nRPRT 0\n"},
                    {"+\\chk_vfo", "ChkVFO: 0\n"},
                    {"+\\get_powerstat", "get_powerstat:\nPower Status: 1\nRPRT 0\n"},
                    {"+F abc", "set_freq: abc\nRPRT -1\n"},
                    {"+T 7", "set_ptt: 7\nRPRT -1\n"},
                    {"+", ""},
                });
    const QByteArray dump = s.answer("+\\dump_state");
    EXPECT_TRUE(dump.startsWith("dump_state:\n1\n2\n")) << dump.left(40).toStdString();
    EXPECT_TRUE(dump.endsWith("done\nRPRT 0\n"));
}

TEST(Rigctl, RefusalsSayWhyWithTheProtocolsCodes) {
    FakeRig rig;
    rig.c.ptt = rig.c.split = rig.c.meter = false;
    rig.c.modes[RigRTTYR] = false;
    RigctlSession s(rig, QStringLiteral("Tolvane"));
    converse(s, {
                    // What this radio can't do.
                    {"t", "RPRT -11\n"},
                    {"T 1", "RPRT -11\n"},
                    {"S 1 VFOB", "RPRT -11\n"},
                    {"I 14030000", "RPRT -11\n"},
                    {"l STRENGTH", "RPRT -11\n"},
                    {"l SWR", "RPRT -11\n"},
                    {"M RTTYR 0", "RPRT -11\n"},
                    {"M WFM 0", "RPRT -11\n"},
                    {"M PKTLSB 0", "RPRT -11\n"},
                    {"V Sub", "RPRT -11\n"},
                    {"V MEM", "RPRT -11\n"},
                    {"\\set_vfo_opt 1", "RPRT -11\n"},
                    // Protocol commands this server doesn't do.
                    {"j", "RPRT -4\n"},
                    {"\\dump_caps", "RPRT -4\n"},
                    {"U NB 1", "RPRT -4\n"},
                    // Malformed: unknown words, missing or bad arguments.
                    {"k", "RPRT -1\n"},
                    {"fxyz", "RPRT -1\n"},
                    {"\\frobnicate", "RPRT -1\n"},
                    {"F", "RPRT -1\n"},
                    {"F -5", "RPRT -1\n"},
                    {"F 1e12", "RPRT -1\n"},
                    {"F nan", "RPRT -1\n"},
                    {"M XYZ 500", "RPRT -1\n"},
                    {"M USB wide", "RPRT -1\n"},
                    {"V VFOX", "RPRT -1\n"},
                    {"T on", "RPRT -1\n"},
                    {"S 1 VFOX", "RPRT -1\n"},
                    {"l FOO", "RPRT -1\n"},
                });
    EXPECT_TRUE(rig.sets.isEmpty()) << rig.sets.join(QLatin1Char(',')).toStdString();
    // The program's queue said no: nothing was queued, and the client is told.
    rig.c.ptt = true;
    rig.accept = false;
    converse(s, {{"F 14025500", "RPRT -9\n"}, {"f", "7010000\n"}, {"T 1", "RPRT -9\n"}});
}

TEST(Rigctl, StateDumpDescribesTheSelectedRadioAsTheClientReadsIt) {
    FakeRig rig;
    rig.c.modes.fill(false);
    for (int m : {RigLSB, RigUSB, RigCW}) rig.c.modes[size_t(m)] = true;
    rig.c.ptt = false;
    rig.c.meter = false;
    rig.c.vfoAB = false;
    rig.c.mainSub = true;
    const QList<QByteArray> lines = rigctlDumpState(rig.c, QStringLiteral("Tolvane 9")).split('\n');
    ASSERT_GT(lines.size(), 30);
    EXPECT_EQ(lines[0], "1");  // protocol version 1: key=value lines follow the fixed part
    // Receive range, its end mark, transmit range, its end mark: LSB|USB|CW, main and sub.
    EXPECT_EQ(lines[3], "0.000000 999999990.000000 0xe -1 -1 0x6000000 0x1");
    EXPECT_EQ(lines[4], "0 0 0 0 0 0 0");
    EXPECT_EQ(lines[5], lines[3]);
    EXPECT_EQ(lines[6], lines[4]);
    EXPECT_EQ(lines[7], "0xe 1");
    EXPECT_EQ(lines[8], "0 0");
    // One filter width per offered mode, then the end mark.
    EXPECT_EQ(lines[9], "0x8 2400");
    EXPECT_EQ(lines[10], "0x4 2400");
    EXPECT_EQ(lines[11], "0x2 500");
    EXPECT_EQ(lines[12], "0 0");
    EXPECT_EQ(lines[21], "0x0") << "no levels without a meter";
    EXPECT_TRUE(lines.contains("ptt_type=0x0"));
    EXPECT_TRUE(lines.contains("rigctld_version=Tolvane 9"));
    EXPECT_EQ(lines[lines.size() - 2], "done");
    rig.c.meter = rig.c.ptt = true;
    const QList<QByteArray> withMeter = rigctlDumpState(rig.c, QStringLiteral("x")).split('\n');
    EXPECT_EQ(withMeter[21], "0x44000000") << "STRENGTH and RAWSTR";
    EXPECT_TRUE(withMeter.contains("ptt_type=0x1"));
}

TEST(Rigctl, SignalStrengthFollowsTheRadiosScaleOrElseTheFullScale) {
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("S0")), -54);
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("S9")), 0);
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("S5")), -24);
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("+20")), 20);
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("S9+10")), 10);
    // No scale: the step number shown, or nothing; the fraction decides.
    EXPECT_EQ(rigctlStrength(0.0, QStringLiteral("7")), -54);
    EXPECT_EQ(rigctlStrength(1.0, QString()), 60);
    EXPECT_EQ(rigctlStrength(7.0, QString()), 60);
    FakeRig rig;
    rig.meterFraction = 0.5;
    RigctlSession s(rig, QString());
    EXPECT_EQ(s.answer("l RAWSTR"), QByteArray("128\n"));
    EXPECT_EQ(s.answer("l ?"), QByteArray("RAWSTR STRENGTH \n"));
}

TEST(Rigctl, RandomLinesGetAnAnswerOrNothingAndNeverAnInvalidSet) {
    const QByteArray words[] = {"f", "F", "m", "M", "v", "V", "t", "T", "s", "S", "i", "I", "x", "X", "l", "q",
                                "\\dump_state", "\\chk_vfo", "+", ";", "|", "\\set_freq", "USB", "CWR", "VFOB",
                                "-1", "0", "1", "14025500", "1e308", "STRENGTH", "?", "\\", "\xff", "\t"};
    QRandomGenerator rnd(15);
    FakeRig rig;
    auto s = std::make_unique<RigctlSession>(rig, QStringLiteral("Tolvane"));
    for (int i = 0; i < 20000; ++i) {
        QByteArray line;
        const int parts = int(rnd.bounded(6));
        for (int p = 0; p < parts; ++p) {
            if (rnd.bounded(3) == 0) {
                for (int k = int(rnd.bounded(12)); k > 0; --k) line += char(rnd.bounded(256));
            } else {
                line += words[rnd.bounded(int(std::size(words)))];
            }
            if (rnd.bounded(4)) line += ' ';
        }
        line.replace('\n', ' ');
        const QByteArray reply = s->answer(line);
        ASSERT_TRUE(reply.isEmpty() || reply.endsWith('\n')) << line.toHex().toStdString();
        if (s->closing()) s = std::make_unique<RigctlSession>(rig, QStringLiteral("Tolvane"));
    }
    for (const QString& set : rig.sets) {
        const QStringList f = set.split(QLatin1Char(' '));
        if (f[0] == QLatin1String("freq") || f[0] == QLatin1String("tx")) {
            const double hz = f[1].toDouble();
            EXPECT_TRUE(hz >= 0 && hz <= 999999990.0) << set.toStdString();
        } else if (f[0] == QLatin1String("mode")) {
            EXPECT_TRUE(f[1].toInt() >= 0 && f[1].toInt() < kRigModeCount) << set.toStdString();
        }
    }
    EXPECT_FALSE(rig.sets.isEmpty());
}

}  // namespace
}  // namespace tv::test
