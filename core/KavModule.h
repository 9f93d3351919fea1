#pragma once
// The central module: it holds the core's parts (the selected radio and its family, the radio's state,
// the link's traffic, the command queue and the port's settings), starts and stops them in their order,
// brings a chosen radio up, keeps the main window's caption, and is the core's view of the windows. The
// parts themselves know no window: they read the few controls they need through CoreView.

#include "core/CommandQueue.h"
#include "core/ControlFlags.h"
#include "core/CoreView.h"
#include "core/Hooks.h"
#include "core/KavComm.h"
#include "core/PortSettings.h"
#include "core/Protocol.h"
#include "core/RadioLink.h"
#include "core/RadioState.h"
#include "core/SelectedRadio.h"

#include <QString>

#include <array>
#include <memory>

namespace tv {

class CheckBox;
class Common;
class Dialogs;
class EventLoop;
class KavConfig;
class KavMain;
class KavMessages;
class SettingsStore;
class SuiteBus;

class KavModule : public CoreView {
public:
    KavModule(Common& common, KavMain& main, KavConfig& config, KavMessages& messages, KavComm& comm);
    ~KavModule() override;

    // ---- the parts ----
    Common& common() const { return common_; }
    SettingsStore& settings() const;
    Dialogs& dialogs() const;
    EventLoop& loop() const;
    KavMain& main() const { return main_; }
    KavConfig& config() const { return config_; }
    KavMessages& messages() const { return messages_; }
    KavComm& comm() const { return comm_; }
    SelectedRadio& radio() { return radio_; }
    const SelectedRadio& radio() const { return radio_; }
    RadioState& state() { return state_; }
    const RadioState& state() const { return state_; }
    RadioLink& link() { return link_; }
    CommandQueue& queue() { return queue_; }
    PortSettings& port() { return port_; }
    UpperHooks hooks;

    // ---- start-up and shutdown ----
    void Initialize();
    void Terminate();
    bool LoadRadioInfo();  // false: the catalogue couldn't be opened and the program must end
    bool terminateRequested() const { return terminateRequested_; }
    // The desktop bus that families reaching their radio through another program use.
    void attachBus(SuiteBus& bus) { context_.bus = &bus; }

    // ---- bring-up of the radio chosen in the configuration window ----
    void UpdateRadio(bool interrogate);
    bool ValidID() { return radio_.ValidID(); }
    QString FilterGroupFilename;  // the filter group file in use, kept at shutdown when set

    // ---- keying ----
    // Keys the radio by its line (when one is set to) and by command (when it takes one).
    void Transmit();
    void Receive();
    // Whatever keyed the radio (a button, a key, a client), it is unkeyed now, ahead of the queue: the
    // line dropped and the radio's receive command sent at once. The program's ways out call this
    // first, and so does a port that comes back after it was lost while transmitting.
    void ReleaseTransmitter(const QString& why);
    // The marker, beside the settings, that says the program holds the radio keyed.
    QString keyedMarkerPath() const;
    // Who holds the transmitter while it is keyed: kOperatorOwner for the operator's own ways (the
    // window, the suite link, a sequence) or a rig client's name; "" while receiving.
    static constexpr const char* kOperatorOwner = "window";
    const QString& TransmitOwner() const { return transmitOwner_; }
    // A client's key or unkey goes ahead only when it holds the transmission or nobody does; the
    // operator's stands against every client, another client's unless clients may unkey each other.
    bool ClientMayTransmit(const QString& client, bool on, bool unkeyOthers) const;
    // The next key is this client's ("" again: the operator's ways).
    void SetNextKeyOwner(const QString& owner) { nextKeyOwner_ = owner; }
    void SetTransmitOwner(const QString& owner);
    // A client has gone (closed, reset, dropped): if it held the transmission, the radio is unkeyed now.
    void ClientGone(const QString& client);
    // While locked, clients' frequency and mode sets are ignored; by is who locked or lifted it.
    bool ClientSetsLocked() const { return clientSetsLocked_; }
    void LockClientSets(bool on, const QString& by);

    // ---- radix of the address fields ----
    void SelectDecimalRadix();
    void SelectHexadecimalRadix();

    // ---- the caption ----
    void UpdateCaption();
    // A note of a part beside the radio for the caption's end (a web logger that doesn't answer); empty
    // takes it away.
    void SetCaptionNote(const QString& note);
    // The caption as UpdateCaption would make it now.
    QString composeCaption() const;
    void SetCommCaption(const QString& text) { CommCaption = text; }
    void ErrorLogExists();
    void ClearErrorLogFlag() { ErrorLogFlag = false; }
    QString CommCaption;
    bool ErrorLogFlag = false;

    // ---- guards against a control's own event ----
    bool ControlFlag(int index) const { return flags.ControlFlag(index); }
    void SetControlFlag(int index, bool value) { flags.SetControlFlag(index, value); }
    ControlFlagSet flags;

    // Settings read at start-up for the panes other parts own.
    bool MemoryNotesShown = false;
    bool ShowMemoryBankSetting = false;

    // ---- CoreView: the controls the parts read, and the monitor ----
    QString pollIntervalText() const override;
    QString addressText() const override;
    void clearAddress() override;
    bool decimalRadix() const override;
    bool interrogationEnabled() const override;
    bool modeFiltersEnabled() const override;
    QString controlFolderText() const override;
    bool splitChecked() const override;
    bool dualChecked() const override;
    bool captureEnabled() const override;
    void DisplayLine(const QString& prefix, const QString& decimalLine, const QString& hexLine,
                     const QString& asciiLine) override;
    bool takePendingNote(QString* text) override;
    void showAwaitedReply(const QString& text) override;
    void showPortUnavailable() override;

private:
    bool readBool(const QString& key, const QString& def) const;
    void restoreChecked(CheckBox& box, int flag, bool on);
    void bringUpFamily(const RadioInfo& r);
    void markKeyed(bool on);

    Common& common_;
    KavMain& main_;
    KavConfig& config_;
    KavMessages& messages_;
    KavComm& comm_;
    QString messagesCaption_;
    bool terminateRequested_ = false;
    // Why the radio is to be unkeyed at its bring-up ("" when the last run left it unkeyed).
    QString leftKeyedByLastRun_;
    QString transmitOwner_, nextKeyOwner_;
    bool clientSetsLocked_ = false;
    bool keyedWhenLost_ = false;  // the radio stopped answering while the program held it keyed
    // Caps every keyed period (setting TxTimeout, seconds; 0 turns it off); its note stays in the
    // caption until the next key.
    std::unique_ptr<LoopTimer> txWatchdog_;
    QString txWatchdogNote_;
    QString outsideNote_;
    // The radio is declared after the parts its protocol uses, so that the protocol goes first.
    RadioState state_;
    RadioLink link_;
    CommandQueue queue_;
    PortSettings port_;
    SelectedRadio radio_;
    ProtocolContext context_;
};

// "T", "True", "1" (any case) are true; anything else false.
bool SettingIsTrue(const QString& value);

}  // namespace tv
