// The rig server on loopback sockets with a fake radio: several clients at once with their own
// half-lines; and the clients that must not hurt the others: garbage, a megabyte without a line end,
// five hundred connections dropped, one that never reads its answers, one too many.

#include "netserver/RigServer.h"

#include "FakeRig.h"
#include "support/PtyPair.h"
#include "support/QtPrinters.h"

#include <QRandomGenerator>
#include <QTcpSocket>

#include <sys/socket.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace tv::test {
namespace {

class RigServerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        server.onLog = [this](const QString& line) { log += line + QLatin1Char('\n'); };
        ASSERT_TRUE(server.listen(QHostAddress::LocalHost, 0));
    }
    std::unique_ptr<QTcpSocket> client() {
        auto s = std::make_unique<QTcpSocket>();
        s->connectToHost(QHostAddress::LocalHost, server.serverPort());
        return s;
    }
    // Sends the text and collects the answer until it ends as expected.
    static QByteArray ask(QTcpSocket& s, const QByteArray& text, const QByteArray& end) {
        s.write(text);
        QByteArray got;
        waitFor([&] { return (got += s.readAll()).endsWith(end); });
        return got;
    }
    static bool closed(QTcpSocket& s) { return s.state() == QAbstractSocket::UnconnectedState; }

    QString log;  // before the server: it logs while it closes
    FakeRig rig;
    RigServer server{rig, QStringLiteral("Tolvane")};
};

TEST_F(RigServerTest, ClientsHaveTheirOwnLinesAndBadOnesAreCutOffWhileTheOthersAreServed) {
    auto good = client(), other = client();
    // Half a line from one, a whole one from the other; then the rest, and a set the other reads.
    good->write("f");
    EXPECT_EQ(ask(*other, "m\n", "500\n"), QByteArray("CW\n500\n"));
    EXPECT_EQ(ask(*good, "\n+v\nF 14025500\n", "RPRT 0\nRPRT 0\n"),
              QByteArray("7010000\nget_vfo:\nVFO: VFOA\nRPRT 0\nRPRT 0\n"));
    // A thousand lines at once are all answered in order, over several turns of the loop.
    const QByteArray many = QByteArray("f\nt\n").repeated(500),
                     expected = QByteArray("14025500\n0\n").repeated(500);
    EXPECT_EQ(ask(*other, many, expected), expected);
    EXPECT_EQ(ask(*other, "q\n", "\n"), QByteArray("RPRT 0\n"));
    EXPECT_TRUE(waitFor([&] { return server.clientCount() == 1 && closed(*other); }));
    auto stillServed = [&] { return ask(*good, "f\n", "\n") == "14025500\n"; };

    auto garbage = client();
    QRandomGenerator rnd(4532);
    QByteArray junk(64 * 1024, 0);
    for (char& c : junk) c = char(rnd.bounded(256));
    garbage->write(junk);
    EXPECT_TRUE(waitFor([&] { return garbage->readAll().contains("RPRT -") || closed(*garbage); }));
    EXPECT_TRUE(stillServed());

    // A megabyte without a line end: told it is malformed, and dropped long before the end of it.
    auto longLine = client();
    longLine->write(QByteArray(1024 * 1024, 'x'));
    QByteArray got;
    EXPECT_TRUE(waitFor(
        [&] {
            got += longLine->readAll();
            return closed(*longLine);
        },
        10000));
    EXPECT_EQ(got, QByteArray("RPRT -1\n"));
    EXPECT_TRUE(log.contains(QStringLiteral("longer than 4096 bytes")));
    EXPECT_TRUE(stillServed());
    garbage.reset();
    longLine.reset();

    for (int batch = 0; batch < 25; ++batch) {
        std::vector<std::unique_ptr<QTcpSocket>> burst(20);
        for (auto& s : burst) s = client();
        ASSERT_TRUE(waitFor([&] {
            return std::all_of(burst.begin(), burst.end(),
                               [](const auto& s) { return s->state() == QAbstractSocket::ConnectedState; });
        }));
        for (auto& s : burst) s->abort();
        ASSERT_TRUE(waitFor([&] { return server.clientCount() == 1; })) << server.clientCount();
    }
    EXPECT_TRUE(stillServed());

    // Asks and asks and never reads: dropped once its unread answers pass the limit.
    auto deaf = client();
    deaf->setReadBufferSize(1);
    deaf->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4096);
    const QByteArray requests = QByteArray("\\dump_state\n").repeated(1000);
    for (int round = 0; round < 60 && !log.contains(QStringLiteral("leaves its answers unread")); ++round) {
        deaf->write(requests);
        waitFor([&] { return log.contains(QStringLiteral("leaves its answers unread")); }, 200);
    }
    EXPECT_TRUE(log.contains(QStringLiteral("leaves its answers unread")));
    EXPECT_TRUE(stillServed());
    EXPECT_EQ(server.clientCount(), 1);

    std::vector<std::unique_ptr<QTcpSocket>> crowd;
    for (int i = 1; i < RigServer::kMaxClients; ++i) crowd.push_back(client());
    ASSERT_TRUE(waitFor([&] { return server.clientCount() == RigServer::kMaxClients; }));
    auto extra = client();
    EXPECT_TRUE(waitFor([&] { return closed(*extra); }));
    EXPECT_TRUE(log.contains(QStringLiteral("refused")));
    EXPECT_TRUE(stillServed());
    server.close();
    EXPECT_EQ(server.clientCount(), 0);
    EXPECT_TRUE(waitFor([&] { return closed(*good); }));
}

}  // namespace
}  // namespace tv::test

