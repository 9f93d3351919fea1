#pragma once
// A real serial device (a USB adapter, a built-in port, a pseudo-terminal) through QSerialPort.

#include "platform/SerialDevice.h"

#include <memory>

class QSerialPort;

namespace tv {

class QtSerialDevice : public SerialDevice {
public:
    QtSerialDevice();
    ~QtSerialDevice() override;

    bool open(const QString& path, const SerialSettings& settings, int* errorNumber, QString* errorText) override;
    void close() override;
    bool isOpen() const override;
    QString path() const override { return path_; }
    void write(const QByteArray& bytes) override;
    QByteArray readAll() override;
    qint64 bytesAvailable() const override;
    bool setDtr(bool on) override;
    bool setRts(bool on) override;
    bool setRtsCtsFlowControl(bool on) override;

private:
    // At most this long does a close wait for written bytes to leave (a few frames at 1200 baud).
    static constexpr int kDrainOnCloseMs = 500;
    void onError(int error);
    bool setLine(bool dtr, bool on);
    // True when the open descriptor no longer answers as a terminal: the device was hung up.
    bool deviceGone() const;

    std::unique_ptr<QSerialPort> port_;
    QString path_;
    // While the port is being opened or configured, or a modem line set, an error is the answer of that
    // call (a pty's "unsupported" for DTR, a bad speed), not a fault of the link.
    bool quiet_ = false;
};

}  // namespace tv
