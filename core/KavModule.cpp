// Start-up and shutdown of the core, the radio catalogue's load, and the radix of the address fields.

#include "core/KavModule.h"

#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "forms/KavMessages.h"
#include "platform/Dialogs.h"
#include "platform/EventLoop.h"
#include "platform/SerialDevice.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include <unistd.h>

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");
}

bool SettingIsTrue(const QString& value) {
    const QString v = value.trimmed();
    return v.compare(QLatin1String("T"), Qt::CaseInsensitive) == 0 ||
           v.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0 || v == QLatin1String("1") ||
           v == QLatin1String("-1");
}

KavModule::KavModule(Common& common, KavMain& main, KavConfig& config, KavMessages& messages, KavComm& comm)
    : common_(common),
      main_(main),
      config_(config),
      messages_(messages),
      comm_(comm),
      state_(common),
      link_(common, comm, radio_, state_, *this),
      queue_(common, radio_, state_, link_, *this, hooks),
      port_(common, config, comm, radio_, link_, queue_),
      radio_(common, *this),
      context_{queue_, state_, link_, radio_, *this, common, hooks} {
    port_.held = [this] { return ControlFlag(FlagCommPort); };
    port_.setCaption = [this](const QString& text) { SetCommCaption(text); };
    comm_.GetDTRControl = [this] { return port_.DTRControl; };
    comm_.GetRTSControl = [this] { return port_.RTSControl; };
    comm_.devicePath = [this](int port) { return port_.CommPortDevicePath(port); };
    comm_.onOpened = [this] {
        SetCommCaption(QString());
        UpdateCaption();
        // A port lost while the radio was keyed: the first thing it hears again is to receive. (A radio
        // left keyed by the last run is unkeyed by its bring-up, once its address is known.)
        if (leftKeyedByLastRun_.isEmpty()) ReleaseTransmitter(QStringLiteral("when the port was lost"));
    };
    comm_.onOpenFailed = [this](int number, const QString& text, int port, const QString& settingsText) {
        // A user the device refused is told which group to join and how.
        const QString description = comm_.device() ? describeOpenFailure(*comm_.device(), text) : text;
        if (description != text) common_.LogLine(QStringLiteral("Com%1: ").arg(port) + description);
        if (number == kErrPortAlreadyOpen) {
            SetCommCaption(QStringLiteral(" - selected Com port already in use"));
            UpdateCaption();
            dialogs().messageBox(QStringLiteral("Unable to open Com%1").arg(port), QStringLiteral("Already in use"));
            return;
        }
        common_.LogLine(QStringLiteral(" (%1), port = %2, settings = %3").arg(number).arg(port).arg(settingsText));
        SetCommCaption(QStringLiteral(" - selected Com port failed to open: ") + description);
        UpdateCaption();
        dialogs().messageBox(QStringLiteral("Unable to open Com%1").arg(port), common_.info().title);
    };
    comm_.onLost = [this](const QString& why) {
        SetCommCaption(QStringLiteral(" - selected Com port was lost: ") + why);
        UpdateCaption();
    };
    // What the radio tells of itself shows in the caption.
    QObject::connect(&state_, &RadioState::respondingChanged, &state_, [this](bool responding) {
        if (responding) common_.LogLine(QStringLiteral("KavModule: the radio answers again"));
        // A radio lost while keyed may have heard none of what followed: when it is found again, the
        // receive command is the first thing it gets.
        if (!responding) keyedWhenLost_ = state_.transmitting();
        if (responding && keyedWhenLost_) {
            keyedWhenLost_ = false;
            ReleaseTransmitter(QStringLiteral("when the radio stopped answering"));
        }
        UpdateCaption();
    });
    QObject::connect(&state_, &RadioState::identified, &state_, [this](const RadioIdentity&) { UpdateCaption(); });
    QObject::connect(&state_, &RadioState::linkFaultChanged, &state_, [this] { UpdateCaption(); });
    hooks.ResetControlFolderErrorFlag = [this] {
        if (Protocol* p = radio_.protocol()) p->ClearLinkFault();
    };
    // While the program holds the radio keyed a marker lies beside the settings, so that a run that ends
    // without unkeying it (a crash, kill -9, a power cut) is made good by the next.
    QObject::connect(&state_, &RadioState::transmittingChanged, &state_, [this](bool on) {
        markKeyed(on);
        if (!on) SetTransmitOwner(QString());
        // Whoever keyed, the keyed period has a cap.
        bool ok = false;
        int seconds = config_.TxTimeout.text().trimmed().toInt(&ok);
        if (!ok || seconds < 0) seconds = 300;  // a setting that names no time keeps the cap
        seconds = std::min(seconds, 24 * 3600);
        txWatchdog_->setEnabled(false);
        if (on && seconds > 0) {
            txWatchdog_->setInterval(seconds * 1000);
            txWatchdog_->setEnabled(true);
        }
    });
    txWatchdog_ = loop().createTimer();
    txWatchdog_->onTick = [this] {
        txWatchdog_->setEnabled(false);
        const QString seconds = QString::number(txWatchdog_->interval() / 1000);
        ReleaseTransmitter(QStringLiteral("for the transmit time-out of ") + seconds + QStringLiteral(" s"));
        txWatchdogNote_ = QStringLiteral(" - unkeyed after ") + seconds + QStringLiteral(" s transmitting");
        UpdateCaption();
    };
}

