#pragma once
// The hundred memories as data: one row per memory, how each is kept in the settings (section Memory,
// seven keys a memory), and the text file that carries all of them between installations, with its
// companion file of the lines that could not be read. No window here: the memory bank and the command
// line both work through these.

#include "core/XcvrCmd.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>

namespace tv {

class SettingsStore;

struct MemoryRow {
    QString freq;  // kHz as text, as typed or stored: it stands as it is until recalled
    int mode = ModeUnknown;
    QString filter = QStringLiteral("Wide");
    bool split = false;
    bool ham = false;
    bool dual = false;
    QString notes;
    bool operator==(const MemoryRow& o) const {
        return freq == o.freq && mode == o.mode && filter == o.filter && split == o.split && ham == o.ham &&
               dual == o.dual && notes == o.notes;
    }
};

constexpr int kMemoryCount = 100;
constexpr int kMemoryBanks = 10;
// Index 0 is not used: memories are numbered 1 to 100, bank b row i being memory b * 10 + i.
using MemoryTable = std::array<MemoryRow, kMemoryCount + 1>;

// ---- the settings ----
extern const QString kMemorySection;
// "FreqMemory12", "ModeMemory12" ...; field is one of Freq, Mode, Filter, Split, Ham, Dual, Notes.
QString MemoryKey(const char* field, int n);
// A stored frequency text in the "###,###.00" form of the locale; text that isn't a number stays.
QString ReformatMemoryFrequency(const QString& text, const QLocale& locale);
// Every writer of a memory's frequency goes through here, so the file holds that one form; a text that
// isn't a number (and files written earlier, in whatever form) still read back through the above.
void SaveMemoryFrequency(SettingsStore& store, int n, const QString& text, const QLocale& locale);
// One memory as stored, with the defaults for what is missing; a mode that isn't one is no mode.
MemoryRow LoadMemoryRow(const SettingsStore& store, int n, const QLocale& locale);
// All seven keys of a memory.
void SaveMemoryRow(SettingsStore& store, int n, const MemoryRow& row, const QLocale& locale);
QString BankTitleKey(int bank);
QString DefaultBankTitle(int bank);

// ---- the file ----
// The value of "<Tag value>" in a line: the tag found without regard to case and followed by a blank,
// the value up to the next ">", in the line's own case. "" when the tag or its ">" is missing, or the
// value holds a "<" (a field whose ">" is missing runs into the next one).
QString ExtractData(const QString& line, const QString& tag);
// One memory's line, without its line end. The filter goes out only when withFilter (the radio has
// filter groups) and the memory names one.
QString MemoryExportLine(int n, const MemoryRow& row, bool withFilter);
// Every memory that has a frequency, one line each, each ended by "\n".
QString ExportMemoryText(const MemoryTable& table, bool withFilter);

struct MemoryImportResult {
    // One line per line that could not be read: the error, " in ", and the line.
    QStringList errors;
    // A memory number that isn't a number ends the import at its line (the lines before it stand).
    std::optional<int> failure;  // the error number
    QString failureText;
    QString failedLine;
};
// Reads the lines into the table: a memory that no line names is left as it was; a field a line leaves
// out clears that field of its memory.
MemoryImportResult ImportMemoryText(const QString& text, MemoryTable& table);
// mine.txt -> mine_errors.txt beside it; a name without "." gets "_errors" at its end.
QString MemoryErrorsFileName(const QString& importPath);

// The same on files, as the memory bank and the command line use them. Both raise TvError when a file
// can't be read or written. The import writes the errors file (its path into errorsPath) only when a
// line could not be read.
void ExportMemoryFile(const QString& path, const MemoryTable& table, bool withFilter);
MemoryImportResult ImportMemoryFile(const QString& path, MemoryTable& table, QString* errorsPath);

// Replaces the file whole, or leaves it as it was; false with the reason when it can't be written.
bool WriteWholeFile(const QString& path, const QByteArray& bytes, QString* why);

}  // namespace tv
