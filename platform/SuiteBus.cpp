#include "platform/SuiteBus.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QFileInfo>
#include <QObject>

#include <map>
#include <vector>

namespace tv {

const char* const kSuiteInterface = "ham.dde.Topic";

QString suiteBusName(const QString& application) { return QStringLiteral("ham.dde.") + application; }

QString suiteObjectPath(const QString& topic) { return QLatin1Char('/') + topic; }

SuiteBus::CallResult SuiteBus::executeCall(const QString& application, const QString& topic, const QString& command,
                                           int timeoutMs) {
    if (!isRunning(application)) return {CallResult::NotRunning, {}, suiteBusName(application) + QStringLiteral(" is not running")};
    return {CallResult::Answered, execute(application, topic, command, timeoutMs), {}};
}

SuiteBus::CallResult SuiteBus::requestCall(const QString& application, const QString& topic, const QString& item,
                                           int timeoutMs) {
    if (!isRunning(application)) return {CallResult::NotRunning, {}, suiteBusName(application) + QStringLiteral(" is not running")};
    QString value;
    if (!request(application, topic, item, &value, timeoutMs)) return {CallResult::Failed, {}, QStringLiteral("no item ") + item};
    return {CallResult::Answered, value, {}};
}

void SuiteBus::executeLater(const QString& application, const QString& topic, const QString& command, int timeoutMs,
                            CallDone done) {
    const CallResult r = executeCall(application, topic, command, timeoutMs);
    if (done) done(r);
}

bool SuiteBus::watchOwner(const QString&, std::function<void(bool)>) { return false; }

void SuiteBus::removeTopic(const QString&) {}

// One topic on the bus: its methods call the program's handlers, its signal carries the advise.
class SuiteTopicObject : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "ham.dde.Topic")

public:
    SuiteBus::ExecuteHandler onExecute;
    SuiteBus::RequestHandler onRequest;

public slots:
    bool Execute(const QString& command) { return onExecute ? onExecute(command) : false; }
    // A null text is an item the topic doesn't have: the caller gets an error, not an empty text.
    QString Request(const QString& item) {
        const QString value = onRequest ? onRequest(item) : QString();
        if (value.isNull() && calledFromDBus())
            sendErrorReply(QStringLiteral("ham.dde.Error.UnknownItem"), QStringLiteral("no item ") + item);
        return value;
    }

signals:
    void ItemChanged(const QString& item, const QString& value);
};

// Receives a watched topic's signal.
class SuiteItemWatcher : public QObject {
    Q_OBJECT

public:
    explicit SuiteItemWatcher(SuiteBus::ItemHandler h) : handler(std::move(h)) {}
    SuiteBus::ItemHandler handler;

public slots:
    void itemChanged(const QString& item, const QString& value) {
        if (handler) handler(item, value);
    }
};

namespace {

// Without an address the library would try to launch a bus of its own; a program without a session
// bus simply has no suite link.
QDBusConnection sessionBusIfAny() {
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") &&
        (runtime.isEmpty() || !QFileInfo::exists(QString::fromLocal8Bit(runtime) + QStringLiteral("/bus"))))
        return QDBusConnection(QStringLiteral("tolvane-no-session-bus"));
    return QDBusConnection::sessionBus();
}

class QtSuiteBus : public SuiteBus {
public:
    QtSuiteBus() : conn_(sessionBusIfAny()) {}
    ~QtSuiteBus() override { unserve(); }

    bool connected() const override { return conn_.isConnected(); }

    bool addTopic(const QString& topic, ExecuteHandler execute, RequestHandler request) override {
        if (!connected()) return false;
        auto obj = std::make_unique<SuiteTopicObject>();
        obj->onExecute = std::move(execute);
        obj->onRequest = std::move(request);
        const QString path = suiteObjectPath(topic);
        conn_.unregisterObject(path);
        if (!conn_.registerObject(path, obj.get(),
                                  QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals))
            return false;
        topics_[topic] = std::move(obj);
        return true;
    }

    bool serve(const QString& application) override {
        if (!connected()) return false;
        const QString name = suiteBusName(application);
        if (!conn_.registerService(name)) return false;
        served_ = name;
        return true;
    }

    void publish(const QString& topic, const QString& item, const QString& value) override {
        const auto it = topics_.find(topic);
        if (it != topics_.end()) emit it->second->ItemChanged(item, value);
    }

    void unserve() override {
        if (!connected()) return;
        for (auto& [topic, obj] : topics_) conn_.unregisterObject(suiteObjectPath(topic));
        topics_.clear();
        if (!served_.isEmpty()) conn_.unregisterService(served_);
        served_.clear();
    }

    bool isRunning(const QString& application) override {
        if (!connected()) return false;
        QDBusConnectionInterface* bus = conn_.interface();
        if (!bus) return false;
        const QDBusReply<bool> reply = bus->isServiceRegistered(suiteBusName(application));
        return reply.isValid() && reply.value();
    }

