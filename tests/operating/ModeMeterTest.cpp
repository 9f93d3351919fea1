// Modes, filter groups, the Kenwood passband lists and the S-meter through the whole program on virtual
// time: what reaches the radio after a report, a gesture or the program's own list change, what each
// list offers, and how readings meet the scale.

#include "operating/ModeControl.h"
#include "operating/SMeter.h"
#include "protocols/kenwood/KenwoodPassband.h"
#include "support/TestStation.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString kGeneral = QStringLiteral("General");
QByteArray hex(const char* text) {
    return QByteArray::fromHex(QByteArray(text));
}

class ModeMeter : public ::testing::Test {
  protected:
    // Starts a radio of the test catalogue on port 1; brought up, its polling is off and its queue empty.
    // The scale files are written first, as they lie beside the program.
    void startRadio(const char* radio) {
        st.preset(kGeneral, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(kGeneral, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(kGeneral, QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
    }
    void bringUp(const char* radio = "IC-756PRO") {
        startRadio(radio);
        modes = &st.p().modes;
        meter = &st.p().meter;
        QObject::connect(&m().state(), &RadioState::itemChanged, &m().state(),
                         [this](const QString& item, const QString& value) { items[item] = value; });
        st.p().config.Interrogation.setChecked(false);
        m().queue().InitializeXcvrCmdBuffer();
        st.loop.advance(1000);
        if (st.serial()) st.serial()->written.clear();
    }
    void radioSays(const QByteArray& bytes) {
        st.serial()->feed(bytes);
        st.loop.runPosted();
    }
    QByteArray sentAfterTick() {
        st.serial()->written.clear();
        st.loop.advance(m().queue().XcvrCmdTimer.Interval());
        return st.serial()->written;
    }
    void writeScale(const QString& name, const QStringList& lines) {
        QDir().mkpath(st.appDir + QStringLiteral("/SMeter"));
        QFile f(st.appDir + QStringLiteral("/SMeter/") + name + QStringLiteral(".txt"));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        for (const QString& l : lines) f.write((l + QLatin1Char('\n')).toUtf8());
    }
    static QStringList numberedLines(int n) {
        QStringList l;
        for (int i = 1; i <= n; ++i) l << QStringLiteral("%1,L%1").arg(i);
        return l;
    }
    unsigned barColor() const { return w().SMeter.shapes().at(0).color; }
    KavModule& m() { return st.m(); }
    KavMain& w() const { return st.program->main; }

    // Declared before the station: the program's hooks point into these until it is gone.
    std::map<QString, QString> items;
    ModeControl* modes = nullptr;
    SMeter* meter = nullptr;
    TestStation st;
};

TEST_F(ModeMeter, ModeReportFromTheRadioIsShownButNeverSentBack) {
    bringUp();
    radioSays(hex("FEFEE05C010302FD"));  // unsolicited: CW, narrow group
    EXPECT_TRUE(w().ModeSel[3].value());
    EXPECT_EQ(w().ModeSel[3].caption(), QStringLiteral("CW (Narrow)"));
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Narrow"));
    EXPECT_TRUE(sentAfterTick().isEmpty());
    // The same report again, and a report of the group alone through the list: still silent.
    radioSays(hex("FEFEE05C010303FD"));
    EXPECT_TRUE(sentAfterTick().isEmpty());
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Normal"));
    // The report's flag was consumed, not left to swallow the operator's next click.
    w().ModeSel[1].userClick();
    EXPECT_EQ(sentAfterTick(), hex("FEFE5CE0060101FD"));
}

TEST_F(ModeMeter, OperatorsModeClickSendsTheGroupRememberedForThatMode) {
    st.preset(kGeneral, QStringLiteral("ModeFilter3"), QStringLiteral("2"));
    st.preset(kGeneral, QStringLiteral("ModeFilter1"), QStringLiteral("normal"));
    bringUp();
    ASSERT_TRUE(st.p().config.ModeFiltersEnabledCheck.checked());
    EXPECT_EQ(w().ModeFrame.caption(), QStringLiteral("Mode (Filter Group)"));
    EXPECT_EQ(w().ModeSel[3].caption(), QStringLiteral("CW (Narrow)"));
    EXPECT_EQ(w().ModeSel[1].caption(), QStringLiteral("USB (Normal)"));

    w().ModeSel[3].userClick();
    EXPECT_EQ(sentAfterTick(), hex("FEFE5CE0060302FD"));
    EXPECT_TRUE(w().FreqDisplay.hasFocus());
    w().ModeSel[1].userClick();
    EXPECT_EQ(sentAfterTick(), hex("FEFE5CE0060103FD"));

    // Without the per-mode memory the captions are plain and the current group goes along.
    st.p().config.ModeFiltersEnabledCheck.userClick();
    EXPECT_EQ(w().ModeFrame.caption(), QStringLiteral("Mode"));
    EXPECT_EQ(w().ModeSel[3].caption(), QStringLiteral("CW"));
    w().ModeSel[3].userClick();
    EXPECT_EQ(sentAfterTick(), hex("FEFE5CE0060303FD"));
}

TEST_F(ModeMeter, FilterGroupListSendsOnlyForTheOperator) {
    bringUp();
    // The list stands in the filter frame: the operator sees it.
    EXPECT_TRUE(w().FilterFrame.visible());
    ComboBox& list = w().FilterGroupCombo;
    EXPECT_TRUE(list.visible());
    radioSays(hex("FEFEE05C010301FD"));
    ASSERT_EQ(list.text(), QStringLiteral("Wide"));
    {
        FlagHold hold(modes->FilterComboUpdating);
        SetCombo(list, QStringLiteral("Narrow"));
    }
    m().SetControlFlag(FlagFilterGroupList, true);
    SetCombo(list, QStringLiteral("Wide"));
    m().SetControlFlag(FlagFilterGroupList, false);
    EXPECT_TRUE(sentAfterTick().isEmpty());

    SetCombo(list, QStringLiteral("Normal"));
    EXPECT_EQ(sentAfterTick(), hex("FEFE5CE0060303FD"));
    EXPECT_EQ(w().ModeSel[3].caption(), QStringLiteral("CW (Normal)"));
    EXPECT_EQ(m().settings().GetSetting(kGeneral, QStringLiteral("ModeFilter3"), {}),
              QStringLiteral("Normal"));
}

TEST_F(ModeMeter, FilterListsSendOncePerChangeAndRefuseBadText) {
    Recording& kw = st.record(QLatin1Char('K'));
    bringUp("TS-2000");
    auto filterCmds = [&] {
        m().queue().ExecuteNextXcvrCmd();
        std::vector<std::pair<int, int>> out;  // value, selector
        for (const XcvrCmd& c : kw.executed)
            if (c.theCmd == XcvrCmdFilters) out.emplace_back(c.theArg, c.theArg2);
        kw.executed.clear();
        return out;
    };
    using V = std::vector<std::pair<int, int>>;
    modes->FilterCode = [](int kind, int index) { return 100 * kind + index + 1; };
    ComboBox& first = w().MainFilter1Combo;
    first.AddItem(QStringLiteral("2.4k"));
    first.AddItem(QStringLiteral("500"));
    first.setListIndex(1);
    first.Click();  // the same entry clicked again
    EXPECT_EQ(filterCmds(), (V{{2, 0}}));

    st.p().passbands.FillFilterLists(TS870Passband());
    ComboBox& low = w().LowCutoffCombo;
    low.Clear();
    low.AddItem(QStringLiteral("300"));
    low.AddItem(QStringLiteral("wide"));
    low.setListIndex(0);
    EXPECT_EQ(filterCmds(), (V{{30, 4}}));
    low.setListIndex(1);
    EXPECT_TRUE(filterCmds().empty());
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavMain.LowCutoffCombo_Click")));
}

TEST_F(ModeMeter, ReadingsFallOnTheScaleLabels) {
    // The shipped scale of this radio.
    QDir().mkpath(st.appDir + QStringLiteral("/SMeter"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(TOLVANE_SOURCE_DIR "/data/SMeter/IC-756PRO.txt"),
                            st.appDir + QStringLiteral("/SMeter/IC-756PRO.txt")));
    bringUp();
    ASSERT_EQ(meter->SMeterCount, 16);
    ASSERT_TRUE(w().SMeter.visible());
    const double width = w().SMeter.scaleWidth();

    radioSays(hex("FEFEE05C15020120FD"));  // 120 of 255: S9 on this radio
    EXPECT_EQ(w().SMeterValue.caption(), QStringLiteral("S9"));
    EXPECT_EQ(items[QStringLiteral("RadioSMeterString")], QStringLiteral("S9"));
    EXPECT_EQ(barColor(), SMeter::kGreen);
    ASSERT_EQ(w().SMeter.shapes().size(), 2u);
    EXPECT_DOUBLE_EQ(w().SMeter.shapes()[0].x2, std::round(width * 120 / 255.0));

    radioSays(hex("FEFEE05C15020255FD"));  // full scale
    EXPECT_EQ(w().SMeterValue.caption(), QStringLiteral("+65"));
    EXPECT_EQ(barColor(), 0x0000FFu);  // red
    EXPECT_DOUBLE_EQ(w().SMeter.shapes()[0].x2, width);
    EXPECT_EQ(items[QStringLiteral("RadioSMeter")], QStringLiteral("1"));

    meter->UpdateSMeter(0.0);
    EXPECT_EQ(w().SMeterValue.caption(), QStringLiteral("S0"));
    meter->UpdateSMeter(0.5);  // 0.5 * 15 + 0.5 = 8, the ninth step
    EXPECT_EQ(w().SMeterValue.caption(), QStringLiteral("+10"));
    // Below zero (a radio's "SM-001;") is the bottom of the scale, not a step before the first.
    meter->UpdateSMeter(-1 / 15.0);  // a TS-570, full scale 15
    EXPECT_EQ(w().SMeterValue.caption(), QStringLiteral("S0"));
    EXPECT_EQ(items[QStringLiteral("RadioSMeterString")], QStringLiteral("S0"));

    // A hidden meter still tells the suite link the reading, with no label.
    w().SMeter.setVisible(false);
    meter->UpdateSMeter(0.25);
    EXPECT_EQ(items[QStringLiteral("RadioSMeter")], QStringLiteral("0.25"));
    EXPECT_EQ(items[QStringLiteral("RadioSMeterString")], QString());
}

TEST_F(ModeMeter, ScaleFilesMustHoldExactlySixteenEntries) {
    bringUp();
    st.dialogs.shown.clear();
    auto load = [&](const QStringList& lines) {
        writeScale(QStringLiteral("T"), lines);
        st.dialogs.shown.clear();
        meter->LoadSMeterData(QStringLiteral("T"));
        return st.dialogs.boxTexts();
    };
    meter->LoadSMeterData(QStringLiteral("Missing"));
    EXPECT_EQ(meter->SMeterCount, 0);
    EXPECT_TRUE(st.dialogs.boxTexts().isEmpty());

    EXPECT_EQ(load(numberedLines(17)),
              QStringList{QStringLiteral(
                  "Error in S Meter file T - more than 16 entries found; only the first 16 will be used")});
    EXPECT_EQ(meter->SMeterCount, 16);
    EXPECT_EQ(meter->SMeterLabel[15], QStringLiteral("L16"));

    EXPECT_EQ(load(numberedLines(15)),
              QStringList{QStringLiteral("Error in S Meter file T - only 15 entries found")});
    EXPECT_EQ(meter->SMeterCount, 0);

    const QString empty = QStringLiteral("S Meter file T is empty; raw meter data will be displayed");
    const struct {
        int entry;
        const char* line;
        const char* error;
    } broken[] = {{3, "3 S3", "expecting at least two parameters separated by a comma "},
                  {5, "6,L5", "index (first value) is incorrect "}};
    for (const auto& b : broken) {
        QStringList lines = numberedLines(16);
        lines[b.entry - 1] = QString::fromLatin1(b.line);
        EXPECT_EQ(load(lines), (QStringList{QStringLiteral("Error in S Meter file T entry # %1 - %2")
                                                .arg(b.entry)
                                                .arg(QString::fromLatin1(b.error)),
                                            empty}));
        EXPECT_EQ(meter->SMeterCount, 0);
    }
    EXPECT_EQ(load({}), QStringList{empty});
    // Still alive and in raw mode.
    meter->UpdateSMeter(1.0);
    EXPECT_EQ(w().SMeterValue.caption(), QStringLiteral("16"));

    // A third field gives the bar's colour, by name or as red-green-blue; anything else leaves it green.
    const std::pair<const char*, unsigned> colours[] = {{"3,S3", SMeter::kGreen},
                                                        {"4,S4,128-128-128", 0x808080u},
                                                        {"5,S5,magenta", 0xFF00FFu},
                                                        {"6,S6,12-34", SMeter::kGreen},
                                                        {"7,S7,purple", SMeter::kGreen}};
    QStringList lines = numberedLines(16);
    for (int i = 0; i < 5; ++i) lines[i + 2] = QString::fromLatin1(colours[i].first);
    EXPECT_TRUE(load(lines).isEmpty());
    EXPECT_EQ(meter->SMeterLabel[2], QStringLiteral("S3"));
    for (int i = 0; i < 5; ++i) EXPECT_EQ(meter->SMeterColor[i + 2], colours[i].second) << colours[i].first;
}

TEST_F(ModeMeter, EveryShippedMeterRadioHasAScaleThatLoads) {
    bringUp();
    const QString source = QStringLiteral(TOLVANE_SOURCE_DIR "/data");
    QDir().mkpath(st.appDir + QStringLiteral("/SMeter"));
    for (const QString& f : QDir(source + QStringLiteral("/SMeter")).entryList(QDir::Files))
        QFile::copy(source + QStringLiteral("/SMeter/") + f, st.appDir + QStringLiteral("/SMeter/") + f);
    QFile cat(source + QStringLiteral("/Radios.txt"));
    ASSERT_TRUE(cat.open(QIODevice::ReadOnly));
    // The catalogue's names, and the names the Kenwood identification asks for.
    QStringList names = {QStringLiteral("TS-570D"), QStringLiteral("TS-870S")};
    const QRegularExpression radio(QStringLiteral("^\\s*RADIO=.([^,]*),.*SMETER=T"),
                                   QRegularExpression::CaseInsensitiveOption);
    for (const QString& line : QString::fromUtf8(cat.readAll()).split(QLatin1Char('\n'))) {
        const auto match = radio.match(line);
        if (match.hasMatch()) names << match.captured(1).trimmed().toUpper();
    }
    ASSERT_GT(names.size(), 20);
    st.dialogs.shown.clear();
    for (const QString& n : names) {
        meter->LoadSMeterData(n);
        EXPECT_EQ(meter->SMeterCount, 16) << n.toStdString();
    }
    EXPECT_TRUE(st.dialogs.boxTexts().isEmpty());
}

// The passband lists of the Kenwood models: what each mode offers, and a value read from the radio
// mirrored into its list without going back to the radio.
class KenwoodFilterLists : public ModeMeter {
protected:
    // A TS-2000 of the catalogue that names its model by its identification reply.
    void start(const char* id) {
        startRadio("TS-2000");
        radioSays(id);
        st.loop.advance(1000);
    }
    int filterCommands() {
        int n = 0;
        for (const XcvrCmd& c : m().queue().queued()) n += c.theCmd == XcvrCmdFilters;
        return n;
    }
};

TEST_F(KenwoodFilterLists, TheModeDecidesWhichListsShowAndWhatTheWidthListHolds) {
    start("ID019;");
    ASSERT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood TS-2000"));
    EXPECT_EQ(w().ShiftCombo.ListCount(), 13);  // 400 to 1000 by 50
    radioSays("MD1;");
    EXPECT_TRUE(w().HighCutoffCombo.visible());
    EXPECT_FALSE(w().ShiftCombo.visible());  // a TS-2000 in sideband has no shift
    radioSays("MD3;");
    EXPECT_FALSE(w().HighCutoffCombo.visible());
    EXPECT_TRUE(w().WidthCombo.visible());
    EXPECT_TRUE(w().ShiftCombo.visible());
    EXPECT_EQ(w().WidthCombo.ListCount(), 11);
    // A width read from the radio goes into the list and is not sent back.
    m().queue().InitializeXcvrCmdBuffer();
    radioSays("FW0500;");
    EXPECT_EQ(w().WidthCombo.text(), QStringLiteral("500"));
    EXPECT_EQ(filterCommands(), 0);
    // The operator's choice is sent.
    w().WidthCombo.setListIndex(0);
    EXPECT_EQ(filterCommands(), 1);
    // The high cut-off arrives as a code, found in the table.
    radioSays("MD1;");
    radioSays("SH05;");
    EXPECT_EQ(w().HighCutoffCombo.text(), QStringLiteral("2400"));
    EXPECT_EQ(filterCommands(), 1);
}

TEST_F(KenwoodFilterLists, TheTs570ShowsShiftInSidebandAndRoundsItToTheList) {
    start("ID018;");
    ASSERT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood TS-570S"));
    radioSays("MD2;");
    radioSays("MD1;");
    EXPECT_TRUE(w().ShiftCombo.visible());
    for (const auto& [reply, shown] : std::vector<std::pair<const char*, const char*>>{
             {"IS+0149;", "100"}, {"IS+0150;", "200"}, {"IS-0150;", "-200"}, {"IS-0149;", "-100"}}) {
        radioSays(reply);
        EXPECT_EQ(w().ShiftCombo.text(), QString::fromLatin1(shown)) << reply;
    }
    // Its high cut-offs count down: the last entry is code 0.
    radioSays("SH00;");
    EXPECT_EQ(w().HighCutoffCombo.text(), QStringLiteral("5000"));
}

TEST_F(KenwoodFilterLists, ATs870RefillsTheWidthListOnEveryModeChange) {
    start("ID015;");
    ASSERT_EQ(m().state().RadioDisplayName, QStringLiteral("Kenwood TS-870S"));
    radioSays("MD3;");
    w().WidthCombo.AddItem(QStringLiteral("stray"));
    radioSays("MD7;");  // CW to CW-R: the same layout, laid out again
    EXPECT_EQ(w().WidthCombo.ListCount(), 6);
    radioSays("MD1;");
    radioSays("FW0030;");  // tens of hertz: the low cut-off of 300
    EXPECT_EQ(w().LowCutoffCombo.text(), QStringLiteral("300"));
}

}  // namespace
}  // namespace tv::test