KavModule::~KavModule() = default;

SettingsStore& KavModule::settings() const { return common_.settings(); }
Dialogs& KavModule::dialogs() const { return common_.dialogs(); }
EventLoop& KavModule::loop() const { return common_.loop(); }

bool KavModule::readBool(const QString& key, const QString& def) const {
    return SettingIsTrue(settings().GetSetting(kGeneral, key, def));
}

void KavModule::restoreChecked(CheckBox& box, int flag, bool on) {
    // The flag is consumed by the box's handler, so it is raised only when the box will really change.
    if (box.checked() == on) return;
    SetControlFlag(flag, true);
    box.setChecked(on);
    if (!box.Click) SetControlFlag(flag, false);
}

bool KavModule::LoadRadioInfo() {
    const bool tooltips = common_.InitializeTooltips();
    config_.TooltipsCheckbox.setChecked(tooltips);
    const QString path = common_.info().appPath + QStringLiteral("/Radios.txt");
    const RadioCatalogue::LoadResult result = radio_.catalogue.load(path);
    config_.RadioCombo.Clear();
    for (int i = 0; i < radio_.catalogue.count(); ++i) config_.RadioCombo.AddItem(radio_.catalogue.at(i).comboName);
    for (const QString& e : result.errorReports)
        common_.ReportError(result.errorNumber ? result.errorNumber : kErrInvalidCall,
                            QStringLiteral("KavModule.LoadRadioInfo"), e);
    for (const QString& m : result.boxMessages) dialogs().messageBox(m, common_.info().title);
    if (result.fatal) {
        common_.LogLine(result.fatalMessage);
        dialogs().messageBox(result.fatalMessage, common_.info().title);
        terminateRequested_ = true;
        return false;
    }
    return true;
}

