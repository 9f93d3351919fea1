// A suite-link record: any text parses, and every token (and one past the last) reads. The input split
// at its 0x01 bytes, encoded field by field, comes back field for field.
#include "suitelink/DDECommon.h"
#include "support/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::fuzz::ensureApp();
    const QString s = tv::fuzz::text(data, size);
    tv::DDECommon c;
    c.ParseRecord(s);
    FUZZ_CHECK(c.TokenCount >= 0, QByteArray::number(c.TokenCount));
    for (int i = 1; i <= c.TokenCount + 1; ++i) c.GetToken(std::int16_t(i));

    const QStringList values = s.split(QChar(1));
    if (values.size() >= tv::DDECommon::kMaxTokens) return 0;
    QString record;
    for (qsizetype f = 0; f < values.size(); ++f)
        record += tv::DDECommon::EncodeField(QStringLiteral("t%1").arg(f), values[f]);
    record += QStringLiteral("<eor>");
    c.ParseRecord(record);
    FUZZ_CHECK(c.TokenCount == values.size(), record.toUtf8());
    for (qsizetype f = 0; f < values.size(); ++f)
        FUZZ_CHECK(c.GetToken(std::int16_t(f + 1)).Value == values[f], record.toUtf8());
    return 0;
}
