// The common services: the log and its banner, error reports through the one guard, window positions
// that stay reachable, the tooltip table, help pages, and the small text and list helpers.

#include "forms/Controls.h"
#include "forms/Form.h"
#include "platform/Dialogs.h"
#include "platform/SettingsStore.h"
#include "platform/SimEventLoop.h"
#include "services/Common.h"
#include "services/Convert.h"
#include "services/Errors.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

class Services : public ::testing::Test {
protected:
    Services()
        : store(dir.filePath(QStringLiteral("Tolvane.ini")), nullptr),
          common(loop, store, dialogs, info()) {}
    AppInfo info() {
        AppInfo i;
        i.major = 1;
        i.minor = 2;
        i.revision = 3;
        i.appPath = dir.path();
        i.exeName = QStringLiteral("tolvane");
        i.logDir = dir.path();
        return i;
    }
    QString log() const {
        QFile f(dir.filePath(QStringLiteral("ErrorLog.txt")));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }
    QTemporaryDir dir;
    SimEventLoop loop{QDateTime(QDate(2026, 3, 7), QTime(21, 5, 9), Qt::UTC)};
    ScriptedDialogs dialogs;
    SettingsStore store;
    Common common;
};

TEST_F(Services, BannerComesOnceBeforeTheFirstLineAndDebugLinesOnlyWithDebugOn) {
    common.Initialize();
    common.DebugLog(QStringLiteral("not written"));
    EXPECT_FALSE(QFile::exists(common.ErrorLogPathname()));  // nothing written, not even the banner
    int started = 0;
    common.onLogStarted = [&] { ++started; };
    loop.advance(61000);
    common.LogLine(QStringLiteral("first"));
    common.LogLine(QStringLiteral("second"));
    common.SetDebug(true);
    common.DebugLog(QStringLiteral("debugging"));
    const QStringList lines = log().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 9);
    // The banner carries the start time; each line its own UTC time, with English month names.
    EXPECT_EQ(lines[0], QStringLiteral("07-Mar-2026 21:05:09 > Tolvane version 1.2.3"));
    EXPECT_TRUE(lines[1].endsWith(QStringLiteral("> App.Path        : ") + dir.path()));
    EXPECT_TRUE(lines[2].endsWith(QStringLiteral("> App.exe         : tolvane")));
    EXPECT_TRUE(lines[3].contains(QStringLiteral("> Operating System: ")));
    EXPECT_TRUE(lines[3].contains(QStringLiteral(" build ")));
    EXPECT_TRUE(lines[4].contains(QStringLiteral("> Country         : ")));
    EXPECT_TRUE(lines[5].contains(QStringLiteral("> Language        : ")));
    EXPECT_EQ(lines[6], QStringLiteral("07-Mar-2026 21:06:10 > first"));
    EXPECT_EQ(lines[8], QStringLiteral("07-Mar-2026 21:06:10 > debugging"));
    EXPECT_EQ(started, 1);
    EXPECT_FALSE(log().contains(QStringLiteral("not written")));
    common.Terminate();
    EXPECT_TRUE(log().endsWith(QStringLiteral("> Tolvane shutdown\n")));
}

TEST_F(Services, ControlCharactersFromOutsideCannotForgeALogLine) {
    common.Initialize();
    common.LogLine(QStringLiteral("cmd a\n07-Mar-2026 21:05:09 > forged\r\x1b[2Jz\tq"));
    const QStringList lines = log().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_FALSE(lines.isEmpty());
    EXPECT_TRUE(lines.last().endsWith(QStringLiteral("> cmd a\\n07-Mar-2026 21:05:09 > forged\\r\\x1b[2Jz\\tq")))
        << lines.last().toStdString();
    EXPECT_FALSE(log().contains(QLatin1Char('\r')));
}

