// The simulated loop that every timing test stands on, and the settings store that must never lose
// or garble a setting.

#include "platform/FakeSerialDevice.h"
#include "platform/SettingsStore.h"
#include "platform/SimEventLoop.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

TEST(SimLoop, TimersFireInDeadlineOrderWithPostedWorkFirst) {
    SimEventLoop loop;
    std::vector<QString> order;
    auto a = loop.createTimer(), b = loop.createTimer();
    a->setInterval(300);
    b->setInterval(200);
    a->onTick = [&] {
        order.push_back(QStringLiteral("a@%1").arg(loop.monotonicMs()));
        a->setEnabled(false);
    };
    b->onTick = [&] {
        order.push_back(QStringLiteral("b@%1").arg(loop.monotonicMs()));
        loop.post([&] { order.push_back(QStringLiteral("posted@%1").arg(loop.monotonicMs())); });
    };
    a->setEnabled(true);
    b->setEnabled(true);
    loop.advance(450);
    EXPECT_EQ(order, (std::vector<QString>{QStringLiteral("b@200"), QStringLiteral("posted@200"),
                                           QStringLiteral("a@300"), QStringLiteral("b@400"),
                                           QStringLiteral("posted@400")}));
    EXPECT_EQ(loop.nextDueIn(), 150);
    // A new interval on a running timer restarts its count.
    loop.advance(100);  // t = 550
    b->setInterval(1000);
    EXPECT_EQ(loop.nextDueIn(), 1000);
}

TEST(SimLoop, YieldInsideAHandlerLetsDueTimersAndPostedWorkRun) {
    SimEventLoop loop;
    auto slow = loop.createTimer(), fast = loop.createTimer();
    int fastTicks = 0;
    bool insideSlow = false, fastRanInside = false;
    fast->setInterval(10);
    fast->onTick = [&] {
        ++fastTicks;
        fastRanInside = fastRanInside || insideSlow;
    };
    slow->setInterval(10);
    slow->onTick = [&] {
        insideSlow = true;
        loop.yield();
        insideSlow = false;
        slow->setEnabled(false);
    };
    slow->setEnabled(true);
    fast->setEnabled(true);
    loop.advance(10);
    EXPECT_TRUE(fastRanInside);
    EXPECT_EQ(fastTicks, 1);
}

TEST(SimLoop, OnlyAFreshEnableOrANewIntervalRestartsTheCountAndZeroNeverTicks) {
    SimEventLoop loop;
    auto t = loop.createTimer();
    int ticks = 0;
    t->onTick = [&] { ++ticks; };
    t->setInterval(200);
    t->setEnabled(true);
    loop.advance(150);
    t->setEnabled(true);  // "make sure it runs" must not postpone the tick
    loop.advance(50);
    EXPECT_EQ(ticks, 1);
    loop.advance(150);  // t = 350
    t->setEnabled(false);
    t->setEnabled(true);
    loop.advance(199);
    EXPECT_EQ(ticks, 1);
    loop.advance(1);
    EXPECT_EQ(ticks, 2);

    t->setInterval(0);
    EXPECT_TRUE(t->enabled());
    EXPECT_EQ(loop.nextDueIn(), -1);
    loop.advance(10000);
    EXPECT_EQ(ticks, 2);
    t->setInterval(1);
    loop.advance(3);
    EXPECT_EQ(ticks, 5);
}

class Store : public ::testing::Test {
protected:
    QString path() const { return dir.filePath(QStringLiteral("Tolvane.ini")); }
    QString fileText() const {
        QFile f(path());
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }
    QTemporaryDir dir;
    SimEventLoop loop;
};

TEST_F(Store, KeysIgnoreCaseEveryReadHasItsDefaultAndWritesReachTheDiskWithinATurn) {
    SettingsStore s(path(), &loop);
    EXPECT_EQ(s.GetSetting(QStringLiteral("General"), QStringLiteral("CommSpeed"), QStringLiteral("9600")),
              QStringLiteral("9600"));
    s.SaveSetting(QStringLiteral("Windows"), QStringLiteral("KavMainWindowState"), QStringLiteral("2"));
    s.SaveSetting(QStringLiteral("WINDOWS"), QStringLiteral("kavmainwindowstate"), QStringLiteral("1"));
    EXPECT_EQ(s.GetSetting(QStringLiteral("windows"), QStringLiteral("KavMainWindowstate"), QString()),
              QStringLiteral("1"));
    EXPECT_TRUE(s.dirty());
    EXPECT_FALSE(QFile::exists(path()));  // gathered, not yet written
    loop.runPosted();
    EXPECT_FALSE(s.dirty());
    const QString text = fileText();
    EXPECT_TRUE(text.contains(QStringLiteral("[Windows]")));  // the first spelling is kept
    EXPECT_TRUE(text.contains(QStringLiteral("KavMainWindowState=1")));
    EXPECT_EQ(text.count(QStringLiteral("indowState")), 1);
    // No temporary file is left beside it.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("Tolvane.ini")});
}