void KavModule::Initialize() {
    auto log = [this](const QString& what) { common_.LogLine(QStringLiteral("KavModule.Initialize: ") + what); };
    Guard("KavModule.Initialize", [&] {
        log(QStringLiteral("start"));
        // The flags of the run.
        state_.ResetForNewRun();
        flags.flags.fill(false);
        state_.Responding = true;
        if (QFileInfo::exists(keyedMarkerPath())) {
            // The last run keyed the radio and ended without unkeying it: the bring-up unkeys it first.
            // Without the marker a keyed radio is the operator's own (a microphone) and is left alone.
            leftKeyedByLastRun_ = QStringLiteral("by a run of the program that ended without unkeying it");
            state_.SetTransmitting(true);
        }
        // The reply expectation (the families' constants are their own).
        link_.ExpectedBytes = 0;
        link_.ExpectOperation = QStringLiteral("unknown");
        messagesCaption_ = messages_.caption();
        // Bandspread, auto-repeat.
        main_.Bandspread.setRange(0, 1000);
        main_.Bandspread.setSmallChange(1);
        main_.Bandspread.setLargeChange(100);
        main_.BandLo.setCaption(QString::number(main_.Bandspread.min()));
        main_.BandHi.setCaption(QString::number(main_.Bandspread.max()));
        main_.AutoRepeatTimer.setEnabled(false);
        config_.AutoRepeatScroll.setRange(1, 20);
        config_.AutoRepeatScroll.setSmallChange(1);
        config_.AutoRepeatScroll.setLargeChange(5);
        {
            bool ok = false;
            const int rate = settings().GetSetting(kGeneral, QStringLiteral("AutoRepeat"), QStringLiteral("10")).toInt(&ok);
            config_.AutoRepeatScroll.setValue(ok ? rate : 10);
        }
        hooks.SaveAutoRepeatRate();
        // Forget the radio and the link's counters.
        radio_.clear();
        link_.MessageCounter = 0;
        // Settings in their order.
        MemoryNotesShown = readBool(QStringLiteral("MemoryNotesDisplay"), QStringLiteral("False"));
        hooks.UpdateMemoryNotesDisplay();
        restoreChecked(main_.HamBandSequence, FlagHamBandSequence,
                       readBool(QStringLiteral("HamBandSequence"), QStringLiteral("T")));
        restoreChecked(config_.Interrogation, FlagInterrogation, readBool(QStringLiteral("Interrogate"), QStringLiteral("T")));
        if (readBool(QStringLiteral("UserCommandsEnabled"), QStringLiteral("F"))) {
            hooks.UpdateWindow();
            config_.UserCommandsEnableBox.setChecked(true);
        }
        ShowMemoryBankSetting = readBool(QStringLiteral("ShowMemoryBank"), QStringLiteral("False"));
        hooks.ShowMemoryBanks(ShowMemoryBankSetting);
        config_.DualReceiveEnableBox.setChecked(readBool(QStringLiteral("DualReceiveEnabled"), QStringLiteral("1")));
        config_.PollInterval.setText(settings().GetSetting(kGeneral, QStringLiteral("InterrogateInterval"), QStringLiteral("200")));
        config_.TxTimeout.setText(settings().GetSetting(kGeneral, QStringLiteral("TxTimeout"), QStringLiteral("300")));
        // The interval is known now; the command timer runs from here on.
        queue_.InitializeXcvrCmdBuffer();
        // The address and control folder from the settings.
        config_.Address.setText(settings().GetSetting(kGeneral, QStringLiteral("RadioId"), QStringLiteral("0")));
        config_.RadioFolder.setText(settings().GetSetting(kGeneral, QStringLiteral("ControlFolder"), QString()));
        config_.RadioFolder.setSelStart(int(config_.RadioFolder.text().size()));
        state_.RadioFilterGroup = 1;
        // Read the catalogue; without it the program stops here.
        if (!LoadRadioInfo()) return;
        log(QStringLiteral("radio info loaded"));
        port_.InitializeCommPort();
        log(QStringLiteral("commport initialized"));
        SetControlFlag(FlagRadixRestore, true);
        // Neither option is set yet, so the chosen one raises its click, which consumes the flag.
        config_.HexSel.setValue(false);
        config_.DecSel.setValue(false);
        if (settings().GetSetting(kGeneral, QStringLiteral("Radix"), QStringLiteral("Hexadecimal")) ==
            QLatin1String("Hexadecimal"))
            config_.HexSel.setValue(true);
        else
            config_.DecSel.setValue(true);
        if (!config_.HexSel.Click && !config_.DecSel.Click) SetControlFlag(FlagRadixRestore, false);
        log(QStringLiteral("radix selection complete"));
        // The links of families that reach their radio through another program.
        radio_.startFamilyLinks(context_);
        // Bring up the radio named in the settings.
        const QString radioName = settings().GetSetting(kGeneral, QStringLiteral("Radio"), QString());
        log(QStringLiteral("radio setting = ") + radioName);
        config_.InitialXcvrCommand.setText(settings().GetSetting(kGeneral, QStringLiteral("InitialXcvrCommand"), QString()));
        if (!radioName.isEmpty() && SearchCombo(config_.RadioCombo, radioName) >= 0) {
            {
                // The program chooses the entry: its click must not bring the radio up a second time.
                FlagHold hold(flags.flags[FlagRadioCombo]);
                SetCombo(config_.RadioCombo, radioName);
            }
            hooks.InitializeMultiXcvr();
            log(QStringLiteral("multiple transceiver structures initialize"));
            ValidID();
            UpdateRadio(false);
            log(QStringLiteral("UpdateRadio complete"));
        } else {
            // Polling nothing in silence would look like a dead radio: the operator is told why.
            if (radio_.catalogue.count() == 0) {
                const QString why = QStringLiteral("no radios specified in radios.txt file");
                common_.LogLine(QStringLiteral("KavModule.Initialize: ") + why);
                dialogs().messageBox(why, common_.info().title);
            } else if (!radioName.isEmpty()) {
                const QString why = QStringLiteral("The radio \"%1\" chosen before is not in Radios.txt; choose a radio "
                                                   "in the configuration window").arg(radioName);
                common_.LogLine(QStringLiteral("KavModule.Initialize: ") + why);
                dialogs().messageBox(why, common_.info().title);
            }
            hooks.InitializeMultiXcvr();
            log(QStringLiteral("multiple transceiver structures initialize"));
        }
        // The mode is unknown until the radio reports; the band tables are built.
        state_.RadioMode = -1;
        hooks.InitializeBands();
        log(QStringLiteral("bands initialized"));
        // The monitor's options as the settings say.
        restoreChecked(messages_.CaptureEnabled, FlagCaptureEnabled,
                       readBool(QStringLiteral("MessageCapture"), QStringLiteral("T")));
        {
            bool ok = false;
            int mode = settings().GetSetting(kGeneral, QStringLiteral("MessageDisplayMode"), QStringLiteral("0")).toInt(&ok);
            if (!ok || !messages_.MessageDisplayMode.has(mode)) mode = 0;
            messages_.MessageDisplayMode[mode].setValue(true);
        }
        // Device grids and tables.
        hooks.InitializeDeviceGrids();
        hooks.LoadDevices();
        log(QStringLiteral("devices loaded"));
        // Ask the radio for its state when it has an address.
        if (ValidID()) queue_.InterrogateRadio();
        // The user sequences.
        hooks.LoadUserSequences();
        log(QStringLiteral("User Sequences loaded"));
        messages_.ClearMessageDisplay();
        UpdateCaption();
        log(QStringLiteral("Caption updated"));
        config_.ConfigTab.setTab(0);
        common_.RestoreWindowPosition(main_);
        log(QStringLiteral("complete"));
    });
}

