#pragma once
// The passband lists of three Kenwood models (TS-570, TS-870, TS-2000): which of the high cut, low cut,
// width and shift lists a mode offers, what they hold, and the radio's replies mirrored into them.

#include <QByteArray>
#include <QString>

namespace tv {

class KavModule;
class KenwoodProtocol;
class ModeControl;
class ComboBox;

class KenwoodFilters {
public:
    KenwoodFilters(KavModule& m, KenwoodProtocol& kenwood, ModeControl& modes);
    void connect();

    // At identification: the lists and code tables of the model.
    void FillFilterLists(const QString& model);
    // After each mode report: the layout for the mode, when the mode changed.
    void UpdateKenwoodFilterSettings();
    // A filter reply (FW, IS, SL, SH) standing in the receive buffer.
    void MirrorReply(const QByteArray& letters);

    // The mode the controls were laid out for; 65535 when none (a new radio).
    int LastFilterMode = 65535;

private:
    void mirrorText(ComboBox& list, const QString& text);
    void mirrorCode(ComboBox& list, bool high, int code);
    QString field(int from, int to) const;

    KavModule& m_;
    KenwoodProtocol& kenwood_;
    ModeControl& modes_;
};

}  // namespace tv
