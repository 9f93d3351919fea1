// Bringing a chosen radio up: what the catalogue says it can do decides what is shown and offered,
// the link is opened or left alone, and the first commands go out.

#include "core/KavModule.h"

#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "forms/KavMessages.h"
#include "platform/Dialogs.h"
#include "platform/EventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");

// TenTec radios of their own dialect have fixed port parameters (option indexes; 0 leaves it alone).
struct FixedPortRow {
    const char* model;
    bool folder;
    int speed, wordLength, parity, stopBits, dtr, rts;
};
constexpr FixedPortRow kFixedPorts[] = {
    {"PEGASUS", true, 0, 0, 0, 0, -1, -1},
    {"JUPITER", false, 8, 1, 1, 1, 1, 3},
    {"ARGONAUT V", false, 5, 1, 1, 1, -1, -1},
    {"ORION", false, 8, 1, 1, 1, 1, 3},
};
}  // namespace

bool KavModule::ValidID() {
    bool valid = false;
    Guard("KavModule.ValidID", [&] {
        const QString id = config_.Address.text().trimmed();
        if (id.isEmpty()) return;
        bool ok = true;
        if (config_.DecSel.value()) {
            for (QChar c : id) ok = ok && c >= QLatin1Char('0') && c <= QLatin1Char('9');
            const long v = ok && id.size() <= 3 ? id.toLong() : -1;
            if (v < 0 || v > 255) {
                dialogs().messageBox(QStringLiteral("CI-V address must be a decimal number between 0 and 255"),
                                     common_.info().title);
                config_.Address.setText(QString());
                return;
            }
            RadioAddress = QByteArray(1, char(v));
        } else {
            for (QChar c : id) ok = ok && QStringLiteral("0123456789ABCDEFabcdef").contains(c);
            if (!ok || id.size() >= 3) {
                dialogs().messageBox(QStringLiteral("CI-V address must be a hexadecimal number between 0 and FF"),
                                     common_.info().title);
                config_.Address.setText(QString());
                return;
            }
            // Lower-case digits pass the check but don't convert: the value is wrong, and stays so.
            RadioAddress = QByteArray(1, char(DecVal(id) & 0xFF));
        }
        valid = true;
    });
    return valid;
}

