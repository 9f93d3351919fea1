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
        st.m().InitializeXcvrCmdBuffer();
        st.loop.advance(1000);
        st.serial()->written.clear();
        session = std::make_unique<RigctlSession>(st.p().rig, QStringLiteral("Tolvane"));
    }
    QByteArray ask(const char* line) { return session->answer(QByteArray(line)); }
    // What leaves for the radio until the queue is empty.
    QByteArray sent() {
        st.serial()->written.clear();
        for (int i = 0; i < 40 && (st.m().XcvrCmdCount > 0 || i == 0); ++i) st.loop.advance(200);
        return st.serial()->written;
    }

    TestStation st;
    std::unique_ptr<RigctlSession> session;
};

QByteArray civ(const char* hex) { return QByteArray::fromHex(hex); }

TEST_F(ProgramRigTest, IcomGetsCostNothingAndSetsLeaveAsTheOperatorsGestures) {
    bringUp("IC-756PRO");
    for (int i = 0; i < 50; ++i)
        for (const char* get : {"f", "m", "v", "s", "t", "i", "x", "l STRENGTH", "\\dump_state"}) ask(get);
    EXPECT_EQ(sent(), QByteArray()) << "a get never reaches the radio";

    EXPECT_EQ(ask("F 14025500.000000"), "RPRT 0\n");
    EXPECT_EQ(ask("f"), "14025500\n") << "shown before it leaves";
    EXPECT_EQ(st.p().main.FreqDisplay.text(), QStringLiteral("14,025.50"));
    EXPECT_EQ(sent(), civ("FEFE5CE0050055021400FD"));

    EXPECT_EQ(ask("M USB 2400"), "RPRT 0\n");
    EXPECT_EQ(ask("m"), "USB\n2400\n");
    EXPECT_TRUE(st.p().main.ModeSel[1].value());
    EXPECT_TRUE(sent().startsWith(civ("FEFE5CE00601")));

    EXPECT_EQ(ask("T 1"), "RPRT 0\n");
    EXPECT_EQ(ask("t"), "1\n");
    EXPECT_EQ(sent(), civ("FEFE5CE01C0001FD"));
    EXPECT_EQ(ask("T 0"), "RPRT 0\n");
    EXPECT_EQ(ask("t"), "0\n");
    EXPECT_EQ(sent(), civ("FEFE5CE01C0000FD"));

    // Split alone: the receive VFO stays where it is, as a digital-mode program expects.
    EXPECT_EQ(ask("S 1 VFOB"), "RPRT 0\n");
    EXPECT_EQ(ask("s"), "1\nVFOB\n");
    EXPECT_TRUE(st.p().main.SplitBox.checked());
    EXPECT_EQ(sent(), civ("FEFE5CE00F01FD"));

    // The transmit frequency goes by way of VFO B; the receive frequency is still what clients read.
    EXPECT_EQ(ask("I 14030000"), "RPRT 0\n");
    EXPECT_EQ(ask("f"), "14025500\n");
    EXPECT_EQ(ask("i"), "14030000\n");
    const QByteArray viaB = sent();
    EXPECT_TRUE(viaB.contains(civ("FEFE5CE00701FD")) && viaB.contains(civ("050000031400FD")) &&
                viaB.endsWith(civ("FEFE5CE00700FD")))
        << viaB.toHex(' ').toStdString();

    EXPECT_EQ(ask("V VFOB"), "RPRT 0\n");
    EXPECT_EQ(ask("v"), "VFOB\n");
    EXPECT_TRUE(sent().startsWith(civ("FEFE5CE00701FD")));

    st.m().hooks.UpdateSMeter(0.5);
    EXPECT_EQ(ask("l RAWSTR"), "128\n");

    // A client that outruns the radio is refused before the queue overflows: no box for the operator.
    int refused = 0;
    for (int i = 0; i < 400; ++i) refused += ask("F 7000000") == "RPRT -9\n";
    EXPECT_GT(refused, 100);
    EXPECT_LE(st.m().XcvrCmdCount, KavModule::kBufferSlots);
    EXPECT_TRUE(st.dialogs.shown.empty());
}

