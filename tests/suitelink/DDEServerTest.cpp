// The command server and the notification of clients, on the whole program in virtual time with the
// bus in memory: which strings are accepted, what each verb queues for the radio and in which order,
// what the siblings are told at start and end, and what linked clients see.

#include "platform/FakeSuiteBus.h"
#include "support/TestStation.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString kServer = QStringLiteral("DDEServer");
const QString kUI = QStringLiteral("TolvaneUI");

class SuiteServer : public ::testing::Test {
protected:
    void SetUp() override {
        st.preset(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(QStringLiteral("General"), QStringLiteral("Interrogate"), QStringLiteral("F"));
        st.record(QLatin1Char('I'));
        st.record(QLatin1Char('Y'));
        st.record(QLatin1Char('N'));
        st.onCreate = [this](Program& p) {
            bus = dynamic_cast<FakeSuiteBus*>(&p.suiteBus);
            ASSERT_NE(bus, nullptr);
            bus->running = siblings;
            bus->online = online;
        };
    }
    void startWith(const QString& radio) {
        ASSERT_TRUE(st.start());
        st.selectRadio(radio);
        m().queue().InitializeXcvrCmdBuffer();
    }
    bool send(const QString& command) {
        const auto r = bus->send(kServer, command);
        EXPECT_TRUE(r.has_value()) << "topic not served";
        return r.value_or(false);
    }
    // The queued commands, oldest first, as their names.
    QStringList queued() {
        QStringList out;
        for (const XcvrCmd& c : m().queue().queued()) out << CommandName(c.theCmd);
        return out;
    }
    XcvrCmd lastQueued() { return m().queue().queued().back(); }
    KavModule& m() { return st.m(); }
    KavMain& w() { return st.p().main; }

    TestStation st;
    FakeSuiteBus* bus = nullptr;
    std::set<QString> siblings;
    bool online = true;
};

TEST_F(SuiteServer, VerbsMatchAsPrefixesAndWhatIsNotUnderstoodIsRefused) {
    startWith(QStringLiteral("IC-756PRO"));
    EXPECT_TRUE(send(QStringLiteral("000TEST")));
    EXPECT_TRUE(send(QStringLiteral("000testing")));
    EXPECT_TRUE(send(QStringLiteral("004seqindex-1")));
    EXPECT_FALSE(send(QStringLiteral("000te")));
    EXPECT_FALSE(send(QStringLiteral("001lookupW1AW")));  // the suite's word, not this program's
    EXPECT_FALSE(st.log().contains(QStringLiteral("program error")));
    // Not understood: reported, refused, nothing changed.
    EXPECT_FALSE(send(QStringLiteral("test")));
    EXPECT_FALSE(send(QStringLiteral("000resetwindowsabc")));
    EXPECT_FALSE(send(QStringLiteral("000seqindexx")));
    EXPECT_EQ(st.log().count(QStringLiteral("DDEServer.LinkExecute")), 3);
    EXPECT_TRUE(queued().isEmpty());
    // A bad number inside the tuning verbs is reported under their own name, and still accepted.
    EXPECT_TRUE(send(QStringLiteral("000qsy")));
    EXPECT_TRUE(st.log().contains(QStringLiteral("DDEServerModule.DoQSY")));
    EXPECT_TRUE(queued().isEmpty());
    EXPECT_TRUE(send(QStringLiteral("001QSY14025.5")));
    EXPECT_EQ(queued(), QStringList{CommandName(XcvrCmdFreq)});
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 14025.5);
    // A number no radio can be tuned to goes the way of "inf": reported, nothing queued or shown.
    for (const char* huge : {"1e300", "1e19", "1e9", "inf", "-5"}) {
        m().queue().InitializeXcvrCmdBuffer();
        EXPECT_TRUE(send(QStringLiteral("001qsy") + QLatin1String(huge)));
        EXPECT_TRUE(send(QStringLiteral("001split") + QLatin1String(huge)));
        EXPECT_TRUE(send(QStringLiteral("001xcvrfreqmode<f:5>") + QString::fromLatin1(huge).leftJustified(5) +
                         QStringLiteral("<m:2>CW<eor>")));
        EXPECT_EQ(queued().count(CommandName(XcvrCmdFreq)), 0) << huge;
        EXPECT_DOUBLE_EQ(m().state().RadioFreq, 14025.5) << huge;
    }
    // A full queue costs the record, not the answer: the command is still accepted.
    while (m().queue().count() < CommandQueue::kBufferSlots) m().queue().SetXcvrFreq(7000);
    EXPECT_TRUE(send(QStringLiteral("001qsy7010")));
    EXPECT_EQ(m().queue().count(), CommandQueue::kBufferSlots);
}

