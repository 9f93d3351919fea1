#pragma once
// An in-memory serial device for tests: records what is written and the line states, and delivers
// bytes "from the radio" through the loop, as a real port would.

#include "platform/SerialDevice.h"

#include <memory>

namespace tv {

class EventLoop;

class FakeSerialDevice : public SerialDevice {
public:
    explicit FakeSerialDevice(EventLoop& loop);
    ~FakeSerialDevice() override;

    bool open(const QString& path, const SerialSettings& settings, int* errorNumber, QString* errorText) override;
    void close() override;
    bool isOpen() const override { return open_; }
    QString path() const override { return path_; }
    void write(const QByteArray& bytes) override;
    QByteArray readAll() override;
    qint64 bytesAvailable() const override { return input_.size(); }
    bool setDtr(bool on) override;
    bool setRts(bool on) override;
    bool setRtsCtsFlowControl(bool on) override;

    // The radio sends: the bytes wait in the input buffer and their event comes from the loop.
    void feed(const QByteArray& bytes);
    // The device vanishes, as an unplugged USB adapter does.
    void unplug();

    QByteArray written;
    SerialSettings lastSettings;
    bool dtr = false, rts = false, rtsCts = false;
    bool modemLinesSupported = true;
    int failOpenWith = 0;
    QString failOpenText;
    SerialOpenFailure failOpenReason = SerialOpenFailure::Other;
    int openCount = 0;
    // Told of each write while open (an in-process radio answers through feed()).
    std::function<void(const QByteArray&)> onWrite;

private:
    EventLoop& loop_;
    bool open_ = false;
    QString path_;
    QByteArray input_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

}  // namespace tv