TEST_F(Services, GuardTurnsAnyExceptionIntoOneReportAndReturns) {
    common.Initialize();  // from here on guarded failures reach the log
    bool after = false;
    EXPECT_FALSE(Guard("KavModule.SetXcvrFreq", [] { CheckSubscript(300, 1, 256); }));
    EXPECT_FALSE(Guard("KavModule.LoadThing", [] { throw std::runtime_error("disk on fire"); }));
    EXPECT_TRUE(Guard("KavModule.Fine", [&] { after = true; }));
    EXPECT_TRUE(after);
    EXPECT_TRUE(log().contains(QStringLiteral("> program error 9 in module KavModule.SetXcvrFreq: Subscript out of range")));
    EXPECT_TRUE(log().contains(QStringLiteral("> program error 440 in module KavModule.LoadThing: Automation error: disk on fire")));
    {
        // A Common that is gone must not stay behind as the reporter.
        Common other(loop, store, dialogs, info());
        other.Initialize();
    }
    EXPECT_FALSE(Guard("KavModule.AfterOther", [] { throw TvError(kErrDivisionByZero); }));
    EXPECT_FALSE(log().contains(QStringLiteral("AfterOther")));
    common.ReportError(76, QStringLiteral("Common.X"));
    EXPECT_TRUE(log().contains(QStringLiteral("program error 76 in module Common.X: Path not found")));
    EXPECT_EQ(ErrorText(31337), QStringLiteral("Application-defined or object-defined error"));
}

TEST_F(Services, AnUnwritableLogFailsNothingAndTheConsoleStillHearsIt) {
    // A folder that isn't there, and a disk that is full (the write fails only when the bytes leave).
    QDir(dir.path()).mkdir(QStringLiteral("full"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), dir.filePath(QStringLiteral("full/ErrorLog.txt"))));
    for (const char* folder : {"no/such/folder", "full"}) {
        AppInfo i = info();
        i.logDir = dir.filePath(QLatin1String(folder));
        Common lost(loop, store, dialogs, i);
        lost.Initialize();
        int started = 0, echoed = 0;
        QStringList told;
        lost.onLogStarted = [&] { ++started; };
        lost.echo = [&](const QString&) { ++echoed; };
        lost.onLogUnwritable = [&](const QString& why) { told << why; };
        lost.ReportError(53, QStringLiteral("KavModule.LoadRadioInfo"));
        lost.LogLine(QStringLiteral("second"));
        EXPECT_FALSE(lost.logInUse()) << folder;
        EXPECT_EQ(started, 0) << folder;
        EXPECT_EQ(echoed, 8) << folder;  // the banner once and both lines, on standard output when headless
        ASSERT_EQ(told.size(), 1) << folder;
        EXPECT_TRUE(told[0].startsWith(QStringLiteral("cannot write the log ") + lost.ErrorLogPathname())) << folder;
    }
}

TEST_F(Services, AFullLogStartsAfreshWithItsBannerAndKeepsOneOldFile) {
    common.Initialize();
    const QByteArray filler(Common::kLogLimitBytes - 100, 'x');
    for (const QString& path : {common.ErrorLogPathname(), common.OldErrorLogPathname()}) {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(path == common.ErrorLogPathname() ? filler : QByteArray("oldest\n"));
    }
    common.LogLine(QStringLiteral("one"));  // the banner and a line would pass the limit
    common.LogLine(QStringLiteral("two"));
    QFile old(common.OldErrorLogPathname());
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_TRUE(old.readAll() == filler);  // the full file, the oldest gone
    const QStringList lines = log().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 8);
    EXPECT_TRUE(lines[0].endsWith(QStringLiteral("> Tolvane version 1.2.3")));
    EXPECT_TRUE(lines[6].endsWith(QStringLiteral("> one")));
    EXPECT_TRUE(lines[7].endsWith(QStringLiteral("> two")));
}

