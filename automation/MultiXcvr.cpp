#include "automation/MultiXcvr.h"

#include "core/KavModule.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "platform/EventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

namespace {

const QString kSection = QStringLiteral("MultiXCVR");
// The baud list ("57600" ... "300") by position, as options of the Speed group.
constexpr int kSpeedOption[8] = {8, 7, 1, 2, 3, 4, 5, 6};

QString key(const char* name, int n) {
    return QString::fromLatin1(name) + QString::number(n);
}

}  // namespace

MultiXcvr::MultiXcvr(KavModule& module) : m_(module) {}

void MultiXcvr::connect() {
    UpperHooks& h = m_.hooks;
    h.InitializeMultiXcvr = [this] { InitializeMultiXcvr(); };
    h.SaveMultiSettings = [this] { SaveMultiSettings(); };
    h.SelectMultiXcvr = [this](double kHz) { return SelectMultiXcvrForFrequency(kHz); };
    h.SelectMultiXcvrByIndex = [this](int index) { SelectMultiXcvr(index); };
    h.ConvertMultiAddresses = [this](bool toHex) { ConvertMultiAddresses(toHex); };
    // A radio held under the program's control lets go at the end of its handshake: a switch that
    // waited for that goes ahead.
    QObject::connect(&m_.state(), &RadioState::controlReleased, &m_.state(), [this] { ResumeDelayedXcvrSwitch(); });

    KavConfig& c = m_.config();
    auto handler = [](const char* label, auto body) { return [label, body] { Guard(label, body); }; };
    for (int n = 0; n < kEntries; ++n) {
        // The start-up's filling of the page is not the operator's change.
        c.MultiName[n].Change = handler("KavConfig.MultiName_Change", [this, n] {
            if (!m_.ControlFlag(FlagMultiXcvr)) UpdateMultiXcvr(n);
        });
        c.MultiEnabled[n].Click = handler("KavConfig.MultiEnabled_Click", [this, n] {
            if (!m_.ControlFlag(FlagMultiXcvr)) UpdateMultiXcvr(n);
        });
        auto offer = [this, n] { UpdateMultiXcvrEnableVisibility(n); };
        c.MultiModel[n].Click = handler("KavConfig.MultiModel_Click", offer);
        c.MultiPort[n].Click = handler("KavConfig.MultiPort_Click", offer);
        c.MultiBaud[n].Click = handler("KavConfig.MultiBaud_Click", offer);
        c.MultiParity[n].Click = handler("KavConfig.MultiParity_Click", offer);
        c.MultiWord[n].Click = handler("KavConfig.MultiWord_Click", offer);
        c.MultiStop[n].Click = handler("KavConfig.MultiStop_Click", offer);
    }
    for (int b = 1; b <= KavConfig::kBandRadioCombos; ++b)
        c.BandRadioCombo[b].Click = handler("KavModule.BandRadioSelect", [this, b] {
            if (!refreshing_) BandRadioSelect(b);
        });
}

