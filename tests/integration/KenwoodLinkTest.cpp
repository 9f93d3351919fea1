// The program's real logic on the real Qt loop and serial layer, against the simulator as a TS-2000 on
// a socat pty pair: the radio is identified, polled, commanded, and its meter followed.

#include "app/Program.h"
#include "platform/Dialogs.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialDevice.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "support/SimulatedRadio.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

using test::waitFor;
using test::PtyPair;

class KenwoodLink : public test::SimulatedRadio {
protected:
    void SetUp() override {
        startStation(QStringLiteral("TS-2000"));
        if (program)
            QObject::connect(&m().state(), &RadioState::meterReported, &m().state(), [this](double v) { meter = v; });
    }
    bool simReceived(const QString& text) { return waitSim(text, 0); }
    double meter = -1;
};

TEST_F(KenwoodLink, IdentifiesPollsCommandsAndFollowsTheMeter) {
    ASSERT_TRUE(waitFor([&] { return m().state().RadioDisplayName == QLatin1String("Kenwood TS-2000"); }, 10000));
    // Polling brings frequency and mode in through the status reply.
    ASSERT_TRUE(waitFor([&] { return m().state().RadioFreq == 7010.0 && m().state().RadioMode == 3; }, 10000))
        << m().state().RadioFreq << " " << m().state().RadioMode;
    EXPECT_TRUE(waitFor([&] { return simReceived(QStringLiteral("AI1;")) && simReceived(QStringLiteral("SM0;")); }, 5000));

    m().queue().SetXcvrFreq(14025.5);
    ASSERT_TRUE(waitFor([&] { return simReceived(QStringLiteral("FA00014025500;")); }, 5000));
    // The radio's own dial moves on from there, and the program follows.
    simCommand("dial +100");
    EXPECT_TRUE(waitFor([&] { return m().state().RadioFreq == 14025.6; }, 5000)) << m().state().RadioFreq;

    m().queue().SetXcvrMode(1);
    EXPECT_TRUE(waitFor([&] { return simReceived(QStringLiteral("MD2;")); }, 5000));
    EXPECT_TRUE(waitFor([&] { return m().state().RadioMode == 1; }, 5000));

    simCommand("meter 15");
    EXPECT_TRUE(waitFor([&] { return meter == 0.5; }, 5000)) << meter;

    // In CW the width list is offered and shows the width the radio reports through the filter chain.
    m().queue().SetXcvrMode(3);
    EXPECT_TRUE(waitFor([&] { return m().state().RadioMode == 3 && program->main.WidthCombo.visible(); }, 5000));
    EXPECT_TRUE(waitFor([&] { return simReceived(QStringLiteral("FW;")); }, 5000));
    EXPECT_TRUE(waitFor([&] { return !program->main.WidthCombo.text().isEmpty(); }, 5000));
}

}  // namespace
}  // namespace tv