TEST_F(SuiteServer, ATuneByRecordSendsModeFirstEndsSplitAndDualAndTellsTheItems) {
    startWith(QStringLiteral("IC-756PRO"));
    w().DualBox.setChecked(true);
    w().SplitBox.setChecked(true);
    m().queue().InitializeXcvrCmdBuffer();
    ASSERT_TRUE(send(QStringLiteral("001xcvrfreqmode<xcvrfreq:8>14025.50<xcvrmode:2>cw<eor>")));
    // The box shows the string as received first; the display logic may then format the tuned value.
    const QStringList shown = bus->publishedValues(kUI, QStringLiteral("FreqDisplay"));
    ASSERT_FALSE(shown.isEmpty());
    EXPECT_EQ(shown.first(), QStringLiteral("14025.50"));
    EXPECT_FALSE(w().SplitBox.checked());
    EXPECT_FALSE(w().DualBox.checked());
    // The boxes' own handlers saw the flags and sent nothing of their own.
    EXPECT_FALSE(m().ControlFlag(FlagSplitBox));
    EXPECT_FALSE(m().ControlFlag(FlagDualBox));
    EXPECT_EQ(queued(), QStringList({CommandName(XcvrCmdSplit), CommandName(XcvrCmdDual), CommandName(XcvrCmdMode),
                                     CommandName(XcvrCmdWait), CommandName(XcvrCmdVFOA), CommandName(XcvrCmdFreq),
                                     CommandName(XcvrCmdWait)}));
    EXPECT_EQ(bus->read(kServer, QStringLiteral("Mode")), QStringLiteral("CW"));
    EXPECT_EQ(bus->read(kServer, QStringLiteral("RadioMode")), QStringLiteral("CW"));
    EXPECT_EQ(bus->read(kUI, QStringLiteral("FreqDisplay")), w().FreqDisplay.text());
    EXPECT_EQ(shown.last(), w().FreqDisplay.text());
    EXPECT_EQ(bus->publishedValues(kServer, QStringLiteral("RadioMode")), QStringList{QStringLiteral("CW")});

    // An unknown mode is chosen by frequency; an empty record tunes to 0 in LSB.
    auto modeOf = [&](const QString& record) {
        m().queue().InitializeXcvrCmdBuffer();
        EXPECT_TRUE(send(QStringLiteral("001xcvrfreqmode") + record));
        return bus->read(kServer, QStringLiteral("RadioMode"));
    };
    EXPECT_EQ(modeOf(QStringLiteral("<f:5>13000<m:3>xyz<eor>")), QStringLiteral("USB"));
    EXPECT_EQ(modeOf(QStringLiteral("<f:4>7010<m:0><eor>")), QStringLiteral("LSB"));
    EXPECT_EQ(modeOf(QStringLiteral("<f:4>7010<m:3>usb<eor>")), QStringLiteral("USB"));
    EXPECT_EQ(modeOf(QString()), QStringLiteral("LSB"));
    EXPECT_EQ(bus->read(kServer, QStringLiteral("Mode")), QStringLiteral("SSB"));
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 0);
    EXPECT_EQ(queued().count(CommandName(XcvrCmdFreq)), 1);
}

TEST_F(SuiteServer, AModeCommandWritesTheNameAsAskedAndARadioReportTheLogName) {
    startWith(QStringLiteral("IC-756PRO"));
    ASSERT_TRUE(send(QStringLiteral("001xcvrsetmodecmd<xcvrsetmodearg:4>cw-r<eor>")));
    EXPECT_EQ(bus->read(kServer, QStringLiteral("Mode")), QStringLiteral("CW-R"));
    EXPECT_EQ(lastQueued().theCmd, XcvrCmdMode);
    EXPECT_EQ(lastQueued().theMode, ModeCWR);
    m().state().UpdateXcvrMode(ModeCWR);
    EXPECT_EQ(bus->read(kServer, QStringLiteral("Mode")), QStringLiteral("CW"));
    EXPECT_EQ(bus->read(kServer, QStringLiteral("RadioMode")), QStringLiteral("CW-R"));
    m().state().UpdateXcvrMode(ModeUnknown);
    EXPECT_EQ(bus->read(kServer, QStringLiteral("RadioMode")), QStringLiteral("CW-R"));
    // A repeated report isn't news for the linked clients.
    m().state().UpdateXcvrMode(ModeCWR);
    EXPECT_EQ(bus->publishedValues(kServer, QStringLiteral("RadioMode")).size(), 1);
    EXPECT_TRUE(bus->read(kServer, QStringLiteral("NoSuchItem")).isNull());
    // No record asks for no mode: the item keeps what it said.
    EXPECT_TRUE(send(QStringLiteral("001xcvrsetmodecmd")));
    EXPECT_EQ(bus->read(kServer, QStringLiteral("Mode")), QStringLiteral("CW"));
}

