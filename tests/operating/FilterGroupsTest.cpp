// Named filter groups of an FT-1000MP through the whole program on virtual time: what a chosen group
// sends, what the radio's reported filters do to the group list (and that they send nothing back), and
// the group table's file, its edits and the question at shutdown.

#include "operating/MemoryFile.h"
#include "support/TestStation.h"

#include <QFile>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");

class FilterGroupsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        st.preset(G, QStringLiteral("Radio"), QStringLiteral("MP1000"));
        st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
        ASSERT_TRUE(start());
    }
    bool start() {
        rec = &st.record(QLatin1Char('Y'));
        if (!st.start()) return false;
        st.p().config.Interrogation.setChecked(false);
        m().queue().InitializeXcvrCmdBuffer();
        return true;
    }
    KavModule& m() { return st.m(); }
    KavMain& w() { return st.p().main; }
    KavConfig& c() { return st.p().config; }
    // The filter commands that left the queue since the last call, as "selector:value".
    QStringList sent() {
        for (int i = 0; i < 10 && m().queue().count() > 0; ++i) m().queue().ExecuteNextXcvrCmd();
        QStringList out;
        for (const XcvrCmd& cmd : rec->executed)
            if (cmd.theCmd == XcvrCmdFilters) out << QStringLiteral("%1:%2").arg(cmd.theArg2).arg(cmd.theArg);
        rec->executed.clear();
        return out;
    }
    // A frequency read of the radio: its mode, and the status codes of the three filters.
    void report(int mode, int first, int second, int sub) {
        const bool changed = mode != lastMode;
        lastMode = mode;
        m().state().UpdateXcvrMode(mode);
        FilterStatus status;
        status.modeChanged = changed;
        status.codes = {first, second, sub};
        m().state().ReportFilterStatus(status);
    }
    void pick(const char* group) { SetCombo(w().FilterGroupCombo, QString::fromLatin1(group)); }

    TestStation st;
    Recording* rec = nullptr;
    int lastMode = -1;
};

TEST_F(FilterGroupsTest, AGroupSendsItsThreeFiltersAndTheRadiosFiltersMoveTheListWithoutAnEcho) {
    // The defaults, in their order, and the three lists filled from the radio's filters.
    ASSERT_EQ(st.p().filterGroups.rows().size(), 12u);
    EXPECT_EQ(w().MainFilter1Combo.items(), QStringList({"thru", "2.4k", "2.0k", "500", "250"}));
    EXPECT_EQ(w().FilterGroupCombo.items(), QStringList({"", "Wide", "Narrow"}));
    EXPECT_EQ(c().YaesuFilterGroupFrame.caption(), QStringLiteral("Yaesu FT1000MP and Mark V"));

    // The first report of a mode brings the mode's remembered group to the radio.
    report(ModeCW, 1, 1, 1);
    EXPECT_EQ(sent(), QStringList({"0:0", "1:0", "2:128"}));
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Wide"));

    // The operator's choice: its row for CW, the three lists, the three commands in order.
    pick("Narrow");
    EXPECT_EQ(sent(), QStringList({"0:2", "1:0", "2:128"}));
    EXPECT_EQ(w().MainFilter1Combo.text(), QStringLiteral("500"));
    EXPECT_EQ(st.stored(G, QStringLiteral("ModeFilter3")), QStringLiteral("Narrow"));
    EXPECT_EQ(w().ModeSel[ModeCW].caption(), QStringLiteral("CW (Narrow)"));
    // The next read may have been asked before the commands went: its filters don't undo the choice.
    report(ModeCW, 1, 1, 1);
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Narrow"));

    // The radio's knob back to 2.4k: the lists and the group follow; nothing goes back to the radio.
    report(ModeCW, 1, 1, 1);
    EXPECT_EQ(w().MainFilter1Combo.text(), QStringLiteral("2.4k"));
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Wide"));
    EXPECT_EQ(m().state().ModeFilters[ModeCW], QStringLiteral("Wide"));
    EXPECT_TRUE(sent().isEmpty());

    // Two groups of the same filters and mode: the first one's name is shown, whichever was picked.
    st.p().filterGroups.AddGroup({"Contest", "CW", "500", "2.4k", "2.4k"});
    st.p().filterGroups.GridRowsChanged();
    pick("Contest");
    EXPECT_EQ(sent(), QStringList({"0:2", "1:0", "2:128"}));
    report(ModeCW, 3, 1, 1);
    report(ModeCW, 1, 1, 1);
    report(ModeCW, 3, 1, 1);
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Narrow"));
    EXPECT_TRUE(sent().isEmpty());

    // A name with no row for this mode sets no filters, and is still the mode's group.
    st.p().filterGroups.AddGroup({"DX", "SSB", "250", "250", "500"});
    st.p().filterGroups.GridRowsChanged();
    pick("DX");
    EXPECT_TRUE(sent().isEmpty());
    EXPECT_EQ(m().state().ModeFilters[ModeCW], QStringLiteral("DX"));
    EXPECT_EQ(st.stored(G, QStringLiteral("ModeFilter3")), QStringLiteral("DX"));
    // In a mode where it has a row, a change to that mode applies it.
    m().state().ModeFilters[ModeUSB] = QStringLiteral("DX");
    report(ModeUSB, 1, 1, 1);
    EXPECT_EQ(sent(), QStringList({"0:3", "1:3", "2:130"}));

    // A reported code that no entry has moves nothing.
    report(ModeUSB, 7, -8, 2);
    EXPECT_EQ(w().MainFilter1Combo.text(), QStringLiteral("250"));
    EXPECT_TRUE(sent().isEmpty());
}

