// Device tables: the file's rules, the lookup of the row for a frequency, and the device pages and
// frames of the whole program on virtual time.

#include "automation/DeviceFile.h"
#include "services/Common.h"
#include "services/Errors.h"
#include "support/TestStation.h"

#include <QFile>

#include <gtest/gtest.h>


namespace tv::test {
namespace {

GridRow row(const char* f, const char* a = "", const char* b = "", const char* c = "") {
    return {QString::fromLatin1(f), QString::fromLatin1(a), QString::fromLatin1(b), QString::fromLatin1(c)};
}

int errorOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const TvError& e) {
        return e.number();
    }
    return 0;
}

TEST(DeviceTable, TheNearestUsableRowWithinTheToleranceIsFound) {
    // The bisection lands on the empty 14000 row; the scan still reaches 14010.
    const std::vector<GridRow> tuner = {row("7000", "1"), row("14000"), row("14010", "27", "114")};
    EXPECT_EQ(FindDeviceRow(tuner, 3, 2, 2, 14002), 2);
    // Nothing within 2 % of 3.5 MHz.
    EXPECT_EQ(FindDeviceRow(tuner, 3, 2, 2, 3500), -1);
    // With no controls every row counts, the empty one too.
    EXPECT_EQ(FindDeviceRow(tuner, 3, 0, 2, 14002), 1);
    // A count above 3 counts as 3: a value in the third column is something to show.
    EXPECT_EQ(FindDeviceRow({row("14000", "", "", "x")}, 1, 5, 2, 14000), 0);
    // Tolerance 0 in single precision: a row matches the frequency it was written as, and no other.
    const std::vector<GridRow> exact = {row("14000", "z"), row("14025.123", "a"), row("14025.2", "b")};
    EXPECT_EQ(FindDeviceRow(exact, 3, 1, 0, 14025.123), 1);
    EXPECT_EQ(FindDeviceRow(exact, 3, 1, 0, 14025.2), 2);
    EXPECT_EQ(FindDeviceRow(exact, 3, 1, 0, 14025.125), -1);
    // Equally near on both sides: the row above, found first, stays.
    EXPECT_EQ(FindDeviceRow({row("13990", "lo"), row("14000"), row("14010", "hi")}, 3, 1, 2, 14000), 2);
    // An empty table and a frequency that isn't a number fail, to be reported.
    EXPECT_EQ(errorOf([] { FindDeviceRow({}, 0, 1, 2, 14000); }), kErrSubscript);
    EXPECT_EQ(errorOf([] { FindDeviceRow({row("1-2", "x")}, 1, 1, 2, 14000); }), kErrTypeMismatch);
}

TEST(DeviceFile, HeaderRowsAndTheLineWhereReadingStops) {
    DeviceFileContents f =
        ReadDeviceFile("L,C\r\n14025,27,114\r\n1,800\r\n7000\r\n3500,a,b,c,d,e\r\n", "t.txt", 0, '.');
    EXPECT_EQ(f.controlNames, QStringList({"L", "C"}));
    ASSERT_EQ(f.rows.size(), 4u);
    EXPECT_EQ(f.rows[0], row("14025", "27", "114"));
    EXPECT_EQ(f.rows[1], row("1", "800"));  // a comma never stands inside a field
    EXPECT_EQ(f.rows[2], row("7000"));
    EXPECT_EQ(f.rows[3], row("3500", "a", "b", "c"));
    EXPECT_TRUE(f.message.isEmpty());
    // One line: no rows, and not empty. An empty first line: no controls.
    EXPECT_TRUE(ReadDeviceFile("L,C", "t.txt", 0, '.').rows.empty());
    EXPECT_TRUE(ReadDeviceFile("\n7000,x\n", "t.txt", 0, '.').controlNames.isEmpty());
    // A header field that is empty ends the names.
    EXPECT_EQ(ReadDeviceFile("A,,C\n", "t.txt", 0, '.').controlNames, QStringList({"A"}));

    f = ReadDeviceFile("L\n7000,1\n7050,2\nabc,3\n7100,4\n", "t.txt", 0, '.');
    EXPECT_EQ(f.rows.size(), 2u);
    EXPECT_EQ(f.message,
              QStringLiteral("aborting device data load operation - missing or invalid frequency: abc,3"));

    QByteArray big = "L\n";
    for (int i = 0; i < 1026; ++i) big += QByteArray::number(1800 + i) + ",v\n";
    f = ReadDeviceFile(big, "/tmp/big.txt", 2, '.');
    EXPECT_EQ(f.rows.size(), 1025u);
    EXPECT_EQ(f.message,
              QStringLiteral("too many frequency entries in /tmp/big.txt for device 2 -- excess ignored"));
    big.chop(big.size() - big.lastIndexOf("\n", big.size() - 2) - 1);  // 1025 rows: no warning
    EXPECT_TRUE(ReadDeviceFile(big, "t", 2, '.').message.isEmpty());
}