void MultiXcvr::InitializeMultiXcvr() {
    Guard("KavModule.InitializeMultiXcvr", [&] {
        KavConfig& c = m_.config();
        SettingsStore& s = m_.settings();
        FlagHold hold(m_.flags.flags[FlagMultiXcvr]);
        for (int n = 0; n < kEntries; ++n) {
            ComboBox& model = c.MultiModel[n];
            model.Clear();
            for (int i = 0; i < m_.radio().catalogue.count(); ++i)
                model.AddItem(m_.radio().catalogue.at(i).comboName);
            SetCombo(model, s.GetSetting(kSection, key("MultiModel", n), QString()));
            c.MultiAddr[n].setText(s.GetSetting(kSection, key("MultiAddr", n), QString()));
            c.MultiPoll[n].setChecked(
                s.GetSetting(kSection, key("MultiPoll", n), QStringLiteral("0")).trimmed() ==
                QLatin1String("1"));
            c.MultiInterval[n].setText(
                s.GetSetting(kSection, key("MultiInterval", n), QStringLiteral("200")));
            c.MultiName[n].setText(
                s.GetSetting(kSection, key("MultiName", n), QStringLiteral("xcvr %1").arg(n + 1)));
            c.MultiEnabled[n].setChecked(
                s.GetSetting(kSection, key("MultiEnabled", n), QStringLiteral("0")).trimmed() ==
                QLatin1String("1"));
            bool ok = false;
            const int port =
                s.GetSetting(kSection, key("MultiPort", n), QStringLiteral("-1")).trimmed().toInt(&ok);
            c.MultiPort[n].setListIndex(ok ? port : -1);
            SetCombo(c.MultiBaud[n], s.GetSetting(kSection, key("MultiBaud", n), QString()).trimmed());
            SetCombo(c.MultiParity[n], s.GetSetting(kSection, key("MultiParity", n), QString()).trimmed());
            SetCombo(c.MultiWord[n], s.GetSetting(kSection, key("MultiWordlength", n), QString()).trimmed());
            SetCombo(c.MultiStop[n], s.GetSetting(kSection, key("MultiStop", n), QString()).trimmed());
            SetCombo(c.MultiDTR[n], s.GetSetting(kSection, key("MultiDTR", n), QString()).trimmed());
            SetCombo(c.MultiRTS[n], s.GetSetting(kSection, key("MultiRTS", n), QString()).trimmed());
        }
        for (int b = 1; b <= KavConfig::kBandRadioCombos; ++b) {
            c.BandRadioLabel[b].setCaption(Bands::BandWavelength(b));
            ComboBox& list = c.BandRadioCombo[b];
            list.Clear();
            list.AddItem(QStringLiteral("none"));
            for (int n = 0; n < kEntries; ++n) list.AddItem(c.MultiName[n].text());
            bool ok = false;
            int radio =
                s.GetSetting(kSection, key("MultiBandRadio", b), QStringLiteral("0")).trimmed().toInt(&ok);
            if (!ok || radio < 0 || radio > kEntries) radio = 0;
            BandRadio[size_t(b)] = radio;
            FlagHold quiet(refreshing_);
            list.setListIndex(radio);
        }
        c.MultiAutoSelect.setChecked(
            s.GetSetting(kSection, QStringLiteral("MultiAutoSelect"), QStringLiteral("0")).trimmed() ==
            QLatin1String("1"));
        for (int n = 0; n < kEntries; ++n) {
            UpdateMultiXcvrEnableVisibility(n);
            UpdateMultiXcvr(n);
        }
        showRadixLabels(!c.DecSel.value());
        bool ok = false;
        SelectedXcvr =
            s.GetSetting(kSection, QStringLiteral("MultiXCVR"), QStringLiteral("-1")).trimmed().toInt(&ok);
        if (!ok || SelectedXcvr < -1 || SelectedXcvr >= kEntries) SelectedXcvr = -1;
        if (SelectedXcvr == -1) {
            // The radio chosen before there were entries is the first enabled entry of its model.
            for (int n = 0; n < kEntries; ++n)
                if (c.MultiEnabled[n].checked() && !c.RadioCombo.text().isEmpty() &&
                    c.MultiModel[n].text().compare(c.RadioCombo.text(), Qt::CaseInsensitive) == 0) {
                    SelectedXcvr = n;
                    s.SaveSetting(kSection, QStringLiteral("MultiXCVR"), QString::number(n));
                    break;
                }
        }
        if (SelectedXcvr >= 0 && !m_.main().XcvrSelButton[SelectedXcvr].value()) {
            // The button shows the entry in use; its click, seeing the flag, switches nothing.
            m_.SetControlFlag(FlagXcvrSelButton, true);
            m_.main().XcvrSelButton[SelectedXcvr].setValue(true);
        }
    });
}

void MultiXcvr::SaveMultiSettings() {
    Guard("KavModule.SaveMultiSettings", [&] {
        KavConfig& c = m_.config();
        SettingsStore& s = m_.settings();
        auto flag = [](bool on) { return on ? QStringLiteral("1") : QStringLiteral("0"); };
        for (int n = 0; n < kEntries; ++n) {
            s.SaveSetting(kSection, key("MultiModel", n), c.MultiModel[n].text());
            s.SaveSetting(kSection, key("MultiAddr", n), c.MultiAddr[n].text());
            s.SaveSetting(kSection, key("MultiPoll", n), flag(c.MultiPoll[n].checked()));
            s.SaveSetting(kSection, key("MultiInterval", n), c.MultiInterval[n].text());
            s.SaveSetting(kSection, key("MultiName", n), c.MultiName[n].text());
            s.SaveSetting(kSection, key("MultiEnabled", n), flag(c.MultiEnabled[n].checked()));
            s.SaveSetting(kSection, key("MultiPort", n), QString::number(c.MultiPort[n].listIndex()));
            s.SaveSetting(kSection, key("MultiBaud", n), c.MultiBaud[n].text());
            s.SaveSetting(kSection, key("MultiParity", n), c.MultiParity[n].text());
            s.SaveSetting(kSection, key("MultiWordlength", n), c.MultiWord[n].text());
            s.SaveSetting(kSection, key("MultiStop", n), c.MultiStop[n].text());
            s.SaveSetting(kSection, key("MultiDTR", n), c.MultiDTR[n].text());
            s.SaveSetting(kSection, key("MultiRTS", n), c.MultiRTS[n].text());
        }
        for (int b = 1; b <= KavConfig::kBandRadioCombos; ++b)
            s.SaveSetting(kSection, key("MultiBandRadio", b), QString::number(BandRadio[size_t(b)]));
        s.SaveSetting(kSection, QStringLiteral("MultiAutoSelect"), flag(c.MultiAutoSelect.checked()));
        s.SaveSetting(kSection, QStringLiteral("MultiXCVR"), QString::number(SelectedXcvr));
    });
}

