// The web logger's posts as a stand-in logger on loopback receives them, with the timing on virtual
// time: the first post at once, a burst of changes as one post a second later with the last state, a
// post every 30 s when nothing changes; a logger that is down, answers 500 or refuses the key is tried
// again after 5, 10, 20 s and reported once, its recovery once; the key never reaches the log.

#include "netserver/WebLogger.h"

#include "FakeRig.h"
#include "platform/SimEventLoop.h"
#include "support/PtyPair.h"
#include "support/QtPrinters.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QtHttpServer/QAbstractHttpServer>
#include <QtHttpServer/QHttpServerRequest>
#include <QtHttpServer/QHttpServerResponder>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString kKey = QStringLiteral("wl5f3c9a1e-SECRET");

// The logger's radio API: records each post, answers as told.
class StandIn : public QAbstractHttpServer {
  public:
    struct Post {
        QString path;
        QJsonObject json;
    };
    QList<Post> posts;
    QHttpServerResponder::StatusCode status = QHttpServerResponder::StatusCode::Ok;
    QByteArray answer = R"({"status":"success"})";

  protected:
    bool handleRequest(const QHttpServerRequest& request, QTcpSocket* socket) override {
        posts.append({request.url().path(), QJsonDocument::fromJson(request.body()).object()});
        makeResponder(request, socket).write(answer, "application/json", status);
        return true;
    }
    void missingHandler(const QHttpServerRequest&, QTcpSocket*) override {}
};

class WebLoggerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        rig.c.levels[size_t(RigLevel::RfPower)] = true;
        rig.levels[size_t(RigLevel::RfPower)] = 0.5;
        logger.onLog = [this](const QString& line) { log << line; };
        logger.onStatus = [this](const QString& s) { status = s; };
        listen();
        logger.configure(
            {true, QStringLiteral("http://127.0.0.1:%1/wavelog/").arg(port), kKey, QStringLiteral("Shack")});
    }
    void listen() {
        auto* tcp = new QTcpServer(&standIn);
        ASSERT_TRUE(tcp->listen(QHostAddress::LocalHost, port));
        port = tcp->serverPort();
        standIn.bind(tcp);
    }
    // Down: the server and its open connections gone, so that the next post is refused.
    void close() {
        for (QTcpServer* s : standIn.servers()) delete s;
    }
    // Moves virtual time on; true when a post left in that time (then waits for its answer).
    bool postsWithin(int ms) {
        const qsizetype before = standIn.posts.size();
        for (int t = 0; t < ms && !logger.posting(); t += 50) loop.advance(50);
        if (!logger.posting()) return false;
        EXPECT_TRUE(waitFor([&] { return !logger.posting(); }));
        EXPECT_LE(standIn.posts.size(), before + 1);
        return true;
    }
    QJsonObject last() const { return standIn.posts.isEmpty() ? QJsonObject() : standIn.posts.last().json; }

    SimEventLoop loop;
    FakeRig rig;
    WebLogger logger{rig, loop};
    StandIn standIn;
    quint16 port = 0;
    QStringList log;
    QString status;
};

TEST_F(WebLoggerTest, PostsChangesAtMostOnceASecondAndEvery30s) {
    ASSERT_TRUE(postsWithin(250));
    ASSERT_EQ(standIn.posts.size(), 1);
    EXPECT_EQ(standIn.posts[0].path, QStringLiteral("/wavelog/index.php/api/radio"));
    EXPECT_EQ(QJsonDocument(last()).toJson(QJsonDocument::Compact),
              QByteArray(R"({"frequency":7010000,"key":")") + kKey.toLatin1() +
                  R"(","mode":"CW","power":50,"radio":"Shack"})");

    // A burst of tuning: nothing before a second has passed since the last post, then its end.
    rig.freq = 7011000;
    EXPECT_FALSE(postsWithin(500));
    rig.freq = 7012500;
    rig.mode_ = RigUSB;
    EXPECT_TRUE(postsWithin(500));
    EXPECT_EQ(last().value(QStringLiteral("frequency")).toInteger(), 7012500);
    EXPECT_EQ(last().value(QStringLiteral("mode")).toString(), QStringLiteral("USB"));

    // Split: the logger is told where the radio transmits and where it listens.
    rig.split_ = true;
    rig.txFreq = 7015000;
    EXPECT_TRUE(postsWithin(1100));
    EXPECT_EQ(last().value(QStringLiteral("frequency")).toInteger(), 7015000);
    EXPECT_EQ(last().value(QStringLiteral("frequency_rx")).toInteger(), 7012500);

    // Nothing changes: the next post after 30 s, not before.
    EXPECT_FALSE(postsWithin(29'500));
    EXPECT_TRUE(postsWithin(600));
    EXPECT_EQ(standIn.posts.size(), 4);
    EXPECT_TRUE(log.isEmpty()) << log.join(QLatin1Char('\n')).toStdString();
}

TEST_F(WebLoggerTest, RetriesALoggerThatIsDownWithGrowingPausesAndTellsItOnce) {
    ASSERT_TRUE(postsWithin(250));
    // The key refused, and named in the answer: the log says why, without the key.
    standIn.answer = R"({"status":"failed","reason":"invalid api key )" + kKey.toLatin1() + "\"}";
    rig.freq = 14074000;
    EXPECT_TRUE(postsWithin(1100));
    EXPECT_TRUE(logger.failing());
    EXPECT_EQ(status, QStringLiteral("web logger not answering"));
    // Down (connections refused), then up but failing with 500: the pauses grow, 5 s, 10 s, 20 s.
    close();
    EXPECT_FALSE(postsWithin(4'900));
    EXPECT_TRUE(postsWithin(200));
    listen();
    standIn.status = QHttpServerResponder::StatusCode::InternalServerError;
    EXPECT_FALSE(postsWithin(9'800));
    EXPECT_TRUE(postsWithin(300));
    ASSERT_EQ(log.size(), 1) << log.join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(log[0].contains(QStringLiteral("127.0.0.1:%1").arg(port)) &&
                log[0].contains(QStringLiteral("invalid api key")))
        << log[0].toStdString();

    // Taken again: told once, and the status line is clear.
    standIn.status = QHttpServerResponder::StatusCode::Ok;
    standIn.answer = R"({"status":"success"})";
    EXPECT_FALSE(postsWithin(19'700));
    EXPECT_TRUE(postsWithin(400));
    EXPECT_FALSE(logger.failing());
    EXPECT_TRUE(status.isEmpty());
    ASSERT_EQ(log.size(), 2);
    EXPECT_TRUE(log[1].contains(QStringLiteral("takes the radio again")));
    for (const QString& line : log) EXPECT_FALSE(line.contains(kKey)) << line.toStdString();
    EXPECT_EQ(last().value(QStringLiteral("frequency")).toInteger(), 14074000);
}

}  // namespace
}  // namespace tv::test
