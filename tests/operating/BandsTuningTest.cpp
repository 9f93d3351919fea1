// Bands, the frequency box and tuning, through the whole program on virtual time: what the operator's
// gestures put on the queue, and when.

#include "operating/Bands.h"
#include "operating/FrequencyDisplay.h"
#include "operating/Tuning.h"
#include "support/TestStation.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString kGeneral = QStringLiteral("General");

class BandsTuning : public ::testing::Test {
protected:
    // A radio (a Kenwood unless named) whose queue drains on every tick into a recording protocol; no polling.
    void bringUp(const char* radio = "TS-2000") {
        st.preset(kGeneral, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(kGeneral, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(kGeneral, QStringLiteral("Interrogate"), QStringLiteral("F"));
        start();
    }
    void start() {
        kenwood = &st.record(QLatin1Char('K'));
        yaesu = &st.record(QLatin1Char('Y'));
        st.onCreate = [this](Program& p) {
            bands = &p.bands;
            tuning = &p.tuning;
            display = &p.freqDisplay;
            display->setLocale(locale);
            display->beep = [this] { ++beeps; };
        };
        ASSERT_TRUE(st.start());
        m().queue().InitializeXcvrCmdBuffer();
    }
    // Frequencies that reached the radio since the last call (the queue is drained first).
    std::vector<double> sent() {
        m().queue().ExecuteNextXcvrCmd();
        std::vector<double> f;
        for (const XcvrCmd& c : kenwood->executed)
            if (c.theCmd == XcvrCmdFreq) f.push_back(c.theFreq);
        kenwood->executed.clear();
        return f;
    }
    // Tunes without the gesture handlers, and forgets the command.
    void tuneTo(double f) {
        m().queue().SetXcvrFreq(f);
        sent();
    }
    void press(Control& c, int shift = 0) { c.mouseDown(kLeftButton, shift, 0, 0); }
    void release(Control& c, int shift = 0) { c.mouseUp(kLeftButton, shift, 0, 0); }
    void tap(Control& c) {
        press(c);
        release(c);
    }
    void type(const QString& text) {
        for (QChar ch : text) w().FreqDisplay.typeChar(ch.unicode());
    }
    KavModule& m() { return st.m(); }
    KavMain& w() { return st.p().main; }

    QLocale locale{QLocale::English, QLocale::UnitedStates};
    Bands* bands = nullptr;
    Tuning* tuning = nullptr;
    FrequencyDisplay* display = nullptr;
    int beeps = 0;
    Recording* kenwood = nullptr;
    Recording* yaesu = nullptr;
    TestStation st;  // last: stopped (and the band memories saved) while the objects above still live
};

TEST_F(BandsTuning, BandTableAnswersOnlyForItsRows) {
    for (int mhz : {0, 2, 4, 30, 419, 450, 1000}) EXPECT_EQ(Bands::BandIndex(mhz), 0) << mhz;
    EXPECT_EQ(Bands::BandIndex(1), 1);
    EXPECT_EQ(Bands::BandIndex(147), 19);
    EXPECT_EQ(Bands::BandIndex(420), 20);
    EXPECT_EQ(Bands::BandIndex(449), 49);
    for (int i = 1; i <= 49; ++i) EXPECT_EQ(Bands::BandIndex(Bands::BandMHz(i)), i);
    EXPECT_EQ(Bands::BandMHz(0), 0);
    EXPECT_EQ(Bands::BandMHz(50), 0);
    EXPECT_EQ(Bands::BandWavelength(50), QString());
}

TEST_F(BandsTuning, ClickShorterThanTheDelayStepsOnceAndAHeldButtonRepeatsAtTheRate) {
    st.preset(kGeneral, QStringLiteral("AutoRepeat"), QStringLiteral("20"));
    bringUp();
    tuneTo(14025.0);
    press(w().HzUpCmd);
    st.loop.advance(400);
    release(w().HzUpCmd);
    st.loop.advance(2000);
    EXPECT_EQ(sent(), std::vector<double>{14025.01});
    EXPECT_FALSE(w().AutoRepeatTimer.Enabled());

    // Held with Alt: 10 kHz at once, again at 500 ms, then every 50 ms.
    press(w().HzDownCmd, kAlt);
    st.loop.advance(499);
    EXPECT_EQ(sent().size(), 1u);
    st.loop.advance(1 + 500);
    release(w().HzDownCmd);
    st.loop.advance(1000);
    const std::vector<double> f = sent();
    ASSERT_EQ(f.size(), 11u);
    EXPECT_NEAR(f.back(), 14025.01 - 12 * 10, 1e-6);
    EXPECT_EQ(w().AutoRepeatTimer.Interval(), 50);
    EXPECT_EQ(st.stored(kGeneral, QStringLiteral("AutoRepeat")), QStringLiteral("20"));
}

TEST_F(BandsTuning, AReleaseThatRunsInsideTheStepKeepsTheRepeatOff) {
    bringUp();
    tuneTo(7010.0);
    // The release arrives while the step is still at work (a yield inside the frequency update).
    bool released = false;
    display->updateDevices = [&] {
        if (released) return;
        released = true;
        release(w().BandspreadUpCmd);
    };
    press(w().BandspreadUpCmd, kCtrl);
    st.loop.advance(3000);
    EXPECT_EQ(sent(), std::vector<double>{7020.0});
    EXPECT_FALSE(w().AutoRepeatTimer.Enabled());
}

TEST_F(BandsTuning, TenHertzStepsAreRefusedAtTheEndsOfTheRange) {
    bringUp();
    tuneTo(0.005);
    tap(w().HzDownCmd);
    tuneTo(999999.995);
    tap(w().HzUpCmd);
    EXPECT_TRUE(sent().empty());
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 999999.995);
}

TEST_F(BandsTuning, FT1000DStepsWithItsOwnKeyAndLeavesRadioFreqToTheReport) {
    bringUp("FT1000D");
    m().queue().SetXcvrFreq(14025.0);
    st.loop.advance(1000);
    yaesu->executed.clear();
    tap(w().HzDownCmd);
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 14025.0);
    st.loop.advance(1000);
    ASSERT_FALSE(yaesu->executed.empty());
    EXPECT_EQ(yaesu->executed.front().theCmd, XcvrCmdStepFreq);
    EXPECT_EQ(yaesu->executed.front().theArg, 1);  // down
}

