#pragma once
// A family's protocol with the queue's work recorded instead of sent: for tests of the scheduler that
// care which records leave when, not what they look like on the wire.

#include "core/Protocol.h"
#include "core/SelectedRadio.h"

#include <memory>
#include <vector>

namespace tv::test {

// What the queue asked of a family, recorded instead of being sent.
struct Recording {
    std::vector<XcvrCmd> executed;
    std::vector<int> steps;
    int frequencyRequests = 0, modeRequests = 0;
    std::vector<QByteArray> decoded;  // the messages the receive path framed
};

// The family's own protocol for its traits and bring-up, with the queue's work recorded instead.
class RecordingProtocol : public Protocol {
public:
    RecordingProtocol(std::unique_ptr<Protocol> real, Recording& rec) : real_(std::move(real)), rec_(rec) {}
    const ProtocolTraits& traits() const override { return real_ ? real_->traits() : none_; }
    QString DisplayName(const RadioInfo& r) const override { return real_ ? real_->DisplayName(r) : QString(); }
    int ModeArgument(int mode) const override { return real_ ? real_->ModeArgument(mode) : 0; }
    QString OfflineCaption(bool r) const override { return real_ ? real_->OfflineCaption(r) : QString(); }
    QString FineStepToolTip(bool up) const override { return real_ ? real_->FineStepToolTip(up) : QString(); }
    QString SMeterFile() const override { return real_ ? real_->SMeterFile() : QString(); }
    QString LinkFaultCaption() const override { return real_ ? real_->LinkFaultCaption() : QString(); }
    void ClearLinkFault() override {
        if (real_) real_->ClearLinkFault();
    }
    void BringUp() override {
        if (real_) real_->BringUp();
    }
    void Execute(const XcvrCmd& cmd) override { rec_.executed.push_back(cmd); }
    int InterrogationStep(int phase) override {
        rec_.steps.push_back(phase);
        return phase >= 3 ? 0 : phase + 1;
    }
    void RequestFrequency() override { ++rec_.frequencyRequests; }
    void RequestMode() override { ++rec_.modeRequests; }
    void Decode(const QByteArray& message) override { rec_.decoded.push_back(message); }

private:
    std::unique_ptr<Protocol> real_;
    Recording& rec_;
    ProtocolTraits none_;
};

// Wraps the family of a letter so that its protocols record.
inline void recordFamily(SelectedRadio& radio, QChar supplier, Recording& rec) {
    const ProtocolFactory real = radio.family(supplier);
    radio.registerFamily(supplier, [real, &rec](ProtocolContext& c, const RadioInfo& r) {
        return std::make_unique<RecordingProtocol>(real ? real(c, r) : nullptr, rec);
    });
}

}  // namespace tv::test
