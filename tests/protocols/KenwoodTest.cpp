// The Kenwood language byte for byte, through the whole program on virtual time: identification and what
// it decides, the strings of the queue's commands, the status and meter replies, the reply chain, and a
// decoder that survives whatever the line carries.

#include "protocols/kenwood/Kenwood.h"
#include "protocols/kenwood/KenwoodPassband.h"
#include "support/TestStation.h"

#include <gtest/gtest.h>


namespace tv::test {
namespace {

// An "IF" status reply with the fields where the radios put them: mode at 30, VFO at 31, split at 33.
QByteArray ifReply(long long hz, char mode, char vfo, char split = '0') {
    QByteArray r = "IF" + QByteArray::number(hz).rightJustified(11, '0');
    r += "     +000000000";  // step, RIT/XIT offset, RIT, XIT, memory channel
    r += '0';                // receiving
    r += mode;
    r += vfo;
    r += '0';  // not scanning
    r += split;
    r += "0080;";  // tone, tone number, offset
    return r;
}

class Kenwood : public ::testing::Test {
protected:
    // Brings up the catalogue's Kenwood on port 1, polling off; the radio then tells its ID.
    void bringUp(const char* id = nullptr) {
        st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QStringLiteral("TS-2000"));
        st.preset(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(QStringLiteral("General"), QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
        ASSERT_TRUE(st.serial() && st.serial()->isOpen());
        EXPECT_TRUE(st.serial()->written.startsWith("ID;ID;"));
        RadioState& s = m().state();
        QObject::connect(&s, &RadioState::passbandModelChosen, &s, [this](const PassbandModel* p) {
            if (p) filled << (p == TS2000Passband() ? "TS2000" : p == TS570Passband() ? "TS570" : "TS870");
        });
        QObject::connect(&s, &RadioState::identified, &s, [this](const RadioIdentity& who) {
            if (!who.meterFile.isEmpty()) meterFile = who.meterFile;
        });
        // What the lists were told, by the letters of the reply that told it.
        QObject::connect(&s, &RadioState::passbandTextReported, &s, [this](int list, const QString&) {
            filterReplies << (list == FilterWidth || list == FilterLowCut ? "FW" : "IS");
        });
        QObject::connect(&s, &RadioState::passbandCodeReported, &s,
                         [this](int list, int) { filterReplies << (list == FilterLowCut ? "SL" : "SH"); });
        QObject::connect(&s, &RadioState::meterReported, &s, [this](double v) { meter = v; });
        st.p().config.Interrogation.setChecked(false);
        m().queue().InitializeXcvrCmdBuffer();
        st.loop.advance(1000);
        if (id) radioSays(id);
        st.serial()->written.clear();
    }
    QByteArray radioSays(const QByteArray& bytes) {
        st.serial()->written.clear();
        st.serial()->feed(bytes);
        st.loop.runPosted();
        return st.serial()->written;
    }
    QByteArray sentAfterTick() {
        st.serial()->written.clear();
        st.loop.advance(st.p().module.queue().XcvrCmdTimer.Interval());
        return st.serial()->written;
    }
    KavModule& m() { return st.m(); }
    KenwoodProtocol& kw() { return *dynamic_cast<KenwoodProtocol*>(m().radio().protocol()); }
    bool catalogueMeter() { return kw().model() && kw().model()->sMeter; }
    QString modelName() { return kw().model() ? QString::fromLatin1(kw().model()->modelName) : QString(); }

    TestStation st;
    QStringList filled, filterReplies;
    QString meterFile;
    double meter = -1;
};

TEST(KenwoodModes, EncoderAndDecoderAreDeliberatelyNotInverses) {
    EXPECT_EQ(KenwoodMode(ModePKT), 2);
    EXPECT_EQ(KenwoodMode(ModeWBFM), 4);
    EXPECT_EQ(KenwoodMode(ModeRTTYR), 9);
    EXPECT_EQ(KenwoodMode(ModeUnknown), 0);
    EXPECT_EQ(KenwoodMode(-1), 0);
    EXPECT_EQ(GetModeFromKenwoodStatus('8'), ModeCW);
    EXPECT_EQ(GetModeFromKenwoodStatus(5), ModeAM);
    EXPECT_EQ(GetModeFromKenwoodStatus('0'), ModeUnknown);
    EXPECT_EQ(GetModeFromKenwoodStatus('A'), ModeUnknown);
    // Every mode but PKT and WBFM survives a round trip.
    for (int mode = 0; mode < 10; ++mode) {
        const int back = GetModeFromKenwoodStatus(KenwoodMode(mode));
        if (mode == ModePKT) EXPECT_EQ(back, ModeUSB);
        else if (mode == ModeWBFM) EXPECT_EQ(back, ModeFM);
        else EXPECT_EQ(back, mode) << mode;
    }
}

TEST_F(Kenwood, IdentificationOfAKnownModelTurnsOnItsMeterListsAndAutoInformation) {
    bringUp();
    EXPECT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood (model unknown)"));
    m().state().CurrentVFO = 1;
    EXPECT_EQ(radioSays("ID019;"), QByteArray("AI1;FR0;FT0;"));
    EXPECT_EQ(kw().modelId(), 19);
    EXPECT_EQ(modelName(), QStringLiteral("TS2000"));
    EXPECT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood TS-2000"));
    EXPECT_EQ(m().state().CurrentVFO, 0);
    EXPECT_TRUE(catalogueMeter());
    EXPECT_FALSE(st.p().main.SMeterDummy.visible());
    EXPECT_EQ(filled, QStringList{QStringLiteral("TS2000")});
    EXPECT_EQ(meterFile, QStringLiteral("TS-2000"));
    EXPECT_TRUE(st.log().contains(QStringLiteral("Kenwood model ID: 019")));
    // Both TS-570 variants share one scale file.
    EXPECT_EQ(radioSays("ID018;"), QByteArray("AI1;FR0;FT0;"));
    EXPECT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood TS-570S"));
    EXPECT_EQ(meterFile, QStringLiteral("TS-570D"));
    // A meter model without passband lists.
    filled.clear();
    EXPECT_EQ(radioSays("ID010;"), QByteArray("AI1;FR0;FT0;"));
    EXPECT_TRUE(filled.isEmpty());
    EXPECT_EQ(meterFile, QStringLiteral("TS-450"));
}

TEST_F(Kenwood, UnknownAndOldModels) {
    bringUp();
    auto& w = st.p().main;
    w.ModeSel[7].setVisible(false);
    w.ModeSel[8].setVisible(false);
    meterFile = QStringLiteral("untouched");
    EXPECT_EQ(radioSays("ID007;"), QByteArray("FR0;FT0;"));
    EXPECT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood 007"));
    EXPECT_TRUE(modelName().isEmpty());
    EXPECT_FALSE(catalogueMeter());  // the catalogue said yes; the radio's own answer wins
    EXPECT_TRUE(w.SMeterDummy.visible());
    EXPECT_EQ(meterFile, QStringLiteral("untouched"));
    EXPECT_TRUE(w.ModeSel[7].visible() && w.ModeSel[8].visible());
    EXPECT_TRUE(st.p().main.caption().contains(QStringLiteral("Kenwood 007")));

    // The oldest radios' "N0;", VFO select and split commands are in the TS-440S wire transcript.
    radioSays("ID004;");
    EXPECT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood TS-440S"));
    // Not numeric: the model stays as it was, and the failure is reported under the decoder's name.
    EXPECT_TRUE(radioSays("IDx1;").isEmpty());
    EXPECT_EQ(kw().modelId(), 0);
    EXPECT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood TS-440S"));
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavModule.DecodeKenwoodMessage")));
}

TEST_F(Kenwood, QueueCommandsLeaveAsTheirStringsInOneBurst) {
    bringUp("ID019;");
    m().state().RadioFreq = 7010.001;
    const struct {
        std::function<void()> call;
        const char* sent;
    } cases[] = {
        // On VFO A, and the VFO and keying commands, are in the wire transcripts.
        {[&] { m().state().CurrentVFO = 1; m().queue().SetXcvrSplit(true); }, "FR1;FT0;"},
        {[&] { m().queue().SetXcvrSplit(false); }, "FT1;FR1;"},
        {[&] { m().queue().SetXcvrFreq(14025.5); }, "FB00014025500;"},
        {[&] { m().queue().SetXcvrSBFreq(21000.001); }, "FB00021000001;"},
        {[&] { m().queue().SetXcvrDual(true); m().queue().SetXcvrMain(); m().queue().SetXcvrMainSubXch(); }, ""},
    };
    for (const auto& c : cases) {
        c.call();
        EXPECT_EQ(sentAfterTick(), QByteArray(c.sent)) << c.sent;
    }
    EXPECT_DOUBLE_EQ(m().state().VFOBFreq, 21000.001);
    // The requests leave at once, past the queue.
    st.serial()->written.clear();
    m().state().CurrentVFO = 1;
    m().queue().RequestFrequency();
    m().state().CurrentVFO = 0;
    m().queue().RequestFrequency();
    m().queue().RequestMode();
    EXPECT_EQ(st.serial()->written, QByteArray("FB;FA;MD;"));
    // Equal and exchange are made of frequency and mode commands; the program swaps its own copies.
    m().state().CurrentVFO = 0;
    m().state().VFOAFreq = 3500;
    m().state().VFOAMode = ModeCW;
    m().state().VFOBFreq = 14200;
    m().state().VFOBMode = ModeUSB;
    m().queue().SetXcvrVFOXch();
    EXPECT_EQ(sentAfterTick(), QByteArray("MD2;FA00014200000;FB00003500000;"));
    EXPECT_DOUBLE_EQ(m().state().VFOAFreq, 14200);
    EXPECT_EQ(m().state().VFOBMode, ModeCW);
}

TEST_F(Kenwood, FrequenciesNoFieldHoldsAreRefusedNotWrapped) {
    bringUp("ID019;");
    for (const char* f : {"inf", "1e20", "100000000"}) {
        st.p().suiteLink.DoQSY(QString::fromLatin1(f));
        EXPECT_TRUE(sentAfterTick().isEmpty()) << f;
    }
    // Refused at the door: the largest any family's command carries is the Kenwood field's.
    EXPECT_EQ(st.log().count(QStringLiteral("DDEServerModule.DoQSY")), 3);
    st.p().suiteLink.DoQSY(QStringLiteral("99999999.999"));
    EXPECT_EQ(sentAfterTick(), QByteArray("FA99999999999;"));
}

TEST_F(Kenwood, PacketGoesOutAsUsbAndTheStatusReplyShowsUsbWithoutAnEcho) {
    bringUp("ID019;");
    m().queue().SetXcvrMode(ModePKT);
    EXPECT_EQ(sentAfterTick(), QByteArray("MD2;"));
    EXPECT_EQ(m().state().RadioMode, ModePKT);
    EXPECT_TRUE(radioSays(ifReply(14070000, '2', '0')).isEmpty());
    EXPECT_EQ(m().state().RadioMode, ModeUSB);
    EXPECT_TRUE(st.p().main.ModeSel[ModeUSB].value());
    // The radio's split and mode, set into the controls, don't go back to it as commands.
    EXPECT_TRUE(radioSays(ifReply(14070000, '3', '0', '1')).isEmpty());
    EXPECT_TRUE(st.p().main.SplitBox.checked());
    EXPECT_EQ(m().state().RadioMode, ModeCW);
    EXPECT_TRUE(sentAfterTick().isEmpty());
    EXPECT_TRUE(radioSays(ifReply(14070000, '3', '0', '0')).isEmpty());
    EXPECT_FALSE(st.p().main.SplitBox.checked());
    EXPECT_TRUE(sentAfterTick().isEmpty());
    EXPECT_EQ(m().queue().count(), 0);
}

TEST_F(Kenwood, StatusAndVfoReplies) {
    bringUp("ID019;");
    radioSays(ifReply(7025000, '1', '1'));
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 7025);
    EXPECT_DOUBLE_EQ(m().state().VFOBFreq, 7025);
    EXPECT_EQ(m().state().VFOBMode, ModeLSB);
    EXPECT_EQ(m().state().CurrentVFO, 1);
    radioSays(ifReply(14025500, '2', '0'));
    EXPECT_DOUBLE_EQ(m().state().VFOAFreq, 14025.5);
    EXPECT_EQ(m().state().VFOAMode, ModeUSB);
    // On a memory channel: the display moves, neither VFO does.
    radioSays(ifReply(3573000, '7', '2'));
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 3573);
    EXPECT_EQ(m().state().RadioMode, ModeCWR);
    EXPECT_EQ(m().state().CurrentVFO, 2);
    EXPECT_DOUBLE_EQ(m().state().VFOAFreq, 14025.5);
    EXPECT_DOUBLE_EQ(m().state().VFOBFreq, 7025);
    EXPECT_EQ(m().state().VFOAMode, ModeUSB);
    EXPECT_EQ(m().state().VFOBMode, ModeLSB);
    // FA and FB only note the VFO; FR selects; MD reports the mode; lower-case letters count too.
    radioSays("FA00010100000;fb00018100000;FR1;");
    EXPECT_DOUBLE_EQ(m().state().VFOAFreq, 10100);
    EXPECT_DOUBLE_EQ(m().state().VFOBFreq, 18100);
    EXPECT_EQ(m().state().CurrentVFO, 1);
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 3573);
    radioSays("MD8;");
    EXPECT_EQ(m().state().RadioMode, ModeCW);
    EXPECT_EQ(m().state().VFOBMode, ModeLSB);
    // Refusals and replies of no interest change nothing.
    radioSays("?;FT1;LK0;RM10000;");
    EXPECT_EQ(m().state().CurrentVFO, 1);
    // A non-numeric frequency abandons the message before anything moved.
    radioSays("IF0001402x000;");
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 3573);
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavModule.DecodeKenwoodMessage")));
}

