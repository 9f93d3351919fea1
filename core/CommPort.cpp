// The port parameters: read from the store at start-up, chosen in the configuration window, and
// handed to the link. Port numbers 1 to 8 name device paths through the settings.

#include "core/KavModule.h"
#include "platform/EventLoop.h"

#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "platform/Dialogs.h"
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

QString KavModule::CommPortDevicePath(int port) const {
    return settings().GetSetting(kGeneral, QStringLiteral("CommPortDevice%1").arg(port),
                                 QStringLiteral("/dev/ttyUSB%1").arg(port - 1));
}

void KavModule::InitializeCommPort() {
    Guard("KavModule.InitializeCommPort", [&] {
        auto& s = settings();
        const QString portText = s.GetSetting(kGeneral, QStringLiteral("CommPort"), QString()).trimmed();
        bool ok = true;
        const int port = portText.isEmpty() ? 0 : portText.toInt(&ok);
        if (ok && port == 0) {
            CommPortNumber = 0;
            CommCaption = QStringLiteral(" [no Com port selected]");
        } else if (ok && port >= 1 && port <= 8) {
            CommPortNumber = port;
            config_.CommPort[port].setValue(true);
            CommCaption.clear();
        } else {
            CommPortNumber = 0;
            CommCaption = QStringLiteral(" [no Com port selected]");
            dialogs().messageBox(QStringLiteral("previously saved Com port is invalid; select a valid one"),
                                 common_.info().title);
        }

        const QString speedText = s.GetSetting(kGeneral, QStringLiteral("CommSpeed"), QStringLiteral("9600"));
        bool speedOk = false;
        const long speed = speedText.trimmed().toLong(&speedOk);
        bool found = false;
        for (int i = 1; i <= 8; ++i) {
            const bool match = speedOk && captionNumber(config_.Speed[i].caption()) == speed;
            config_.Speed[i].setValue(match && !found);
            found = found || match;
        }
        if (found) {
            CommSpeed = std::int32_t(speed);
        } else {
            CommSpeed = 9600;
            dialogs().messageBox(
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

        DTRControl = readIndex("DTR", 0, 0, 2);
        RTSControl = readIndex("RTS", 0, 0, 3);
        config_.DTRButton[DTRControl].setValue(true);
        config_.RTSButton[RTSControl].setValue(true);
    });
}

void KavModule::ConfigureCommPort() {
    Guard("KavModule.ConfigureCommPort", [&] {
        if (radio() && !radio()->serialPort) return;
        if (ControlFlag(FlagCommPort)) return;
        auto& s = settings();
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
        RcvCount = 0;
        comm_.EnableCommRXEvents();
    });
}

void KavModule::SelectCommPort(int index) {
    Guard("KavModule.SelectCommPort", [&] {
        CommPortNumber = index;
        ConfigureCommPort();
        if (comm_.PortOpened()) InterrogateRadio();
    });
}

void KavModule::SelectPortSpeed(int index) {
    Guard("KavModule.SelectPortSpeed", [&] {
        if (!config_.visible()) return;
        CommSpeed = std::int32_t(captionNumber(config_.Speed[index].caption()));
        ConfigureCommPort();
    });
}

void KavModule::SelectPortWordLength(int index) {
    if (!config_.visible()) return;
    CommWordLength = index;
    ConfigureCommPort();
}

void KavModule::SelectPortParity(int index) {
    if (!config_.visible()) return;
    CommParity = QString::number(index);
    ConfigureCommPort();
}

void KavModule::SelectPortStopBits(int index) {
    if (!config_.visible()) return;
    CommStopBits = index;
    ConfigureCommPort();
}

void KavModule::SendCommand(const QByteArray& text) {
    Guard("KavModule.SendCommand", [&] {
        const QChar s = GetRadioSupplier();
        auto decImage = [&] {
            QString d;
            for (char ch : text) d += QStringLiteral("%1 ").arg(int(std::uint8_t(ch)), 3, 10, QLatin1Char('0'));
            return d;
        };
        auto hexImage = [&] {
            QString h;
            for (char ch : text)
                h += QStringLiteral("%1 ").arg(QString::number(int(std::uint8_t(ch)), 16).toUpper(), 2);
            return h;
        };
        if (s == QLatin1Char('I') || s == QLatin1Char('T')) {
            // A CI-V bus echoes every frame back into the receive path, which shows it in the monitor.
            if (common_.DebugEnabled()) {
                common_.DebugLog(QStringLiteral("KavModule.SendCommand: Hex = ") + hexImage());
                common_.DebugLog(QStringLiteral("KavModule.SendCommand: Dec = ") + decImage());
            }
        } else if (s == QLatin1Char('Y') || s == QLatin1Char('K') || s == QLatin1Char('N')) {
            ++MessageCounter;
            if (captureEnabled()) {
                const QString prefix = QStringLiteral("%1@%2: ")
                                           .arg(MessageCounter, 4, 10, QLatin1Char('0'))
                                           .arg(loop().localNow().toString(QStringLiteral("hhmm.ss")));
                DisplayLine(prefix, decImage(), hexImage(), QString::fromLatin1(text));
            }
        }
        comm_.WritePort(text);
    });
}

}  // namespace tv
