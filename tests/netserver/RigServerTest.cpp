// The rig server on real loopback sockets with a fake radio: several clients at once, each with its own
// half-lines; and the clients that must not hurt the others: garbage, a megabyte without a line end,
// hundreds of connections dropped at once, one that never reads its answers, one too many.

#include "netserver/RigServer.h"

#include "FakeRig.h"
#include "support/PtyPair.h"
#include "support/QtPrinters.h"

#include <QRandomGenerator>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace tv::test {
namespace {

class RigServerTest : public ::testing::Test {
protected:
    void SetUp() override {
        server.onLog = [this](const QString& line) { log << line; };
        server.onClientsChanged = [this] { ++changes; };
        ASSERT_TRUE(server.listen(QHostAddress::LocalHost, 0)) << server.errorString().toStdString();
    }
    std::unique_ptr<QTcpSocket> connectClient() {
        auto s = std::make_unique<QTcpSocket>();
        s->connectToHost(QHostAddress::LocalHost, server.serverPort());
        EXPECT_TRUE(s->waitForConnected(5000));
        return s;
    }
    // Sends the text and waits until the answer so far ends as expected.
    QByteArray ask(QTcpSocket& s, const QByteArray& text, const QByteArray& expectedEnd) {
        s.write(text);
        QByteArray got;
        waitFor([&] {
            got += s.readAll();
            return got.endsWith(expectedEnd);
        });
        return got;
    }
    bool logged(const QString& text) const {
        for (const QString& l : log)
            if (l.contains(text)) return true;
        return false;
    }

    FakeRig rig;
    RigServer server{rig, QStringLiteral("Tolvane")};
    QStringList log;
    int changes = 0;
};

TEST_F(RigServerTest, ServesSeveralClientsEachWithItsOwnHalfLines) {
    auto a = connectClient(), b = connectClient();
    ASSERT_TRUE(waitFor([&] { return server.clientCount() == 2; }));
    a->write("f");
    EXPECT_EQ(ask(*b, "m\n", "500\n"), QByteArray("CW\n500\n"));
    EXPECT_EQ(ask(*a, "\n+v\n", "RPRT 0\n"), QByteArray("7010000\nget_vfo:\nVFO: VFOA\nRPRT 0\n"));
    // A set from one is what the other reads next.
    EXPECT_EQ(ask(*a, "F 14025500\n", "RPRT 0\n"), QByteArray("RPRT 0\n"));
    EXPECT_EQ(ask(*b, "f\n", "\n"), QByteArray("14025500\n"));
    // Many lines at once are all answered, in order, whatever the turns.
    QByteArray many, expected;
    for (int i = 0; i < 500; ++i) {
        many += "f\nt\n";
        expected += "14025500\n0\n";
    }
    EXPECT_EQ(ask(*b, many, expected), expected);
    EXPECT_EQ(ask(*a, "q\n", "RPRT 0\n"), QByteArray("RPRT 0\n"));
    EXPECT_TRUE(waitFor([&] { return server.clientCount() == 1 && a->state() == QAbstractSocket::UnconnectedState; }));
    EXPECT_EQ(changes, 3);
}

TEST_F(RigServerTest, BadClientsAreCutOffOrAnsweredAndTheOthersStillServed) {
    auto good = connectClient();
    auto stillServed = [&] { return ask(*good, "f\n", "\n") == "7010000\n"; };

    // Garbage: answered line by line with errors, or cut off; never a crash.
    {
        auto g = connectClient();
        QRandomGenerator rnd(4532);
        QByteArray junk(64 * 1024, 0);
        for (char& c : junk) c = char(rnd.bounded(256));
        g->write(junk);
        EXPECT_TRUE(waitFor([&] { return g->readAll().contains("RPRT -1") || g->state() != QAbstractSocket::ConnectedState; }));
        EXPECT_TRUE(stillServed());
    }
    // A megabyte without a line end: told it is malformed, and dropped long before the end of it.
    {
        auto l = connectClient();
        l->write(QByteArray(1024 * 1024, 'x'));
        QByteArray got;
        EXPECT_TRUE(waitFor([&] {
            got += l->readAll();
            return l->state() == QAbstractSocket::UnconnectedState;
        }, 10000));
        EXPECT_EQ(got, QByteArray("RPRT -1\n"));
        EXPECT_TRUE(logged(QStringLiteral("longer than 4096 bytes")));
        EXPECT_TRUE(stillServed());
    }
    // Five hundred connections opened and dropped, twenty at a time.
    for (int batch = 0; batch < 25; ++batch) {
        std::vector<std::unique_ptr<QTcpSocket>> burst;
        for (int i = 0; i < 20; ++i) {
            burst.push_back(std::make_unique<QTcpSocket>());
            burst.back()->connectToHost(QHostAddress::LocalHost, server.serverPort());
        }
        ASSERT_TRUE(waitFor([&] {
            return std::all_of(burst.begin(), burst.end(),
                               [](const auto& s) { return s->state() == QAbstractSocket::ConnectedState; });
        }));
        for (auto& s : burst) s->abort();
        ASSERT_TRUE(waitFor([&] { return server.clientCount() == 1; })) << server.clientCount();
    }
    EXPECT_TRUE(stillServed());
    // One that asks and asks and never reads: dropped once its unread answers pass the limit.
    {
        auto n = connectClient();
        n->setReadBufferSize(1);
        n->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4096);
        QByteArray requests;
        for (int i = 0; i < 1000; ++i) requests += "\\dump_state\n";
        bool dropped = false;
        for (int round = 0; round < 60 && !dropped; ++round) {
            n->write(requests);
            dropped = waitFor([&] { return logged(QStringLiteral("leaves its answers unread")); }, 200);
        }
        EXPECT_TRUE(dropped);
        EXPECT_TRUE(stillServed());
    }
    EXPECT_EQ(server.clientCount(), 1);
}

TEST_F(RigServerTest, OneClientTooManyIsTurnedAwayAndClosingEndsThemAll) {
    std::vector<std::unique_ptr<QTcpSocket>> clients;
    for (int i = 0; i < RigServer::kMaxClients; ++i) clients.push_back(connectClient());
    ASSERT_TRUE(waitFor([&] { return server.clientCount() == RigServer::kMaxClients; }));
    auto extra = connectClient();
    EXPECT_TRUE(waitFor([&] { return extra->state() == QAbstractSocket::UnconnectedState; }));
    EXPECT_TRUE(logged(QStringLiteral("refused")));
    EXPECT_EQ(server.clientCount(), RigServer::kMaxClients);
    server.close();
    EXPECT_EQ(server.clientCount(), 0);
    EXPECT_FALSE(server.isListening());
    EXPECT_TRUE(waitFor([&] { return clients.front()->state() == QAbstractSocket::UnconnectedState; }));
}

}  // namespace
}  // namespace tv::test