TEST_F(Services, WindowPositionsStayReachableUnlessTwoMonitorsAreInUse) {
    common.setScreenSize(1000, 800);
    common.Initialize();
    Form sizable(loop, QStringLiteral("KavMessages"), QString(), 2);
    Form fixed(loop, QStringLiteral("KavMain"), QString(), 1);
    fixed.setWidth(640);
    fixed.setHeight(420);
    const QString W = QStringLiteral("Windows");
    store.SaveSetting(W, QStringLiteral("KavMessagesLeft"), QStringLiteral("951"));  // beyond 95 %
    store.SaveSetting(W, QStringLiteral("KavMessagesTop"), QStringLiteral("-20"));
    store.SaveSetting(W, QStringLiteral("KavMessagesWidth"), QStringLiteral("1101"));  // beyond 110 %
    store.SaveSetting(W, QStringLiteral("KavMessagesHeight"), QStringLiteral("300"));
    store.SaveSetting(W, QStringLiteral("KavMessagesWindowState"), QStringLiteral("2"));
    store.SaveSetting(W, QStringLiteral("KavMainLeft"), QStringLiteral("-1500"));
    store.SaveSetting(W, QStringLiteral("KavMainWidth"), QStringLiteral("300"));
    common.RestoreWindowPosition(sizable);
    EXPECT_EQ(sizable.left(), 0);
    EXPECT_EQ(sizable.top(), 0);
    EXPECT_EQ(sizable.width(), 500);  // half the screen-derived default
    EXPECT_EQ(sizable.height(), 300);
    EXPECT_EQ(sizable.windowState(), 2);  // written WindowState, read as Windowstate: one key
    common.RestoreWindowPosition(fixed);
    EXPECT_EQ(fixed.left(), 0);
    EXPECT_EQ(fixed.width(), 640);  // a fixed border keeps its designed size

    common.setDualMonitor(true);
    common.RestoreWindowPosition(fixed);
    EXPECT_EQ(fixed.left(), -1500);  // on the second monitor, to the left
    EXPECT_EQ(store.GetSetting(W, QStringLiteral("DualMonitor"), QString()), QStringLiteral("True"));

    fixed.setTop(77);
    common.SaveWindowPosition(fixed);
    EXPECT_EQ(store.GetSetting(W, QStringLiteral("KavMainTop"), QString()), QStringLiteral("77"));
    EXPECT_EQ(store.GetSetting(W, QStringLiteral("KavMainWindowstate"), QString()), QStringLiteral("0"));
}

TEST_F(Services, TooltipsGoAndComeBackFromTheTableAsDesigned) {
    Form f(loop, QStringLiteral("KavConfig"), QString());
    CheckBox box(&f, QStringLiteral("DebugCheck"));
    box.setToolTip(QStringLiteral("Check to record diagnostic information in errorlog.txt"));
    CommandButton b0(&f, QStringLiteral("Speed"), 1), b1(&f, QStringLiteral("Speed"), 2);
    b0.setToolTip(QStringLiteral("Select 19200 Baud"));
    b1.setToolTip(QStringLiteral("Select 9600 Baud"));
    common.registerForm(&f);
    store.SaveSetting(QStringLiteral("General"), QStringLiteral("ShowToolTips"), QStringLiteral("False"));
    EXPECT_FALSE(common.InitializeTooltips());
    EXPECT_TRUE(box.toolTip().isEmpty());
    box.setToolTip(QStringLiteral("changed at run time"));
    common.TooltipsOn();
    EXPECT_EQ(box.toolTip(), QStringLiteral("Check to record diagnostic information in errorlog.txt"));
    EXPECT_EQ(b1.toolTip(), QStringLiteral("Select 9600 Baud"));  // array members keep their own
    common.SaveTooltipSetting(true);
    EXPECT_EQ(store.GetSetting(QStringLiteral("General"), QStringLiteral("ShowToolTips"), QString()),
              QStringLiteral("True"));
}

TEST_F(Services, HelpOpensTheWholePathOrSaysWhichFileIsMissing) {
    common.Initialize();
    common.InvokeHelp(QStringLiteral("Configuration.htm"));
    ASSERT_EQ(dialogs.shown.size(), 1u);
    EXPECT_EQ(dialogs.shown[0].text,
              QStringLiteral("missing help file: ") + dir.path() + QStringLiteral("/Help/Configuration.htm"));
    EXPECT_EQ(dialogs.shown[0].title, QStringLiteral("Tolvane"));

    QDir(dir.path()).mkpath(QStringLiteral("Help"));
    QFile page(dir.filePath(QStringLiteral("Help/Changing Mode.htm")));
    ASSERT_TRUE(page.open(QIODevice::WriteOnly));
    page.close();
    dialogs.shown.clear();
    common.InvokeHelp(QStringLiteral("Changing Mode.htm"));
    ASSERT_EQ(dialogs.shown.size(), 1u);
    EXPECT_EQ(dialogs.shown[0].kind, QStringLiteral("default"));
    EXPECT_TRUE(dialogs.shown[0].text.endsWith(QStringLiteral("/Help/Changing Mode.htm")));

    common.SetBrowserPathname(QStringLiteral("/usr/bin/firefox"));
    dialogs.shown.clear();
    common.InvokeHelp(QStringLiteral("Changing Mode.htm"));
    ASSERT_EQ(dialogs.shown.size(), 1u);
    EXPECT_EQ(dialogs.shown[0].kind, QStringLiteral("program"));
    EXPECT_TRUE(dialogs.shown[0].text.startsWith(QStringLiteral("/usr/bin/firefox")));
    EXPECT_TRUE(dialogs.shown[0].text.endsWith(QStringLiteral("/Help/Changing Mode.htm")));
}

