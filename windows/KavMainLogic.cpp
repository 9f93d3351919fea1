#include "windows/KavMainLogic.h"

#include "core/KavComm.h"
#include "core/KavModule.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "forms/KavMessages.h"
#include "platform/EventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

namespace {
constexpr unsigned kRed = 255;
}

KavMainLogic::KavMainLogic(KavModule& module, KavComm& comm) : m_(module), comm_(comm) {}

void KavMainLogic::FocusRule() {
    TextBox& f = m_.main().FreqDisplay;
    if (f.visible()) f.SetFocus();
}

void KavMainLogic::connect() {
    KavMain& w = m_.main();
    auto handler = [](const char* label, auto body) {
        return [label, body] { Guard(label, body); };
    };
    w.SplitBox.Click = handler("KavMain.SplitBox_Click", [this] { splitClick(); });
    w.DualBox.Click = handler("KavMain.DualBox_Click", [this] { dualClick(); });
    auto thenInterrogate = [this](void (CommandQueue::*op)()) {
        return [this, op] {
            (m_.queue().*op)();
            m_.queue().InterrogateRadio();
            FocusRule();
        };
    };
    w.VFOASelCmd.Click = handler("KavMain.VFOASelCmd_Click", thenInterrogate(&CommandQueue::SetXcvrVFOA));
    w.VFOBSelCmd.Click = handler("KavMain.VFOBSelCmd_Click", thenInterrogate(&CommandQueue::SetXcvrVFOB));
    // Alone of its group this one asks for no interrogation.
    w.VFOEqualCmd.Click = handler("KavMain.VFOEqualCmd_Click", [this] {
        m_.queue().SetXcvrVFOEqual();
        FocusRule();
    });
    w.VFOXchCmd.Click = handler("KavMain.VFOXchCmd_Click", thenInterrogate(&CommandQueue::SetXcvrVFOXch));
    w.MainSelCmd.Click = handler("KavMain.MainSelCmd_Click", thenInterrogate(&CommandQueue::SetXcvrMain));
    w.SubSelCmd.Click = handler("KavMain.SubSelCmd_Click", thenInterrogate(&CommandQueue::SetXcvrSub));
    w.MainSubEqualCmd.Click =
        handler("KavMain.MainSubEqualCmd_Click", thenInterrogate(&CommandQueue::SetXcvrMainSubEqual));
    w.MainSubXchCmd.Click = handler("KavMain.MainSubXchCmd_Click", thenInterrogate(&CommandQueue::SetXcvrMainSubXch));
    w.XFCCmd.MouseDown = [this](int, int, double, double) { Guard("KavMain.XFCCmd_MouseDown", [this] { XFCStart(); }); };
    w.XFCCmd.MouseUp = [this](int, int, double, double) { Guard("KavMain.XFCCmd_MouseUp", [this] { XFCStop(); }); };
    w.PTTonCmd.Click = handler("KavMain.PTTonCmd_Click", [this] { pttOn(); });
    w.PTTOffCmd.Click = handler("KavMain.PTTOffCmd_Click", [this] { pttOff(); });
    KavConfig& c = m_.config();
    c.PTTonCmd.Click = handler("KavConfig.PTTonCmd_Click", [this] { pttOn(); });
    c.PTTOffCmd.Click = handler("KavConfig.PTTOffCmd_Click", [this] { pttOff(); });
    for (int i = 0; i < 3; ++i)
        w.XcvrSelButton[i].Click = handler("KavMain.XcvrSelButton_Click", [this, i] {
            if (m_.ControlFlag(FlagXcvrSelButton)) {
                m_.SetControlFlag(FlagXcvrSelButton, false);
                return;
            }
            m_.hooks.SelectMultiXcvrByIndex(i);
            FocusRule();
        });
    w.ConfigCmd.Click = handler("KavMain.ConfigCmd_Click", [this] {
        FocusRule();
        // The devices present now: an adapter may have been plugged in since.
        m_.port().FillDeviceLists();
        m_.config().Show();
        m_.config().setWindowState(Form::Normal);
        if (m_.config().raiseRequested) m_.config().raiseRequested();
    });
    w.MessagesCmd.Click = handler("KavMain.MessagesCmd_Click", [this] {
        m_.messages().Show();
        m_.messages().setWindowState(Form::Normal);
        if (m_.messages().raiseRequested) m_.messages().raiseRequested();
    });
    w.ControlHelpCmd.Click =
        handler("KavMain.ControlHelpCmd_Click", [this] { m_.common().InvokeHelp(QStringLiteral("Control.htm")); });
    w.MBCmd.Click = handler("KavMain.MBCmd_Click", [this] {
        ShowMemoryBanks(true);
        FocusRule();
    });
    w.FDCmd.Click = handler("KavMain.FDCmd_Click", [this] {
        ShowMemoryBanks(false);
        FocusRule();
    });
    w.KeyPreview = true;
    w.KeyDown = [this](int& key, int) {
        Guard("KavMain.Form_KeyDown", [&] {
            if (key == kKeyInsert) {
                TextBox& f = m_.main().FreqDisplay;
                f.setSelStart(0);
                f.setSelLength(int(f.text().size()));
                f.SetFocus();
            } else if (key == kKeyF2) {
                DoRcv();
            } else if (key == kKeyF4) {
                DoXmit();
            }
        });
    };
    w.Resize = [this] {
        Guard("KavMain.Form_Resize", [this] {
            m_.state().SetItem(QStringLiteral("MainWindowState"), QString::number(m_.main().windowState()));
            UpdateWindow();
        });
    };
    m_.hooks.UpdateWindow = [this] { UpdateWindow(); };
    m_.hooks.SetFilterFrameVisibility = [this](bool v) { SetFilterFrameVisibility(v); };
    m_.hooks.ShowMemoryBanks = [this](bool v) { ShowMemoryBanks(v); };
    RadioState& s = m_.state();
    QObject::connect(&s, &RadioState::splitReported, &s, [this](bool on) {
        CheckBox& box = m_.main().SplitBox;
        if (on == box.checked()) return;
        // The box's click handler sees the flag and doesn't send the radio's own state back to it.
        m_.SetControlFlag(FlagSplitBox, true);
        box.setChecked(on);
    });
    QObject::connect(&s, &RadioState::dualReported, &s, [this](bool on) {
        CheckBox& box = m_.main().DualBox;
        if (on == box.checked()) return;
        m_.SetControlFlag(FlagDualBox, true);
        box.setChecked(on);
    });
    QObject::connect(&s, &RadioState::vfoChanged, &s, [this](int vfo) {
        if (vfo == 0) m_.main().VFOFrame.setCaption(QStringLiteral("VFO A"));
        if (vfo == 1) m_.main().VFOFrame.setCaption(QStringLiteral("VFO B"));
    });
    QObject::connect(&s, &RadioState::commandRefused, &s, [this](const QString& command) {
        Guard("KavReject.Show", [this, command] { ShowRejection(command); });
    });
}

