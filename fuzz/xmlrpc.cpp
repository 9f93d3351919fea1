// The XML-RPC front door: any request body gets exactly one well-formed response (a value or a fault),
// and a response the reader takes back is a methodResponse.
#include "netserver/FlrigRpc.h"
#include "support/FuzzSupport.h"

#include "netserver/FakeRig.h"

#include <QXmlStreamReader>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::fuzz::ensureApp();
    const QByteArray body(reinterpret_cast<const char*>(data), qsizetype(size));
    tv::test::FakeRig rig;
    tv::FlrigSession session(rig, QStringLiteral("fuzz"));
    const QByteArray out = session.answer(body);
    QXmlStreamReader x(out);
    FUZZ_CHECK(x.readNextStartElement() && x.name() == QLatin1String("methodResponse"), body);
    while (!x.atEnd()) x.readNext();
    FUZZ_CHECK(!x.hasError(), body + "\n->\n" + out);
    return 0;
}
