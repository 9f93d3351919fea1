#pragma once
// The one serial port of the program. Nothing else touches it. A closed port swallows writes and
// reads nothing, so the rest of the program runs on harmlessly while no radio hears it.

#include "platform/EventLoop.h"
#include "platform/SerialDevice.h"

#include <QString>

#include <functional>
#include <memory>

namespace tv {

class Common;

class KavComm {
public:
    KavComm(Common& common, SerialFactory factory);
    ~KavComm();

    // The window's load: the port is closed.
    void InitializePort();
    bool PortOpened() const { return PortIsOpen; }
    // Closing and reopening drops both buffers. Raises TvError when the port isn't open.
    void FlushPort();
    // PTT by a modem line: a line set to "on to xmit" (2) keys the radio.
    void Transmit();
    void Receive();
    static bool ModemControlEnabled(int mode) { return mode == 1 || mode == 3; }
    void ConfigureRTS(int mode);
    // Opens port number port (1..8) on its device path; 0 does nothing. On failure PortIsOpen stays
    // false and the error number and description are returned through the callbacks of the module.
    void OpenPort(int port, qint32 speed, const QString& parity, const QString& wordLength,
                  const QString& stopBits, int dtrMode, int rtsMode);
    void ClosePort();
    QByteArray ReadPort();
    void WritePort(const QByteArray& text);
    void DisableCommRXEvents() { rxEvents_ = false; }
    void EnableCommRXEvents();
    bool rxEventsEnabled() const { return rxEvents_; }
    void CommError(const QString& text);
    void setDtrEnable(bool on);

    // Wiring to the module: how DTR/RTS choices are read, which path a port number names, what to do
    // with the outcome of an open and with received bytes.
    std::function<int()> GetDTRControl, GetRTSControl;
    std::function<QString(int port)> devicePath;
    // After a failed open: (error number, description, port, settings text).
    std::function<void(int, const QString&, int, const QString&)> onOpenFailed;
    std::function<void()> onOpened;
    // Bytes have arrived (the OnComm data event).
    std::function<void()> onData;
    // The device went away while open (a USB adapter unplugged).
    std::function<void(const QString&)> onLost;

    SerialDevice* device() const { return dev_.get(); }
    // A device that vanished is looked for this often, and opened again when it is back.
    static constexpr int kReopenEveryMs = 2000;
    bool waitingForDevice() const { return reopen_ && reopen_->enabled(); }
    int portNumber() const { return commPort_; }
    QString settingsText() const { return settings_; }

private:
    void ensureDevice();
    void applyModemLines();
    void tryReopen();

    Common& common_;
    SerialFactory factory_;
    std::unique_ptr<SerialDevice> dev_;
    bool PortIsOpen = false;
    bool rxEvents_ = true;
    bool dataPending_ = false;
    int commPort_ = 0;
    bool dtrEnable_ = false, rtsEnable_ = false, rtsCts_ = false;
    bool modemLinesWarned_ = false;
    QString settings_;
    SerialSettings serialSettings_;
    // Work posted on the loop checks this first: the link may be gone when it runs.
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
    std::unique_ptr<LoopTimer> reopen_;
};

}  // namespace tv
