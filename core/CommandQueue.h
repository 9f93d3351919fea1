#pragma once
// The command queue and its scheduler: one circular buffer that every radio command passes through,
// drained by one timer, which polls the radio when there is nothing to send. Buttons, tuning, memories,
// sequences and the suite link call the SetXcvr* operations; only the scheduler touches the radio.

#include "core/XcvrCmd.h"
#include "forms/Controls.h"

#include <QString>

#include <array>
#include <chrono>
#include <cstdint>

namespace tv {

class Common;
class CoreView;
class RadioLink;
class RadioState;
class SelectedRadio;
struct UpperHooks;

class CommandQueue {
public:
    static constexpr int kBufferSlots = 256;
    static constexpr int kMinPollInterval = 50;       // ms: the fastest regular tick
    static constexpr int kMaxPollInterval = 60000;    // ms
    static constexpr int kDefaultPollInterval = 200;  // ms, when the text gives no number
    // After an acknowledgement the next record leaves this soon.
    static constexpr std::chrono::milliseconds kAcceleratedInterval{1};
    // So many polls without a decoded reply, and the radio counts as not answering (families whose
    // replies are awaited by length have their own rule: the wait's end).
    static constexpr int kPollsBeforeSilent = 8;

    CommandQueue(Common& common, SelectedRadio& radio, RadioState& state, RadioLink& link, CoreView& view,
                 UpperHooks& hooks);

    Timer XcvrCmdTimer;

    // ---- the buffer ----
    // False when the record was not queued (no radio, no bus address, a full buffer).
    bool EnqueueXcvrCmd(std::int16_t theCmd, double theFreq = 0, std::int16_t theMode = 0,
                        std::int16_t theArg = 0, std::int16_t theArg2 = 0,
                        const QString& theRawCmd = QString());
    // Drops what is queued and starts polling from its first step.
    void InitializeXcvrCmdBuffer();
    int count() const { return XcvrCmdCount; }
    // The queued records, oldest first.
    std::vector<XcvrCmd> queued() const;
    // How many records were ever queued: a caller tells by it whether a gesture queued anything.
    std::uint64_t queuedTotal() const { return queuedTotal_; }
    // Drops what is queued; polling goes on where it was.
    void Discard();
    int interrogationPhase() const { return InterrogationPhase; }

    // ---- what may be asked of the radio ----
    // The highest frequency any radio is tuned to, in kHz: eleven decimal digits of Hz, as the widest
    // frequency field on any wire holds it.
    static constexpr double kMaxTunableKHz = 99999999.999;
    // Whether a frequency from outside (typed, from a link, from a file) can go to a radio at all.
    static bool Tunable(double kHz) { return kHz >= 0 && kHz <= kMaxTunableKHz; }  // NaN fails both
    void SetXcvrFreq(double freq);
    void SetXcvrSBFreq(double freq);
    void StepXcvrFreq(bool up);
    void SetXcvrMode(int mode);
    void SetXcvrModeAndFilterGroup(int mode, int group);
    void SetXcvrFilterGroup(int group);
    void SetXcvrFilters(int arg, int arg2);
    void SetXcvrSplit(bool on);
    void SetXcvrDual(bool on);
    void SetXcvrVFOA();
    void SetXcvrVFOB();
    void SetXcvrVFOEqual();
    void SetXcvrVFOXch();
    void SetXcvrMain();
    void SetXcvrSub();
    void SetXcvrMainSubEqual();
    void SetXcvrMainSubXch();
    void SetXcvrSwitchVFOs();
    void SetXcvrWait();
    void SetXcvrTransmit();
    // False when nothing was queued.
    bool SetXcvrReceive();
    void SetXcvrRaw(const QString& text);
    void SetXcvrstring(const QString& text);
    void InterrogateRadio();
    // The frequency moved by delta kHz, within what a radio can show.
    void AdjustRadioFreq(double delta);
    // The second receiver (sub, or VFO B) and back.
    void SelectSecondary();
    void SelectPrimary();

    // ---- the scheduler ----
    void SetXcvrCmdTimerInterval();
    void AccelerateNextXcvrCmd();
    void ExecuteNextXcvrCmd();
    // The frequency and mode requests, at once, past the queue.
    void RequestFrequency();
    void RequestMode();
    // The radio's receive command at once, past the queue and any reply awaited: the program's ways
    // out. The radio counts as unkeyed once the command has been written.
    void SendReceiveNow();
    // The wait for a reply of fixed length ended without it: an unkey queued behind it leaves now, and
    // the next tick comes at once, so that a silent radio is asked again now and not an interval later.
    void ReplyWaitEnded();

    QString LastCommandName;

private:
    int XcvrCmdHead = 1, XcvrCmdTail = 1, XcvrCmdCount = 0;
    int InterrogationPhase = 0;
    std::array<XcvrCmd, kBufferSlots + 1> XcvrCmdBuffer{};  // slot 0 unused
    std::uint64_t queuedTotal_ = 0;
    void executeRaw(const XcvrCmd& cmd);
    // One polling step, when polling is on.
    void pollStep();
    // The first queued receive command goes now, ahead of the rest; key commands queued before it,
    // which never left, are dropped with it. False when none is queued.
    bool sendQueuedReceive();
    // A receive command went to the radio: it counts as unkeyed if the command reached the line.
    void receiveSent();
    void reportSilence();
    void reportTickFailure(const XcvrCmd& cmd, int number, const QString& description);

    Common& common_;
    SelectedRadio& radio_;
    RadioState& state_;
    RadioLink& link_;
    CoreView& view_;
    UpperHooks& hooks_;
};

}  // namespace tv
