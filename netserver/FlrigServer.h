#pragma once
// The XML-RPC front door on TCP (HTTP POST, any path; clients use /RPC2), for the programs set up for the
// other common Linux rig-control server: where it listens (settings of section General, and the command
// line over them) and its log lines. Each connection is a client of its own for the transmit owner.

#include "netserver/FlrigRpc.h"

#include <QHostAddress>
#include <QString>
#include <QtHttpServer/QAbstractHttpServer>

#include <optional>

namespace tv {

class Common;
class SettingsStore;

struct FlrigServerOptions {
    bool allowed = false;         // unless --no-xmlrpc
    std::optional<quint16> port;  // --xmlrpc-port, over the setting
};

class FlrigServer : public QAbstractHttpServer {
    Q_OBJECT
  public:
    static constexpr quint16 kDefaultPort = 12345;  // where the clients look first
    // A request body past this is no call of the protocol.
    static constexpr qsizetype kMaxBody = 64 * 1024;

    FlrigServer(RigBackend& rig, SettingsStore& settings, Common& common);

    // Reads the settings and listens; a failure to listen is logged, and the program goes on.
    void Initialize(const FlrigServerOptions& options);
    void Terminate();
    bool listening() const { return port_ != 0; }
    quint16 port() const { return port_; }

  protected:
    bool handleRequest(const QHttpServerRequest& request, QTcpSocket* socket) override;
    void missingHandler(const QHttpServerRequest& request, QTcpSocket* socket) override;

  private:
    RigBackend& rig_;
    SettingsStore& settings_;
    Common& common_;
    bool rawCommands_ = false;
    quint16 port_ = 0;
};

}  // namespace tv
