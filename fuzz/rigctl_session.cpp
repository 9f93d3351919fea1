// A whole rig-server conversation, line by line, against a radio that takes every change: every line
// that holds a command gets an answer, now or when the held answers are let go, and "q" ends it.
#include "netserver/FakeRig.h"
#include "netserver/Rigctl.h"
#include "support/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::fuzz::ensureApp();
    tv::test::FakeRig rig;
    tv::RigctlSession session(rig, QStringLiteral("Tolvane"));
    const QByteArray all(reinterpret_cast<const char*>(data), qsizetype(size));
    for (const QByteArray& line : all.split('\n')) {
        const bool commands = !tv::parseRigctlLine(line, session.vfoMode()).isEmpty();
        QByteArray out = session.answer(line);
        if (session.holding()) {
            rig.settled = !rig.settled;
            out += session.resume(!rig.settled);
        }
        if (commands && !session.holding()) FUZZ_CHECK(!out.isEmpty(), line);
        if (session.closing()) break;
    }
    return 0;
}
