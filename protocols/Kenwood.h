#pragma once
// The Kenwood command language: plain ASCII commands of two letters, parameters and ";". The radio tells
// its model in its "ID" reply, and everything model-specific afterwards branches on what it said.

#include "core/Protocol.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace tv {

class KavModule;

// System mode to the digit sent after "MD". Not the inverse of GetModeFromKenwoodStatus: PKT goes out as
// USB and WBFM as FM, and what the radio calls "8" is never sent.
int KenwoodMode(int mode);
// The digit a radio reports (character code '0'..'9', or the number 0..9) to a system mode; 10 when unknown.
int GetModeFromKenwoodStatus(int digit);

// One row of the radios this program knows by their ID reply.
struct KenwoodModel {
    int id;
    const char* displayName;
    const char* modelName;
    bool sMeter;           // polled with SM and given a scale
    bool autoInformation;  // "AI1;" after identification
    bool filterFrame;      // receive passband lists
    const char* sMeterFile;
};
// The row of an ID, or nullptr for an ID that no row names.
const KenwoodModel* FindKenwoodModel(int id);

class KenwoodProtocol : public Protocol {
public:
    explicit KenwoodProtocol(KavModule& module) : m_(module) {}

    void Execute(const XcvrCmd& cmd) override;
    int InterrogationStep(int phase) override;
    void RequestFrequency() override;
    void RequestMode() override;
    void Decode() override;

    // The S-meter scale file of the identified model ("" for none).
    const QString& SMeterFilename() const { return sMeterFile_; }

    // The receive-passband lists belong to the filter model in the layer above; these are its entry points.
    // Identification of a model with passband lists: fill the lists and the code tables for the model.
    std::function<void(const QString& model)> onFillFilterLists;
    // After every mode report: lay the lists out for the mode.
    std::function<void()> onModeReported;
    // An "FW", "IS", "SH" or "SL" reply (letters given) stands in RcvBuffer: mirror it into the lists.
    std::function<void(const QByteArray& letters)> onFilterReply;
    // The model's scale file is known; without this the module's own LoadSMeterData hook is called.
    std::function<void(const QString& file)> onLoadSMeterData;

private:
    void send(const char* text) { send(QByteArray(text)); }
    void send(const QByteArray& text);
    void decodeMessage();
    void identify();
    void decodeStatus();
    void decodeMode();
    void decodeSMeter();
    void decodeFilterReply(const QByteArray& letters);
    void reportMode(int mode);
    // Positions from..to (from 1) of the message, as they stand in the buffer.
    QByteArray field(int from, int to) const;
    // The same field as a number; a non-numeric field abandons the message.
    long long number(int from, int to) const;
    double fieldKHz(int from, int to) const { return double(number(from, to)) / 1000.0; }
    static QByteArray digits11(double kHz);
    bool modelIs(std::initializer_list<const char*> names) const;

    KavModule& m_;
    QString sMeterFile_;
};

}  // namespace tv