TEST_F(Kenwood, PassbandValuesByModel) {
    bringUp("ID017;");
    m().queue().SetXcvrFilters(-300, 6);
    m().queue().SetXcvrFilters(300, 6);
    m().queue().SetXcvrFilters(7, 3);
    m().queue().SetXcvrFilters(12, 4);
    m().queue().SetXcvrFilters(500, 5);
    EXPECT_EQ(sentAfterTick(), QByteArray("IS-0300;IS 0300;SH07;SL12;FW0500;"));
    radioSays("ID019;");
    m().queue().SetXcvrFilters(-300, 6);
    m().queue().SetXcvrFilters(5, 3);
    EXPECT_EQ(sentAfterTick(), QByteArray("IS -0300;SH05;"));
    radioSays("ID015;");
    m().queue().SetXcvrFilters(2400, 3);
    m().queue().SetXcvrFilters(30, 4);
    m().queue().SetXcvrFilters(50, 5);
    m().queue().SetXcvrFilters(800, 6);
    EXPECT_EQ(sentAfterTick(), QByteArray("IS 2400;FW0030;FW0050;IS 0800;"));
    radioSays("ID010;");
    m().queue().SetXcvrFilters(2400, 3);
    EXPECT_TRUE(sentAfterTick().isEmpty());
}

