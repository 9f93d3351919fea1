// The program's real logic on the real Qt loop and serial layer against the simulator as a Yaesu radio
// on a socat pty pair: what only a real line shows (the filter groups' blocks in order as the radio
// receives them, a long read arriving in pieces). The bytes of each group are proven on the core alone.

#include "netserver/RigBackend.h"
#include "support/SimulatedRadio.h"

#include <QFile>

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

TEST_F(YaesuLink, MpFilterGroupsLeaveInOrderFollowTheModeAndFollowTheRadiosKnobsSilently) {
    start("MP1000");
    ASSERT_TRUE(shows(7010.0, ModeCW)) << m().state().RadioFreq << " " << m().state().RadioMode;
    ComboBox& groups = program->main.FilterGroupCombo;
    // The first read of a mode brings the mode's group: Wide, 2.4k everywhere. (Blocks that leave
    // together stand on one line of the simulator's log.)
    EXPECT_TRUE(receivedInOrder(QStringLiteral("01 00 00 00 8C"), QStringLiteral("00 00 00 80 8C"), 0));
    // Narrow for CW: the second IF's 500, then the third IF's and the sub receiver's 2.4k.
    qsizetype mark = logMark();
    SetCombo(groups, QStringLiteral("Narrow"));
    EXPECT_TRUE(receivedInOrder(QStringLiteral("01 00 00 02 8C"), QStringLiteral("02 00 00 00 8C"), mark));
    EXPECT_TRUE(receivedInOrder(QStringLiteral("02 00 00 00 8C"), QStringLiteral("00 00 00 80 8C"), mark));
    // A rig-server client changes the mode: USB, whose read brings SSB's group, then CW again, CW's.
    mark = logMark();
    ASSERT_TRUE(program->rig.setMode(RigUSB, 0));
    EXPECT_TRUE(receivedInOrder(QStringLiteral("00 00 00 01 0C"), QStringLiteral("01 00 00 00 8C"), mark));
    mark = logMark();
    ASSERT_TRUE(program->rig.setMode(RigCW, 0));
    EXPECT_TRUE(receivedInOrder(QStringLiteral("00 00 00 02 0C"), QStringLiteral("01 00 00 02 8C"), mark));
    EXPECT_TRUE(waitFor([&] { return groups.text() == QLatin1String("Narrow"); }, 5000));
    // The radio's own knob back to 2.4k makes CW's Wide: the list follows, and nothing is sent back.
    simCommand("filter 2nd 0");
    EXPECT_TRUE(waitFor([&] { return groups.text() == QLatin1String("Wide"); }, 5000)) << groups.text().toStdString();
    mark = logMark();
    EXPECT_TRUE(waitFor([&] { return waitSim(QString(), 0) && simLog.mid(mark).count(QStringLiteral("<- 00 00 00 03 10")) >= 2; }, 5000));
    EXPECT_FALSE(simLog.mid(mark).contains(QStringLiteral("8C"))) << simLog.mid(mark).toStdString();

    // Without an operator, an unsaved edit of the groups is saved at the end, and the question logged.
    QStringList boxes;
    dialogs.setSink([&](const QString& line) { boxes << line; });
    ASSERT_TRUE(program->config.YaesuFilterGroupGrid.editCell(7, 2, QStringLiteral("250")));
    program->FormUnload();
    EXPECT_TRUE(boxes.join(QLatin1Char('\n')).contains(QStringLiteral("Save changes to Filter Group settings? (answered yes)")));
    QFile f(dir.filePath(QStringLiteral("FilterGroupSettings.txt")));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_TRUE(f.readAll().contains("\nNarrow,CW,250,2.4k,2.4k\n"));
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
