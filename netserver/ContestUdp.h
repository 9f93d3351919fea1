#pragma once
// The contest loggers' radio info on UDP: a RadioInfo XML datagram for the radio in use, sent to a list
// of host:port on each change and every 10 s, and (when switched on) a loopback listener for the
// Radio_SetFrequency and Radio_SetMode datagrams, which tune through the program's queue like any client.
// Frequencies in these datagrams are in tens of Hz.

#include "netserver/RigBackend.h"

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

class QUdpSocket;

namespace tv {

class EventLoop;
class LoopTimer;

using namespace std::chrono_literals;

struct ContestRadioInfo {
    QString station;  // this computer's name
    int radioNr = 1;
    std::int64_t rxHz = 0, txHz = 0;
    QString mode;
    bool transmitting = false, split = false, connected = false;
    QString radioName;
    bool operator==(const ContestRadioInfo& o) const {
        return station == o.station && radioNr == o.radioNr && rxHz == o.rxHz && txHz == o.txHz &&
               mode == o.mode && transmitting == o.transmitting && split == o.split &&
               connected == o.connected && radioName == o.radioName;
    }
    bool operator!=(const ContestRadioInfo& o) const { return !(*this == o); }
};

QByteArray RadioInfoDatagram(const ContestRadioInfo& info);

// A command datagram, read. radioNr 0: the datagram names no radio.
struct ContestCommand {
    enum Kind { SetFrequency, SetMode } kind = SetFrequency;
    int radioNr = 0;
    std::int64_t hz = 0;
    int mode = -1;  // a RigMode; SSB is told by the frequency
    bool sideband = false;
};
// None for anything else, with the reason in why.
std::optional<ContestCommand> ParseContestCommand(const QByteArray& datagram, QString* why);

struct ContestUdpConfig {
    bool send = false;
    QString destinations = QStringLiteral("127.0.0.1:12060");  // host:port, separated by spaces or commas
    bool listen = false;
    quint16 listenPort = 12061;
};

class ContestUdp : public QObject {
  public:
    static constexpr quint16 kDefaultPort = 12060;  // where the contest loggers listen by default
    // The program's picture of the radio is compared this often: a change leaves at most this late.
    static constexpr auto kLookEvery = 100ms;
    // The loggers take a radio that says nothing for long as gone.
    static constexpr auto kResendEvery = 10s;
    // Dropped datagrams are logged at most this often.
    static constexpr auto kIgnoredLogGap = 1s;

    ContestUdp(RigBackend& rig, EventLoop& loop);
    ~ContestUdp() override;

    void configure(const ContestUdpConfig& config);
    void stop();
    bool listening() const;
    quint16 listenPort() const;
    std::function<void(const QString&)> onLog;

    // host:port items; a bad item is reported in bad and left out.
    static QList<std::pair<QHostAddress, quint16>> parseDestinations(const QString& text, QStringList* bad);
    ContestRadioInfo current() const;
    // A datagram as the listener takes it: acted on, or logged and dropped.
    void handle(const QByteArray& datagram, const QString& from);

  private:
    void look();
    void readPending();
    void log(const QString& line) const;

    RigBackend& rig_;
    EventLoop& loop_;
    std::unique_ptr<LoopTimer> timer_;
    QUdpSocket* out_;
    QUdpSocket* in_ = nullptr;
    ContestUdpConfig config_;
    QList<std::pair<QHostAddress, quint16>> to_;
    bool sentOnce_ = false;
    ContestRadioInfo sent_;
    std::int64_t sentAtMs_ = 0;
    QString lastSendError_;
    std::int64_t quietUntilMs_ = 0;
    int unlogged_ = 0;
};

}  // namespace tv