TEST_F(FilterGroupsTest, TheGroupFileKeepsTheEditsAndACommaInANameSplitsTheRow) {
    Grid& g = c().YaesuFilterGroupGrid;
    ASSERT_FALSE(c().SaveGroupCmd.enabled());
    ASSERT_TRUE(g.editCell(0, 0, QStringLiteral("Wide, DX")));
    EXPECT_TRUE(c().SaveGroupCmd.enabled());
    EXPECT_TRUE(w().FilterGroupCombo.items().contains(QStringLiteral("Wide, DX")));

    // Saved where the settings live, under the usual name, which is then the group file.
    c().SaveGroupCmd.click();
    const QString path = st.configDir + QStringLiteral("/FilterGroupSettings.txt");
    EXPECT_EQ(c().GroupFilename.text(), path);
    EXPECT_FALSE(c().SaveGroupCmd.enabled());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_TRUE(f.readLine().startsWith("Wide, DX,SSB,2.4k,2.4k,2.4k\n"));
    f.close();
    // Read back, the name's comma starts another field: six fields, of which five are the row.
    c().LoadGroupCmd.click();
    EXPECT_EQ(g.rows().front(), (GridRow{"Wide", " DX", "SSB", "2.4k", "2.4k"}));
    EXPECT_EQ(g.rowCount(), 12);

    c().GroupFilename.setText(QString());
    c().LoadGroupCmd.click();
    c().GroupFilename.setText(st.configDir + QStringLiteral("/gone.txt"));
    c().LoadGroupCmd.click();
    EXPECT_EQ(st.dialogs.boxTexts().mid(st.dialogs.boxTexts().size() - 2),
              QStringList({"no filename specified", "unable to find " + st.configDir + "/gone.txt"}));

    // An unsaved edit is asked about at shutdown; yes saves it, and the file is read at the next start.
    c().GroupFilename.setText(path);
    g.deleteRow(11);
    ASSERT_TRUE(c().SaveGroupCmd.enabled());
    st.dialogs.answers.push_back(MsgAnswer::Yes);
    st.stop();
    EXPECT_TRUE(st.dialogs.boxTexts().contains(QStringLiteral("Save changes to Filter Group settings?")));
    ASSERT_TRUE(start());
    EXPECT_EQ(c().YaesuFilterGroupGrid.rowCount(), 11);
    EXPECT_EQ(c().GroupFilename.text(), path);

    // A stored file that has gone: said, and the defaults are used.
    st.stop();
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(start());
    EXPECT_EQ(st.dialogs.boxTexts().last(),
              "unable to load Filter Group definitions from " + path + " - using default definitions");
    EXPECT_EQ(c().YaesuFilterGroupGrid.rowCount(), 12);
}

TEST_F(FilterGroupsTest, ARecalledMemorysGroupGoesOutOnceForTheModeItWaitedFor) {
    st.stop();
    const QString memory = QStringLiteral("Memory");
    st.preset(memory, MemoryKey("Freq", 1), QStringLiteral("14,025.50"));
    st.preset(memory, MemoryKey("Mode", 1), QString::number(ModeCW));
    st.preset(memory, MemoryKey("Filter", 1), QStringLiteral("Narrow"));
    ASSERT_TRUE(start());
    report(ModeUSB, 1, 1, 1);
    EXPECT_EQ(sent(), QStringList({"0:0", "1:0", "2:128"}));
    // The memory's group goes out for its mode behind the mode command, which shows the mode as it
    // leaves; the radio's first read in CW, with whatever filters, neither sends it again nor undoes it.
    w().SelCmd[1].click();
    EXPECT_EQ(sent(), QStringList({"0:2", "1:0", "2:128"}));
    report(ModeCW, 1, 1, 1);
    EXPECT_TRUE(sent().isEmpty());
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Narrow"));
    EXPECT_EQ(m().state().ModeFilters[ModeCW], QStringLiteral("Narrow"));
}

TEST(FilterGroupFile, LinesSplitAtEveryCommaIntoFiveColumns) {
    const std::vector<FilterGroupRow> rows =
        ParseFilterGroupText(QStringLiteral("Wide,CW,500\r\n\nA,B,C,D,E,F,G\n"));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0], (FilterGroupRow{"Wide", "CW", "500", "", ""}));
    EXPECT_EQ(rows[1], (FilterGroupRow{"A", "B", "C", "D", "E"}));
    EXPECT_EQ(FormatFilterGroupText(rows), QStringLiteral("Wide,CW,500,,\nA,B,C,D,E\n"));
}

}  // namespace
}  // namespace tv::test
