// The CI-V language byte for byte, through the whole program on virtual time: what goes on the wire
// for the queue's commands, and what each kind of message on the bus does to the program's state.

#include "protocols/icom/Icom.h"
#include "support/TestStation.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

QByteArray hex(const char* text) { return QByteArray::fromHex(QByteArray(text)); }

class Icom : public ::testing::Test {
protected:
    // Brings up a radio of the test catalogue on port 1, polling off, the queue empty.
    void bringUp(const char* radio, const char* address = nullptr) {
        st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(QStringLiteral("General"), QStringLiteral("Interrogate"), QStringLiteral("F"));
        st.preset(QStringLiteral("General"), QStringLiteral("MessageCapture"), QStringLiteral("T"));
        if (address) st.preset(QStringLiteral("General"), QStringLiteral("RadioId"), QString::fromLatin1(address));
        ASSERT_TRUE(st.start());
        ASSERT_TRUE(st.serial() && st.serial()->isOpen());
        // A radio whose meter is polled keeps polling on: switch it off for byte-exact checks.
        st.p().config.Interrogation.setChecked(false);
        m().queue().InitializeXcvrCmdBuffer();
        st.loop.advance(1000);
        st.serial()->written.clear();
    }
    // The radio speaks: the bytes arrive through the port's event.
    void radioSays(const QByteArray& bytes) {
        st.serial()->feed(bytes);
        st.loop.runPosted();
    }
    QByteArray sentAfterTick() {
        st.serial()->written.clear();
        st.loop.advance(st.p().module.queue().XcvrCmdTimer.Interval());
        return st.serial()->written;
    }
    KavModule& m() { return st.m(); }
    TestStation st;
};

TEST_F(Icom, FrequencyFramesFollowTheFilterByteFlagAndRoundAwayBinaryFractions) {
    bringUp("IC-756PRO");
    m().queue().SetXcvrFreq(14025.5);
    EXPECT_EQ(sentAfterTick(), hex("FEFE5CE0050055021400FD"));
    m().queue().SetXcvrFreq(7010.001);  // 7010.001 in binary is a hair below: must still give 1 Hz
    EXPECT_EQ(sentAfterTick(), hex("FEFE5CE0050100010700FD"));
    m().queue().SetXcvrFreq(1296000.0);
    EXPECT_EQ(sentAfterTick(), hex("FEFE5CE0050000009612FD"));
    // What no frame can hold is refused and reported, and nothing is cut down to fit.
    for (const char* f : {"inf", "nan", "1e20", "10000000"}) {
        st.p().suiteLink.DoQSY(QString::fromLatin1(f));
        EXPECT_TRUE(sentAfterTick().isEmpty()) << f;
    }
    // No family's frame holds the first three: refused at the door; the last only CI-V can't hold.
    EXPECT_EQ(st.log().count(QStringLiteral("DDEServerModule.DoQSY")), 3);
    EXPECT_EQ(st.log().count(QStringLiteral("no CI-V frame holds")), 1);
    EXPECT_EQ(IcomFrequencyBytes(0.001, true), hex("0100000000"));
    EXPECT_EQ(IcomFrequencyBytes(9999999.999, true), hex("9999999999"));
}

TEST_F(Icom, OldRadioReportsFourBytes) {
    bringUp("IC-735");  // its commands' four-byte frames are in the IC-735 wire transcript
    radioSays(hex("FEFEE0040300550214FD"));
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 14025.5);
    // A mode report of eight bytes from a radio without the filter byte: the byte is ignored.
    const int group = m().state().RadioFilterGroup;
    radioSays(hex("FEFEE004040302FD"));
    EXPECT_EQ(m().state().RadioMode, 3);
    EXPECT_EQ(m().state().RadioFilterGroup, group);
}

TEST_F(Icom, MainSubAndFilterCommandsHaveTheirFrames) {
    bringUp("IC-756PRO");
    const struct {
        std::function<void()> call;
        const char* frame;
    } cases[] = {
        // The rest of the frames, with the requests of an interrogation, are in the wire transcripts.
        {[&] { m().queue().SetXcvrMainSubEqual(); }, "07B1"}, {[&] { m().queue().SetXcvrMainSubXch(); }, "07B0"},
        {[&] { m().queue().SetXcvrFilters(1, 2); }, ""},
    };
    for (const auto& c : cases) {
        c.call();
        const QByteArray want = c.frame[0] ? hex("FEFE5CE0") + hex(c.frame) + hex("FD") : QByteArray();
        EXPECT_EQ(sentAfterTick().toHex(), want.toHex()) << c.frame;
    }
}