void MultiXcvr::UpdateMultiXcvr(int index) {
    Guard("KavModule.UpdateMultiXcvr", [&] {
        KavConfig& c = m_.config();
        OptionButton& button = m_.main().XcvrSelButton[index];
        const QString name = c.MultiName[index].text();
        button.setCaption(name);
        button.setToolTip(QStringLiteral("click to switch to the ") + name);
        button.setVisible(c.MultiEnabled[index].checked());
        // The band lists name the entry anew; what each has selected stays.
        FlagHold quiet(refreshing_);
        for (int b = 1; b <= KavConfig::kBandRadioCombos; ++b) {
            ComboBox& list = c.BandRadioCombo[b];
            const int selected = list.listIndex();
            if (index + 1 < list.ListCount()) list.RemoveItem(index + 1);
            list.AddItem(name, index + 1);
            list.setListIndex(selected);
        }
    });
}

void MultiXcvr::UpdateMultiXcvrEnableVisibility(int index) {
    Guard("KavModule.UpdateMultiXcvrEnableVisibility", [&] {
        KavConfig& c = m_.config();
        const int model = c.MultiModel[index].listIndex();
        bool offered = model >= 0 && model < m_.radio().catalogue.count();
        if (offered && m_.radio().catalogue.at(model).serialPort)
            for (const ComboBox* list : {&c.MultiPort[index], &c.MultiBaud[index], &c.MultiParity[index],
                                         &c.MultiWord[index], &c.MultiStop[index]})
                offered = offered && list->listIndex() >= 0;
        c.MultiEnabled[index].setEnabled(offered);
    });
}

void MultiXcvr::BandRadioSelect(int band) {
    Guard("KavModule.BandRadioSelect", [&] {
        const int radio = std::max(0, m_.config().BandRadioCombo[band].listIndex());
        BandRadio[size_t(band)] = radio;
        m_.settings().SaveSetting(kSection, key("MultiBandRadio", band), QString::number(radio));
    });
}

bool MultiXcvr::SelectMultiXcvrForFrequency(double kHz) {
    const int before = SelectedXcvr;
    Guard("KavModule.SelectMultiXcvr", [&] {
        if (!m_.config().MultiAutoSelect.checked()) return;
        std::int32_t mhz = std::int32_t(kHz / 1000.0);
        // The bands that span several MHz go by their first.
        if (mhz == 29 || mhz == 30) mhz = 28;
        if (mhz >= 51 && mhz <= 54) mhz = 50;
        if (mhz >= 145 && mhz <= 148) mhz = 144;
        if (mhz >= 432 && mhz <= 450) mhz = 432;
        const int band = Bands::BandIndex(mhz);
        const int radio = band > 0 && band <= Bands::kBandCount ? BandRadio[size_t(band)] : 0;
        if (radio <= 0 || radio > kEntries) return;
        // A button that was off clicks, and its click switches.
        FlagHold tune(forTune_);
        m_.main().XcvrSelButton[radio - 1].setValue(true);
        m_.loop().yield();
    });
    return SelectedXcvr != before;
}

bool MultiXcvr::ResumeDelayedXcvrSwitch() {
    if (!DelayedXcvrSwitchFlag) return false;
    SelectMultiXcvr(DelayedXcvrSwitchIndex);
    return true;
}

void MultiXcvr::SelectMultiXcvr(int index) {
    Guard("KavModule.SelectMultiXcvr", [&] {
        Common& common = m_.common();
        // Log the choice; refuse an index outside the three entries.
        common.LogLine(QStringLiteral("KavModule.SelectMultiXcvr, Index ") + QString::number(index));
        if (index < 0 || index >= kEntries) throw TvError(kErrSubscript);
        // A radio that stays locked unless released is told first; its family resumes the switch.
        if (DelayedXcvrSwitchFlag) {
            DelayedXcvrSwitchFlag = false;
            common.LogLine(QStringLiteral(
                "KavModule.SelectMultiXcvr: cleared DelayedXcvrSwitchFlag, beginning delayed switch"));
        } else if (m_.radio().RadioIndex >= 0 && m_.radio().protocol() &&
                   m_.radio().traits().holdsRadioUntilReleased) {
            DelayedXcvrSwitchIndex = index;
            DelayedXcvrSwitchFlag = true;
            common.LogLine(
                QStringLiteral("KavModule.SelectMultiXcvr: set DelayedXcvrSwitchFlag, delaying switch"));
            return;
        }
        switchTo(index);
    });
}