TEST_F(ProgramRigTest, KenwoodSplitAndVfosFollowTheRadiosOwnReports) {
    bringUp("TS-2000");
    EXPECT_EQ(ask("S 1 VFOB"), "RPRT 0\n");
    EXPECT_EQ(sent(), "FR0;FT1;");
    EXPECT_EQ(ask("I 7012000"), "RPRT 0\n");
    EXPECT_EQ(ask("i"), "7012000\n");
    EXPECT_EQ(sent(), "FB00007012000;");
    EXPECT_EQ(ask("V VFOB"), "RPRT 0\n");
    EXPECT_EQ(ask("v"), "VFOB\n");
    // The radio says it is on VFO A after all, split off: that is what clients read then.
    // Status reply: frequency, step and offsets, receiving, CW, VFO A, not scanning, simplex, tones.
    st.serial()->feed("IF00007010000     +000000000" "0" "3" "0" "0" "0" "0080;");
    st.loop.runPosted();
    EXPECT_EQ(ask("v"), "VFOA\n");
    EXPECT_EQ(ask("s"), "0\nVFOA\n");
    EXPECT_EQ(ask("f"), "7010000\n");
}

TEST_F(ProgramRigTest, ListensWhereTheSettingsSayAndShowsItsClients) {
    st.preset(kGeneral, QStringLiteral("NetServerAddress"), QStringLiteral("localhost"));
    st.onCreate = [](Program& p) {
        p.netOptions.allowed = true;
        p.netOptions.port = 0;  // any free port
    };
    bringUp("IC-756PRO");
    RigServer& server = st.p().netServer.server();
    ASSERT_TRUE(server.isListening());
    const QString where = QStringLiteral("127.0.0.1:%1").arg(server.serverPort());
    Label& label = st.p().main.NetServerLabel;
    EXPECT_EQ(label.caption(), QStringLiteral("Rig server %1, 0 clients").arg(where));
    EXPECT_TRUE(st.log().contains(QStringLiteral("NetServer: listening on ") + where));
    EXPECT_EQ(st.stored(kGeneral, QStringLiteral("NetServerEnabled")), QStringLiteral("True"));
    EXPECT_EQ(st.stored(kGeneral, QStringLiteral("NetServerPort")), QStringLiteral("4532"));

    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, server.serverPort());
    ASSERT_TRUE(waitFor([&] { return label.caption().endsWith(QLatin1String(", 1 client")); }));
    client.write("f\n");
    ASSERT_TRUE(waitFor([&] { return client.canReadLine(); }));
    client.abort();
    EXPECT_TRUE(waitFor([&] { return label.caption().endsWith(QLatin1String(", 0 clients")); }));
    st.stop();
    EXPECT_TRUE(st.log().contains(QStringLiteral("NetServer: closed")));

    // An address of another network is warned of; one that isn't this computer's can't be listened on.
    st.preset(kGeneral, QStringLiteral("NetServerAddress"), QStringLiteral("192.0.2.1"));
    ASSERT_TRUE(st.start());
    EXPECT_TRUE(st.log().contains(QStringLiteral("NetServer: warning: listening on 192.0.2.1, not on loopback")));
    EXPECT_TRUE(st.log().contains(QStringLiteral("NetServer: cannot listen on 192.0.2.1:0")));
    EXPECT_EQ(st.p().main.NetServerLabel.caption(), QStringLiteral("Rig server: cannot listen on 192.0.2.1:0"));
    st.stop();

    st.preset(kGeneral, QStringLiteral("NetServerEnabled"), QStringLiteral("F"));
    ASSERT_TRUE(st.start());
    EXPECT_FALSE(st.p().netServer.server().isListening());
    EXPECT_EQ(st.p().main.NetServerLabel.caption(), QStringLiteral("Rig server off"));
}

}  // namespace
}  // namespace tv::test
