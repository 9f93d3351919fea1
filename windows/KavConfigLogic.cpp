#include "windows/KavConfigLogic.h"

#include "core/KavComm.h"
#include "core/KavModule.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "platform/Dialogs.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");
QString tf(bool on) { return on ? QStringLiteral("T") : QStringLiteral("F"); }
}  // namespace

KavConfigLogic::KavConfigLogic(KavModule& module, KavComm& comm) : m_(module), comm_(comm) {}

void KavConfigLogic::connect() {
    KavConfig& c = m_.config();
    auto store = [this](const QString& key, const QString& value) { m_.settings().SaveSetting(kGeneral, key, value); };
    auto handler = [](const char* label, auto body) {
        return [label, body] { Guard(label, body); };
    };

    c.RadioCombo.Click = handler("KavConfig.RadioCombo_Click", [this] {
        // The program's own choice of entry: consumed here, the bring-up is already under way.
        if (m_.ControlFlag(FlagRadioCombo)) {
            m_.SetControlFlag(FlagRadioCombo, false);
            return;
        }
        m_.UpdateRadio(true);
    });
    c.RadioCombo.KeyPress = [this](int& key) {
        Guard("KavConfig.RadioCombo_KeyPress", [&] {
            if (key != kKeyReturn) return;
            key = 0;
            m_.UpdateRadio(true);
        });
    };
    c.Address.Change = handler("KavConfig.Address_Change", [this, store] {
        // Filled from the store during load (window hidden): nothing is written back then.
        if (m_.config().visible()) store(QStringLiteral("RadioId"), m_.config().Address.text().trimmed());
    });
    c.DefaultAddress.DblClick = handler("KavConfig.DefaultAddress_DblClick", [this] { defaultAddressDblClick(); });
    c.Interrogation.Click = handler("KavConfig.Interrogation_Click", [this] { interrogationClick(); });
    c.PollInterval.KeyPress = [](int& key) {
        if (!(key == kKeyBack || (key >= '0' && key <= '9'))) key = 0;
    };
    c.RadioFolder.Change = handler("KavConfig.RadioFolder_Change", [this, store] {
        TextBox& f = m_.config().RadioFolder;
        f.setSelStart(int(f.text().size()));
        store(QStringLiteral("ControlFolder"), f.text());
        m_.hooks.ResetControlFolderErrorFlag();
    });
    c.RadioFolderSelect.Click = handler("KavConfig.RadioFolderSelect_Click", [this] { radioFolderSelect(); });
    c.DecSel.Click = handler("KavConfig.DecSel_Click", [this] { m_.SelectDecimalRadix(); });
    c.HexSel.Click = handler("KavConfig.HexSel_Click", [this] { m_.SelectHexadecimalRadix(); });
    c.TooltipsCheckbox.Click = handler("KavConfig.TootipsCheckbox_Click", [this] {
        const bool on = m_.config().TooltipsCheckbox.checked();
        if (on)
            m_.common().TooltipsOn();
        else
            m_.common().TooltipsOff();
        m_.common().SaveTooltipSetting(on);
    });
    c.BrowserPathname.Change = handler("KavConfig.BrowserPathnameChange", [this, store] {
        const QString path = m_.config().BrowserPathname.text();
        m_.common().SetBrowserPathname(path);
        store(QStringLiteral("BrowserPathname"), path);
    });
    c.BrowserSelectCmd.Click = handler("KavConfig.BrowserSelectCmd_Click", [this] { browserSelect(); });
    c.ConfigGenHelpCmd.Click =
        handler("KavConfig.ConfigGenHelpCmd_Click", [this] { m_.common().InvokeHelp(QStringLiteral("Configuration.htm")); });
    c.ConfigComHelpCmd.Click =
        handler("KavConfig.ConfigComHelpCmd_Click", [this] { m_.common().InvokeHelp(QStringLiteral("Configuration.htm")); });
    c.UserCommandsEnableBox.Click = handler("KavConfig.UserCommandsEnableBox_Click", [this, store] {
        store(QStringLiteral("UserCommandsEnabled"), tf(m_.config().UserCommandsEnableBox.checked()));
        m_.hooks.UpdateWindow();
    });
    c.DualReceiveEnableBox.Click = handler("KavConfig.DualReceiveEnableBox_Click", [this, store] {
        store(QStringLiteral("DualReceiveEnabled"), QString::number(m_.config().DualReceiveEnableBox.value()));
    });
    c.InitialXcvrCommand.Change = handler("KavConfig.InitialXcvrCommand_Change", [this, store] {
        store(QStringLiteral("InitialXcvrCommand"), m_.config().InitialXcvrCommand.text());
    });
    c.DebugCheck.Click = handler("KavConfig.DebugCheck_Click", [this] { m_.common().SetDebug(m_.config().DebugCheck.value() == 1); });
    c.DualMonitorCheck.Click = handler("KavConfig.DualMonitorCheck_Click", [this] {
        m_.common().setDualMonitor(m_.config().DualMonitorCheck.value() == 1);
    });
    for (int i = 1; i <= 8; ++i) {
        c.CommPort[i].Click = handler("KavConfig.CommPort_Click", [this, i] {
            if (m_.config().visible()) m_.port().SelectCommPort(i);
        });
        // A device chosen from the list is used at once; one typed is kept as it is typed, and used at
        // Enter or when its port is chosen.
        c.CommPortDevice[i].Click = handler("KavConfig.CommPortDevice_Click", [this, i] {
            if (m_.config().visible()) m_.port().SelectCommPortDevice(i, true);
        });
        c.CommPortDevice[i].Change = handler("KavConfig.CommPortDevice_Change", [this, i] {
            if (m_.config().visible()) m_.port().SelectCommPortDevice(i, false);
        });
        c.CommPortDevice[i].KeyPress = [this, i](int& key) {
            if (key != 13) return;
            key = 0;
            Guard("KavConfig.CommPortDevice_KeyPress", [&] { m_.port().SelectCommPort(i); });
        };
    }
    for (int i = c.Speed.lbound(); i <= c.Speed.ubound(); ++i)
        c.Speed[i].Click = handler("KavConfig.Speed_Click", [this, i] { m_.port().SelectPortSpeed(i); });
    for (int i = 1; i <= 5; ++i) c.Parity[i].Click = handler("KavConfig.Parity_Click", [this, i] { m_.port().SelectPortParity(i); });
    for (int i = 1; i <= 3; ++i) {
        c.WordLength[i].Click = handler("KavConfig.WordLength_Click", [this, i] { m_.port().SelectPortWordLength(i); });
        c.StopBits[i].Click = handler("KavConfig.StopBits_Click", [this, i] { m_.port().SelectPortStopBits(i); });
    }
    for (int i = 0; i <= 2; ++i)
        c.DTRButton[i].Click = handler("KavConfig.DTRButton_Click", [this, i] {
            m_.port().DTRControl = i;
            comm_.setDtrEnable(KavComm::ModemControlEnabled(i));
        });
    for (int i = 0; i <= 3; ++i)
        c.RTSButton[i].Click = handler("KavConfig.RTSButton_Click", [this, i] {
            m_.port().RTSControl = i;
            comm_.ConfigureRTS(i);
        });
    // Closing by the operator only hides the window: its fields stay in force.
    c.QueryUnload = [this](int& cancel, int mode) {
        if (mode == 0) {
            cancel = 1;
            m_.config().Hide();
        }
    };
}

