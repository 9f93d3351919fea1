// Suite-link command strings, one a line, through the command handler to the radio: whatever they
// ask, the radio's frequency stays finite, and every frequency written to it is eleven digits.
#include "support/FuzzSupport.h"
#include "support/ProgramFuzz.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::test::TestStation& st = tv::fuzz::station();
    for (const QString& line : tv::fuzz::text(data, size).split(QLatin1Char('\n'))) {
        std::int16_t cancel = 0;
        st.p().suiteLink.server.LinkExecute(line, cancel);
        st.loop.advance(300);
    }
    st.loop.advance(2000);
    FUZZ_CHECK(std::isfinite(st.m().state().RadioFreq), QByteArray::number(st.m().state().RadioFreq));
    for (const QByteArray& cmd : st.serial()->written.split(';')) {
        if (!cmd.startsWith("FA") && !cmd.startsWith("FB")) continue;
        bool digits = cmd.size() == 2 || cmd.size() == 13;
        for (char c : cmd.mid(2)) digits = digits && c >= '0' && c <= '9';
        FUZZ_CHECK(digits, cmd);
    }
    st.serial()->written.clear();
    return 0;
}
