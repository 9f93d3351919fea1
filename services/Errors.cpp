#include "services/Errors.h"

#include <cstdio>
#include <map>

namespace tv {

QString ErrorText(int number) {
    static const std::map<int, const char*> texts = {
        {kErrInvalidCall, "Invalid procedure call or argument"},
        {kErrOverflow, "Overflow"},
        {kErrOutOfMemory, "Out of memory"},
        {kErrSubscript, "Subscript out of range"},
        {kErrDivisionByZero, "Division by zero"},
        {kErrTypeMismatch, "Type mismatch"},
        {kErrBadFileName, "Bad file name or number"},
        {kErrFileNotFound, "File not found"},
        {kErrFileAlreadyOpen, "File already open"},
        {kErrDeviceIO, "Device I/O error"},
        {kErrDiskFull, "Disk full"},
        {kErrInputPastEnd, "Input past end of file"},
        {kErrPermissionDenied, "Permission denied"},
        {kErrPathFileAccess, "Path/File access error"},
        {kErrPathNotFound, "Path not found"},
        {kErrObjectNotSet, "Object variable or With block variable not set"},
        {kErrInvalidPropertyValue, "Invalid property value"},
        {kErrInternal, "Automation error"},
        {kErrPortInvalid, "Invalid port number"},
        {kErrPortAlreadyOpen, "Port already open"},
        {kErrPortFailed, "Could not set comm state"},
    };
    const auto it = texts.find(number);
    return it == texts.end() ? QStringLiteral("Application-defined or object-defined error")
                             : QString::fromLatin1(it->second);
}

TvError::TvError(int number, QString detail) : number_(number), detail_(detail) {
    description_ = ErrorText(number);
    if (!detail.isEmpty()) description_ += QStringLiteral(": ") + detail;
    what_ = description_.toStdString();
}

namespace {
ErrorReporter& reporter() {
    static ErrorReporter r;
    return r;
}
}  // namespace

void setErrorReporter(ErrorReporter r) { reporter() = std::move(r); }

void reportGuardedError(int number, const QString& label, const QString& description) {
    if (reporter()) {
        reporter()(number, label, description);
        return;
    }
    // Before the log exists (or after it is gone) a failure still leaves a trace.
    std::fprintf(stderr, "program error %d in module %s: %s\n", number, label.toLocal8Bit().constData(),
                 description.toLocal8Bit().constData());
}

}  // namespace tv