    bool execute(const QString& application, const QString& topic, const QString& command, int timeoutMs) override {
        const CallResult r = executeCall(application, topic, command, timeoutMs);
        return r.outcome == CallResult::Answered && r.value.toBool();
    }

    bool request(const QString& application, const QString& topic, const QString& item, QString* value,
                 int timeoutMs) override {
        const CallResult r = requestCall(application, topic, item, timeoutMs);
        if (r.outcome != CallResult::Answered) return false;
        if (value) *value = r.value.toString();
        return true;
    }

    CallResult executeCall(const QString& application, const QString& topic, const QString& command,
                           int timeoutMs) override {
        return call(application, topic, QStringLiteral("Execute"), command, timeoutMs);
    }

    CallResult requestCall(const QString& application, const QString& topic, const QString& item,
                           int timeoutMs) override {
        return call(application, topic, QStringLiteral("Request"), item, timeoutMs);
    }

    void executeLater(const QString& application, const QString& topic, const QString& command, int timeoutMs,
                      CallDone done) override {
        const QString name = suiteBusName(application);
        if (!connected()) {
            if (done) done({CallResult::NotRunning, {}, QStringLiteral("there is no session bus")});
            return;
        }
        QDBusMessage msg = QDBusMessage::createMethodCall(name, suiteObjectPath(topic),
                                                          QString::fromLatin1(kSuiteInterface), QStringLiteral("Execute"));
        msg << command;
        // The watcher belongs to the bus: should the bus go first, the answer is simply not heard.
        auto* watcher = new QDBusPendingCallWatcher(conn_.asyncCall(msg, timeoutMs), &owner_);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &owner_,
                         [done, name, timeoutMs](QDBusPendingCallWatcher* w) {
                             w->deleteLater();
                             if (done) done(outcome(w->reply(), name, timeoutMs));
                         });
    }

    bool watchOwner(const QString& application, std::function<void(bool)> changed) override {
        if (!connected()) return false;
        auto* w = new QDBusServiceWatcher(suiteBusName(application), conn_,
                                          QDBusServiceWatcher::WatchForOwnerChange, &owner_);
        QObject::connect(w, &QDBusServiceWatcher::serviceOwnerChanged, &owner_,
                         [changed](const QString&, const QString&, const QString& newOwner) {
                             if (changed) changed(!newOwner.isEmpty());
                         });
        return true;
    }

    void removeTopic(const QString& topic) override {
        const auto it = topics_.find(topic);
        if (it == topics_.end()) return;
        conn_.unregisterObject(suiteObjectPath(topic));
        topics_.erase(it);
    }

    bool watch(const QString& application, const QString& topic, ItemHandler handler) override {
        if (!connected()) return false;
        auto w = std::make_unique<SuiteItemWatcher>(std::move(handler));
        if (!conn_.connect(suiteBusName(application), suiteObjectPath(topic), QString::fromLatin1(kSuiteInterface),
                           QStringLiteral("ItemChanged"), w.get(), SLOT(itemChanged(QString, QString))))
            return false;
        watchers_.push_back(std::move(w));
        return true;
    }

private:
    // A blocking call with a bound: the loop isn't re-entered, so no handler runs inside it.
    CallResult call(const QString& application, const QString& topic, const QString& method, const QString& arg,
                    int timeoutMs) {
        const QString name = suiteBusName(application);
        if (!isRunning(application)) return {CallResult::NotRunning, {}, name + QStringLiteral(" is not running")};
        QDBusMessage msg = QDBusMessage::createMethodCall(name, suiteObjectPath(topic),
                                                          QString::fromLatin1(kSuiteInterface), method);
        msg << arg;
        return outcome(conn_.call(msg, QDBus::Block, timeoutMs), name, timeoutMs);
    }

    static CallResult outcome(const QDBusMessage& reply, const QString& name, int timeoutMs) {
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
            return {CallResult::Answered, reply.arguments().first(), {}};
        const QDBusError::ErrorType kind = QDBusError(reply).type();
        // Running, but it didn't answer in time: busy (or stopped), which is not a refusal.
        if (kind == QDBusError::NoReply || kind == QDBusError::Timeout || kind == QDBusError::TimedOut)
            return {CallResult::NoAnswer, {}, QStringLiteral("no answer from %1 within %2 ms").arg(name).arg(timeoutMs)};
        if (kind == QDBusError::ServiceUnknown) return {CallResult::NotRunning, {}, name + QStringLiteral(" is not running")};
        return {CallResult::Failed, {}, reply.errorMessage().isEmpty() ? reply.errorName() : reply.errorMessage()};
    }

    QDBusConnection conn_;
    QObject owner_;  // parent of the pending calls and name watchers
    QString served_;
    std::map<QString, std::unique_ptr<SuiteTopicObject>> topics_;
    std::vector<std::unique_ptr<SuiteItemWatcher>> watchers_;
};

}  // namespace

std::unique_ptr<SuiteBus> makeSessionSuiteBus() { return std::make_unique<QtSuiteBus>(); }

}  // namespace tv

#include "SuiteBus.moc"
