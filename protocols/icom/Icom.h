#pragma once
// The CI-V command language of Icom radios (and of the TenTec radios that speak it): the frames of the
// queue's commands, the decoding of what the bus carries back, and the polling steps.

#include "core/Protocol.h"
#include "core/RadioCatalogue.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace tv {

// Packed decimal digits of a frequency in kHz, least significant byte first: g1..g4, and g5 when
// fiveBytes. Each group is truncated after adding half a hertz, which absorbs binary fractions.
QByteArray IcomFrequencyBytes(double kHz, bool fiveBytes);
// A packed decimal byte as two decimal characters (for the log).
QString FormatBCDByte(std::uint8_t value);
// A frame FE FE addr E0 body FD.
QByteArray IcomFrame(std::uint8_t address, const QByteArray& body);

// What the makers who speak CI-V do differently.
struct CivDialect {
    const char* displayPrefix;
    // After the split and dual boxes the radio is asked again; a tune by record selects main first.
    bool asksAfterReceiverSwitch;
    InterrogationRule interrogation;
    // The model whose display settles only after a second, different frequency once split or the VFOs
    // were switched (nullptr: none).
    const char* nudgedModel;
};
extern const CivDialect kIcomDialect;
extern const CivDialect kTenTecCivDialect;

class IcomProtocol : public Protocol {
public:
    IcomProtocol(ProtocolContext& context, const RadioInfo& radio, const CivDialect& dialect);

    const ProtocolTraits& traits() const override { return traits_; }
    QString DisplayName(const RadioInfo& radio) const override;
    void BringUp() override;
    void Execute(const XcvrCmd& cmd) override;
    int ModeArgument(int mode) const override;
    int FilterGroupWidthHz(int mode, const QString& group) const override;
    bool ReadsLevel(RadioLevel) const override { return radio_.txLevels; }
    int InterrogationStep(int phase) override;
    void RequestFrequency() override;
    void RequestMode() override;
    void Decode(const QByteArray& message) override;

    // Some radios settle their display only after a second, different frequency: the next frequency
    // report is answered by a nudge away and back.
    bool FreqNudgePending = false;

private:
    void send(std::uint8_t address, const QByteArray& body);
    // The mode frame, and on a radio with a data mode the data sub-command when PKT asks for it or
    // when it has to be switched off again.
    void sendMode(std::uint8_t address, int mode, int filter);
    // A transmit level's reading (0..255) in the units clients read.
    void reportLevel(RadioLevel level, int reading);
    // The mode the radio reported, read with its data flag: USB with data on is PKT.
    int modeWithData(int reported) const;

    ProtocolContext& c_;
    const RadioInfo radio_;
    const CivDialect& dialect_;
    ProtocolTraits traits_;
    bool dataOn_ = false;     // the radio's data mode, as last read or set
    int reportedMode_ = -1;  // the mode byte of the last report: the data flag is read when it changes

    // The frames every poll sends, built once for the address in force: a poll costs no allocation.
    struct PollFrames {
        int address = -1;
        QByteArray frequency, mode, meter;
    };
    const PollFrames& polls(std::uint8_t address);
    PollFrames polls_;
};

}  // namespace tv
