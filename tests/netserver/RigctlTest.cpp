// The rigctld protocol line by line on a fake radio: the default and the extended response, several
// commands to a line, the short, long and one-byte forms, a client's own VFO mode, what each set hands
// to the program, the codes for what the radio can't do and for malformed lines, the state and
// capability dumps a client reads when it opens, and random input.

#include "netserver/Rigctl.h"

#include "FakeRig.h"
#include "support/QtPrinters.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace tv::test {
namespace {

void converse(RigctlSession& s, std::initializer_list<std::pair<const char*, const char*>> exchanges) {
    for (const auto& [line, reply] : exchanges)
        EXPECT_EQ(s.answer(QByteArray(line)), QByteArray(reply)) << line;
}

// A radio that doesn't answer gets no stale values read from it and no changes queued for it, but an
// unkey always goes; a locked server ignores retuning; a read-only one refuses every change but an
// unkey.
TEST(Rigctl, ASilentRadioALockAndAReadOnlyServerAnswerHonestly) {
    FakeRig rig;
    RigctlSession s(rig, QStringLiteral("Tolvane"));
    rig.answering = false;
    converse(s, {{"f", "RPRT -5\n"},
                 {"m", "RPRT -5\n"},
                 {"\\get_powerstat", "0\n"},
                 {"t", "0\n"},
                 {"F 7000000", "RPRT -6\n"},
                 {"T 1", "RPRT -6\n"},
                 {"T 0", "RPRT 0\n"},
                 {"M ?", "LSB USB AM CW RTTY FM CWR RTTYR PKTUSB \nRPRT 0\n"}});
    rig.answering = true;
    converse(s, {{"f", "7010000\n"},
                 {"\\set_lock_mode 1", "RPRT 0\n"},
                 {"\\get_lock_mode", "1\nRPRT 0\n"},
                 {"F 14074000", "RPRT 0\n"},
                 {"M USB 0", "RPRT 0\n"},
                 {"f", "7010000\n"},
                 {"T 1", "RPRT 0\n"},
                 {"\\set_lock_mode 0", "RPRT 0\n"},
                 {"F 14074000", "RPRT 0\n"},
                 {"f", "14074000\n"}});
    RigctlSession reader(rig, QStringLiteral("Tolvane"), false, true);
    converse(reader, {{"F 7000000", "RPRT -9\n"}, {"T 1", "RPRT -9\n"}, {"T 0", "RPRT 0\n"}, {"f", "14074000\n"}});
    EXPECT_EQ(rig.sets, QStringList({"ptt 0", "ptt 1", "freq 14074000", "ptt 0"}));
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
                 {"\\get_vfo_info VFOA", "7010000\nCW\n500\n0\n0\n"},
                 {"j", "0\n"},
                 {"u RIT", "0\n"},
                 {"\x8b", "0\n"},
                 // rigctl sends six decimals, Gpredict pads with blanks.
                 {"F 14025500.000000", "RPRT 0\n"},
                 {"f", "14025500\n"},
                 {"\\set_freq    7000000", "RPRT 0\n"},
                 {"M USB 2400.0", "RPRT 0\n"},
                 {"m", "USB\n2400\n"},
                 {"M PKTUSB -1", "RPRT 0\n"},
                 {"V VFOB", "RPRT 0\n"},
                 {"v", "VFOB\n"},
                 {"V currVFO", "RPRT 0\n"},
                 {"T 1", "RPRT 0\n"},
                 {"t", "1\n"},
                 {"S 1 VFOB", "RPRT 0\n"},
                 {"s", "1\nVFOB\n"},
                 {"I 14030000", "RPRT 0\n"},
                 {"i", "14030000\n"},
                 {"K 14031000 PKTUSB 2400", "RPRT 0\n"},
                 {"k", "14031000\nPKTUSB\n2400\n"},
                 {"J 0", "RPRT 0\n"},
                 {"M ?", "LSB USB AM CW RTTY FM CWR RTTYR PKTUSB \nRPRT 0\n"},
                 {"  ", ""},
                 {"# note", ""},
                 {"f\r", "7000000\n"}});
    EXPECT_EQ(rig.sets, QStringList({"freq 14025500", "freq 7000000", "mode 1 2400", "mode 9 -1", "vfo 1",
                                     "ptt 1", "split 1", "tx 14030000", "tx 14031000"}));
    // The passband in force, when the program knows it.
    rig.passband = 3000;
    converse(s, {{"m", "PKTUSB\n3000\n"}});
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
                 {";\\get_vfo_info VFOB",
                  "get_vfo_info: VFOB;Freq: 7010000;Mode: USB;Width: 2400;Split: 0;SatMode: 0;RPRT 0\n"},
                 {"+\\get_powerstat", "get_powerstat:\nPower Status: 1\nRPRT 0\n"},
                 {"+", ""}});
    const QByteArray dump = s.answer("+\\dump_state");
    EXPECT_TRUE(dump.startsWith("dump_state:\n1\n2\n") && dump.endsWith("done\nRPRT 0\n"));
    const QByteArray info = s.answer("+\\get_rig_info");
    EXPECT_TRUE(info.startsWith("get_rig_info:\nVFO=Main Freq=7010000 Mode=USB Width=2400 RX=1 TX=1\n") &&
                info.contains("\nRig=Icom IC-7300\n") && info.endsWith("\n\nRPRT 0\n"))
        << info.toStdString();
}

