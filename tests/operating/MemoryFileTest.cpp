// The memories' text file: the tagged fields, the errors file and its exact lines, the import from the
// configuration window and from the shell, a round trip that must come back byte for byte, and the
// parser under random lines.

#include "app/MemoryCommands.h"
#include "operating/Memories.h"
#include "operating/MemoryFile.h"
#include "support/TestStation.h"

#include <QFile>
#include <QRandomGenerator>
#include <QSet>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString kGeneral = QStringLiteral("General");

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

class MemoryImport : public ::testing::Test {
protected:
    void bringUp(const char* radio) {
        st.preset(kGeneral, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(kGeneral, QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
    }
    QString importFile(const QString& text) {
        const QString path = st.dir.filePath(QStringLiteral("mine.txt"));
        writeText(path, text);
        st.dialogs.paths.push_back(path);
        st.p().config.ImportMemoriesCmd.click();
        st.loop.runPosted();
        return st.dir.filePath(QStringLiteral("mine_errors.txt"));
    }
    Memories& mem() { return st.p().memories; }
    TestStation st;
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
    EXPECT_EQ(st.p().main.FreqMemoryTextbox[5].text(), QStringLiteral("7,030.00"));
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

TEST(MemoryFileFuzz, RandomLinesReachTheErrorsFileAndChangeNothingElse) {
    QRandomGenerator rng(20240613);
    const QStringList pieces = {QStringLiteral("<Freq "), QStringLiteral("<Mode "), QStringLiteral("<Filter "),
                                QStringLiteral("<Notes "), QStringLiteral("<Split "), QStringLiteral("<Dual "),
                                QStringLiteral("<HamBands "), QStringLiteral(">"), QStringLiteral("<"), QStringLiteral(" "),
                                QStringLiteral("CW"), QStringLiteral("usb"), QStringLiteral("ON"), QStringLiteral("7,0"),
                                QStringLiteral("\t"), QStringLiteral("\u00e9"), QStringLiteral("<Memory>")};
    auto randomLine = [&] {
        QString line;
        const int parts = rng.bounded(8);
        for (int i = 0; i < parts; ++i) {
            if (rng.bounded(6) == 0)
                line += QStringLiteral("<Memory %1>").arg(int(rng.bounded(130)) - 10);
            else if (rng.bounded(3) == 0)
                line += QChar(char16_t(32 + rng.bounded(95)));
            else
                line += pieces[int(rng.bounded(pieces.size()))];
        }
        return line;
    };
    MemoryTable start;
    for (int n = 1; n <= kMemoryCount; n += 3) {
        start[size_t(n)].freq = QString::number(n);
        start[size_t(n)].mode = ModeUSB;
    }
    // Every line with its end, as a file has them (a blank last line is then a line too).
    auto file = [](const QStringList& lines) { return lines.isEmpty() ? QString() : lines.join(QLatin1Char('\n')) + QLatin1Char('\n'); };
    for (int round = 0; round < 200; ++round) {
        QStringList lines;
        for (int i = 0; i < 30; ++i) lines << randomLine();
        MemoryTable t = start;
        const MemoryImportResult r = ImportMemoryText(file(lines), t);
        ASSERT_FALSE(r.failure) << r.failedLine.toStdString();
        // Every error names an input line, in their order.
        QStringList rejected;
        int at = 0;
        for (const QString& e : r.errors) {
            const qsizetype mark = e.indexOf(QStringLiteral(" in "));
            ASSERT_GT(mark, 0);
            const QString line = e.mid(mark + 4);
            while (at < lines.size() && lines[at] != line) ++at;
            ASSERT_LT(at, lines.size()) << e.toStdString();
            rejected << lines[at++];
        }
        // The rejected lines change nothing and are all rejected again; the others alone give the same table.
        MemoryTable again = start;
        EXPECT_EQ(ImportMemoryText(file(rejected), again).errors.size(), rejected.size());
        EXPECT_TRUE(again == start);
        QStringList accepted = lines;
        for (const QString& l : rejected) accepted.removeOne(l);
        MemoryTable only = start;
        EXPECT_TRUE(ImportMemoryText(file(accepted), only).errors.isEmpty());
        EXPECT_TRUE(only == t);
        // Memories that no accepted line names are as they were.
        QSet<int> named;
        for (const QString& l : accepted) named << ExtractData(l, QStringLiteral("Memory")).toInt();
        for (int n = 1; n <= kMemoryCount; ++n) {
            if (!named.contains(n)) {
                EXPECT_TRUE(t[size_t(n)] == start[size_t(n)]) << n;
            }
        }
    }
    // Bytes that aren't even text: read as far as they go, never a crash.
    for (int round = 0; round < 50; ++round) {
        QByteArray junk(int(rng.bounded(2000)), '\0');
        for (char& c : junk) c = char(rng.bounded(256));
        MemoryTable t = start;
        ImportMemoryText(QString::fromUtf8(junk), t);
    }
}

}  // namespace
}  // namespace tv::test
