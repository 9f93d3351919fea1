#pragma once
// The link to the SDR console, which lives for the whole run: it offers the topic on which the console
// executes its strings, sends the program's strings to the console without ever waiting for it, and
// follows the console's name on the bus, so that a console that ends or hangs costs the program nothing
// and one that comes back and says "start" is linked again.

#include "core/Protocol.h"
#include "forms/Controls.h"
#include "protocols/sdrconsole/SdrConsole.h"

#include <QString>

#include <memory>

namespace tv {

class SdrModule : public FamilyLink {
  public:
    // The console as the bus knows it, and the topic of this program that it executes its strings on.
    static constexpr const char* kConsoleApplication = "SDRConsole";
    static constexpr const char* kConsoleTopic = "frmOmbrelDDE";
    static constexpr const char* kClientTopic = "SDRDDEClient";
    // The console's link timeout: fifty tenths of a second.
    static constexpr int kLinkTimeoutMs = 5000;
    // A console that has just said "start" is given this long to finish starting before it is linked.
    static constexpr int kStartDelayMs = 1000;

    SdrModule() = default;
    ~SdrModule() override;
    SdrModule(const SdrModule&) = delete;
    SdrModule& operator=(const SdrModule&) = delete;

    // ---- FamilyLink ----
    void Initialize(ProtocolContext& context) override;
    void Terminate() override { Disconnect(); }
    void OtherFamilyChosen() override;

    // ---- the link ----
    // The console announced itself: linked a moment later, if the radio chosen is one of the console's.
    void Start();
    void Connect();
    void Disconnect();
    void ConnectionClosed();
    bool Connected() const { return SDRConnected; }
    // One string to the console. Nothing is sent while the console's name has no owner, except by
    // Connect: a string into the void would only be a failure to report.
    void SendSDRCommand(const QString& text);
    // A call to the console is still unanswered (polls wait for it rather than pile up behind it).
    bool awaitingAnswer() const { return unanswered_ > 0; }

    // ---- the console's strings ----
    // Always accepted.
    bool LinkExecute(const QString& text);

    // The protocol of the chosen radio, while it is one of the console's.
    void attach(SdrConsoleProtocol* protocol) { protocol_ = protocol; }
    void detach(SdrConsoleProtocol* protocol) {
        if (protocol_ == protocol) protocol_ = nullptr;
    }

    std::unique_ptr<Timer> SDRStartTimer;

  private:
    bool RadioIsFlexRadio() const;
    void send(const QString& text, bool evenIfAbsent);
    void loadForm();
    void unloadForm();
    // What the console reports, by its verb.
    void SetSDRVFOAFreq(const ConsoleReport& r) { setVFOFreq(0, r); }
    void SetSDRVFOBFreq(const ConsoleReport& r) { setVFOFreq(1, r); }
    void SetSDRVFOAMode(const ConsoleReport& r) { setVFOMode(0, r); }
    void SetSDRVFOVMode(const ConsoleReport& r) { setVFOMode(1, r); }
    void SetSDRSplit(const ConsoleReport& r);
    void SetSDRSMeter(const ConsoleReport& r);
    void setVFOFreq(int vfo, const ConsoleReport& r);
    void setVFOMode(int vfo, const ConsoleReport& r);

    ProtocolContext* c_ = nullptr;
    SdrConsoleProtocol* protocol_ = nullptr;
    bool SDRConnected = false;
    bool formLoaded_ = false;
    bool watching_ = false;
    // Whether the console's name has an owner, as far as the bus has told; assumed until it says not.
    bool consolePresent_ = true;
    bool noBusLogged_ = false;
    int unanswered_ = 0;
    // Answers and name changes that come after this object is gone are not heard.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace tv