// Several commands on one line, each with the response form its own mark asks for, and every form a
// command can be written in.
TEST(Rigctl, ALineCarriesSeveralCommandsEachAnsweredInItsOwnForm) {
    FakeRig rig;
    RigctlSession s(rig, QStringLiteral("Tolvane"));
    converse(s, {{"+f +m +v",
                  "get_freq:\nFrequency: 7010000\nRPRT 0\nget_mode:\nMode: CW\nPassband: 500\n"
                  "RPRT 0\nget_vfo:\nVFO: VFOA\nRPRT 0\n"},
                 {"f m v", "7010000\nCW\n500\nVFOA\n"},
                 {"F 14074000 f +t", "RPRT 0\n14074000\nget_ptt:\nPTT: 0\nRPRT 0\n"},
                 // A short command's letters run together, and its argument may follow at once.
                 {"ff", "14074000\n14074000\n"},
                 {"F7074000 f", "RPRT 0\n7074000\n"},
                 // A mode's passband may be left off at the end of the line, but not in its middle.
                 {"M USB", "RPRT 0\n"},
                 {"M USB f", "RPRT -1\n"},
                 // A word that names no command is answered, and the rest of the line still is.
                 {"\\frobnicate f", "RPRT -8\n7074000\n"},
                 {"F", "RPRT -1\n"}});
    // Every short form, and its one-byte forms above 0x7f, answers as the long name does.
    for (int b = 0x21; b < 0x100; ++b) {
        const QByteArray shortForm(1, char(b));
        const RigctlCommand* c = findRigctlCommand(shortForm);
        if (!c || c->op == RigctlOp::Quit) continue;
        FakeRig a, l;
        RigctlSession byShort(a, QStringLiteral("Tolvane")), byLong(l, QStringLiteral("Tolvane"));
        const QByteArray args = c->args > 0 ? " ?" : "";
        EXPECT_EQ(byShort.answer("+" + shortForm + args),
                  byLong.answer("+\\" + QByteArray(c->longName) + args))
            << c->longName;
    }
}

// After \set_vfo_opt 1 a client names a VFO in front of the arguments; another client is unchanged.
TEST(Rigctl, VfoModeIsTheClientsOwnAndTheVfoNamedIsTheOneAnswered) {
    FakeRig rig;
    RigctlSession s(rig, QStringLiteral("Tolvane")), other(rig, QStringLiteral("Tolvane"));
    rig.txFreq = 7020000;
    converse(s, {{"\\set_vfo_opt 1", "RPRT 0\n"},
                 {"\\chk_vfo", "1\n"},
                 {"f VFOA", "7010000\n"},
                 {"f VFOB", "7020000\n"},
                 {"+f currVFO", "get_freq: currVFO\nFrequency: 7010000\nRPRT 0\n"},
                 {"f", "RPRT -1\n"},
                 {"F VFOB  14030000", "RPRT 0\n"},
                 {"F Main 14025000", "RPRT 0\n"},
                 {"m VFOB", "CW\n500\n"},
                 {"M VFOB USB 0", "RPRT -11\n"},  // the transmit mode follows the receive mode
                 {"T VFOA 1", "RPRT 0\n"},
                 {"+v", "get_vfo: currVFO\nVFO: VFOA\nRPRT 0\n"},
                 {"l VFOA RAWSTR", "0\n"},
                 {"f VFOC", "RPRT -11\n"},
                 {"f VFOX", "RPRT -1\n"}});
    converse(other, {{"f", "14025000\n"}, {"\\chk_vfo", "0\n"}});
    EXPECT_EQ(rig.sets, QStringList({"tx 14030000", "freq 14025000", "ptt 1"}));
    converse(s, {{"\\set_vfo_opt 0", "RPRT 0\n"}, {"f", "14025000\n"}});
}

