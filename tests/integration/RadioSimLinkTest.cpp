// The program's real logic on the real Qt loop and serial layer, against the radio simulator as an
// IC-7300 on a socat pty pair whose dial turns by itself, as in the demo.

#include "support/SimulatedRadio.h"

#include <gtest/gtest.h>

#include <set>

namespace tv {
namespace {

using test::waitFor;

// The demo's radio, its dial turning by itself: the meter the program shows rises and falls with it.
class WanderingRadio : public test::SimulatedRadio {};

TEST_F(WanderingRadio, TheWanderingDialBringsAMeterThatMoves) {
    startStation(QStringLiteral("IC-7300"), QStringLiteral("94"),
                 {QStringLiteral("--dial-step"), QStringLiteral("100"), QStringLiteral("--dial-every"), QStringLiteral("300")});
    std::set<double> readings;
    QObject::connect(&m().state(), &RadioState::meterReported, &m().state(), [&](double v) { readings.insert(v); });
    EXPECT_TRUE(waitFor([&] { return readings.size() >= 3; }, 15000)) << readings.size();
}

}  // namespace
}  // namespace tv
