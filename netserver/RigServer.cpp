#include "netserver/RigServer.h"

#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tv {

void RigListener::incomingConnection(qintptr fd) {
    if (onConnection)
        onConnection(fd);
    else
        ::close(int(fd));
}

namespace {

QHostAddress peerOf(int fd, quint16* port) {
    sockaddr_storage ss{};
    socklen_t len = sizeof ss;
    *port = 0;
    if (::getpeername(fd, reinterpret_cast<sockaddr*>(&ss), &len) != 0) return {};
    if (ss.ss_family == AF_INET) *port = ntohs(reinterpret_cast<const sockaddr_in&>(ss).sin_port);
    if (ss.ss_family == AF_INET6) *port = ntohs(reinterpret_cast<const sockaddr_in6&>(ss).sin6_port);
    const QHostAddress address(reinterpret_cast<const sockaddr*>(&ss));
    // A server on "::" sees IPv4 clients as ::ffff:a.b.c.d; the allow-list names them as IPv4.
    bool mapped = false;
    const quint32 v4 = address.toIPv4Address(&mapped);
    return mapped ? QHostAddress(v4) : address;
}

}  // namespace

struct RigServer::Client {
    Client(RigBackend& backend, const QString& serverName, bool rawCommands, bool readOnly, int socket,
           const QHostAddress& address, quint16 port)
        : fd(socket),
          readable(new QSocketNotifier(socket, QSocketNotifier::Read)),
          writable(new QSocketNotifier(socket, QSocketNotifier::Write)),
          session(backend, serverName, rawCommands, readOnly),
          peer(address.toString() + QLatin1Char(':') + QString::number(port)) {
        writable->setEnabled(false);
        session.setClient(QStringLiteral("rig client ") + peer);
    }
    ~Client() {
        // The notifiers may be the ones whose signal is being handled: they go when the loop is back.
        for (QSocketNotifier* n : {readable, writable}) {
            n->setEnabled(false);
            n->deleteLater();
        }
        ::close(fd);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    // The answers that wait, here and in the kernel (those the client's side hasn't taken).
    qint64 unread() const {
        int queued = 0;
        if (::ioctl(fd, SIOCOUTQ, &queued) != 0) queued = 0;
        return out.size() + queued;
    }

    int fd;
    QSocketNotifier* readable;
    QSocketNotifier* writable;
    RigctlSession session;
    QString peer;
    QByteArray pending;  // received, not yet a whole line
    QByteArray out;      // answers the kernel hasn't taken yet
    bool inputEnded = false;  // the client has sent its last byte (it may still read)
    bool broken = false;      // reset or failed: nothing more goes either way
    bool gone = false;
    bool busy = false;       // answering: a handler that lets events through must not start another pass
    bool scheduled = false;  // a pass for the lines left over is posted
    QElapsedTimer held;      // since when an answer waits for the radio
    QElapsedTimer active;    // since its last line (or its connection)
    QElapsedTimer stalled;   // since when its answers wait unread
};

RigServer::RigServer(RigBackend& backend, QString serverName, QObject* parent)
    : QObject(parent), backend_(backend), serverName_(std::move(serverName)) {
    server_.onConnection = [this](qintptr fd) { accept(fd); };
    QObject::connect(&idleCheck_, &QTimer::timeout, this, [this] {
        const auto all = clients_;
        for (const auto& c : all)
            if (c->active.elapsed() >= idleTimeout_.count())
                drop(c, QStringLiteral("closed: idle for %1 s").arg(c->active.elapsed() / 1000));
    });
    setIdleLimits(kYieldAfter, kIdleTimeout);
    QObject::connect(&stallCheck_, &QTimer::timeout, this, &RigServer::checkStalled);
    stallCheck_.start(kStallCheck);
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
    closing_.clear();
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

bool RigServer::addressAllowed(const QHostAddress& peer, const QList<Subnet>& allowed) {
    if (peer.isLoopback() || allowed.isEmpty()) return true;
    return std::any_of(allowed.begin(), allowed.end(),
                       [&](const Subnet& s) { return peer.isInSubnet(s.first, s.second); });
}

void RigServer::accept(qintptr descriptor) {
    const int fd = int(descriptor);
    quint16 port = 0;
    const QHostAddress address = peerOf(fd, &port);
    auto refuse = [&](const QString& why) {
        log(QStringLiteral("RigServer: refused %1: %2").arg(address.toString(), why));
        ::close(fd);
    };
    if (!addressAllowed(address, allowed_)) {
        refuse(QStringLiteral("not on the allow-list (setting NetServerAllowedClients)"));
        return;
    }
    if (int(clients_.size()) >= kMaxClients) {
        const auto idlest = std::max_element(clients_.begin(), clients_.end(), [](const auto& a, const auto& b) {
            return a->active.elapsed() < b->active.elapsed();
        });
        const std::shared_ptr<Client> victim = *idlest;
        if (victim->active.elapsed() >= yieldAfter_.count())
            drop(victim, QStringLiteral("gave way to a new client after %1 s idle").arg(victim->active.elapsed() / 1000));
    }
    if (int(clients_.size()) >= kMaxClients) {
        refuse(QStringLiteral("already %1 clients").arg(kMaxClients));
        return;
    }
    const int flags = ::fcntl(fd, F_GETFL);
    ::fcntl(fd, F_SETFL, flags | O_NONBLOCK);
    auto c = std::make_shared<Client>(backend_, serverName_, rawCommands_, readOnly_, fd, address, port);
    c->active.start();
    const bool login = !loginSecret_.isEmpty() && !address.isLoopback();
    if (login) c->session.requireLogin(loginSecret_);
    clients_.push_back(c);
    std::weak_ptr<Client> weak = c;
    QObject::connect(c->readable, &QSocketNotifier::activated, this, [this, weak] {
        if (auto c = weak.lock()) serve(c);
    });
    QObject::connect(c->writable, &QSocketNotifier::activated, this, [this, weak] {
        if (auto c = weak.lock(); c && !c->gone && !send(*c))
            drop(c, QStringLiteral("reset: ") + QString::fromLocal8Bit(std::strerror(errno)));
    });
    if (login)
        QTimer::singleShot(kLoginDeadline, this, [this, weak] {
            if (auto c = weak.lock(); c && !c->session.loggedIn())
                drop(c, QStringLiteral("dropped: no login within %1 s").arg(kLoginDeadline.count() / 1000));
        });
    log(QStringLiteral("RigServer: client %1 connected%2, %3 connected")
            .arg(c->peer, login ? QStringLiteral(" (must log in)") : QString())
            .arg(clients_.size()));
    if (onClientsChanged) onClientsChanged();
}

bool RigServer::send(Client& c) {
    while (!c.out.isEmpty() && !c.broken) {
        const ssize_t n = ::send(c.fd, c.out.constData(), size_t(c.out.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (n > 0) {
            c.out.remove(0, qsizetype(n));
        } else if (n < 0 && errno == EINTR) {
            continue;
        } else if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            break;
        } else {
            c.broken = true;
        }
    }
    c.writable->setEnabled(!c.out.isEmpty() && !c.broken);
    return !c.broken;
}

void RigServer::drop(std::shared_ptr<Client> c, const QString& why, bool graceful) {
    if (c->gone) return;
    c->gone = true;
    clients_.erase(std::remove(clients_.begin(), clients_.end(), c), clients_.end());
    c->pending.clear();
    c->readable->disconnect(this);
    c->writable->disconnect(this);
    c->readable->setEnabled(false);
    c->writable->setEnabled(false);
    if (graceful && !c->broken) linger(c);
    log(QStringLiteral("RigServer: client %1 %2, %3 connected").arg(c->peer, why).arg(clients_.size()));
    // A client that keyed and went, however it went, leaves no transmitter keyed behind it.
    backend_.clientGone(c->session.client());
    if (onClientsChanged) onClientsChanged();
}

void RigServer::linger(const std::shared_ptr<Client>& c) {
    closing_.push_back(c);
    std::weak_ptr<Client> weak = c;
    auto done = [this, weak] {
        if (auto c = weak.lock()) closing_.erase(std::remove(closing_.begin(), closing_.end(), c), closing_.end());
    };
    // What follows the last answer is read and thrown away: a socket closed with input unread would be
    // reset, and the reset may overtake the answers on their way.
    auto shut = [this, weak, done] {
        auto c = weak.lock();
        if (!c) return;
        c->writable->setEnabled(false);
        ::shutdown(c->fd, SHUT_WR);
        QObject::connect(c->readable, &QSocketNotifier::activated, this, [weak, done] {
            auto c = weak.lock();
            if (!c) return;
            char sink[4096];
            const ssize_t n = ::recv(c->fd, sink, sizeof sink, MSG_DONTWAIT);
            if (n == 0 || (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)) done();
        });
        c->readable->setEnabled(true);
    };
    QObject::connect(c->writable, &QSocketNotifier::activated, this, [this, weak, shut, done] {
        auto c = weak.lock();
        if (!c) return;
        if (!send(*c)) done();
        else if (c->out.isEmpty()) shut();
    });
    // A peer that won't take its last answers, or won't close, is cut off after a while.
    QTimer::singleShot(kCloseGrace, this, done);
    if (!send(*c))
        done();
    else if (c->out.isEmpty())
        shut();
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

bool RigServer::receive(const std::shared_ptr<Client>& c) {
    // No more than a line's worth at a time: a flood without line ends stays small here, and the rest
    // waits in the kernel.
    char buf[kMaxLine + 1];
    for (;;) {
        const ssize_t n = ::recv(c->fd, buf, sizeof buf, MSG_DONTWAIT);
        if (n > 0) {
            c->pending.append(buf, qsizetype(n));
            return true;
        }
        if (n == 0) {
            c->inputEnded = true;
            return true;
        }
        if (errno == EINTR) continue;
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            c->readable->setEnabled(true);  // told when more comes
            return true;
        }
        c->broken = true;
        drop(c, QStringLiteral("reset: ") + QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
}

void RigServer::serve(const std::shared_ptr<Client>& c) {
    if (c->gone || c->busy) return;
    c->busy = true;
    struct Release {
        Client& c;
        ~Release() { c.busy = false; }
    } release{*c};
    // Read only when a line is wanted; the notifier is turned on again when the socket has nothing.
    c->readable->setEnabled(false);

    for (int lines = 0; lines < kLinesPerTurn;) {
        if (c->gone) return;
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
        qsizetype end = c->pending.indexOf('\n');
        if (end < 0 && c->inputEnded && !c->pending.isEmpty()) end = c->pending.size();  // its last line
        if (end < 0) {
            if (c->pending.size() > kMaxLine) {
                c->out += "RPRT -1\n";
                drop(c, QStringLiteral("dropped: it sent a line longer than %1 bytes").arg(kMaxLine), true);
                return;
            }
            if (c->inputEnded) {
                // Everything it sent is answered: the connection closes once the answers are out.
                drop(c, QStringLiteral("closed"), true);
                return;
            }
            const qsizetype before = c->pending.size();
            if (!receive(c)) return;
            if (c->pending.size() == before && !c->inputEnded) return;  // nothing more yet
            continue;
        }
        const QByteArray line = c->pending.left(end);
        c->pending.remove(0, std::min(end + 1, c->pending.size()));
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
    if (c->gone) return false;
    c->out += reply;
    if (!send(*c)) {
        drop(c, QStringLiteral("reset: ") + QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    if (c->out.size() > kMaxUnread) {
        drop(c, QStringLiteral("dropped: it leaves its answers unread"));
        return false;
    }
    if (c->session.closing()) {
        drop(c, c->session.closeReason(), true);
        return false;
    }
    return true;
}

void RigServer::checkStalled() {
    const auto all = clients_;
    for (const auto& c : all) {
        if (c->unread() <= kStallBytes) {
            c->stalled.invalidate();
            continue;
        }
        if (!c->stalled.isValid()) c->stalled.start();
        if (c->stalled.elapsed() >= kStallLimit.count())
            drop(c, QStringLiteral("dropped: its answers have waited unread for %1 s")
                        .arg(double(c->stalled.elapsed()) / 1000.0, 0, 'f', 1));
    }
}

std::chrono::milliseconds RigServer::settleWait() const {
    const int timeout = backend_.caps().answerTimeoutMs;
    return std::chrono::milliseconds(std::clamp(timeout / 2, 200, 2000));
}

}  // namespace tv