void KavModule::UpdateRadio(bool interrogate) {
    auto log = [this](const QString& t) { common_.LogLine(QStringLiteral("KavModule.UpdateRadio: ") + t); };
    Guard("KavModule.UpdateRadio", [&] {
        log(QStringLiteral("Start"));
        // 1.
        if (config_.RadioCombo.ListCount() == 0) {
            dialogs().messageBox(QStringLiteral("no radios specified in radios.txt file"), common_.info().title);
            return;
        }
        // 2.
        main_.XcvrCmdTimer.setEnabled(false);
        messages_.ExpectTimer.setEnabled(false);
        RcvCount = 0;
        ExpectedBytes = 0;
        ExpectOperation.clear();
        main_.FilterGroupCombo.setVisible(false);
        main_.FilterGroupLabel.setVisible(false);
        main_.FilterGroupCombo.Clear();
        KenwoodFilterCacheValid = false;
        // 3.
        callHook(hooks.LoadMemories);
        log(QStringLiteral("Memories loaded"));
        callHook(hooks.InitializeFilterSettings);
        log(QStringLiteral("Filter Settings initialized"));
        // 4.
        const QString wanted = config_.RadioCombo.text().toUpper();
        int index = -1;
        for (int i = 0; i < catalogue.count(); ++i)
            if (catalogue.at(i).comboName.toUpper() == wanted) {
                index = i;
                break;
            }
        if (index < 0) {
            dialogs().messageBox(QStringLiteral("no entry for ") + config_.RadioCombo.text() +
                                     QStringLiteral(" in radios.txt file"),
                                 common_.info().title);
            InitializeXcvrCmdBuffer();
            return;
        }
        log(QStringLiteral("found radio model ") + config_.RadioCombo.text());
        RadioIndex = index;
        {
            FlagHold hold(ControlFlags[FlagRadioCombo]);
            config_.RadioCombo.setListIndex(index);
            loop().yield();
        }
        const RadioInfo& r = catalogue.at(index);
        // 5.
        main_.SplitBox.setVisible(r.split);
        if (!r.split) main_.SplitBox.setChecked(false);
        main_.DualBox.setVisible(r.dualWatch);
        if (!r.dualWatch) main_.DualBox.setChecked(false);
        // 6. A mode whose option just went falls back to its nearest relative.
        main_.ModeSel[ModeRTTY].setVisible(r.rtty);
        main_.ModeSel[ModeCWR].setVisible(r.cwR);
        main_.ModeSel[ModeRTTYR].setVisible(r.rttyR);
        main_.ModeSel[ModeWBFM].setVisible(false);
        int restoreMode = -1;
        if (RadioMode == ModeRTTY && !r.rtty) restoreMode = ModeLSB;
        if (RadioMode == ModeCWR && !r.cwR) restoreMode = ModeCW;
        if (RadioMode == ModeRTTYR && !r.rttyR) restoreMode = r.rtty ? ModeRTTY : ModeLSB;
        // 7.
        main_.VFOASelCmd.setEnabled(r.vfoSel);
        main_.VFOBSelCmd.setEnabled(r.vfoSel);
        main_.VFOEqualCmd.setEnabled(r.vfoEqual);
        main_.VFOXchCmd.setEnabled(r.vfoExchange);
        main_.MainSelCmd.setEnabled(r.mainSubSel);
        main_.SubSelCmd.setEnabled(r.mainSubSel);
        main_.MainSubEqualCmd.setEnabled(r.mainSubEqual);
        main_.MainSubXchCmd.setEnabled(r.mainSubExchange);
        main_.XFCCmd.setEnabled(r.mainSubExchange || r.vfoExchange);
        // 8.
        for (Frame* f : {&config_.PortFrame, &config_.SpeedFrame, &config_.WordLengthFrame, &config_.ParityFrame,
                         &config_.StopBitsFrame, &config_.DTRFrame, &config_.RTSFrame})
            f->setEnabled(r.serialPort);
        if (r.serialPort) {
            ConfigureCommPort();
            common_.LogLine(QStringLiteral("KavModule.Initialize: commport configured"));
        } else {
            common_.LogLine(QStringLiteral("KavModule.Initialize: commport not required"));
        }
        // 9.
        main_.VFOFrame.setCaption(QStringLiteral("VFO"));
        // 10. The operator's own address is never overwritten, only an empty one or "0".
        if (r.defaultAddress.isEmpty()) {
            config_.DefaultAddress.setCaption(QString());
        } else {
            const QString shown =
                config_.DecSel.value() ? QString::number(DecVal(r.defaultAddress)) : r.defaultAddress;
            config_.DefaultAddress.setCaption(QStringLiteral("Default: ") + shown);
            const QString a = config_.Address.text().trimmed();
            if (a.isEmpty() || a == QLatin1String("0")) config_.Address.setText(shown);
        }
        // 11.
        main_.SMeter.setVisible(r.sMeter);
        main_.SMeterValue.setVisible(r.sMeter);
        main_.SMeterValue.setCaption(QString());
        callHook(hooks.SetSMeter, QString());
        main_.SMeterDummy.setVisible(!r.sMeter);
        // 12.
        settings().SaveSetting(kGeneral, QStringLiteral("Radio"), config_.RadioCombo.text());
        YaesuModelName.clear();
        KenwoodModelName.clear();
        TenTecModelName.clear();
        // 13.
        log(QStringLiteral("model-independent initialization complete"));
        log(QStringLiteral("supplier: ") + QString(r.supplier));
        // 14.
        main_.HzUpCmd.setToolTip(QStringLiteral("QSY up 10 Hz"));
        main_.HzDownCmd.setToolTip(QStringLiteral("QSY down 10 Hz"));
        // 15. The supplier's part.
        bringUpSupplier(r);
        // 16.
        callHook(hooks.SetCurrentMemoryBank);
        log(QStringLiteral("model-dependent initialization complete"));
        // 17.
        callHook(hooks.ResetModeTables);
        InitializeXcvrCmdBuffer();
        log(QStringLiteral("CmdBuffer initialized "));
        // 18.
        const QString initial = config_.InitialXcvrCommand.text();
        if (!initial.isEmpty()) {
            if (!initial.startsWith(QLatin1Char('\'')))
                SetXcvrRaw(initial);
            else if (initial.size() > 1)
                SetXcvrstring(initial.mid(1));
            log(QStringLiteral("InitialCommand queued "));
        }
        // 19.
        if (restoreMode >= 0) SetXcvrMode(restoreMode);
        // 20.
        if (interrogate) {
            InterrogateRadio();
            log(QStringLiteral("Interrogation complete"));
        }
        // 21.
        callHook(hooks.LoadSMeterData);
    });
}

