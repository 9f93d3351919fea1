#pragma once
// The radio pushed to a web logger's radio API (Wavelog, Cloudlog), so that the logger's QSO form
// follows the dial: on each change of frequency, mode or power, at most once a second with the last
// state always sent, and every 30 s in any case. A logger that is down is tried again with growing
// pauses; its failure and its recovery are told once each. Nothing here waits on the network.

#include "netserver/RigBackend.h"

#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

class QNetworkAccessManager;
class QNetworkReply;

namespace tv {

class EventLoop;
class LoopTimer;

using namespace std::chrono_literals;

struct WebLoggerConfig {
    bool enabled = false;
    QString url;    // the logger's address, as its users know it ("https://log.example.org/")
    QString key;    // the logger's API key: sent in the body only, never written to the log
    QString radio;  // the name the logger shows the radio under
};

// What one post says.
struct WebLoggerState {
    std::int64_t frequencyHz = 0;    // where the radio transmits
    std::int64_t rxFrequencyHz = 0;  // where it listens, in split only
    QString mode;
    int powerW = -1;  // -1 unknown
    bool operator==(const WebLoggerState& o) const {
        return frequencyHz == o.frequencyHz && rxFrequencyHz == o.rxFrequencyHz && mode == o.mode &&
               powerW == o.powerW;
    }
    bool operator!=(const WebLoggerState& o) const { return !(*this == o); }
};

class WebLogger : public QObject {
  public:
    // A dial turned fast must not become a flood of posts.
    static constexpr auto kMinGap = 1000ms;
    // The loggers take a radio that has said nothing for a while as switched off.
    static constexpr auto kHeartbeat = 30s;
    // How often the radio's state is compared with the last post (the program's own picture: no radio
    // traffic).
    static constexpr auto kLookEvery = 200ms;
    // The first pause after a failure, doubled on each further one up to the longest.
    static constexpr auto kFirstRetry = 5s;
    static constexpr auto kLongestRetry = 300s;
    // A logger that neither answers nor refuses within this counts as down.
    static constexpr auto kAnswerTimeout = 10s;

    WebLogger(RigBackend& rig, EventLoop& loop);
    ~WebLogger() override;

    // Takes effect at the next look; turning it off drops any retry pause.
    void configure(const WebLoggerConfig& config);
    const WebLoggerConfig& config() const { return config_; }
    bool failing() const { return failing_; }
    // A post is on its way and not yet answered.
    bool posting() const { return inFlight_ != nullptr; }

    // Log lines (the key is never in them) and the status: "" while the logger takes the posts.
    std::function<void(const QString&)> onLog;
    std::function<void(const QString&)> onStatus;

    // The radio API under the logger's address; an address that names the API already is kept.
    static QUrl endpoint(const QString& url);
    static QByteArray body(const WebLoggerState& state, const WebLoggerConfig& config);
    // The program's modes under the names the loggers' CAT clients send.
    static QString modeName(int mode);
    WebLoggerState current() const;

  private:
    void look();
    void post(const WebLoggerState& state);
    void answered(QNetworkReply* reply);
    void log(const QString& line) const;

    RigBackend& rig_;
    EventLoop& loop_;
    std::unique_ptr<LoopTimer> timer_;
    QNetworkAccessManager* net_;
    WebLoggerConfig config_;
    QNetworkReply* inFlight_ = nullptr;
    bool sentOnce_ = false;
    WebLoggerState sent_;
    std::int64_t sentAtMs_ = 0;
    bool failing_ = false;
    std::chrono::milliseconds retryPause_{0};
    std::int64_t retryAtMs_ = 0;
};

}  // namespace tv
