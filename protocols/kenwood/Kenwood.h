#pragma once
// The Kenwood command language: plain ASCII commands of two letters, parameters and ";". The radio tells
// its model in its "ID" reply, and everything model-specific afterwards follows that model's row.

#include "core/Passband.h"
#include "core/Protocol.h"
#include "core/RadioCatalogue.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <memory>

namespace tv {

// System mode to the digit sent after "MD". Not the inverse of GetModeFromKenwoodStatus: PKT goes out as
// USB and WBFM as FM, and what the radio calls "8" is never sent.
int KenwoodMode(int mode);
// The digit a radio reports (character code '0'..'9', or the number 0..9) to a system mode; 10 when unknown.
int GetModeFromKenwoodStatus(int digit);

// One row of the radios this program knows by their ID reply. Every difference between the models is a
// column here. A row names the columns it sets (the first three it must), and the rest keep the defaults of
// a radio without the later facilities: no meter, no passband lists, split by the receive and transmit VFOs.
struct KenwoodModel {
    enum class MeterChain { None, CutsOrWidthByMode, WidthAlways };      // what the meter reply asks next
    enum class WidthChain { None, ShiftInSidebandAndNarrow, ShiftInCW, ShiftAlways };
    enum class WidthReply { None, Width, TimesTenByMode };               // where an FW value goes
    enum class ShiftReply { None, Shift, CutOrShiftByMode, RoundedToHundreds };
    enum class FilterCommands { None, CodesAndWidth, ShiftAndWidthOnly };  // how code 3 is said

    int id;
    const char* displayName;
    const char* modelName;
    bool sMeter = false;                 // polled for its meter and given a scale
    bool autoInformation = false;        // "AI1;" after identification
    const char* sMeterFile = "";         // "" for none
    const char* meterRequest = nullptr;  // nullptr: the radio has no meter request
    int meterFullScale = 0;              // 0: meter replies are ignored
    int meterFrom = 3;                   // where the four digits of a meter reply start
    bool splitBySP = false;              // split is "SP1;"/"SP0;" instead of the receive and transmit VFOs
    MeterChain afterMeter = MeterChain::None;
    WidthChain afterWidth = WidthChain::None;
    bool shiftAfterHighCut = false;  // "IS;" follows an "SH" reply
    WidthReply widthReply = WidthReply::None;
    ShiftReply shiftReply = ShiftReply::None;
    bool cutCodesReplied = false;      // "SL"/"SH" replies carry list codes to mirror
    bool shortRepliesIgnored = false;  // cut replies under 5 bytes and shift replies under 8 hold nothing
    FilterCommands filterCommands = FilterCommands::None;
    bool shiftSignOwnPosition = false;  // a negative shift is "IS-" and the digits, not "IS " and "-digits"
    const PassbandModel* (*passband)() = nullptr;  // the passband lists, or nullptr
};
// The row of an ID, or nullptr for an ID that no row names.
const KenwoodModel* FindKenwoodModel(int id);

// What the family keeps for the whole run, beside the protocol object of each chosen radio: the model
// number the last radio told in its ID reply. A Kenwood radio chosen again goes by it until it answers.
class KenwoodFamily : public FamilyLink {
public:
    int lastModelId = 0;
    void Initialize(ProtocolContext&) override { lastModelId = 0; }
    void Terminate() override {}
    void OtherFamilyChosen() override {}
};

class KenwoodProtocol : public Protocol {
public:
    // lastModelId is shared by every Kenwood protocol of a run: a radio not yet identified selects its
    // VFOs the way the last identified one did.
    KenwoodProtocol(ProtocolContext& context, const RadioInfo& radio, std::shared_ptr<KenwoodFamily> family);

    const ProtocolTraits& traits() const override { return traits_; }
    QString DisplayName(const RadioInfo& radio) const override;
    void BringUp() override;
    void Execute(const XcvrCmd& cmd) override;
    int InterrogationStep(int phase) override;
    void RequestFrequency() override;
    void RequestMode() override;
    void Decode(const QByteArray& message) override;
    QString SMeterFile() const override;
    bool ReadsLevel(RadioLevel level) const override { return radio_.txLevels && level == RadioLevel::RfPower; }

    const KenwoodModel* model() const { return model_; }
    int modelId() const { return family_->lastModelId; }

private:
    void send(const char* text) { send(QByteArray(text)); }
    void send(const QByteArray& text);
    void decodeMessage();
    void identify();
    void decodeStatus();
    void decodeSMeter();
    void decodeFilterReply(const QByteArray& letters);
    void mirrorFilterReply(const QByteArray& letters);
    void reportMode(int mode);
    // Positions from..to (from 1) of the message. Past its end stand the bytes of longer messages
    // before it, as they did on the radios' first controllers: a short reply reads those.
    QByteArray field(int from, int to) const;
    // The same field as a number; a non-numeric field abandons the message.
    long long number(int from, int to) const;
    double fieldKHz(int from, int to) const { return double(number(from, to)) / 1000.0; }
    bool hasMeter() const;
    static QByteArray digits11(double kHz);

    ProtocolContext& c_;
    const RadioInfo radio_;
    ProtocolTraits traits_;
    std::shared_ptr<KenwoodFamily> family_;
    const KenwoodModel* model_ = nullptr;
    bool identified_ = false;
    int unidentifiedReplies_ = 0;
    std::array<char, 2048> buffer_{};
    int count_ = 0;
};

}  // namespace tv
