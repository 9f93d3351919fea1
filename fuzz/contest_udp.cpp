// The contest loggers' UDP commands: any datagram is a command with values in range or a reason for
// dropping it, and the listener's handling of it leaves only sets the backend can take.
#include "netserver/ContestUdp.h"
#include "support/FuzzSupport.h"

#include "netserver/FakeRig.h"
#include "platform/SimEventLoop.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::fuzz::ensureApp();
    const QByteArray datagram(reinterpret_cast<const char*>(data), qsizetype(size));
    QString why;
    const auto command = tv::ParseContestCommand(datagram, &why);
    FUZZ_CHECK(command || !why.isEmpty(), datagram);
    if (command) {
        FUZZ_CHECK(command->radioNr >= 0, datagram);
        if (command->kind == tv::ContestCommand::SetFrequency)
            FUZZ_CHECK(command->hz > 0 && command->hz <= 100'000'000'000LL, datagram);
        else
            FUZZ_CHECK(command->sideband || (command->mode >= 0 && command->mode < tv::kRigModeCount),
                       datagram);
    }
    tv::SimEventLoop loop;
    tv::test::FakeRig rig;
    tv::ContestUdp udp(rig, loop);
    udp.handle(datagram, QStringLiteral("fuzz"));
    FUZZ_CHECK(rig.sets.size() <= 1, datagram);
    return 0;
}