TEST_F(Icom, ReportsSetTheStateEchoesAndOtherRadiosDoNot) {
    bringUp("IC-756PRO");
    auto& mon = st.p().messages;
    mon.ClearMessageDisplay();
    // Our own request comes back from the bus: shown, but not taken as a report.
    radioSays(hex("FEFE5CE003FD"));
    EXPECT_TRUE(mon.HexDisplay.contains(QStringLiteral("FE FE 5C E0  3 FD")));
    EXPECT_EQ(m().state().RadioFreq, 0);
    radioSays(hex("FEFEE05C030055021400FD"));
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 14025.5);
    radioSays(hex("FEFEE046030000000700FD"));  // another radio on the bus
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 14025.5);
    radioSays(hex("FEFE005C000000000000FD"));  // transceive broadcast of 0 Hz
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 0);
    radioSays(hex("FEFE005C010502FD"));
    EXPECT_EQ(m().state().RadioMode, 5);
    EXPECT_EQ(m().state().RadioFilterGroup, 2);
    radioSays(hex("FEFEE05C040A01FD"));  // mode 10: no such mode, nothing changes
    EXPECT_EQ(m().state().RadioMode, 5);
    double meter = -1;
    QObject::connect(&m().state(), &RadioState::meterReported, &m().state(), [&](double v) { meter = v; });
    radioSays(hex("FEFEE05C15020255FD"));
    EXPECT_DOUBLE_EQ(meter, 1.0);
    radioSays(hex("FEFEE05C15020128FD"));
    EXPECT_DOUBLE_EQ(meter, 128 / 255.0);
}

TEST_F(Icom, ARejectionIsShownAndReinterrogates) {
    bringUp("IC-756PRO");
    // (An acknowledgement's pacing is in the scheduler's tests and the wire transcripts.)
    m().queue().SetXcvrFreq(7000);
    sentAfterTick();
    // NG: the notice names the refused command, auto-repeat stops, a fresh interrogation is queued.
    st.p().main.AutoRepeatTimer.setInterval(100);
    st.p().main.AutoRepeatTimer.setEnabled(true);
    const int before = m().queue().count();
    radioSays(hex("FEFEE05CFAFD"));
    auto& reject = st.p().messages.reject;
    EXPECT_TRUE(reject.visible());
    EXPECT_EQ(reject.Command.caption(), QStringLiteral("Set Frequency"));
    EXPECT_EQ(reject.Time.caption().size(), 20);  // dd-mmm-yyyy hh:nn:ss
    EXPECT_FALSE(st.p().main.AutoRepeatTimer.Enabled());
    EXPECT_EQ(m().queue().count(), before + 4);
}

TEST_F(Icom, FilterGroupsFollowTheRadiosThirdPosition) {
    st.preset(QStringLiteral("General"), QStringLiteral("ModeFilter3"), QStringLiteral("Normal"));
    st.preset(QStringLiteral("General"), QStringLiteral("ModeFilter1"), QStringLiteral("narrow"));
    st.preset(QStringLiteral("General"), QStringLiteral("ModeFilter0"), QStringLiteral("garbage"));
    bringUp("IC-735");  // no FILTER0
    // Each stored name is put right as written ("narrow" is "Narrow", nonsense no group), and only then
    // does the radio decide: without the third position "Normal" is used as "Wide", and kept.
    EXPECT_EQ(st.stored(QStringLiteral("General"), QStringLiteral("ModeFilter3")), QStringLiteral("Normal"));
    EXPECT_EQ(st.stored(QStringLiteral("General"), QStringLiteral("ModeFilter1")), QStringLiteral("Narrow"));
    EXPECT_EQ(st.stored(QStringLiteral("General"), QStringLiteral("ModeFilter0")), QString());
    EXPECT_EQ(m().state().ModeFilters[3], QStringLiteral("Wide"));
    EXPECT_EQ(m().state().ModeFilters[0], QStringLiteral("Wide"));
    EXPECT_EQ(st.p().main.FilterGroupCombo.items(), (QStringList{QStringLiteral("Wide"), QStringLiteral("Narrow")}));
    st.stop();
    st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QStringLiteral("IC-756PRO"));
    st.preset(QStringLiteral("General"), QStringLiteral("ModeFilter3"), QStringLiteral("Normal"));
    ASSERT_TRUE(st.start());
    EXPECT_EQ(st.stored(QStringLiteral("General"), QStringLiteral("ModeFilter3")), QStringLiteral("Normal"));
    EXPECT_EQ(st.p().main.FilterGroupCombo.ListCount(), 3);
    // A mode command uses the group remembered for the mode, and the display follows at once.
    st.p().config.Interrogation.setChecked(false);
    m().queue().InitializeXcvrCmdBuffer();
    st.p().config.ModeFiltersEnabledCheck.setChecked(true);
    m().queue().SetXcvrMode(3);
    EXPECT_EQ(sentAfterTick(), hex("FEFE5CE0060303FD"));
    EXPECT_EQ(m().state().RadioMode, 3);
    EXPECT_EQ(st.p().main.FilterGroupCombo.text(), QStringLiteral("Normal"));
}