// A radio that was off when it was chosen never heard "ID;": it is asked when it first speaks, and now
// and then after, until it answers with its model.
TEST_F(Kenwood, ARadioOffAtBringUpIsIdentifiedWhenItFirstAnswers) {
    bringUp();
    EXPECT_EQ(radioSays(ifReply(7010000, '3', '0')), QByteArray("ID;"));
    QByteArray asked;
    for (int i = 0; i < 19; ++i) asked += radioSays(ifReply(7010000, '3', '0'));
    EXPECT_TRUE(asked.isEmpty());
    EXPECT_EQ(radioSays(ifReply(7010000, '3', '0')), QByteArray("ID;"));
    EXPECT_EQ(radioSays("ID019;"), QByteArray("AI1;FR0;FT0;"));
    EXPECT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood TS-2000"));
    EXPECT_TRUE(radioSays(ifReply(7010000, '3', '0')).isEmpty());
}

// Replies that spell numbers no radio would: a meter below zero, a width of two thousand million.
TEST_F(Kenwood, OutlandishNumbersInRepliesAreHarmless) {
    bringUp("ID015;");
    st.p().common.SetDebug(true);
    radioSays(ifReply(7010000, '5', '0'));  // AM: the TS-870 shows no shift and no high cut
    radioSays("IS 0300;");
    EXPECT_FALSE(st.log().contains(QStringLiteral("IS freq: ")));
    radioSays(ifReply(7010000, '3', '0'));
    radioSays("IS 0300;");
    EXPECT_TRUE(st.log().contains(QStringLiteral("IS freq: 300")));
    radioSays("FW2e9 ;");
    radioSays("SM-001;");
    EXPECT_GE(meter, -1.0);
    EXPECT_EQ(m().state().RadioMode, ModeCW);
}

