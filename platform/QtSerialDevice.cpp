#include "platform/QtSerialDevice.h"

#include <QFile>
#include <QFileInfo>
#include <QSerialPort>

#include <termios.h>
#include <unistd.h>

namespace tv {
namespace {

// Sets a flag for the length of a call, and puts back what was there (calls nest: open sets the lines).
class QuietScope {
public:
    explicit QuietScope(bool& flag) : flag_(flag), before_(flag) { flag_ = true; }
    ~QuietScope() { flag_ = before_; }
    QuietScope(const QuietScope&) = delete;
    QuietScope& operator=(const QuietScope&) = delete;

private:
    bool& flag_;
    bool before_;
};

QSerialPort::Parity toParity(char p) {
    switch (p) {
        case 'O': return QSerialPort::OddParity;
        case 'E': return QSerialPort::EvenParity;
        case 'M': return QSerialPort::MarkParity;
        case 'S': return QSerialPort::SpaceParity;
        default: return QSerialPort::NoParity;
    }
}

QSerialPort::DataBits toDataBits(int bits) {
    switch (bits) {
        case 5: return QSerialPort::Data5;
        case 6: return QSerialPort::Data6;
        case 7: return QSerialPort::Data7;
        default: return QSerialPort::Data8;
    }
}

}  // namespace

QtSerialDevice::QtSerialDevice() : port_(std::make_unique<QSerialPort>()) {
    QObject::connect(port_.get(), &QSerialPort::readyRead, port_.get(), [this] {
        if (onBytesArrived) onBytesArrived();
    });
    QObject::connect(port_.get(), &QSerialPort::errorOccurred, port_.get(),
                     [this](QSerialPort::SerialPortError e) { onError(int(e)); });
}

QtSerialDevice::~QtSerialDevice() {
    port_->disconnect();
    if (port_->isOpen()) port_->close();
}

bool QtSerialDevice::open(const QString& path, const SerialSettings& s, int* errorNumber, QString* errorText) {
    QuietScope quiet(quiet_);
    if (port_->isOpen()) port_->close();
    port_->clearError();
    path_ = path;
    lastOpenFailure = SerialOpenFailure::Other;
    auto fail = [&](int number, const QString& text) {
        if (errorNumber) *errorNumber = number;
        if (errorText) *errorText = text;
        return false;
    };
    const QFileInfo fi(path);
    if (path.isEmpty() || !fi.exists()) return fail(kSerialPortNotFound, QStringLiteral("no such device: ") + path);
    // A symlink (/dev/serial/by-id/...) is followed, so that the lock taken is the device's own.
    const QString device = fi.isSymLink() ? fi.canonicalFilePath() : path;
    port_->setPortName(device);
    if (!port_->open(QIODevice::ReadWrite)) {
        const auto e = port_->error();
        const QString text = port_->errorString();
        port_->clearError();
        if (e == QSerialPort::DeviceNotFoundError) return fail(kSerialPortNotFound, text);
        // A permission failure on a device we may read and write is another program's hold on it: its
        // lock file, or the exclusive mode it set. Asked of the file system, not read from Qt's
        // (translatable) message.
        if (e == QSerialPort::PermissionError) {
            if (::access(QFile::encodeName(device).constData(), R_OK | W_OK) == 0)
                return fail(kSerialPortAlreadyOpen, text);
            lastOpenFailure = SerialOpenFailure::PermissionDenied;
        }
        return fail(kSerialOpenFailed, text);
    }
    const bool ok = port_->setBaudRate(s.baud) && port_->setParity(toParity(s.parity)) &&
                    port_->setDataBits(toDataBits(s.dataBits)) &&
                    port_->setStopBits(s.stopBits == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop) &&
                    port_->setFlowControl(QSerialPort::NoFlowControl);
    if (!ok) {
        const QString text = port_->errorString();
        port_->clearError();
        port_->close();
        return fail(kSerialOpenFailed, text);
    }
    // Whatever the device held from before is not an answer to anything this program sent.
    port_->clear();
    return true;
}

void QtSerialDevice::close() {
    // What was written last (the receive command at shutdown) must reach the radio, not die in a buffer:
    // a short, bounded wait for it to leave.
    if (port_->isOpen() && port_->bytesToWrite() > 0) port_->waitForBytesWritten(kDrainOnCloseMs);
    if (port_->isOpen()) port_->close();
}

bool QtSerialDevice::isOpen() const { return port_->isOpen(); }

void QtSerialDevice::write(const QByteArray& bytes) {
    if (!port_->isOpen() || bytes.isEmpty()) return;
    // A poll is a few bytes the line takes at once: with nothing queued before them they go out now,
    // not through the write notifier (a loop pass and two wake-ups each). What the line can't take
    // yet, or a failure, goes the port's own way, which queues it or reports the error.
    qint64 sent = 0;
    if (port_->bytesToWrite() == 0) {
        const ssize_t n = ::write(port_->handle(), bytes.constData(), size_t(bytes.size()));
        if (n > 0) sent = n;
    }
    if (sent < bytes.size()) port_->write(bytes.constData() + sent, bytes.size() - sent);
}

QByteArray QtSerialDevice::readAll() {
    // The port reads the line into its buffer as bytes arrive; an empty buffer is nothing to read
    // (and reading it would still allocate a block for the attempt).
    return port_->isOpen() && port_->bytesAvailable() > 0 ? port_->readAll() : QByteArray();
}

qint64 QtSerialDevice::bytesAvailable() const { return port_->isOpen() ? port_->bytesAvailable() : 0; }

bool QtSerialDevice::setLine(bool dtr, bool on) {
    if (!port_->isOpen()) return true;
    QuietScope quiet(quiet_);
    const bool ok = dtr ? port_->setDataTerminalReady(on) : port_->setRequestToSend(on);
    if (!ok) port_->clearError();
    return ok;
}

bool QtSerialDevice::setDtr(bool on) { return setLine(true, on); }

bool QtSerialDevice::setRts(bool on) {
    // With hardware flow control the driver owns RTS.
    if (port_->isOpen() && port_->flowControl() == QSerialPort::HardwareControl) return true;
    return setLine(false, on);
}

bool QtSerialDevice::setRtsCtsFlowControl(bool on) {
    if (!port_->isOpen()) return true;
    QuietScope quiet(quiet_);
    const bool ok = port_->setFlowControl(on ? QSerialPort::HardwareControl : QSerialPort::NoFlowControl);
    if (!ok) port_->clearError();
    return ok;
}

bool QtSerialDevice::deviceGone() const {
    if (!port_->isOpen()) return false;
    termios t{};
    return ::tcgetattr(int(port_->handle()), &t) != 0;
}

void QtSerialDevice::onError(int error) {
    const auto e = QSerialPort::SerialPortError(error);
    if (e == QSerialPort::NoError || quiet_) return;
    SerialFault fault = SerialFault::Other;
    switch (e) {
        case QSerialPort::ResourceError: fault = SerialFault::DeviceRemoved; break;
        case QSerialPort::ReadError:
        case QSerialPort::WriteError:
        case QSerialPort::UnknownError:
            // A hung-up terminal (an unplugged adapter, a pty whose far side closed) first shows as a read
            // that returns nothing, again and again while the port stays open: ask the device itself.
            if (deviceGone()) fault = SerialFault::DeviceRemoved;
            break;
        case QSerialPort::TimeoutError:  // only from waitFor...(), which this program doesn't use
        case QSerialPort::NotOpenError:  // a call on a closed port: nothing happened on the line
        case QSerialPort::OpenError:
        case QSerialPort::DeviceNotFoundError:
        case QSerialPort::PermissionError: return;  // told by open()
        default: break;  // Qt 6 no longer tells parity, framing and break apart: the text says what it was
    }
    // For a vanished device the library's text is whatever errno held last ("File exists" after a pty's
    // far end closed): the operator is told what happened instead.
    const QString text = fault == SerialFault::DeviceRemoved
                             ? QStringLiteral("%1 was unplugged or hung up").arg(path_)
                             : port_->errorString();
    port_->clearError();
    // Closed before anyone hears of it, so that a handler sees the state it must deal with and the
    // dead descriptor can't raise the same error again.
    if (fault == SerialFault::DeviceRemoved && port_->isOpen()) port_->close();
    if (onFault) onFault(fault, text);
}

}  // namespace tv
