#include "platform/FakeSuiteBus.h"

#include "platform/EventLoop.h"

namespace tv {

bool FakeSuiteBus::addTopic(const QString& topic, ExecuteHandler execute, RequestHandler request) {
    if (!online) return false;
    topics_[topic] = Topic{std::move(execute), std::move(request)};
    return true;
}

bool FakeSuiteBus::serve(const QString& application) {
    if (!online || running.count(application)) return false;
    served = application;
    return true;
}

void FakeSuiteBus::publish(const QString& topic, const QString& item, const QString& value) {
    if (!online || !topics_.count(topic)) return;
    published.push_back({topic, item, value});
    for (auto& [t, h] : watchers_)
        if (t == topic && h) h(item, value);
}

void FakeSuiteBus::unserve() {
    topics_.clear();
    served.clear();
}

bool FakeSuiteBus::isRunning(const QString& application) {
    ++nameQueries;
    return online && running.count(application) > 0;
}

bool FakeSuiteBus::execute(const QString& application, const QString& topic, const QString& command, int) {
    attempts.push_back({application, topic, command});
    if (!isRunning(application)) return false;
    delivered.push_back({application, topic, command});
    return siblingsAccept;
}

bool FakeSuiteBus::request(const QString& application, const QString& topic, const QString& item, QString* value,
                           int) {
    if (!online || application != served) return false;
    const QString v = read(topic, item);
    if (v.isNull()) return false;
    if (value) *value = v;
    return true;
}

bool FakeSuiteBus::watch(const QString&, const QString& topic, ItemHandler handler) {
    if (!online) return false;
    watchers_.emplace_back(topic, std::move(handler));
    return true;
}

std::optional<bool> FakeSuiteBus::send(const QString& topic, const QString& command) {
    const auto it = topics_.find(topic);
    if (it == topics_.end()) return std::nullopt;
    return it->second.execute ? it->second.execute(command) : false;
}

QString FakeSuiteBus::read(const QString& topic, const QString& item) {
    const auto it = topics_.find(topic);
    if (it == topics_.end()) return QString();
    return it->second.request ? it->second.request(item) : QString();
}

QStringList FakeSuiteBus::publishedValues(const QString& topic, const QString& item) const {
    QStringList out;
    for (const auto& p : published)
        if (p.topic == topic && p.item == item) out << p.value;
    return out;
}

void FakeSuiteBus::executeLater(const QString& application, const QString& topic, const QString& command, int,
                                CallDone done) {
    attempts.push_back({application, topic, command});
    CallResult r{CallResult::NotRunning, {}, suiteBusName(application) + QStringLiteral(" is not running")};
    if (isRunning(application)) {
        delivered.push_back({application, topic, command});
        if (hung.count(application)) {
            unanswered_.push_back(std::move(done));
            return;
        }
        r = {CallResult::Answered, siblingsAccept, {}};
    }
    if (!done) return;
    if (loop)
        loop->post([done, r] { done(r); });
    else
        done(r);
}

bool FakeSuiteBus::watchOwner(const QString& application, std::function<void(bool)> changed) {
    if (!online) return false;
    ownerWatchers_.emplace_back(application, std::move(changed));
    return true;
}

void FakeSuiteBus::removeTopic(const QString& topic) { topics_.erase(topic); }

void FakeSuiteBus::setRunning(const QString& application, bool on) {
    if ((running.count(application) > 0) == on) return;
    if (on)
        running.insert(application);
    else
        running.erase(application);
    for (auto& [app, h] : ownerWatchers_)
        if (app == application && h) h(on);
}

void FakeSuiteBus::expireUnanswered() {
    std::vector<CallDone> calls;
    calls.swap(unanswered_);
    for (CallDone& done : calls)
        if (done) done({CallResult::NoAnswer, {}, QStringLiteral("no answer")});
}

}  // namespace tv
