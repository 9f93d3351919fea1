// Three transceivers on the whole program, on virtual time: the choice by band ahead of a tune, the
// switch by button, what a switch swaps and what it leaves, and the switch that waits for a radio to
// be released.

#include "support/TestStation.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");
const QString X = QStringLiteral("MultiXCVR");

class Transceivers : public ::testing::Test {
  protected:
    // Entry n: model, port list position, baud ("" for none chosen), address, name.
    void entry(int n, const char* model, int port, const char* baud, const char* address, const char* name) {
        auto set = [&](const char* k, const QString& v) {
            st.preset(X, QString::fromLatin1(k) + QString::number(n), v);
        };
        set("MultiModel", QString::fromLatin1(model));
        set("MultiPort", QString::number(port));
        set("MultiBaud", QString::fromLatin1(baud));
        set("MultiParity", QStringLiteral("N"));
        set("MultiWordlength", QStringLiteral("8"));
        set("MultiStop", QStringLiteral("1"));
        set("MultiAddr", QString::fromLatin1(address));
        set("MultiName", QString::fromLatin1(name));
        set("MultiEnabled", QStringLiteral("1"));
        set("MultiInterval", QStringLiteral("300"));
        st.preset(G, QStringLiteral("CommPortDevice%1").arg(port + 1),
                  QStringLiteral("/dev/fake%1").arg(port + 1));
    }
    void start(const char* radio = "IC-756PRO") {
        st.preset(G, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(G, QStringLiteral("RadioId"), QStringLiteral("5C"));
        st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(G, QStringLiteral("Interrogate"), QStringLiteral("F"));
        st.preset(X, QStringLiteral("MultiAutoSelect"), QStringLiteral("1"));
        st.preset(X, QStringLiteral("MultiBandRadio6"), QStringLiteral("1"));   // 20 m: entry 0
        st.preset(X, QStringLiteral("MultiBandRadio10"), QStringLiteral("2"));  // 10 m: entry 1
        ASSERT_TRUE(st.start());
    }
    MultiXcvr& multi() { return st.p().multiXcvr; }
    KavModule& m() { return st.m(); }
    TestStation st;
};

TEST_F(Transceivers, ATuneFollowsTheRadioOfItsBandAndOnlyThen) {
    entry(0, "IC-756PRO", 0, "9600", "5C", "Icom");
    entry(1, "TS-2000", 1, "4800", "", "Kenwood");
    start();
    // The stored radio is the first enabled entry of its model; its button shows it, nothing switched.
    EXPECT_EQ(multi().SelectedXcvr, 0);
    EXPECT_TRUE(st.p().main.XcvrSelButton[0].value());
    EXPECT_EQ(st.p().main.XcvrSelButton[1].caption(), QStringLiteral("Kenwood"));
    EXPECT_EQ(st.p().main.XcvrSelButton[1].toolTip(), QStringLiteral("click to switch to the Kenwood"));
    EXPECT_FALSE(st.p().main.XcvrSelButton[2].visible());
    const int bringUps = m().radio().generation();
    // Things a switch must leave as they are: the monitor's lines, the sequences' bank.
    st.p().messages.AppendToMessageDisplay(QStringLiteral("before the switch"), 0);
    const QString monitorBefore = st.p().messages.MessageDisplay.text();
    ASSERT_FALSE(monitorBefore.isEmpty());
    st.p().main.AltCheckBox.setChecked(true);
    const auto names = st.p().sequences.SequenceNames;

    // 29.5 MHz goes by the 28 MHz band.
    m().queue().SetXcvrFreq(29500);
    EXPECT_EQ(multi().SelectedXcvr, 1);
    EXPECT_EQ(m().radio().model(), QStringLiteral("TS-2000"));
    EXPECT_EQ(m().radio().generation(), bringUps + 1);
    EXPECT_EQ(st.serial()->path(), QStringLiteral("/dev/fake2"));
    EXPECT_TRUE(st.serial()->isOpen());
    EXPECT_EQ(st.serial()->lastSettings.baud, 4800);
    EXPECT_EQ(st.p().config.PollInterval.text(), QStringLiteral("300"));
    EXPECT_TRUE(st.p().main.XcvrSelButton[1].value());
    EXPECT_EQ(st.stored(X, QStringLiteral("MultiXCVR")), QStringLiteral("1"));
    EXPECT_EQ(m().state().RadioFreq, 29500);
    // The new radio hears the frequency, then is asked.
    const std::vector<XcvrCmd> queued = m().queue().queued();
    ASSERT_FALSE(queued.empty());
    EXPECT_EQ(queued.front().theCmd, XcvrCmdFreq);

    // A band nobody is assigned to leaves the choice alone; so does a tune with the choice off.
    m().queue().SetXcvrFreq(7010);
    EXPECT_EQ(multi().SelectedXcvr, 1);
    st.p().config.MultiAutoSelect.setChecked(false);
    m().queue().SetXcvrFreq(14020);
    EXPECT_EQ(multi().SelectedXcvr, 1);
    st.p().config.MultiAutoSelect.setChecked(true);
    m().queue().SetXcvrFreq(14020);
    EXPECT_EQ(multi().SelectedXcvr, 0);
    EXPECT_EQ(m().radio().model(), QStringLiteral("IC-756PRO"));
    EXPECT_EQ(st.serial()->path(), QStringLiteral("/dev/fake1"));
    EXPECT_FALSE(st.log().contains(QStringLiteral("program error")));
    EXPECT_TRUE(st.p().messages.MessageDisplay.text().startsWith(monitorBefore));
    EXPECT_TRUE(st.p().main.AltCheckBox.checked());
    EXPECT_EQ(st.p().sequences.SequenceNames, names);
}

TEST_F(Transceivers, TwoEntriesOfOneModelSwitchOnlyTheLinkAndKeepTheSpeedWhereNoneIsChosen) {
    entry(0, "IC-756PRO", 0, "19200", "5C", "Left");
    entry(2, "IC-756PRO", 2, "", "60", "Right");
    start();
    const int bringUps = m().radio().generation();
    const int speedOption = [&] {
        for (int i = 1; i <= 8; ++i)
            if (st.p().config.Speed[i].value()) return i;
        return 0;
    }();
    st.p().main.XcvrSelButton[2].userClick();
    EXPECT_EQ(multi().SelectedXcvr, 2);
    EXPECT_EQ(m().radio().generation(), bringUps);  // no bring-up
    EXPECT_EQ(st.serial()->path(), QStringLiteral("/dev/fake3"));
    EXPECT_TRUE(st.serial()->isOpen());
    EXPECT_TRUE(st.p().config.Speed[speedOption].value());
    EXPECT_EQ(m().port().CommSpeed, 9600);
    EXPECT_EQ(st.p().config.Address.text(), QStringLiteral("60"));
    // The ticks go on, and the next command goes to the new address (40 m has no radio of its own).
    EXPECT_TRUE(m().queue().XcvrCmdTimer.Enabled());
    m().queue().SetXcvrFreq(7025);
    st.loop.advance(1000);
    EXPECT_TRUE(st.serial()->written.contains(QByteArray::fromHex("fefe60e0")))
        << st.serial()->written.toHex().toStdString();
}

// A family whose radio stays locked unless released, and which says when it has been.
class LockingProtocol : public Protocol {
  public:
    LockingProtocol() { traits_.holdsRadioUntilReleased = true; }
    const ProtocolTraits& traits() const override { return traits_; }
    QString DisplayName(const RadioInfo&) const override { return QStringLiteral("Locking"); }
    void Execute(const XcvrCmd&) override {}
    int InterrogationStep(int phase) override { return phase; }
    void RequestFrequency() override {}
    void RequestMode() override {}
    void Decode(const QByteArray&) override {}