namespace tv::test {
namespace {

// Idle connections can't lock the others out: with every place taken, the one idle longest gives way to
// a newcomer, and a connection that sends nothing for long enough is closed.
TEST_F(RigServerTest, IdleConnectionsGiveWayAndTimeOut) {
    using namespace std::chrono_literals;
    server.setIdleLimits(0ms, 60'000ms);
    std::vector<std::unique_ptr<QTcpSocket>> crowd;
    for (int i = 0; i < RigServer::kMaxClients; ++i) {
        crowd.push_back(client());
        ASSERT_TRUE(waitFor([&] { return server.clientCount() == i + 1; }));
    }
    EXPECT_EQ(ask(*crowd.front(), "f\n", "\n"), QByteArray("7010000\n")) << "the first one is busy now";
    auto newcomer = client();
    EXPECT_EQ(ask(*newcomer, "f\n", "\n"), QByteArray("7010000\n"));
    auto gaveWay = [&] { return std::count_if(crowd.begin(), crowd.end(), [](const auto& c) { return closed(*c); }); };
    EXPECT_TRUE(waitFor([&] { return gaveWay() == 1; })) << "an idle one made room";
    EXPECT_FALSE(closed(*crowd.front())) << "not the busy one";
    EXPECT_TRUE(log.contains(QStringLiteral("gave way to a new client")));
    server.setIdleLimits(60'000ms, 300ms);
    EXPECT_TRUE(waitFor([&] { return server.clientCount() == 0; }, 10000)) << server.clientCount();
    EXPECT_TRUE(log.contains(QStringLiteral("closed: idle for")));
}

}  // namespace
}  // namespace tv::test

namespace tv::test {
namespace {

// A client that shuts down its sending side after its last line still gets every answer before the
// server closes; and only loopback and the listed addresses may connect.
TEST_F(RigServerTest, HalfClosedClientsGetEveryAnswerAndOnlyListedAddressesConnect) {
    std::vector<std::unique_ptr<QTcpSocket>> clients(20);
    for (auto& s : clients) {
        s = client();
        ASSERT_TRUE(s->waitForConnected(5000));
        s->write("f\nm\nt\n\\get_lock_mode\n");
        ASSERT_TRUE(s->waitForBytesWritten(5000));
        ::shutdown(int(s->socketDescriptor()), SHUT_WR);
    }
    const QByteArray expected = "7010000\nCW\n500\n0\n0\nRPRT 0\n";
    std::vector<QByteArray> got(clients.size());
    EXPECT_TRUE(waitFor([&] {
        for (size_t i = 0; i < clients.size(); ++i) got[i] += clients[i]->readAll();
        return std::all_of(clients.begin(), clients.end(), [](const auto& s) { return closed(*s); });
    }));
    for (const QByteArray& answers : got) EXPECT_EQ(answers, expected);
    EXPECT_EQ(server.clientCount(), 0);

    const QList<RigServer::Subnet> allowed = {QHostAddress::parseSubnet(QStringLiteral("192.0.2.0/24")),
                                              QHostAddress::parseSubnet(QStringLiteral("2001:db8::7"))};
    EXPECT_TRUE(RigServer::addressAllowed(QHostAddress(QStringLiteral("192.0.2.77")), allowed));
    EXPECT_TRUE(RigServer::addressAllowed(QHostAddress(QStringLiteral("2001:db8::7")), allowed));
    EXPECT_TRUE(RigServer::addressAllowed(QHostAddress(QHostAddress::LocalHost), allowed));
    EXPECT_FALSE(RigServer::addressAllowed(QHostAddress(QStringLiteral("198.51.100.1")), allowed));
    EXPECT_TRUE(RigServer::addressAllowed(QHostAddress(QStringLiteral("198.51.100.1")), {}));
}

}  // namespace
}  // namespace tv::test
