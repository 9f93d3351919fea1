// Modes, filter groups and the S-meter through the whole program on virtual time: what reaches the
// radio after a report, a gesture or the program's own list change, and how readings meet the scale.

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
    // Brings up a radio of the test catalogue on port 1, polling off, the queue empty. The scale files
    // are written first, as they lie beside the program.
    void bringUp(const char* radio = "IC-756PRO") {
        st.preset(kGeneral, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(kGeneral, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(kGeneral, QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
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
    ComboBox& list() const { return w().FilterGroupCombo; }

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
    EXPECT_EQ(w().ModeFrame.caption(), QStringLiteral("Mode: CW"));
    EXPECT_EQ(w().ModeSel[3].caption(), QStringLiteral("CW (Narrow)"));
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Narrow"));
    EXPECT_EQ(items[QStringLiteral("RadioMode")], QStringLiteral("CW"));
    EXPECT_TRUE(sentAfterTick().isEmpty());
    // The same report again, and a report of the group alone through the list: still silent.
    radioSays(hex("FEFEE05C010303FD"));
    EXPECT_TRUE(sentAfterTick().isEmpty());
    EXPECT_EQ(w().FilterGroupCombo.text(), QStringLiteral("Normal"));
    // The report's flag was consumed, not left to swallow the operator's next click.
    EXPECT_FALSE(m().ControlFlag(FlagModeSel));
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
    EXPECT_TRUE(list().visible());
    radioSays(hex("FEFEE05C010301FD"));
    ComboBox& list = w().FilterGroupCombo;
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

    QStringList noComma = numberedLines(16);
    noComma[2] = QStringLiteral("3 S3");
    const QString empty = QStringLiteral("S Meter file T is empty; raw meter data will be displayed");
    EXPECT_EQ(
        load(noComma),
        (QStringList{QStringLiteral("Error in S Meter file T entry # 3 - expecting at least two parameters "
                                    "separated by a comma "),
                     empty}));
    EXPECT_EQ(meter->SMeterCount, 0);
    QStringList badIndex = numberedLines(16);
    badIndex[4] = QStringLiteral("6,L5");
    EXPECT_EQ(load(badIndex),
              (QStringList{QStringLiteral("Error in S Meter file T entry # 5 - index (first value) "
                                          "is incorrect "),
                           empty}));
    EXPECT_EQ(load({}), QStringList{empty});
    // Still alive and in raw mode.
    meter->UpdateSMeter(1.0);
    EXPECT_EQ(w().SMeterValue.caption(), QStringLiteral("16"));

    QStringList colours = numberedLines(16);
    colours[2] = QStringLiteral("3,S3");
    colours[3] = QStringLiteral("4,S4,128-128-128");
    colours[4] = QStringLiteral("5,S5,magenta");
    colours[5] = QStringLiteral("6,S6,12-34");
    colours[6] = QStringLiteral("7,S7,purple");
    EXPECT_TRUE(load(colours).isEmpty());
    EXPECT_EQ(meter->SMeterLabel[2], QStringLiteral("S3"));
    EXPECT_EQ(meter->SMeterColor[2], SMeter::kGreen);
    EXPECT_EQ(meter->SMeterColor[3], 0x808080u);
    EXPECT_EQ(meter->SMeterColor[4], 0xFF00FFu);
    EXPECT_EQ(meter->SMeterColor[5], SMeter::kGreen);
    EXPECT_EQ(meter->SMeterColor[6], SMeter::kGreen);
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

}  // namespace
}  // namespace tv::test