TEST_F(Icom, AddressesInBothRadixesAndTheDefaultFillsOnlyAnEmptyOrZeroField) {
    bringUp("IC-756PRO", "0");
    EXPECT_EQ(st.p().config.Address.text(), QStringLiteral("5C"));  // "0" counts as not set
    EXPECT_EQ(st.p().config.DefaultAddress.caption(), QStringLiteral("Default: 5C"));
    st.p().config.Address.setText(QStringLiteral("70"));
    st.selectRadio(QStringLiteral("IC-775"));
    EXPECT_EQ(st.p().config.Address.text(), QStringLiteral("70"));  // the operator's value survives
    ASSERT_TRUE(m().ValidID());
    EXPECT_EQ(m().radio().RadioAddress, QByteArray("\x70"));
    // Lower-case hexadecimal passes the check but reads wrong: kept as the radios' own tools have it.
    st.p().config.Address.setText(QStringLiteral("5c"));
    EXPECT_TRUE(m().ValidID());
    EXPECT_NE(m().radio().RadioAddress, QByteArray("\x5C"));
    st.p().config.Address.setText(QStringLiteral("1FF"));
    EXPECT_FALSE(m().ValidID());
    EXPECT_TRUE(st.dialogs.boxTexts().contains(
        QStringLiteral("CI-V address must be a hexadecimal number between 0 and FF")));
    EXPECT_TRUE(st.p().config.Address.text().isEmpty());
    // Decimal: the field converts, and the default reads in decimal.
    st.p().config.Address.setText(QStringLiteral("5C"));
    st.p().config.DecSel.userClick();
    EXPECT_EQ(st.p().config.Address.text(), QStringLiteral("92"));
    EXPECT_EQ(st.p().config.DefaultAddress.caption(), QStringLiteral("Default: 70"));
    st.p().config.Address.setText(QStringLiteral("256"));
    EXPECT_FALSE(m().ValidID());
    EXPECT_TRUE(st.dialogs.boxTexts().contains(QStringLiteral("CI-V address must be a decimal number between 0 and 255")));
}

TEST_F(Icom, ChangingRadioDropsQueuedRecordsAndTheInitialCommandGoesFirst) {
    bringUp("IC-756PRO");
    m().queue().SetXcvrFreq(3500);
    st.p().config.InitialXcvrCommand.setText(QStringLiteral("FE"));
    st.selectRadio(QStringLiteral("IC-775"));
    st.serial()->written.clear();
    st.loop.advance(st.p().module.queue().XcvrCmdTimer.Interval());
    EXPECT_EQ(st.serial()->written, hex("FE"));  // the raw byte, and no frequency for the old radio
    st.p().config.InitialXcvrCommand.setText(QStringLiteral("'PS1;"));
    st.selectRadio(QStringLiteral("TS-2000"));
    st.loop.advance(st.p().module.queue().XcvrCmdTimer.Interval());
    EXPECT_TRUE(st.serial()->written.endsWith("PS1;"));
    EXPECT_FALSE(st.serial()->written.contains(hex("05")));
}

}  // namespace
}  // namespace tv::test
