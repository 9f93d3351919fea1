#include "netserver/Loggers.h"

#include "forms/KavConfig.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"

namespace tv {

namespace {
const QString kSection = QStringLiteral("Loggers");

bool isTrue(const QString& text) {
    const QString t = text.trimmed();
    return t.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || t == QLatin1String("1") ||
           t.compare(QLatin1String("T"), Qt::CaseInsensitive) == 0;
}
QString tf(bool on) {
    return on ? QStringLiteral("True") : QStringLiteral("False");
}
}  // namespace

Loggers::Loggers(RigBackend& rig, EventLoop& loop, SettingsStore& settings, Common& common, KavConfig& config)
    : web(rig, loop), udp(rig, loop), settings_(settings), common_(common), config_(config) {
    web.onLog = [this](const QString& line) { common_.LogLine(line); };
    udp.onLog = [this](const QString& line) { common_.LogLine(line); };
    KavConfig& c = config_;
    // Each control is stored the moment it changes, as on the other tabs.
    auto text = [this](TextBox& box, const QString& key, void (Loggers::*apply)()) {
        box.Change = [this, &box, key, apply] {
            if (loading_) return;
            settings_.SaveSetting(kSection, key, box.text());
            (this->*apply)();
        };
    };
    auto check = [this](CheckBox& box, const QString& key, void (Loggers::*apply)()) {
        box.Click = [this, &box, key, apply] {
            if (loading_) return;
            settings_.SaveSetting(kSection, key, tf(box.checked()));
            (this->*apply)();
        };
    };
    check(c.WebLoggerEnabled, QStringLiteral("WebLoggerEnabled"), &Loggers::applyWeb);
    text(c.WebLoggerUrl, QStringLiteral("WebLoggerUrl"), &Loggers::applyWeb);
    text(c.WebLoggerKey, QStringLiteral("WebLoggerKey"), &Loggers::applyWeb);
    text(c.WebLoggerRadio, QStringLiteral("WebLoggerRadio"), &Loggers::applyWeb);
    check(c.UdpRadioInfoEnabled, QStringLiteral("UdpRadioInfoEnabled"), &Loggers::applyUdp);
    text(c.UdpDestinations, QStringLiteral("UdpRadioInfoTo"), &Loggers::applyUdp);
    check(c.UdpCommandsEnabled, QStringLiteral("UdpCommandsEnabled"), &Loggers::applyUdp);
    text(c.UdpCommandsPort, QStringLiteral("UdpCommandsPort"), &Loggers::applyUdp);
}

void Loggers::Initialize() {
    KavConfig& c = config_;
    auto read = [this](const QString& key, const QString& fallback) {
        // Written back as read, so that the operator finds the keys in the file.
        const QString value = settings_.GetSetting(kSection, key, fallback);
        settings_.SaveSetting(kSection, key, value);
        return value;
    };
    loading_ = true;
    c.WebLoggerEnabled.setChecked(isTrue(read(QStringLiteral("WebLoggerEnabled"), QStringLiteral("False"))));
    c.WebLoggerUrl.setText(read(QStringLiteral("WebLoggerUrl"), QString()));
    c.WebLoggerKey.setText(read(QStringLiteral("WebLoggerKey"), QString()));
    c.WebLoggerRadio.setText(read(QStringLiteral("WebLoggerRadio"), QStringLiteral("Tolvane")));
    c.UdpRadioInfoEnabled.setChecked(
        isTrue(read(QStringLiteral("UdpRadioInfoEnabled"), QStringLiteral("False"))));
    c.UdpDestinations.setText(
        read(QStringLiteral("UdpRadioInfoTo"), QStringLiteral("127.0.0.1:%1").arg(ContestUdp::kDefaultPort)));
    c.UdpCommandsEnabled.setChecked(
        isTrue(read(QStringLiteral("UdpCommandsEnabled"), QStringLiteral("False"))));
    c.UdpCommandsPort.setText(
        read(QStringLiteral("UdpCommandsPort"), QString::number(ContestUdpConfig().listenPort)));
    loading_ = false;
    applyWeb();
    applyUdp();
    const WebLoggerConfig& w = web.config();
    if (w.enabled)
        common_.LogLine(QStringLiteral("WebLogger: sending the radio as \"%1\" to %2")
                            .arg(w.radio, WebLogger::endpoint(w.url).toDisplayString(QUrl::RemoveUserInfo)));
    if (w.enabled && (w.url.trimmed().isEmpty() || w.key.isEmpty()))
        common_.LogLine(
            QStringLiteral("WebLogger: on, but the URL or the API key is empty: nothing is sent"));
    if (c.UdpRadioInfoEnabled.checked())
        common_.LogLine(QStringLiteral("ContestUdp: sending RadioInfo to %1").arg(c.UdpDestinations.text()));
}

void Loggers::Terminate() {
    web.configure({});
    udp.stop();
}

void Loggers::applyWeb() {
    WebLoggerConfig w;
    w.enabled = config_.WebLoggerEnabled.checked();
    w.url = config_.WebLoggerUrl.text().trimmed();
    w.key = config_.WebLoggerKey.text().trimmed();
    w.radio = config_.WebLoggerRadio.text().trimmed();
    web.configure(w);
}

void Loggers::applyUdp() {
    ContestUdpConfig u;
    u.send = config_.UdpRadioInfoEnabled.checked();
    u.destinations = config_.UdpDestinations.text();
    u.listen = config_.UdpCommandsEnabled.checked();
    bool ok = false;
    const uint port = config_.UdpCommandsPort.text().trimmed().toUInt(&ok);
    if (ok && port > 0 && port < 65536) {
        u.listenPort = quint16(port);
    } else {
        // A port half typed keeps the one in force.
        u.listenPort = udp.listening() ? udp.listenPort() : u.listenPort;
        if (u.listen && !udp.listening())
            common_.LogLine(QStringLiteral("ContestUdp: UdpCommandsPort \"%1\" is no port; using %2")
                                .arg(config_.UdpCommandsPort.text())
                                .arg(u.listenPort));
    }
    udp.configure(u);
}

}  // namespace tv
