// The rig server's protocol on the whole program, on virtual time: gets cost the radio nothing, sets
// leave as the operator's gestures would, a get right after a set has the new value, and a client can
// never fill the queue. Then the server's settings, its log lines and the main window's label.

#include "netserver/Rigctl.h"
#include "support/PtyPair.h"
#include "support/TestStation.h"

#include <QTcpSocket>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString kGeneral = QStringLiteral("General");

class ProgramRigTest : public ::testing::Test {
  protected:
    void bringUp(const char* radio) {
        st.preset(kGeneral, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(kGeneral, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(kGeneral, QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
        st.p().config.Interrogation.setChecked(false);
        st.m().queue().InitializeXcvrCmdBuffer();
        st.loop.advance(1000);
        st.serial()->written.clear();
        session = std::make_unique<RigctlSession>(st.p().rig, QStringLiteral("Tolvane"));
    }
    QByteArray ask(const char* line) { return session->answer(QByteArray(line)); }
    // What leaves for the radio until the queue is empty.
    QByteArray sent() {
        st.serial()->written.clear();
        for (int i = 0; i < 40 && (st.m().queue().count() > 0 || i == 0); ++i) st.loop.advance(200);
        return st.serial()->written;
    }

    TestStation st;
    std::unique_ptr<RigctlSession> session;
};

QByteArray civ(const char* hex) {
    return QByteArray::fromHex(hex);
}

TEST_F(ProgramRigTest, IcomGetsCostNothingAndSetsLeaveAsTheOperatorsGestures) {
    bringUp("IC-756PRO");
    for (int i = 0; i < 50; ++i)
        for (const char* get : {"f", "m", "v", "s", "t", "i", "x", "l STRENGTH", "\\dump_state"}) ask(get);
    EXPECT_EQ(sent(), QByteArray()) << "a get never reaches the radio";

    struct Step {
        const char* set;
        const char* get;  // asked at once, before the command has left
        const char* answer;
        const char* frame;  // what then leaves, from its start
    };
    for (const Step& step :
         {Step{"F 14025500.000000", "f", "14025500\n", "FEFE5CE0050055021400FD"},
          Step{"M USB 2400", "m", "USB\n2400\n", "FEFE5CE0060102FD"}, Step{"T 1", "t", "1\n", "FEFE5CE01C0001FD"},
          // Keyed until the receive command has left.
          Step{"T 0", "t", "1\n", "FEFE5CE01C0000FD"},
          // Split alone: the receive VFO stays, as a digital-mode program expects.
          Step{"S 1 VFOB", "s", "1\nVFOB\n", "FEFE5CE00F01FD"},
          Step{"V VFOB", "v", "VFOB\n", "FEFE5CE00701FD"}, Step{"V VFOA", "v", "VFOA\n", "FEFE5CE00700FD"}}) {
        EXPECT_EQ(ask(step.set), "RPRT 0\n") << step.set;
        EXPECT_EQ(ask(step.get), step.answer) << step.set;
        const QByteArray out = sent();
        EXPECT_TRUE(out.startsWith(civ(step.frame))) << step.set << ": " << out.toHex(' ').toStdString();
    }
    EXPECT_EQ(ask("t"), "0\n");
    EXPECT_EQ(st.p().main.FreqDisplay.text(), QStringLiteral("14,025.50"));
    // The transmit frequency goes by way of VFO B; the receive frequency is still what clients read.
    EXPECT_EQ(ask("I 14030000"), "RPRT 0\n");
    EXPECT_EQ(ask("f"), "14025500\n");
    EXPECT_EQ(ask("i"), "14030000\n");
    const QByteArray viaB = sent();
    EXPECT_TRUE(viaB.startsWith(civ("FEFE5CE00701FD")) && viaB.contains(civ("050000031400FD")) &&
                viaB.endsWith(civ("FEFE5CE00700FD")))
        << viaB.toHex(' ').toStdString();

    st.m().state().ReportMeter(0.5);
    EXPECT_EQ(ask("l RAWSTR"), "128\n");
    // A client that outruns the radio is refused before the queue overflows: no box for the operator.
    int refused = 0;
    for (int i = 0; i < 400; ++i) refused += ask("F 7000000") == "RPRT -9\n";
    EXPECT_GT(refused, 100);
    EXPECT_TRUE(st.dialogs.shown.empty());
}

// A client that tunes and reads back (a digital-mode program's resolution probe) reads what the radio
// reports after the change, not the number it asked for; and a data mode this radio doesn't have is
// refused with nothing on its line.
TEST_F(ProgramRigTest, AFrequencyReadAfterATuneIsTheRadiosOwnReport) {
    bringUp("IC-756PRO");
    st.p().config.Interrogation.setChecked(true);
    EXPECT_EQ(ask("M PKTUSB -1"), "RPRT -11\n");
    EXPECT_EQ(ask("F 14025505"), "RPRT 0\n");
    EXPECT_EQ(ask("f m"), "") << "held until the radio reports";
    EXPECT_TRUE(session->holding());
    const QByteArray out = sent();
    EXPECT_TRUE(out.startsWith(civ("FEFE5CE0050555021400FD"))) << out.toHex(' ').toStdString();
    EXPECT_EQ(session->resume(), "");
    // The radio's dial goes in 10 Hz steps.
    st.serial()->feed(civ("FEFEE05C030055021400FD"));
    st.loop.advance(10);
    const QByteArray answer = session->resume();
    EXPECT_TRUE(answer.startsWith("14025500\n") && answer.count('\n') == 3) << answer.toStdString();
}

// A passband picks the nearest of the radio's filter positions, as the operator would from the list,
// and "m" reports the width of the position in force; 0 leaves the position the mode has.
TEST_F(ProgramRigTest, APassbandPicksTheNearestFilterAndIsReadBack) {
    bringUp("IC-756PRO");
    EXPECT_EQ(ask("M CW 300"), "RPRT 0\n");
    EXPECT_EQ(ask("m"), "CW\n250\n");
    EXPECT_EQ(sent(), civ("FEFE5CE0060303FD"));
    EXPECT_EQ(ask("M CW 0"), "RPRT 0\n");
    EXPECT_EQ(ask("m"), "CW\n250\n");
    EXPECT_EQ(sent(), civ("FEFE5CE0060303FD")) << "the mode keeps its filter";
    EXPECT_EQ(ask("M USB 2800"), "RPRT 0\n");
    EXPECT_EQ(ask("m"), "USB\n3000\n");
    EXPECT_EQ(sent(), civ("FEFE5CE0060101FD"));
}

// Output power, SWR and ALC are read only while a client asks, each read taking a meter read's place
// (the line carries no more), and a read waits for the radio's report; a radio whose commands can't read
// them says "not available".
TEST_F(ProgramRigTest, TransmitLevelsAreReadInPlaceOfMeterReadsWhileAClientAsks) {
    bringUp("IC-7300");
    st.p().config.Interrogation.setChecked(true);
    const QByteArray power = civ("FEFE94E0140AFD"), meter = civ("FEFE94E01502FD");
    auto polls = [&](int ms) {
        st.serial()->written.clear();
        st.loop.advance(ms);
        return st.serial()->written;
    };
    const QByteArray quiet = polls(4000);
    EXPECT_FALSE(quiet.contains(power));
    EXPECT_EQ(ask("l RFPOWER"), "") << "held until the radio reports";
    const QByteArray asked = polls(4000);
    EXPECT_TRUE(asked.contains(power)) << asked.toHex(' ').toStdString();
    EXPECT_EQ(asked.count(power) + asked.count(meter), quiet.count(meter)) << "in a meter read's place";
    st.serial()->feed(civ("FEFEE094140A0128FD"));
    st.loop.advance(10);
    EXPECT_EQ(session->resume(), "0.501961\n");
    EXPECT_EQ(ask("l SWR"), "");
    polls(2000);
    st.serial()->feed(civ("FEFEE09415120048FD"));
    st.loop.advance(10);
    EXPECT_EQ(session->resume(), "1.500000\n");
    EXPECT_EQ(ask("l ?"), "RAWSTR STRENGTH RFPOWER SWR ALC \n");
    polls(4000);
    EXPECT_FALSE(polls(4000).contains(power)) << "reads stop when the asking does";
}

TEST_F(ProgramRigTest, AKenwoodReadsItsPowerSettingAndHasNoDataMode) {
    bringUp("TS-2000");
    // Its command set has no data mode: refused, with nothing on the line.
    EXPECT_EQ(ask("M PKTUSB -1"), "RPRT -11\n");
    EXPECT_EQ(sent(), QByteArray());
    st.p().config.Interrogation.setChecked(true);
    EXPECT_EQ(ask("l SWR"), "RPRT -11\n");
    EXPECT_EQ(ask("l RFPOWER"), "");
    st.serial()->written.clear();
    st.loop.advance(3000);
    EXPECT_TRUE(st.serial()->written.contains("PC;")) << st.serial()->written.toStdString();
    st.serial()->feed("PC050;");
    st.loop.advance(10);
    EXPECT_EQ(session->resume(), "0.500000\n");
}

// The transmission has one owner: another client can neither unkey nor take it over, the operator
// always can, and a client that keyed and goes away leaves the radio unkeyed.
TEST_F(ProgramRigTest, TheTransmissionHasOneOwnerAndGoesWithIt) {
    bringUp("IC-756PRO");
    session->setClient(QStringLiteral("rig client A"));
    RigctlSession other(st.p().rig, QStringLiteral("Tolvane"));
    other.setClient(QStringLiteral("rig client B"));
    const QByteArray key = civ("FEFE5CE01C0001FD"), unkey = civ("FEFE5CE01C0000FD");
    EXPECT_EQ(ask("T 1"), "RPRT 0\n");
    EXPECT_EQ(sent(), key);
    EXPECT_EQ(other.answer("T 0"), "RPRT -9\n");
    EXPECT_EQ(other.answer("T 1"), "RPRT -9\n");
    EXPECT_EQ(other.answer("t"), "1\n");
    EXPECT_EQ(sent(), QByteArray()) << "nothing of B's reaches the radio";
    EXPECT_TRUE(st.p().main.NetServerLabel.caption().endsWith(QStringLiteral(" - PTT: rig client A")))
        << st.p().main.NetServerLabel.caption().toStdString();
    st.p().main.PTTOffCmd.click();  // the operator
    EXPECT_EQ(sent(), unkey);
    EXPECT_EQ(other.answer("T 1"), "RPRT 0\n");
    EXPECT_EQ(sent(), key);
    st.p().rig.clientGone(QStringLiteral("rig client A"));
    EXPECT_EQ(sent(), QByteArray()) << "A holds nothing now";
    st.serial()->written.clear();
    st.p().rig.clientGone(QStringLiteral("rig client B"));
    EXPECT_EQ(st.serial()->written, unkey) << "at once, ahead of the queue";
    EXPECT_EQ(ask("t"), "0\n");
    st.p().main.PTTonCmd.click();
    sent();
    EXPECT_EQ(ask("T 0"), "RPRT -9\n") << "the operator's transmission is the operator's";
    EXPECT_EQ(sent(), QByteArray());
    // Each change of owner is in the log, in order, with who asked.
    qsizetype at = 0;
    for (const char* line : {"KavModule: transmitting for rig client A",
                             "RigServer: rig client B refused to unkey: rig client A is transmitting",
                             "KavModule: unkeyed by window, over rig client A", "KavModule: transmitting for rig client B",
                             "keyed by rig client B, which has gone; unkeyed (transmitting for rig client B)",
                             "KavModule: transmitting for window",
                             "RigServer: rig client A refused to unkey: window is transmitting"}) {
        at = st.log().indexOf(QLatin1String(line), at);
        EXPECT_GE(at, 0) << line << "\n" << st.log().toStdString();
    }
}

// A radio lost while keyed gets the receive command first when it answers again.
TEST_F(ProgramRigTest, ARadioFoundAgainAfterItWasLostWhileKeyedIsUnkeyedFirst) {
    bringUp("IC-756PRO");
    st.p().config.Interrogation.setChecked(true);
    EXPECT_EQ(ask("T 1"), "RPRT 0\n");
    for (int i = 0; i < 600 && st.m().state().Responding; ++i) st.loop.advance(100);
    ASSERT_FALSE(st.m().state().Responding);
    EXPECT_EQ(ask("f"), "RPRT -5\n");
    st.serial()->written.clear();
    st.serial()->feed(civ("FEFEE05C030055021400FD"));
    st.loop.advance(1);
    EXPECT_TRUE(st.serial()->written.startsWith(civ("FEFE5CE01C0000FD"))) << st.serial()->written.toHex(' ').toStdString();
    EXPECT_EQ(ask("t"), "0\n");
    EXPECT_EQ(ask("f"), "14025500\n");
}

// A client's lock shows on the main window, which can lift it.
TEST_F(ProgramRigTest, TheWindowShowsAClientsLockAndLiftsIt) {
    bringUp("IC-756PRO");
    CommandButton& unlock = st.p().main.NetServerUnlockCmd;
    EXPECT_FALSE(unlock.visible());
    EXPECT_EQ(ask("\\set_lock_mode 1"), "RPRT 0\n");
    EXPECT_TRUE(unlock.visible());
    EXPECT_TRUE(st.p().main.NetServerLabel.caption().contains(QStringLiteral("locked")));
    EXPECT_EQ(ask("F 7000000"), "RPRT 0\n");
    EXPECT_EQ(sent(), QByteArray()) << "ignored while locked";
    unlock.click();
    EXPECT_FALSE(unlock.visible());
    EXPECT_EQ(ask("\\get_lock_mode"), "0\nRPRT 0\n");
}

TEST_F(ProgramRigTest, NoKeyedPeriodOutlastsTheTransmitTimeOut) {
    st.preset(kGeneral, QStringLiteral("TxTimeout"), QStringLiteral("60"));
    bringUp("IC-756PRO");
    EXPECT_EQ(ask("T 1"), "RPRT 0\n");
    sent();
    st.serial()->written.clear();
    st.loop.advance(58000);
    EXPECT_EQ(ask("t"), "1\n");
    st.loop.advance(3000);
    EXPECT_TRUE(st.serial()->written.contains(civ("FEFE5CE01C0000FD")));
    EXPECT_EQ(ask("t"), "0\n");
    EXPECT_TRUE(st.p().main.caption().contains(QStringLiteral("unkeyed after 60 s transmitting")))
        << st.p().main.caption().toStdString();
}

TEST_F(ProgramRigTest, ARadioWithoutTransmitLevelsSaysSo) {
    bringUp("IC-756PRO");
    EXPECT_EQ(ask("l RFPOWER"), "RPRT -11\n");
    EXPECT_EQ(ask("l ?"), "RAWSTR STRENGTH \n");
}

TEST_F(ProgramRigTest, ListensWhereTheSettingsSayAndShowsItsClients) {
    st.preset(kGeneral, QStringLiteral("NetServerAddress"), QStringLiteral("localhost"));
    st.onCreate = [](Program& p) { p.netOptions = {true, 0}; };  // port 0: any free one
    bringUp("IC-756PRO");
    RigServer& server = st.p().netServer.server();
    ASSERT_TRUE(server.isListening());
    const QString where = QStringLiteral("127.0.0.1:%1").arg(server.serverPort());
    Label& label = st.p().main.NetServerLabel;
    EXPECT_EQ(label.caption(), QStringLiteral("Rig server %1, 0 clients").arg(where));
    EXPECT_TRUE(st.log().contains(QStringLiteral("NetServer: listening on ") + where));
    EXPECT_EQ(st.stored(kGeneral, QStringLiteral("NetServerPort")), QStringLiteral("4532"));
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, server.serverPort());
    EXPECT_TRUE(waitFor([&] { return label.caption().endsWith(QLatin1String(", 1 client")); }));
    client.abort();
    EXPECT_TRUE(waitFor([&] { return label.caption().endsWith(QLatin1String(", 0 clients")); }));
    // The configuration window restarts the servers on the stored settings.
    st.p().config.NetworkRestartCmd.click();
    EXPECT_TRUE(server.isListening());
    EXPECT_EQ(st.log().count(QStringLiteral("NetServer: listening on ")), 2);
    st.stop();

    // Another network's address needs a password; with one it is warned of, and one that isn't this
    // computer's can't be listened on.
    st.preset(kGeneral, QStringLiteral("NetServerAddress"), QStringLiteral("192.0.2.1"));
    ASSERT_TRUE(st.start());
    EXPECT_TRUE(st.log().contains(QStringLiteral(
        "NetServer: not listening on 192.0.2.1:0: a password is needed to listen on anything but loopback")));
    EXPECT_EQ(st.p().main.NetServerLabel.caption(), QStringLiteral("Rig server: cannot listen on 192.0.2.1:0"));
    st.stop();
    st.preset(kGeneral, QStringLiteral("NetServerPassword"), QStringLiteral("secret"));
    ASSERT_TRUE(st.start());
    EXPECT_TRUE(
        st.log().contains(QStringLiteral("NetServer: warning: listening on 192.0.2.1, not on loopback")));
    EXPECT_EQ(st.p().main.NetServerLabel.caption(),
              QStringLiteral("Rig server: cannot listen on 192.0.2.1:0"));
    st.stop();
    st.preset(kGeneral, QStringLiteral("NetServerEnabled"), QStringLiteral("F"));
    ASSERT_TRUE(st.start());
    EXPECT_EQ(st.p().main.NetServerLabel.caption(), QStringLiteral("Rig server off"));
}

}  // namespace
}  // namespace tv::test