TEST_F(BandsTuning, ScrollAndSliderDragShowOnlyAndSendOnceAtTheEnd) {
    bringUp();
    tuneTo(14025.0);
    ASSERT_EQ(w().Bandspread.max(), 349);  // 20 m with ham bands on: 0 to 350 less one

    // The drawn slider (left 25, width 35), dragged beyond the end and released outside.
    PictureBox& bg = w().BandSpreadBackground;
    bg.mouseDown(kLeftButton, 0, 30, 0);
    bg.mouseMove(kLeftButton, 0, 105.7, 0);
    EXPECT_EQ(w().FreqDisplay.text(), QStringLiteral("14,100.00"));
    bg.mouseMove(kLeftButton, 0, 5000, 0);
    EXPECT_EQ(m().queue().count(), 0);
    bg.mouseUp(kLeftButton, 0, 5000, 0);
    EXPECT_EQ(sent(), std::vector<double>{14349.0});

    // The scroll bar's thumb: the box follows, the queue doesn't.
    w().Bandspread.dragTo(200);
    w().Bandspread.dragTo(210);
    EXPECT_EQ(w().FreqDisplay.text(), QStringLiteral("14,210.00"));
    EXPECT_EQ(m().queue().count(), 0);
    EXPECT_TRUE(sent().empty());
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 14349.0);
    w().Bandspread.Change();  // release
    EXPECT_EQ(sent(), std::vector<double>{14210.0});

    // A press beside the slider pages by a tenth of the span, once, however long it is held.
    bg.mouseDown(kLeftButton, 0, 10, 0);
    st.loop.advance(2000);
    bg.mouseUp(kLeftButton, 0, 10, 0);
    EXPECT_EQ(sent(), std::vector<double>{14210.0 - 35});
}

TEST_F(BandsTuning, DragAfterAChangeThatKeptTheOffsetSendsNothing) {
    bringUp();
    tuneTo(14025.0);
    tuneTo(14025.3);  // same whole kHz: no Change, the flag stays up
    PictureBox& bg = w().BandSpreadBackground;
    bg.mouseDown(kLeftButton, 0, 30, 0);
    bg.mouseMove(kLeftButton, 0, 100, 0);
    bg.mouseUp(kLeftButton, 0, 100, 0);
    EXPECT_TRUE(sent().empty());
    EXPECT_FALSE(m().ControlFlag(FlagBandspread));
}

