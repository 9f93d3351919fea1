#include "core/RadioCatalogue.h"

#include "services/Errors.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <iterator>

namespace tv {
namespace {

// The flags in a fixed order of their own, compared one by one so that a failure names the flag that
// differs; the expected values are written as a row of T and F in this order.
::testing::AssertionResult hasFlags(const RadioInfo& r, const char* want) {
    const std::pair<const char*, bool> got[] = {
        {"split", r.split}, {"dual watch", r.dualWatch}, {"filter groups", r.filterGroups},
        {"VFO select", r.vfoSel}, {"VFO equal", r.vfoEqual}, {"VFO exchange", r.vfoExchange},
        {"main/sub select", r.mainSubSel}, {"main/sub equal", r.mainSubEqual},
        {"main/sub exchange", r.mainSubExchange}, {"RTTY", r.rtty}, {"WBFM", r.wbfm}, {"CW-R", r.cwR},
        {"RTTY-R", r.rttyR}, {"filter byte", r.filterByte}, {"short frequency", r.shortFreq},
        {"filter 0", r.filter0}, {"PTT", r.ptt}, {"S-meter", r.sMeter}, {"serial port", r.serialPort}};
    std::string wrong;
    for (size_t i = 0; i < std::size(got); ++i)
        if (got[i].second != (want[i] == 'T'))
            wrong += std::string(" ") + got[i].first + (got[i].second ? "=T" : "=F");
    if (wrong.empty()) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << r.model.toStdString() << ": wrong" << wrong;
}
const char* const kDefaults = "TFTTTTFFFTFFFTFFFFT";

TEST(RadioCatalogue, LinesTagsAndDefaults) {
    RadioCatalogue cat;
    const auto r = cat.parse(QString::fromUtf8(
        "\xEF\xBB\xBF   ' a comment with leading blanks, RADIO=IX\r\n\r\n"
        "RADIO = ik-Foo ,SPLIT = t\r\n"
        "RADIO=YFT817, ADDRESS=4=5, SPLIT=Y, PTT=true, BOGUS=T, RADIO=KZZ, SMETER\n"
        "RADIO=NARGONAUT V  ,junk,dualwatch=T\r"  // a lone CR ends a line too
        "Radio=F\n"
        "RADIO=IX, split=F, DUALWATCH=T, FilterGroups=F, VFOSEL=F, VFOEQUAL=F, VFOEXCHANGE=F, MAINSUBSEL=T, "
        "MAINSUBEQUAL=T, MAINSUBEXCHANGE=T, RTTY=F, WBFM=T, CW-R=T, RTTY-R=T, FILTERBYTE=F, SHORTFREQ=T, "
        "ADDRESS= 5e , FILTER0=T, PTT=T, SMETER=T, SERIALPORT=F\n"
        "RADIO=IY, RTTY-R=T, MAINSUBEQUAL=T\n"));
    EXPECT_TRUE(r.boxMessages.isEmpty() && r.errorReports.isEmpty() && !r.fatal);
    ASSERT_EQ(cat.names(), (QStringList{"K-FOO", "FT817", "ARGONAUT V", "", "X", "Y"}));
    EXPECT_EQ(cat.at(0).supplier, QLatin1Char('I'));
    EXPECT_TRUE(hasFlags(cat.at(0), kDefaults));
    // The first "=" decides; "Y" isn't "T"; unknown tags, a later RADIO and a last tag without "=" are
    // passed over.
    EXPECT_EQ(cat.at(1).defaultAddress, QStringLiteral("4=5"));
    EXPECT_TRUE(hasFlags(cat.at(1), "FFTTTTFFFTFFFTFFTFT"));
    EXPECT_EQ(cat.at(2).supplier, QLatin1Char('N'));
    EXPECT_TRUE(cat.at(2).dualWatch);
    EXPECT_EQ(cat.at(3).supplier, QLatin1Char('F'));
    EXPECT_TRUE(hasFlags(cat.at(3), kDefaults));
    EXPECT_TRUE(cat.at(3).defaultAddress.isEmpty());
    // Every tag reaches its own field, and a tag that begins like another sets only its own.
    EXPECT_TRUE(hasFlags(cat.at(4), "FTFFFFTTTFTTTFTTTTF"));
    EXPECT_EQ(cat.at(4).defaultAddress, QStringLiteral("5E"));
    EXPECT_TRUE(hasFlags(cat.at(5), "TFTTTTFTFTFFTTFFFFT"));
}

TEST(RadioCatalogue, LoadingStopsAtTheFirstBadLineOrTheLastIndex) {
    RadioCatalogue cat;
    auto r = cat.parse(QStringLiteral("RADIO=IA\n  SPLIT=T, RADIO=IC\nRADIO=ID\n"));
    EXPECT_EQ(cat.names(), QStringList{"A"});
    EXPECT_EQ(r.boxMessages, QStringList{QStringLiteral(
                                 "Error in Radios.txt file: First tag must be Radio -   SPLIT=T, RADIO=IC")});
    // A comma ahead of the first "=" makes it part of the first tag, which then isn't RADIO.
    r = cat.parse(QStringLiteral("note, RADIO=IB\n"));
    EXPECT_EQ(cat.count(), 0);
    EXPECT_EQ(r.boxMessages.size(), 1);
    // "parser error - no ','" can't be reached from a text: every line gets a comma at its end, and the rest
    // of a line keeps that comma until nothing is left.

    QString many;
    for (int i = 0; i < 300; ++i) many += QStringLiteral("RADIO=YR%1\n").arg(i);
    r = cat.parse(many);
    ASSERT_EQ(cat.count(), 256);
    EXPECT_EQ(cat.at(255).model, QStringLiteral("R255"));
    EXPECT_EQ(r.errorNumber, kErrSubscript);
    EXPECT_EQ(r.errorReports.size(), 1);
    // Told in words the operator can act on, in a box as well as the log.
    ASSERT_EQ(r.boxMessages.size(), 1);
    EXPECT_TRUE(r.boxMessages[0].startsWith(QStringLiteral("Radios.txt holds more than 256 radios; \"RADIO=YR256\""))) << r.boxMessages[0].toStdString();
    for (int bad : {-1, 256}) EXPECT_THROW((void)cat.at(bad), TvError);

    QTemporaryDir dir;
    const QString missing = dir.filePath(QStringLiteral("Radios.txt"));
    r = cat.load(missing);
    EXPECT_TRUE(r.fatal);
    EXPECT_EQ(r.fatalMessage,
              QStringLiteral("Terminating due to inability to open radio configuration file: ") + missing);
    EXPECT_EQ(cat.count(), 0);
}

TEST(RadioCatalogue, AMegabyteOnOneLineLoads) {
    RadioCatalogue cat;
    // A megabyte on one line, of pairs and of bare commas.
    cat.parse(QStringLiteral("RADIO=IBIG") + QStringLiteral(",SPLIT=F").repeated(120000) +
              QStringLiteral(",").repeated(100000) + QStringLiteral("PTT=T"));
    ASSERT_EQ(cat.count(), 1);
    EXPECT_TRUE(hasFlags(cat.at(0), "FFTTTTFFFTFFFTFFTFT"));
}

TEST(RadioCatalogue, DeliveredFileDescribesEveryProtocol) {
    RadioCatalogue cat;
    const auto r = cat.load(QStringLiteral(TOLVANE_SOURCE_DIR "/data/Radios.txt"));
    EXPECT_TRUE(r.boxMessages.isEmpty() && r.errorReports.isEmpty() && !r.fatal)
        << r.fatalMessage.toStdString();
    QSet<QString> suppliers, models;
    for (int i = 0; i < cat.count(); ++i) {
        const RadioInfo& radio = cat.at(i);
        const std::string name = (QString(radio.supplier) + radio.model).toStdString();
        suppliers << QString(radio.supplier);
        // A radio is chosen by its name: a second row of the same name could never be reached.
        EXPECT_FALSE(models.contains(radio.model)) << name;
        models << radio.model;
        const bool civ = radio.supplier == QLatin1Char('I') || radio.supplier == QLatin1Char('T');
        EXPECT_EQ(QRegularExpression(QStringLiteral("^[0-9A-F]{2}$")).match(radio.defaultAddress).hasMatch(),
                  civ)
            << name;
        // Frames are sent in four bytes only with FILTERBYTE false, so SHORTFREQ alone would be half a radio.
        EXPECT_FALSE(radio.shortFreq && radio.filterByte) << name;
        EXPECT_EQ(radio.serialPort,
                  radio.supplier != QLatin1Char('F') && radio.model != QStringLiteral("PEGASUS"))
            << name;
    }
    EXPECT_EQ(suppliers, (QSet<QString>{"I", "T", "K", "Y", "N", "F"}));
    for (const char* m : {"FT1000D", "MP1000", "MP1000MKV", "FT990",      "FT920",   "FT900", "FT890",
                          "FT840",   "FT757",  "FT747",     "FT767",      "FT100",   "FT817", "FT857",
                          "FT897",   "FT847",  "PEGASUS",   "ARGONAUT V", "JUPITER", "ORION", "OMNIV.9"})
        EXPECT_TRUE(models.contains(QLatin1String(m))) << m;
}

}  // namespace
}  // namespace tv
