#pragma once
// The rig server as part of the program: where it listens (settings of section General, and the
// command line over them), the log lines, and the status label of the main window.

#include "netserver/RigServer.h"

#include <QHostAddress>
#include <QString>

#include <optional>

namespace tv {

class Common;
class Label;
class RigBackend;
class SettingsStore;

// What the command line says about the server.
struct NetServerOptions {
    bool allowed = false;         // the program started from the command line runs it unless --no-net
    std::optional<quint16> port;  // --net-port, over the setting
};

class NetServer {
  public:
    static constexpr quint16 kDefaultPort = 4532;  // rigctld's own, which the clients offer first
    static constexpr const char* kDefaultAddress = "127.0.0.1";

    NetServer(RigBackend& rig, SettingsStore& settings, Common& common, Label& status, QString serverName);

    // Reads the settings and listens; a failure to listen is logged and shown, and the program goes on.
    void Initialize(const NetServerOptions& options);
    void Terminate();

    RigServer& server() { return server_; }
    // The address as the settings give it: loopback when the text names no address.
    static QHostAddress parseAddress(const QString& text, bool* valid = nullptr);

    // Who holds the transmitter, for the status line ("" when nobody does).
    void setTransmitOwner(const QString& owner) {
        transmitOwner_ = owner;
        showStatus();
    }
    // Clients' frequency and mode sets are locked out, for the status line.
    void setLocked(bool on) {
        locked_ = on;
        showStatus();
    }

    // A word from another door for the same line ("" to clear it).
    void setNote(const QString& note) {
        note_ = note;
        showStatus();
    }

  private:
    void showStatus();

    SettingsStore& settings_;
    Common& common_;
    Label& status_;
    RigServer server_;
    QHostAddress address_;
    quint16 port_ = kDefaultPort;
    QString failure_;  // why it isn't listening, when it was meant to
    QString transmitOwner_;
    QString note_;
    bool locked_ = false;
    bool enabled_ = false;
};

}  // namespace tv
