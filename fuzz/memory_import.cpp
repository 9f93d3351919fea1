// The memory import file: any text imports; every error names one of the input's lines, in order, and
// those lines alone change nothing; what the table then holds exports and imports back to the same
// export. A memory without a mode is left out: its "<Mode >" is refused on import by design.
#include "operating/MemoryFile.h"
#include "support/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::fuzz::ensureApp();
    static tv::MemoryTable table, again;
    table = tv::MemoryTable{};
    const QString input = tv::fuzz::text(data, size);
    const tv::MemoryImportResult r = tv::ImportMemoryText(input, table);
    const QStringList lines = input.split(QLatin1Char('\n'));
    QStringList rejected;
    qsizetype at = 0;
    for (const QString& e : r.errors) {
        const qsizetype mark = e.indexOf(QStringLiteral(" in "));
        FUZZ_CHECK(mark > 0, e.toUtf8());
        const QString line = e.mid(mark + 4);
        while (at < lines.size() && lines[at] != line && lines[at] != line + QLatin1Char('\r')) ++at;
        FUZZ_CHECK(at < lines.size(), e.toUtf8());
        rejected << lines[at++];
    }
    if (!r.failure) {
        again = tv::MemoryTable{};
        tv::ImportMemoryText(rejected.join(QLatin1Char('\n')), again);
        FUZZ_CHECK(again == tv::MemoryTable{}, rejected.join(QLatin1Char('\n')).toUtf8());
    }
    for (tv::MemoryRow& row : table)
        if (row.mode < 0 || row.mode >= tv::ModeUnknown) row = tv::MemoryRow{};
    for (bool withFilter : {false, true}) {
        const QString out = tv::ExportMemoryText(table, withFilter);
        again = tv::MemoryTable{};
        tv::ImportMemoryText(out, again);
        const QString back = tv::ExportMemoryText(again, withFilter);
        FUZZ_CHECK(back == out, (out + QStringLiteral("\n----\n") + back).toUtf8());
    }
    return 0;
}
