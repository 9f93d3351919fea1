// Every Yaesu decoder against what a broken line can bring: random replies of the awaited length, short
// ones that end in the wait's timeout, long ones whose rest falls outside any wait, and noise with nothing
// awaited, through the whole program for every model; and the pure decoders with any length at all.

#include "core/RadioLink.h"
#include "protocols/yaesu/YaesuModels.h"
#include "support/TestStation.h"

#include <QFile>

#include <gtest/gtest.h>

#include <random>

namespace tv::test {
namespace {

QByteArray noise(std::mt19937& gen, int n) {
    QByteArray b(n, '\0');
    for (char& c : b) c = char(gen() & 0xFF);
    return b;
}

TEST(YaesuFuzz, PureDecodersTakeAnyLength) {
    std::mt19937 gen(12);
    const YaesuLayout layouts[] = {YaesuLayout::MP,    YaesuLayout::FT1000D, YaesuLayout::FT990,
                                   YaesuLayout::FT920, YaesuLayout::FT900,   YaesuLayout::FT890,
                                   YaesuLayout::FT100, YaesuLayout::FT817,   YaesuLayout::FT847,
                                   YaesuLayout::FT757, YaesuLayout::FT747,   YaesuLayout::FT767};
    for (int round = 0; round < 400; ++round) {
        const QByteArray r = noise(gen, int(gen() % 400));
        for (YaesuLayout l : layouts) {
            const YaesuOpData d = DecodeYaesuOpData(l, r, int(gen() % 3));
            EXPECT_TRUE(d.mode >= 0 && d.mode <= 10);
            EXPECT_TRUE(std::isfinite(d.kHz));
        }
        for (YaesuFlagsForm f :
             {YaesuFlagsForm::MP, YaesuFlagsForm::FT990, YaesuFlagsForm::FT890, YaesuFlagsForm::FT100})
            DecodeYaesuFlags(f, r);
        for (YaesuMeterForm f : {YaesuMeterForm::Byte1Of255, YaesuMeterForm::FT100, YaesuMeterForm::Low4Of15,
                                 YaesuMeterForm::Byte1Of15})
            EXPECT_TRUE(std::isfinite(DecodeYaesuMeter(f, r)));
        Decode767Status(r);
    }
    for (int b = 0; b < 256; ++b) {
        const YaesuFilterCodes c = SplitYaesuFilterByte(b);
        EXPECT_EQ(c.q * 16 + c.r, b);
        EXPECT_LE(std::abs(c.r), 8);
    }
}

TEST(YaesuFuzz, EveryModelSurvivesALineOfNoiseThroughTheWholeProgram) {
    QFile f(QStringLiteral(TOLVANE_SOURCE_DIR "/data/Radios.txt"));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QString catalogue = QString::fromUtf8(f.readAll());
    std::mt19937 gen(7);
    for (const char* model : {"FT1000D", "MP1000", "MP1000MKV", "FT990", "FT920", "FT900", "FT890", "FT840",
                              "FT757", "FT747", "FT767", "FT100", "FT817", "FT857", "FT897", "FT847"}) {
        SCOPED_TRACE(model);
        TestStation st(catalogue);
        st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QString::fromLatin1(model));
        st.preset(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(QStringLiteral("General"), QStringLiteral("InterrogateInterval"), QStringLiteral("50"));
        ASSERT_TRUE(st.start());
        RadioLink& link = st.m().link();
        int decoded = 0;
        for (int round = 0; round < 300; ++round) {
            st.loop.advance(int(gen() % 120) + 1);
            if (round % 25 == 0) {
                // Commands in between, so that every branch of the decoders meets noise.
                st.m().queue().SetXcvrFreq(1000 + gen() % 50000);
                st.m().queue().SetXcvrMode(int(gen() % 10));
                st.m().queue().SetXcvrSplit(gen() & 1);
                st.m().queue().SetXcvrVFOB();
                st.m().queue().SetXcvrVFOEqual();
                st.m().queue().SetXcvrVFOXch();
            }
            const int want = link.ExpectedBytes;
            int n;
            switch (gen() % 4) {
                case 0:
                    n = want;
                    break;  // the right length, any content
                case 1:
                    n = std::max(0, want - 1);
                    break;  // short: the wait times out
                case 2:
                    n = want + 7;
                    break;  // long: the rest is outside any wait
                default:
                    n = int(gen() % 20);
                    break;  // noise, awaited or not
            }
            if (want > 0 && n >= want) ++decoded;
            st.serial()->feed(noise(gen, n));
            st.loop.runPosted();
            if (round % 60 == 59) st.loop.advance(5100);
        }
        EXPECT_GT(decoded, 0);
        st.stop();
    }
}

}  // namespace
}  // namespace tv::test