TEST_F(Store, TemporariesLeftByAnInterruptedSaveGoAtTheNextStart) {
    auto touch = [&](const QString& name, int ageSeconds) {
        QFile f(dir.filePath(name));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("[General]\n");
        f.flush();
        f.setFileTime(QDateTime::currentDateTimeUtc().addSecs(-ageSeconds), QFileDevice::FileModificationTime);
    };
    touch(QStringLiteral("Tolvane.ini.aB3xZ9"), 3600);
    touch(QStringLiteral("Tolvane.ini.Qw7pL2"), 0);   // another instance may be saving right now
    touch(QStringLiteral("Tolvane.ini.keep"), 3600);  // not a temporary's name
    SettingsStore s(path(), &loop);
    QStringList left = QDir(dir.path()).entryList(QDir::Files);
    left.sort();
    EXPECT_EQ(left, QStringList({QStringLiteral("Tolvane.ini.Qw7pL2"), QStringLiteral("Tolvane.ini.keep")}));
}

TEST_F(Store, AwkwardValuesSurviveARoundTrip) {
    const QStringList values = {QStringLiteral("a=b;c"), QStringLiteral("  leading and trailing  "),
                                QStringLiteral("two\nlines\r\n"), QStringLiteral("back\\slash\\n"),
                                QStringLiteral("Grüße 73 ✓"), QStringLiteral("[not a section]"),
                                QStringLiteral("'PS1;"), QStringLiteral("\"quoted\""), QStringLiteral("\""),
                                QStringLiteral(" \"both\" "), QString()};
    {
        SettingsStore s(path(), nullptr);
        for (int i = 0; i < values.size(); ++i)
            s.SaveSetting(QStringLiteral("Memory"), QStringLiteral("Note%1").arg(i), values[i]);
        s.SaveSetting(QStringLiteral("Memory"), QStringLiteral("=odd key"), QStringLiteral("x"));
    }
    SettingsStore back(path(), nullptr);
    EXPECT_TRUE(back.loadProblem().isEmpty()) << back.loadProblem().toStdString();
    for (int i = 0; i < values.size(); ++i)
        EXPECT_EQ(back.GetSetting(QStringLiteral("Memory"), QStringLiteral("Note%1").arg(i), QStringLiteral("<none>")),
                  values[i])
            << i;
    EXPECT_TRUE(back.contains(QStringLiteral("memory"), QStringLiteral("NOTE10")));
}

TEST_F(Store, GarbageIsSkippedTheRestKeptAndTheOriginalSavedBeside) {
    {
        QFile f(path());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("junk before any section\n[General]\nRadio=IC-756PRO\n\x01\x02\xff\n[Bands\nCommPort=3\n"
                "no equals sign\n[Windows]\nKavMainLeft=10\n");
    }
    SettingsStore s(path(), &loop);
    EXPECT_FALSE(s.loadProblem().isEmpty());
    EXPECT_TRUE(s.dirty());  // written back at the next flush, even when nothing else changes
    EXPECT_EQ(s.GetSetting(QStringLiteral("General"), QStringLiteral("Radio"), QString()), QStringLiteral("IC-756PRO"));
    EXPECT_EQ(s.GetSetting(QStringLiteral("Windows"), QStringLiteral("KavMainLeft"), QString()), QStringLiteral("10"));
    s.SaveSetting(QStringLiteral("General"), QStringLiteral("Debug"), QStringLiteral("1"));
    loop.runPosted();
    EXPECT_TRUE(QFile::exists(path() + QStringLiteral(".corrupt")));
    SettingsStore again(path(), nullptr);
    EXPECT_TRUE(again.loadProblem().isEmpty());
    EXPECT_EQ(again.GetSetting(QStringLiteral("General"), QStringLiteral("Debug"), QString()), QStringLiteral("1"));
}

TEST_F(Store, AFailedWriteIsToldAndNothingIsLost) {
    // A folder that can't be made, even with every right: its parent is a plain file.
    const QString blocker = dir.filePath(QStringLiteral("cfg"));
    {
        QFile f(blocker);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    }
    SettingsStore s(blocker + QStringLiteral("/Tolvane.ini"), &loop);
    QStringList failures;
    s.onWriteFailure = [&](const QString& why) { failures << why; };
    s.SaveSetting(QStringLiteral("General"), QStringLiteral("Radio"), QStringLiteral("TS-2000"));
    loop.runPosted();
    s.SaveSetting(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("2"));
    loop.runPosted();
    EXPECT_EQ(failures.size(), 1);  // once, not with every change that can't go out
    EXPECT_TRUE(s.dirty());
    EXPECT_EQ(s.GetSetting(QStringLiteral("General"), QStringLiteral("Radio"), QString()), QStringLiteral("TS-2000"));
    // Once the way is clear the pending change goes out.
    ASSERT_TRUE(QFile::remove(blocker));
    EXPECT_TRUE(s.flush());
    SettingsStore back(blocker + QStringLiteral("/Tolvane.ini"), nullptr);
    EXPECT_EQ(back.GetSetting(QStringLiteral("General"), QStringLiteral("Radio"), QString()), QStringLiteral("TS-2000"));
}

