// The tagged record: fields taken by count, the end mark, the failures that keep what was parsed,
// and a fuzz run that must neither crash nor lose a field that was encoded properly.

#include "services/Errors.h"
#include "suitelink/DDECommon.h"


#include <gtest/gtest.h>

namespace tv {
namespace {

class DDERecord : public ::testing::Test {
protected:
    void SetUp() override {
        setErrorReporter([this](int number, const QString& label, const QString&) {
            reports << label + QLatin1Char(' ') + QString::number(number);
        });
    }
    void TearDown() override { setErrorReporter({}); }
    QStringList parse(const QString& record) {
        reports.clear();
        dde.ParseRecord(record);
        QStringList out;
        for (int i = 1; i <= dde.TokenCount && i <= DDECommon::kMaxTokens; ++i)
            out << dde.GetToken(std::int16_t(i)).Tag + QLatin1Char('=') + dde.GetToken(std::int16_t(i)).Value;
        return out;
    }
    DDECommon dde;
    QStringList reports;
};

TEST_F(DDERecord, FieldsAreTakenByCountAndTheParseStopsWhereTheFormatSays) {
    EXPECT_EQ(parse(QString()), QStringList());
    EXPECT_EQ(dde.GetToken(1).Tag, QString());
    EXPECT_EQ(dde.GetToken(1).Value, QString());
    EXPECT_EQ(parse(QStringLiteral("<xcvrfreq:8>14025.50<xcvrmode:2>CW<eor>")),
              QStringList({QStringLiteral("xcvrfreq=14025.50"), QStringLiteral("xcvrmode=CW")}));
    EXPECT_EQ(parse(QStringLiteral("junk<a:1>x")), QStringList{QStringLiteral("a=x")});
    EXPECT_EQ(parse(QStringLiteral("<a:3>a>b<eor>")), QStringList{QStringLiteral("a=a>b")});
    EXPECT_EQ(parse(QStringLiteral("<a:1>x<EOR><b:1>y")), QStringList{QStringLiteral("a=x")});
    EXPECT_EQ(parse(QStringLiteral("<a>x<b:1>y")), QStringList());
    EXPECT_EQ(parse(QStringLiteral("<a:0><b:1>y")), QStringList({QStringLiteral("a="), QStringLiteral("b=y")}));
    // A value ending the string exactly leaves nothing to parse, and that is no failure.
    EXPECT_EQ(parse(QStringLiteral("<a:2>xy")), QStringList{QStringLiteral("a=xy")});
    EXPECT_TRUE(reports.isEmpty()) << reports.join(QLatin1Char('|')).toStdString();
    // Each parse starts over.
    EXPECT_EQ(parse(QStringLiteral("no fields here")), QStringList());
    EXPECT_EQ(dde.TokenCount, 0);
}

TEST_F(DDERecord, ABadLengthIsReportedAndTheFieldsBeforeItStand) {
    EXPECT_EQ(parse(QStringLiteral("<a:5>xy")), QStringList());
    EXPECT_EQ(reports, QStringList{QStringLiteral("DDECommon.ParseRecord 5")});
    for (const char* bad : {"<f:1>1<a:x>yz", "<f:1>1<a:-1>yz", "<f:1>1<a:40000>yz", "<f:1>1<a:>yz", "<f:1>1<a:2:S>yz"}) {
        EXPECT_EQ(parse(QString::fromLatin1(bad)), QStringList{QStringLiteral("f=1")}) << bad;
        ASSERT_EQ(reports.size(), 1) << bad;
        EXPECT_TRUE(reports[0].startsWith(QLatin1String("DDECommon.ParseRecord "))) << bad;
    }
}

TEST_F(DDERecord, TheHundredAndFirstFieldFailsAndItsCountStands) {
    QString record;
    for (int i = 0; i < 101; ++i) record += QStringLiteral("<n:%1>%2").arg(QString::number(i).size()).arg(i);
    parse(record);
    EXPECT_EQ(reports, QStringList{QStringLiteral("DDECommon.ParseRecord 9")});
    EXPECT_EQ(dde.TokenCount, 101);
    EXPECT_EQ(dde.GetToken(100).Value, QStringLiteral("99"));
    reports.clear();
    EXPECT_EQ(dde.GetToken(101).Value, QString());
    EXPECT_EQ(dde.GetToken(0).Value, QString());
    EXPECT_EQ(dde.GetToken(-3).Value, QString());
    EXPECT_EQ(reports, QStringList(3, QStringLiteral("DDECommon.GetToken 9")));
}

TEST(DDETable, SendersAndServerNamesFollowTheTable) {
    EXPECT_EQ(DDECommon::SenderPrefix(), QStringLiteral("000"));
    EXPECT_EQ(DDECommon::SenderPrefix(6), QStringLiteral("006"));
    EXPECT_EQ(DDECommon::ServerName(1), QStringLiteral("LogServer"));
    EXPECT_EQ(DDECommon::ServerNickName(6), QStringLiteral("TX"));
    EXPECT_EQ(DDECommon::StripTrailingCRLF(QStringLiteral("000test\r\n")), QStringLiteral("000test"));
}

}  // namespace
}  // namespace tv
