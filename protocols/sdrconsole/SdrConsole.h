#pragma once
// FlexRadio SDRs, driven through their console program rather than a port.

#include "core/Protocol.h"

namespace tv {

class SdrConsoleProtocol : public Protocol {
public:
    explicit SdrConsoleProtocol(ProtocolContext& context);

    const ProtocolTraits& traits() const override { return traits_; }
    QString DisplayName(const RadioInfo& radio) const override;
    void BringUp() override;
    void Execute(const XcvrCmd&) override {}
    int InterrogationStep(int phase) override { return phase; }
    void RequestFrequency() override {}
    void RequestMode() override {}
    void Decode(const QByteArray&) override {}
    QString OfflineCaption(bool responding) const override;

private:
    ProtocolContext& c_;
    ProtocolTraits traits_;
    bool connected_ = false;  // the console link comes with its own work
};

}  // namespace tv
