// The rigctld protocol line by line on a fake radio: the default and the extended response, what each
// set hands to the program, the codes for what the radio can't do and for malformed lines, the state
// dump a client reads when it opens, and random input.

#include "netserver/Rigctl.h"

#include "FakeRig.h"
#include "support/QtPrinters.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <memory>

namespace tv::test {
namespace {

void converse(RigctlSession& s, std::initializer_list<std::pair<const char*, const char*>> exchanges) {
    for (const auto& [line, reply] : exchanges)
        EXPECT_EQ(s.answer(QByteArray(line)), QByteArray(reply)) << line;
}

TEST(Rigctl, GetsAnswerValuesSetsTheirCodeAndAGetAfterASetHasTheNewValue) {
    FakeRig rig;
    RigctlSession s(rig, QStringLiteral("Tolvane 0.1.0"));
    converse(s, {{"\\chk_vfo", "0\n"},
                 {"f", "7010000\n"},
                 {"m", "CW\n500\n"},
                 {"v", "VFOA\n"},
                 {"t", "0\n"},
                 {"s", "0\nVFOA\n"},
                 {"\\get_powerstat", "1\n"},
                 {"\\get_lock_mode", "0\nRPRT 0\n"},
                 {"_", "Tolvane 0.1.0, Icom IC-7300\n"},
                 // rigctl sends six decimals.
                 {"F 14025500.000000", "RPRT 0\n"},
                 {"f", "14025500\n"},
                 {"\\set_freq 7000000", "RPRT 0\n"},
                 {"M USB 2400", "RPRT 0\n"},
                 {"m", "USB\n2400\n"},
                 {"M PKTUSB", "RPRT 0\n"},
                 {"V VFOB", "RPRT 0\n"},
                 {"v", "VFOB\n"},
                 {"V currVFO", "RPRT 0\n"},
                 {"T 1", "RPRT 0\n"},
                 {"t", "1\n"},
                 {"S 1 VFOB", "RPRT 0\n"},
                 {"s", "1\nVFOB\n"},
                 {"I 14030000", "RPRT 0\n"},
                 {"i", "14030000\n"},
                 {"M ?", "LSB USB AM CW RTTY FM CWR RTTYR PKTUSB \nRPRT 0\n"},
                 {"  ", ""},
                 {"# note", ""},
                 {"f\r", "7000000\n"}});
    EXPECT_EQ(rig.sets, QStringList({"freq 14025500", "freq 7000000", "mode 1 2400", "mode 9 0", "vfo 1",
                                     "ptt 1", "split 1", "tx 14030000"}));
    EXPECT_EQ(s.answer("q"), QByteArray("RPRT 0\n"));
    EXPECT_TRUE(s.closing());
}

TEST(Rigctl, ExtendedResponseEchoesTheCommandAndNamesEachValue) {
    FakeRig rig;
    rig.label = QStringLiteral("S7");
    RigctlSession s(rig, QStringLiteral("Tolvane"));
    converse(s, {{"+f", "get_freq:\nFrequency: 7010000\nRPRT 0\n"},
                 {";m", "get_mode:;Mode: CW;Passband: 500;RPRT 0\n"},
                 {"|\\get_split_vfo", "get_split_vfo:|Split: 0|TX VFO: VFOA|RPRT 0\n"},
                 {";\\set_mode USB 2400", "set_mode: USB 2400;RPRT 0\n"},
                 {"+l STRENGTH", "get_level: STRENGTH\n-12\nRPRT 0\n"},
                 {"+\\chk_vfo", "ChkVFO: 0\n"},
                 {"+F abc", "set_freq: abc\nRPRT -1\n"},
                 {"+", ""}});
    const QByteArray dump = s.answer("+\\dump_state");
    EXPECT_TRUE(dump.startsWith("dump_state:\n1\n2\n") && dump.endsWith("done\nRPRT 0\n"));
}

TEST(Rigctl, RefusalsSayWhyWithTheProtocolsCodes) {
    FakeRig rig;
    rig.c.ptt = rig.c.split = rig.c.meter = false;
    RigctlSession s(rig, QStringLiteral("Tolvane"));
    // Not this radio (-11), not served here (-4), malformed (-1).
    converse(s, {{"t", "RPRT -11\n"},
                 {"T 1", "RPRT -11\n"},
                 {"S 1 VFOB", "RPRT -11\n"},
                 {"l STRENGTH", "RPRT -11\n"},
                 {"M WFM 0", "RPRT -11\n"},
                 {"M PKTLSB 0", "RPRT -11\n"},
                 {"V Sub", "RPRT -11\n"},
                 {"j", "RPRT -4\n"},
                 {"\\dump_caps", "RPRT -4\n"},
                 {"k", "RPRT -1\n"},
                 {"fxyz", "RPRT -1\n"},
                 {"\\frobnicate", "RPRT -1\n"},
                 {"F", "RPRT -1\n"},
                 {"F -5", "RPRT -1\n"},
                 {"F 1e12", "RPRT -1\n"},
                 {"M XYZ 500", "RPRT -1\n"},
                 {"V VFOX", "RPRT -1\n"},
                 {"T on", "RPRT -1\n"},
                 {"l FOO", "RPRT -1\n"}});
    EXPECT_TRUE(rig.sets.isEmpty());
    // The program's queue said no: the client is told, and nothing changed.
    rig.accept = false;
    converse(s, {{"F 14025500", "RPRT -9\n"}, {"f", "7010000\n"}});
}

TEST(Rigctl, StateDumpDescribesTheRadioAndSignalStrengthFollowsItsScale) {
    RigCaps caps;
    for (int m : {RigLSB, RigUSB, RigCW}) caps.modes[size_t(m)] = true;
    caps.mainSub = true;
    const QList<QByteArray> lines = rigctlDumpState(caps, QStringLiteral("Tolvane 9")).split('\n');
    ASSERT_GT(lines.size(), 30);
    EXPECT_EQ(lines[0], "1");  // protocol version 1: key=value lines follow the fixed part
    // Receive and transmit range, each ended: LSB|USB|CW, main and sub; a 1 Hz step; one width a mode.
    EXPECT_EQ(lines[3], "0.000000 999999990.000000 0xe -1 -1 0x6000000 0x1");
    EXPECT_EQ(lines.mid(4, 9), QList<QByteArray>({"0 0 0 0 0 0 0", lines[3], "0 0 0 0 0 0 0", "0xe 1", "0 0",
                                                  "0x8 2400", "0x4 2400", "0x2 500", "0 0"}));
    EXPECT_EQ(lines[21], "0x0") << "no levels without a meter";
    EXPECT_TRUE(lines.contains("ptt_type=0x0") && lines.contains("rigctld_version=Tolvane 9"));
    EXPECT_EQ(lines[lines.size() - 2], "done");
    caps.meter = caps.ptt = true;
    const QList<QByteArray> withMeter = rigctlDumpState(caps, QString()).split('\n');
    EXPECT_EQ(withMeter[21], "0x44000000") << "STRENGTH and RAWSTR";
    EXPECT_TRUE(withMeter.contains("ptt_type=0x1"));

    // dB over S9 from the scale's label; without one, the full scale spans S0 to S9+60.
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("S0")), -54);
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("S5")), -24);
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("+20")), 20);
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("S9+10")), 10);
    EXPECT_EQ(rigctlStrength(0.0, QStringLiteral("7")), -54);
    EXPECT_EQ(rigctlStrength(7.0, QString()), 60);
}

