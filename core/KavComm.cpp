#include "core/KavComm.h"
#include "platform/EventLoop.h"

#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

KavComm::KavComm(Common& common, SerialFactory factory) : common_(common), factory_(std::move(factory)) {}

KavComm::~KavComm() {
    if (dev_) {
        dev_->onBytesArrived = nullptr;
        dev_->onFault = nullptr;
        dev_->close();
    }
}

void KavComm::InitializePort() {
    common_.LogLine(QStringLiteral("KavComm.Form_Load"));
    PortIsOpen = false;
    common_.LogLine(QStringLiteral("KavComm.Form_Load complete"));
}

void KavComm::ensureDevice() {
    if (dev_ || !factory_) return;
    dev_ = factory_();
    if (!dev_) return;
    dev_->onBytesArrived = [this] {
        if (!PortIsOpen) return;
        if (!rxEvents_) {
            dataPending_ = true;
            return;
        }
        if (onData) onData();
    };
    dev_->onFault = [this](SerialFault fault, const QString& text) {
        switch (fault) {
            case SerialFault::Break: CommError(QStringLiteral("Break")); break;
            case SerialFault::Framing: CommError(QStringLiteral("Framing Error")); break;
            case SerialFault::Overrun: CommError(QStringLiteral("Overrun")); break;
            case SerialFault::RxOverflow: CommError(QStringLiteral("RX buffer overflow")); break;
            case SerialFault::Parity: CommError(QStringLiteral("RC parity")); break;
            case SerialFault::TxFull: CommError(QStringLiteral("TX buffer full")); break;
            case SerialFault::Other: CommError(text); break;
            case SerialFault::DeviceRemoved:
                // The adapter is gone: stop using it, let the operator see why nothing moves, and look
                // for it until it is back.
                CommError(text);
                PortIsOpen = false;
                if (dev_) dev_->close();
                common_.LogLine(QStringLiteral("KavComm: Com%1 is gone; it is opened again when it comes back").arg(commPort_));
                if (!reopen_) {
                    reopen_ = common_.loop().createTimer();
                    reopen_->onTick = [this] { tryReopen(); };
                }
                reopen_->setInterval(kReopenEveryMs);
                reopen_->setEnabled(true);
                if (onLost) onLost(text);
                break;
        }
    };
}

void KavComm::FlushPort() {
    if (!PortIsOpen || !dev_) throw TvError(kErrPortFailed, QStringLiteral("port is not open"));
    dev_->close();
    int number = 0;
    QString text;
    if (!dev_->open(dev_->path(), serialSettings_, &number, &text)) {
        PortIsOpen = false;
        throw TvError(number ? number : kErrPortFailed, text);
    }
    applyModemLines();
}

void KavComm::Transmit() {
    if (GetDTRControl && GetDTRControl() == 2) setDtrEnable(true);
    if (GetRTSControl && GetRTSControl() == 2) {
        rtsEnable_ = true;
        if (PortIsOpen && dev_) dev_->setRts(true);
    }
}

void KavComm::Receive() {
    if (GetDTRControl && GetDTRControl() == 2) setDtrEnable(false);
    if (GetRTSControl && GetRTSControl() == 2) {
        rtsEnable_ = false;
        if (PortIsOpen && dev_) dev_->setRts(false);
    }
}

void KavComm::setDtrEnable(bool on) {
    dtrEnable_ = on;
    if (PortIsOpen && dev_ && !dev_->setDtr(on) && !modemLinesWarned_) {
        modemLinesWarned_ = true;
        common_.LogLine(QStringLiteral("KavComm: the device has no modem lines to set (DTR, RTS); PTT by line "
                                       "and interface power by DTR are not available on it"));
    }
}

void KavComm::ConfigureRTS(int mode) {
    rtsEnable_ = ModemControlEnabled(mode);
    rtsCts_ = mode == 3;
    if (PortIsOpen && dev_) {
        dev_->setRtsCtsFlowControl(rtsCts_);
        if (!rtsCts_ && !dev_->setRts(rtsEnable_) && !modemLinesWarned_) {
            modemLinesWarned_ = true;
            common_.LogLine(QStringLiteral("KavComm: the device has no modem lines to set (DTR, RTS); PTT by "
                                           "line is not available on it"));
        }
    }
}

