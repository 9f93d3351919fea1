// The port parameters: read from the store at start-up, chosen in the configuration window, and
// handed to the link. Port numbers 1 to 8 name device paths through the settings.

#include "core/PortSettings.h"

#include "core/CommandQueue.h"
#include "core/KavComm.h"
#include "core/RadioLink.h"
#include "core/SelectedRadio.h"
#include "forms/KavConfig.h"
#include "platform/Dialogs.h"
#include "platform/SerialDevice.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");
// The number an option's caption shows ("  9600" is 9600).
long captionNumber(const QString& caption) { return caption.trimmed().toLong(); }
QString firstChar(const QString& s) { return s.trimmed().left(1); }
}  // namespace

PortSettings::PortSettings(Common& common, KavConfig& config, KavComm& comm, SelectedRadio& radio, RadioLink& link,
                           CommandQueue& queue)
    : common_(common), config_(config), comm_(comm), radio_(radio), link_(link), queue_(queue) {}

void PortSettings::FillDeviceLists() {
    const QStringList present = presentSerialDevices();
    for (int i = config_.CommPortDevice.lbound(); i <= config_.CommPortDevice.ubound(); ++i) {
        ComboBox& list = config_.CommPortDevice[i];
        list.Clear();
        for (const QString& path : present) list.AddItem(path);
        list.setText(CommPortDevicePath(i));
    }
}

void PortSettings::SelectCommPortDevice(int port, bool reopen) {
    Guard("KavConfig.CommPortDevice_Click", [&] {
        const QString path = config_.CommPortDevice[port].text().trimmed();
        if (path.isEmpty() || path == CommPortDevicePath(port)) return;
        common_.settings().SaveSetting(kGeneral, QStringLiteral("CommPortDevice%1").arg(port), path);
        common_.LogLine(QStringLiteral("Com%1 is now %2").arg(port).arg(path));
        if (reopen && port == CommPortNumber) SelectCommPort(port);
    });
}

QString PortSettings::CommPortDevicePath(int port) const {
    return common_.settings().GetSetting(kGeneral, QStringLiteral("CommPortDevice%1").arg(port),
                                 QStringLiteral("/dev/ttyUSB%1").arg(port - 1));
}

void PortSettings::InitializeCommPort() {
    Guard("KavModule.InitializeCommPort", [&] {
        auto& s = common_.settings();
        const QString portText = s.GetSetting(kGeneral, QStringLiteral("CommPort"), QString()).trimmed();
        bool ok = true;
        const int port = portText.isEmpty() ? 0 : portText.toInt(&ok);
        if (ok && port == 0) {
            CommPortNumber = 0;
            if (setCaption) setCaption(QStringLiteral(" [no Com port selected]"));
        } else if (ok && port >= 1 && port <= 8) {
            CommPortNumber = port;
            config_.CommPort[port].setValue(true);
            if (setCaption) setCaption(QString());
        } else {
            CommPortNumber = 0;
            if (setCaption) setCaption(QStringLiteral(" [no Com port selected]"));
            common_.dialogs().messageBox(QStringLiteral("previously saved Com port is invalid; select a valid one"),
                                 common_.info().title);
        }

        const QString speedText = s.GetSetting(kGeneral, QStringLiteral("CommSpeed"), QStringLiteral("9600"));
        bool speedOk = false;
        const long speed = speedText.trimmed().toLong(&speedOk);
        bool found = false;
        for (int i = config_.Speed.lbound(); i <= config_.Speed.ubound(); ++i) {
            const bool match = speedOk && captionNumber(config_.Speed[i].caption()) == speed;
            config_.Speed[i].setValue(match && !found);
            found = found || match;
        }
        if (found) {
            CommSpeed = std::int32_t(speed);
        } else {
            CommSpeed = 9600;
            common_.dialogs().messageBox(
                QStringLiteral("previously saved Com Speed is invalid; using default of ") + QStringLiteral("9600"),
                common_.info().title);
            for (int i = 1; i <= 6; ++i)
                if (captionNumber(config_.Speed[i].caption()) == CommSpeed) config_.Speed[i].setValue(true);
        }

        // Out-of-range indexes fall back to the defaults rather than leaving no option selected.
        auto readIndex = [&](const char* key, int def, int lo, int hi) {
            bool k = false;
            int v = s.GetSetting(kGeneral, QString::fromLatin1(key), QString::number(def)).trimmed().toInt(&k);
            return (k && v >= lo && v <= hi) ? v : def;
        };
        CommWordLength = readIndex("CommWordLength", 1, 1, 3);
        CommStopBits = readIndex("CommStopBits", 3, 1, 3);
        CommParity = QString::number(readIndex("CommParity", 1, 1, 5));
        config_.WordLength[CommWordLength].setValue(true);
        config_.StopBits[CommStopBits].setValue(true);
        config_.Parity[CommParity.toInt()].setValue(true);

        FillDeviceLists();
        DTRControl = readIndex("DTR", 0, 0, 2);
        RTSControl = readIndex("RTS", 0, 0, 3);
        config_.DTRButton[DTRControl].setValue(true);
        config_.RTSButton[RTSControl].setValue(true);
    });
}

void PortSettings::ConfigureCommPort() {
    Guard("KavModule.ConfigureCommPort", [&] {
        if (radio_.info() && !radio_.info()->serialPort) return;
        if (held && held()) return;
        auto& s = common_.settings();
        s.SaveSetting(kGeneral, QStringLiteral("CommPort"), QString::number(CommPortNumber));
        s.SaveSetting(kGeneral, QStringLiteral("CommSpeed"), QString::number(CommSpeed));
        s.SaveSetting(kGeneral, QStringLiteral("CommStopBits"), QString::number(CommStopBits));
        s.SaveSetting(kGeneral, QStringLiteral("CommWordLength"), QString::number(CommWordLength));
        s.SaveSetting(kGeneral, QStringLiteral("CommParity"), CommParity);
        auto selectedCaption = [](auto& array) {
            for (int i = array.lbound(); i <= array.ubound(); ++i)
                if (array[i].value()) return array[i].caption();
            return QString();
        };
        // The first character of each caption reaches the port, so "1.5" stop bits open as 1.
        const QString parity = firstChar(selectedCaption(config_.Parity));
        const QString word = firstChar(selectedCaption(config_.WordLength));
        const QString stop = firstChar(selectedCaption(config_.StopBits));
        comm_.OpenPort(CommPortNumber, CommSpeed, parity, word, stop, DTRControl, RTSControl);
        link_.RcvCount = 0;
        comm_.EnableCommRXEvents();
    });
}

void PortSettings::SelectCommPort(int index) {
    Guard("KavModule.SelectCommPort", [&] {
        CommPortNumber = index;
        ConfigureCommPort();
        if (comm_.PortOpened()) queue_.InterrogateRadio();
    });
}

void PortSettings::SelectPortSpeed(int index) {
    Guard("KavModule.SelectPortSpeed", [&] {
        if (!config_.visible()) return;
        CommSpeed = std::int32_t(captionNumber(config_.Speed[index].caption()));
        ConfigureCommPort();
    });
}

void PortSettings::SelectPortWordLength(int index) {
    if (!config_.visible()) return;
    CommWordLength = index;
    ConfigureCommPort();
}

void PortSettings::SelectPortParity(int index) {
    if (!config_.visible()) return;
    CommParity = QString::number(index);
    ConfigureCommPort();
}

void PortSettings::SelectPortStopBits(int index) {
    if (!config_.visible()) return;
    CommStopBits = index;
    ConfigureCommPort();
}

}  // namespace tv
