#pragma once
// Typed errors with a number and a standard text, and the one guard that turns any exception in a
// procedure into a report under the procedure's label. No exception crosses a procedure boundary.

#include <QString>

#include <exception>
#include <functional>

namespace tv {

// Error numbers the program raises and reports (the usual runtime numbering).
enum ErrorNumber : int {
    kErrInvalidCall = 5,
    kErrOverflow = 6,
    kErrOutOfMemory = 7,
    kErrSubscript = 9,
    kErrDivisionByZero = 11,
    kErrTypeMismatch = 13,
    kErrBadFileName = 52,
    kErrFileNotFound = 53,
    kErrFileAlreadyOpen = 55,
    kErrDeviceIO = 57,
    kErrDiskFull = 61,
    kErrInputPastEnd = 62,
    kErrPermissionDenied = 70,
    kErrPathFileAccess = 75,
    kErrPathNotFound = 76,
    kErrObjectNotSet = 91,
    kErrInvalidPropertyValue = 380,
    kErrInternal = 440,  // an unexpected failure inside the program (a std::exception)
    kErrPortInvalid = 8002,
    kErrPortAlreadyOpen = 8005,
    kErrPortFailed = 8015,
};

// The standard text of an error number ("Subscript out of range" for 9); "Application-defined or
// object-defined error" for a number without one.
QString ErrorText(int number);

class TvError : public std::exception {
public:
    explicit TvError(int number, QString detail = {});
    int number() const { return number_; }
    // The standard text, with the detail behind it when there is one.
    const QString& description() const { return description_; }
    // What the thrower said of the case, without the standard text ("" when nothing).
    const QString& detail() const { return detail_; }
    const char* what() const noexcept override { return what_.c_str(); }

private:
    int number_;
    QString description_;
    QString detail_;
    std::string what_;
};

// Where guarded failures go: set once by the common services (ReportError).
using ErrorReporter = std::function<void(int number, const QString& label, const QString& description)>;
void setErrorReporter(ErrorReporter r);
void reportGuardedError(int number, const QString& label, const QString& description);

// Runs body; an exception becomes a report under label and the call returns normally.
// Returns true when the body completed.
template <class F>
bool Guard(const char* label, F&& body) {
    try {
        body();
        return true;
    } catch (const TvError& e) {
        reportGuardedError(e.number(), QString::fromLatin1(label), e.description());
    } catch (const std::bad_alloc&) {
        reportGuardedError(kErrOutOfMemory, QString::fromLatin1(label), ErrorText(kErrOutOfMemory));
    } catch (const std::exception& e) {
        reportGuardedError(kErrInternal, QString::fromLatin1(label),
                           ErrorText(kErrInternal) + QStringLiteral(": ") + QString::fromLocal8Bit(e.what()));
    } catch (...) {
        reportGuardedError(kErrInternal, QString::fromLatin1(label), ErrorText(kErrInternal));
    }
    return false;
}

}  // namespace tv
