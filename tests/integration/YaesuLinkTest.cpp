// The program's real logic on the real Qt loop and serial layer against the simulator as a Yaesu radio
// on a socat pty pair: what only a real line shows, a long read arriving in pieces. The bytes of each
// group are proven on the core alone and in the wire transcripts.

#include "support/SimulatedRadio.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

using test::waitFor;

class YaesuLink : public test::SimulatedRadio {
  protected:
    void start(const char* model) { startStation(QString::fromLatin1(model)); }
    // The simulator logged a block it received ("<- 00 ...").
    bool simGot(const char* hex) { return waitSim(QStringLiteral("<- ") + QLatin1String(hex), 5000); }
    bool shows(double kHz, int mode, int ms = 10000) {
        return waitFor([&] { return m().state().RadioFreq == kHz && m().state().RadioMode == mode; }, ms);
    }
};

TEST_F(YaesuLink, Ft747LongReadArrivesInPiecesAndIsFramedWhole) {
    start("FT747");
    ASSERT_TRUE(shows(7010.0, ModeCW)) << m().state().RadioFreq << " " << m().state().RadioMode;
    // 345 bytes at 4800 baud take 0.7 s: many polling ticks, and many pieces on the line.
    simCommand("slow 4800");
    simCommand("freq 14100");
    EXPECT_TRUE(shows(14100.0, ModeCW));
    m().queue().SetXcvrMode(ModeUSB);
    EXPECT_TRUE(simGot("00 00 00 01 0C"));
    EXPECT_TRUE(shows(14100.0, ModeUSB));
    EXPECT_TRUE(m().state().Responding);
}

}  // namespace
}  // namespace tv