void KavMainLogic::ShowRejection(const QString& refused) {
    KavReject& w = m_.messages().reject;
    const QString command = refused.isEmpty() ? m_.queue().LastCommandName : refused;
    w.Command.setCaption(command);
    const QDateTime now = m_.loop().localNow();
    w.Time.setCaption(QStringLiteral("%1-%2-%3")
                          .arg(now.date().day(), 2, 10, QLatin1Char('0'))
                          .arg(m_.common().monthName(now.date().month()))
                          .arg(now.toString(QStringLiteral("yyyy hh:mm:ss"))));
    w.Show();
    m_.common().LogLine(QStringLiteral("KavReject: the radio rejected ") + command);
}

void KavMainLogic::splitClick() {
    if (m_.ControlFlag(FlagSplitBox)) {
        m_.SetControlFlag(FlagSplitBox, false);
        return;
    }
    const bool on = m_.main().SplitBox.checked();
    const ProtocolTraits& t = m_.radio().traits();
    m_.queue().SetXcvrSplit(on);
    if (!t.splitMovesTransmitVfo) {
        if (on)
            m_.queue().SelectSecondary();
        else
            m_.queue().SelectPrimary();
    }
    if (t.asksAfterSplitOrDual) m_.queue().InterrogateRadio();
    FocusRule();
}