class DeviceStation : public ::testing::Test {
  protected:
    QString file(const QString& name, const QByteArray& text) {
        const QString path = st.dir.filePath(name);
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(text);
        return path;
    }
    void start(const QString& tunerFile) {
        const QString D = QStringLiteral("Devices");
        st.preset(QStringLiteral("General"), QStringLiteral("Radio"), QStringLiteral("IC-756PRO"));
        st.preset(D, QStringLiteral("DeviceEnabled0"), QStringLiteral("1"));
        st.preset(D, QStringLiteral("DeviceName0"), QStringLiteral("Tuner"));
        st.preset(D, QStringLiteral("DeviceFilename0"), tunerFile);
        st.preset(D, QStringLiteral("DeviceEnabled1"), QStringLiteral("1"));
        st.preset(D, QStringLiteral("DeviceFilename1"), st.dir.filePath(QStringLiteral("gone.txt")));
        ASSERT_TRUE(st.start());
    }
    KavMain& w() { return st.p().main; }
    KavConfig& c() { return st.p().config; }
    QStringList shown(int d) {
        return {w().DeviceControl1[d].text(), w().DeviceControl2[d].text(), w().DeviceControl3[d].text()};
    }
    TestStation st;
};

TEST_F(DeviceStation, TheFramesFollowTheFrequencyFromTheLoadedTable) {
    start(file(QStringLiteral("tuner.txt"), "L,C\n14010,27,114\n7000,80,200\n14000,,\n"));
    // Loaded, sorted, named; the third control is hidden everywhere.
    EXPECT_EQ(c().DeviceGrid[0].rows()[0][0], QStringLiteral("7000"));
    EXPECT_EQ(c().DeviceControls[0].text(), QStringLiteral("2"));
    EXPECT_EQ(w().DeviceLabel2[0].caption(), QStringLiteral("C"));
    EXPECT_EQ(c().DeviceGrid[0].columnCaption(1), QStringLiteral("L"));
    EXPECT_FALSE(w().DeviceControl3[0].visible());
    EXPECT_FALSE(c().DeviceGrid[0].columnVisible(3));
    EXPECT_EQ(w().DeviceFrame[0].caption(), QStringLiteral("Tuner"));
    EXPECT_EQ(c().ConfigTab.tabCaption(2), QStringLiteral("Tuner"));
    EXPECT_TRUE(w().DeviceFrame[0].visible());
    // The device whose file is gone was disabled, with its message.
    EXPECT_FALSE(c().DeviceEnabled[1].checked());
    EXPECT_FALSE(w().DeviceFrame[1].visible());
    EXPECT_TRUE(st.dialogs.boxTexts().contains(
        QStringLiteral("disabling device 1: specified data file does not exist")));

    st.m().queue().SetXcvrFreq(14002);
    EXPECT_EQ(shown(0), QStringList({"27", "114", ""}));
    st.m().queue().SetXcvrFreq(3500);
    EXPECT_EQ(shown(0), QStringList({"", "", ""}));
    st.m().queue().SetXcvrFreq(7010);
    EXPECT_EQ(shown(0), QStringList({"80", "200", ""}));
    // A tolerance out of range isn't acted on; a new one within range is, at once.
    c().DeviceTolerance[0].setText(QStringLiteral("0"));
    EXPECT_EQ(shown(0), QStringList({"", "", ""}));
    c().DeviceTolerance[0].setText(QStringLiteral("2"));
    // A disabled device's boxes keep what they showed; its frame goes and the PTT frame comes back.
    c().DeviceEnabled[0].setChecked(false);
    st.m().queue().SetXcvrFreq(14002);
    EXPECT_EQ(shown(0), QStringList({"80", "200", ""}));
    EXPECT_FALSE(w().DeviceFrame[0].visible());
    EXPECT_TRUE(w().PTTFrame.visible());
    // The settings are kept at shutdown.
    st.stop();
    EXPECT_EQ(st.stored(QStringLiteral("Devices"), QStringLiteral("DeviceEnabled0")), QStringLiteral("0"));
    EXPECT_EQ(st.stored(QStringLiteral("Devices"), QStringLiteral("DeviceControl20")), QStringLiteral("C"));
}

