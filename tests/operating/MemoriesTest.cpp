// The memory banks, their notes and their text file through the whole program on virtual time: what a
// recall queues on each kind of radio, what storing and editing a row keep, what the panes show; the
// file's tagged fields, the errors file and its exact lines, the import from the configuration window
// and from the shell, a round trip that must come back byte for byte, and the parser under random lines.

#include "app/MemoryCommands.h"
#include "forms/MemoryNotes.h"
#include "operating/Memories.h"
#include "operating/MemoryFile.h"
#include "support/TestStation.h"

#include <QFile>

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
    presetMemory(6, QStringLiteral("7000"), ModeUSB);
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

    // Stored before the radio reported any mode: -1 is kept, and recalled as the radio's first mode.
    m().state().RadioMode = -1;
    w().StoreCmd[5].click();
    EXPECT_EQ(stored("Mode", 5), QStringLiteral("-1"));
    const std::vector<Rec> first = recall(5);
    ASSERT_EQ(first.size(), 3u);
    EXPECT_EQ(first[0].cmd, XcvrCmdMode);
    EXPECT_EQ(first[0].mode, 0);

    // Group marks anywhere are taken as the frequency box takes them.
    const int boxes = int(st.dialogs.boxTexts().size());
    for (const auto& [text, kHz] : {std::pair{"1,4025.5", 14025.5}, std::pair{"14025,5", 140255.0}}) {
        w().FreqMemoryTextbox[6].setText(QString::fromLatin1(text));
        const std::vector<Rec> sent = recall(6);
        ASSERT_GE(sent.size(), 3u) << text;
        EXPECT_EQ(sent[2].cmd, XcvrCmdFreq) << text;
        EXPECT_EQ(sent[2].freq, kHz) << text;
    }
    EXPECT_EQ(int(st.dialogs.boxTexts().size()), boxes);
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
    // Stored in the one form the Store button writes, whatever was typed.
    EXPECT_EQ(stored("Freq", 3), QStringLiteral("703.50"));
    box.setText(QStringLiteral("1,4025.5"));
    EXPECT_EQ(stored("Freq", 3), QStringLiteral("14,025.50"));
    box.setText(QStringLiteral("703.5"));
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

QString readText(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QStringLiteral("<missing>");
}
void writeText(const QString& path, const QString& text) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(text.toUtf8());
}

TEST(MemoryFile, TagsAreFoundInAnyCaseAndABrokenFieldGivesNothing) {
    const struct {
        const char* line;
        const char* tag;
        const char* value;
    } cases[] = {
        {"<Memory 12> <Freq 14,025.00> <Mode CW>", "freq", "14,025.00"},
        {"<mode cw> <memory 3>", "Memory", "3"},
        {"<notes Mixed Case Kept>", "Notes", "Mixed Case Kept"},
        {"<Split>", "Split", ""},                     // no blank after the tag
        {"<Mode >", "Mode", ""},                      // an empty value
        {"<Freq 7000", "Freq", ""},                   // no ">"
        {"<Freq 7000 <Mode CW>", "Freq", ""},         // its ">" missing: runs into the next field
        {"<Notes  two  blanks > <Memory 1>", "Notes", " two  blanks "},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ExtractData(QString::fromLatin1(c.line), QString::fromLatin1(c.tag)), QString::fromLatin1(c.value)) << c.line;
    EXPECT_EQ(MemoryErrorsFileName(QStringLiteral("/home/op/mine.txt")), QStringLiteral("/home/op/mine_errors.txt"));
    EXPECT_EQ(MemoryErrorsFileName(QStringLiteral("/home/op/v1.2/mine")), QStringLiteral("/home/op/v1.2/mine_errors"));
    EXPECT_EQ(MemoryErrorsFileName(QStringLiteral("backup.2024.txt")), QStringLiteral("backup.2024_errors.txt"));
    // A memory without a mode goes out with an empty field, which an import refuses.
    MemoryRow row;
    row.freq = QStringLiteral("14,025.00");
    row.ham = row.dual = true;
    const QString line = MemoryExportLine(3, row, false);
    EXPECT_EQ(line, QStringLiteral("<Memory 3> <Freq 14,025.00> <Mode > <HamBands On> <Dual On> <Notes >"));
    MemoryTable t;
    EXPECT_EQ(ImportMemoryText(line, t).errors, QStringList{QStringLiteral("no mode specified in ") + line});
}