TEST_F(BandsTuning, HamBandStepsWalkTheRowsAndStopAtTheTop) {
    bringUp();
    ASSERT_TRUE(w().HamBandSequence.checked());
    tuneTo(147999.5);
    EXPECT_EQ(bands->RadioBandIndex, 19);
    tap(w().BandUpCmd);
    EXPECT_EQ(sent(), std::vector<double>{420000.0});
    EXPECT_EQ(bands->RadioBandIndex, 20);
    EXPECT_EQ(Bands::BandWavelength(bands->RadioBandIndex), QStringLiteral("70cm"));

    // At the last row a step up stays, and returns to the row's memory.
    tuneTo(449500.0);
    tuneTo(449600.4);
    tap(w().BandUpCmd);
    EXPECT_EQ(sent(), std::vector<double>{449600.0});

    // Held down from 29 MHz: 28 and then 24 (its memory is its low edge).
    tuneTo(29100.0);
    press(w().BandDownCmd);
    st.loop.advance(500);
    release(w().BandDownCmd);
    EXPECT_EQ(sent(), (std::vector<double>{28000.0, 24890.0}));
}

TEST_F(BandsTuning, LeavingAnAllocationTurnsTheSequenceOffForGood) {
    bringUp();
    tuneTo(5400.0);
    EXPECT_TRUE(w().HamBandSequence.checked());
    EXPECT_EQ(w().Bandspread.min(), 332);
    tuneTo(5406.0);
    EXPECT_FALSE(w().HamBandSequence.checked());
    EXPECT_EQ(w().Bandspread.min(), 0);
    EXPECT_EQ(w().Bandspread.max(), 999);
    st.loop.runPosted();
    EXPECT_EQ(st.stored(kGeneral, QStringLiteral("HamBandSequence")), QStringLiteral("F"));

    // Unchecked, the band keys move by a whole MHz, and a band without a row is no obstacle.
    tuneTo(2500.0);
    tap(w().BandDownCmd);
    EXPECT_EQ(sent(), std::vector<double>{1500.0});
    tuneTo(1000.0);
    tap(w().BandDownCmd);
    EXPECT_TRUE(sent().empty());

    // Off the table with the box checked again, the next row up is found by scanning.
    tuneTo(2500.0);
    w().HamBandSequence.userClick();
    tap(w().BandUpCmd);
    EXPECT_EQ(sent(), std::vector<double>{3500.0});
}

TEST_F(BandsTuning, MemoriesSurviveARestartAndStrayOnesArePulledInWhenTheBoxIsChecked) {
    st.preset(QStringLiteral("Bands"), QStringLiteral("BandOffsetMemory7mhz"), QStringLiteral("900"));
    bringUp();
    tuneTo(14100.0);
    tuneTo(18100.0);
    st.stop();
    EXPECT_EQ(st.stored(QStringLiteral("Bands"), QStringLiteral("BandOffsetMemory14mhz")), QStringLiteral("100"));
    EXPECT_EQ(st.stored(QStringLiteral("Bands"), QStringLiteral("BandOffsetMemory3mhz")), QStringLiteral("500"));

    start();
    tuneTo(10120.0);
    tap(w().BandUpCmd);
    EXPECT_EQ(sent(), std::vector<double>{14100.0});

    // The stored 900 on 40 m lies outside 0 to 300: checking the box clamps it.
    w().HamBandSequence.setChecked(false);
    EXPECT_EQ(bands->BandOffsetMemory[4], 900);
    w().HamBandSequence.userClick();
    EXPECT_EQ(bands->BandOffsetMemory[4], 300);
}

TEST_F(BandsTuning, ABadStoredMemoryIsReportedAndTheRestKeepTheirDefaults) {
    st.preset(QStringLiteral("Bands"), QStringLiteral("BandOffsetMemory14mhz"), QStringLiteral("abc"));
    bringUp();
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavModule.InitializeBands")));
    EXPECT_EQ(bands->BandOffsetMemory[7], bands->BandLowOffset[7]);
}

TEST_F(BandsTuning, DisplayCutsToTwoDecimalsInTheUsersMarks) {
    bringUp();
    const struct {
        double f;
        const char* text;
    } cases[] = {{7000.0, "7,000.00"}, {7000.999, "7,000.99"}, {14025.126, "14,025.12"}, {999.5, "999.50"},
                 {1296000.0, "1,296,000.00"}};
    for (const auto& c : cases) {
        m().queue().SetXcvrFreq(c.f);
        EXPECT_EQ(w().FreqDisplay.text(), QString::fromLatin1(c.text)) << c.f;
    }
    m().queue().SetXcvrFreq(0);
    EXPECT_EQ(bands->RadioBandIndex, 0);
    EXPECT_EQ(w().Bandspread.max(), 999);
    EXPECT_EQ(w().Bandspread.value(), 0);
}

