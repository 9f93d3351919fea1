#pragma once
// Yaesu radios: five-byte command blocks, and replies of a fixed length per request with no end mark, so
// that every request announces what it awaits and the queue holds back until it has come. The FT-767
// takes each command only inside a CAT handshake, run here one reply at a time.

#include "core/Protocol.h"
#include "core/RadioCatalogue.h"
#include "protocols/yaesu/YaesuModels.h"

#include <QByteArray>
#include <QString>

namespace tv {

class YaesuProtocol : public Protocol {
  public:
    YaesuProtocol(ProtocolContext& context, const RadioInfo& radio);

    const ProtocolTraits& traits() const override { return traits_; }
    QString DisplayName(const RadioInfo& radio) const override;
    void BringUp() override;
    void Execute(const XcvrCmd& cmd) override;
    int InterrogationStep(int phase) override;
    void RequestFrequency() override;
    void RequestMode() override;
    void Decode(const QByteArray& message) override;
    QString FineStepToolTip(bool up) const override;
    QString OfflineCaption(bool responding) const override;

    // The FT-767's handshake: where it stands.
    enum class Handshake { Idle, CatOn, Cmd, CatOff, Poll };
    Handshake handshake() const { return FT767State; }
    int readSelector() const { return YaesuReadSelector; }
    const YaesuModel* model() const { return model_; }

  private:
    void send(const QByteArray& block);
    void expect(int bytes, const QString& operation);
    void sendMeterRead();
    void sendFlagsRead();
    // A setting: sent as it is, or inside the FT-767's handshake, whose reply then has this many bytes.
    void sendSetting(const QByteArray& block, int handshakeReplyBytes);
    void setFilter(int filter, std::uint8_t code);
    void setSplit(bool on);
    void selectVfo(bool b);
    void copyVfo();
    void exchangeVfos();
    void key(int arg);
    void setPower(bool on);
    void queueVfoCheck();
    void copyVfoByQueue();
    void exchangeVfosByQueue();
    void setSecondFrequency(double kHz);

    void decodeOpData(const QByteArray& reply);
    void mpModeStep(const YaesuOpData& d);
    void decodeFlags(const QByteArray& reply);
    void Handle767Status(const QByteArray& reply);
    void Execute767Command(const QString& operation, int count, const QByteArray& command);
    void Poll767();
    // One step of the handshake on an echo (true) or a data block (false).
    void step767(bool echo);
    void Trace767(const QString& text);

    ProtocolContext& c_;
    const RadioInfo radio_;
    const YaesuModel* model_;
    ProtocolTraits traits_;

    Handshake FT767State = Handshake::Idle;
    QByteArray FT767Command;
    QString FT767ReplyOperation;
    int FT767ReplyCount = 0;
    bool FT767SplitOn = false;
    int YaesuReadSelector = 0;
    int LastFilterMode = -1;
};

}  // namespace tv
