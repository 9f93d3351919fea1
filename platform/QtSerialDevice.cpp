#include "platform/QtSerialDevice.h"

#include <QFileInfo>
#include <QSerialPort>
#include <QSerialPortInfo>

#include <cerrno>

namespace tv {

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
    if (port_->isOpen()) port_->close();
    path_ = path;
    // A symlink (/dev/serial/by-id/...) is followed, so QSerialPort finds the device and its lock.
    const QFileInfo fi(path);
    port_->setPortName(fi.isSymLink() ? fi.canonicalFilePath() : path);
    auto fail = [&](int number, const QString& text) {
        if (errorNumber) *errorNumber = number;
        if (errorText) *errorText = text;
        return false;
    };
    if (!QFileInfo::exists(path)) return fail(kSerialPortNotFound, QStringLiteral("no such device: ") + path);
    if (!port_->open(QIODevice::ReadWrite)) {
        const auto e = port_->error();
        const QString text = port_->errorString();
        port_->clearError();
        if (e == QSerialPort::DeviceNotFoundError) return fail(kSerialPortNotFound, text);
        // Another program holds the device: it is busy, or its lock file is taken.
        if (text.contains(QLatin1String("busy"), Qt::CaseInsensitive) ||
            text.contains(QLatin1String("lock"), Qt::CaseInsensitive))
            return fail(kSerialPortAlreadyOpen, text);
        return fail(kSerialOpenFailed, text);
    }
    const auto parity = s.parity == 'O'   ? QSerialPort::OddParity
                        : s.parity == 'E' ? QSerialPort::EvenParity
                        : s.parity == 'M' ? QSerialPort::MarkParity
                        : s.parity == 'S' ? QSerialPort::SpaceParity
                                          : QSerialPort::NoParity;
    const auto bits = s.dataBits == 5   ? QSerialPort::Data5
                      : s.dataBits == 6 ? QSerialPort::Data6
                      : s.dataBits == 7 ? QSerialPort::Data7
                                        : QSerialPort::Data8;
    const bool ok = port_->setBaudRate(s.baud) && port_->setParity(parity) && port_->setDataBits(bits) &&
                    port_->setStopBits(s.stopBits == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop) &&
                    port_->setFlowControl(QSerialPort::NoFlowControl);
    if (!ok) {
        const QString text = port_->errorString();
        port_->clearError();
        port_->close();
        return fail(kSerialOpenFailed, text);
    }
    port_->clear();
    return true;
}

void QtSerialDevice::close() {
    if (port_->isOpen()) port_->close();
}

bool QtSerialDevice::isOpen() const { return port_->isOpen(); }

void QtSerialDevice::write(const QByteArray& bytes) {
    if (port_->isOpen()) port_->write(bytes);
}

QByteArray QtSerialDevice::readAll() { return port_->isOpen() ? port_->readAll() : QByteArray(); }

qint64 QtSerialDevice::bytesAvailable() const { return port_->isOpen() ? port_->bytesAvailable() : 0; }

bool QtSerialDevice::setLine(bool dtr, bool on) {
    if (!port_->isOpen()) return true;
    settingLine_ = true;
    const bool ok = dtr ? port_->setDataTerminalReady(on) : port_->setRequestToSend(on);
    settingLine_ = false;
    if (!ok) port_->clearError();
    return ok;
}

bool QtSerialDevice::setDtr(bool on) { return setLine(true, on); }

bool QtSerialDevice::setRts(bool on) {
    // With hardware flow control the driver owns RTS.
    if (port_->flowControl() == QSerialPort::HardwareControl) return true;
    return setLine(false, on);
}

bool QtSerialDevice::setRtsCtsFlowControl(bool on) {
    if (!port_->isOpen()) return true;
    settingLine_ = true;
    const bool ok = port_->setFlowControl(on ? QSerialPort::HardwareControl : QSerialPort::NoFlowControl);
    settingLine_ = false;
    if (!ok) port_->clearError();
    return ok;
}

void QtSerialDevice::onError(int error) {
    const auto e = QSerialPort::SerialPortError(error);
    if (e == QSerialPort::NoError) return;
    if (settingLine_) return;  // answered through the setter's result
    const QString text = port_->errorString();
    SerialFault fault = SerialFault::Other;
    switch (e) {
        case QSerialPort::ResourceError:
            // The device is gone (an unplugged adapter): stop reading from it at once.
            fault = SerialFault::DeviceRemoved;
            break;
        case QSerialPort::WriteError: fault = SerialFault::TxFull; break;
        case QSerialPort::ReadError: fault = SerialFault::Overrun; break;
        case QSerialPort::TimeoutError: return;  // only from waitFor...(), which this program doesn't use
        case QSerialPort::OpenError:
        case QSerialPort::DeviceNotFoundError:
        case QSerialPort::PermissionError: return;  // reported by open()
        default: break;
    }
    port_->clearError();
    if (fault == SerialFault::DeviceRemoved && port_->isOpen()) port_->close();
    if (onFault) onFault(fault, text);
}

QStringList presentSerialDevices() {
    QStringList out;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) out << info.systemLocation();
    out.sort();
    return out;
}

}  // namespace tv
