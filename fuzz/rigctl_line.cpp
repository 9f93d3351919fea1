// The rig server's line parser, in both VFO modes (the first byte picks): each command taken off a line
// is a command the table has, or a word that names none, and takes no more words than it has arguments.
#include "netserver/Rigctl.h"
#include "support/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const QByteArrayView line(reinterpret_cast<const char*>(data) + 1, qsizetype(size - 1));
    for (const tv::RigctlRequest& r : tv::parseRigctlLine(line, data[0] & 1)) {
        FUZZ_CHECK(r.command || !r.word.isNull(), line.toByteArray());
        // A command that takes the rest of the line has a negative count.
        if (r.command && r.command->args >= 0) FUZZ_CHECK(r.args.size() <= r.command->args, line.toByteArray());
    }
    return 0;
}