void KavModule::bringUpSupplier(const RadioInfo& r) {
    const QChar s = r.supplier;
    const QString model = r.model.toUpper();
    const bool icomLike = s == QLatin1Char('I') || s == QLatin1Char('T');
    if (s != QLatin1Char('F')) callHook(hooks.SDRDisconnect);
    // Address fields only for CI-V radios; the control folder only for the bridge.
    for (Control* c : {static_cast<Control*>(&config_.Address), static_cast<Control*>(&config_.AddressLabel),
                       static_cast<Control*>(&config_.DefaultAddress)})
        c->setVisible(icomLike);
    bool folder = false;
    if (s == QLatin1Char('N'))
        for (const auto& row : kFixedPorts)
            if (model == QLatin1String(row.model)) folder = row.folder;
    for (Control* c : {static_cast<Control*>(&config_.RadioFolder), static_cast<Control*>(&config_.RadioFolderLabel),
                       static_cast<Control*>(&config_.RadioFolderSelect)})
        c->setVisible(folder);
    config_.HexLabel.setVisible(icomLike && config_.HexSel.value());
    config_.DecLabel.setVisible(icomLike && config_.DecSel.value());
    const bool forceInterrogation = (s == QLatin1Char('I') && r.sMeter) || QStringLiteral("NYKF").contains(s);
    if (forceInterrogation) restoreChecked(config_.Interrogation, FlagInterrogation, true);
    messages_.InterrogateFrame.setVisible(true);

    if (s == QLatin1Char('I')) {
        RadioDisplayName = QStringLiteral("Icom ") + r.model;
        FreqNudgePending = false;
        UpdateCaption();
    } else if (s == QLatin1Char('T')) {
        RadioDisplayName = QStringLiteral("TenTec ") + r.model;
        TenTecModelName = model;
        FreqNudgePending = false;
        UpdateCaption();
    } else if (s == QLatin1Char('N')) {
        RadioDisplayName = QStringLiteral("TenTec ") + r.model;
        TenTecModelName = model;
        for (const auto& row : kFixedPorts) {
            if (model != QLatin1String(row.model)) continue;
            // Selecting the options configures the port, as the operator's clicks would.
            if (row.speed) config_.Speed[row.speed].setValue(true);
            if (row.wordLength) config_.WordLength[row.wordLength].setValue(true);
            if (row.parity) config_.Parity[row.parity].setValue(true);
            if (row.stopBits) config_.StopBits[row.stopBits].setValue(true);
            if (row.dtr >= 0) config_.DTRButton[row.dtr].setValue(true);
            if (row.rts >= 0) config_.RTSButton[row.rts].setValue(true);
        }
    } else if (s == QLatin1Char('Y')) {
        RadioDisplayName = QStringLiteral("Yaesu ") + r.model;
        YaesuModelName = model;
        UpdateCaption();
    } else if (s == QLatin1Char('K')) {
        RadioDisplayName = QStringLiteral("Kenwood (model unknown)");
        UpdateCaption();
        common_.LogLine(QStringLiteral("KavModule.UpdateRadio: sending Kenwood model ID command"));
        // Twice: a radio that was asleep may miss the first.
        SendCommand(QByteArrayLiteral("ID;"));
        SendCommand(QByteArrayLiteral("ID;"));
    } else if (s == QLatin1Char('F')) {
        callHook(hooks.SDRConnect);
        CurrentVFO = 0;
        UpdateVFOCaption();
        RadioDisplayName = QStringLiteral("FlexRadio ") + r.model;
    }
    if (Protocol* p = protocol()) p->BringUp();
}

}  // namespace tv
