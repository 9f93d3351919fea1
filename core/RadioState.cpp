// The radio's state as reported by every vendor's decoder, the two requests, the choice of primary and
// secondary receiver, and the main window's caption.

#include "core/KavModule.h"

#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "platform/EventLoop.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

void KavModule::UpdateRadioFreq(double freq) {
    common_.DebugLog(QStringLiteral("KavModule.UpdateRadioFreq: ") + QString::number(freq, 'g', 15));
    // An equal report does nothing at all: a steady polled frequency costs no display work.
    if (RadioFreq == freq) return;
    RadioFreq = freq;
    callHook(hooks.UpdateFreqDisplay);
}

void KavModule::UpdateXcvrMode(int mode) {
    if (mode < 0 || mode > 9) return;
    callHook(hooks.ItemChanged, QStringLiteral("Mode"), LogModeName(mode));
    callHook(hooks.ItemChanged, QStringLiteral("RadioMode"), ModeName(mode));
    main_.ModeFrame.setCaption(QStringLiteral("Mode: ") + ModeName(mode));
    if (RadioMode == mode) return;
    RadioMode = mode;
    // The option's click handler sees the flag and doesn't send the report back to the radio.
    SetControlFlag(FlagModeSel, true);
    main_.ModeSel[mode].setValue(true);
    loop().yield();
    SetControlFlag(FlagModeSel, false);
}

void KavModule::UpdateVFO() {
    if (CurrentVFO) {
        UpdateRadioFreq(VFOBFreq);
        UpdateXcvrMode(VFOBMode);
    } else {
        UpdateRadioFreq(VFOAFreq);
        UpdateXcvrMode(VFOAMode);
    }
    UpdateVFOCaption();
}

void KavModule::UpdateVFOCaption() {
    if (CurrentVFO == 0) main_.VFOFrame.setCaption(QStringLiteral("VFO A"));
    if (CurrentVFO == 1) main_.VFOFrame.setCaption(QStringLiteral("VFO B"));
}

void KavModule::RequestFrequency() {
    if (RadioIndex < 0) return;
    if (Protocol* p = protocol()) p->RequestFrequency();
}

void KavModule::RequestMode() {
    if (RadioIndex < 0) return;
    if (Protocol* p = protocol()) p->RequestMode();
}

void KavModule::AdjustRadioFreq(double delta) {
    if (delta >= 0) {
        if (RadioFreq + delta > 999999.99) return;
    } else if (RadioFreq <= delta) {
        return;
    }
    SetXcvrFreq(RadioFreq + delta);
}

void KavModule::SelectSecondary() {
    const RadioInfo* r = radio();
    if (!r) return;
    const QChar s = r->supplier;
    if (s == QLatin1Char('K')) {
        SetXcvrVFOB();
    } else if (QStringLiteral("ITYFN").contains(s)) {
        // The sub receiver takes precedence over the VFOs.
        if (r->mainSubSel)
            SetXcvrSub();
        else if (r->vfoSel)
            SetXcvrVFOB();
    }
}

void KavModule::SelectPrimary() {
    const RadioInfo* r = radio();
    if (!r) return;
    const QChar s = r->supplier;
    if (s == QLatin1Char('K')) {
        SetXcvrVFOA();
    } else if (QStringLiteral("ITYFN").contains(s)) {
        if (r->mainSubSel)
            SetXcvrMain();
        else if (r->vfoSel)
            SetXcvrVFOA();
    }
}

QString KavModule::composeCaption() const {
    const QString suffix = ErrorLogFlag ? QStringLiteral(" - see ErrorLog in ") + common_.ErrorLogPathname() : QString();
    const QString head = common_.info().title + QLatin1Char(' ') + common_.info().version();
    if (!CommCaption.isEmpty()) return head + QLatin1Char(' ') + CommCaption + suffix;
    const QString folderError = hooks.ControlFolderErrorCaption ? hooks.ControlFolderErrorCaption() : QString();
    if (!folderError.isEmpty()) return head + QLatin1Char(' ') + folderError + suffix;
    if (!YaesuModelName.isEmpty() && YaesuModelName != QLatin1String("unknown") && !YaesuResponding)
        return head + QStringLiteral(" [") + RadioDisplayName + QStringLiteral(" - offline] ") + suffix;
    if (GetRadioSupplier() == QLatin1Char('F') && !(hooks.SDRConnected && hooks.SDRConnected()))
        return head + QStringLiteral(" [") + RadioDisplayName + QStringLiteral(" - not running] ") + suffix;
    QString c = head + QStringLiteral(" [") + RadioDisplayName + QStringLiteral("] @ ") +
                loop().utcNow().toString(QStringLiteral("hh:mm:ss")) + QStringLiteral("Z ") +
                main_.FreqDisplay.text() + QLatin1Char(' ') + ModeName(RadioMode);
    if (main_.SplitBox.checked()) c += QStringLiteral(" Split");
    return c + suffix;
}

void KavModule::UpdateCaption() {
    Guard("KavModule.UpdateCaption", [&] {
        if (!CommCaption.isEmpty() && radio() && !radio()->serialPort) CommCaption.clear();
        main_.setCaption(composeCaption());
    });
}

void KavModule::SetCommCaption(const QString& text) { CommCaption = text; }

void KavModule::ErrorLogExists() {
    ErrorLogFlag = true;
    UpdateCaption();
}

bool KavModule::ControlFlag(int index) const {
    if (index < 0 || index >= kControlFlagCount) return false;
    return ControlFlags[size_t(index)];
}

void KavModule::SetControlFlag(int index, bool value) {
    if (index < 0 || index >= kControlFlagCount) return;
    ControlFlags[size_t(index)] = value;
}

}  // namespace tv
