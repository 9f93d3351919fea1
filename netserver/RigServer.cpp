#include "netserver/RigServer.h"

#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

namespace tv {

struct RigServer::Client {
    Client(RigBackend& backend, const QString& serverName, bool rawCommands, bool readOnly, QTcpSocket* s)
        : socket(s),
          session(backend, serverName, rawCommands, readOnly),
          peer(s->peerAddress().toString() + QLatin1Char(':') + QString::number(s->peerPort())) {
        session.setClient(QStringLiteral("rig client ") + peer);
    }
    QPointer<QTcpSocket> socket;
    RigctlSession session;
    QString peer;
    QByteArray pending;  // received, not yet a whole line
    bool gone = false;
    bool busy = false;       // answering: a handler that lets events through must not start another pass
    bool scheduled = false;  // a pass for the lines left over is posted
    QElapsedTimer held;      // since when an answer waits for the radio
    QElapsedTimer active;    // since its last line (or its connection)
};

RigServer::RigServer(RigBackend& backend, QString serverName, QObject* parent)
    : QObject(parent), backend_(backend), serverName_(std::move(serverName)) {
    QObject::connect(&server_, &QTcpServer::newConnection, this, &RigServer::accept);
    QObject::connect(&idleCheck_, &QTimer::timeout, this, [this] {
        const auto all = clients_;
        for (const auto& c : all)
            if (c->active.elapsed() >= idleTimeout_.count())
                drop(c, QStringLiteral("closed: idle for %1 s").arg(c->active.elapsed() / 1000));
    });
    setIdleLimits(kYieldAfter, kIdleTimeout);
}

void RigServer::setIdleLimits(std::chrono::milliseconds yieldAfter, std::chrono::milliseconds timeout) {
    yieldAfter_ = yieldAfter;
    idleTimeout_ = timeout;
    idleCheck_.start(int(std::clamp<qint64>(timeout.count() / 4, 10, 30'000)));
}

RigServer::~RigServer() {
    // The owner is going too: nothing is told any more.
    onLog = nullptr;
    onClientsChanged = nullptr;
    close();
}

bool RigServer::listen(const QHostAddress& address, quint16 port) {
    close();
    return server_.listen(address, port);
}

void RigServer::close() {
    server_.close();
    const auto all = clients_;
    for (const auto& c : all) drop(c, QStringLiteral("server closed"));
}

void RigServer::log(const QString& text) const {
    if (onLog) onLog(text);
}

void RigServer::accept() {
    while (QTcpSocket* s = server_.nextPendingConnection()) {
        if (int(clients_.size()) >= kMaxClients) {
            const auto idlest = std::max_element(clients_.begin(), clients_.end(), [](const auto& a, const auto& b) {
                return a->active.elapsed() < b->active.elapsed();
            });
            if ((*idlest)->active.elapsed() >= yieldAfter_.count())
                drop(*idlest, QStringLiteral("gave way to a new client after %1 s idle")
                                  .arg((*idlest)->active.elapsed() / 1000));
        }
        if (int(clients_.size()) >= kMaxClients) {
            log(QStringLiteral("RigServer: refused %1: already %2 clients")
                    .arg(s->peerAddress().toString())
                    .arg(kMaxClients));
            s->abort();
            s->deleteLater();
            continue;
        }
        s->setReadBufferSize(kReadAhead);
        auto c = std::make_shared<Client>(backend_, serverName_, rawCommands_, readOnly_, s);
        c->active.start();
        clients_.push_back(c);
        std::weak_ptr<Client> weak = c;
        QObject::connect(s, &QTcpSocket::readyRead, this, [this, weak] {
            if (auto c = weak.lock()) serve(c);
        });
        QObject::connect(s, &QTcpSocket::disconnected, this, [this, weak] {
            if (auto c = weak.lock()) drop(c, QStringLiteral("closed"));
        });
        log(QStringLiteral("RigServer: client %1 connected, %2 connected").arg(c->peer).arg(clients_.size()));
        if (onClientsChanged) onClientsChanged();
    }
}

void RigServer::drop(const std::shared_ptr<Client>& c, const QString& why, bool graceful) {
    if (c->gone) return;
    c->gone = true;
    clients_.erase(std::remove(clients_.begin(), clients_.end(), c), clients_.end());
    if (QTcpSocket* s = c->socket) {
        s->disconnect(this);
        if (graceful && s->state() == QAbstractSocket::ConnectedState) {
            // The last answer still goes out; a peer that won't take it is cut off after a while.
            QObject::connect(s, &QTcpSocket::disconnected, s, &QObject::deleteLater);
            QTimer::singleShot(kCloseGrace, s, &QTcpSocket::abort);
            s->disconnectFromHost();
        } else {
            s->abort();
            s->deleteLater();
        }
    }
    c->pending.clear();
    log(QStringLiteral("RigServer: client %1 %2, %3 connected").arg(c->peer, why).arg(clients_.size()));
    // A client that keyed and went, however it went, leaves no transmitter keyed behind it.
    backend_.clientGone(c->session.client());
    if (onClientsChanged) onClientsChanged();
}

void RigServer::schedule(const std::shared_ptr<Client>& c, std::chrono::milliseconds after) {
    if (c->scheduled) return;
    c->scheduled = true;
    std::weak_ptr<Client> weak = c;
    QTimer::singleShot(after, this, [this, weak] {
        if (auto c = weak.lock()) {
            c->scheduled = false;
            serve(c);
        }
    });
}

void RigServer::serve(const std::shared_ptr<Client>& c) {
    if (c->gone || c->busy || !c->socket) return;
    c->busy = true;
    struct Release {
        Client& c;
        ~Release() { c.busy = false; }
    } release{*c};

    for (int lines = 0; lines < kLinesPerTurn;) {
        if (c->gone || !c->socket) return;
        if (c->session.holding()) {
            // Its next answer waits for the radio's report; its later lines wait behind it.
            if (!c->held.isValid()) c->held.start();
            const bool overdue = c->held.elapsed() >= settleWait().count();
            if (!deliver(c, c->session.resume(overdue))) return;
            if (c->session.holding()) {
                schedule(c, kSettlePoll);
                return;
            }
            c->held.invalidate();
        }
        QTcpSocket* s = c->socket;
        qsizetype end = c->pending.indexOf('\n');
        if (end < 0) {
            if (c->pending.size() > kMaxLine) {
                s->write("RPRT -1\n");
                drop(c, QStringLiteral("dropped: it sent a line longer than %1 bytes").arg(kMaxLine), true);
                return;
            }
            if (s->bytesAvailable() <= 0) return;
            // No more than a line's worth at a time: a flood without line ends stays small here.
            c->pending += s->read(kMaxLine + 1);
            continue;
        }
        const QByteArray line = c->pending.left(end);
        c->pending.remove(0, end + 1);
        ++lines;
        c->active.restart();
        if (!deliver(c, c->session.answer(line))) return;
    }
    // Its turn is over; what it has sent already is answered on the next turn of the loop.
    schedule(c);
}

bool RigServer::deliver(const std::shared_ptr<Client>& c, const QByteArray& reply) {
    // Answering may run the program's handlers, and they may let events through: the client may have
    // gone meanwhile.
    if (c->gone || !c->socket) return false;
    QTcpSocket* s = c->socket;
    if (!reply.isEmpty()) s->write(reply);
    if (s->bytesToWrite() > kMaxUnread) {
        s->flush();
        if (s->bytesToWrite() > kMaxUnread) {
            drop(c, QStringLiteral("dropped: it leaves its answers unread"));
            return false;
        }
    }
    if (c->session.closing()) {
        drop(c, QStringLiteral("quit"), true);
        return false;
    }
    return true;
}

std::chrono::milliseconds RigServer::settleWait() const {
    const int timeout = backend_.caps().answerTimeoutMs;
    return std::chrono::milliseconds(std::clamp(timeout / 2, 200, 2000));
}

}  // namespace tv
