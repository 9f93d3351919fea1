// The memory banks and their notes through the whole program on virtual time: what a recall queues on
// each kind of radio, what storing and editing a row keep, and what the bank and notes panes show.

#include "forms/MemoryNotes.h"
#include "operating/Memories.h"
#include "support/TestStation.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tv::test {
namespace {

const QString kGeneral = QStringLiteral("General");
const QString kMemory = QStringLiteral("Memory");

// One queued record as the test compares it: code, mode, argument (the filter group of a mode record).
struct Rec {
    int cmd, mode = 0, arg = 0;
    double freq = 0;
    bool operator==(const Rec& o) const { return cmd == o.cmd && mode == o.mode && arg == o.arg && freq == o.freq; }
};
std::ostream& operator<<(std::ostream& os, const Rec& r) {
    return os << "{" << r.cmd << "," << r.mode << "," << r.arg << "," << r.freq << "}";
}

class MemoryBank : public ::testing::Test {
protected:
    // Memory n preset in the store, as a former run left it.
    void presetMemory(int n, const QString& freq, int mode, const QString& filter = QStringLiteral("Wide"), bool split = false,
                      const QString& notes = QString()) {
        st.preset(kMemory, MemoryKey("Freq", n), freq);
        st.preset(kMemory, MemoryKey("Mode", n), QString::number(mode));
        st.preset(kMemory, MemoryKey("Filter", n), filter);
        st.preset(kMemory, MemoryKey("Split", n), split ? QStringLiteral("1") : QStringLiteral("0"));
        st.preset(kMemory, MemoryKey("Notes", n), notes);
    }
    void bringUp(const char* radio) {
        st.preset(kGeneral, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(kGeneral, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(kGeneral, QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
        st.p().config.Interrogation.setChecked(false);
        m().queue().InitializeXcvrCmdBuffer();
    }
    std::vector<Rec> queued() {
        std::vector<Rec> out;
        for (const XcvrCmd& c : m().queue().queued())
            out.push_back({c.theCmd, c.theCmd == XcvrCmdMode ? c.theMode : 0, c.theCmd == XcvrCmdMode ? c.theArg : 0,
                           c.theCmd == XcvrCmdFreq ? c.theFreq : 0});
        return out;
    }
    void recall(int row) {
        m().queue().InitializeXcvrCmdBuffer();
        w().SelCmd[row].click();
    }
    QString stored(const QString& key) {
        st.loop.runPosted();
        return st.stored(kMemory, key);
    }
    KavModule& m() { return st.m(); }
    KavMain& w() { return st.p().main; }
    Memories& mem() { return st.p().memories; }
    QStringList boxes() { return st.dialogs.boxTexts(); }

    TestStation st;
};

constexpr Rec kWait{XcvrCmdWait};

TEST_F(MemoryBank, RecallQueuesModeWaitFrequencyByTheRadiosFilterGroups) {
    struct Case {
        const char* radio;
        QString filter;
        std::vector<Rec> expected;
        int pending;
    };
    const std::vector<Case> cases = {
        // The group rides in the mode command; "Normal" exists on this radio.
        {"IC-756PRO", QStringLiteral("Normal"), {{XcvrCmdMode, 3, 3}, kWait, {XcvrCmdFreq, 0, 0, 14025.5}}, -1},
        // No third filter position: "Normal" falls back to the first group.
        {"IC-775", QStringLiteral("Normal"), {{XcvrCmdMode, 3, 1}, kWait, {XcvrCmdFreq, 0, 0, 14025.5}}, -1},
        {"IC-775", QStringLiteral("Narrow"), {{XcvrCmdMode, 3, 2}, kWait, {XcvrCmdFreq, 0, 0, 14025.5}}, -1},
        // No groups at all: "Wide" whatever the memory names.
        {"TS-2000", QStringLiteral("Narrow"), {{XcvrCmdMode, 3, 0}, kWait, {XcvrCmdFreq, 0, 0, 14025.5}}, -1},
        // Groups set apart from the mode: chosen after the radio's mode report.
        {"FT1000D", QStringLiteral("Narrow"), {{XcvrCmdMode, 3, 0}, kWait, {XcvrCmdFreq, 0, 0, 14025.5}}, 1},
        // The small radios need a pause after the frequency.
        {"FT817", QStringLiteral("Narrow"), {{XcvrCmdMode, 3, 0}, kWait, {XcvrCmdFreq, 0, 0, 14025.5}, kWait}, -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.radio);
        st.stop();
        presetMemory(1, QStringLiteral("14,025.50"), ModeCW, c.filter);
        bringUp(c.radio);
        recall(1);
        EXPECT_EQ(queued(), c.expected);
        EXPECT_EQ(mem().PendingMemoryFilter, c.pending);
        // The memory's own filter name is never rewritten by a recall.
        EXPECT_EQ(stored(MemoryKey("Filter", 1)), c.filter);
    }
}

TEST_F(MemoryBank, APendingFilterIsChosenAtTheNextModeReport) {
    presetMemory(1, QStringLiteral("7,040.00"), ModeLSB, QStringLiteral("Contest"));
    bringUp("FT1000D");
    // The groups of this radio are the operator's own; two of them.
    w().FilterGroupCombo.AddItem(QStringLiteral("Ragchew"));
    w().FilterGroupCombo.AddItem(QStringLiteral("Contest"));
    recall(1);
    ASSERT_EQ(mem().PendingMemoryFilter, 1);
    EXPECT_EQ(w().FilterGroupCombo.text(), QString());
    m().state().UpdateXcvrMode(ModeLSB);
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Contest"));
    EXPECT_EQ(mem().PendingMemoryFilter, -1);
    // Chosen once: the next report leaves the operator's later choice alone.
    w().FilterGroupCombo.setListIndex(0);
    m().state().UpdateXcvrMode(ModeLSB);
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Ragchew"));
}

TEST_F(MemoryBank, SplitAndDualFollowTheFrequencyAsTheOperatorsClicks) {
    presetMemory(2, QStringLiteral("14,195.00"), ModeUSB, QStringLiteral("Wide"), true);
    st.preset(kMemory, MemoryKey("Dual", 2), QStringLiteral("1"));
    bringUp("IC-756PRO");
    recall(2);
    std::vector<int> codes;
    for (const Rec& r : queued()) codes.push_back(r.cmd);
    ASSERT_GE(codes.size(), 5u);
    EXPECT_EQ(std::vector<int>(codes.begin(), codes.begin() + 3), (std::vector<int>{XcvrCmdMode, XcvrCmdWait, XcvrCmdFreq}));
    EXPECT_NE(std::find(codes.begin() + 3, codes.end(), XcvrCmdSplit), codes.end());
    EXPECT_NE(std::find(codes.begin() + 3, codes.end(), XcvrCmdDual), codes.end());
    EXPECT_TRUE(w().SplitBox.checked());
    // Recalled again with the boxes already so: nothing more than mode and frequency.
    recall(2);
    EXPECT_EQ(queued().size(), 3u);
}

TEST_F(MemoryBank, IncompleteAndUnreadableMemoriesAreRefusedWithTheirMessages) {
    presetMemory(1, QStringLiteral("7,010.00"), ModeUnknown);
    presetMemory(2, QStringLiteral("14.0.2"), ModeCW);
    presetMemory(3, QString(), ModeCW);
    bringUp("IC-756PRO");
    // A frequency without a mode can't be recalled until the row is stored.
    EXPECT_FALSE(w().SelCmd[1].enabled());
    EXPECT_TRUE(w().SelCmd[2].enabled());
    EXPECT_FALSE(w().SelCmd[3].enabled());
    recall(1);
    EXPECT_EQ(boxes().last(), QString::fromLatin1(Memories::kIncompleteMessage));
    EXPECT_EQ(st.dialogs.shown.back().buttons, MsgButtons::OkCancel);
    m().state().RadioFreq = 7010;
    m().state().RadioMode = ModeCW;
    w().StoreCmd[1].click();
    EXPECT_TRUE(w().SelCmd[1].enabled());
    EXPECT_EQ(stored(MemoryKey("Mode", 1)), QStringLiteral("3"));

    // Typed dots the keyboard lets through: the recall says so and the row, stored text too, is emptied.
    recall(2);
    EXPECT_EQ(boxes().last(), QStringLiteral("valid characters include numeric digits, commas, and no more than one decimal point"));
    EXPECT_TRUE(queued().empty());
    EXPECT_EQ(w().FreqMemoryTextbox[2].text(), QString());
    EXPECT_EQ(stored(MemoryKey("Freq", 2)), QString());
    EXPECT_FALSE(w().SelCmd[2].enabled());

    // Only digits, commas and dots are typed into a frequency box.
    TextBox& box = w().FreqMemoryTextbox[3];
    int beeps = 0;
    mem().beep = [&] { ++beeps; };
    for (char ch : std::string("7a0-3.5")) box.typeChar(ch);
    EXPECT_EQ(box.text(), QStringLiteral("703.5"));
    EXPECT_EQ(beeps, 2);
    EXPECT_EQ(stored(MemoryKey("Freq", 3)), QStringLiteral("703.5"));

    // Storing before the radio ever reported a mode keeps -1, as the Part's data model does.
    m().state().RadioMode = -1;
    w().StoreCmd[4].click();
    EXPECT_EQ(stored(MemoryKey("Mode", 4)), QStringLiteral("-1"));
    recall(4);
    EXPECT_EQ(queued().size(), 2u) << "no mode command for a mode that isn't one";
}

TEST_F(MemoryBank, EditingARowRefusesModesTheRadioLacksAndForgetsUnknownFilters) {
    presetMemory(1, QStringLiteral("7,010.00"), ModeCW, QStringLiteral("Medium"));
    presetMemory(2, QStringLiteral("7,020.00"), ModeCW, QStringLiteral("Narrow"));
    bringUp("IC-756PRO");
    // A name the radio's list lacks is forgotten at display; a known one is selected.
    EXPECT_EQ(mem().memory(1).filter, QString());
    EXPECT_EQ(w().FilterMemoryCombo[1].listIndex(), -1);
    EXPECT_EQ(w().FilterMemoryCombo[2].text(), QStringLiteral("Narrow"));

    // WBFM on a radio without it: the message names the row, and the list returns to CW.
    w().ModeMemoryPulldown[2].setListIndex(ModeWBFM);
    EXPECT_EQ(boxes().last(), QStringLiteral("error in memory 2: mode not supported by this radio"));
    EXPECT_EQ(w().ModeMemoryPulldown[2].listIndex(), int(ModeCW));
    EXPECT_EQ(stored(MemoryKey("Mode", 2)), QStringLiteral("3"));
    w().ModeMemoryPulldown[2].setListIndex(ModeUSB);
    EXPECT_EQ(stored(MemoryKey("Mode", 2)), QStringLiteral("1"));
    w().FilterMemoryCombo[2].setListIndex(2);
    EXPECT_EQ(stored(MemoryKey("Filter", 2)), QStringLiteral("Normal"));

    // A radio with no list keeps the names of another's, and the row's list stays hidden.
    st.selectRadio(QStringLiteral("TS-2000"));
    EXPECT_EQ(mem().memory(2).filter, QStringLiteral("Normal"));
    EXPECT_FALSE(w().FilterMemoryCombo[2].visible());
}

TEST_F(MemoryBank, StoringKeepsTheRadiosStateAndLeavesTheNote) {
    presetMemory(15, QString(), ModeUnknown, QStringLiteral("Wide"), false, QStringLiteral("FT8 watering hole"));
    st.preset(kMemory, QStringLiteral("CurrentMemoryBank"), QStringLiteral("1"));
    bringUp("IC-756PRO");
    EXPECT_EQ(w().SelCmd[5].caption(), QStringLiteral("15"));
    m().state().RadioFreq = 14074.126;
    m().state().RadioMode = ModeUSB;
    SetCombo(w().FilterGroupCombo, QStringLiteral("Narrow"));
    w().SplitBox.setChecked(true);
    m().queue().InitializeXcvrCmdBuffer();
    w().StoreCmd[5].click();
    EXPECT_EQ(stored(MemoryKey("Freq", 15)), QStringLiteral("14,074.13"));
    EXPECT_EQ(stored(MemoryKey("Mode", 15)), QStringLiteral("1"));
    EXPECT_EQ(stored(MemoryKey("Filter", 15)), QStringLiteral("Narrow"));
    EXPECT_EQ(stored(MemoryKey("Split", 15)), QStringLiteral("1"));
    EXPECT_EQ(stored(MemoryKey("Notes", 15)), QStringLiteral("FT8 watering hole"));
    EXPECT_EQ(w().ModeMemoryPulldown[5].text(), QStringLiteral("USB"));
    EXPECT_EQ(w().FilterMemoryCombo[5].text(), QStringLiteral("Narrow"));
    EXPECT_TRUE(queued().empty()) << "storing sends nothing to the radio";
}

TEST_F(MemoryBank, BanksTheirTitlesAndTheirButtons) {
    presetMemory(23, QStringLiteral("3,573.00"), ModeUSB);
    st.preset(kMemory, BankTitleKey(2), QStringLiteral("80 m"));
    bringUp("IC-756PRO");
    EXPECT_EQ(w().MemoryBankCmd[2].toolTip(), QStringLiteral("80 m"));
    EXPECT_EQ(w().MemoryBankCmd[3].toolTip(), QStringLiteral("Memory Bank 4"));
    w().MemoryBankCmd[2].click();
    EXPECT_EQ(w().MemoryBankFrame.caption(), QStringLiteral("80 m"));
    EXPECT_EQ(w().SelCmd[1].caption(), QStringLiteral("21"));
    EXPECT_EQ(w().FreqMemoryTextbox[3].text(), QStringLiteral("3,573.00"));
    EXPECT_EQ(w().StoreCmd[3].toolTip(), QStringLiteral("click to store current frequency, mode, and filter into memory 23"));
    EXPECT_EQ(stored(QStringLiteral("CurrentMemoryBank")), QStringLiteral("2"));

    // Ctrl-click: the title is edited in the configuration window, and a change reaches the pane at once.
    w().MemoryBankCmd[2].mouseDown(kLeftButton, kCtrl, 0, 0);
    w().MemoryBankCmd[2].click();
    KavConfig& c = st.p().config;
    EXPECT_TRUE(c.visible());
    EXPECT_EQ(c.ConfigTab.tab(), 6);
    EXPECT_TRUE(c.BankToolTip[2].hasFocus());
    EXPECT_EQ(c.BankToolTip[2].selLength(), 4);
    EXPECT_EQ(mem().GetCurrentMemoryBank(), 2);
    c.BankToolTip[2].setText(QStringLiteral("80 m CW"));
    EXPECT_EQ(w().MemoryBankFrame.caption(), QStringLiteral("80 m CW"));
    EXPECT_EQ(w().MemoryBankCmd[2].toolTip(), QStringLiteral("80 m CW"));
    EXPECT_EQ(stored(BankTitleKey(2)), QStringLiteral("80 m CW"));
    c.BankToolTip[5].setText(QStringLiteral("VHF"));
    EXPECT_EQ(w().MemoryBankFrame.caption(), QStringLiteral("80 m CW"));

    // Up and Down walk the frequency boxes round the bank.
    int up = kKeyUp;
    w().FreqMemoryTextbox[1].keyDown(up, 0);
    EXPECT_TRUE(w().FreqMemoryTextbox[10].hasFocus());
    int down = kKeyDown;
    w().FreqMemoryTextbox[10].keyDown(down, 0);
    EXPECT_TRUE(w().FreqMemoryTextbox[1].hasFocus());
}

TEST_F(MemoryBank, NotesInThePaneInTheTooltipAndInTheirOwnWindow) {
    presetMemory(4, QStringLiteral("10,116.00"), ModeCW, QStringLiteral("Wide"), false, QStringLiteral("QRP calling"));
    bringUp("IC-756PRO");
    EXPECT_EQ(w().SelCmd[4].toolTip(),
              QStringLiteral("click to set frequency, mode, and filter for QRP calling, CTRL-click to display or edit memory notes"));
    EXPECT_EQ(w().SelCmd[5].toolTip(),
              QStringLiteral("click to set frequency, mode, and filter from memory 5, CTRL-click to display or edit memory notes"));

    // The notes stand in place of frequency, mode and filter.
    w().ToggleMemoryNotesCmd.click();
    EXPECT_TRUE(w().MemoryNotesDisplay[4].visible());
    EXPECT_FALSE(w().FreqMemoryTextbox[4].visible());
    EXPECT_FALSE(w().FilterMemoryCombo[4].visible());
    EXPECT_TRUE(w().MemoryNotesLabel.visible());
    EXPECT_FALSE(w().FilterMemoryLabel.visible());
    EXPECT_EQ(w().SelCmd[4].toolTip(), QStringLiteral("click to set frequency to 10,116.00 and mode to CW"));
    EXPECT_EQ(w().ToggleMemoryNotesCmd.toolTip(), QStringLiteral("click to display each memory's frequency and mode"));
    // The pane has no key filter: "<" enters that way.
    w().MemoryNotesDisplay[4].setText(QStringLiteral("QRP <calling>"));
    EXPECT_EQ(stored(MemoryKey("Notes", 4)), QStringLiteral("QRP <calling>"));

    // Ctrl-click opens the editor on the memory; "<" and ">" are refused there, every key is stored.
    w().FreqLabel.Click();  // a column head toggles too
    w().SelCmd[4].mouseDown(kLeftButton, kCtrl, 0, 0);
    m().queue().InitializeXcvrCmdBuffer();
    w().SelCmd[4].click();
    MemoryNotes& ed = st.p().memoryNotes;
    EXPECT_TRUE(queued().empty()) << "a Ctrl-click recalls nothing";
    EXPECT_TRUE(ed.visible());
    EXPECT_EQ(ed.caption(), QStringLiteral("Tolvane Memory Notes Editor: Memory 4"));
    EXPECT_EQ(ed.Notes.toolTip(), QStringLiteral("Edit notes for memory 4"));
    EXPECT_EQ(ed.Notes.text(), QStringLiteral("QRP <calling>"));
    ed.Notes.setText(QString());
    ed.Notes.setSelStart(0);
    for (char ch : std::string("a<b>c")) ed.Notes.typeChar(ch);
    EXPECT_EQ(ed.Notes.text(), QStringLiteral("abc"));
    EXPECT_EQ(stored(MemoryKey("Notes", 4)), QStringLiteral("abc"));
    EXPECT_EQ(w().MemoryNotesDisplay[4].text(), QStringLiteral("abc"));
    EXPECT_EQ(w().SelCmd[4].toolTip(), QStringLiteral("click to recall frequency, mode, and filter from abc, CTRL-click to edit notes"));
    ed.DateCmd.click();
    EXPECT_TRUE(ed.Notes.text().startsWith(QStringLiteral("abc"))) << ed.Notes.text().toStdString();
    EXPECT_GT(ed.Notes.text().size(), 8);
    // Closing by the window's button only hides it, text kept.
    ed.userClose();
    EXPECT_FALSE(ed.visible());
    EXPECT_EQ(ed.Memory.text(), QStringLiteral("4"));

    // The choice of pane is kept across a restart.
    w().ToggleMemoryNotesCmd.click();
    st.stop();
    ASSERT_TRUE(st.start());
    EXPECT_TRUE(m().MemoryNotesShown);
    EXPECT_TRUE(w().MemoryNotesDisplay[1].visible());
    EXPECT_EQ(w().MemoryNotesDisplay[4].text().left(3), QStringLiteral("abc"));
}

TEST(MemoryBankNoRadio, TogglingWithNoRadioKeepsTheFilterColumnHidden) {
    TestStation st;
    ASSERT_TRUE(st.start());
    ASSERT_LT(st.m().radio().RadioIndex, 0);
    st.p().main.ToggleMemoryNotesCmd.click();
    st.p().main.ToggleMemoryNotesCmd.click();
    for (int i = 1; i <= 10; ++i) EXPECT_FALSE(st.p().main.FilterMemoryCombo[i].visible());
    EXPECT_TRUE(st.p().main.FreqMemoryTextbox[1].visible());
    // No radio: a recall does nothing at all.
    st.p().main.SelCmd[1].click();
    EXPECT_TRUE(st.dialogs.boxTexts().isEmpty());
}

}  // namespace
}  // namespace tv::test
