#include "netserver/NetServer.h"

#include "forms/Controls.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"

#include <QRegularExpression>

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");
const QString kEnabledKey = QStringLiteral("NetServerEnabled");
const QString kPortKey = QStringLiteral("NetServerPort");
const QString kAddressKey = QStringLiteral("NetServerAddress");
const QString kRawKey = QStringLiteral("NetServerRawCommands");
const QString kReadOnlyKey = QStringLiteral("NetServerReadOnly");
const QString kPasswordKey = QStringLiteral("NetServerPassword");
const QString kAllowedKey = QStringLiteral("NetServerAllowedClients");

bool isTrue(const QString& value) {
    const QString v = value.trimmed();
    return v.compare(QLatin1String("T"), Qt::CaseInsensitive) == 0 ||
           v.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0 || v == QLatin1String("1");
}

QString endpoint(const QHostAddress& a, quint16 port) {
    const QString host = a.protocol() == QAbstractSocket::IPv6Protocol
                             ? QLatin1Char('[') + a.toString() + QLatin1Char(']')
                             : a.toString();
    return host + QLatin1Char(':') + QString::number(port);
}
}  // namespace

NetServer::NetServer(RigBackend& rig, SettingsStore& settings, Common& common, Label& status,
                     QString serverName)
    : settings_(settings), common_(common), status_(status), server_(rig, std::move(serverName)) {
    server_.onLog = [this](const QString& line) { common_.LogLine(line); };
    server_.onClientsChanged = [this] { showStatus(); };
    status_.setToolTip(QStringLiteral(
        "programs that control a radio through rigctld (\"Hamlib NET rigctl\") share this one here"));
}

