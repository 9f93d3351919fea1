// A whole rig-server conversation, line by line, against a radio that takes every change: every line
// that holds a command gets an answer of whole lines, now or when the held answers are let go, "q" ends
// it, and no set reaches the radio that it couldn't take (raw commands are off by default).
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
        FUZZ_CHECK(out.isEmpty() || out.endsWith('\n'), line);
        if (session.closing()) break;
    }
    for (const QString& set : rig.sets) {
        const QStringList f = set.split(QLatin1Char(' '));
        FUZZ_CHECK(f[0] != QLatin1String("raw"), set.toUtf8());
        const double v = f.value(1).toDouble();
        if (f[0] == QLatin1String("freq") || f[0] == QLatin1String("tx"))
            FUZZ_CHECK(v >= 0 && v <= 999999990.0, set.toUtf8());
        if (f[0] == QLatin1String("mode")) FUZZ_CHECK(v >= 0 && v < int(tv::kRigModeCount), set.toUtf8());
    }
    return 0;
}