void KavConfigLogic::defaultAddressDblClick() {
    const RadioInfo* r = m_.radio().info();
    if (!r) return;
    KavConfig& c = m_.config();
    if (c.DecSel.value())
        c.Address.setText(QString::number(SelectedRadio::DecVal(r->defaultAddress)));
    else
        c.Address.setText(r->defaultAddress);
}

void KavConfigLogic::setPollControlsEnabled() {
    KavConfig& c = m_.config();
    const bool on = c.Interrogation.checked();
    c.PollInterval.setEnabled(on);
    c.PollLabel1.setEnabled(on);
    c.PollLabel2.setEnabled(on);
}

void KavConfigLogic::interrogationClick() {
    if (m_.ControlFlag(FlagInterrogation))
        m_.SetControlFlag(FlagInterrogation, false);
    else
        m_.settings().SaveSetting(kGeneral, QStringLiteral("Interrogate"), tf(m_.config().Interrogation.checked()));
    setPollControlsEnabled();
}

void KavConfigLogic::radioFolderSelect() {
    KavConfig& c = m_.config();
    QString folder = m_.dialogs().pickFolder(
        QStringLiteral("Select the control folder for the ") + m_.state().RadioDisplayName, c.RadioFolder.text());
    if (folder.isEmpty()) return;
    while (folder.size() > 1 && (folder.endsWith(QLatin1Char('\\')) || folder.endsWith(QLatin1Char('/')))) folder.chop(1);
    c.RadioFolder.setText(folder);
}

void KavConfigLogic::browserSelect() {
    const QString path = m_.dialogs().openFile(QStringLiteral("Select a browser"),
                                               QFileInfo(QCoreApplication::applicationFilePath()).absolutePath(),
                                               QStringLiteral("Application (*)"));
    if (path.isEmpty()) return;  // a cancel leaves everything as it was
    // On Linux any file may be a program: what counts is that it can be run.
    if (!QFileInfo(path).isExecutable()) {
        m_.dialogs().messageBox(path + QStringLiteral(" is not a program that can be run"), m_.common().info().title);
        return;
    }
    m_.config().BrowserPathname.setText(path);
}

}  // namespace tv
