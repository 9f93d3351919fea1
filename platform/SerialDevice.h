#pragma once
// One serial device: what the link needs from a port and nothing more.

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace tv {

struct SerialSettings {
    qint32 baud = 9600;
    char parity = 'N';  // 'N' none, 'O' odd, 'E' even, 'M' mark, 'S' space
    int dataBits = 8;   // 5 to 8
    int stopBits = 2;   // 1 or 2
};

// Error numbers the link reports, in the numbering the operator's messages use.
enum SerialErrorNumber : int {
    kSerialPortAlreadyOpen = 8005,  // the device is busy: another program has it
    kSerialPortNotFound = 8002,     // no such device
    kSerialOpenFailed = 8015,       // any other failure to open (permission, bad settings)
};

// Why an open failed, where the number alone can't tell the operator what to do.
enum class SerialOpenFailure {
    Other,
    // The device is there, but this user may not read and write it (not in its group, usually dialout).
    PermissionDenied,
};

// A failure after the port was open: the device vanished (USB unplug) or a line error.
enum class SerialFault { Break, Framing, Overrun, RxOverflow, Parity, TxFull, DeviceRemoved, Other };

class SerialDevice {
public:
    virtual ~SerialDevice() = default;
    // Opens the device at path. On failure returns false and fills the error number and description.
    virtual bool open(const QString& path, const SerialSettings& settings, int* errorNumber,
                      QString* errorText) = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    virtual QString path() const = 0;
    virtual void write(const QByteArray& bytes) = 0;
    virtual QByteArray readAll() = 0;
    virtual qint64 bytesAvailable() const = 0;
    // Modem lines. Returns false when the device has none (a pseudo-terminal): that is not an error.
    virtual bool setDtr(bool on) = 0;
    virtual bool setRts(bool on) = 0;
    virtual bool setRtsCtsFlowControl(bool on) = 0;

    std::function<void()> onBytesArrived;
    std::function<void(SerialFault, const QString&)> onFault;
    // Set by each failed open().
    SerialOpenFailure lastOpenFailure = SerialOpenFailure::Other;
};

using SerialFactory = std::function<std::unique_ptr<SerialDevice>()>;

// The serial devices present on this computer, as paths (/dev/ttyUSB0, ...), for the operator to choose.
QStringList presentSerialDevices();

// The description of a failed open, for the caption and the log: the device's own text, and when the
// device refused this user, which group to join and the command that does it.
QString describeOpenFailure(const SerialDevice& device, const QString& text);

// Who may use a device, as far as it matters to a user it refused.
struct DeviceAccess {
    QString path;
    QString group = QStringLiteral("dialout");  // the device's group; serial ports' usual one when unknown
    QString owner;                              // empty when unknown
    unsigned mode = 0660;                       // permission bits
    bool userListedInGroup = false;             // in the group database (perhaps since this login)
    bool processInGroup = false;                // in this process's groups
};
DeviceAccess inspectDeviceAccess(const QString& path);
// What to do about it, in words for the operator.
QString serialPermissionAdvice(const DeviceAccess& access);

}  // namespace tv
