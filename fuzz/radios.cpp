// Radios.txt: any text loads or stops at its first problem (one message at most), and every model the
// catalogue keeps is named in capitals, as the program looks models up.
#include "core/RadioCatalogue.h"
#include "support/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::fuzz::ensureApp();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    tv::RadioCatalogue c;
    const auto r = c.parse(QString::fromUtf8(bytes));
    FUZZ_CHECK(r.boxMessages.size() + r.errorReports.size() <= 1, bytes);
    for (int i = 0; i < c.count(); ++i) FUZZ_CHECK(c.at(i).model == c.at(i).model.toUpper(), bytes);
    return 0;
}
