#pragma once
// The configuration window's "Network" tab: each control shows its setting and stores it the moment it
// changes. The servers read their settings when they start: at the program's start, or when the
// operator restarts them from the tab.

#include <functional>

namespace tv {

class KavModule;

class KavConfigNetworkLogic {
public:
    explicit KavConfigNetworkLogic(KavModule& module);
    void connect();
    // Shows the settings as the servers read them (call after they have started).
    void ShowSettings();
    // The servers closed and started again with the stored settings.
    std::function<void()> RestartServers;

private:
    KavModule& m_;
    bool showing_ = false;  // filling the controls: nothing is stored
};

}  // namespace tv
