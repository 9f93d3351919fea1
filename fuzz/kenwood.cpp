// Kenwood replies of any shape (an ID reply first tells the model); every frequency the program writes
// is eleven digits.
#include "support/FuzzSupport.h"
#include "support/RadioFuzz.h"

namespace {
void check(const QByteArray& w) {
    for (const QByteArray& cmd : w.split(';')) {
        if (!(cmd.startsWith("FA") || cmd.startsWith("FB")) || cmd.size() == 2) continue;
        bool digits = cmd.size() == 13;
        for (char c : cmd.mid(2)) digits = digits && c >= '0' && c <= '9';
        FUZZ_CHECK(digits, cmd);
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<tv::fuzz::FuzzModel> models = {{"TS-2000", check}, {"TS-570", check}, {"TS-850", check}};
    return tv::fuzz::driveRadio(models, data, size);
}