void KavModule::Terminate() {
    Guard("KavModule.Terminate", [&] {
        hooks.SaveMultiSettings();
        hooks.SaveDevices();
        hooks.SaveBandMemories();
        auto& s = settings();
        s.SaveSetting(kGeneral, QStringLiteral("RestoreModeFilter"),
                      config_.ModeFiltersEnabledCheck.checked() ? QStringLiteral("1") : QStringLiteral("0"));
        s.SaveSetting(kGeneral, QStringLiteral("DTR"), QString::number(port_.DTRControl));
        s.SaveSetting(kGeneral, QStringLiteral("RTS"), QString::number(port_.RTSControl));
        s.SaveSetting(kGeneral, QStringLiteral("InterrogateInterval"), config_.PollInterval.text());
        s.SaveSetting(kGeneral, QStringLiteral("TxTimeout"), config_.TxTimeout.text());
        radio_.stopFamilyLinks();
        if (hooks.FilterGroupChangesUnsaved()) {
            if (dialogs().messageBox(QStringLiteral("Save changes to Filter Group settings?"), common_.info().title,
                                     MsgButtons::YesNo) == MsgAnswer::Yes)
                hooks.SaveFilterGroupData();
        }
        if (!FilterGroupFilename.isEmpty()) s.SaveSetting(kGeneral, QStringLiteral("FilterGroupFilename"), FilterGroupFilename);
        hooks.SaveUserSequences();
        common_.SaveWindowPosition(main_);
    });
}

// ---- radix ----

void KavModule::SelectDecimalRadix() {
    Guard("KavModule.SelectDecimalRadix", [&] {
        if (config_.Address.visible()) {
            config_.DecLabel.setVisible(true);
            config_.HexLabel.setVisible(false);
        }
        if (!ControlFlag(FlagRadixRestore)) {
            const int v = SelectedRadio::DecVal(config_.Address.text().trimmed());
            if (v >= 0) config_.Address.setText(QString::number(v));
            hooks.ConvertMultiAddresses(false);
        } else {
            SetControlFlag(FlagRadixRestore, false);
        }
        if (const RadioInfo* r = radio_.info(); r && !r->defaultAddress.isEmpty())
            config_.DefaultAddress.setCaption(QStringLiteral("Default: ") + QString::number(SelectedRadio::DecVal(r->defaultAddress)));
        settings().SaveSetting(kGeneral, QStringLiteral("Radix"), QStringLiteral("Decimal"));
    });
}

void KavModule::SelectHexadecimalRadix() {
    Guard("KavModule.SelectHexadecimalRadix", [&] {
        if (config_.Address.visible()) {
            config_.HexLabel.setVisible(true);
            config_.DecLabel.setVisible(false);
        }
        if (!ControlFlag(FlagRadixRestore)) {
            bool ok = false;
            const int v = config_.Address.text().trimmed().toInt(&ok);
            if (ok) config_.Address.setText(QString::number(v, 16).toUpper());
            hooks.ConvertMultiAddresses(true);
        } else {
            SetControlFlag(FlagRadixRestore, false);
        }
        if (const RadioInfo* r = radio_.info(); r && !r->defaultAddress.isEmpty())
            config_.DefaultAddress.setCaption(QStringLiteral("Default: ") + r->defaultAddress);
        settings().SaveSetting(kGeneral, QStringLiteral("Radix"), QStringLiteral("Hexadecimal"));
    });
}

