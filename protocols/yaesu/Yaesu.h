#pragma once
// Yaesu radios: five-byte command blocks, and replies of a fixed length per request with no end mark.

#include "core/Protocol.h"
#include "core/RadioCatalogue.h"

namespace tv {

class YaesuProtocol : public Protocol {
public:
    YaesuProtocol(ProtocolContext& context, const RadioInfo& radio);

    const ProtocolTraits& traits() const override { return traits_; }
    QString DisplayName(const RadioInfo& radio) const override;
    void Execute(const XcvrCmd&) override {}
    int InterrogationStep(int phase) override { return phase; }
    void RequestFrequency() override {}
    void RequestMode() override {}
    void Decode(const QByteArray&) override {}
    int SilentPollInterval() const override;
    bool StepsWithOwnCommand() const override;
    QString OfflineCaption(bool responding) const override;

private:
    ProtocolContext& c_;
    const RadioInfo radio_;
    ProtocolTraits traits_;
};

}  // namespace tv
