#pragma once
// TenTec's own command sets: lines of text ended by a carriage return on a serial port (Argonaut V,
// Jupiter, Orion), and the Pegasus reached through files in a control folder. Each model fixes its
// port settings.

#include "core/Protocol.h"
#include "core/RadioCatalogue.h"

namespace tv {

class TenTecProtocol : public Protocol {
public:
    TenTecProtocol(ProtocolContext& context, const RadioInfo& radio);

    const ProtocolTraits& traits() const override { return traits_; }
    QString DisplayName(const RadioInfo& radio) const override;
    std::optional<FixedPortSettings> FixedPort() const override;
    bool UsesControlFolder() const override;
    bool TakesSplitFrequencyAlone() const override { return UsesControlFolder(); }
    void Execute(const XcvrCmd&) override {}
    int InterrogationStep(int phase) override { return phase; }
    void RequestFrequency() override {}
    void RequestMode() override {}
    void Decode(const QByteArray&) override {}

private:
    const RadioInfo radio_;
    ProtocolTraits traits_;
};

}  // namespace tv
