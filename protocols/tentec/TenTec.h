#pragma once
// TenTec's own command sets: lines of text ended by a carriage return on a serial port (Argonaut V,
// Jupiter, Orion), and the Pegasus reached through files in a control folder. Each model fixes its
// port settings.

#include "core/Protocol.h"
#include "core/RadioCatalogue.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

namespace tv {

// ---- pure encoders and decoders ----

// Whole hertz, rounded, in four bytes, most significant first (Argonaut V, Jupiter).
QByteArray JupiterFreqString(double hertz);
// The Orion's frequency text: MHz in the shortest form ("14.25").
QString OrionFreqText(double kHz);
// Mode bytes sent, and the mode of a reply's digit character: the two directions differ on purpose.
int JupiterMode(int mode);
int OrionMode(int mode);
int GetModeFromJupiterStatus(char digit);
int GetModeFromOrionStatus(char digit);
// The Pegasus's mode names: "" for a mode it has no name for; 10 for a name it doesn't know.
QString PegasusMode(int mode);
int GetModeFromPegasusStatus(const QString& name);

// What one carriage-return-ended reply says. `orion` picks the Orion's "@"-led replies.
struct TenTecReply {
    enum Kind {
        Ignored,
        FreqA,
        FreqB,
        Vfo,
        Modes,
        ModeA,
        ModeB,
        Split,
        SplitDual,
        Meter,
        MeterText,
        Refusal
    };
    Kind kind = Ignored;
    double kHz = 0;
    int vfo = 0;
    int modeA = 10, modeB = 10;
    bool split = false, dual = false;
    double meter = 0;
    QString text;  // the frequency text, the KV letters, the meter text, or the refused bytes
};
TenTecReply DecodeTenTecMessage(const QByteArray& message, bool orion);

// "PEGASUS.OUT": line 1 the frequency in MHz, line 2 the mode name. Fewer than two lines is no reading.
struct PegasusReading {
    double kHz = 0;
    int mode = 10;
};
std::optional<PegasusReading> ReadPegasusOut(const QByteArray& text);

// ---- the protocol ----

struct TenTecModel;

class TenTecProtocol : public Protocol {
  public:
    TenTecProtocol(ProtocolContext& context, const RadioInfo& radio);

    const ProtocolTraits& traits() const override { return traits_; }
    QString DisplayName(const RadioInfo& radio) const override;
    void Execute(const XcvrCmd& cmd) override;
    int InterrogationStep(int phase) override;
    void RequestFrequency() override;
    void RequestMode() override;
    void Decode(const QByteArray& message) override;
    QString LinkFaultCaption() const override { return folderError_; }
    void ClearLinkFault() override;

    // The Pegasus bridge: the wished state into "PEGASUS.IN", the radio's state out of "PEGASUS.OUT".
    void PegasusUpdate(const QString& freq1, const QString& mode1, const QString& freq2,
                       const QString& mode2);
    void PollPegasus();

  private:
    void send(const QByteArray& text);
    QByteArray freqCommand(char vfo, double kHz) const;
    void sendKv(bool request, bool dual);
    // Steps 1 to 3 of both Pegasus procedures: the folder, or "" after a complaint.
    QString controlFolder();
    void setFolderError(const QString& text);

    ProtocolContext& c_;
    const RadioInfo radio_;
    const TenTecModel* model_;
    ProtocolTraits traits_;
    QString folderError_;
    // "PEGASUS.OUT" as last read: an unchanged file isn't read again.
    QDateTime outTime_;
    qint64 outSize_ = -1;
    std::optional<PegasusReading> outReading_;
};

}  // namespace tv
