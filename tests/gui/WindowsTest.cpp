// The Qt windows, built offscreen over a whole program on virtual time as the program builds them: every
// control of the models has its widget, a gesture on a widget reaches its model as the operator's, and the
// models' changes reach the widgets. The memory bank and its notes editor, the device pages with their
// grid, and the multi-radio page are gone through here too.

#include "forms/MemoryNotes.h"
#include "platform/QtDialogs.h"
#include "support/TestStation.h"
#include "windows/qt/Windows.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMouseEvent>
#include <QTabBar>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");

// An IC-756PRO, polling off, with whatever else was preset; its windows over it.
class GuiRig : public ::testing::Test {
protected:
    void open(const char* radio = "IC-756PRO") {
        st.preset(G, QStringLiteral("Radio"), QString::fromLatin1(radio));
        st.preset(G, QStringLiteral("Interrogate"), QStringLiteral("F"));
        ASSERT_TRUE(st.start());
        windows = std::make_unique<Windows>(st.p().main, st.p().config, st.p().messages, st.p().sequenceEditor);
        windows->addMemoryNotes(st.p().memoryNotes);
        st.p().main.Show();
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
    KavMain& w() { return st.p().main; }
    TestStation st;
    std::unique_ptr<Windows> windows;
};

class Gui : public GuiRig {
protected:
    void SetUp() override {
        st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
        ASSERT_NO_FATAL_FAILURE(open());
        st.m().queue().InitializeXcvrCmdBuffer();
    }
    // The codes of the records waiting in the queue, in order.
    std::vector<int> queued() {
        std::vector<int> codes;
        for (const XcvrCmd& c : st.m().queue().queued()) codes.push_back(c.theCmd);
        return codes;
    }
};

TEST_F(Gui, EveryControlOfEveryWindowHasAWidget) {
    int checked = 0;
    for (FormWindow* w : windows->all())
        for (Control* c : w->form().controls()) {
            if (dynamic_cast<Timer*>(c)) continue;
            EXPECT_NE(windows->binder().widgetOf(*c), nullptr) << w->form().name().toStdString() << "."
                                                             << c->fullName().toStdString();
            ++checked;
        }
    EXPECT_GT(checked, 150);
    EXPECT_EQ(windows->window(QStringLiteral("KavMain"))->windowTitle(), st.p().main.caption());
}

TEST_F(Gui, ClicksReachTheModelsAndTheModelsRedrawTheWidgets) {
    // PTT on: the radio is keyed through the queue and both frames say so.
    widget<QAbstractButton>(st.p().main.PTTonCmd)->click();
    EXPECT_EQ(queued(), (std::vector<int>{XcvrCmdPTT}));
    EXPECT_EQ(st.p().main.PTTFrame.caption(), QStringLiteral("PTT: Transmitting"));
    EXPECT_EQ(widget<QGroupBox>(st.p().main.PTTFrame)->title(), QStringLiteral("PTT: Transmitting"));
    EXPECT_EQ(st.p().config.PTTFrame.caption(), QStringLiteral("PTT: Transmitting"));
    widget<QAbstractButton>(st.p().main.PTTOffCmd)->click();
    EXPECT_EQ(widget<QGroupBox>(st.p().main.PTTFrame)->title(), QStringLiteral("PTT"));

    // Split: the operator's click sends it with the other receiver; a report sets the box under its
    // flag and sends nothing back.
    st.m().queue().InitializeXcvrCmdBuffer();
    widget<QCheckBox>(st.p().main.SplitBox)->click();
    EXPECT_TRUE(st.p().main.SplitBox.checked());
    EXPECT_EQ(queued(), (std::vector<int>{XcvrCmdSplit, XcvrCmdVFOB, XcvrCmdWait, XcvrCmdRequestFreq, XcvrCmdWait,
                                          XcvrCmdRequestMode}));
    st.m().queue().InitializeXcvrCmdBuffer();
    st.m().SetControlFlag(FlagSplitBox, true);
    st.p().main.SplitBox.setChecked(false);
    EXPECT_TRUE(queued().empty());
    EXPECT_FALSE(widget<QCheckBox>(st.p().main.SplitBox)->isChecked());

    // A mode button sends "Set Mode"; a mode the radio reports moves the button and sends nothing.
    st.m().queue().InitializeXcvrCmdBuffer();
    auto* cw = widget<QAbstractButton>(st.p().main.ModeSel[ModeCW]);
    cw->click();
    EXPECT_EQ(queued(), (std::vector<int>{XcvrCmdMode}));
    EXPECT_EQ(CommandName(queued().front()), QStringLiteral("Set Mode"));
    st.m().queue().InitializeXcvrCmdBuffer();
    st.m().state().UpdateXcvrMode(ModeUSB);
    EXPECT_TRUE(widget<QAbstractButton>(st.p().main.ModeSel[ModeUSB])->isChecked());
    EXPECT_FALSE(cw->isChecked());
    EXPECT_TRUE(queued().empty());

    // "A = B" alone asks for no interrogation.
    widget<QAbstractButton>(st.p().main.VFOEqualCmd)->click();
    EXPECT_EQ(queued(), (std::vector<int>{XcvrCmdVFOEqual}));
}

TEST_F(Gui, TheConfigurationWindowOpensAndClosingItOnlyHidesIt) {
    widget<QAbstractButton>(st.p().main.ConfigCmd)->click();
    FormWindow* config = windows->window(QStringLiteral("KavConfig"));
    EXPECT_TRUE(st.p().config.visible());
    EXPECT_TRUE(config->isVisible());
    config->close();
    EXPECT_FALSE(st.p().config.visible());
    EXPECT_FALSE(st.p().unloaded());
}

// F4 keys and F2 unkeys from any box the keyboard is in, each once, and the PTT frame keeps its caption.
TEST_F(Gui, F4AndF2ActOnceFromEveryBox) {
    const std::vector<std::pair<const char*, TextBox*>> boxes = {
        {"frequency", &w().FreqDisplay}, {"memory", &w().FreqMemoryTextbox[1]}, {"device", &w().DeviceControl1[0]}};
    for (const auto& [name, box] : boxes) {
        auto* edit = widget<QLineEdit>(*box);
        ASSERT_NE(edit, nullptr) << name;
        for (Qt::Key key : {Qt::Key_F4, Qt::Key_F2}) {
            st.m().queue().InitializeXcvrCmdBuffer();
            QTest::keyClick(edit, key);
            EXPECT_EQ(queued(), (std::vector<int>{XcvrCmdPTT})) << name << " " << key;
        }
    }
    EXPECT_EQ(st.p().main.PTTFrame.caption(), QStringLiteral("PTT"));
}

// The operator selects the frequency (all of it, or a word by a double-click) and types over it, while
// the radio goes on reporting: the new frequency is what reaches the radio.
TEST_F(Gui, TypingOverASelectedFrequencyReplacesIt) {
    auto report = [this](const char* hex) {
        st.serial()->feed(QByteArray::fromHex(hex));
        st.loop.runPosted();
    };
    report("FEFEE05C030000051400FD");  // 14,050.00 kHz
    auto* box = widget<QLineEdit>(st.p().main.FreqDisplay);
    ASSERT_NE(box, nullptr);
    ASSERT_EQ(box->text(), QStringLiteral("14,050.00"));
    box->selectAll();  // what Ctrl+A or a triple click leaves in the editor
    QTest::keyClicks(box, QStringLiteral("70"));
    report("FEFEE05C030000051400FD");  // the same frequency polled again leaves the digits alone
    QTest::keyClicks(box, QStringLiteral("10.5"));
    EXPECT_EQ(box->text(), QStringLiteral("7010.5"));
    st.serial()->written.clear();
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_DOUBLE_EQ(st.m().state().RadioFreq, 7010.5);
    st.loop.advance(st.m().queue().XcvrCmdTimer.Interval());
    EXPECT_EQ(st.serial()->written, QByteArray::fromHex("FEFE5CE0050005010700FD"));
    EXPECT_EQ(box->text(), QStringLiteral("7,010.50"));
    // A part selected with the mouse is replaced, the rest stays.
    box->setSelection(0, 1);
    QTest::keyClicks(box, QStringLiteral("1"));
    EXPECT_EQ(box->text(), QStringLiteral("1,010.50"));
}

class MemoriesGui : public GuiRig {
protected:
    void SetUp() override {
        st.preset(QStringLiteral("Memory"), QStringLiteral("FreqMemory12"), QStringLiteral("14,025.00"));
        st.preset(QStringLiteral("Memory"), QStringLiteral("ModeMemory12"), QStringLiteral("3"));
        st.preset(QStringLiteral("Memory"), QStringLiteral("MemoryNotes12"), QStringLiteral("DX window"));
        open();
    }
};

TEST_F(MemoriesGui, TheBankItsButtonsAndTheNotesEditorReachTheirModels) {
    // "Mem" shows the bank in the shared area.
    widget<QAbstractButton>(w().MBCmd)->click();
    EXPECT_TRUE(w().MemoryBankFrame.visible());
    EXPECT_FALSE(widget<QGroupBox>(w().MemoryBankFrame)->isHidden());
    // Bank 2 by its button: memory 12 on row 2, its note as the recall button's tooltip.
    widget<QAbstractButton>(w().MemoryBankCmd[1])->click();
    EXPECT_EQ(st.p().memories.GetCurrentMemoryBank(), 1);
    EXPECT_EQ(widget<QLineEdit>(w().FreqMemoryTextbox[2])->text(), QStringLiteral("14,025.00"));
    EXPECT_TRUE(widget<QAbstractButton>(w().SelCmd[2])->toolTip().contains(QStringLiteral("DX window")));
    // A mode chosen in the widget is the memory's.
    auto* mode = widget<QComboBox>(w().ModeMemoryPulldown[2]);
    mode->setCurrentIndex(1);
    emit mode->activated(1);
    EXPECT_EQ(st.p().memories.memory(12).mode, int(ModeUSB));

    // A column head switches the pane to the notes.
    QLabel* head = widget<QLabel>(w().FreqLabel);
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(head, &release);
    EXPECT_TRUE(st.m().MemoryNotesShown);
    EXPECT_FALSE(widget<QLineEdit>(w().MemoryNotesDisplay[2])->isHidden());

    // Ctrl-click on the recall button opens the editor (the press's modifiers are the keyboard's, which
    // an offscreen test can't hold down: the press is given to the model); typing in its widget edits
    // the note.
    w().SelCmd[2].mouseDown(kLeftButton, kCtrl, 0, 0);
    w().SelCmd[2].click();
    MemoryNotes& ed = st.p().memoryNotes;
    ASSERT_TRUE(ed.visible());
    FormWindow* edWindow = windows->window(QStringLiteral("MemoryNotes"));
    ASSERT_NE(edWindow, nullptr);
    EXPECT_EQ(edWindow->windowTitle(), QStringLiteral("Tolvane Memory Notes Editor: Memory 12"));
    auto* notes = widget<QLineEdit>(ed.Notes);
    for (QChar ch : QStringLiteral(" <20m>")) {
        QKeyEvent key(QEvent::KeyPress, 0, Qt::NoModifier, QString(ch));
        QCoreApplication::sendEvent(notes, &key);
    }
    EXPECT_EQ(ed.Notes.text(), QStringLiteral("DX window 20m"));
    EXPECT_EQ(widget<QLineEdit>(w().MemoryNotesDisplay[2])->text(), QStringLiteral("DX window 20m"));

    // The Memories tab: a bank title typed there is the bank's caption.
    auto* title = widget<QLineEdit>(st.p().config.BankToolTip[1]);
    title->setText(QStringLiteral("20 m DX"));
    emit title->textEdited(title->text());
    EXPECT_EQ(widget<QGroupBox>(w().MemoryBankFrame)->title(), QStringLiteral("20 m DX"));
}

class StationPages : public GuiRig {
protected:
    void SetUp() override {
        const QString table = st.dir.filePath(QStringLiteral("tuner.txt"));
        QFile f(table);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("Band,Tune,Load\n3500,1,9\n7000,3,7\n14000,5,5\n21000,7,3\n28000,9,1\n");
        f.close();
        st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
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
        ASSERT_NO_FATAL_FAILURE(open());
        st.p().config.Show();
        QApplication::processEvents();
    }
};

TEST_F(StationPages, TheDeviceGridEditsTheTableAndTheFrameShowsItsRow) {
    KavConfig& c = st.p().config;
    auto* tabs = widget<QTabBar>(c.ConfigTab);
    ASSERT_NE(tabs, nullptr);
    EXPECT_EQ(tabs->tabText(2), QStringLiteral("&Tuner"));
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

// The configuration window of an FT-1000MP, tab by tab: on each, one control changed through its widget
// reaches the stored settings (or the file it keeps); the tabs carry their keys; pictures when asked.
TEST_F(GuiRig, EveryConfigurationTabStoresWhatItsWidgetChanges) {
    st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
    ASSERT_NO_FATAL_FAILURE(open("MP1000"));
    KavConfig& c = st.p().config;
    c.Show();
    settle();
    auto* tabs = widget<QTabBar>(c.ConfigTab);
    ASSERT_NE(tabs, nullptr);
    EXPECT_EQ(tabs->tabText(0), QStringLiteral("&General"));
    EXPECT_EQ(tabs->tabText(3), QStringLiteral("Device &1"));
    EXPECT_EQ(tabs->tabText(5), QStringLiteral("&Filter Grps"));
    EXPECT_EQ(tabs->tabText(7), QStringLiteral("Multi &Radio"));
    const QString shots = qEnvironmentVariable("TOLVANE_SCREENSHOTS");
    // The tabs that no other picture shows: the other devices' pages and the filter groups.
    const char* pictures[8] = {nullptr, nullptr, nullptr, "device1", "device2", "filtergroups", nullptr, nullptr};
    const char* devices[3] = {"Tuner", "Amplifier", "Rotator"};
    auto stored = [&](const char* section, const QString& key) {
        st.loop.runPosted();
        return st.stored(QString::fromLatin1(section), key);
    };
    // Typed over the whole text.
    auto type = [&](TextBox& box, const char* text) {
        auto* e = widget<QLineEdit>(box);
        ASSERT_NE(e, nullptr);
        e->setFocus();
        box.setSelStart(0);
        box.setSelLength(int(box.text().size()));
        QTest::keyClicks(e, QString::fromLatin1(text));
    };
    auto shoot = [&](int t) {
        if (!shots.isEmpty() && pictures[t])
            windows->window(QStringLiteral("KavConfig"))
                ->grab()
                .save(shots + QStringLiteral("/config-%1.png").arg(QString::fromLatin1(pictures[t])));
    };
    for (int t = 0; t < 8; ++t) {
        tabs->setCurrentIndex(t);
        settle();
        ASSERT_EQ(c.ConfigTab.tab(), t);
        switch (t) {
            case 0:
                widget<QAbstractButton>(c.UserCommandsEnableBox)->click();
                EXPECT_EQ(stored("General", QStringLiteral("UserCommandsEnabled")), QStringLiteral("T"));
                break;
            case 1:
                widget<QAbstractButton>(c.Speed[2])->click();
                EXPECT_EQ(stored("General", QStringLiteral("CommSpeed")), QStringLiteral("9600"));
                break;
            case 2:
            case 3:
            case 4:
                type(c.DeviceName[t - 2], devices[t - 2]);
                st.m().hooks.SaveDevices();
                EXPECT_EQ(stored("Devices", QStringLiteral("DeviceName%1").arg(t - 2)), QString::fromLatin1(devices[t - 2]));
                EXPECT_EQ(tabs->tabText(t).remove(QLatin1Char('&')), QString::fromLatin1(devices[t - 2]));
                break;
            case 5: {
                shoot(t);  // the defaults, as a newcomer meets them
                auto* grid = widget<QTableView>(c.YaesuFilterGroupGrid);
                ASSERT_NE(grid, nullptr);
                EXPECT_EQ(grid->model()->headerData(2, Qt::Horizontal).toString(), QStringLiteral("2nd IF"));
                ASSERT_TRUE(grid->model()->setData(grid->model()->index(1, 0), QStringLiteral("Ragchew")));
                settle();
                widget<QAbstractButton>(c.SaveGroupCmd)->click();
                QFile f(st.configDir + QStringLiteral("/FilterGroupSettings.txt"));
                ASSERT_TRUE(f.open(QIODevice::ReadOnly));
                EXPECT_TRUE(f.readAll().contains("\nRagchew,CW,2.4k,2.4k,2.4k\n"));
                break;
            }
            case 6:
                type(c.BankToolTip[2], "Contest");
                EXPECT_EQ(stored("Memory", QStringLiteral("MemoryBankContents2")), QStringLiteral("Contest"));
                break;
            case 7:
                type(c.MultiName[0], "Shack");
                st.m().hooks.SaveMultiSettings();
                EXPECT_EQ(stored("MultiXCVR", QStringLiteral("MultiName0")), QStringLiteral("Shack"));
                break;
        }
        if (t != 5) shoot(t);
    }
    // Loggers: what is typed is stored, the API key in a box that shows dots.
    tabs->setCurrentIndex(c.tabIndex(QStringLiteral("Loggers")));
    settle();
    type(c.WebLoggerUrl, "https://log.example.org/");
    type(c.WebLoggerKey, "wl0123456789abcdef");
    EXPECT_EQ(widget<QLineEdit>(c.WebLoggerKey)->echoMode(), QLineEdit::Password);
    EXPECT_EQ(stored("Loggers", QStringLiteral("WebLoggerKey")), QStringLiteral("wl0123456789abcdef"));
    EXPECT_EQ(stored("Loggers", QStringLiteral("WebLoggerUrl")), QStringLiteral("https://log.example.org/"));
    // The servers' tab, as the servers read their settings; a switch and a field are stored at once.
    tabs->setCurrentIndex(c.networkTab());
    settle();
    EXPECT_EQ(tabs->tabText(c.networkTab()).remove(QLatin1Char('&')), QStringLiteral("Network"));
    EXPECT_EQ(c.XmlRpcPort.text(), QStringLiteral("12345"));
    widget<QAbstractButton>(c.NetServerUnkeyOthersCheck)->click();
    EXPECT_EQ(stored("General", QStringLiteral("NetServerUnkeyOthers")), QStringLiteral("True"));
    type(c.NetServerAllowedClients, "192.168.1.0/24");
    EXPECT_EQ(stored("General", QStringLiteral("NetServerAllowedClients")), QStringLiteral("192.168.1.0/24"));
    // Closing the window hides it; the program and the fields stay.
    windows->window(QStringLiteral("KavConfig"))->close();
    EXPECT_FALSE(c.visible());
    EXPECT_FALSE(st.p().unloaded());
    EXPECT_EQ(c.MultiName[0].text(), QStringLiteral("Shack"));
}

// A notice that comes again while it is up is counted into the box on screen, not stacked as another
// modal loop inside it; a question is always asked.
TEST(QtBoxes, ARepeatedNoticeIsCountedIntoTheBoxAlreadyUp) {
    QtDialogs dialogs;
    int repeatsSeen = 0;
    QString info;
    QTimer::singleShot(0, [&] {
        for (int i = 0; i < 1000; ++i)
            EXPECT_EQ(dialogs.messageBox(QStringLiteral("transceiver command buffer overflow"), QStringLiteral("Tolvane")),
                      MsgAnswer::Ok);
        repeatsSeen = dialogs.repeatsOf(QStringLiteral("transceiver command buffer overflow"), QStringLiteral("Tolvane"));
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            info = box->informativeText();
            box->accept();
        }
    });
    EXPECT_EQ(dialogs.messageBox(QStringLiteral("transceiver command buffer overflow"), QStringLiteral("Tolvane")),
              MsgAnswer::Ok);
    EXPECT_EQ(repeatsSeen, 1000);
    EXPECT_EQ(info, QStringLiteral("(1001 times)"));
    EXPECT_EQ(dialogs.repeatsOf(QStringLiteral("transceiver command buffer overflow"), QStringLiteral("Tolvane")), 0);
}

}  // namespace
}  // namespace tv::test