TEST(ServiceHelpers, IsRealChecksCharactersNotSyntax) {
    const QChar dot = QLatin1Char('.'), comma = QLatin1Char(',');
    EXPECT_FALSE(IsReal(QString(), dot));
    EXPECT_FALSE(IsReal(QStringLiteral("   "), dot));
    EXPECT_FALSE(IsReal(QStringLiteral("+"), dot));
    EXPECT_FALSE(IsReal(QStringLiteral("."), dot));
    EXPECT_TRUE(IsReal(QStringLiteral("  14025.5"), dot));
    EXPECT_TRUE(IsReal(QStringLiteral("1-2"), dot));  // the sign's place isn't checked
    EXPECT_FALSE(IsReal(QStringLiteral("14025,5"), dot));
    EXPECT_TRUE(IsReal(QStringLiteral("14025,5"), comma));
    EXPECT_FALSE(IsReal(QStringLiteral("14025.5 "), dot));  // only leading blanks are dropped
    EXPECT_FALSE(IsReal(QStringLiteral("1e5"), dot));
    // Without a separator given, the program's locale decides.
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const bool germanComma = IsReal(QStringLiteral("14025,5"));
    const bool germanDot = IsReal(QStringLiteral("14025.5"));
    QLocale::setDefault(before);
    EXPECT_TRUE(germanComma);
    EXPECT_FALSE(germanDot);
}

TEST(ServiceHelpers, ListsTextsAndDates) {
    SimEventLoop loop;
    Form f(loop, QStringLiteral("F"), QString());
    ComboBox list(&f, QStringLiteral("RadioCombo"));
    int clicks = 0;
    list.Click = [&] { ++clicks; };
    for (const char* s : {"IC-756PRO", "TS-2000", "FT817"}) list.AddItem(QString::fromLatin1(s));
    EXPECT_EQ(SearchCombo(list, QStringLiteral("ts-2000")), 1);
    EXPECT_EQ(SearchCombo(list, QStringLiteral("TS-20")), -1);
    EXPECT_TRUE(SetCombo(list, QStringLiteral("ft817")));
    EXPECT_EQ(list.text(), QStringLiteral("FT817"));
    EXPECT_TRUE(SetCombo(list, QStringLiteral("FT817")));
    EXPECT_EQ(clicks, 1);  // selecting the selected entry again raises nothing
    EXPECT_FALSE(SetCombo(list, QStringLiteral("IC-9999")));
    EXPECT_EQ(list.listIndex(), 2);

    loop.advance(1500);
    EXPECT_EQ(UTC::CurrentTime(loop).time().msec(), 0);
}

TEST(ServiceHelpers, ConversionsFollowTheRuntimeRules) {
    EXPECT_EQ(Val(QStringLiteral(" 12abc")), 12);
    EXPECT_EQ(Val(QStringLiteral("-3.5e2")), -350);
    EXPECT_EQ(Val(QStringLiteral("&H1F")), 31);
    EXPECT_EQ(Val(QStringLiteral("abc")), 0);
    EXPECT_EQ(Val(QStringLiteral("7e")), 7);
    EXPECT_EQ(CInt(2.5), 2);  // half to even
    EXPECT_EQ(CInt(3.5), 4);
    EXPECT_EQ(CInt(-2.5), -2);
    EXPECT_EQ(CLng(QStringLiteral(" 60000 ")), 60000);
    try {
        CInt(QStringLiteral("fast"));
        ADD_FAILURE() << "no error";
    } catch (const TvError& e) {
        EXPECT_EQ(e.number(), kErrTypeMismatch);
    }
    try {
        CInt(40000.0);
        ADD_FAILURE() << "no error";
    } catch (const TvError& e) {
        EXPECT_EQ(e.number(), kErrOverflow);
    }
}

}  // namespace
}  // namespace tv
