#include "netserver/FlrigServer.h"

#include "netserver/NetServer.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QtHttpServer/QHttpServerRequest>
#include <QtHttpServer/QHttpServerResponder>

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");
const QString kEnabledKey = QStringLiteral("XmlRpcEnabled");
const QString kPortKey = QStringLiteral("XmlRpcPort");

bool isTrue(const QString& text) {
    const QString t = text.trimmed();
    return t.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || t == QLatin1String("1") ||
           t.compare(QLatin1String("T"), Qt::CaseInsensitive) == 0;
}
}  // namespace

FlrigServer::FlrigServer(RigBackend& rig, SettingsStore& settings, Common& common)
    : rig_(rig), settings_(settings), common_(common) {}

void FlrigServer::Initialize(const FlrigServerOptions& options) {
    // Written back as read, so that the operator finds the keys in the file.
    const QString enabledText = settings_.GetSetting(kGeneral, kEnabledKey, QStringLiteral("True"));
    const QString portText = settings_.GetSetting(kGeneral, kPortKey, QString::number(kDefaultPort));
    settings_.SaveSetting(kGeneral, kEnabledKey, enabledText);
    settings_.SaveSetting(kGeneral, kPortKey, portText);
    rawCommands_ = isTrue(settings_.GetSetting(kGeneral, QStringLiteral("NetServerRawCommands"), QStringLiteral("False")));
    if (!options.allowed || !isTrue(enabledText)) {
        if (options.allowed) common_.LogLine(QStringLiteral("XmlRpc: off (setting XmlRpcEnabled)"));
        return;
    }
    bool ok = false;
    const uint wanted = portText.trimmed().toUInt(&ok);
    const quint16 port = options.port ? *options.port : ok && wanted > 0 && wanted < 65536 ? quint16(wanted) : kDefaultPort;
    // Loopback only: these clients have no way to log in, and whoever reaches the port can key the radio.
    auto* server = new QTcpServer(this);
    if (!server->listen(QHostAddress::LocalHost, port)) {
        common_.LogLine(QStringLiteral("XmlRpc: cannot listen on 127.0.0.1:%1: %2").arg(port).arg(server->errorString()));
        delete server;
        return;
    }
    bind(server);
    port_ = server->serverPort();
    common_.LogLine(QStringLiteral("XmlRpc: listening on 127.0.0.1:%1 for XML-RPC rig clients").arg(port_));
}

void FlrigServer::Terminate() {
    for (QTcpServer* s : servers()) s->close();
    if (port_) common_.LogLine(QStringLiteral("XmlRpc: closed"));
    port_ = 0;
}

bool FlrigServer::handleRequest(const QHttpServerRequest& request, QTcpSocket* socket) {
    QHttpServerResponder responder = makeResponder(request, socket);
    if (request.method() != QHttpServerRequest::Method::Post) {
        responder.write(QHttpServerResponder::StatusCode::MethodNotAllowed);
        return true;
    }
    const QByteArray body = request.body();
    const QString client =
        QStringLiteral("xml-rpc client %1:%2").arg(socket->peerAddress().toString()).arg(socket->peerPort());
    if (body.size() > kMaxBody) {
        responder.write(XmlRpcFault(1, QStringLiteral("request too long")), "text/xml");
        return true;
    }
    FlrigSession session(rig_, client, rawCommands_);
    responder.write(session.answer(body), "text/xml");
    // A client that keyed and closes its connection leaves nothing keyed behind it (watched once per
    // connection: a client keeps one open for all its calls).
    if (!socket->property("tvWatched").toBool()) {
        socket->setProperty("tvWatched", true);
        QObject::connect(socket, &QTcpSocket::disconnected, this, [this, client] { rig_.clientGone(client); });
    }
    return true;
}

void FlrigServer::missingHandler(const QHttpServerRequest& request, QTcpSocket* socket) {
    makeResponder(request, socket).write(QHttpServerResponder::StatusCode::NotFound);
}

}  // namespace tv