void MultiXcvr::switchTo(int index) {
    KavConfig& c = m_.config();
    CommandQueue& q = m_.queue();
    // Nothing queued or awaited for the old radio survives.
    q.XcvrCmdTimer.setEnabled(false);
    m_.link().Reset();
    q.Discard();
    // The port's options change one by one with the port closed; it opens once, with all of them.
    m_.SetControlFlag(FlagCommPort, true);
    m_.comm().ClosePort();
    copyPortSettings(index);
    m_.loop().yield();
    m_.SetControlFlag(FlagCommPort, false);
    m_.port().ConfigureCommPort();
    // Copy the entry's address, polling and interval to the General tab.
    c.Address.setText(c.MultiAddr[index].text());
    c.Interrogation.setChecked(c.MultiPoll[index].checked());
    c.PollInterval.setText(c.MultiInterval[index].text());
    // Commands take the address in force when they are queued: it is the entry's from here on.
    if (!c.Address.text().trimmed().isEmpty()) m_.ValidID();
    // Two entries of one model share the bring-up: only the link's settings change.
    const QString model = c.MultiModel[index].text();
    if (!model.isEmpty() && model.compare(c.RadioCombo.text(), Qt::CaseInsensitive) != 0) {
        {
            FlagHold hold(m_.flags.flags[FlagRadioCombo]);
            SetCombo(c.RadioCombo, model);
        }
        m_.UpdateRadio(!forTune_);
    } else {
        if (!model.isEmpty()) {
            FlagHold hold(m_.flags.flags[FlagRadioCombo]);
            SetCombo(c.RadioCombo, model);
        }
        // The ticks stopped above start again, at the entry's interval.
        q.SetXcvrCmdTimerInterval();
    }
    // Remember the choice for the next run.
    SelectedXcvr = index;
    m_.settings().SaveSetting(kSection, QStringLiteral("MultiXCVR"), QString::number(index));
}

void MultiXcvr::copyPortSettings(int index) {
    KavConfig& c = m_.config();
    PortSettings& port = m_.port();
    // Each only when the entry's list has a choice: otherwise the setting in force stays.
    if (const int p = c.MultiPort[index].listIndex(); p >= 0 && c.CommPort.has(p + 1)) {
        c.CommPort[p + 1].setValue(true);
        port.CommPortNumber = p + 1;
    }
    if (const int b = c.MultiBaud[index].listIndex(); b >= 0 && b < 8) {
        c.Speed[kSpeedOption[b]].setValue(true);
        port.CommSpeed = std::int32_t(c.Speed[kSpeedOption[b]].caption().trimmed().toLong());
    }
    if (const int p = c.MultiParity[index].listIndex(); p >= 0 && c.Parity.has(p + 1)) {
        c.Parity[p + 1].setValue(true);
        port.CommParity = QString::number(p + 1);
    }
    if (const int w = c.MultiWord[index].listIndex(); w >= 0 && c.WordLength.has(w + 1)) {
        c.WordLength[w + 1].setValue(true);
        port.CommWordLength = w + 1;
    }
    if (const int s = c.MultiStop[index].listIndex(); s >= 0 && c.StopBits.has(s + 1)) {
        c.StopBits[s + 1].setValue(true);
        port.CommStopBits = s + 1;
    }
    if (const int d = c.MultiDTR[index].listIndex(); d >= 0 && c.DTRButton.has(d)) {
        c.DTRButton[d].setValue(true);
        port.DTRControl = d;
    }
    if (const int r = c.MultiRTS[index].listIndex(); r >= 0 && c.RTSButton.has(r)) {
        c.RTSButton[r].setValue(true);
        port.RTSControl = r;
    }
}

void MultiXcvr::showRadixLabels(bool hex) {
    m_.config().MultiHexLabel.setVisible(hex);
    m_.config().MultiDecLabel.setVisible(!hex);
}

void MultiXcvr::ConvertMultiAddresses(bool toHex) {
    Guard("KavModule.ConvertMultiAddresses", [&] {
        showRadixLabels(toHex);
        for (int n = 0; n < kEntries; ++n) {
            TextBox& a = m_.config().MultiAddr[n];
            const QString t = a.text().trimmed();
            if (t.isEmpty()) continue;
            if (toHex) {
                bool ok = false;
                const int v = t.toInt(&ok);
                if (ok) a.setText(QString::number(v, 16).toUpper());
            } else {
                const int v = SelectedRadio::DecVal(t);
                if (v >= 0) a.setText(QString::number(v));
            }
        }
    });
}

}  // namespace tv
