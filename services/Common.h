#pragma once
// Common services: the error log and its banner, error reports, debug lines, window positions,
// the tooltip table, help pages, and small helpers on lists and texts.

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace tv {

class ComboBox;
class Dialogs;
class EventLoop;
class Form;
class SettingsStore;

struct AppInfo {
    QString title = QStringLiteral("Tolvane");
    int major = 0, minor = 0, revision = 0;
    QString appPath;  // folder of data files (Radios.txt, SMeter/, Help/)
    QString exeName;  // the executable's file name
    QString logDir;   // writable folder of ErrorLog.txt
    QString version() const { return QStringLiteral("%1.%2.%3").arg(major).arg(minor).arg(revision); }
};

class Common {
public:
    Common(EventLoop& loop, SettingsStore& settings, Dialogs& dialogs, AppInfo info);
    // Withdraws the guard's reporter if it is still this one's.
    ~Common();
    Common(const Common&) = delete;
    Common& operator=(const Common&) = delete;

    // Start: start time, OS name and build, screen sizes, DualMonitor, ErrorLogPathname, month names;
    // from here on Guard() failures are reported through ReportError.
    void Initialize();
    // End: the title and " shutdown" in the log, when the log was in use.
    void Terminate();

    const AppInfo& info() const { return info_; }
    EventLoop& loop() const { return loop_; }
    SettingsStore& settings() const { return settings_; }
    Dialogs& dialogs() const { return dialogs_; }

    // ---- log ----
    // Past this size ErrorLog.txt is started afresh (with the banner) and the one before is kept as
    // ErrorLog.1.txt, so that a long-running station's log can't fill its disk.
    static constexpr qint64 kLogLimitBytes = 1024 * 1024;
    QString ErrorLogPathname() const { return errorLogPathname_; }
    QString OldErrorLogPathname() const;
    // Appends "dd-mmm-yyyy hh:nn:ss > text" (UTC) to ErrorLog.txt, opened and closed each time; the first
    // line of a run comes after the banner.
    void LogLine(const QString& text);
    void DebugLog(const QString& text);
    // "program error N in module LABEL: standard text"; shows nothing.
    void ReportError(int number, const QString& label, const QString& description = {});
    void SetDebug(bool on);
    bool DebugEnabled() const { return debug_; }
    bool logInUse() const { return logInUse_; }
    // Told once, when the first line reaches the log.
    std::function<void()> onLogStarted;
    // Told after each failure report (the caption then points at the log).
    std::function<void()> onErrorReported;
    // Lines are also echoed here (the headless program writes them to standard output); the banner
    // only once, whether or not the file could take it.
    std::function<void(const QString&)> echo;
    // Told once in a run, the first time the log can't be written; without a listener it goes to
    // standard error.
    std::function<void(const QString&)> onLogUnwritable;
    // A name for the month, 1 to 12: "Jan" ... "Dec".
    QString monthName(int month) const;
    QDateTime startTime() const { return startTime_; }

    // ---- system ----
    QString GetOSName() const;
    QString GetOSVersion() const;
    QString GetOSBuild() const;

    // ---- window positions ----
    void setScreenSize(int width, int height);
    int screenWidth() const { return screenW_; }
    int screenHeight() const { return screenH_; }
    bool dualMonitor() const { return dualMonitor_; }
    void setDualMonitor(bool on);
    int ReasonableLeft(int left) const;
    int ReasonableTop(int top) const;
    int ReasonableWidth(int width) const;
    int ReasonableHeight(int height) const;
    void RestoreWindowPosition(Form& window);
    void SaveWindowPosition(Form& window);

    // ---- tooltips ----
    void registerForm(Form* form);
    // Builds the table from the tooltips as designed, then applies ShowToolTips. Returns whether shown.
    bool InitializeTooltips();
    void SaveTooltips();
    void SaveTooltipSetting(bool show);
    void TooltipsOff();
    void TooltipsOn();

    // ---- help ----
    void SetBrowserPathname(const QString& path) { browserPathname_ = path; }
    QString BrowserPathname() const { return browserPathname_; }
    void InvokeHelp(const QString& file);
    bool RunShellExecute(const QString& verb, const QString& file, const QString& parameters,
                         const QString& folder, int show);

private:
    // Appends the line to the log in one open and close, after the banner when this file doesn't have
    // it yet, starting a new file when it is full; false when the file can't take it.
    bool appendToLog(const QString& line);
    bool logUnwritable(const QString& why);
    QStringList banner() const;
    QString stamp(const QDateTime& utc) const;

    EventLoop& loop_;
    SettingsStore& settings_;
    Dialogs& dialogs_;
    AppInfo info_;
    QString errorLogPathname_;
    QDateTime startTime_;
    bool debug_ = false;
    bool logInUse_ = false;
    bool bannerEchoed_ = false;
    bool fileHasBanner_ = false;
    bool unwritableTold_ = false;
    bool dualMonitor_ = false;
    int screenW_ = 1920, screenH_ = 1080;
    int defaultWidth_ = 1920, defaultHeight_ = 1080;
    QString browserPathname_;
    QStringList months_;
    std::vector<Form*> forms_;
    std::map<QString, QString> tooltipTable_;  // "Form.Control(i)" -> tooltip as designed
};

// True when the left-trimmed text is not empty, holds only digits, '-', '+' and the decimal
// separator, and at least one digit. The sign's position isn't checked.
bool IsReal(const QString& text, QChar decimalSeparator);
bool IsReal(const QString& text);  // with the user's locale
// Selects the entry equal to text, without regard to case (raising the list's Click if it changes).
// Returns whether one was found.
bool SetCombo(ComboBox& list, const QString& text);
// Position of the entry equal to text, without regard to case; -1 when absent.
int SearchCombo(const ComboBox& list, const QString& text);

namespace UTC {
QDateTime CurrentTime(const EventLoop& loop);
}  // namespace UTC

namespace LocaleInfo {
QString GetLocaleLanguage();
QString GetLocaleCountry();
QChar GetLocaleDecimalSeparator();
}  // namespace LocaleInfo

}  // namespace tv