TEST(Rigctl, RefusalsSayWhyWithTheProtocolsCodes) {
    FakeRig rig;
    rig.c.ptt = rig.c.split = rig.c.meter = rig.c.dataMode = rig.c.vfoAB = false;
    rig.c.modes[RigPKT] = false;
    RigctlSession s(rig, QStringLiteral("Tolvane"));
    // Not this radio (-11), not served here (-4), no such command (-8), malformed (-1).
    converse(s, {{"t", "RPRT -11\n"},
                 {"T 1", "RPRT -11\n"},
                 {"S 1 VFOB", "RPRT -11\n"},
                 {"l STRENGTH", "RPRT -11\n"},
                 {"l RFPOWER", "RPRT -11\n"},
                 {"L RFPOWER 0.5", "RPRT -11\n"},
                 {"M WFM 0", "RPRT -11\n"},
                 {"M PKTUSB -1", "RPRT -11\n"},
                 {"M PKTLSB 0", "RPRT -11\n"},
                 {"V Sub", "RPRT -11\n"},
                 {"J 100", "RPRT -11\n"},
                 {"U RIT 1", "RPRT -11\n"},
                 {"b CQ CQ", "RPRT -11\n"},
                 {"\\stop_morse", "RPRT -11\n"},
                 {"\\power2mW 0.5 14074000 USB", "RPRT -11\n"},
                 {"\\get_clock", "RPRT -11\n"},
                 {"+\\stream_caps", "stream_caps:\nRPRT -11\n"},
                 {"w FA;", "RPRT -11\n"},
                 {"\\set_powerstat 0", "RPRT -11\n"},
                 {"Y 1 0", "RPRT -11\n"},
                 {"3", "RPRT -4\n"},
                 {"9", "RPRT -8\n"},
                 {"\\frobnicate", "RPRT -8\n"},
                 {"F -5", "RPRT -1\n"},
                 {"F 1e12", "RPRT -1\n"},
                 {"M XYZ 500", "RPRT -1\n"},
                 {"M USB 2400.5", "RPRT -1\n"},
                 {"V VFOX", "RPRT -1\n"},
                 {"T on", "RPRT -1\n"},
                 {"l FOO", "RPRT -1\n"},
                 {"u FOO", "RPRT -1\n"}});
    EXPECT_TRUE(rig.sets.isEmpty()) << rig.sets.join(QLatin1Char(',')).toStdString();
    // The program's queue said no: the client is told, and nothing changed.
    rig.accept = false;
    converse(s, {{"F 14025500", "RPRT -9\n"}, {"f", "7010000\n"}});
    // Raw commands only where the operator allows them.
    RigctlSession allowed(rig, QStringLiteral("Tolvane"), true);
    rig.accept = true;
    converse(allowed, {{"w FA;", "RPRT 0\n"}, {"\\send_cmd \\0xFE\\0xFE", "RPRT 0\n"}});
    EXPECT_EQ(rig.sets.mid(1), QStringList({"raw FA;", "raw \\0xFE\\0xFE"}));
}

