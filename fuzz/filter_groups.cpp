// The Yaesu filter-group file: any text parses, nothing more rows than the text has lines.
#include "core/FilterGroups.h"
#include "support/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString s = tv::fuzz::text(data, size);
    const auto rows = tv::ParseFilterGroupText(s);
    FUZZ_CHECK(rows.size() <= size_t(s.count(QLatin1Char('\n')) + s.count(QLatin1Char('\r')) + 1), s.toUtf8());
    return 0;
}
