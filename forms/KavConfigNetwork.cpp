// The configuration window's "Network" tab: the rig server (rigctld's protocol) and the XML-RPC server.
#include "forms/KavConfig.h"

namespace tv {

void KavConfig::describeNetworkTab() {
    Describe(NetServerFrame, QStringLiteral("Rig server (rigctld protocol)"));
    Describe(NetServerEnabledCheck, QStringLiteral("Serve rigctld clients"),
             QStringLiteral("when checked, programs set to \"Hamlib NET rigctl\" (loggers, digital-mode programs, "
                            "keyers) control the radio through this program"));
    Describe(NetServerAddressLabel, QStringLiteral("Address"));
    NetServerAddress.setToolTip(
        QStringLiteral("where the rig server listens: 127.0.0.1 for this computer only, or an address of this "
                       "computer (\"any\" for all) for others too; anything but loopback needs a password"));
    Describe(NetServerPortLabel, QStringLiteral("Port"));
    NetServerPort.setToolTip(QStringLiteral("TCP port of the rig server; rigctld's own, which clients offer first, is 4532"));
    Describe(NetServerPasswordLabel, QStringLiteral("Password"));
    NetServerPassword.setToolTip(
        QStringLiteral("needed to listen on anything but loopback: a client from another computer logs in with "
                       "rigctld's \\password command and the MD5 of this text (rigctl --password); clients on "
                       "this computer are not asked"));
    NetServerPassword.setMasked(true);
    Describe(NetServerAllowedLabel, QStringLiteral("Allowed clients"));
    NetServerAllowedClients.setToolTip(
        QStringLiteral("the other computers that may connect: addresses or subnets (192.168.1.0/24), separated "
                       "by commas; empty: any that has the password. This computer always may"));
    Describe(NetServerReadOnlyCheck, QStringLiteral("Clients may only read"),
             QStringLiteral("when checked, clients read the radio, and every change they ask for is refused "
                            "(an unkey excepted)"));
    Describe(NetServerUnkeyOthersCheck, QStringLiteral("Clients may unkey each other"),
             QStringLiteral("when checked, a client's unkey ends another client's transmission; a transmission "
                            "keyed here or by the suite is never ended by a client"));
    Describe(XmlRpcFrame, QStringLiteral("XML-RPC server (flrig protocol)"));
    Describe(XmlRpcEnabledCheck, QStringLiteral("Serve XML-RPC clients"),
             QStringLiteral("when checked, programs set to flrig control the radio through this program, on "
                            "127.0.0.1"));
    Describe(XmlRpcPortLabel, QStringLiteral("Port"));
    XmlRpcPort.setToolTip(QStringLiteral("TCP port of the XML-RPC server; flrig's own is 12345"));
    Describe(NetworkRestartCmd, QStringLiteral("Restart servers"),
             QStringLiteral("the servers take these settings when the program starts, or now with this button: "
                            "their clients are disconnected, and whatever they keyed is unkeyed"));
}

int KavConfig::networkTab() const { return tabIndex(QStringLiteral("Network")); }

bool KavConfig::onNetworkTab(const Control& c) const {
    for (const Control* n : std::initializer_list<const Control*>{
             &NetServerFrame, &NetServerEnabledCheck, &NetServerAddressLabel, &NetServerAddress,
             &NetServerPortLabel, &NetServerPort, &NetServerPasswordLabel, &NetServerPassword,
             &NetServerAllowedLabel, &NetServerAllowedClients, &NetServerReadOnlyCheck, &NetServerUnkeyOthersCheck,
             &XmlRpcFrame, &XmlRpcEnabledCheck, &XmlRpcPortLabel, &XmlRpcPort, &NetworkRestartCmd})
        if (n == &c) return true;
    return false;
}

}  // namespace tv
