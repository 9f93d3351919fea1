#include "windows/KavConfigNetworkLogic.h"

#include "core/KavModule.h"
#include "forms/KavConfig.h"
#include "platform/SettingsStore.h"
#include "services/Errors.h"

namespace tv {

namespace {
const QString kGeneral = QStringLiteral("General");

struct TextSetting {
    TextBox KavConfig::*box;
    const char* key;
    const char* fallback;  // as the server reads it when the key is missing
};
struct SwitchSetting {
    CheckBox KavConfig::*box;
    const char* key;
    const char* fallback;
};
constexpr TextSetting kTexts[] = {
    {&KavConfig::NetServerAddress, "NetServerAddress", "127.0.0.1"},
    {&KavConfig::NetServerPort, "NetServerPort", "4532"},
    {&KavConfig::NetServerPassword, "NetServerPassword", ""},
    {&KavConfig::NetServerAllowedClients, "NetServerAllowedClients", ""},
    {&KavConfig::XmlRpcPort, "XmlRpcPort", "12345"},
};
constexpr SwitchSetting kSwitches[] = {
    {&KavConfig::NetServerEnabledCheck, "NetServerEnabled", "True"},
    {&KavConfig::NetServerReadOnlyCheck, "NetServerReadOnly", "False"},
    {&KavConfig::NetServerUnkeyOthersCheck, "NetServerUnkeyOthers", "False"},
    {&KavConfig::XmlRpcEnabledCheck, "XmlRpcEnabled", "True"},
};
}  // namespace

KavConfigNetworkLogic::KavConfigNetworkLogic(KavModule& module) : m_(module) {}

void KavConfigNetworkLogic::connect() {
    KavConfig& c = m_.config();
    for (const TextSetting& t : kTexts) {
        TextBox& box = c.*t.box;
        box.Change = [this, &box, key = QLatin1String(t.key)] {
            Guard("KavConfig.NetworkSetting_Change", [&] {
                if (!showing_) m_.settings().SaveSetting(kGeneral, key, box.text().trimmed());
            });
        };
    }
    for (TextBox* port : {&c.NetServerPort, &c.XmlRpcPort})
        port->KeyPress = [](int& key) {
            if (!(key == kKeyBack || (key >= '0' && key <= '9'))) key = 0;
        };
    for (const SwitchSetting& s : kSwitches) {
        CheckBox& box = c.*s.box;
        box.Click = [this, &box, key = QLatin1String(s.key)] {
            Guard("KavConfig.NetworkSetting_Click", [&] {
                if (!showing_)
                    m_.settings().SaveSetting(kGeneral, key, box.checked() ? QStringLiteral("True") : QStringLiteral("False"));
            });
        };
    }
    c.NetworkRestartCmd.Click = [this] {
        Guard("KavConfig.NetworkRestartCmd_Click", [&] {
            if (RestartServers) RestartServers();
            ShowSettings();
        });
    };
}

void KavConfigNetworkLogic::ShowSettings() {
    KavConfig& c = m_.config();
    SettingsStore& s = m_.settings();
    showing_ = true;
    for (const TextSetting& t : kTexts)
        (c.*t.box).setText(s.GetSetting(kGeneral, QLatin1String(t.key), QLatin1String(t.fallback)).trimmed());
    for (const SwitchSetting& sw : kSwitches)
        (c.*sw.box).setChecked(SettingIsTrue(s.GetSetting(kGeneral, QLatin1String(sw.key), QLatin1String(sw.fallback))));
    showing_ = false;
}

}  // namespace tv
