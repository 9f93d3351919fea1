// The program's real logic on the real Qt loop and serial layer against the simulator as a Yaesu radio
// of each group, on a socat pty pair: chosen by catalogue, polled, tuned, switched in mode, and its meter
// followed, each seen on both ends of the line.

#include "support/SimulatedRadio.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

using test::waitFor;

class YaesuLink : public test::SimulatedRadio {
  protected:
    void start(const char* model) {
        startStation(QString::fromLatin1(model));
        if (program)
            QObject::connect(&m().state(), &RadioState::meterReported, &m().state(),
                             [this](double v) { meter = v; });
    }
    // The simulator logged a block it received ("<- 00 ...").
    bool simGot(const char* hex) { return waitSim(QStringLiteral("<- ") + QLatin1String(hex), 5000); }
    bool shows(double kHz, int mode, int ms = 10000) {
        return waitFor([&] { return m().state().RadioFreq == kHz && m().state().RadioMode == mode; }, ms);
    }
    double meter = -1;
};

TEST_F(YaesuLink, SmallRadioIsPolledTunedSwitchedAndMetered) {
    start("FT817");
    EXPECT_EQ(m().state().RadioDisplayName, QStringLiteral("Yaesu FT817"));
    ASSERT_TRUE(shows(7010.0, ModeCW)) << m().state().RadioFreq << " " << m().state().RadioMode;
    m().queue().SetXcvrFreq(14025.5);
    EXPECT_TRUE(simGot("01 40 25 50 01"));
    simCommand("dial +100");
    EXPECT_TRUE(shows(14025.6, ModeCW));
    m().queue().SetXcvrMode(ModeUSB);
    EXPECT_TRUE(simGot("01 00 00 00 07"));
    EXPECT_TRUE(shows(14025.6, ModeUSB));
    simCommand("meter 10");
    EXPECT_TRUE(waitFor([&] { return meter == double(10.0f / 15.0f); }, 5000)) << meter;
    // VFO B asked while on A: the flag read, then the toggle.
    m().queue().SetXcvrVFOB();
    EXPECT_TRUE(simGot("00 55 00 00 BB"));
    EXPECT_TRUE(simGot("00 00 00 00 81"));
}

// The radio obeys but its answers are lost: the program counts it silent and polls it slowly. Keyed
// and unkeyed meanwhile, the key's answer never comes; the unkey leaves when that wait ends, and the
// program holds the radio keyed until then. Its answers back, polling picks it up again.
TEST_F(YaesuLink, AMuteSmallRadioIsUnkeyedWhenTheWaitEndsAndFoundAgainWhenItAnswers) {
    start("FT817");
    ASSERT_TRUE(shows(7010.0, ModeCW)) << m().state().RadioFreq << " " << m().state().RadioMode;
    simCommand("mute on");
    ASSERT_TRUE(waitFor([&] { return !m().state().Responding; }, 8000));
    const qsizetype from = logMark();
    m().Transmit();
    ASSERT_TRUE(waitSim(QStringLiteral("<- 00 00 00 00 08"), 8000)) << simLog.mid(from).toStdString();
    m().Receive();
    EXPECT_TRUE(m().state().transmitting());
    EXPECT_TRUE(waitSim(QStringLiteral("<- 00 00 00 00 88"), 8000));
    EXPECT_TRUE(
        receivedInOrder(QStringLiteral("<- 00 00 00 00 08"), QStringLiteral("<- 00 00 00 00 88"), from));
    EXPECT_TRUE(waitFor([&] { return !m().state().transmitting(); }, 1000));
    simCommand("mute off");
    simCommand("freq 14100");
    EXPECT_TRUE(shows(14100.0, ModeCW, 15000));
    EXPECT_TRUE(m().state().Responding);
}

TEST_F(YaesuLink, MpFamilyReadsBothVfosItsFlagsAndItsMeter) {
    start("MP1000");
    ASSERT_TRUE(shows(7010.0, ModeCW)) << m().state().RadioFreq << " " << m().state().RadioMode;
    EXPECT_TRUE(simGot("00 00 00 01 FA"));
    m().queue().SetXcvrFreq(14025.5);
    EXPECT_TRUE(simGot("50 25 40 01 0A"));
    // CW reverse comes back through the flag above 128 of its mode record.
    m().queue().SetXcvrMode(ModeCWR);
    EXPECT_TRUE(simGot("00 00 00 03 0C"));
    EXPECT_TRUE(shows(14025.5, ModeCWR));
    simCommand("split on");
    EXPECT_TRUE(waitFor([&] { return program->main.SplitBox.checked(); }, 5000));
    simCommand("meter 51");
    EXPECT_TRUE(waitFor([&] { return meter == double(51.0f / 255.0f); }, 5000)) << meter;
    EXPECT_DOUBLE_EQ(m().state().VFOAFreq, 14025.5);
    EXPECT_DOUBLE_EQ(m().state().VFOBFreq, 14025.5);  // where the simulator starts its VFO B
}

TEST_F(YaesuLink, Ft767IsCommandedAndPolledThroughItsHandshake) {
    start("FT767");
    ASSERT_TRUE(shows(7010.0, ModeCW)) << m().state().RadioFreq << " " << m().state().RadioMode;
    m().queue().SetXcvrFreq(14025.5);
    EXPECT_TRUE(simGot("50 25 40 01 08"));
    m().queue().SetXcvrMode(ModeUSB);
    EXPECT_TRUE(simGot("00 00 00 11 0A"));
    EXPECT_TRUE(shows(14025.5, ModeUSB));
    simCommand("dial -500");
    EXPECT_TRUE(shows(14025.0, ModeUSB));
    // Every handshake ends with CAT off, so that the radio's own knobs work between them.
    EXPECT_TRUE(simGot("00 00 00 01 00"));
}

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
