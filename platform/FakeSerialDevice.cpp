#include "platform/FakeSerialDevice.h"

#include "platform/EventLoop.h"

namespace tv {

FakeSerialDevice::FakeSerialDevice(EventLoop& loop) : loop_(loop) {}

FakeSerialDevice::~FakeSerialDevice() = default;

bool FakeSerialDevice::open(const QString& path, const SerialSettings& settings, int* errorNumber,
                            QString* errorText) {
    path_ = path;
    lastSettings = settings;
    lastOpenFailure = SerialOpenFailure::Other;
    if (failOpenWith != 0) {
        open_ = false;
        if (errorNumber) *errorNumber = failOpenWith;
        if (errorText) *errorText = failOpenText;
        lastOpenFailure = failOpenReason;
        return false;
    }
    open_ = true;
    ++openCount;
    input_.clear();
    return true;
}

void FakeSerialDevice::close() {
    open_ = false;
    input_.clear();
}

void FakeSerialDevice::write(const QByteArray& bytes) {
    if (!open_) return;
    written += bytes;
    if (onWrite) onWrite(bytes);
}

QByteArray FakeSerialDevice::readAll() {
    QByteArray out;
    out.swap(input_);
    return out;
}

bool FakeSerialDevice::setDtr(bool on) {
    if (!modemLinesSupported) return false;
    dtr = on;
    return true;
}

bool FakeSerialDevice::setRts(bool on) {
    if (!modemLinesSupported) return false;
    rts = on;
    return true;
}

bool FakeSerialDevice::setRtsCtsFlowControl(bool on) {
    rtsCts = on;
    return true;
}

void FakeSerialDevice::feed(const QByteArray& bytes) {
    if (!open_ || bytes.isEmpty()) return;
    input_ += bytes;
    std::weak_ptr<int> alive = alive_;
    loop_.post([this, alive] {
        if (alive.expired() || !open_ || input_.isEmpty()) return;
        if (onBytesArrived) onBytesArrived();
    });
}

void FakeSerialDevice::unplug() {
    if (!open_) return;
    open_ = false;
    input_.clear();
    if (onFault) onFault(SerialFault::DeviceRemoved, QStringLiteral("the device was removed"));
}

}  // namespace tv
