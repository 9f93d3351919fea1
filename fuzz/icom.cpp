// Icom CI-V replies of any shape; every frequency the program writes is BCD.
#include "support/FuzzSupport.h"
#include "support/RadioFuzz.h"

namespace {
// A frame: FE FE to from command data FD. Commands 00 and 05 carry a frequency.
void check(const QByteArray& w) {
    qsizetype i = 0;
    while ((i = w.indexOf("\xFE\xFE", i)) >= 0) {
        const qsizetype endAt = w.indexOf('\xFD', i);
        if (endAt < 0) break;
        const QByteArray frame = w.mid(i, endAt - i);
        if (frame.size() > 5 && (frame[4] == 0x00 || frame[4] == 0x05))
            FUZZ_CHECK(tv::fuzz::allBcd(frame.mid(5)), frame.toHex(' '));
        i = endAt + 1;
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<tv::fuzz::FuzzModel> models = {
        {"IC-756PRO", check}, {"IC-735", check}, {"IC-775", check}, {"IC-706MKIIG", check}, {"IC-7300", check}};
    return tv::fuzz::driveRadio(models, data, size);
}
