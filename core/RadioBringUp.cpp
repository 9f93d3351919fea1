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

#include <utility>

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");
}  // namespace

void KavModule::UpdateRadio(bool interrogate) {
    auto log = [this](const QString& t) { common_.LogLine(QStringLiteral("KavModule.UpdateRadio: ") + t); };
    Guard("KavModule.UpdateRadio", [&] {
        log(QStringLiteral("Start"));
        // Without radios in the catalogue there is nothing to bring up.
        if (config_.RadioCombo.ListCount() == 0) {
            dialogs().messageBox(QStringLiteral("no radios specified in radios.txt file"), common_.info().title);
            return;
        }
        // Stop the scheduler and reset the link while the radio changes.
        queue_.XcvrCmdTimer.setEnabled(false);
        link_.Reset();
        main_.FilterGroupCombo.setVisible(false);
        main_.FilterGroupLabel.setVisible(false);
        main_.FilterGroupCombo.Clear();
        // The memories of this radio.
        hooks.LoadMemories();
        log(QStringLiteral("Memories loaded"));
        hooks.InitializeFilterSettings();
        log(QStringLiteral("Filter Settings initialized"));
        // Find the chosen radio in the catalogue.
        const QString wanted = config_.RadioCombo.text().toUpper();
        int index = -1;
        for (int i = 0; i < radio_.catalogue.count(); ++i)
            if (radio_.catalogue.at(i).comboName.toUpper() == wanted) {
                index = i;
                break;
            }
        if (index < 0) {
            dialogs().messageBox(QStringLiteral("no entry for ") + config_.RadioCombo.text() +
                                     QStringLiteral(" in radios.txt file"),
                                 common_.info().title);
            queue_.InitializeXcvrCmdBuffer();
            return;
        }
        log(QStringLiteral("found radio model ") + config_.RadioCombo.text());
        // The family's protocol is built afresh: nothing the old radio told it survives.
        radio_.choose(index, context_);
        {
            FlagHold hold(flags.flags[FlagRadioCombo]);
            config_.RadioCombo.setListIndex(index);
            loop().yield();
        }
        const RadioInfo& r = radio_.catalogue.at(index);
        // Show the split box when the radio has split.
        main_.SplitBox.setVisible(r.split);
        if (!r.split) main_.SplitBox.setChecked(false);
        main_.DualBox.setVisible(r.dualWatch);
        if (!r.dualWatch) main_.DualBox.setChecked(false);
        // A mode whose option just went falls back to its nearest relative.
        main_.ModeSel[ModeRTTY].setVisible(r.rtty);
        main_.ModeSel[ModeCWR].setVisible(r.cwR);
        main_.ModeSel[ModeRTTYR].setVisible(r.rttyR);
        main_.ModeSel[ModeWBFM].setVisible(false);
        int restoreMode = -1;
        const int mode = state_.RadioMode;
        if (mode == ModeRTTY && !r.rtty) restoreMode = ModeLSB;
        if (mode == ModeCWR && !r.cwR) restoreMode = ModeCW;
        if (mode == ModeRTTYR && !r.rttyR) restoreMode = r.rtty ? ModeRTTY : ModeLSB;
        // The VFO buttons the radio has.
        main_.VFOASelCmd.setEnabled(r.vfoSel);
        main_.VFOBSelCmd.setEnabled(r.vfoSel);
        main_.VFOEqualCmd.setEnabled(r.vfoEqual);
        main_.VFOXchCmd.setEnabled(r.vfoExchange);
        main_.MainSelCmd.setEnabled(r.mainSubSel);
        main_.SubSelCmd.setEnabled(r.mainSubSel);
        main_.MainSubEqualCmd.setEnabled(r.mainSubEqual);
        main_.MainSubXchCmd.setEnabled(r.mainSubExchange);
        main_.XFCCmd.setEnabled(r.mainSubExchange || r.vfoExchange);
        // The port frames, as the family fixes them.
        for (Frame* f : {&config_.PortFrame, &config_.SpeedFrame, &config_.WordLengthFrame, &config_.ParityFrame,
                         &config_.StopBitsFrame, &config_.DTRFrame, &config_.RTSFrame})
            f->setEnabled(r.serialPort);
        if (r.serialPort) {
            port_.ConfigureCommPort();
            common_.LogLine(QStringLiteral("KavModule.Initialize: commport configured"));
        } else {
            common_.LogLine(QStringLiteral("KavModule.Initialize: commport not required"));
        }
        // The VFO frame's caption.
        main_.VFOFrame.setCaption(QStringLiteral("VFO"));
        // The operator's own address is never overwritten, only an empty one or "0".
        if (r.defaultAddress.isEmpty()) {
            config_.DefaultAddress.setCaption(QString());
        } else {
            const QString shown =
                config_.DecSel.value() ? QString::number(SelectedRadio::DecVal(r.defaultAddress)) : r.defaultAddress;
            config_.DefaultAddress.setCaption(QStringLiteral("Default: ") + shown);
            const QString a = config_.Address.text().trimmed();
            if (a.isEmpty() || a == QLatin1String("0")) config_.Address.setText(shown);
        }
        // The S-meter when the radio reports one.
        main_.SMeter.setVisible(r.sMeter);
        main_.SMeterValue.setVisible(r.sMeter);
        main_.SMeterValue.setCaption(QString());
        hooks.SetSMeter(QString());
        main_.SMeterDummy.setVisible(!r.sMeter);
        // Remember the radio for the next run.
        settings().SaveSetting(kGeneral, QStringLiteral("Radio"), config_.RadioCombo.text());
        // Log what is known of the radio.
        log(QStringLiteral("model-independent initialization complete"));
        log(QStringLiteral("supplier: ") + QString(r.supplier));
        // The fine-step buttons' tooltips.
        main_.HzUpCmd.setToolTip(QStringLiteral("QSY up 10 Hz"));
        main_.HzDownCmd.setToolTip(QStringLiteral("QSY down 10 Hz"));
        // The supplier's part. A radio the last run left keyed hears its receive command before
        // anything else, or as soon as it listens.
        auto unkeyLeftKeyed = [this] {
            if (!leftKeyedByLastRun_.isEmpty())
                ReleaseTransmitter(std::exchange(leftKeyedByLastRun_, QString()));
        };
        const bool listensAfterBringUp = radio_.traits().commandsAfterBringUp;
        if (!listensAfterBringUp) unkeyLeftKeyed();
        bringUpFamily(r);
        if (listensAfterBringUp) unkeyLeftKeyed();
        // The memory bank; the model's own settings are done.
        hooks.SetCurrentMemoryBank();
        log(QStringLiteral("model-dependent initialization complete"));
        // Fresh mode tables and an empty queue.
        hooks.ResetModeTables();
        queue_.InitializeXcvrCmdBuffer();
        log(QStringLiteral("CmdBuffer initialized "));
        // The operator's initial command goes first.
        const QString initial = config_.InitialXcvrCommand.text();
        if (!initial.isEmpty()) {
            if (!initial.startsWith(QLatin1Char('\'')))
                queue_.SetXcvrRaw(initial);
            else if (initial.size() > 1)
                queue_.SetXcvrstring(initial.mid(1));
            log(QStringLiteral("InitialCommand queued "));
        }
        // Restore the mode of the last run.
        if (restoreMode >= 0) queue_.SetXcvrMode(restoreMode);
        // Start polling when interrogation is on.
        if (interrogate) {
            queue_.InterrogateRadio();
            log(QStringLiteral("Interrogation complete"));
        }
        // The S-meter scale file.
        hooks.LoadSMeterData();
    });
}

