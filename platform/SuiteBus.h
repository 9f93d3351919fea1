#pragma once
// The suite link's carrier. Sibling programs are written against this mapping of DDE onto D-Bus:
//   application A          -> well-known bus name "ham.dde.A"
//   topic T                -> object path "/T", interface "ham.dde.Topic"
//   execute string         -> method Execute(s command) -> b accepted
//   item text              -> method Request(s item) -> s value
//   advise (linked client) -> signal ItemChanged(s item, s value) on the topic's object
// A name without an owner is a program that isn't running.

#include <QString>
#include <QVariant>

#include <functional>
#include <memory>

namespace tv {

class SuiteBus {
public:
    using ExecuteHandler = std::function<bool(const QString& command)>;
    using RequestHandler = std::function<QString(const QString& item)>;
    using ItemHandler = std::function<void(const QString& item, const QString& value)>;
    // A sibling that is slow to answer must not stall the loop for long.
    static constexpr int kClientTimeoutMs = 300;

    virtual ~SuiteBus() = default;

    // Whether there is a bus at all; without one the program runs on unlinked.
    virtual bool connected() const = 0;

    // ---- source role ----
    // Publishes a topic of this program; before or after serve().
    virtual bool addTopic(const QString& topic, ExecuteHandler execute, RequestHandler request) = 0;
    // Claims the application name. False when there is no bus or another program holds the name.
    virtual bool serve(const QString& application) = 0;
    // Tells linked clients of a new item text on a topic.
    virtual void publish(const QString& topic, const QString& item, const QString& value) = 0;
    // Gives up the name and all topics.
    virtual void unserve() = 0;

    // ---- client role ----
    virtual bool isRunning(const QString& application) = 0;
    // Sends an execute string; true only when the target accepted it. An absent target costs one
    // question to the bus.
    virtual bool execute(const QString& application, const QString& topic, const QString& command,
                         int timeoutMs = kClientTimeoutMs) = 0;
    // Reads an item; false when the target isn't there or didn't answer.
    virtual bool request(const QString& application, const QString& topic, const QString& item, QString* value,
                         int timeoutMs = kClientTimeoutMs) = 0;
    // Follows a topic's item changes, also once the target starts later.
    virtual bool watch(const QString& application, const QString& topic, ItemHandler handler) = 0;

    // How a call ended, for a client that must tell a busy program from one that said no.
    struct CallResult {
        enum Outcome { Answered, NotRunning, NoAnswer, Failed };
        Outcome outcome = Failed;
        QVariant value;  // the answer: accepted (bool) or the item's text
        QString error;   // what went wrong when there was no answer
    };
    // Execute and Request with their outcome told apart. The defaults know only answered or not.
    virtual CallResult executeCall(const QString& application, const QString& topic, const QString& command,
                                   int timeoutMs);
    virtual CallResult requestCall(const QString& application, const QString& topic, const QString& item,
                                   int timeoutMs);

    // ---- a conversation with a program that may hang ----
    using CallDone = std::function<void(const CallResult& result)>;
    // Sends an execute string and returns at once; `done` runs later on the loop with the outcome, at the
    // latest once timeoutMs have passed without an answer. The default waits for the answer.
    virtual void executeLater(const QString& application, const QString& topic, const QString& command,
                              int timeoutMs, CallDone done);
    // Tells whenever an application's name gains (true) or loses (false) its owner. False when it can't.
    virtual bool watchOwner(const QString& application, std::function<void(bool running)> changed);
    // Withdraws one topic of this program, leaving the name and the other topics.
    virtual void removeTopic(const QString& topic);
};

QString suiteBusName(const QString& application);
QString suiteObjectPath(const QString& topic);
extern const char* const kSuiteInterface;

// The session bus through QtDBus. Needs a QCoreApplication.
std::unique_ptr<SuiteBus> makeSessionSuiteBus();

}  // namespace tv