TEST_F(SuiteServer, SplitTurnsSplitAndDualOnOnlyWhereTheRadioHasThem) {
    startWith(QStringLiteral("IC-756PRO"));
    st.p().config.DualReceiveEnableBox.setChecked(true);
    ASSERT_TRUE(send(QStringLiteral("001split14030")));
    EXPECT_TRUE(w().SplitBox.checked());
    EXPECT_TRUE(w().DualBox.checked());
    // The sub-band frequency goes out first (on this radio through VFO B), then split and dual.
    EXPECT_EQ(queued().join(QLatin1Char('/')).toStdString(),
              "Select VFO B/Wait/Wait/Set Frequency/Wait/Select VFO A/Wait/Set Split Mode/Set Dual Watch");

    st.selectRadio(QStringLiteral("FT817"));  // no split, no bridge
    m().queue().InitializeXcvrCmdBuffer();
    EXPECT_TRUE(send(QStringLiteral("001split14100")));
    EXPECT_TRUE(queued().isEmpty()) << queued().join(QLatin1Char(',')).toStdString();

    st.selectRadio(QStringLiteral("PEGASUS"));
    w().SplitBox.setVisible(false);
    m().queue().InitializeXcvrCmdBuffer();
    EXPECT_TRUE(send(QStringLiteral("001split14100")));
    EXPECT_EQ(queued(), QStringList{CommandName(XcvrCmdSBFreq)});
}

TEST_F(SuiteServer, KeyingAndSequencesGoWhereTheWindowsSendThem) {
    startWith(QStringLiteral("IC-756PRO"));
    ASSERT_TRUE(send(QStringLiteral("006transmit")));
    EXPECT_EQ(lastQueued().theCmd, XcvrCmdPTT);
    EXPECT_EQ(lastQueued().theArg, 1);
    ASSERT_TRUE(send(QStringLiteral("006receive")));
    EXPECT_EQ(lastQueued().theArg, 0);
    m().queue().InitializeXcvrCmdBuffer();
    ASSERT_TRUE(send(QStringLiteral("006xcvrcommand<WAIT>")));
    EXPECT_EQ(queued(), QStringList{CommandName(XcvrCmdWait)});
    // A sequence that doesn't exist is the sequence runner's failure, not the server's.
    EXPECT_TRUE(send(QStringLiteral("006seqindex16")));
    EXPECT_FALSE(st.log().contains(QStringLiteral("DDEServer.LinkExecute")));
}

TEST_F(SuiteServer, WindowCommandsCascadeMinimiseAndRaise) {
    startWith(QStringLiteral("IC-756PRO"));
    ASSERT_TRUE(send(QStringLiteral("001resetwindows100")));
    const std::vector<Form*> windows = st.p().openWindows();
    for (Form* f : windows) EXPECT_TRUE(f->visible()) << f->name().toStdString();
    EXPECT_EQ(windows[0]->left(), 100);
    EXPECT_EQ(windows[0]->top(), 100);
    EXPECT_EQ(windows[1]->left(), 125);
    EXPECT_EQ(windows[1]->top(), 125);
    st.p().config.Hide();
    ASSERT_TRUE(send(QStringLiteral("001iconify")));
    for (Form* f : windows) EXPECT_EQ(f->windowState(), Form::Minimized) << f->name().toStdString();
    int raised = 0;
    w().raiseRequested = [&] { ++raised; };
    ASSERT_TRUE(send(QStringLiteral("001activate")));
    EXPECT_EQ(w().windowState(), Form::Normal);
    EXPECT_EQ(raised, 1);
}

TEST_F(SuiteServer, StartAndEndAreAnnouncedToRunningSiblingsOnly) {
    siblings = {QStringLiteral("Brindlecast"), QStringLiteral("Sorrelgate")};
    ASSERT_TRUE(st.start());
    EXPECT_EQ(bus->served, QStringLiteral("Tolvane"));
    QStringList tried;
    for (const auto& a : bus->attempts) tried << a.application;
    EXPECT_EQ(tried, QStringList({"Trillex", "Quolark", "Brindlecast", "Ionmere", "Sorrelgate", "OmbrelFrequency"}));
    ASSERT_EQ(bus->delivered.size(), 2u);
    EXPECT_EQ(bus->delivered[0].application, QStringLiteral("Brindlecast"));
    EXPECT_EQ(bus->delivered[0].topic, QStringLiteral("DDEClient"));
    EXPECT_EQ(bus->delivered[0].command, QStringLiteral("000start"));
    EXPECT_EQ(st.p().suiteLink.DDEStart.LinkItem, QStringLiteral("RequestDDEConnection"));
    bus->delivered.clear();
    st.p().FormUnload();
    ASSERT_EQ(bus->delivered.size(), 1u);
    EXPECT_EQ(bus->delivered[0].application, QStringLiteral("Sorrelgate"));
    EXPECT_EQ(bus->delivered[0].command, QStringLiteral("000stop"));
}

TEST_F(SuiteServer, AbsentSiblingsAndAnAbsentBusLeaveNoErrorAndOneLine) {
    ASSERT_TRUE(st.start());
    EXPECT_TRUE(bus->delivered.empty());
    EXPECT_TRUE(st.dialogs.shown.empty());
    EXPECT_FALSE(st.log().contains(QStringLiteral("program error")));
    st.stop();

    online = false;
    ASSERT_TRUE(st.start());
    st.stop();
    EXPECT_EQ(st.log().count(QStringLiteral("the suite link is unavailable")), 1);
    EXPECT_FALSE(st.log().contains(QStringLiteral("program error")));
}

}  // namespace
}  // namespace tv::test