void KavMainLogic::dualClick() {
    if (m_.ControlFlag(FlagDualBox)) {
        m_.SetControlFlag(FlagDualBox, false);
        return;
    }
    const bool on = m_.main().DualBox.checked();
    m_.queue().SetXcvrDual(on);
    if (on)
        m_.queue().SelectSecondary();
    else
        m_.queue().SelectPrimary();
    if (m_.radio().traits().asksAfterSplitOrDual) m_.queue().InterrogateRadio();
    FocusRule();
}

void KavMainLogic::XFCStart() {
    xfcHeld_ = true;
    m_.queue().SetXcvrVFOXch();
    m_.queue().InterrogateRadio();
    FocusRule();
}

void KavMainLogic::XFCStop() {
    m_.queue().SetXcvrVFOXch();
    m_.queue().InterrogateRadio();
    xfcHeld_ = false;
    FocusRule();
}

void KavMainLogic::setPttCaptions(bool transmitting) {
    for (Frame* f : {&m_.main().PTTFrame, &m_.config().PTTFrame}) {
        f->setCaption(transmitting ? QStringLiteral("PTT: Transmitting") : QStringLiteral("PTT"));
        f->setForeColor(transmitting ? kRed : 0);
    }
}

void KavMainLogic::pttOn() {
    m_.Transmit();
    setPttCaptions(true);
    FocusRule();
}

void KavMainLogic::pttOff() {
    m_.Receive();
    setPttCaptions(false);
    FocusRule();
}

// From the keyboard: the frame keeps its caption, so the operator sees the difference.
void KavMainLogic::DoXmit() {
    m_.Transmit();
    FocusRule();
}

void KavMainLogic::DoRcv() {
    m_.Receive();
    FocusRule();
}

void KavMainLogic::SetFilterFrameVisibility(bool visible) {
    filterFrameWanted_ = visible;
    if (!memoryBanksShown_) m_.main().FilterFrame.setVisible(visible);
}

void KavMainLogic::ShowMemoryBanks(bool show) {
    memoryBanksShown_ = show;
    KavMain& w = m_.main();
    KavConfig& c = m_.config();
    // The third device frame takes the PTT frame's place.
    w.PTTFrame.setVisible(!c.DeviceEnabled[2].checked() && !show);
    w.FilterFrame.setVisible(filterFrameWanted_ && !show);
    for (int n = 0; n < 3; ++n) w.DeviceFrame[n].setVisible(c.DeviceEnabled[n].checked() && !show);
    w.MemoryBankFrame.setVisible(show);
    w.MBCmd.setVisible(!show);
    w.FDCmd.setVisible(show);
    m_.settings().SaveSetting(QStringLiteral("General"), QStringLiteral("ShowMemoryBank"),
                              show ? QStringLiteral("True") : QStringLiteral("False"));
}

void KavMainLogic::UpdateWindow() {
    KavMain& w = m_.main();
    if (w.windowState() == Form::Minimized) return;
    if (w.windowState() == Form::Maximized) {
        w.setWindowState(Form::Normal);
        w.setWidth(w.MemoryBankFrame.width() + w.VFOFrame.left() + w.MemoryBankFrame.left());
    }
    // The sequence buttons are shown by growing the window: a view can't crop, so the frame goes too.
    w.UserCommandFrame.setVisible(m_.config().UserCommandsEnableBox.checked());
    const int design = w.OriginalFormHeight.caption().toInt();
    if (design <= 0) return;
    // Half the height of a line of text keeps the window's bottom edge clear of the last frame.
    const int halfLine = 8;
    w.setHeight(m_.config().UserCommandsEnableBox.checked() ? design
                                                           : design - w.UserCommandFrame.height() - halfLine);
}

}  // namespace tv
