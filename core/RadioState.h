#pragma once
// The program's one picture of the radio, as the families' decoders report it and the operator's
// gestures set it, and the signals through which the layers above follow it. Any number of listeners
// may follow a signal (the windows, the suite link, the network server, devices, memories); they run
// at once, in the order they were connected, inside the report.

#include "core/FilterGroups.h"
#include "core/Passband.h"
#include "core/XcvrCmd.h"

#include <QObject>
#include <QString>

#include <array>
#include <optional>

namespace tv {

class Common;

// What a family learnt of the radio from the radio itself (its model, by an identification reply).
struct RadioIdentity {
    QString displayName;
    bool hasMeter = false;
    QString meterFile;        // the S-meter scale to load, "" for none
    bool reverseModes = false;  // CW-R and RTTY-R are offered
};

// Transmit levels a client can read where the radio's command set has them: output power as a fraction
// of the radio's full power, the standing-wave ratio (1 and up), and ALC as a fraction of its zone.
enum class RadioLevel { RfPower, Swr, Alc };
constexpr int kRadioLevelCount = 3;

class RadioState : public QObject {
    Q_OBJECT
public:
    explicit RadioState(Common& common, QObject* parent = nullptr);

    double RadioFreq = 0;    // kHz
    int RadioMode = -1;      // -1 before any report
    int RadioFilterGroup = 1;
    int CurrentVFO = 0;      // 0 A, 1 B; a family may report others (a memory channel)
    double VFOAFreq = 0, VFOBFreq = 0;
    int VFOAMode = 0, VFOBMode = 0;
    QString RadioDisplayName;
    // The filter group remembered for each mode ("Wide", "Narrow", "Normal", or a Yaesu group's name).
    std::array<QString, 10> ModeFilters{};
    // False after a reply was awaited in vain; true again at the next decoded reply. Not reset by a
    // change of radio: only a reply proves the radio is there.
    bool Responding = true;
    bool transmitting() const { return transmitting_; }

    // ---- set by the program ----
    // The operator's or a client's frequency: shown at once, whatever was shown before.
    void SetFrequency(double kHz);
    void SetDisplayName(const QString& name);
    // The program keyed or unkeyed the radio (by command or by a line).
    void SetTransmitting(bool on);
    // A change of radio: the first frequency report gives the display the focus again only at start-up.
    void ResetForNewRun() {
        focusGiven_ = false;
        levels_ = {};
        levelReads_ = {};
    }

    // ---- reported by the radio (the decoders call these) ----
    // A report changes the shown frequency only when it differs.
    void UpdateRadioFreq(double kHz);
    // 0..9; anything else is no mode and changes nothing.
    void UpdateXcvrMode(int mode);
    // Both VFOs known: the selected one's frequency and mode are shown.
    void UpdateVFO();
    void UpdateVFOCaption();
    void ReportSplit(bool on);
    void ReportDual(bool on);
    void ReportMeter(double fraction);
    void ReportFilterGroup(int group);
    // The radio refused a command; `command` names it ("": the last command sent).
    void ReportRefusal(const QString& command = QString());
    // The protocol's LinkFaultCaption changed.
    void ReportLinkFault();
    void ReportIdentity(const RadioIdentity& identity);
    // The first frequency report of a run puts the keyboard on the frequency box.
    void ReportFirstFrequency();
    // A reply of the radio was decoded / an awaited reply did not come.
    void ReportAnswered();
    void ReportSilent();
    // One more poll went out; true when this many polls in a row have had no answer.
    bool ReportPolled(int silentAfter) { return ++pollsUnanswered_ == silentAfter; }
    // A radio that the program holds under its control (a handshake) has been let go: what waited for
    // that, a switch to another transceiver, may go ahead.
    void ReportControlReleased();
    // Passband lists: the model's lists, a mode report to lay them out by, and values read back.
    void ReportPassbandModel(const PassbandModel* model);
    void ReportPassbandMode();
    void ReportPassbandText(FilterSelector list, const QString& text);
    void ReportPassbandCode(FilterSelector list, int code);
    // Named filter groups: the model's lists and default groups (nullptr: the radio has none), and the
    // filters the radio reports with each frequency read.
    void ReportFilterGroupModel(const FilterGroupModel* model);
    void ReportFilterStatus(const FilterStatus& status);
    // Transmit levels: read by the family's polls only while someone asks (each ask buys a few reads,
    // taken in turn in place of meter reads, so the line carries no more than without), and what the
    // radio said. A level is unknown until the radio has reported it since the radio was chosen.
    void WantLevel(RadioLevel level);
    // The next level to read in place of a meter read, or none; takes one of its reads.
    std::optional<RadioLevel> TakeWantedLevel();
    void ReportLevel(RadioLevel level, double value);
    std::optional<double> level(RadioLevel level) const { return levels_[size_t(level)]; }
    // A live item for the suite link (also the window's state, which isn't the radio's).
    void SetItem(const QString& item, const QString& value);

signals:
    void frequencyChanged(double kHz);
    void frequencyReported(double kHz);  // every report of a frequency, changed or not
    void modeReported(int mode);  // every report of a mode 0..9, changed or not
    void modeChanged(int mode);   // the shown mode changed
    void vfoChanged(int vfo);
    void splitReported(bool on);
    void dualReported(bool on);
    void meterReported(double fraction);
    void filterGroupReported(int group);
    void commandRefused(const QString& command);
    void linkFaultChanged();
    void identified(const tv::RadioIdentity& identity);
    void frequencyFocusWanted();
    void respondingChanged(bool responding);
    void controlReleased();
    void transmittingChanged(bool on);
    // Who holds the transmitter ("" when nobody does): the operator's ways or a rig client.
    void transmitOwnerChanged(const QString& owner);
    // Clients' frequency and mode sets are ignored (true) or taken again.
    void clientLockChanged(bool locked);
    void passbandModelChosen(const tv::PassbandModel* model);
    void passbandLayoutDue();
    void passbandTextReported(int list, const QString& text);
    void passbandCodeReported(int list, int code);
    void filterGroupModelChosen(const tv::FilterGroupModel* model);
    void filterStatusReported(const tv::FilterStatus& status);
    void itemChanged(const QString& item, const QString& value);

private:
    Common& common_;
    bool focusGiven_ = false;
    int pollsUnanswered_ = 0;
    bool transmitting_ = false;
    std::array<std::optional<double>, kRadioLevelCount> levels_{};
    std::array<int, kRadioLevelCount> levelReads_{};  // reads still owed to the last ask
    int nextLevel_ = 0;                                 // where the turn of reads goes on
};

}  // namespace tv
