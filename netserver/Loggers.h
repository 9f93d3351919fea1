#pragma once
// The loggers' two doors as part of the program: their settings (section Loggers) shown on the
// configuration window's "Loggers" tab, each change taking effect and stored at once, and their log lines.

#include "netserver/ContestUdp.h"
#include "netserver/WebLogger.h"

#include <functional>

namespace tv {

class Common;
class EventLoop;
class KavConfig;
class SettingsStore;

class Loggers {
  public:
    Loggers(RigBackend& rig, EventLoop& loop, SettingsStore& settings, Common& common, KavConfig& config);

    // Fills the tab from the settings and starts what they switch on.
    void Initialize();
    void Terminate();

    WebLogger web;
    ContestUdp udp;

  private:
    void applyWeb();
    void applyUdp();

    SettingsStore& settings_;
    Common& common_;
    KavConfig& config_;
    bool loading_ = false;
};

}  // namespace tv
