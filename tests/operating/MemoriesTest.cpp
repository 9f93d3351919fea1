// The memory banks and their notes through the whole program on virtual time: what a recall queues on
// each kind of radio, what storing and editing a row keep, and what the panes show.

#include "forms/MemoryNotes.h"
#include "operating/Memories.h"
#include "support/TestStation.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString kGeneral = QStringLiteral("General");

// A queued record as compared here: code, mode and group of a mode record, frequency of a tune.
struct Rec {
    int cmd, mode = 0, arg = 0;
    double freq = 0;
    bool operator==(const Rec& o) const { return cmd == o.cmd && mode == o.mode && arg == o.arg && freq == o.freq; }
};
std::ostream& operator<<(std::ostream& os, const Rec& r) {
    return os << "{" << r.cmd << "," << r.mode << "," << r.arg << "," << r.freq << "}";
}
constexpr Rec kWait{XcvrCmdWait};

class MemoryBank : public ::testing::Test {
protected:
    void presetMemory(int n, const QString& freq, int mode, const QString& filter = QStringLiteral("Wide"),
                      const QString& notes = QString()) {
        st.preset(kMemorySection, MemoryKey("Freq", n), freq);
        st.preset(kMemorySection, MemoryKey("Mode", n), QString::number(mode));
        st.preset(kMemorySection, MemoryKey("Filter", n), filter);
        st.preset(kMemorySection, MemoryKey("Notes", n), notes);
    }
    void bringUp(const char* radio) {
        st.preset(kGeneral, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(kGeneral, QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
    }
    std::vector<Rec> recall(int row) {
        m().queue().InitializeXcvrCmdBuffer();
        w().SelCmd[row].click();
        std::vector<Rec> out;
        for (const XcvrCmd& c : m().queue().queued())
            out.push_back({c.theCmd, c.theCmd == XcvrCmdMode ? c.theMode : 0, c.theCmd == XcvrCmdMode ? c.theArg : 0,
                           c.theCmd == XcvrCmdFreq ? c.theFreq : 0});
        return out;
    }
    QString stored(const char* field, int n) {
        st.loop.runPosted();
        return st.stored(kMemorySection, MemoryKey(field, n));
    }
    KavModule& m() { return st.m(); }
    KavMain& w() { return st.p().main; }
    Memories& mem() { return st.p().memories; }
    QString lastBox() { return st.dialogs.boxTexts().value(st.dialogs.boxTexts().size() - 1); }
    TestStation st;
};

TEST_F(MemoryBank, RecallQueuesModeWaitFrequencyByTheRadiosFilterGroups) {
    const Rec freq{XcvrCmdFreq, 0, 0, 14025.5};
    const struct {
        const char* radio;
        const char* filter;
        std::vector<Rec> expected;
        int pending;
    } cases[] = {
        {"IC-756PRO", "Normal", {{XcvrCmdMode, 3, 3}, kWait, freq}, -1},
        // No third filter position: "Normal" becomes the first group.
        {"IC-775", "Normal", {{XcvrCmdMode, 3, 1}, kWait, freq}, -1},
        // No groups at all: "Wide", and the memory keeps its name.
        {"TS-2000", "Narrow", {{XcvrCmdMode, 3, 0}, kWait, freq}, -1},
        // Groups apart from the mode: chosen at the radio's mode report.
        {"FT1000D", "Narrow", {{XcvrCmdMode, 3, 0}, kWait, freq}, 1},
        {"FT817", "Narrow", {{XcvrCmdMode, 3, 0}, kWait, freq, kWait}, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.radio);
        st.stop();
        presetMemory(1, QStringLiteral("14,025.50"), ModeCW, QString::fromLatin1(c.filter));
        bringUp(c.radio);
        EXPECT_EQ(recall(1), c.expected);
        EXPECT_EQ(mem().PendingMemoryFilter, c.pending);
        EXPECT_EQ(stored("Filter", 1), QString::fromLatin1(c.filter));
    }
    // The pending group is selected at the next mode report, once.
    st.stop();
    bringUp("FT1000D");
    w().FilterGroupCombo.AddItem(QStringLiteral("Ragchew"));
    w().FilterGroupCombo.AddItem(QStringLiteral("Narrow"));
    recall(1);
    m().state().UpdateXcvrMode(ModeCW);
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Narrow"));
    w().FilterGroupCombo.setListIndex(0);
    m().state().UpdateXcvrMode(ModeCW);
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Ragchew"));
}

TEST_F(MemoryBank, SplitAndDualFollowTheFrequencyAndTheRecallTestsNothingElse) {
    presetMemory(2, QStringLiteral("14,195.00"), ModeUSB);
    st.preset(kMemorySection, MemoryKey("Split", 2), QStringLiteral("1"));
    presetMemory(3, QStringLiteral("7,010.00"), ModeUnknown);
    presetMemory(4, QStringLiteral("14.0.2"), ModeCW);
    bringUp("IC-756PRO");
    std::vector<Rec> sent = recall(2);
    ASSERT_GE(sent.size(), 4u);
    EXPECT_EQ(sent[2].cmd, XcvrCmdFreq);
    EXPECT_EQ(sent[3].cmd, XcvrCmdSplit);
    EXPECT_EQ(recall(2).size(), 3u) << "a box already so queues nothing";

    // A frequency without a mode can't be recalled until the row is stored.
    EXPECT_FALSE(w().SelCmd[3].enabled());
    EXPECT_TRUE(recall(3).empty());
    EXPECT_EQ(lastBox(), QString::fromLatin1(Memories::kIncompleteMessage));
    m().state().RadioFreq = 7010;
    m().state().RadioMode = ModeCW;
    w().StoreCmd[3].click();
    EXPECT_TRUE(w().SelCmd[3].enabled());

    // Dots the keyboard lets through: the recall says so and empties the row, stored text too.
    EXPECT_TRUE(recall(4).empty());
    EXPECT_EQ(lastBox(), QStringLiteral("valid characters include numeric digits, commas, and no more than one decimal point"));
    EXPECT_EQ(stored("Freq", 4), QString());
    EXPECT_FALSE(w().SelCmd[4].enabled());

    // Stored before the radio reported any mode: -1 is kept, and no mode command is made of it.
    m().state().RadioMode = -1;
    w().StoreCmd[5].click();
    EXPECT_EQ(stored("Mode", 5), QStringLiteral("-1"));
    EXPECT_EQ(recall(5).size(), 2u);
}

TEST_F(MemoryBank, EditingAndStoringARow) {
    presetMemory(1, QStringLiteral("7,010.00"), ModeCW, QStringLiteral("Medium"), QStringLiteral("keep me"));
    presetMemory(2, QStringLiteral("7,020.00"), ModeCW, QStringLiteral("Narrow"));
    bringUp("IC-756PRO");
    // A name the radio's list lacks is forgotten at display.
    EXPECT_EQ(mem().memory(1).filter, QString());
    EXPECT_EQ(w().FilterMemoryCombo[2].text(), QStringLiteral("Narrow"));

    // WBFM on a radio without it: the message names the row, and the list goes back to CW.
    w().ModeMemoryPulldown[2].setListIndex(ModeWBFM);
    EXPECT_EQ(lastBox(), QStringLiteral("error in memory 2: mode not supported by this radio"));
    EXPECT_EQ(w().ModeMemoryPulldown[2].listIndex(), int(ModeCW));
    w().FilterMemoryCombo[2].setListIndex(2);
    EXPECT_EQ(stored("Filter", 2), QStringLiteral("Normal"));

    // Only digits, commas and dots are typed into a frequency box.
    int beeps = 0;
    mem().beep = [&] { ++beeps; };
    TextBox& box = w().FreqMemoryTextbox[3];
    for (char ch : std::string("7a0-3.5")) box.typeChar(ch);
    EXPECT_EQ(stored("Freq", 3), QStringLiteral("703.5"));
    EXPECT_EQ(beeps, 2);

    // Storing takes the radio's state; the note stays and nothing goes to the radio.
    m().state().RadioFreq = 14074.126;
    m().state().RadioMode = ModeUSB;
    SetCombo(w().FilterGroupCombo, QStringLiteral("Narrow"));
    m().queue().InitializeXcvrCmdBuffer();
    w().StoreCmd[1].click();
    EXPECT_EQ(stored("Freq", 1), QStringLiteral("14,074.13"));
    EXPECT_EQ(stored("Mode", 1), QStringLiteral("1"));
    EXPECT_EQ(stored("Filter", 1), QStringLiteral("Narrow"));
    EXPECT_EQ(stored("Notes", 1), QStringLiteral("keep me"));
    EXPECT_TRUE(m().queue().queued().empty());

    // A radio with no list keeps the names of another's.
    st.selectRadio(QStringLiteral("TS-2000"));
    EXPECT_EQ(mem().memory(2).filter, QStringLiteral("Normal"));
    EXPECT_FALSE(w().FilterMemoryCombo[2].visible());
}

TEST_F(MemoryBank, BanksTitlesAndNotes) {
    presetMemory(24, QStringLiteral("10,116.00"), ModeCW, QStringLiteral("Wide"), QStringLiteral("QRP calling"));
    st.preset(kMemorySection, BankTitleKey(2), QStringLiteral("30 m"));
    bringUp("IC-756PRO");
    w().MemoryBankCmd[2].click();
    EXPECT_EQ(w().MemoryBankFrame.caption(), QStringLiteral("30 m"));
    EXPECT_EQ(w().SelCmd[4].caption(), QStringLiteral("24"));
    EXPECT_EQ(w().SelCmd[4].toolTip(),
              QStringLiteral("click to set frequency, mode, and filter for QRP calling, CTRL-click to display or edit memory notes"));
    // Ctrl-click: the title is edited on the configuration window's Memories tab.
    w().MemoryBankCmd[2].mouseDown(kLeftButton, kCtrl, 0, 0);
    w().MemoryBankCmd[2].click();
    KavConfig& c = st.p().config;
    EXPECT_EQ(c.ConfigTab.tab(), 6);
    EXPECT_TRUE(c.BankToolTip[2].hasFocus());
    c.BankToolTip[2].setText(QStringLiteral("30 m CW"));
    EXPECT_EQ(w().MemoryBankFrame.caption(), QStringLiteral("30 m CW"));
    EXPECT_EQ(w().MemoryBankCmd[2].toolTip(), QStringLiteral("30 m CW"));

    // Notes in place of frequency, mode and filter.
    w().ToggleMemoryNotesCmd.click();
    EXPECT_TRUE(w().MemoryNotesDisplay[4].visible());
    EXPECT_FALSE(w().FilterMemoryCombo[4].visible());
    EXPECT_EQ(w().SelCmd[4].toolTip(), QStringLiteral("click to set frequency to 10,116.00 and mode to CW"));
    w().FreqLabel.Click();
    // The editor: "<" and ">" refused, every key stored, the row and its tooltip following.
    w().SelCmd[4].mouseDown(kLeftButton, kCtrl, 0, 0);
    m().queue().InitializeXcvrCmdBuffer();
    w().SelCmd[4].click();
    MemoryNotes& ed = st.p().memoryNotes;
    EXPECT_TRUE(m().queue().queued().empty());
    EXPECT_EQ(ed.caption(), QStringLiteral("Tolvane Memory Notes Editor: Memory 24"));
    for (char ch : std::string(" <x>")) ed.Notes.typeChar(ch);
    EXPECT_EQ(stored("Notes", 24), QStringLiteral("QRP calling x"));
    EXPECT_EQ(w().MemoryNotesDisplay[4].text(), QStringLiteral("QRP calling x"));
    EXPECT_EQ(w().SelCmd[4].toolTip(), QStringLiteral("click to recall frequency, mode, and filter from QRP calling x, CTRL-click to edit notes"));
    ed.userClose();
    EXPECT_FALSE(ed.visible());
    EXPECT_EQ(ed.Notes.text(), QStringLiteral("QRP calling x"));

    // The pane's choice and the bank on view are kept across a restart.
    w().ToggleMemoryNotesCmd.click();
    st.stop();
    ASSERT_TRUE(st.start());
    EXPECT_TRUE(m().MemoryNotesShown);
    EXPECT_EQ(mem().GetCurrentMemoryBank(), 2);
    EXPECT_EQ(w().MemoryNotesDisplay[4].text(), QStringLiteral("QRP calling x"));
}

TEST(MemoryBankNoRadio, TogglingKeepsTheFilterColumnHiddenAndARecallDoesNothing) {
    TestStation st;
    ASSERT_TRUE(st.start());
    st.p().main.ToggleMemoryNotesCmd.click();
    st.p().main.ToggleMemoryNotesCmd.click();
    EXPECT_FALSE(st.p().main.FilterMemoryCombo[1].visible());
    st.p().main.SelCmd[1].click();
    EXPECT_TRUE(st.dialogs.boxTexts().isEmpty());
}

}  // namespace
}  // namespace tv::test
