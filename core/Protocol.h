#pragma once
// The seam between the vendor-neutral core and one radio family. The supplier letter of the chosen radio
// picks a family's factory, which builds a fresh protocol object for that radio: the family's own state
// (a model learnt from the radio, a handshake in progress) is thrown away with it when the radio changes.
// The object declares its traits, frames and decodes what the radio sends, performs the queue's records,
// runs the polling steps and brings its radio up; it reaches the rest of the program only through the
// ProtocolContext, and tells what the radio said through RadioState.

#include "core/RadioState.h"
#include "core/XcvrCmd.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace tv {

class CommandQueue;
class Common;
class CoreView;
class RadioLink;
class RadioState;
class SelectedRadio;
class SuiteBus;
struct RadioInfo;
struct UpperHooks;

// How the bytes of a family's replies are cut into messages.
enum class Framing {
    None,            // nothing the radio sends is read on this link: it is dropped
    EndMark,         // a message ends with one byte (CI-V FD, Kenwood ';', TenTec CR)
    ExpectedLength,  // replies have no end mark: each request announces the length of its reply
};

// Whether choosing a radio of the family switches polling on.
enum class InterrogationRule { Unchanged, ForcedWithMeter, Forced };

// Serial settings a family fixes for a model, as option indexes of the configuration window (0 or -1:
// left as the operator set it).
struct FixedPortSettings {
    int speed = 0, wordLength = 0, parity = 0, stopBits = 0, dtr = -1, rts = -1;
};

struct ProtocolTraits {
    Framing framing = Framing::None;
    std::uint8_t endMark = 0;
    // The line is a bus that echoes every frame: what we send comes back through the receive path and
    // is shown there, so the send path doesn't show it a second time.
    bool echoesOnBus = false;
    // Commands go to a bus address: without an address nothing is queued, and the configuration
    // window offers the address fields.
    bool addressed = false;
    // One record per tick: each may be answered by an acknowledgement that paces the next.
    bool oneRecordPerTick = false;
    // The second receiver is always VFO B, whatever the catalogue says of main and sub.
    bool secondaryIsVfoB = false;
    // No command sets the other receiver's frequency: the queue switches to it, sets, and switches back.
    bool secondaryFrequencyBySwitching = false;
    // Split moves the transmit VFO by itself: the split box doesn't select the other receiver.
    bool splitMovesTransmitVfo = false;
    // The radio is asked again after the split and dual boxes: its reports don't follow them on their own.
    bool asksAfterSplitOrDual = false;
    // A tune by record (the suite link's frequency and mode) first puts the radio on its main receiver,
    // which its reports don't tell.
    bool mainReceiverBeforeRecordTune = false;
    // Mode commands carry the filter group remembered for the mode (Wide, Narrow, Normal), and the
    // group list sends the group.
    bool filterGroupsInModeCommands = false;
    // The radio's groups are set apart from its mode: a recalled memory's group is chosen once the radio
    // has reported the new mode, so that the group lands on that mode and not on the one before.
    bool filterGroupAfterModeReport = false;
    // The radio needs a pause after a new frequency before it takes the next command (a recalled memory
    // then ends with a wait, so the split and dual switches that follow aren't lost).
    bool waitsAfterFrequency = false;
    // The radio is under the program's control while a handshake runs and stays locked unless let go:
    // a switch to another transceiver waits for RadioState::controlReleased.
    bool holdsRadioUntilReleased = false;
    // The radio ignores commands until the frames of its bring-up (CAT on) have reached it: a radio
    // left keyed by the last run is unkeyed after them, not before.
    bool commandsAfterBringUp = false;
    InterrogationRule interrogation = InterrogationRule::Forced;
    // A radio that stopped answering is polled this slowly (ms); 0 keeps the configured interval.
    int silentPollIntervalMs = 0;
    // A plain press of the 10 Hz buttons sends the radio's own step command instead of a frequency.
    bool stepsWithOwnCommand = false;
    // The radio takes a split frequency without a split switch (a client's "split" then sets it alone).
    bool takesSplitFrequencyAlone = false;
    // The radio is reached through a control folder instead of a port (the folder fields are shown).
    bool usesControlFolder = false;
    // The serial settings the model fixes, if any.
    std::optional<FixedPortSettings> fixedPort;
};

