// An S-meter scale file: any bytes load into sixteen entries or none (raw readings).
#include "support/FuzzSupport.h"
#include "support/ProgramFuzz.h"

#include <QDir>
#include <QFile>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::test::TestStation& st = tv::fuzz::station();
    QDir().mkpath(st.appDir + QStringLiteral("/SMeter"));
    QFile f(st.appDir + QStringLiteral("/SMeter/FUZZ.txt"));
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) return 0;
    f.write(reinterpret_cast<const char*>(data), qsizetype(size));
    f.close();
    st.dialogs.shown.clear();
    tv::SMeter& meter = st.p().meter;
    meter.LoadSMeterData(QStringLiteral("FUZZ"));
    FUZZ_CHECK(meter.SMeterCount == 0 || meter.SMeterCount == 16, QByteArray::number(meter.SMeterCount));
    for (double v : {0.0, 0.3, 1.0}) meter.UpdateSMeter(v);
    st.loop.runPosted();
    return 0;
}