TEST(Rigctl, StateAndCapsDumpsDescribeTheRadioAndSignalStrengthFollowsItsScale) {
    RigCaps caps;
    for (int m : {RigLSB, RigUSB, RigCW}) caps.modes[size_t(m)] = true;
    caps.mainSub = caps.radio = true;
    caps.name = QStringLiteral("Icom IC-9700");
    const QList<QByteArray> lines = rigctlDumpState(caps, QStringLiteral("Tolvane 9")).split('\n');
    ASSERT_GT(lines.size(), 30);
    EXPECT_EQ(lines[0], "1");  // protocol version 1: key=value lines follow the fixed part
    // Receive and transmit range, each ended: LSB|USB|CW, main and sub; a 1 Hz step; one width a mode.
    EXPECT_EQ(lines[3], "0.000000 999999990.000000 0xe -1 -1 0x6000000 0x1");
    EXPECT_EQ(lines.mid(4, 9), QList<QByteArray>({"0 0 0 0 0 0 0", lines[3], "0 0 0 0 0 0 0", "0xe 1", "0 0",
                                                  "0x8 2400", "0x4 2400", "0x2 500", "0 0"}));
    EXPECT_EQ(lines[21], "0x0") << "no levels without a meter";
    EXPECT_TRUE(lines.contains("ptt_type=0x0") && lines.contains("rigctld_version=Tolvane 9"));
    EXPECT_TRUE(lines.contains("timeout=1000")) << "never 0: a client would take half a second";
    EXPECT_EQ(lines[lines.size() - 2], "done");
    caps.meter = caps.ptt = true;
    caps.answerTimeoutMs = 9000;
    const QList<QByteArray> withMeter = rigctlDumpState(caps, QString()).split('\n');
    EXPECT_EQ(withMeter[21], "0x44000000") << "STRENGTH and RAWSTR";
    EXPECT_TRUE(withMeter.contains("ptt_type=0x1") && withMeter.contains("timeout=9000"));

    const QList<QByteArray> can = rigctlDumpCaps(caps).split('\n');
    EXPECT_EQ(can.count("Can set Mode:\tY") + can.count("Can set PTT:\tY") + can.count("Can set VFO:\tY") +
                  can.count("Can set Split VFO:\tN") + can.count("Can send Morse:\tN") +
                  can.count("Can get Level:\tY"),
              6);
    EXPECT_EQ(std::count_if(can.begin(), can.end(), [](const QByteArray& l) { return l.startsWith("Can "); }),
              63);
    EXPECT_TRUE(can.contains("Mode list: LSB USB CW ") && can.contains("VFO list: Main Sub currVFO "));

    // dB over S9 from the scale's label; without one, the full scale spans S0 to S9+60.
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("S0")), -54);
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("S5")), -24);
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("+20")), 20);
    EXPECT_EQ(rigctlStrength(0.2, QStringLiteral("S9+10")), 10);
    EXPECT_EQ(rigctlStrength(0.0, QStringLiteral("7")), -54);
    EXPECT_EQ(rigctlStrength(7.0, QString()), 60);
}

// Every form of the grammar, thrown together: an answer or nothing, always whole lines, and no set
// that the radio couldn't take.
TEST(Rigctl, RandomLinesGetAnAnswerOrNothingAndNeverAnInvalidSet) {
    const QByteArray words[] = {"f",
                                "F",
                                "m",
                                "M",
                                "V",
                                "T",
                                "S",
                                "I",
                                "X",
                                "K",
                                "k",
                                "l",
                                "L",
                                "u",
                                "U",
                                "J",
                                "b",
                                "w",
                                "q",
                                "\\dump_state",
                                "+",
                                ";",
                                "|",
                                "+f",
                                ",m",
                                "\\set_freq",
                                "USB",
                                "PKTUSB",
                                "CWR",
                                "VFOB",
                                "-1",
                                "0",
                                "1",
                                "2400.0",
                                "14025500",
                                "1e308",
                                "?",
                                "\xff",
                                "\x8b",
                                "\\set_vfo_opt",
                                "currVFO",
                                "Main",
                                "\\get_vfo_info",
                                "RIT",
                                "STRENGTH",
                                "#",
                                "\\dump_caps"};
    QRandomGenerator rnd(15);
    FakeRig rig;
    auto s = std::make_unique<RigctlSession>(rig, QStringLiteral("Tolvane"));
    for (int i = 0; i < 20000; ++i) {
        QByteArray line;
        for (int p = int(rnd.bounded(8)); p > 0; --p) {
            if (rnd.bounded(4) == 0)
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
        EXPECT_TRUE(!mode || (v >= 0 && v < int(kRigModeCount))) << set.toStdString();
        EXPECT_NE(f[0], QLatin1String("raw")) << "raw commands are off by default";
    }
}

}  // namespace
}  // namespace tv::test
