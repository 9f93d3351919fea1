// TenTec's command sets byte for byte through the whole program on virtual time, the reply decoder on
// its own, and the Pegasus bridge through a real folder.

#include "protocols/tentec/TenTec.h"
#include "support/TestStation.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

QString dataCatalogue() {
    QFile f(QStringLiteral(TOLVANE_SOURCE_DIR "/data/Radios.txt"));
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

class TenTec : public ::testing::Test {
  protected:
    TenTec() : st(dataCatalogue()) {}
    void bringUp(const char* radio, const QString& folder = QString()) {
        st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("1"));
        if (!folder.isEmpty()) st.preset(QStringLiteral("General"), QStringLiteral("ControlFolder"), folder);
        ASSERT_TRUE(st.start());
        st.p().config.Interrogation.setChecked(false);
        m().queue().InitializeXcvrCmdBuffer();
        st.loop.advance(1000);
        if (st.serial()) st.serial()->written.clear();
    }
    void radioSays(const QByteArray& bytes) {
        st.serial()->feed(bytes);
        st.loop.runPosted();
    }
    QByteArray sentAfterTick() {
        st.serial()->written.clear();
        st.loop.advance(m().queue().XcvrCmdTimer.Interval());
        return st.serial()->written;
    }
    QString caption() {
        m().UpdateCaption();
        return st.p().main.caption();
    }
    KavModule& m() { return st.m(); }
    TestStation st;
};

TEST(TenTecReplies, MeterDigitsAndBinaryFrequencies) {
    // "S" reply: the digit's place in 0-F, of 16; a lower-case letter isn't a digit.
    EXPECT_DOUBLE_EQ(DecodeTenTecMessage("S0F\r", false).meter, 1.0);
    EXPECT_DOUBLE_EQ(DecodeTenTecMessage("S00\r", false).meter, 1.0 / 16);
    EXPECT_DOUBLE_EQ(DecodeTenTecMessage("s0f\r", false).meter, 0.0);
    // Four bytes of hertz, most significant first, both ways.
    EXPECT_EQ(JupiterFreqString(14250000.4), QByteArray::fromHex("00D97010"));
    const TenTecReply b =
        DecodeTenTecMessage(QByteArray("B") + QByteArray::fromHex("00D97010") + '\r', false);
    EXPECT_EQ(b.kind, TenTecReply::FreqB);
    EXPECT_DOUBLE_EQ(b.kHz, 14250.0);
    // Short or foreign messages say nothing.
    for (const char* m : {"A\r", "@AF\r", "Q\r", "", "@KVXYZ\r", "@RMX1\r"})
        EXPECT_EQ(DecodeTenTecMessage(m, QByteArray(m).startsWith('@')).kind, TenTecReply::Ignored) << m;
}

TEST(TenTecReplies, PegasusOutNeedsTwoLines) {
    const auto r = ReadPegasusOut("14.0705\r\nusb\r\n");
    ASSERT_TRUE(r);
    EXPECT_DOUBLE_EQ(r->kHz, 14070.5);
    EXPECT_EQ(r->mode, ModeUSB);
    EXPECT_EQ(ReadPegasusOut("7.01\r\nRTTY")->mode, ModeUnknown);
    EXPECT_FALSE(ReadPegasusOut("14.0705\r\n"));
    EXPECT_FALSE(ReadPegasusOut("x\nUSB\n"));
}

TEST_F(TenTec, OrionReadsBothFrequencyFormsAndTheKvStateWithoutAnswering) {
    bringUp("ORION");
    radioSays("@AF14250000\r");
    EXPECT_DOUBLE_EQ(m().state().VFOAFreq, 14250.0);
    m().state().VFOAFreq = 0;
    radioSays("@AF14.25\r");
    EXPECT_DOUBLE_EQ(m().state().VFOAFreq, 14250.0);
    st.serial()->written.clear();
    radioSays("@KVAAB\r");
    EXPECT_TRUE(st.p().main.SplitBox.checked());
    EXPECT_FALSE(st.p().main.DualBox.checked());
    st.loop.advance(1000);
    EXPECT_TRUE(st.serial()->written.isEmpty());
    // The one "*KV" command for split and dual takes the other switch from its box.
    m().queue().SetXcvrDual(true);
    EXPECT_EQ(sentAfterTick(), QByteArray("*KVABB\r"));
    st.p().main.DualBox.setChecked(true);
    m().queue().InitializeXcvrCmdBuffer();
    m().queue().SetXcvrSplit(true);
    EXPECT_EQ(sentAfterTick(), QByteArray("*KVABB\r"));
}

TEST_F(TenTec, OrionRefusalNamesTheCommandAndItsBytes) {
    bringUp("ORION");
    m().queue().SetXcvrMode(ModeCW);
    EXPECT_EQ(sentAfterTick(), QByteArray("*RMM\x02\r"));
    radioSays("Z!XY\r");
    auto& reject = st.p().messages.reject;
    EXPECT_TRUE(reject.visible());
    EXPECT_EQ(reject.Command.caption(), QStringLiteral("Set Mode (XY)"));
}

TEST_F(TenTec, JupiterModeCommandKeepsTheOtherVfosMode) {
    bringUp("JUPITER");
    radioSays("M21\r");  // A LSB, B USB
    radioSays("EB\r");
    ASSERT_EQ(m().state().CurrentVFO, 1);
    m().queue().SetXcvrMode(ModeCW);
    EXPECT_EQ(sentAfterTick(), QByteArray("*M\x02\x03\r"));
    m().queue().SetXcvrFreq(7010.2);
    EXPECT_EQ(sentAfterTick(), QByteArray("*B") + JupiterFreqString(7010200) + '\r');
}

TEST_F(TenTec, PegasusWritesAndFollowsTheFolder) {
    QTemporaryDir dir;
    bringUp("PEGASUS", dir.path());
    const QString in = dir.filePath(QStringLiteral("PEGASUS.IN"));
    // No "PEGASUS.OUT" yet: no complaint.
    m().queue().InterrogateRadio();
    st.loop.advance(1000);
    EXPECT_FALSE(caption().contains(QStringLiteral("control folder")));
    m().state().RadioMode = ModeUSB;
    m().queue().SetXcvrFreq(14070.5);
    st.loop.advance(1000);
    QFile f(in);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), QByteArray("14.0705\r\nUSB\r\n"));
    f.close();
    QFile::remove(in);
    m().queue().SetXcvrMode(ModeRTTY);
    st.loop.advance(1000);
    EXPECT_FALSE(QFile::exists(in));
    // The other program's file, named with either separator, is followed.
    QFile out(dir.filePath(QStringLiteral("PEGASUS.OUT")));
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    out.write("7.0102\r\nCW\r\n");
    out.close();
    st.p().config.Interrogation.setChecked(true);
    st.loop.advance(2000);
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 7010.2);
    EXPECT_EQ(m().state().RadioMode, ModeCW);
    // A folder text that names a file is no folder.
    st.p().config.RadioFolder.setText(dir.filePath(QStringLiteral("PEGASUS.OUT")));
    st.loop.advance(1000);
    EXPECT_TRUE(caption().contains(QStringLiteral("control folder doesn't exist")));
    st.p().config.RadioFolder.setText(QString());
    st.loop.advance(1000);
    EXPECT_TRUE(caption().contains(QStringLiteral("control folder not specified")));
}

}  // namespace
}  // namespace tv::test
