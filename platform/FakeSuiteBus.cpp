#include "platform/FakeSuiteBus.h"

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

}  // namespace tv