void KavModule::bringUpFamily(const RadioInfo& r) {
    // A link that another family keeps open (a console) is closed when a radio of this one is chosen.
    radio_.familyChosen(r.supplier);
    Protocol* p = radio_.protocol();
    const ProtocolTraits& t = radio_.traits();
    // Address fields only for radios on a bus; the control folder only for a radio reached through one.
    for (Control* c : {static_cast<Control*>(&config_.Address), static_cast<Control*>(&config_.AddressLabel),
                       static_cast<Control*>(&config_.DefaultAddress)})
        c->setVisible(t.addressed);
    const bool folder = p && p->traits().usesControlFolder;
    for (Control* c : {static_cast<Control*>(&config_.RadioFolder), static_cast<Control*>(&config_.RadioFolderLabel),
                       static_cast<Control*>(&config_.RadioFolderSelect)})
        c->setVisible(folder);
    config_.HexLabel.setVisible(t.addressed && config_.HexSel.value());
    config_.DecLabel.setVisible(t.addressed && config_.DecSel.value());
    if (!p) return;  // a letter no family speaks: the radio is shown, and nothing is said to it
    const bool force = t.interrogation == InterrogationRule::Forced ||
                       (t.interrogation == InterrogationRule::ForcedWithMeter && r.sMeter);
    if (force) restoreChecked(config_.Interrogation, FlagInterrogation, true);
    messages_.InterrogateFrame.setVisible(true);
    state_.SetDisplayName(p->DisplayName(r));
    UpdateCaption();
    if (const std::optional<FixedPortSettings> f = p->traits().fixedPort) {
        // Selecting the options configures the port, as the operator's clicks would.
        if (f->speed) config_.Speed[f->speed].setValue(true);
        if (f->wordLength) config_.WordLength[f->wordLength].setValue(true);
        if (f->parity) config_.Parity[f->parity].setValue(true);
        if (f->stopBits) config_.StopBits[f->stopBits].setValue(true);
        if (f->dtr >= 0) config_.DTRButton[f->dtr].setValue(true);
        if (f->rts >= 0) config_.RTSButton[f->rts].setValue(true);
    }
    const QString upTip = p->FineStepToolTip(true), downTip = p->FineStepToolTip(false);
    if (!upTip.isEmpty()) main_.HzUpCmd.setToolTip(upTip);
    if (!downTip.isEmpty()) main_.HzDownCmd.setToolTip(downTip);
    p->BringUp();
}

}  // namespace tv
