#include "operating/MemoryFile.h"

#include "operating/FrequencyDisplay.h"
#include "platform/SettingsStore.h"
#include "services/Convert.h"
#include "services/Errors.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace tv {

const QString kMemorySection = QStringLiteral("Memory");

namespace {
const QString kOn = QStringLiteral("On");

bool storedCheck(const SettingsStore& store, const char* field, int n) {
    return store.GetSetting(kMemorySection, MemoryKey(field, n), QStringLiteral("0")).trimmed() == QLatin1String("1");
}
QString check(bool on) { return on ? QStringLiteral("1") : QStringLiteral("0"); }
}  // namespace

QString MemoryKey(const char* field, int n) {
    const QString name = QLatin1String(field) == QLatin1String("Notes") ? QStringLiteral("MemoryNotes")
                                                                        : QLatin1String(field) + QStringLiteral("Memory");
    return name + QString::number(n);
}

QString ReformatMemoryFrequency(const QString& text, const QLocale& locale) {
    bool ok = false;
    const double kHz = ParseFrequency(text, locale, &ok);
    return ok ? FormatFrequency(kHz, 2, locale) : text;
}

void SaveMemoryFrequency(SettingsStore& store, int n, const QString& text, const QLocale& locale) {
    store.SaveSetting(kMemorySection, MemoryKey("Freq", n), ReformatMemoryFrequency(text, locale));
}

MemoryRow LoadMemoryRow(const SettingsStore& store, int n, const QLocale& locale) {
    MemoryRow row;
    row.freq = ReformatMemoryFrequency(store.GetSetting(kMemorySection, MemoryKey("Freq", n), QString()), locale);
    bool ok = false;
    const int mode = store.GetSetting(kMemorySection, MemoryKey("Mode", n), QStringLiteral("10")).trimmed().toInt(&ok);
    // -1 is what a store before the radio's first mode report leaves; anything else unknown is no mode.
    row.mode = ok && mode >= -1 && mode <= ModeUnknown ? mode : int(ModeUnknown);
    row.filter = store.GetSetting(kMemorySection, MemoryKey("Filter", n), QStringLiteral("Wide"));
    row.split = storedCheck(store, "Split", n);
    row.ham = storedCheck(store, "Ham", n);
    row.dual = storedCheck(store, "Dual", n);
    row.notes = store.GetSetting(kMemorySection, MemoryKey("Notes", n), QString());
    return row;
}

void SaveMemoryRow(SettingsStore& store, int n, const MemoryRow& row, const QLocale& locale) {
    SaveMemoryFrequency(store, n, row.freq, locale);
    store.SaveSetting(kMemorySection, MemoryKey("Mode", n), QString::number(row.mode));
    store.SaveSetting(kMemorySection, MemoryKey("Filter", n), row.filter);
    store.SaveSetting(kMemorySection, MemoryKey("Split", n), check(row.split));
    store.SaveSetting(kMemorySection, MemoryKey("Ham", n), check(row.ham));
    store.SaveSetting(kMemorySection, MemoryKey("Dual", n), check(row.dual));
    store.SaveSetting(kMemorySection, MemoryKey("Notes", n), row.notes);
}

QString BankTitleKey(int bank) { return QStringLiteral("MemoryBankContents%1").arg(bank); }
QString DefaultBankTitle(int bank) { return QStringLiteral("Memory Bank %1").arg(bank + 1); }

QString ExtractData(const QString& line, const QString& tag) {
    // Found without upper-casing the line: "ß" upper-cases to two letters and would shift every
    // position after it.
    const QString mark = QLatin1Char('<') + tag + QLatin1Char(' ');
    const qsizetype at = line.indexOf(mark, 0, Qt::CaseInsensitive);
    if (at < 0) return {};
    const qsizetype from = at + mark.size();
    const qsizetype end = line.indexOf(QLatin1Char('>'), from);
    if (end < 0) return {};
    const QString value = line.mid(from, end - from);
    return value.contains(QLatin1Char('<')) ? QString() : value;
}

