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
    : common_(common), main_(main), config_(config), messages_(messages), comm_(comm) {
    main_.XcvrCmdTimer.TimerEvent = [this] { ExecuteNextXcvrCmd(); };
    messages_.ExpectTimer.TimerEvent = [this] {
        messages_.ExpectTimer.setEnabled(false);
        ExpectTimeout();
    };
    comm_.GetDTRControl = [this] { return DTRControl; };
    comm_.GetRTSControl = [this] { return RTSControl; };
    comm_.devicePath = [this](int port) { return CommPortDevicePath(port); };
    comm_.onOpened = [this] {
        SetCommCaption(QString());
        UpdateCaption();
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
}

SettingsStore& KavModule::settings() const { return common_.settings(); }
Dialogs& KavModule::dialogs() const { return common_.dialogs(); }
EventLoop& KavModule::loop() const { return common_.loop(); }

void KavModule::setProtocol(QChar supplier, Protocol* protocol) { protocols_[supplier] = protocol; }

Protocol* KavModule::protocol() const {
    const QChar s = GetRadioSupplier();
    // TenTec radios in CI-V frames speak through the Icom unit.
    auto it = protocols_.find(s == QLatin1Char('T') && !protocols_.count(s) ? QLatin1Char('I') : s);
    return it == protocols_.end() ? nullptr : it->second;
}

const RadioInfo* KavModule::radio() const {
    if (RadioIndex < 0 || RadioIndex >= catalogue.count()) return nullptr;
    return &catalogue.at(RadioIndex);
}

QChar KavModule::GetRadioSupplier() const {
    const RadioInfo* r = radio();
    return r ? r->supplier : QChar();
}

QString KavModule::radioModel() const {
    const RadioInfo* r = radio();
    return r ? r->model.toUpper() : QString();
}

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
    const RadioCatalogue::LoadResult result = catalogue.load(path);
    config_.RadioCombo.Clear();
    for (int i = 0; i < catalogue.count(); ++i) config_.RadioCombo.AddItem(catalogue.at(i).comboName);
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
        // 1. The flags of the run.
        FreqFocusGiven = false;
        ControlFlags.fill(false);
        YaesuResponding = true;
        YaesuModelName = KenwoodModelName = TenTecModelName = QStringLiteral("unknown");
        KenwoodModelId = 0;
        KenwoodFilterCacheValid = false;
        // 2. CI-V constants and the reply expectation.
        CIVPreamble = 254;
        CIVEndOfMessage = 253;
        CIVOK = 251;
        CIVNG = 250;
        CIVController = 224;
        ExpectedBytes = 0;
        ExpectOperation = QStringLiteral("unknown");
        MessagesCaption = messages_.caption();
        // 3. Bandspread, auto-repeat.
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
        callHook(hooks.SaveAutoRepeatRate);
        // 4.
        RadioIndex = -1;
        MessageCounter = 0;
        // 5. Settings in their order.
        MemoryNotesShown = readBool(QStringLiteral("MemoryNotesDisplay"), QStringLiteral("False"));
        callHook(hooks.UpdateMemoryNotesDisplay);
        restoreChecked(main_.HamBandSequence, FlagHamBandSequence,
                       readBool(QStringLiteral("HamBandSequence"), QStringLiteral("T")));
        restoreChecked(config_.Interrogation, FlagInterrogation, readBool(QStringLiteral("Interrogate"), QStringLiteral("T")));
        if (readBool(QStringLiteral("UserCommandsEnabled"), QStringLiteral("F"))) {
            callHook(hooks.UpdateWindow);
            config_.UserCommandsEnableBox.setChecked(true);
        }
        ShowMemoryBankSetting = readBool(QStringLiteral("ShowMemoryBank"), QStringLiteral("False"));
        callHook(hooks.ShowMemoryBanks, ShowMemoryBankSetting);
        config_.DualReceiveEnableBox.setChecked(readBool(QStringLiteral("DualReceiveEnabled"), QStringLiteral("1")));
        config_.PollInterval.setText(settings().GetSetting(kGeneral, QStringLiteral("InterrogateInterval"), QStringLiteral("200")));
        // 6. The interval is known now; the command timer runs from here on.
        InitializeXcvrCmdBuffer();
        // 7.
        config_.Address.setText(settings().GetSetting(kGeneral, QStringLiteral("RadioId"), QStringLiteral("0")));
        config_.RadioFolder.setText(settings().GetSetting(kGeneral, QStringLiteral("ControlFolder"), QString()));
        config_.RadioFolder.setSelStart(int(config_.RadioFolder.text().size()));
        RadioFilterGroup = 1;
        // 8.
        if (!LoadRadioInfo()) return;
        log(QStringLiteral("radio info loaded"));
        InitializeCommPort();
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
        // 9.
        callHook(hooks.SDRInitialize);
        // 10.
        const QString radioName = settings().GetSetting(kGeneral, QStringLiteral("Radio"), QString());
        log(QStringLiteral("radio setting = ") + radioName);
        config_.InitialXcvrCommand.setText(settings().GetSetting(kGeneral, QStringLiteral("InitialXcvrCommand"), QString()));
        if (!radioName.isEmpty() && SearchCombo(config_.RadioCombo, radioName) >= 0) {
            {
                // The program chooses the entry: its click must not bring the radio up a second time.
                FlagHold hold(ControlFlags[FlagRadioCombo]);
                SetCombo(config_.RadioCombo, radioName);
            }
            callHook(hooks.InitializeMultiXcvr);
            log(QStringLiteral("multiple transceiver structures initialize"));
            ValidID();
            UpdateRadio(false);
            log(QStringLiteral("UpdateRadio complete"));
        } else {
            callHook(hooks.InitializeMultiXcvr);
            log(QStringLiteral("multiple transceiver structures initialize"));
        }
        // 11.
        RadioMode = -1;
        callHook(hooks.InitializeBands);
        log(QStringLiteral("bands initialized"));
        // 12.
        restoreChecked(messages_.CaptureEnabled, FlagCaptureEnabled,
                       readBool(QStringLiteral("MessageCapture"), QStringLiteral("T")));
        {
            bool ok = false;
            int mode = settings().GetSetting(kGeneral, QStringLiteral("MessageDisplayMode"), QStringLiteral("0")).toInt(&ok);
            if (!ok || !messages_.MessageDisplayMode.has(mode)) mode = 0;
            messages_.MessageDisplayMode[mode].setValue(true);
        }
        // 13.
        callHook(hooks.InitializeDeviceGrids);
        callHook(hooks.LoadDevices);
        log(QStringLiteral("devices loaded"));
        // 14.
        if (ValidID()) InterrogateRadio();
        // 15.
        callHook(hooks.LoadUserSequences);
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
        callHook(hooks.SaveMultiSettings);
        callHook(hooks.SaveDevices);
        callHook(hooks.SaveBandMemories);
        auto& s = settings();
        s.SaveSetting(kGeneral, QStringLiteral("RestoreModeFilter"),
                      config_.ModeFiltersEnabledCheck.checked() ? QStringLiteral("1") : QStringLiteral("0"));
        s.SaveSetting(kGeneral, QStringLiteral("DTR"), QString::number(DTRControl));
        s.SaveSetting(kGeneral, QStringLiteral("RTS"), QString::number(RTSControl));
        s.SaveSetting(kGeneral, QStringLiteral("InterrogateInterval"), config_.PollInterval.text());
        callHook(hooks.SDRTerminate);
        if (hooks.FilterGroupChangesUnsaved && hooks.FilterGroupChangesUnsaved()) {
            if (dialogs().messageBox(QStringLiteral("Save changes to Filter Group settings?"), common_.info().title,
                                     MsgButtons::YesNo) == MsgAnswer::Yes)
                callHook(hooks.SaveFilterGroupData);
        }
        const QString groupFile = s.GetSetting(kGeneral, QStringLiteral("FilterGroupFilename"), QString());
        if (!FilterGroupFilename.isEmpty()) s.SaveSetting(kGeneral, QStringLiteral("FilterGroupFilename"), FilterGroupFilename);
        Q_UNUSED(groupFile);
        callHook(hooks.SaveUserSequences);
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
            const int v = DecVal(config_.Address.text().trimmed());
            if (v >= 0) config_.Address.setText(QString::number(v));
            callHook(hooks.ConvertMultiAddresses, false);
        } else {
            SetControlFlag(FlagRadixRestore, false);
        }
        if (const RadioInfo* r = radio(); r && !r->defaultAddress.isEmpty())
            config_.DefaultAddress.setCaption(QStringLiteral("Default: ") + QString::number(DecVal(r->defaultAddress)));
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
            callHook(hooks.ConvertMultiAddresses, true);
        } else {
            SetControlFlag(FlagRadixRestore, false);
        }
        if (const RadioInfo* r = radio(); r && !r->defaultAddress.isEmpty())
            config_.DefaultAddress.setCaption(QStringLiteral("Default: ") + r->defaultAddress);
        settings().SaveSetting(kGeneral, QStringLiteral("Radix"), QStringLiteral("Hexadecimal"));
    });
}

}  // namespace tv
