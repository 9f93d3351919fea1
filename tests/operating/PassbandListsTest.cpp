// The passband lists of the Kenwood models: what each mode offers, and a value read from the radio
// mirrored into its list without going back to the radio.

#include "support/TestStation.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

class KenwoodFilterLists : public ::testing::Test {
protected:
    void start(const char* id) {
        st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QStringLiteral("TS-2000"));
        st.preset(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(QStringLiteral("General"), QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
        radio(id);
        st.loop.advance(1000);
    }
    void radio(const char* text) {
        st.serial()->feed(QByteArray(text));
        st.loop.runPosted();
    }
    int filterCommands() {
        int n = 0;
        for (const XcvrCmd& c : st.m().queue().queued()) n += c.theCmd == XcvrCmdFilters;
        return n;
    }
    KavMain& w() { return st.p().main; }
    TestStation st;
};

TEST_F(KenwoodFilterLists, TheModeDecidesWhichListsShowAndWhatTheWidthListHolds) {
    start("ID019;");
    ASSERT_EQ(st.m().state().RadioDisplayName, QStringLiteral("Kenwood TS-2000"));
    EXPECT_EQ(w().ShiftCombo.ListCount(), 13);  // 400 to 1000 by 50
    radio("MD1;");
    EXPECT_TRUE(w().HighCutoffCombo.visible());
    EXPECT_FALSE(w().ShiftCombo.visible());  // a TS-2000 in sideband has no shift
    radio("MD3;");
    EXPECT_FALSE(w().HighCutoffCombo.visible());
    EXPECT_TRUE(w().WidthCombo.visible());
    EXPECT_TRUE(w().ShiftCombo.visible());
    EXPECT_EQ(w().WidthCombo.ListCount(), 11);
    // A width read from the radio goes into the list and is not sent back.
    st.m().queue().InitializeXcvrCmdBuffer();
    radio("FW0500;");
    EXPECT_EQ(w().WidthCombo.text(), QStringLiteral("500"));
    EXPECT_EQ(filterCommands(), 0);
    // The operator's choice is sent.
    w().WidthCombo.setListIndex(0);
    EXPECT_EQ(filterCommands(), 1);
    // The high cut-off arrives as a code, found in the table.
    radio("MD1;");
    radio("SH05;");
    EXPECT_EQ(w().HighCutoffCombo.text(), QStringLiteral("2400"));
    EXPECT_EQ(filterCommands(), 1);
}

TEST_F(KenwoodFilterLists, TheTs570ShowsShiftInSidebandAndRoundsItToTheList) {
    start("ID018;");
    ASSERT_EQ(st.m().state().RadioDisplayName, QStringLiteral("Kenwood TS-570S"));
    radio("MD2;");
    radio("MD1;");
    EXPECT_TRUE(w().ShiftCombo.visible());
    for (const auto& [reply, shown] : std::vector<std::pair<const char*, const char*>>{
             {"IS+0149;", "100"}, {"IS+0150;", "200"}, {"IS-0150;", "-200"}, {"IS-0149;", "-100"}}) {
        radio(reply);
        EXPECT_EQ(w().ShiftCombo.text(), QString::fromLatin1(shown)) << reply;
    }
    // Its high cut-offs count down: the last entry is code 0.
    radio("SH00;");
    EXPECT_EQ(w().HighCutoffCombo.text(), QStringLiteral("5000"));
}

TEST_F(KenwoodFilterLists, ATs870RefillsTheWidthListOnEveryModeChange) {
    start("ID015;");
    ASSERT_EQ(st.m().state().RadioDisplayName, QStringLiteral("Kenwood TS-870S"));
    radio("MD3;");
    w().WidthCombo.AddItem(QStringLiteral("stray"));
    radio("MD7;");  // CW to CW-R: the same layout, laid out again
    EXPECT_EQ(w().WidthCombo.ListCount(), 6);
    radio("MD1;");
    radio("FW0030;");  // tens of hertz: the low cut-off of 300
    EXPECT_EQ(w().LowCutoffCombo.text(), QStringLiteral("300"));
}

}  // namespace
}  // namespace tv::test