TEST_F(BandsTuning, CommaDecimalLocaleKeepsThreeDecimalsBelowOneMegahertz) {
    locale = QLocale(QLocale::German, QLocale::Germany);
    bringUp();
    m().queue().SetXcvrFreq(999.5);
    EXPECT_EQ(w().FreqDisplay.text(), QStringLiteral("999,500"));
    m().queue().SetXcvrFreq(14025.126);
    EXPECT_EQ(w().FreqDisplay.text(), QStringLiteral("14.025,12"));
    // Typed in the same marks.
    w().FreqDisplay.setText(QStringLiteral("7.010,5"));
    w().FreqDisplay.typeChar(13);
    EXPECT_DOUBLE_EQ(m().state().RadioFreq, 7010.5);
}

TEST_F(BandsTuning, TypedEntryIsSentOnEnterAndBadTextRestoresTheBox) {
    bringUp();
    tuneTo(14025.5);
    TextBox& f = w().FreqDisplay;

    // A report equal to RadioFreq leaves the operator's digits alone; a different one overwrites them.
    int insert = kKeyInsert;
    f.keyDown(insert, 0);
    type(QStringLiteral("70"));
    EXPECT_EQ(f.text(), QStringLiteral("70"));
    m().state().UpdateRadioFreq(14025.5);
    EXPECT_EQ(f.text(), QStringLiteral("70"));
    EXPECT_TRUE(sent().empty());

    // Letters beep and don't get in; Backspace removes the character before the caret.
    type(QStringLiteral("x1"));
    EXPECT_EQ(beeps, 1);
    int back = kKeyBack;
    f.keyDown(back, 0);
    f.typeChar(8);
    type(QStringLiteral("14,025.5"));
    EXPECT_EQ(f.text(), QStringLiteral("7014,025.5"));
    f.setText(QStringLiteral("14,025.75"));
    f.typeChar(13);
    EXPECT_EQ(sent(), std::vector<double>{14025.75});

    for (const char* bad : {"", "14.025.0"}) {
        f.setText(QString::fromLatin1(bad));
        f.typeChar(13);
        EXPECT_EQ(f.text(), QStringLiteral("14,025.75")) << bad;
    }
    ASSERT_EQ(st.dialogs.boxTexts().size(), 2);
    EXPECT_EQ(st.dialogs.boxTexts().front(),
              QStringLiteral("valid characters include numeric digits, commas, and no more than one decimal point"));
    EXPECT_EQ(st.dialogs.shown.back().title, QStringLiteral("Tolvane"));
    EXPECT_TRUE(sent().empty());

    // The group mark is dropped wherever it stands; what isn't one finite number is refused.
    for (const auto& [text, kHz] : std::vector<std::pair<const char*, double>>{{"1,4025.5", 14025.5}, {"14025,5", 140255}}) {
        f.setText(QString::fromLatin1(text));
        f.typeChar(13);
        EXPECT_EQ(sent(), std::vector<double>{kHz}) << text;
    }
    for (const char* bad : {"inf", "nan", "1e400"}) {
        f.setText(QString::fromLatin1(bad));
        f.typeChar(13);
        EXPECT_TRUE(sent().empty()) << bad;
    }
    EXPECT_EQ(st.dialogs.boxTexts().size(), 5);

    // A different report wins over typing.
    type(QStringLiteral("9"));
    m().state().UpdateRadioFreq(14030.0);
    EXPECT_EQ(f.text(), QStringLiteral("14,030.00"));
}

TEST_F(BandsTuning, PageKeysTuneByTheModifierIncrement) {
    bringUp();
    tuneTo(14025.0);
    int key = kKeyPageUp;
    w().FreqDisplay.keyDown(key, kShift);
    key = kKeyPageDown;
    w().FreqDisplay.keyDown(key, kCtrl | kAlt);
    const std::vector<double> f = sent();
    ASSERT_EQ(f.size(), 2u);
    EXPECT_NEAR(f[0], 14025.1, 1e-9);
    EXPECT_NEAR(f[1], 13925.1, 1e-9);
}

}  // namespace
}  // namespace tv::test