QHostAddress NetServer::parseAddress(const QString& text, bool* valid) {
    const QString t = text.trimmed();
    QHostAddress a;
    if (t.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
        a = QHostAddress(QHostAddress::LocalHost);
    else if (t.compare(QLatin1String("any"), Qt::CaseInsensitive) == 0)
        a = QHostAddress(QHostAddress::AnyIPv4);
    else
        a = QHostAddress(t);
    if (valid) *valid = !a.isNull();
    return a.isNull() ? QHostAddress(QHostAddress::LocalHost) : a;
}

void NetServer::Initialize(const NetServerOptions& options) {
    // Written back as read, so that the operator finds the keys in the file.
    const QString enabledText = settings_.GetSetting(kGeneral, kEnabledKey, QStringLiteral("True"));
    const QString portText = settings_.GetSetting(kGeneral, kPortKey, QString::number(kDefaultPort));
    const QString addressText =
        settings_.GetSetting(kGeneral, kAddressKey, QString::fromLatin1(kDefaultAddress));
    settings_.SaveSetting(kGeneral, kEnabledKey, enabledText);
    settings_.SaveSetting(kGeneral, kPortKey, portText);
    settings_.SaveSetting(kGeneral, kAddressKey, addressText);
    const QString rawText = settings_.GetSetting(kGeneral, kRawKey, QStringLiteral("False"));
    settings_.SaveSetting(kGeneral, kRawKey, rawText);
    server_.setRawCommands(isTrue(rawText));
    const QString readOnlyText = settings_.GetSetting(kGeneral, kReadOnlyKey, QStringLiteral("False"));
    settings_.SaveSetting(kGeneral, kReadOnlyKey, readOnlyText);
    server_.setReadOnly(isTrue(readOnlyText));
    if (isTrue(readOnlyText)) common_.LogLine(QStringLiteral("NetServer: clients may only read (setting NetServerReadOnly)"));

    const QString password = settings_.GetSetting(kGeneral, kPasswordKey, QString());
    settings_.SaveSetting(kGeneral, kPasswordKey, password);
    const QString allowedText = settings_.GetSetting(kGeneral, kAllowedKey, QString());
    settings_.SaveSetting(kGeneral, kAllowedKey, allowedText);
    QList<RigServer::Subnet> allowed;
    for (const QString& entry : allowedText.split(QRegularExpression(QStringLiteral("[,;\\s]+")), Qt::SkipEmptyParts)) {
        const RigServer::Subnet subnet = QHostAddress::parseSubnet(entry);
        if (subnet.first.isNull())
            common_.LogLine(QStringLiteral("NetServer: NetServerAllowedClients: \"%1\" is no address or subnet; left out")
                                .arg(entry));
        else
            allowed << subnet;
    }
    server_.setAccess(password.isEmpty() ? QByteArray() : RigctlSession::loginSecret(password), allowed);

    enabled_ = options.allowed && isTrue(enabledText);
    failure_.clear();
    if (!enabled_) {
        if (options.allowed) common_.LogLine(QStringLiteral("NetServer: off (setting NetServerEnabled)"));
        showStatus();
        return;
    }
    bool ok = false;
    const uint port = portText.trimmed().toUInt(&ok);
    port_ = options.port ? *options.port : ok && port > 0 && port < 65536 ? quint16(port) : kDefaultPort;
    if (!options.port && !(ok && port > 0 && port < 65536))
        common_.LogLine(QStringLiteral("NetServer: NetServerPort \"%1\" is no port; using %2")
                            .arg(portText)
                            .arg(kDefaultPort));
    bool valid = false;
    address_ = parseAddress(addressText, &valid);
    if (!valid)
        common_.LogLine(QStringLiteral("NetServer: NetServerAddress \"%1\" is no address; using %2")
                            .arg(addressText, address_.toString()));
    if (!address_.isLoopback() && password.isEmpty()) {
        // Other computers could tune and key the radio: not without a password.
        failure_ = QStringLiteral("a password is needed to listen on anything but loopback");
        common_.LogLine(QStringLiteral("NetServer: not listening on %1: %2 (setting NetServerPassword)")
                            .arg(endpoint(address_, port_), failure_));
        showStatus();
        return;
    }
    if (!address_.isLoopback())
        common_.LogLine(
            QStringLiteral("NetServer: warning: listening on %1, not on loopback: clients from %2 log in "
                           "with the password")
                .arg(address_.toString(),
                     allowed.isEmpty() ? QStringLiteral("any address") : QStringLiteral("the allowed addresses")));
    if (isTrue(rawText))
        common_.LogLine(
            QStringLiteral("NetServer: warning: clients may send raw commands to the radio "
                           "(setting NetServerRawCommands)"));
    if (server_.listen(address_, port_)) {
        port_ = server_.serverPort();
        common_.LogLine(
            QStringLiteral("NetServer: listening on %1 for rigctld clients").arg(endpoint(address_, port_)));
    } else {
        failure_ = server_.errorString();
        common_.LogLine(
            QStringLiteral("NetServer: cannot listen on %1: %2").arg(endpoint(address_, port_), failure_));
    }
    showStatus();
}

void NetServer::Terminate() {
    if (!server_.isListening()) return;
    server_.close();
    common_.LogLine(QStringLiteral("NetServer: closed"));
    showStatus();
}

void NetServer::showStatus() {
    QString text;
    if (!enabled_) {
        text = QStringLiteral("Rig server off");
    } else if (!failure_.isEmpty()) {
        text = QStringLiteral("Rig server: cannot listen on %1").arg(endpoint(address_, port_));
    } else if (!server_.isListening()) {
        text = QStringLiteral("Rig server closed");
    } else {
        const int n = server_.clientCount();
        text = QStringLiteral("Rig server %1, %2 %3")
                   .arg(endpoint(address_, port_))
                   .arg(n)
                   .arg(n == 1 ? QStringLiteral("client") : QStringLiteral("clients"));
    }
    if (locked_) text += QStringLiteral(" - locked");
    if (!transmitOwner_.isEmpty()) text += QStringLiteral(" - PTT: ") + transmitOwner_;
    if (!note_.isEmpty()) text += QStringLiteral(" - ") + note_;
    status_.setCaption(text);
}

}  // namespace tv
