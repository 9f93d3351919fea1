// Yaesu replies of any shape, the FT-767's echo handshake among them; every frequency the program
// writes in a five-byte command is BCD.
#include "support/FuzzSupport.h"
#include "support/RadioFuzz.h"

namespace {
// Five-byte commands, the opcode last; opcode is the model's set-frequency one.
std::function<void(const QByteArray&)> bcdUnder(char opcode) {
    return [opcode](const QByteArray& w) {
        for (qsizetype i = 0; i + 5 <= w.size(); i += 5)
            if (w[i + 4] == opcode) FUZZ_CHECK(tv::fuzz::allBcd(w.mid(i, 4)), w.mid(i, 5).toHex(' '));
    };
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<tv::fuzz::FuzzModel> models = {
        {"FT817", bcdUnder(0x01)}, {"FT857", bcdUnder(0x01)}, {"FT1000D", bcdUnder(0x0A)},
        {"MP1000", bcdUnder(0x0A)}, {"FT990", bcdUnder(0x0A)}, {"FT920", bcdUnder(0x0A)},
        {"FT890", bcdUnder(0x0A)},  {"FT100", bcdUnder(0x0A)}, {"FT847", bcdUnder(0x01)},
        {"FT897", bcdUnder(0x01)},  {"FT900", bcdUnder(0x0A)}, {"FT840", bcdUnder(0x0A)},
        {"MP1000MKV", bcdUnder(0x0A)},
        {"FT757", nullptr},         {"FT747", nullptr},        {"FT767", nullptr}};
    return tv::fuzz::driveRadio(models, data, size);
}