TEST(Rigctl, RandomLinesGetAnAnswerOrNothingAndNeverAnInvalidSet) {
    const QByteArray words[] = {
        "f",   "F", "m",          "M",   "V",   "T",    "S",  "I", "X", "l",        "q",     "\\dump_state",
        "+",   ";", "\\set_freq", "USB", "CWR", "VFOB", "-1", "0", "1", "14025500", "1e308", "?",
        "\xff"};
    QRandomGenerator rnd(15);
    FakeRig rig;
    auto s = std::make_unique<RigctlSession>(rig, QStringLiteral("Tolvane"));
    for (int i = 0; i < 20000; ++i) {
        QByteArray line;
        for (int p = int(rnd.bounded(6)); p > 0; --p) {
            if (rnd.bounded(3) == 0)
                for (int k = int(rnd.bounded(12)); k > 0; --k) line += char(rnd.bounded(256));
            else
                line += words[rnd.bounded(int(std::size(words)))];
            if (rnd.bounded(4)) line += ' ';
        }
        line.replace('\n', ' ');
        const QByteArray reply = s->answer(line);
        ASSERT_TRUE(reply.isEmpty() || reply.endsWith('\n')) << line.toHex().toStdString();
        if (s->closing()) s = std::make_unique<RigctlSession>(rig, QStringLiteral("Tolvane"));
    }
    EXPECT_FALSE(rig.sets.isEmpty());
    for (const QString& set : rig.sets) {
        const QStringList f = set.split(QLatin1Char(' '));
        const double v = f[1].toDouble();
        const bool freq = f[0] == QLatin1String("freq") || f[0] == QLatin1String("tx");
        const bool mode = f[0] == QLatin1String("mode");
        EXPECT_TRUE(!freq || (v >= 0 && v <= 999999990.0)) << set.toStdString();
        EXPECT_TRUE(!mode || (v >= 0 && v < kRigModeCount)) << set.toStdString();
    }
}

}  // namespace
}  // namespace tv::test
