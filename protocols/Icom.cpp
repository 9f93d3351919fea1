#include "protocols/Icom.h"

#include "core/KavModule.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "forms/KavMessages.h"
#include "platform/EventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <cmath>

namespace tv {

namespace {
constexpr std::uint8_t kPreamble = 0xFE, kEnd = 0xFD, kController = 0xE0, kOK = 0xFB, kNG = 0xFA;
const QString kGeneral = QStringLiteral("General");

QByteArray bytes(std::initializer_list<int> list) {
    QByteArray b;
    for (int v : list) b.append(char(std::uint8_t(v)));
    return b;
}

std::uint8_t packed(long long g) { return std::uint8_t((g / 10) * 16 + (g % 10)); }
}  // namespace

QByteArray IcomFrequencyBytes(double f, bool fiveBytes) {
    // Each step truncates after adding 0.0005 kHz, so 14025.5 isn't read as 14025.4999...
    const auto g5 = static_cast<long long>(std::floor((f + 0.0005) / 100000));
    f -= double(g5) * 100000;
    const auto g4 = static_cast<long long>(std::floor((f + 0.0005) / 1000));
    f -= double(g4) * 1000;
    const auto g3 = static_cast<long long>(std::floor((f + 0.0005) / 10));
    f -= double(g3) * 10;
    const auto g2 = static_cast<long long>(std::floor((f + 0.0005) * 10));
    f -= double(g2) / 10;
    const auto g1 = static_cast<long long>(std::floor((f + 0.0005) * 1000));
    QByteArray out;
    for (long long g : {g1, g2, g3, g4}) out.append(char(packed(g)));
    if (fiveBytes) out.append(char(packed(g5)));
    return out;
}

QString FormatBCDByte(std::uint8_t value) { return QString::number(value / 16) + QString::number(value % 16); }

QByteArray IcomProtocol::frame(std::uint8_t address, const QByteArray& body) {
    QByteArray f;
    f.append(char(kPreamble)).append(char(kPreamble)).append(char(address)).append(char(kController));
    f.append(body).append(char(kEnd));
    return f;
}

void IcomProtocol::send(std::uint8_t address, const QByteArray& body) { m_.SendCommand(frame(address, body)); }

std::uint8_t IcomProtocol::currentAddress() const {
    return m_.RadioAddress.isEmpty() ? 0 : std::uint8_t(m_.RadioAddress.at(0));
}

void IcomProtocol::Execute(const XcvrCmd& c) {
    const RadioInfo* r = m_.radio();
    if (!r) return;
    // Frames go to the address that was current when the command was queued.
    const auto to = std::uint8_t(c.theRadio);
    switch (c.theCmd) {
        case XcvrCmdFreq: {
            const QByteArray digits = IcomFrequencyBytes(c.theFreq, true);
            m_.common().DebugLog(QStringLiteral("KavModule.ExecuteNextXcvrCmd SetFreq Icom, Freq = ") +
                                 QString::number(c.theFreq, 'g', 15));
            QString shown;
            for (int i = 4; i >= 0; --i) shown += FormatBCDByte(std::uint8_t(digits.at(i))) + QLatin1Char(' ');
            m_.common().DebugLog(QStringLiteral("KavModule.ExecuteNextXcvrCmd SetFreq Icom, Freq digits = ") +
                                 shown.trimmed());
            // The frame length follows FILTERBYTE, not SHORTFREQ: a four-byte radio needs both flags.
            send(to, bytes({0x05}) + (r->filterByte ? digits : digits.left(4)));
            break;
        }
        case XcvrCmdMode:
            UpdateIcomXcvrFilter(c.theArg);
            if (c.theMode >= 0) {
                QByteArray body = bytes({0x06, c.theMode});
                if (r->filterByte) body.append(char(std::uint8_t(c.theArg)));
                send(to, body);
            }
            break;
        case XcvrCmdFilterGroup:
            UpdateIcomXcvrFilter(c.theArg);
            if (r->filterByte && c.theMode >= 0) send(to, bytes({0x06, c.theMode, c.theArg}));
            break;
        case XcvrCmdDual: send(to, bytes({0x07, c.theArg ? 0xC1 : 0xC0})); break;
        case XcvrCmdSplit: send(to, bytes({0x0F, c.theArg ? 0x01 : 0x00})); break;
        case XcvrCmdVFOA: send(to, bytes({0x07, 0x00})); break;
        case XcvrCmdVFOB: send(to, bytes({0x07, 0x01})); break;
        case XcvrCmdVFOEqual: send(to, bytes({0x07, 0xA0})); break;
        case XcvrCmdVFOXch:
        case XcvrCmdMainSubXch: send(to, bytes({0x07, 0xB0})); break;
        case XcvrCmdMain: send(to, bytes({0x07, 0xD0})); break;
        case XcvrCmdSub: send(to, bytes({0x07, 0xD1})); break;
        case XcvrCmdMainSubEqual: send(to, bytes({0x07, 0xB1})); break;
        case XcvrCmdPTT: send(to, bytes({0x1C, 0x00, c.theArg ? 1 : 0})); break;
        case XcvrCmdSBFreq:
            // No single frame sets the other receiver: the same steps the queue would have.
            m_.SelectSecondary();
            m_.SetXcvrWait();
            m_.SetXcvrMode(m_.RadioMode);
            m_.SetXcvrWait();
            m_.SetXcvrFreq(c.theFreq);
            m_.SetXcvrWait();
            m_.SelectPrimary();
            m_.SetXcvrWait();
            break;
        default: break;  // filters, ID, power, lock, step: nothing on this bus
    }
}

void IcomProtocol::RequestFrequency() {
    if (m_.ValidID()) send(currentAddress(), bytes({0x03}));
}

void IcomProtocol::RequestMode() {
    if (m_.ValidID()) send(currentAddress(), bytes({0x04}));
}

int IcomProtocol::InterrogationStep(int phase) {
    const RadioInfo* r = m_.radio();
    if (!r) return phase;
    switch (phase) {
        case 0:
        case 2:
            if (r->sMeter) {
                if (m_.ValidID()) send(currentAddress(), bytes({0x15, 0x02}));
            } else {
                m_.RequestFrequency();
            }
            return phase + 1;
        case 1: m_.RequestFrequency(); return 2;
        case 3: m_.RequestMode(); return 0;
        case 4: m_.RequestFrequency(); return 0;
        default: return phase;
    }
}

void IcomProtocol::Decode() {
    if (!m_.ValidID()) return;
    const int n = m_.RcvCount;
    const auto& b = m_.RcvBuffer;
    // Our own frames come back from the bus addressed to the radio: they fall out here.
    if (n < 6 || b[2] != kPreamble || !(b[3] == kController || b[3] == 0) || b[4] != currentAddress() ||
        b[size_t(n)] != kEnd)
        return;
    const std::uint8_t cmd = b[5];
    if ((cmd == 0x00 || cmd == 0x03) && (n == 10 || n == 11)) {
        double sum = 0, mult = 10000;
        for (int i = n - 1; i >= 6; --i) {
            sum += (b[size_t(i)] >> 4) * mult;
            mult /= 10;
            sum += (b[size_t(i)] & 0x0F) * mult;
            mult /= 10;
        }
        const RadioInfo* r = m_.radio();
        if (!(r && r->shortFreq)) sum *= 100;
        const double kHz = std::round(sum * 1000) / 1000;
        m_.SetXcvrCmdTimerInterval();
        m_.UpdateRadioFreq(kHz);
        KavMain& w = m_.main();
        if (w.FreqDisplay.visible() && !m_.FreqFocusGiven) {
            w.FreqDisplay.SetFocus();
            m_.FreqFocusGiven = true;
        }
        if (m_.FreqNudgePending) {
            // Some radios only settle their display after a second, different frequency.
            m_.FreqNudgePending = false;
            m_.SetXcvrFreq(kHz + 1);
            m_.SetXcvrWait();
            m_.SetXcvrFreq(kHz);
        }
    } else if ((cmd == 0x01 || cmd == 0x04) && (n == 7 || n == 8)) {
        m_.UpdateXcvrMode(b[6]);
        const RadioInfo* r = m_.radio();
        UpdateIcomXcvrFilter(n == 8 && r && r->filterByte ? b[7] : 0);
        m_.SetXcvrCmdTimerInterval();
    } else if (cmd == 0x15 && b[6] == 0x02 && n == 9) {
        const int value = b[7] * 100 + (b[8] / 16) * 10 + (b[8] % 16);
        callHook(m_.hooks.UpdateSMeter, value / 255.0);
    } else if (cmd == kOK && n == 6) {
        m_.AccelerateNextXcvrCmd();
    } else if (cmd == kNG && n == 6) {
        // A held button must not keep sending what the radio refuses.
        m_.main().AutoRepeatTimer.setEnabled(false);
        m_.InterrogateRadio();
        showRejection();
    }
}

void IcomProtocol::showRejection() {
    KavReject& w = m_.messages().reject;
    w.Command.setCaption(m_.LastCommandName);
    const QDateTime now = m_.loop().localNow();
    w.Time.setCaption(QStringLiteral("%1-%2-%3")
                          .arg(now.date().day(), 2, 10, QLatin1Char('0'))
                          .arg(m_.common().monthName(now.date().month()))
                          .arg(now.toString(QStringLiteral("yyyy hh:mm:ss"))));
    w.Show();
    m_.common().LogLine(QStringLiteral("KavReject: the radio rejected ") + m_.LastCommandName);
}

void IcomProtocol::UpdateIcomXcvrFilter(int index) {
    if (!(index > 0 && index < 4) || m_.RadioMode < 0 || m_.RadioMode >= 10) return;
    m_.RadioFilterGroup = index;
    const QString name = FilterGroupName(index);
    m_.settings().SaveSetting(kGeneral, QStringLiteral("ModeFilter%1").arg(m_.RadioMode), name);
    m_.ModeFilters[size_t(m_.RadioMode)] = name;
    callHook(m_.hooks.UpdateModeCaption, m_.RadioMode);
    ComboBox& list = m_.main().FilterGroupCombo;
    m_.SetControlFlag(FlagFilterGroupList, true);
    if (!SetCombo(list, name)) list.setListIndex(-1);
    m_.loop().yield();
    m_.SetControlFlag(FlagFilterGroupList, false);
}

void IcomProtocol::InitializeIcomFilterSettings() {
    const RadioInfo* r = m_.radio();
    if (!r) return;
    ComboBox& list = m_.main().FilterGroupCombo;
    if (r->filterGroups) {
        list.Clear();
        list.AddItem(QStringLiteral("Wide"));
        list.AddItem(QStringLiteral("Narrow"));
        if (r->filter0) list.AddItem(QStringLiteral("Normal"));
        list.setVisible(true);
        m_.main().FilterGroupLabel.setVisible(true);
        const QString restore = m_.settings().GetSetting(kGeneral, QStringLiteral("RestoreModeFilter"), QStringLiteral("1"));
        m_.config().ModeFiltersEnabledCheck.setChecked(restore.trimmed() == QLatin1String("1"));
    }
    for (int mode = 0; mode < 10; ++mode) {
        int group = 1;
        if (r->filterGroups) {
            const QString key = QStringLiteral("ModeFilter%1").arg(mode);
            group = IcomFilterGroupIndex(m_.settings().GetSetting(kGeneral, key, QStringLiteral("Wide")));
            // "Normal" exists only on radios with the third filter position.
            if (group == 0 || (group == 3 && !r->filter0)) group = 1;
            m_.settings().SaveSetting(kGeneral, key, FilterGroupName(group));
        }
        m_.ModeFilters[size_t(mode)] = FilterGroupName(group);
    }
}

void IcomProtocol::BringUp() {
    const QChar s = m_.GetRadioSupplier();
    if (s == QLatin1Char('I') || s == QLatin1Char('T')) InitializeIcomFilterSettings();
}

}  // namespace tv
