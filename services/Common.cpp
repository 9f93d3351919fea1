#include "services/Common.h"

#include "forms/Controls.h"
#include "forms/Form.h"
#include "platform/Dialogs.h"
#include "platform/EventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Errors.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSysInfo>

#include <algorithm>
#include <cstdio>

namespace tv {

namespace {
const QString kWindows = QStringLiteral("Windows");
const QString kGeneral = QStringLiteral("General");

bool isTrueText(const QString& v) {
    const QString t = v.trimmed();
    return t.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0 ||
           t.compare(QLatin1String("T"), Qt::CaseInsensitive) == 0 || t == QLatin1String("1");
}

// A stored number, or the default when the text isn't one.
int storedInt(const SettingsStore& s, const QString& key, int def) {
    bool ok = false;
    const int v = s.GetSetting(kWindows, key, QString::number(def)).trimmed().toInt(&ok);
    return ok ? v : def;
}
}  // namespace

Common::Common(EventLoop& loop, SettingsStore& settings, Dialogs& dialogs, AppInfo info)
    : loop_(loop), settings_(settings), dialogs_(dialogs), info_(std::move(info)) {
    months_ = {QStringLiteral("Jan"), QStringLiteral("Feb"), QStringLiteral("Mar"), QStringLiteral("Apr"),
               QStringLiteral("May"), QStringLiteral("Jun"), QStringLiteral("Jul"), QStringLiteral("Aug"),
               QStringLiteral("Sep"), QStringLiteral("Oct"), QStringLiteral("Nov"), QStringLiteral("Dec")};
}

namespace {
// The Common whose ReportError receives Guard() failures, so that only it withdraws them.
const Common* reporterOwner = nullptr;
}  // namespace

Common::~Common() {
    if (reporterOwner == this) {
        setErrorReporter({});
        reporterOwner = nullptr;
    }
}

void Common::Initialize() {
    startTime_ = UTC::CurrentTime(loop_);
    defaultWidth_ = screenW_;
    defaultHeight_ = screenH_;
    dualMonitor_ = isTrueText(settings_.GetSetting(kWindows, QStringLiteral("DualMonitor"), QStringLiteral("False")));
    errorLogPathname_ = QDir(info_.logDir).filePath(QStringLiteral("ErrorLog.txt"));
    browserPathname_.clear();
    setErrorReporter([this](int number, const QString& label, const QString& description) {
        ReportError(number, label, description);
    });
    reporterOwner = this;
    // A salvaged settings file is said once, where the operator looks: lost settings must not be a
    // silent surprise. The store writes back what it could read, so the next start is quiet.
    const QString problem = settings_.loadProblem();
    if (!problem.isEmpty()) {
        const QString text = QStringLiteral("Settings: ") + problem + QStringLiteral("; the file as it was is kept as ") +
                             settings_.corruptCopyPath();
        LogLine(text);
        dialogs_.messageBox(text, info_.title);
    }
}

void Common::Terminate() {
    if (logInUse_) LogLine(info_.title + QStringLiteral(" shutdown"));
}

QString Common::monthName(int month) const {
    return month >= 1 && month <= 12 ? months_[month - 1] : QString();
}

QString Common::stamp(const QDateTime& utc) const {
    // The month is written in English whatever the locale, so that logs read the same everywhere.
    const QDate d = utc.date();
    const QTime t = utc.time();
    return QStringLiteral("%1-%2-%3 %4")
        .arg(d.day(), 2, 10, QLatin1Char('0'))
        .arg(monthName(d.month()))
        .arg(d.year(), 4, 10, QLatin1Char('0'))
        .arg(t.toString(QStringLiteral("hh:mm:ss")));
}

QString Common::OldErrorLogPathname() const {
    return errorLogPathname_.isEmpty() ? QString() : QDir(info_.logDir).filePath(QStringLiteral("ErrorLog.1.txt"));
}

QStringList Common::banner() const {
    const QString s = stamp(startTime_.isValid() ? startTime_ : UTC::CurrentTime(loop_)) + QStringLiteral(" > ");
    QStringList lines{info_.title + QStringLiteral(" version ") + info_.version(),
                      QStringLiteral("App.Path        : ") + info_.appPath,
                      QStringLiteral("App.exe         : ") + info_.exeName,
                      QStringLiteral("Operating System: ") + GetOSName() + QStringLiteral(" build ") + GetOSBuild(),
                      QStringLiteral("Country         : ") + LocaleInfo::GetLocaleCountry(),
                      QStringLiteral("Language        : ") + LocaleInfo::GetLocaleLanguage()};
    for (QString& b : lines) b.prepend(s);
    return lines;
}

bool Common::logUnwritable(const QString& why) {
    // Said once: a log that can't be written would otherwise say so with every line it can't take.
    if (!unwritableTold_) {
        unwritableTold_ = true;
        const QString text = QStringLiteral("cannot write the log %1: %2").arg(errorLogPathname_, why);
        if (onLogUnwritable) {
            onLogUnwritable(text);
        } else {
            std::fprintf(stderr, "%s: %s\n", info_.title.toLower().toLocal8Bit().constData(),
                         text.toLocal8Bit().constData());
            std::fflush(stderr);
        }
    }
    return false;
}

bool Common::appendToLog(const QString& line) {
    if (errorLogPathname_.isEmpty()) return false;
    QFile f(errorLogPathname_);
    // Opened and closed for every call: a crash loses nothing that was logged.
    if (!f.open(QIODevice::WriteOnly | QIODevice::Append)) return logUnwritable(f.errorString());
    auto text = [&] {
        const QByteArray b = line.toUtf8() + '\n';
        return fileHasBanner_ ? b : banner().join(QLatin1Char('\n')).toUtf8() + '\n' + b;
    };
    QByteArray bytes = text();
    if (f.size() > 0 && f.size() + bytes.size() > kLogLimitBytes) {
        f.close();
        QFile::remove(OldErrorLogPathname());
        // If the full file can't be moved aside, it grows on rather than losing lines.
        if (QFile::rename(errorLogPathname_, OldErrorLogPathname())) fileHasBanner_ = false;
        if (!f.open(QIODevice::WriteOnly | QIODevice::Append)) return logUnwritable(f.errorString());
        bytes = text();
    }
    // A full disk shows only when the bytes leave the buffer.
    if (f.write(bytes) != bytes.size() || !f.flush()) return logUnwritable(f.errorString());
    f.close();
    fileHasBanner_ = true;
    return true;
}

namespace {
// Text from outside (a client's command, a file's line) may carry a newline: written as it stands it
// would start a line of its own, stamped as the program's. Control characters go in as escapes.
QString escapeControls(const QString& text) {
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (u == '\n')
            out += QLatin1String("\\n");
        else if (u == '\r')
            out += QLatin1String("\\r");
        else if (u == '\t')
            out += QLatin1String("\\t");
        else if (u < 0x20 || u == 0x7f || u == 0x85 || u == 0x2028 || u == 0x2029)
            out += QStringLiteral("\\x%1").arg(int(u), u > 0xff ? 4 : 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out;
}
}  // namespace

void Common::LogLine(const QString& text) {
    const QString line = stamp(UTC::CurrentTime(loop_)) + QStringLiteral(" > ") + escapeControls(text);
    // The console still hears what the file couldn't take.
    if (echo) {
        if (!bannerEchoed_)
            for (const QString& b : banner()) echo(b);
        bannerEchoed_ = true;
        echo(line);
    }
    // A log that can't be written is no reason to fail, nor to claim a log exists.
    if (!appendToLog(line)) return;
    if (!logInUse_) {
        logInUse_ = true;
        if (onLogStarted) onLogStarted();
    }
}

void Common::DebugLog(const QString& text) {
    if (debug_) LogLine(text);
}

void Common::ReportError(int number, const QString& label, const QString& description) {
    LogLine(QStringLiteral("program error %1 in module %2: %3")
                .arg(number)
                .arg(label, description.isEmpty() ? ErrorText(number) : description));
    if (onErrorReported) onErrorReported();
}

void Common::SetDebug(bool on) { debug_ = on; }

QString Common::GetOSName() const {
    const QString name = QSysInfo::prettyProductName();
    return name.isEmpty() ? QStringLiteral("unknown") : name;
}

QString Common::GetOSVersion() const { return QSysInfo::productVersion(); }

QString Common::GetOSBuild() const { return QSysInfo::kernelVersion(); }

// ---- window positions ----

void Common::setScreenSize(int width, int height) {
    if (width > 0) screenW_ = width;
    if (height > 0) screenH_ = height;
}

void Common::setDualMonitor(bool on) {
    dualMonitor_ = on;
    settings_.SaveSetting(kWindows, QStringLiteral("DualMonitor"), on ? QStringLiteral("True") : QStringLiteral("False"));
}

int Common::ReasonableLeft(int left) const {
    if (dualMonitor_) return left;
    return left >= 0 && left <= 0.95 * screenW_ ? left : 0;
}

int Common::ReasonableTop(int top) const {
    if (dualMonitor_) return top;
    return top >= 0 && top <= 0.95 * screenH_ ? top : 0;
}

int Common::ReasonableWidth(int width) const {
    return width >= 0 && width <= 1.1 * screenW_ ? width : defaultWidth_ / 2;
}

int Common::ReasonableHeight(int height) const {
    return height >= 0 && height <= 1.1 * screenH_ ? height : defaultHeight_ / 2;
}

void Common::RestoreWindowPosition(Form& window) {
    Guard("Common.RestoreWindowPosition", [&] {
        const QString n = window.name();
        window.setLeft(ReasonableLeft(storedInt(settings_, n + QStringLiteral("Left"), window.left())));
        window.setTop(ReasonableTop(storedInt(settings_, n + QStringLiteral("Top"), window.top())));
        if (window.resizable()) {
            window.setWidth(ReasonableWidth(storedInt(settings_, n + QStringLiteral("Width"), window.width())));
            window.setHeight(ReasonableHeight(storedInt(settings_, n + QStringLiteral("Height"), window.height())));
        }
        int state = storedInt(settings_, n + QStringLiteral("Windowstate"), window.windowState());
        if (state < Form::Normal || state > Form::Maximized) state = Form::Normal;
        window.setWindowState(state);
    });
}

void Common::SaveWindowPosition(Form& window) {
    Guard("Common.SaveWindowPosition", [&] {
        const QString n = window.name();
        settings_.SaveSetting(kWindows, n + QStringLiteral("WindowState"), QString::number(window.windowState()));
        settings_.SaveSetting(kWindows, n + QStringLiteral("Left"), QString::number(window.left()));
        settings_.SaveSetting(kWindows, n + QStringLiteral("Top"), QString::number(window.top()));
        settings_.SaveSetting(kWindows, n + QStringLiteral("Height"), QString::number(window.height()));
        settings_.SaveSetting(kWindows, n + QStringLiteral("Width"), QString::number(window.width()));
    });
}

// ---- tooltips ----

void Common::registerForm(Form* form) {
    if (form && std::find(forms_.begin(), forms_.end(), form) == forms_.end()) forms_.push_back(form);
}

void Common::SaveTooltips() {
    tooltipTable_.clear();
    for (Form* f : forms_)
        for (Control* c : f->controls()) tooltipTable_[f->name() + QLatin1Char('.') + c->fullName()] = c->toolTip();
}

bool Common::InitializeTooltips() {
    SaveTooltips();
    const bool show = isTrueText(settings_.GetSetting(kGeneral, QStringLiteral("ShowToolTips"), QStringLiteral("True")));
    if (!show) TooltipsOff();
    return show;
}

void Common::SaveTooltipSetting(bool show) {
    settings_.SaveSetting(kGeneral, QStringLiteral("ShowToolTips"), show ? QStringLiteral("True") : QStringLiteral("False"));
}

void Common::TooltipsOff() {
    for (Form* f : forms_)
        for (Control* c : f->controls()) c->setToolTip(QString());
}

void Common::TooltipsOn() {
    for (Form* f : forms_)
        for (Control* c : f->controls()) {
            const auto it = tooltipTable_.find(f->name() + QLatin1Char('.') + c->fullName());
            if (it != tooltipTable_.end()) c->setToolTip(it->second);
        }
}

// ---- help ----

void Common::InvokeHelp(const QString& file) {
    Guard("Common.InvokeHelp", [&] {
        const QString path = QDir(info_.appPath).filePath(QStringLiteral("Help/") + file);
        if (!QFileInfo::exists(path)) {
            dialogs_.messageBox(QStringLiteral("missing help file: ") + path, info_.title);
            return;
        }
        if (!browserPathname_.isEmpty()) {
            if (!dialogs_.startProgram(browserPathname_, {path}))
                dialogs_.messageBox(QStringLiteral("unable to start the browser ") + browserPathname_ +
                                        QStringLiteral(" to show ") + path,
                                    info_.title);
            return;
        }
        RunShellExecute(QStringLiteral("Open"), path, QString(), QString(), 1);
    });
}

bool Common::RunShellExecute(const QString& /*verb*/, const QString& file, const QString& /*parameters*/,
                             const QString& /*folder*/, int /*show*/) {
    if (dialogs_.openWithDefault(file)) return true;
    // Nothing on this desktop opens the file: say so, and where it is, so the operator can open it by hand.
    dialogs_.messageBox(QStringLiteral("no program is set up on this computer to open ") + file +
                            QStringLiteral("; choose a browser in the configuration window"),
                        info_.title);
    return false;
}

// ---- helpers ----

bool IsReal(const QString& text, QChar decimalSeparator) {
    int i = 0;
    while (i < text.size() && text[i].isSpace()) ++i;
    if (i == text.size()) return false;
    bool digit = false;
    for (; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c >= QLatin1Char('0') && c <= QLatin1Char('9'))
            digit = true;
        else if (c != QLatin1Char('-') && c != QLatin1Char('+') && c != decimalSeparator)
            return false;
    }
    return digit;
}

bool IsReal(const QString& text) {
    // The program's locale, which follows the user's unless the program chose another.
    const QString p = QLocale().decimalPoint();
    return IsReal(text, p.isEmpty() ? QLatin1Char('.') : p.at(0));
}

int SearchCombo(const ComboBox& list, const QString& text) {
    for (int i = 0; i < list.ListCount(); ++i)
        if (list.List(i).compare(text, Qt::CaseInsensitive) == 0) return i;
    return -1;
}

bool SetCombo(ComboBox& list, const QString& text) {
    const int i = SearchCombo(list, text);
    if (i < 0) return false;
    list.setListIndex(i);
    return true;
}

namespace UTC {
QDateTime CurrentTime(const EventLoop& loop) {
    QDateTime t = loop.utcNow().toUTC();
    t.setTime(QTime(t.time().hour(), t.time().minute(), t.time().second()));
    return t;
}
}  // namespace UTC

namespace LocaleInfo {
QString GetLocaleLanguage() { return QLocale::languageToString(QLocale::system().language()); }
QString GetLocaleCountry() { return QLocale::territoryToString(QLocale::system().territory()); }
QChar GetLocaleDecimalSeparator() {
    const QString p = QLocale::system().decimalPoint();
    return p.isEmpty() ? QLatin1Char('.') : p.at(0);
}
}  // namespace LocaleInfo

}  // namespace tv