// ---- keying ----

void KavModule::Transmit() {
    // Keyed first, so that the marker is on disk before any key reaches the radio.
    state_.SetTransmitting(true);
    SetTransmitOwner(nextKeyOwner_.isEmpty() ? QString::fromLatin1(kOperatorOwner) : nextKeyOwner_);
    if (!txWatchdogNote_.isEmpty()) {
        txWatchdogNote_.clear();
        UpdateCaption();
    }
    comm_.Transmit();
    queue_.SetXcvrTransmit();
}

void KavModule::Receive() {
    // Who ended whose transmission, for the log: the operator may end a client's.
    if (state_.transmitting()) {
        const QString by = nextKeyOwner_.isEmpty() ? QString::fromLatin1(kOperatorOwner) : nextKeyOwner_;
        common_.LogLine(QStringLiteral("KavModule: unkeyed by ") + by +
                        (transmitOwner_.isEmpty() || transmitOwner_ == by ? QString()
                                                                           : QStringLiteral(", over ") + transmitOwner_));
    }
    comm_.Receive();
    // A radio unkeyed by command stays keyed until that command has been written.
    if (queue_.SetXcvrReceive()) return;
    if (queue_.count() >= CommandQueue::kBufferSlots) {
        ReleaseTransmitter(QStringLiteral("and the command buffer was full"));
        return;
    }
    state_.SetTransmitting(false);
}

void KavModule::ReleaseTransmitter(const QString& why) {
    if (!state_.transmitting()) return;
    Guard("KavModule.ReleaseTransmitter", [&] {
        common_.LogLine(QStringLiteral("KavModule: the transmitter was keyed ") + why + QStringLiteral("; unkeyed") +
                        (transmitOwner_.isEmpty() ? QString() : QStringLiteral(" (transmitting for ") + transmitOwner_ + QLatin1Char(')')));
        comm_.Receive();
        queue_.SendReceiveNow();
    });
}

bool KavModule::ClientMayTransmit(const QString& client, bool on, bool unkeyOthers) const {
    if (!state_.transmitting() || transmitOwner_.isEmpty() || transmitOwner_ == client) return true;
    if (transmitOwner_ == QLatin1String(kOperatorOwner)) return false;
    return !on && unkeyOthers;
}

void KavModule::SetTransmitOwner(const QString& owner) {
    if (owner == transmitOwner_) return;
    if (!owner.isEmpty()) common_.LogLine(QStringLiteral("KavModule: transmitting for ") + owner);
    transmitOwner_ = owner;
    emit state_.transmitOwnerChanged(owner);
}

void KavModule::LockClientSets(bool on, const QString& by) {
    if (on == clientSetsLocked_) return;
    clientSetsLocked_ = on;
    common_.LogLine(QStringLiteral("KavModule: clients' frequency and mode sets ") +
                    (on ? QStringLiteral("locked by ") : QStringLiteral("unlocked by ")) + by);
    emit state_.clientLockChanged(on);
}

void KavModule::ClientGone(const QString& client) {
    if (!client.isEmpty() && state_.transmitting() && transmitOwner_ == client)
        ReleaseTransmitter(QStringLiteral("by ") + client + QStringLiteral(", which has gone"));
}

QString KavModule::keyedMarkerPath() const {
    return QFileInfo(settings().path()).absolutePath() + QStringLiteral("/Tolvane.keyed");
}

void KavModule::markKeyed(bool on) {
    const QString path = keyedMarkerPath();
    if (!on) {
        QFile::remove(path);
        return;
    }
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        f.write("Tolvane keyed the radio and has not yet unkeyed it; its next start unkeys it.\n") < 0 ||
        !f.flush()) {
        common_.LogLine(QStringLiteral("KavModule: cannot write ") + path + QStringLiteral(": ") +
                        f.errorString() +
                        QStringLiteral("; a crash while keyed would leave the radio keyed"));
        return;
    }
    // On the disk itself, not in a cache that dies with the machine.
    ::fsync(f.handle());
}

// ---- the caption ----