TEST_F(Store, HandEditedQuotesBlanksAndABlankSectionReadAsMeantAndSurviveARewrite) {
    {
        QFile f(path());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("[ ]\nOrphan=kept\n"
                "[General]\nRadio = \"IC-7300\"\nInitialXcvrCommand=\"'PS1;\"\nNote= \"  two blanks  \" \n"
                "Said=\"say \\\"hi\\\"\"\nCommPort = 3 \nHalf=\"open\nEmpty=\"\"\n");
    }
    const std::vector<std::pair<const char*, const char*>> expected = {
        {"Radio", "IC-7300"}, {"InitialXcvrCommand", "'PS1;"}, {"Note", "  two blanks  "},
        {"Said", "say \"hi\""}, {"CommPort", "3"},          {"Half", "\"open"}, {"Empty", ""}};
    const QString g = QStringLiteral("General");
    {
        SettingsStore s(path(), &loop);
        EXPECT_TRUE(s.loadProblem().isEmpty()) << s.loadProblem().toStdString();
        EXPECT_EQ(s.GetSetting(QString(), QStringLiteral("orphan"), {}), QStringLiteral("kept"));
        for (const auto& [key, value] : expected)
            EXPECT_EQ(s.GetSetting(g, QLatin1String(key), QStringLiteral("<none>")), QLatin1String(value)) << key;
        s.SaveSetting(g, QStringLiteral("Debug"), QStringLiteral("1"));
        loop.runPosted();
    }
    // Written by the program and read again: nothing moved, nothing taken for garbage.
    SettingsStore back(path(), nullptr);
    EXPECT_TRUE(back.loadProblem().isEmpty()) << back.loadProblem().toStdString() << "\n" << fileText().toStdString();
    EXPECT_EQ(back.GetSetting(QString(), QStringLiteral("Orphan"), {}), QStringLiteral("kept"));
    for (const auto& [key, value] : expected)
        EXPECT_EQ(back.GetSetting(g, QLatin1String(key), QStringLiteral("<none>")), QLatin1String(value)) << key;
}

TEST_F(Store, AnEditorsByteOrderMarkDoesNotHideTheFirstSection) {
    {
        QFile f(path());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("\xEF\xBB\xBF[General]\r\nCommPort=3\r\n");
    }
    SettingsStore s(path(), nullptr);
    EXPECT_TRUE(s.loadProblem().isEmpty()) << s.loadProblem().toStdString();
    EXPECT_EQ(s.GetSetting(QStringLiteral("general"), QStringLiteral("commport"), QString()), QStringLiteral("3"));
}

TEST(FakeSerial, AnInProcessRadioAnswersOnTheLoopAndAnUnplugOrCloseEndsTheLink) {
    SimEventLoop loop;
    FakeSerialDevice dev(loop);
    dev.onWrite = [&](const QByteArray& b) {
        if (b == "ID;") dev.feed("ID019;");
    };
    QByteArray heard;
    dev.onBytesArrived = [&] { heard += dev.readAll(); };
    std::vector<SerialFault> faults;
    dev.onFault = [&](SerialFault f, const QString&) { faults.push_back(f); };

    dev.failOpenWith = kSerialPortAlreadyOpen;
    int n = 0;
    QString t;
    EXPECT_FALSE(dev.open(QStringLiteral("/dev/ttyUSB0"), SerialSettings{}, &n, &t));
    EXPECT_EQ(n, int(kSerialPortAlreadyOpen));
    EXPECT_FALSE(dev.isOpen());
    dev.failOpenWith = 0;
    SerialSettings s;
    s.baud = 4800;
    ASSERT_TRUE(dev.open(QStringLiteral("/dev/ttyUSB0"), s, &n, &t));
    EXPECT_EQ(dev.lastSettings.baud, 4800);
    EXPECT_EQ(dev.openCount, 1);

    dev.write("ID;");
    EXPECT_TRUE(heard.isEmpty());  // not inside the caller: on the loop, as real input
    loop.runPosted();
    EXPECT_EQ(heard, QByteArray("ID019;"));
    dev.modemLinesSupported = false;
    EXPECT_FALSE(dev.setDtr(true));
    EXPECT_FALSE(dev.dtr);

    dev.feed("FA;");
    dev.unplug();
    loop.runPosted();
    EXPECT_EQ(faults, std::vector<SerialFault>{SerialFault::DeviceRemoved});
    EXPECT_FALSE(dev.isOpen());
    EXPECT_EQ(heard, QByteArray("ID019;"));  // what was in flight went with the device
    EXPECT_EQ(dev.written, QByteArray("ID;"));

    // So does what arrived just before a close, and a closed device takes no writes.
    ASSERT_TRUE(dev.open(QStringLiteral("/dev/pts/9"), SerialSettings{}, &n, &t));
    dev.feed("IF;");
    dev.close();
    loop.runPosted();
    EXPECT_EQ(heard, QByteArray("ID019;"));
    dev.write("lost");
    EXPECT_EQ(dev.written, QByteArray("ID;"));
}

}  // namespace
}  // namespace tv
