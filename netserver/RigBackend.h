#pragma once
// What the rig server needs from the program: the radio's state as the program shows it, what the
// selected radio can do, and the changes it can ask for. A get never reaches the radio (the program
// polls it anyway); a set goes to the program's queue like an operator's gesture and says whether it
// was queued. The server, its parser and their tests know only this interface.

#include "core/XcvrCmd.h"

#include <QList>
#include <QString>

#include <array>
#include <optional>

namespace tv {

// The program's mode numbers, as the queue and the settings use them.
enum RigMode : int {
    RigLSB = ModeLSB,
    RigUSB = ModeUSB,
    RigAM = ModeAM,
    RigCW = ModeCW,
    RigRTTY = ModeRTTY,
    RigFM = ModeFM,
    RigWBFM = ModeWBFM,
    RigCWR = ModeCWR,
    RigRTTYR = ModeRTTYR,
    RigPKT = ModePKT,
    kRigModeCount
};
// A client's mode number goes to the queue as it comes: a mode the program adds must be added here too.
static_assert(int(kRigModeCount) == int(ModeUnknown), "RigMode follows the program's mode numbers");

enum class RigVfo { A, B, Main, Sub };

// Transmit levels: output power (0..1 of full), SWR (1 and up), ALC (0..1).
enum class RigLevel { RfPower, Swr, Alc };
constexpr int kRigLevelCount = 3;

// What the selected radio offers, from the radio catalogue and the port settings.
struct RigCaps {
    bool radio = false;  // false: no radio is selected, and every set is refused
    QString name;        // as the program shows it ("Icom IC-7300")
    std::array<bool, kRigModeCount> modes{};
    bool vfoAB = false;    // VFO A and B can be selected
    bool mainSub = false;  // main and sub receivers can be selected
    bool split = false;
    bool ptt = false;  // keyed by command or by a port line
    bool meter = false;
    // PKTUSB is the radio's data mode on the upper sideband: set by its own command and read back.
    bool dataMode = false;
    std::array<bool, kRigLevelCount> levels{};  // the transmit levels the radio's command set reads
    // The longest a client should wait for an answer: the radio's reply wait and the queue ahead.
    int answerTimeoutMs = 0;
};

class RigBackend {
  public:
    virtual ~RigBackend() = default;

    virtual RigCaps caps() const = 0;
    virtual double frequencyHz() const = 0;
    virtual int mode() const = 0;  // a RigMode, -1 before the radio has told it
    virtual RigVfo vfo() const = 0;
    virtual bool split() const = 0;
    virtual double txFrequencyHz() const = 0;  // the other VFO, as far as the program knows it
    virtual int txMode() const = 0;
    virtual bool ptt() const = 0;
    // The last meter reading as a fraction of full scale, and the radio's scale label for it ("S7",
    // "+20"); the label is empty when the radio has no scale file.
    virtual double meter() const = 0;
    virtual QString meterLabel() const = 0;
    // The passband in force in Hz, 0 when the program doesn't know it.
    virtual int passbandHz() const = 0;
    // The widths (Hz) the radio offers in a mode, narrowest last; empty when the program knows none.
    virtual QList<int> passbandChoices(int mode) const {
        (void)mode;
        return {};
    }
    // A transmit level as the radio last reported it, none before its first report. Asking makes the
    // program read it for a while.
    virtual std::optional<double> level(RigLevel which) = 0;
    // The same as last reported, without asking for reads: for a watcher that looks often.
    virtual std::optional<double> reportedLevel(RigLevel which) const {
        (void)which;
        return std::nullopt;
    }
    // Which of the configured transceivers is in use, counted from 1.
    virtual int radioNumber() const { return 1; }
    // The radio answers the program's polls.
    virtual bool responding() const = 0;
    // No frequency set from here still waits for the radio to report where it went: a frequency read
    // now is the radio's own, with its resolution, not the number that was asked for.
    virtual bool frequencySettled() const = 0;

    // Each returns whether the change was queued for the radio.
    virtual bool setFrequency(double hz) = 0;
    // passbandHz: 0 the radio's normal width, -1 no change.
    virtual bool setMode(int mode, int passbandHz) = 0;
    virtual bool setVfo(RigVfo vfo) = 0;
    virtual bool setSplit(bool on) = 0;
    virtual bool setTxFrequency(double hz) = 0;
    // client: who asks, as the log names it ("rig client 127.0.0.1:53412"). The transmission has one
    // owner: a key or unkey that isn't the owner's is refused (false).
    virtual bool setPtt(bool on, const QString& client) = 0;
    // Frequency and mode sets from clients are ignored while locked (a spot click in a logger can't
    // retune the radio during a contest exchange); any client or the operator may lift it.
    virtual bool locked() const { return false; }
    virtual void setLocked(bool on, const QString& client) {
        (void)on;
        (void)client;
    }
    // A client has gone (closed, reset or dropped): whatever it keyed is unkeyed.
    virtual void clientGone(const QString& client) { (void)client; }
    // A client's own command for the radio, as the user command sequences write it: text behind an
    // apostrophe, else hexadecimal bytes.
    virtual bool sendRaw(const QByteArray& command) = 0;
};

}  // namespace tv
