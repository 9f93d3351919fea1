#pragma once
// The rig server's sockets: a TCP listener, and for each client its line buffer and its protocol
// session. Every limit that keeps a bad client from hurting the program or the other clients is here:
// the length of a line, the answers a client leaves unread, the number of clients, and how many lines
// one client gets answered before the others have their turn; and who may connect at all.
// A client's socket is read and written here directly, not through QTcpSocket: a client that shuts
// down its sending side after its last line still gets every answer (QTcpSocket closes the whole
// connection at the end of the input).

#include "netserver/Rigctl.h"

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QPair>
#include <QString>
#include <QTcpServer>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace tv {

class RigBackend;

// Hands each accepted connection over as its socket descriptor.
class RigListener : public QTcpServer {
  public:
    std::function<void(qintptr)> onConnection;

  protected:
    void incomingConnection(qintptr fd) override;
};

class RigServer : public QObject {
    Q_OBJECT
  public:
    // A longer line is no command of the protocol: the client is told so and dropped.
    static constexpr qsizetype kMaxLine = 4096;
    // Answers a client has left unread; past this it is dropped, so that it can't make us hoard them.
    static constexpr qint64 kMaxUnread = 256 * 1024;
    // A client whose answers wait unread (here and in the kernel) above kStallBytes for longer than
    // kStallLimit has stopped reading: it is treated as gone, and whatever it keyed is unkeyed. No
    // answer is this long, and a client that reads takes one within a moment.
    static constexpr qint64 kStallBytes = 16 * 1024;
    static constexpr std::chrono::milliseconds kStallLimit{3000}, kStallCheck{250};
    // A client that must log in and hasn't after this long is dropped (as rigctld does).
    static constexpr std::chrono::milliseconds kLoginDeadline{30'000};
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
    // Who may connect: loopback always; another address only when allowed lists it (empty: any), and
    // then it logs in with the password's secret (empty: none asked). For clients from now on.
    using Subnet = QPair<QHostAddress, int>;
    void setAccess(const QByteArray& loginSecret, const QList<Subnet>& allowed) {
        loginSecret_ = loginSecret;
        allowed_ = allowed;
    }
    static bool addressAllowed(const QHostAddress& peer, const QList<Subnet>& allowed);
    // Idle connections can't lock the others out: with every place taken, the one idle longest gives way
    // to a newcomer once it has been idle yieldAfter; any is closed after timeout without a line. Both
    // well above any client's poll period.
    static constexpr std::chrono::milliseconds kYieldAfter{60'000}, kIdleTimeout{900'000};
    void setIdleLimits(std::chrono::milliseconds yieldAfter, std::chrono::milliseconds timeout);

    std::function<void(const QString&)> onLog;
    std::function<void()> onClientsChanged;

  private:
    struct Client;
    void accept(qintptr fd);
    // Reads what has come, up to a line's worth: false when the client is gone or had to be dropped.
    bool receive(const std::shared_ptr<Client>& c);
    // Hands the kernel what it takes of the answers; false when the connection is broken.
    bool send(Client& c);
    void checkStalled();
    // A closing connection: its answers go out, then it is shut and the rest of its input ignored.
    void linger(const std::shared_ptr<Client>& c);
    void serve(const std::shared_ptr<Client>& c);
    void schedule(const std::shared_ptr<Client>& c, std::chrono::milliseconds after = {});
    // Writes an answer; false when the client is gone or had to be dropped.
    bool deliver(const std::shared_ptr<Client>& c, const QByteArray& reply);
    // The longest a frequency read waits for the radio: well inside the client's own timeout.
    std::chrono::milliseconds settleWait() const;
    // graceful: what is written still goes out before the connection closes.
    void drop(std::shared_ptr<Client> c, const QString& why, bool graceful = false);
    void log(const QString& text) const;

    RigBackend& backend_;
    QString serverName_;
    bool rawCommands_ = false;
    bool readOnly_ = false;
    QByteArray loginSecret_;
    QList<Subnet> allowed_;
    RigListener server_;
    QTimer stallCheck_;
    std::chrono::milliseconds yieldAfter_ = kYieldAfter, idleTimeout_ = kIdleTimeout;
    QTimer idleCheck_;
    std::vector<std::shared_ptr<Client>> clients_;
    std::vector<std::shared_ptr<Client>> closing_;  // dropped, their last answers still going out
};

}  // namespace tv