// What a protocol may use of the program.
struct ProtocolContext {
    CommandQueue& queue;
    RadioState& state;
    RadioLink& link;
    SelectedRadio& radio;
    CoreView& view;
    Common& common;
    UpperHooks& hooks;
    // The desktop bus, for a family whose radio is reached through another program; nullptr without one.
    SuiteBus* bus = nullptr;
};

class Protocol {
public:
    virtual ~Protocol() = default;
    virtual const ProtocolTraits& traits() const = 0;

    // ---- bring-up ----
    // The caption's name of the radio ("Icom IC-7300", "Kenwood (model unknown)").
    virtual QString DisplayName(const RadioInfo& radio) const = 0;
    // The family's own part of bringing a newly chosen radio up: its first frames, its filter set-up.
    virtual void BringUp() {}

    // ---- the queue ----
    // Performs one record (never "Wait", "Raw" or "String": the queue does those itself).
    virtual void Execute(const XcvrCmd& cmd) = 0;
    // The filter argument of a mode command for mode 0..9.
    virtual int ModeArgument(int /*mode*/) const { return 0; }
    // A "String" record's text. Serial radios put it on the link as it stands; a console radio sends it
    // to its command channel and returns true.
    virtual bool SendString(const QByteArray& /*text*/) { return false; }
    // The receive width (Hz) that a filter group of the window's list gives in mode 0..9, for clients
    // that ask for a passband; 0 where the family can't tell.
    virtual int FilterGroupWidthHz(int mode, const QString& group) const {
        (void)mode;
        (void)group;
        return 0;
    }
    // The radio's command set can read this transmit level (its polls then read it while it is wanted).
    virtual bool ReadsLevel(RadioLevel level) const {
        (void)level;
        return false;
    }
    // The tooltip of the 10 Hz up or down button, where the radio's own step makes it say more ("" keeps
    // the usual one).
    virtual QString FineStepToolTip(bool up) const {
        (void)up;
        return QString();
    }

    // ---- polling ----
    // One interrogation step of the given phase (0..6); returns the next phase.
    virtual int InterrogationStep(int phase) = 0;
    // The frequency and mode requests, sent at once, past the queue.
    virtual void RequestFrequency() = 0;
    virtual void RequestMode() = 0;

    // ---- receiving ----
    // One complete message, framed by the receive path.
    virtual void Decode(const QByteArray& message) = 0;

    // ---- the caption ----
    // A fault of the link that the caption shows in place of the port's text ("" when none).
    virtual QString LinkFaultCaption() const { return QString(); }
    // The operator changed what the fault was about (the control folder): the fault is forgotten.
    virtual void ClearLinkFault() {}
    // The radio's state for the caption: "" when it answers, else what follows its name.
    virtual QString OfflineCaption(bool responding) const {
        return responding ? QString() : QStringLiteral(" - not answering");
    }
    // The S-meter scale file of the radio, when the family knows better than the catalogue ("" else).
    virtual QString SMeterFile() const { return QString(); }
};

// What a family keeps for the whole run, beside the protocol object built for each chosen radio: state
// that outlives one choice of radio (a model number the radio told), or a link to another program (a
// console that drives the radio). It is started and stopped with the core, and told when a radio of
// another family is chosen.
class FamilyLink {
public:
    virtual ~FamilyLink() = default;
    virtual void Initialize(ProtocolContext& context) = 0;
    virtual void Terminate() = 0;
    virtual void OtherFamilyChosen() = 0;
};

// Builds the protocol object for a chosen radio of the family.
using ProtocolFactory = std::function<std::unique_ptr<Protocol>(ProtocolContext&, const RadioInfo&)>;

}  // namespace tv