TEST_F(Kenwood, MeterReplyStartsTheChainThatFollowsThePassband) {
    bringUp("ID019;");
    radioSays(ifReply(14200000, '2', '0'));
    EXPECT_EQ(radioSays("SM00015;"), QByteArray("SL;"));
    EXPECT_DOUBLE_EQ(meter, 0.5);
    EXPECT_EQ(radioSays("SL03;"), QByteArray("SH;"));
    EXPECT_TRUE(radioSays("SH07;").isEmpty());
    EXPECT_EQ(filterReplies, (QStringList{QStringLiteral("SL"), QStringLiteral("SH")}));
    // The CW chain (width, then shift) of each model is in the wire transcripts.
    radioSays("MD6;");  // RTTY on the TS-2000: width, but no shift
    EXPECT_TRUE(radioSays("FW0250;").isEmpty());
    radioSays("MD5;");
    EXPECT_TRUE(radioSays("SM00001;").isEmpty());

    radioSays("ID017;");  // TS-570: full scale 15, no receiver digit
    radioSays("MD2;");
    EXPECT_EQ(radioSays("SM0015;"), QByteArray("SL;"));
    EXPECT_DOUBLE_EQ(meter, 1.0);
    EXPECT_EQ(radioSays("SH06;"), QByteArray("IS;"));
    filterReplies.clear();
    // Short replies: SL and SH leave the lists alone but the chain goes on; a short IS is dropped.
    EXPECT_EQ(radioSays("SL;"), QByteArray("SH;"));
    EXPECT_EQ(radioSays("SH1;"), QByteArray("IS;"));
    EXPECT_TRUE(radioSays("IS+03;").isEmpty());
    EXPECT_TRUE(filterReplies.isEmpty());
    EXPECT_EQ(radioSays("FW0080;"), QByteArray("IS;"));
    radioSays("IS+0300;");
    EXPECT_EQ(filterReplies, (QStringList{QStringLiteral("FW"), QStringLiteral("IS")}));

    radioSays("ID015;");  // TS-870: width and shift in every mode
    radioSays("MD5;");
    EXPECT_EQ(radioSays("SM0010;"), QByteArray("FW;"));
    EXPECT_FLOAT_EQ(float(meter), 10 / 30.0f);
    EXPECT_EQ(radioSays("FW0020;"), QByteArray("IS;"));
    EXPECT_EQ(radioSays("SL05;"), QByteArray("SH;"));  // on any model

    radioSays("ID013;");  // no meter: the reply is ignored
    meter = -1;
    radioSays("SM0030;");
    EXPECT_EQ(meter, -1);
}

}  // namespace
}  // namespace tv::test
