#pragma once
// The rig server's sockets: a TCP listener, and for each client its line buffer and its protocol
// session. Every limit that keeps a bad client from hurting the program or the other clients is here:
// the length of a line, the answers a client leaves unread, the number of clients, and how many lines
// one client gets answered before the others have their turn.

#include "netserver/Rigctl.h"

#include <QHostAddress>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTcpServer>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

class QTcpSocket;

namespace tv {

class RigBackend;

class RigServer : public QObject {
    Q_OBJECT
  public:
    // A longer line is no command of the protocol: the client is told so and dropped.
    static constexpr qsizetype kMaxLine = 4096;
    // Answers a client has left unread; past this it is dropped, so that it can't make us hoard them.
    static constexpr qint64 kMaxUnread = 256 * 1024;
    // What the socket reads ahead of the lines we have answered; the rest waits in the kernel.
    static constexpr qint64 kReadAhead = 64 * 1024;
    static constexpr int kMaxClients = 32;
    // Lines answered for one client before the loop turns to the others and to the radio.
    static constexpr int kLinesPerTurn = 64;
    // How long a closing client has to take its last answer.
    static constexpr std::chrono::milliseconds kCloseGrace{5000};
    // How often a client that waits for the radio's report is looked at again.
    static constexpr std::chrono::milliseconds kSettlePoll{10};

    RigServer(RigBackend& backend, QString serverName, QObject* parent = nullptr);
    ~RigServer() override;

    // Port 0 takes any free port (serverPort() tells which).
    bool listen(const QHostAddress& address, quint16 port);
    void close();
    bool isListening() const { return server_.isListening(); }
    quint16 serverPort() const { return server_.serverPort(); }
    QString errorString() const { return server_.errorString(); }
    int clientCount() const { return int(clients_.size()); }
    // Whether clients may put raw commands on the radio's line ("w", "\send_cmd"); for clients that
    // connect from now on.
    void setRawCommands(bool allowed) { rawCommands_ = allowed; }
    // Whether clients may only read; for clients that connect from now on.
    void setReadOnly(bool on) { readOnly_ = on; }
    // Idle connections can't lock the others out: with every place taken, the one idle longest gives way
    // to a newcomer once it has been idle yieldAfter; any is closed after timeout without a line. Both
    // well above any client's poll period.
    static constexpr std::chrono::milliseconds kYieldAfter{60'000}, kIdleTimeout{900'000};
    void setIdleLimits(std::chrono::milliseconds yieldAfter, std::chrono::milliseconds timeout);

    std::function<void(const QString&)> onLog;
    std::function<void()> onClientsChanged;

  private:
    struct Client;
    void accept();
    void serve(const std::shared_ptr<Client>& c);
    void schedule(const std::shared_ptr<Client>& c, std::chrono::milliseconds after = {});
    // Writes an answer; false when the client is gone or had to be dropped.
    bool deliver(const std::shared_ptr<Client>& c, const QByteArray& reply);
    // The longest a frequency read waits for the radio: well inside the client's own timeout.
    std::chrono::milliseconds settleWait() const;
    // graceful: what is written still goes out before the connection closes.
    void drop(const std::shared_ptr<Client>& c, const QString& why, bool graceful = false);
    void log(const QString& text) const;

    RigBackend& backend_;
    QString serverName_;
    bool rawCommands_ = false;
    bool readOnly_ = false;
    QTcpServer server_;
    std::chrono::milliseconds yieldAfter_ = kYieldAfter, idleTimeout_ = kIdleTimeout;
    QTimer idleCheck_;
    std::vector<std::shared_ptr<Client>> clients_;
};

}  // namespace tv
