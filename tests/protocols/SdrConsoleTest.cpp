// The SDR console link through the whole program on virtual time, the console played by the bus in
// memory: the strings the queue sends, what the console's strings do to the program, the link's start in
// either order, and a console that vanishes, hangs or comes back.

#include "platform/FakeSuiteBus.h"
#include "protocols/sdrconsole/SdrConsole.h"
#include "protocols/sdrconsole/SdrModule.h"
#include "support/TestStation.h"

#include <gtest/gtest.h>

#include <random>

namespace tv::test {
namespace {

const QString kConsole = QStringLiteral("SDRConsole");
const QString kClientTopic = QStringLiteral("SDRDDEClient");

class SdrConsole : public ::testing::Test {
  protected:
    // The program with a FLEX-5000 chosen; the console is running already unless told otherwise.
    void bringUp(bool consoleRunning = true) {
        st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QStringLiteral("FLEX-5000"));
        st.onCreate = [this, consoleRunning](Program& p) {
            bus = dynamic_cast<FakeSuiteBus*>(&p.suiteBus);
            ASSERT_NE(bus, nullptr);
            bus->loop = &st.loop;
            if (consoleRunning) bus->running.insert(kConsole);
            RadioState& s = p.module.state();
            QObject::connect(&s, &RadioState::meterReported, &s, [this](double v) { meter = v; });
        };
        ASSERT_TRUE(st.start());
        st.loop.runPosted();
    }
    // What reached the console since the last look.
    QStringList heard() {
        QStringList out;
        for (const auto& d : bus->delivered)
            if (d.application == kConsole) out << d.command;
        bus->delivered.clear();
        return out;
    }
    int tried() const {
        int n = 0;
        for (const auto& a : bus->attempts) n += a.application == kConsole;
        return n;
    }
    // The console executes a string on the program.
    void consoleSays(const QString& text) {
        ASSERT_EQ(bus->send(kClientTopic, text), std::optional<bool>(true)) << text.toStdString();
        st.loop.runPosted();
    }
    void tick() { st.loop.advance(m().queue().XcvrCmdTimer.Interval()); }
    QString caption() {
        m().UpdateCaption();
        return st.p().main.caption();
    }
    KavModule& m() { return st.m(); }

