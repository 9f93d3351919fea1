// The SDR console's strings: any text decodes to one report, and a mode verb's mode is a system mode.
#include "protocols/sdrconsole/SdrConsole.h"
#include "support/FuzzSupport.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString s = tv::fuzz::text(data, size);
    const tv::ConsoleReport r = tv::DecodeConsoleString(s);
    FUZZ_CHECK(r.mode >= 0 && r.mode <= 10, s.toUtf8());
    if (r.number && std::isfinite(*r.number)) tv::SDRFrequency(*r.number);
    return 0;
}
