// TenTec replies and the Pegasus bridge's file: any bytes decode to one reply (or none) with finite
// numbers, and a reading has a finite, non-negative frequency and a mode of the program.
#include "protocols/tentec/TenTec.h"
#include "support/FuzzSupport.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    for (const bool orion : {false, true}) {
        const tv::TenTecReply r = tv::DecodeTenTecMessage(bytes, orion);
        FUZZ_CHECK(std::isfinite(r.kHz) && r.kHz >= 0, bytes);
    }
    if (const auto reading = tv::ReadPegasusOut(bytes)) {
        FUZZ_CHECK(std::isfinite(reading->kHz) && reading->kHz >= 0, bytes);
        FUZZ_CHECK(reading->mode >= 0 && reading->mode <= 10, bytes);
    }
    return 0;
}
