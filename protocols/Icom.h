#pragma once
// The CI-V command language of Icom radios (and of the TenTec radios that speak it): the frames of the
// queue's commands, the decoding of what the bus carries back, and the filter groups of these radios.

#include "core/Protocol.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace tv {

class KavModule;

// Packed decimal digits of a frequency in kHz, least significant byte first: g1..g4, and g5 when
// fiveBytes. Each group is truncated after adding half a hertz, which absorbs binary fractions.
QByteArray IcomFrequencyBytes(double kHz, bool fiveBytes);
// A packed decimal byte as two decimal characters (for the log).
QString FormatBCDByte(std::uint8_t value);

class IcomProtocol : public Protocol {
public:
    explicit IcomProtocol(KavModule& module) : m_(module) {}

    void Execute(const XcvrCmd& cmd) override;
    int InterrogationStep(int phase) override;
    void RequestFrequency() override;
    void RequestMode() override;
    void Decode() override;
    void BringUp() override;

    // The filter group the radio reported or was commanded with, remembered for the current mode.
    void UpdateIcomXcvrFilter(int index);
    // Fills the filter group list and the per-mode memory of groups for the selected radio.
    void InitializeIcomFilterSettings();
    // A frame FE FE addr E0 body FD.
    static QByteArray frame(std::uint8_t address, const QByteArray& body);

private:
    void send(std::uint8_t address, const QByteArray& body);
    std::uint8_t currentAddress() const;
    void showRejection();

    KavModule& m_;
};

}  // namespace tv
