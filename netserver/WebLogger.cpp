#include "netserver/WebLogger.h"

#include "platform/EventLoop.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace tv {

namespace {
// A radio whose power setting the program reads gives it as a fraction of full; the families read it
// on a scale of 100 W, as the XML-RPC door reports it too.
constexpr double kFullPowerW = 100.0;
}  // namespace

WebLogger::WebLogger(RigBackend& rig, EventLoop& loop)
    : rig_(rig), loop_(loop), timer_(loop.createTimer()), net_(new QNetworkAccessManager(this)) {
    timer_->setInterval(int(kLookEvery.count()));
    timer_->onTick = [this] { look(); };
}

WebLogger::~WebLogger() {
    if (inFlight_) {
        inFlight_->disconnect(this);
        inFlight_->abort();
    }
}

void WebLogger::configure(const WebLoggerConfig& config) {
    const bool changedTarget =
        config.url != config_.url || config.key != config_.key || config.radio != config_.radio;
    config_ = config;
    if (changedTarget || !config.enabled) {
        // A new address or key deserves a try at once, and a report of its own.
        sentOnce_ = false;
        retryAtMs_ = 0;
        retryPause_ = 0ms;
        if (failing_) {
            failing_ = false;
            if (onStatus) onStatus(QString());
        }
    }
    timer_->setEnabled(config.enabled);
}

QUrl WebLogger::endpoint(const QString& url) {
    QString text = url.trimmed();
    if (!text.contains(QLatin1String("/api/radio"))) {
        while (text.endsWith(QLatin1Char('/'))) text.chop(1);
        // Both loggers answer under index.php whether or not the web server rewrites their addresses.
        if (!text.endsWith(QLatin1String("/index.php"))) text += QStringLiteral("/index.php");
        text += QStringLiteral("/api/radio");
    }
    return QUrl::fromUserInput(text);
}

QString WebLogger::modeName(int mode) {
    // By RigMode: the names Hamlib and the loggers' own CAT bridges use.
    static constexpr const char* kNames[] = {"LSB", "USB", "AM",  "CW",    "RTTY",
                                             "FM",  "WFM", "CWR", "RTTYR", "PKTUSB"};
    static_assert(std::size(kNames) == kRigModeCount);
    return mode >= 0 && mode < kRigModeCount ? QString::fromLatin1(kNames[mode]) : QString();
}

QByteArray WebLogger::body(const WebLoggerState& state, const WebLoggerConfig& config) {
    QJsonObject o;
    o.insert(QStringLiteral("key"), config.key);
    o.insert(QStringLiteral("radio"), config.radio);
    o.insert(QStringLiteral("frequency"), double(state.frequencyHz));
    o.insert(QStringLiteral("mode"), state.mode);
    if (state.rxFrequencyHz > 0) {
        o.insert(QStringLiteral("frequency_rx"), double(state.rxFrequencyHz));
        o.insert(QStringLiteral("mode_rx"), state.mode);
    }
    if (state.powerW >= 0) o.insert(QStringLiteral("power"), state.powerW);
    return QJsonDocument(o).toJson(QJsonDocument::Compact);
}

WebLoggerState WebLogger::current() const {
    WebLoggerState s;
    const bool split = rig_.split();
    s.frequencyHz = std::llround(split ? rig_.txFrequencyHz() : rig_.frequencyHz());
    if (split) s.rxFrequencyHz = std::llround(rig_.frequencyHz());
    s.mode = modeName(rig_.mode());
    if (rig_.caps().levels[size_t(RigLevel::RfPower)])
        if (const auto level = rig_.reportedLevel(RigLevel::RfPower))
            s.powerW = int(std::lround(*level * kFullPowerW));
    return s;
}

void WebLogger::look() {
    if (!config_.enabled || inFlight_ || config_.url.trimmed().isEmpty() || config_.key.isEmpty()) return;
    // A radio that doesn't answer, or hasn't told its frequency and mode yet, has no state to tell: the
    // logger's own time-out says it is gone.
    if (!rig_.responding() || rig_.frequencyHz() <= 0 || rig_.mode() < 0) return;
    const std::int64_t now = loop_.monotonicMs();
    if (now < retryAtMs_) return;
    const WebLoggerState state = current();
    const std::int64_t since = now - sentAtMs_;
    using std::chrono::milliseconds;
    const bool changed = state != sent_ && since >= milliseconds(kMinGap).count();
    // Failing, the pause is over: the last state goes again.
    const bool due = !sentOnce_ || failing_ || changed || since >= milliseconds(kHeartbeat).count();
    if (!due) return;
    if (rig_.caps().levels[size_t(RigLevel::RfPower)])
        rig_.level(RigLevel::RfPower);  // fresh for the next post
    post(state);
}

void WebLogger::post(const WebLoggerState& state) {
    QNetworkRequest request(endpoint(config_.url));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setRawHeader("Accept", "application/json");
    request.setTransferTimeout(int(std::chrono::milliseconds(kAnswerTimeout).count()));
    sent_ = state;
    sentOnce_ = true;
    sentAtMs_ = loop_.monotonicMs();
    inFlight_ = net_->post(request, body(state, config_));
    QNetworkReply* reply = inFlight_;
    QObject::connect(reply, &QNetworkReply::finished, this, [this, reply] { answered(reply); });
}

void WebLogger::answered(QNetworkReply* reply) {
    reply->deleteLater();
    if (reply != inFlight_) return;
    inFlight_ = nullptr;
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    QString why;
    if (reply->error() != QNetworkReply::NoError) {
        why = status ? QStringLiteral("HTTP %1").arg(status) : reply->errorString();
    } else {
        // The loggers answer a refused key or a wrong body with a status in the JSON, some with HTTP 200.
        const QJsonObject answer = QJsonDocument::fromJson(reply->readAll()).object();
        if (answer.value(QStringLiteral("status")).toString() == QLatin1String("failed"))
            why = QStringLiteral("refused: ") + answer.value(QStringLiteral("reason")).toString().left(200);
    }
    const QString where = endpoint(config_.url).toDisplayString(QUrl::RemoveUserInfo | QUrl::RemoveQuery);
    if (why.isEmpty()) {
        retryPause_ = 0ms;
        retryAtMs_ = 0;
        if (failing_) {
            failing_ = false;
            log(QStringLiteral("WebLogger: %1 takes the radio again").arg(where));
            if (onStatus) onStatus(QString());
        }
        return;
    }
    retryPause_ = retryPause_.count() == 0
                      ? std::chrono::milliseconds(kFirstRetry)
                      : std::min(retryPause_ * 2, std::chrono::milliseconds(kLongestRetry));
    retryAtMs_ = loop_.monotonicMs() + retryPause_.count();
    if (!failing_) {
        failing_ = true;
        log(QStringLiteral("WebLogger: %1 does not take the radio (%2); trying again with growing pauses")
                .arg(where, why));
        if (onStatus) onStatus(QStringLiteral("web logger not answering"));
    }
}

void WebLogger::log(const QString& line) const {
    if (!onLog) return;
    QString safe = line;
    // Whatever a server or the network layer says, the key doesn't reach the log.
    if (!config_.key.isEmpty()) safe.replace(config_.key, QStringLiteral("********"));
    onLog(safe);
}

}  // namespace tv