class MemoryImport : public MemoryBank {
protected:
    QString importFile(const QString& text) {
        const QString path = st.dir.filePath(QStringLiteral("mine.txt"));
        writeText(path, text);
        st.dialogs.paths.push_back(path);
        st.p().config.ImportMemoriesCmd.click();
        st.loop.runPosted();
        return st.dir.filePath(QStringLiteral("mine_errors.txt"));
    }
};

TEST_F(MemoryImport, BadLinesGoToTheErrorsFileAndTheRestIsRead) {
    st.preset(kMemorySection, MemoryKey("Freq", 6), QStringLiteral("3,550.00"));
    bringUp("IC-756PRO");
    const MemoryRow six = mem().memory(6);
    const QStringList lines = {
        QStringLiteral("<Memory 101> <Freq 7000> <Mode CW> <Notes >"),
        QString(),
        QStringLiteral("<memory 5> <freq 7,030.00> <mode CW> <split on> <Notes a > b>"),
        QStringLiteral("<Memory 6> <Freq 3,560.00> <Mode > <Notes x>"),
        QStringLiteral("<Memory 7> <Mode CW> <Notes x>"),
        QStringLiteral("<Notes only> <Mode USB>"),
        QStringLiteral("<Dual on> <Notes far away> <Mode USB> <Freq 21,074.00> <Memory 42>"),
    };
    const QString errors = importFile(lines.join(QLatin1Char('\n')) + QLatin1Char('\n'));
    EXPECT_EQ(readText(errors), QStringLiteral("illegal memory in <Memory 101> <Freq 7000> <Mode CW> <Notes >\n"
                                               "no memory specified in \n"
                                               "no mode specified in <Memory 6> <Freq 3,560.00> <Mode > <Notes x>\n"
                                               "no frequency specified in <Memory 7> <Mode CW> <Notes x>\n"
                                               "no memory specified in <Notes only> <Mode USB>\n"));
    ASSERT_FALSE(st.dialogs.shown.empty());
    EXPECT_EQ(st.dialogs.shown.back().kind, QStringLiteral("default"));
    EXPECT_EQ(st.dialogs.shown.back().text, errors);

    // Lower-case tags and "on" are read; a ">" in a note ends it there.
    EXPECT_EQ(mem().memory(5).freq, QStringLiteral("7,030.00"));
    EXPECT_TRUE(mem().memory(5).split);
    EXPECT_EQ(mem().memory(5).notes, QStringLiteral("a "));
    // A field the line leaves out clears it.
    EXPECT_EQ(mem().memory(5).filter, QString());
    EXPECT_EQ(mem().memory(6), six);
    EXPECT_TRUE(mem().memory(42).dual);
    // The rows on view reach the store at once; a memory of another bank only once it is stored again.
    EXPECT_EQ(w().FreqMemoryTextbox[5].text(), QStringLiteral("7,030.00"));
    EXPECT_EQ(st.stored(kMemorySection, MemoryKey("Freq", 5)), QStringLiteral("7,030.00"));
    EXPECT_EQ(st.stored(kMemorySection, MemoryKey("Notes", 5)), QStringLiteral("a "));
    EXPECT_EQ(st.stored(kMemorySection, MemoryKey("Freq", 42)), QStringLiteral("<none>"));
}

