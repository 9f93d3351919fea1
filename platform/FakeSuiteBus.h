#pragma once
// The suite link's carrier in memory, for tests and for programs built without a bus: it serves topics,
// keeps what was published, and plays the siblings (who is running, what they were sent).

#include "platform/SuiteBus.h"

#include <QStringList>

#include <functional>

#include <map>
#include <optional>
#include <set>
#include <vector>

namespace tv {

class EventLoop;

class FakeSuiteBus : public SuiteBus {
public:
    struct Published {
        QString topic, item, value;
    };
    struct Sent {
        QString application, topic, command;
    };

    bool connected() const override { return online; }
    bool addTopic(const QString& topic, ExecuteHandler execute, RequestHandler request) override;
    bool serve(const QString& application) override;
    void publish(const QString& topic, const QString& item, const QString& value) override;
    void unserve() override;
    bool isRunning(const QString& application) override;
    bool execute(const QString& application, const QString& topic, const QString& command, int timeoutMs) override;
    bool request(const QString& application, const QString& topic, const QString& item, QString* value,
                 int timeoutMs) override;
    bool watch(const QString& application, const QString& topic, ItemHandler handler) override;
    void executeLater(const QString& application, const QString& topic, const QString& command, int timeoutMs,
                      CallDone done) override;
    bool watchOwner(const QString& application, std::function<void(bool)> changed) override;
    void removeTopic(const QString& topic) override;

    // ---- a sibling's side ----
    // An execute string on one of this program's topics: accepted, refused, or nullopt when the
    // topic isn't served.
    std::optional<bool> send(const QString& topic, const QString& command);
    // An item read from one of this program's topics; a null string when the topic isn't served or
    // hasn't the item.
    QString read(const QString& topic, const QString& item);
    // The values published for one item, in order.
    QStringList publishedValues(const QString& topic, const QString& item) const;
    // A sibling starts or ends: those who watch its name are told.
    void setRunning(const QString& application, bool on);
    // The calls to hung siblings end now without an answer, as their time runs out.
    void expireUnanswered();
    bool serves(const QString& topic) const { return topics_.count(topic) > 0; }

    // With a loop, the answers of executeLater come through it, after the caller has returned, as on
    // the real bus; without one they come at once.
    EventLoop* loop = nullptr;
    std::set<QString> hung;          // running siblings that never answer

    bool online = true;
    QString served;                  // the application name held, "" when none
    std::set<QString> running;       // siblings that answer
    bool siblingsAccept = true;      // what a running sibling answers
    std::vector<Published> published;
    std::vector<Sent> attempts;      // every execute tried, running target or not
    std::vector<Sent> delivered;     // those that reached a running sibling
    int nameQueries = 0;             // isRunning questions asked of the bus

private:
    struct Topic {
        ExecuteHandler execute;
        RequestHandler request;
    };
    std::map<QString, Topic> topics_;
    std::vector<std::pair<QString, ItemHandler>> watchers_;  // topic of this program, handler
    std::vector<std::pair<QString, std::function<void(bool)>>> ownerWatchers_;
    std::vector<CallDone> unanswered_;
};

}  // namespace tv
