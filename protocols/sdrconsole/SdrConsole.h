#pragma once
// FlexRadio SDRs, driven through their console program rather than a port. The program and the console
// talk in execute strings on the desktop bus, both ways: a verb, and for most verbs "," and one value.
// The link itself outlives any one choice of radio and lives in SdrModule; this file holds the strings
// and the protocol object of a chosen radio.

#include "core/Protocol.h"

#include <QString>

#include <memory>
#include <optional>

namespace tv {

class SdrModule;

// System mode to the number the console takes. Not the inverse of GetModeFromSDR.
int GetSDRMode(int mode);
// The console's name of a mode (any case) to a system mode; 10 for a name with no match.
int GetModeFromSDR(const QString& text);

// What a string from the console asks for, by its verb. Every verb the table doesn't name is a split
// report, whatever it is called.
enum class ConsoleVerb { Start, VFOAFreq, VFOBFreq, VFOAMode, VFOBMode, SMeter, Split };

// One string from the console, decoded.
struct ConsoleReport {
    ConsoleVerb verb = ConsoleVerb::Split;
    QString value;                 // the text after the first ",", "" when there is none
    std::optional<double> number;  // the value as a number, when it is one
    int mode = 10;                 // the value as a system mode (mode verbs)
    bool on = false;               // the value is "on" in any case (split)
};
// Pure: any text at all gives a report.
ConsoleReport DecodeConsoleString(const QString& text);

// A frequency as the console takes it: MHz in general number format.
QString SDRFrequency(double kHz);

class SdrConsoleProtocol : public Protocol {
  public:
    SdrConsoleProtocol(ProtocolContext& context, const RadioInfo& radio, std::shared_ptr<SdrModule> link);
    ~SdrConsoleProtocol() override;

    const ProtocolTraits& traits() const override { return traits_; }
    QString DisplayName(const RadioInfo& radio) const override;
    void BringUp() override;
    void Execute(const XcvrCmd& cmd) override;
    bool SendString(const QByteArray& text) override;
    int InterrogationStep(int phase) override;
    void RequestFrequency() override;
    void RequestMode() override;
    // Nothing comes in on a line: the console's strings arrive on the bus (SdrModule).
    void Decode(const QByteArray&) override {}
    QString OfflineCaption(bool responding) const override;

  private:
    void send(const QString& text);
    void sendMeterPoll();

    ProtocolContext& c_;
    const bool hasMeter_;
    std::shared_ptr<SdrModule> link_;
    ProtocolTraits traits_;
};

}  // namespace tv