TEST_F(MemoryImport, EmptyFilesCancelsAndUnreadableNumbers) {
    bringUp("TS-2000");
    // An empty file: nothing changes and no errors file.
    const MemoryTable before = mem().table();
    const QString errors = importFile(QString());
    EXPECT_FALSE(QFile::exists(errors));
    EXPECT_TRUE(st.dialogs.shown.back().kind == QStringLiteral("open"));
    EXPECT_TRUE(mem().table() == before);
    // A cancelled dialog ends the operation without a word.
    st.p().config.ImportMemoriesCmd.click();
    st.p().config.ExportMemoriesCmd.click();
    EXPECT_TRUE(st.dialogs.boxTexts().isEmpty());
    EXPECT_FALSE(st.log().contains(QStringLiteral("ImportMemories")));
    // A radio without groups keeps the names read; a memory number that is no number ends the import.
    importFile(QStringLiteral("<Memory 1> <Freq 7,010.00> <Mode CW> <Filter Narrow> <Notes >\n"
                              "<Memory twelve> <Freq 7,020.00> <Mode CW> <Notes >\n"
                              "<Memory 3> <Freq 7,030.00> <Mode CW> <Notes >\n"));
    EXPECT_EQ(mem().memory(1).filter, QStringLiteral("Narrow"));
    EXPECT_TRUE(mem().memory(3) == before[3]);
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavModule.ImportMemories"))) << st.log().toStdString();
}

// Every printable character the notes editor takes, a different slice for each memory.
QString printableNote(int n) {
    QString all;
    for (char c = ' '; c <= '~'; ++c)
        if (c != '<' && c != '>') all += QLatin1Char(c);
    return all.mid(n % 40) + all.left(n % 40);
}

TEST_F(MemoryImport, HundredMemoriesComeBackByteForByteAndSurviveARestart) {
    MemoryTable table;
    const char* const filters[] = {"Wide", "Narrow", "Normal"};
    for (int n = 1; n <= kMemoryCount; ++n) {
        MemoryRow& r = table[size_t(n)];
        r.freq = QStringLiteral("%1,%2.%3").arg(n).arg(n * 7 % 1000, 3, 10, QLatin1Char('0')).arg(n % 100, 2, 10, QLatin1Char('0'));
        r.mode = n % 10;
        r.filter = QString::fromLatin1(filters[n % 3]);
        r.split = n % 2;
        r.ham = n % 3 == 0;
        r.dual = n % 5 == 0;
        r.notes = printableNote(n);
    }
    const QString first = st.dir.filePath(QStringLiteral("first.txt"));
    ExportMemoryFile(first, table, true);

    // Into a fresh configuration from the shell, then out again.
    st.preset(kGeneral, QStringLiteral("Radio"), QStringLiteral("IC-756PRO"));
    MemoryCommand in{MemoryCommand::Import, first, st.configDir, st.appDir};
    ASSERT_EQ(RunMemoryCommand(in, stdout, stderr), 0);
    const QString second = st.dir.filePath(QStringLiteral("second.txt"));
    MemoryCommand out{MemoryCommand::Export, second, st.configDir, st.appDir};
    ASSERT_EQ(RunMemoryCommand(out, stdout, stderr), 0);
    EXPECT_EQ(readText(second), readText(first));
    EXPECT_EQ(readText(first).count(QLatin1Char('\n')), 100);

    // The program started on that configuration has every memory, and its own export is the same file.
    bringUp("IC-756PRO");
    for (int n = 1; n <= kMemoryCount; ++n) EXPECT_TRUE(mem().memory(n) == table[size_t(n)]) << n;
    const QString third = st.dir.filePath(QStringLiteral("third"));
    st.dialogs.paths.push_back(third);
    st.p().config.ExportMemoriesCmd.click();
    EXPECT_EQ(readText(third + QStringLiteral(".txt")), readText(first));

    // A file with lines that can't be read: the shell names the errors file and fails.
    writeText(st.dir.filePath(QStringLiteral("bad.txt")), QStringLiteral("<Memory 0> <Freq 1> <Mode CW>\n"));
    MemoryCommand bad{MemoryCommand::Import, st.dir.filePath(QStringLiteral("bad.txt")), st.configDir, st.appDir};
    EXPECT_EQ(RunMemoryCommand(bad, stdout, stderr), 1);
    EXPECT_EQ(readText(st.dir.filePath(QStringLiteral("bad_errors.txt"))),
              QStringLiteral("illegal memory in <Memory 0> <Freq 1> <Mode CW>\n"));
    MemoryCommand missing{MemoryCommand::Import, st.dir.filePath(QStringLiteral("none.txt")), st.configDir, st.appDir};
    EXPECT_EQ(RunMemoryCommand(missing, stdout, stderr), 2);
}

}  // namespace
}  // namespace tv::test