  private:
    ProtocolTraits traits_;
};

TEST_F(Transceivers, ASwitchAwayFromARadioThatMustBeReleasedWaitsForIt) {
    entry(0, "FT817", 0, "9600", "", "Yaesu");
    entry(1, "IC-756PRO", 1, "9600", "5C", "Icom");
    st.onCreate = [](Program& p) {
        p.module.radio().registerFamily(QLatin1Char('Y'), [](ProtocolContext&, const RadioInfo&) {
            return std::make_unique<LockingProtocol>();
        });
    };
    start("FT817");
    m().state().ReportControlReleased();  // nothing waits: nothing switches
    EXPECT_EQ(multi().SelectedXcvr, 0);
    st.p().main.XcvrSelButton[1].userClick();
    EXPECT_TRUE(multi().DelayedXcvrSwitchFlag);
    EXPECT_EQ(multi().SelectedXcvr, 0);
    EXPECT_EQ(m().radio().model(), QStringLiteral("FT817"));
    EXPECT_EQ(st.serial()->path(), QStringLiteral("/dev/fake1"));
    // The family has released its radio: the switch goes through.
    m().state().ReportControlReleased();
    EXPECT_FALSE(multi().DelayedXcvrSwitchFlag);
    EXPECT_EQ(multi().SelectedXcvr, 1);
    EXPECT_EQ(m().radio().model(), QStringLiteral("IC-756PRO"));
    EXPECT_EQ(st.serial()->path(), QStringLiteral("/dev/fake2"));
    const QString log = st.log();
    EXPECT_LT(
        log.indexOf(QStringLiteral("KavModule.SelectMultiXcvr: set DelayedXcvrSwitchFlag, delaying switch")),
        log.indexOf(QStringLiteral(
            "KavModule.SelectMultiXcvr: cleared DelayedXcvrSwitchFlag, beginning delayed switch")));
}

}  // namespace
}  // namespace tv::test