QString MemoryExportLine(int n, const MemoryRow& row, bool withFilter) {
    QString line = QStringLiteral("<Memory %1> <Freq %2> <Mode %3> ").arg(n).arg(row.freq, ModeName(row.mode));
    if (withFilter && !row.filter.isEmpty()) line += QStringLiteral("<Filter ") + row.filter + QStringLiteral("> ");
    if (row.split) line += QStringLiteral("<Split On> ");
    if (row.ham) line += QStringLiteral("<HamBands On> ");
    if (row.dual) line += QStringLiteral("<Dual On> ");
    return line + QStringLiteral("<Notes ") + row.notes + QLatin1Char('>');
}

QString ExportMemoryText(const MemoryTable& table, bool withFilter) {
    QString text;
    for (int n = 1; n <= kMemoryCount; ++n)
        if (!table[size_t(n)].freq.isEmpty()) text += MemoryExportLine(n, table[size_t(n)], withFilter) + QLatin1Char('\n');
    return text;
}

MemoryImportResult ImportMemoryText(const QString& text, MemoryTable& table) {
    MemoryImportResult result;
    QStringList lines = text.split(QLatin1Char('\n'));
    // The last line's end makes no line of its own; an empty file has none.
    if (!lines.isEmpty() && lines.last().isEmpty()) lines.removeLast();
    for (QString line : lines) {
        if (line.endsWith(QLatin1Char('\r'))) line.chop(1);
        auto error = [&](const char* what) { result.errors << QLatin1String(what) + QStringLiteral(" in ") + line; };
        const QString memory = ExtractData(line, QStringLiteral("Memory"));
        if (memory.isEmpty()) {
            error("no memory specified");
            continue;
        }
        int n = 0;
        try {
            n = CInt(memory);
        } catch (const TvError& e) {
            result.failure = e.number();
            result.failureText = e.description();
            result.failedLine = line;
            return result;
        }
        if (n < 1 || n > kMemoryCount) {
            error("illegal memory");
            continue;
        }
        const QString freq = ExtractData(line, QStringLiteral("Freq"));
        if (freq.isEmpty()) {
            error("no frequency specified");
            continue;
        }
        const QString mode = ExtractData(line, QStringLiteral("Mode"));
        if (mode.isEmpty()) {
            error("no mode specified");
            continue;
        }
        MemoryRow& row = table[size_t(n)];
        row.freq = freq;
        row.mode = ModeIndex(mode);
        row.filter = ExtractData(line, QStringLiteral("Filter"));
        auto on = [&](const char* tag) { return ExtractData(line, QLatin1String(tag)).toUpper() == QLatin1String("ON"); };
        row.split = on("Split");
        row.ham = on("HamBands");
        row.dual = on("Dual");
        row.notes = ExtractData(line, QStringLiteral("Notes"));
    }
    return result;
}

QString MemoryErrorsFileName(const QString& importPath) {
    const QFileInfo info(importPath);
    const QString name = info.fileName();
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QString errorsName = dot < 0 ? name + QStringLiteral("_errors")
                                       : name.left(dot) + QStringLiteral("_errors") + name.mid(dot);
    const QString folder = importPath.left(importPath.size() - name.size());
    return folder + errorsName;
}

void ExportMemoryFile(const QString& path, const MemoryTable& table, bool withFilter) {
    QString why;
    if (!WriteWholeFile(path, ExportMemoryText(table, withFilter).toUtf8(), &why))
        throw TvError(kErrPathFileAccess, path + QStringLiteral(": ") + why);
}

MemoryImportResult ImportMemoryFile(const QString& path, MemoryTable& table, QString* errorsPath) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) throw TvError(kErrFileNotFound, path + QStringLiteral(": ") + f.errorString());
    const MemoryImportResult result = ImportMemoryText(QString::fromUtf8(f.readAll()), table);
    if (errorsPath) errorsPath->clear();
    if (!result.errors.isEmpty()) {
        const QString errors = MemoryErrorsFileName(path);
        QString why;
        if (!WriteWholeFile(errors, (result.errors.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8(), &why))
            throw TvError(kErrPathFileAccess, errors + QStringLiteral(": ") + why);
        if (errorsPath) *errorsPath = errors;
    }
    return result;
}

bool WriteWholeFile(const QString& path, const QByteArray& bytes, QString* why) {
    QSaveFile f(path);
    if (f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size() && f.commit()) return true;
    if (why) *why = f.errorString();
    return false;
}

}  // namespace tv
