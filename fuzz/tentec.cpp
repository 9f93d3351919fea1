// Ten-Tec replies of any shape, for the CI-V and the text models alike.
#include "support/RadioFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<tv::fuzz::FuzzModel> models = {
        {"OMNIV.9", nullptr}, {"ORION", nullptr}, {"JUPITER", nullptr}, {"ARGONAUT V", nullptr}};
    return tv::fuzz::driveRadio(models, data, size);
}
