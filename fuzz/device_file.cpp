// A device table file: any bytes read into at most the table's rows, each with a number for its
// frequency and three values; a load that stops names the line it stopped at.
#include "automation/DeviceFile.h"
#include "services/Common.h"
#include "support/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::fuzz::ensureApp();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const tv::DeviceFileContents f = tv::ReadDeviceFile(bytes, QStringLiteral("Device.txt"), 1, QLatin1Char('.'));
    FUZZ_CHECK(f.controlNames.size() <= 3, bytes);
    FUZZ_CHECK(f.rows.size() <= size_t(tv::kMaxDeviceRows), bytes);
    for (const tv::GridRow& r : f.rows) FUZZ_CHECK(r.size() == 4 && tv::IsReal(r[0], QLatin1Char('.')), bytes);
    QStringList lines = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
    if (!lines.isEmpty() && lines.last().isEmpty()) lines.removeLast();
    const qsizetype next = qsizetype(f.rows.size()) + 1;
    if (!f.message.isEmpty() && next < lines.size() && f.rows.size() < size_t(tv::kMaxDeviceRows)) {
        QString bad = lines[next];
        while (bad.endsWith(QLatin1Char('\r'))) bad.chop(1);  // every CR before the line end
        FUZZ_CHECK(f.message.endsWith(QStringLiteral(": ") + bad), bytes);
    }
    std::vector<tv::GridRow> rows = f.rows;
    tv::SortDeviceRows(rows);
    tv::WriteDeviceFile(int(f.controlNames.size()), f.controlNames, f.rows);
    return 0;
}
