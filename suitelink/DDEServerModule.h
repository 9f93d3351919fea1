#pragma once
// The suite link as a whole: it publishes the command topic and the display topic under the program's
// name, announces the program's start and end to its siblings, keeps the live items, and carries out
// the tuning verbs.

#include "suitelink/DDECommon.h"
#include "suitelink/DDEServer.h"

#include <QString>

#include <memory>

namespace tv {

class KavModule;
class SuiteBus;

// A client link object: a target "application|topic", an item, and whether it is open.
struct DDELink {
    QString LinkTopic;
    QString LinkItem;
    int LinkMode = 0;
};

class DDEServerModule {
public:
    static constexpr const char* kApplication = "Tolvane";
    static constexpr const char* kCommandTopic = "DDEServer";
    static constexpr const char* kDisplayTopic = "TolvaneUI";
    static constexpr const char* kClientTopic = "DDEClient";
    static constexpr const char* kConnectionItem = "RequestDDEConnection";
    static constexpr const char* kDisplayItem = "FreqDisplay";
    // Told of the start, in this order.
    static const char* const kStartClients[6];
    // The launcher: the only one told of the end.
    static constexpr const char* kLauncher = "Sorrelgate";

    DDEServerModule(KavModule& module, SuiteBus& bus, SuiteActions actions = {});
    ~DDEServerModule();
    DDEServerModule(const DDEServerModule&) = delete;
    DDEServerModule& operator=(const DDEServerModule&) = delete;

    // Installs the start-up, shutdown and item hooks into the core.
    void connect();

    void Initialize();
    void Terminate();
    void InformClient(const QString& client);

    void DoQSY(const QString& frequency);
    void DoFreqMode(const QString& frequency, const QString& mode);
    void DoSplit(const QString& frequency);

    // Writes a live item the way the core does, so that everyone who follows the items hears it.
    void WriteItem(const QString& item, const QString& text);

    SuiteBus& bus() const { return bus_; }

    SuiteActions actions;
    DDECommon dde;
    DDEServer server;
    DDELink DDEStart;
    // Declared for the suite's form and never linked.
    DDELink DDECommand;

private:
    void announce(const QString& command);
    void publishFreqDisplay();
    bool takesSplitFrequencyAlone() const;
    void logUnavailable(const QString& why);

    KavModule& m_;
    SuiteBus& bus_;
    bool unavailableLogged_ = false;
    bool displayChained_ = false;
    QString lastFreqDisplay_;
    // The frequency box outlives this module; its chained handler checks this first.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace tv