    TestStation st;
    FakeSuiteBus* bus = nullptr;
    double meter = -1;
};

TEST(SdrConsoleStrings, VerbTableDefaultIsSplitAndModesDontRoundTrip) {
    // A string without a comma has an empty value; the verb is taken in any case.
    const ConsoleReport start = DecodeConsoleString(QStringLiteral("start"));
    EXPECT_EQ(start.verb, ConsoleVerb::Start);
    EXPECT_TRUE(start.value.isEmpty());
    EXPECT_FALSE(start.number.has_value());
    const ConsoleReport a = DecodeConsoleString(QStringLiteral("NewVFOA,14.25,x"));
    EXPECT_EQ(a.verb, ConsoleVerb::VFOAFreq);
    EXPECT_EQ(a.value, QStringLiteral("14.25,x"));  // only the first comma cuts
    EXPECT_FALSE(a.number.has_value());
    // Every verb the table doesn't know is a split report, whatever its name.
    for (const char* s : {"hello,on", "split,ON", ",on", "newvfoax,on"}) {
        const ConsoleReport r = DecodeConsoleString(QString::fromLatin1(s));
        EXPECT_EQ(r.verb, ConsoleVerb::Split) << s;
        EXPECT_TRUE(r.on) << s;
    }
    EXPECT_FALSE(DecodeConsoleString(QStringLiteral("split,1")).on);
    // RTTY, RTTY-R and PKT all go out as 9, and nothing comes back as RTTY-R; DSB and SAM are no mode.
    for (int mode : {ModeRTTY, ModeRTTYR, ModePKT}) EXPECT_EQ(GetSDRMode(mode), 9);
    EXPECT_EQ(GetSDRMode(ModeUnknown), 0);
    EXPECT_EQ(GetModeFromSDR(QStringLiteral("cwu")), ModeCWR);
    for (const char* s : {"DSB", "SAM", "DIGL", ""})
        EXPECT_EQ(GetModeFromSDR(QString::fromLatin1(s)), ModeUnknown) << s;
    EXPECT_EQ(SDRFrequency(14025.5), QStringLiteral("14.0255"));
    EXPECT_EQ(SDRFrequency(7000), QStringLiteral("7"));
}

TEST_F(SdrConsole, QueueRecordsBecomeTheConsolesStringsByTheSelectedVfo) {
    bringUp();
    EXPECT_EQ(heard(), QStringList{QStringLiteral("Start")});
    st.loop.advance(1000);
    heard();
    st.p().config.Interrogation.setChecked(false);
    CommandQueue& q = m().queue();
    q.SetXcvrFreq(14025.5);
    q.SetXcvrMode(ModeRTTYR);
    q.SetXcvrSplit(true);
    q.SetXcvrVFOB();  // nothing goes out: the program shows VFO B and sends to it
    q.SetXcvrFreq(7010);
    q.SetXcvrVFOEqual();
    q.SetXcvrVFOXch();
    q.SetXcvrstring(QStringLiteral("Mute,on"));
    tick();
    EXPECT_EQ(heard(), (QStringList{QStringLiteral("NewVFOAFreq,14.0255"), QStringLiteral("NewVFOAMode,9"),
                                    QStringLiteral("Split,on"), QStringLiteral("NewVFOBFreq,7.01"),
                                    QStringLiteral("VFOEqual"), QStringLiteral("VFOExchange"),
                                    QStringLiteral("Mute,on")}));
    EXPECT_EQ(m().state().CurrentVFO, 1);
    EXPECT_EQ(st.p().main.VFOFrame.caption(), QStringLiteral("VFO B"));
    // The operator's click on a mode goes the same way, to the VFO on show.
    st.p().main.ModeSel[ModeCWR].setValue(true);
    tick();
    EXPECT_EQ(heard(), QStringList{QStringLiteral("NewVFOBMode,4")});
    // The split frequency: VFO B takes VFO A's mode, and the console hears the mode shown.
    q.SetXcvrVFOA();
    m().state().VFOAMode = ModeCW;
    q.SetXcvrSBFreq(14030);
    q.InterrogateRadio();
    tick();
    tick();
    tick();
    EXPECT_EQ(heard(), (QStringList{QStringLiteral("NewVFOBMode,3"), QStringLiteral("NewVFOBFreq,14.03"),
                                    QStringLiteral("SendVFOFreqs"), QStringLiteral("SendVFOModes")}));
    EXPECT_EQ(m().state().VFOBMode, ModeCW);
    // Polling asks only for the meter, every step for a radio with one.
    st.p().config.Interrogation.setChecked(true);
    for (int i = 0; i < 4; ++i) tick();
    EXPECT_EQ(heard(), QStringList(4, QStringLiteral("SendSMeter")));
}

TEST_F(SdrConsole, TheConsolesReportsMoveTheDisplayOnlyForTheSelectedVfo) {
    bringUp();
    st.loop.advance(1000);
    RadioState& s = m().state();
    consoleSays(QStringLiteral("NewVFOA,14.2"));
    EXPECT_EQ(s.RadioFreq, 14200.0);
    // With VFO B selected, VFO A's report is stored and the display stays.
    s.CurrentVFO = 1;
    consoleSays(QStringLiteral("newvfoa,14.25"));
    EXPECT_EQ(s.VFOAFreq, 14250.0);
    EXPECT_EQ(s.RadioFreq, 14200.0);
    consoleSays(QStringLiteral("NEWVFOB,7.01"));
    EXPECT_EQ(s.RadioFreq, 7010.0);
    // A mode the console names that has no mode here changes the VFO's record and nothing shown.
    consoleSays(QStringLiteral("NewVFOBMode,USB"));
    EXPECT_EQ(s.RadioMode, ModeUSB);
    for (const char* text : {"NewVFOBMode,DSB", "NewVFOBMode,SAM"}) {
        consoleSays(QString::fromLatin1(text));
        EXPECT_EQ(s.VFOBMode, ModeUnknown);
        EXPECT_EQ(s.RadioMode, ModeUSB);
    }
    // Any verb the table doesn't name is a split report.
    consoleSays(QStringLiteral("hello,on"));
    EXPECT_TRUE(st.p().main.SplitBox.checked());
    consoleSays(QStringLiteral("Split,OFF"));
    EXPECT_FALSE(st.p().main.SplitBox.checked());
    consoleSays(QStringLiteral("smeter,60"));
    EXPECT_DOUBLE_EQ(meter, 0.6);
    // Nonsense is reported and changes nothing; the console still hears that its string was taken.
    consoleSays(QStringLiteral("newvfob,abc"));
    consoleSays(QStringLiteral("newvfob,-3"));
    consoleSays(QStringLiteral("smeter"));
    EXPECT_EQ(s.RadioFreq, 7010.0);
    EXPECT_DOUBLE_EQ(meter, 0.6);
    const QString log = st.log();
    EXPECT_TRUE(log.contains(QStringLiteral("program error 13 in module SDRModule.SetSDRVFOBFreq")));
    EXPECT_TRUE(log.contains(QStringLiteral("program error 6 in module SDRModule.SetSDRVFOBFreq")));
    EXPECT_TRUE(log.contains(QStringLiteral("program error 13 in module SDRModule.SetSDRSMeter")));
}

TEST_F(SdrConsole, AnythingTheConsoleSaysIsTakenAndLeavesTheRadioStateSane) {
    bringUp();
    std::mt19937 gen(9);
    const char* const verbs[] = {"start",       "newvfoa", "NewVFOB", "newvfoamode",
                                 "NEWVFOBMODE", "smeter",  "split",   ""};
    for (int i = 0; i < 400; ++i) {
        QString text = QString::fromLatin1(verbs[gen() % 8]);
        if (gen() % 4) text += QLatin1Char(',');
        for (int n = int(gen() % 12); n > 0; --n)
            text += gen() % 3 ? QChar(char16_t(0x20 + gen() % 0x5F)) : QChar(char16_t(1 + gen() % 0xD7FF));
        ASSERT_EQ(bus->send(kClientTopic, text), std::optional<bool>(true)) << text.toStdString();
        if (i % 50 == 0) st.loop.advance(SdrModule::kStartDelayMs);
    }
    const RadioState& s = m().state();
    for (double kHz : {s.RadioFreq, s.VFOAFreq, s.VFOBFreq}) EXPECT_TRUE(kHz >= 0 && kHz <= 999999.99) << kHz;
    for (int mode : {s.VFOAMode, s.VFOBMode}) EXPECT_TRUE(mode >= 0 && mode <= 10) << mode;
}

TEST_F(SdrConsole, AConsoleThatStartsLaterIsLinkedOnItsStartAndOneThatGoesCostsNothing) {
    bringUp(false);
    EXPECT_TRUE(heard().isEmpty());
    EXPECT_EQ(tried(), 1);  // the bring-up's "Start", into the void
    EXPECT_TRUE(caption().contains(QStringLiteral("[FlexRadio FLEX-5000 - not running] ")));
    // Nothing more is tried while the console's name has no owner, polls or commands.
    m().queue().SetXcvrFreq(14100);
    for (int i = 0; i < 10; ++i) tick();
    EXPECT_EQ(tried(), 1);
    EXPECT_FALSE(st.log().contains(QStringLiteral("program error")));

    // The console comes up and says "start": linked a second later.
    bus->setRunning(kConsole, true);
    consoleSays(QStringLiteral("start"));
    EXPECT_TRUE(heard().isEmpty());
    st.loop.advance(SdrModule::kStartDelayMs);
    EXPECT_TRUE(heard().contains(QStringLiteral("Start")));
    EXPECT_FALSE(caption().contains(QStringLiteral("not running")));

    // It goes: the caption tells at once, and nothing is sent to it any more.
    bus->setRunning(kConsole, false);
    EXPECT_TRUE(st.p().main.caption().contains(QStringLiteral("FLEX-5000 - not running")));
    const int before = tried();
    for (int i = 0; i < 10; ++i) tick();
    EXPECT_EQ(tried(), before);
    // A "start" while another family's radio is chosen arms nothing.
    bus->setRunning(kConsole, true);
    st.selectRadio(QStringLiteral("TS-2000"));
    heard();
    consoleSays(QStringLiteral("start"));
    st.loop.advance(2 * SdrModule::kStartDelayMs);
    EXPECT_TRUE(heard().isEmpty());
}

TEST_F(SdrConsole, AHungConsoleIsNotPolledOnTopOfItsUnansweredCallAndTimesOut) {
    bringUp();
    st.loop.advance(1000);
    heard();
    bus->hung.insert(kConsole);
    for (int i = 0; i < 20; ++i) tick();
    EXPECT_EQ(heard(), QStringList{QStringLiteral("SendSMeter")});
    bus->expireUnanswered();
    EXPECT_TRUE(st.log().contains(QStringLiteral("program error 286 in module SDRModule.SendSDRCommand")));
    bus->hung.clear();
    tick();
    EXPECT_EQ(heard(), QStringList{QStringLiteral("SendSMeter")});
}

TEST_F(SdrConsole, ChoosingAnotherSupplierLetsTheConsoleGoAndChoosingItAgainLinksIt) {
    bringUp();
    st.loop.advance(1000);
    EXPECT_TRUE(bus->serves(kClientTopic));
    heard();
    st.selectRadio(QStringLiteral("TS-2000"));
    EXPECT_FALSE(bus->serves(kClientTopic));
    EXPECT_TRUE(heard().isEmpty());
    // The console's strings no longer reach the program.
    EXPECT_EQ(bus->send(kClientTopic, QStringLiteral("NewVFOA,3.5")), std::nullopt);
    st.selectRadio(QStringLiteral("FLEX-5000"));
    EXPECT_TRUE(bus->serves(kClientTopic));
    EXPECT_EQ(heard(), QStringList{QStringLiteral("Start")});
}

}  // namespace
}  // namespace tv::test
