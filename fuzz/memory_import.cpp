// The memory import file: any text imports, and what the table then holds exports and imports back to
// the same export. A memory without a mode is left out: its "<Mode >" is refused on import by design.
#include "operating/MemoryFile.h"
#include "support/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::fuzz::ensureApp();
    static tv::MemoryTable table, again;
    table = tv::MemoryTable{};
    tv::ImportMemoryText(tv::fuzz::text(data, size), table);
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