QString KavModule::composeCaption() const {
    const QString suffix = ErrorLogFlag ? QStringLiteral(" - see ErrorLog in ") + common_.ErrorLogPathname() : QString();
    const QString head = common_.info().title + QLatin1Char(' ') + common_.info().version();
    if (!CommCaption.isEmpty()) return head + QLatin1Char(' ') + CommCaption + suffix;
    const Protocol* p = radio_.protocol();
    const QString fault = p ? p->LinkFaultCaption() : QString();
    if (!fault.isEmpty()) return head + QLatin1Char(' ') + fault + suffix;
    const QString offline = p ? p->OfflineCaption(state_.Responding) : QString();
    if (!offline.isEmpty())
        return head + QStringLiteral(" [") + state_.RadioDisplayName + offline + QStringLiteral("] ") + suffix;
    QString c = head + QStringLiteral(" [") + state_.RadioDisplayName + QStringLiteral("] @ ") +
                loop().utcNow().toString(QStringLiteral("hh:mm:ss")) + QStringLiteral("Z ") +
                main_.FreqDisplay.text() + QLatin1Char(' ') + ModeName(state_.RadioMode);
    if (main_.SplitBox.checked()) c += QStringLiteral(" Split");
    return c + txWatchdogNote_ + (outsideNote_.isEmpty() ? QString() : QStringLiteral(" - ") + outsideNote_) + suffix;
}

void KavModule::SetCaptionNote(const QString& note) {
    if (note == outsideNote_) return;
    outsideNote_ = note;
    UpdateCaption();
}

void KavModule::UpdateCaption() {
    Guard("KavModule.UpdateCaption", [&] {
        if (!CommCaption.isEmpty() && radio_.info() && !radio_.info()->serialPort) CommCaption.clear();
        main_.setCaption(composeCaption());
    });
}

void KavModule::ErrorLogExists() {
    ErrorLogFlag = true;
    UpdateCaption();
}

// ---- what the parts read of the windows ----

QString KavModule::pollIntervalText() const { return config_.PollInterval.text(); }
QString KavModule::addressText() const { return config_.Address.text(); }
void KavModule::clearAddress() { config_.Address.setText(QString()); }
bool KavModule::decimalRadix() const { return config_.DecSel.value(); }
bool KavModule::interrogationEnabled() const { return config_.Interrogation.checked(); }
bool KavModule::modeFiltersEnabled() const { return config_.ModeFiltersEnabledCheck.checked(); }
QString KavModule::controlFolderText() const { return config_.RadioFolder.text(); }
bool KavModule::splitChecked() const { return main_.SplitBox.checked(); }
bool KavModule::dualChecked() const { return main_.DualBox.checked(); }
bool KavModule::captureEnabled() const { return messages_.CaptureEnabled.checked(); }

void KavModule::DisplayLine(const QString& prefix, const QString& decimalLine, const QString& hexLine,
                            const QString& asciiLine) {
    Guard("KavModule.DisplayLine", [&] {
        if (!captureEnabled()) return;
        common_.DebugLog(QStringLiteral("KavModule.DisplayLine: ") + prefix + QLatin1Char(' ') + hexLine);
        if (messages_.displayLength() > KavMessages::kDisplayLimit) {
            // The display is full: stop capturing rather than lose the oldest lines silently.
            {
                SetControlFlag(FlagCaptureEnabled, true);
                messages_.CaptureEnabled.setChecked(false);
            }
            loop().yield();
            messages_.overflow.Show();
            if (messages_.overflow.raiseRequested) messages_.overflow.raiseRequested();
            return;
        }
        static const QString crlf = QStringLiteral("\r\n");
        messages_.AppendToMessageDisplay(prefix + decimalLine + crlf, 0);
        messages_.AppendToMessageDisplay(prefix + hexLine + crlf, 1);
        messages_.AppendToMessageDisplay(prefix + asciiLine + crlf, 2);
        messages_.SetUnsavedData(true);
    });
}

bool KavModule::takePendingNote(QString* text) {
    Note& note = messages_.note;
    if (!note.pending()) return false;
    *text = note.NoteText.text();
    note.NoteText.setText(QString());
    note.NoteLabel.setCaption(note.PermLabel.caption());
    return true;
}

void KavModule::showAwaitedReply(const QString& text) {
    messages_.setCaption(text.isEmpty() ? messagesCaption_ : messagesCaption_ + QStringLiteral(" (") + text + QLatin1Char(')'));
}

void KavModule::showPortUnavailable() {
    main_.setCaption(common_.info().title + QStringLiteral(" (could not obtain comm port)"));
}

}  // namespace tv
