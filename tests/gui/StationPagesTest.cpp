// The device pages and the multi-radio page drawn offscreen over a whole program on virtual time: the
// grid's edits reach the table through its view, the main window's frames show the table's row, and the
// transceiver buttons switch.

#include "support/TestStation.h"
#include "windows/qt/Windows.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QLineEdit>
#include <QTabBar>
#include <QTableView>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");

class StationPages : public ::testing::Test {
  protected:
    void SetUp() override {
        const QString table = st.dir.filePath(QStringLiteral("tuner.txt"));
        QFile f(table);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("Band,Tune,Load\n3500,1,9\n7000,3,7\n14000,5,5\n21000,7,3\n28000,9,1\n");
        f.close();
        st.preset(G, QStringLiteral("Radio"), QStringLiteral("IC-756PRO"));
        st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(G, QStringLiteral("Interrogate"), QStringLiteral("F"));
        const QString D = QStringLiteral("Devices"), X = QStringLiteral("MultiXCVR");
        st.preset(D, QStringLiteral("DeviceEnabled0"), QStringLiteral("1"));
        st.preset(D, QStringLiteral("DeviceName0"), QStringLiteral("Tuner"));
        st.preset(D, QStringLiteral("DeviceFilename0"), table);
        st.preset(D, QStringLiteral("DeviceTolerance0"), QStringLiteral("5"));
        const char* models[2] = {"IC-756PRO", "IC-735"};
        for (int n = 0; n < 2; ++n) {
            st.preset(X, QStringLiteral("MultiModel%1").arg(n), QString::fromLatin1(models[n]));
            st.preset(X, QStringLiteral("MultiEnabled%1").arg(n), QStringLiteral("1"));
            st.preset(X, QStringLiteral("MultiPort%1").arg(n), QString::number(n));
            st.preset(X, QStringLiteral("MultiBaud%1").arg(n), QStringLiteral("9600"));
        }
        ASSERT_TRUE(st.start());
        windows =
            std::make_unique<Windows>(st.p().main, st.p().config, st.p().messages, st.p().sequenceEditor);
        st.p().main.Show();
        st.p().config.Show();
        QApplication::processEvents();
    }
    void TearDown() override {
        windows.reset();
        st.stop();
    }
    template <class T>
    T* widget(const Control& c) {
        return qobject_cast<T*>(windows->binder().widgetOf(c));
    }
    // Lets the views redraw what the models changed.
    void settle() {
        for (int i = 0; i < 3; ++i) QApplication::processEvents();
    }
    TestStation st;
    std::unique_ptr<Windows> windows;
};

TEST_F(StationPages, TheDeviceGridEditsTheTableAndTheFrameShowsItsRow) {
    KavConfig& c = st.p().config;
    auto* tabs = widget<QTabBar>(c.ConfigTab);
    ASSERT_NE(tabs, nullptr);
    EXPECT_EQ(tabs->tabText(2), QStringLiteral("Tuner"));
    tabs->setCurrentIndex(2);
    EXPECT_EQ(c.ConfigTab.tab(), 2);
    auto* grid = widget<QTableView>(c.DeviceGrid[0]);
    ASSERT_NE(grid, nullptr);
    settle();
    // Five rows and the line for a new one, under the names of the controls.
    EXPECT_EQ(grid->model()->rowCount(), 6);
    EXPECT_EQ(grid->model()->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Band"));
    EXPECT_FALSE(grid->isColumnHidden(3));
    // A frequency typed on the new line becomes a row in its place; one typed over a row moves it.
    ASSERT_TRUE(grid->model()->setData(grid->model()->index(5, 0), QStringLiteral("10100")));
    ASSERT_TRUE(grid->model()->setData(grid->model()->index(0, 0), QStringLiteral("50000")));
    settle();
    QStringList column;
    for (int r = 0; r < grid->model()->rowCount() - 1; ++r)
        column << grid->model()->index(r, 0).data().toString();
    EXPECT_EQ(column, QStringList({"7000", "10100", "14000", "21000", "28000", "50000"}));
    // The main window's frame shows the row for the frequency, its labels the controls' names.
    st.m().queue().SetXcvrFreq(14100);
    settle();
    EXPECT_EQ(widget<QGroupBox>(st.p().main.DeviceFrame[0])->title(), QStringLiteral("Tuner"));
    EXPECT_EQ(widget<QLineEdit>(st.p().main.DeviceControl1[0])->text(), QStringLiteral("5"));
    EXPECT_TRUE(widget<QLineEdit>(st.p().main.DeviceControl1[0])->isReadOnly());
    // The number of controls hides the columns and the boxes beyond it.
    c.DeviceControls[0].setText(QStringLiteral("1"));
    settle();
    EXPECT_TRUE(grid->isColumnHidden(2));
    EXPECT_FALSE(widget<QLineEdit>(st.p().main.DeviceControl2[0])
                     ->isVisibleTo(windows->window(QStringLiteral("KavMain"))));
}

TEST_F(StationPages, TheMultiRadioPageNamesItsFieldsAndTheButtonsSwitch) {
    KavConfig& c = st.p().config;
    widget<QTabBar>(c.ConfigTab)->setCurrentIndex(7);
    settle();
    auto* model = widget<QComboBox>(c.MultiModel[1]);
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->currentText(), QStringLiteral("IC-735"));
    EXPECT_EQ(model->toolTip(), QStringLiteral("Radio 2 model"));
    EXPECT_EQ(
        widget<QComboBox>(c.MultiDTR[0])->toolTip(),
        QStringLiteral(
            "Radio 1 serial port Data Terminal Ready (No - always off, Yes - always on, Xmit - on to xmit)"));
    EXPECT_EQ(widget<QComboBox>(c.BandRadioCombo[6])->itemText(2), QStringLiteral("xcvr 2"));
    // The entry isn't offered until its serial settings are complete.
    EXPECT_FALSE(widget<QAbstractButton>(c.MultiEnabled[0])->isEnabled());
    // The operator's button on the main window switches.
    widget<QAbstractButton>(st.p().main.XcvrSelButton[1])->click();
    EXPECT_EQ(st.p().multiXcvr.SelectedXcvr, 1);
    EXPECT_EQ(st.m().radio().model(), QStringLiteral("IC-735"));
    // A new name reaches the button and the band lists.
    c.MultiName[1].setText(QStringLiteral("Old Icom"));
    settle();
    EXPECT_EQ(widget<QAbstractButton>(st.p().main.XcvrSelButton[1])->text(), QStringLiteral("Old Icom"));
    EXPECT_EQ(widget<QComboBox>(c.BandRadioCombo[6])->itemText(2), QStringLiteral("Old Icom"));
    // Pictures for the README, when asked for.
    const QString shots = qEnvironmentVariable("TOLVANE_SCREENSHOTS");
    if (!shots.isEmpty()) {
        windows->window(QStringLiteral("KavConfig"))
            ->grab()
            .save(shots + QStringLiteral("/config-multiradio.png"));
        c.ConfigTab.setTab(2);
        settle();
        windows->window(QStringLiteral("KavConfig"))
            ->grab()
            .save(shots + QStringLiteral("/config-device.png"));
    }
}

}  // namespace
}  // namespace tv::test