TEST_F(DeviceStation, AFullTableEditedInTheGridStaysSortedSavesAndLoadsBackIdentical) {
    QByteArray text = "Band,Tap,Load\n";
    for (int i = 0; i < kMaxDeviceRows; ++i)
        text += QByteArray::number(1800 + i * 7) + ".5," + QByteArray::number(i % 13) + ",t" +
                QByteArray::number(i) + ",\n";
    start(file(QStringLiteral("amp.txt"), text));
    Grid& g = c().DeviceGrid[0];
    ASSERT_EQ(g.rowCount(), kMaxDeviceRows);
    ASSERT_TRUE(g.deleteRow(500));
    EXPECT_EQ(st.p().devices.DeviceDepth[0], kMaxDeviceRows - 1);
    ASSERT_TRUE(g.insertRow(0, QStringLiteral("5000.25")));
    // A frequency typed into the wrong place moves to its own; a bad one is refused with the old value kept.
    ASSERT_TRUE(g.editCell(10, 0, QStringLiteral("99999")));
    EXPECT_FALSE(g.editCell(0, 0, QStringLiteral("abc")));
    EXPECT_FALSE(g.insertRow(0, QString()));
    EXPECT_EQ(st.dialogs.boxTexts().count(QStringLiteral("invalid frequency")), 2);
    EXPECT_EQ(g.cell(0, 0), QStringLiteral("1800.5"));
    ASSERT_TRUE(g.editCell(3, 2, QStringLiteral("edited")));
    EXPECT_EQ(g.rowCount(), kMaxDeviceRows);
    EXPECT_EQ(st.p().devices.DeviceDepth[0], kMaxDeviceRows);
    for (int r = 1; r < g.rowCount(); ++r)
        ASSERT_LT(g.cell(r - 1, 0).toDouble(), g.cell(r, 0).toDouble()) << r;
    EXPECT_EQ(g.cell(g.rowCount() - 1, 0), QStringLiteral("99999"));

    const std::vector<GridRow> edited = g.rows();
    const QString saved = st.dir.filePath(QStringLiteral("amp-saved.txt"));
    st.p().devices.SaveDeviceFreqData(saved, 0);
    c().DeviceFilename[0].setText(saved);
    c().LoadDeviceCmd[0].click();
    EXPECT_EQ(g.rows(), edited);
    QFile f(saved);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_TRUE(f.readAll().startsWith("Band,Tap,Load\n1800.5,0,t0,\n"));
    EXPECT_FALSE(st.log().contains(QStringLiteral("program error")));
}

TEST_F(DeviceStation, AnEnabledDeviceWithAnEmptyTableReportsItsLookup) {
    start(file(QStringLiteral("header-only.txt"), "L\n"));
    EXPECT_EQ(c().DeviceGrid[0].rowCount(), 0);
    st.m().queue().SetXcvrFreq(14002);
    EXPECT_TRUE(st.log().contains(QStringLiteral("KavModule.UpdateDevices")));
    // An empty file disables, word for word.
    const QString empty = file(QStringLiteral("empty.txt"), "");
    st.p().devices.LoadDeviceFreqData(empty, 0);
    EXPECT_EQ(st.dialogs.boxTexts().last(), QStringLiteral("disabling device 0:specified data fileis empty"));
    EXPECT_FALSE(c().DeviceEnabled[0].checked());
}

}  // namespace
}  // namespace tv::test