void KavComm::applyModemLines() {
    if (!dev_) return;
    const bool dtrOk = dev_->setDtr(dtrEnable_);
    dev_->setRtsCtsFlowControl(false);
    const bool rtsOk = dev_->setRts(rtsEnable_);
    if ((!dtrOk || !rtsOk) && !modemLinesWarned_) {
        modemLinesWarned_ = true;
        common_.LogLine(QStringLiteral("KavComm: the device has no modem lines to set (DTR, RTS); PTT by line "
                                       "and interface power by DTR are not available on it"));
    }
}

void KavComm::OpenPort(int port, qint32 speed, const QString& parity, const QString& wordLength,
                       const QString& stopBits, int dtrMode, int rtsMode) {
    if (port == 0) return;
    if (reopen_) reopen_->setEnabled(false);
    ensureDevice();
    if (PortIsOpen && dev_) dev_->close();
    PortIsOpen = false;
    commPort_ = port;
    dtrEnable_ = ModemControlEnabled(dtrMode);
    ConfigureRTS(rtsMode);
    settings_ = QStringLiteral("%1,%2,%3,%4").arg(speed).arg(parity, wordLength, stopBits);
    serialSettings_.baud = speed;
    serialSettings_.parity = parity.isEmpty() ? 'N' : parity.at(0).toUpper().toLatin1();
    serialSettings_.dataBits = wordLength.toInt();
    serialSettings_.stopBits = stopBits.toInt() >= 2 ? 2 : 1;
    // Opening overrides the flow control chosen above; only a later RTS choice turns it on.
    rtsCts_ = false;
    const QString path = devicePath ? devicePath(port) : QString();
    int number = 0;
    QString text;
    bool ok = dev_ != nullptr;
    if (ok) ok = dev_->open(path, serialSettings_, &number, &text);
    if (!ok) {
        if (!dev_) text = QStringLiteral("no serial device available");
        if (onOpenFailed) onOpenFailed(number ? number : kErrPortFailed, text, port, settings_);
        return;
    }
    applyModemLines();
    PortIsOpen = true;
    dataPending_ = false;
    if (onOpened) onOpened();
}

void KavComm::tryReopen() {
    if (PortIsOpen || !dev_) {
        reopen_->setEnabled(false);
        return;
    }
    int number = 0;
    QString text;
    if (!dev_->open(dev_->path(), serialSettings_, &number, &text)) return;  // not back yet
    reopen_->setEnabled(false);
    applyModemLines();
    PortIsOpen = true;
    dataPending_ = false;
    common_.LogLine(QStringLiteral("KavComm: Com%1 is back (%2); the port is open again").arg(commPort_).arg(dev_->path()));
    if (onOpened) onOpened();
}

void KavComm::ClosePort() {
    if (reopen_) reopen_->setEnabled(false);
    if (!PortIsOpen) return;
    if (dev_) dev_->close();
    PortIsOpen = false;
}

QByteArray KavComm::ReadPort() {
    if (!PortIsOpen || !dev_) return {};
    if (dev_->bytesAvailable() <= 0) return {};
    return dev_->readAll();
}

void KavComm::WritePort(const QByteArray& text) {
    if (!PortIsOpen || !dev_) return;
    dev_->write(text);
}

void KavComm::EnableCommRXEvents() {
    rxEvents_ = true;
    // Bytes that came while events were off are not lost: their event is raised now.
    if (dataPending_ && PortIsOpen && dev_ && dev_->bytesAvailable() > 0) {
        dataPending_ = false;
        std::weak_ptr<int> alive = alive_;
        common_.loop().post([this, alive] {
            if (alive.expired()) return;
            if (rxEvents_ && PortIsOpen && onData) onData();
        });
    }
    dataPending_ = false;
}

void KavComm::CommError(const QString& text) { common_.LogLine(QStringLiteral("KavComm.CommError: ") + text); }

}  // namespace tv
