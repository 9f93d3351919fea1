#include "app/CommandLine.h"

#include "app/Demo.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

namespace tv {

namespace {
// A TCP port from an option, or the exit code of a bad one.
std::optional<int> readPort(const QCommandLineParser& parser, const QCommandLineOption& option, const char* name,
                            std::optional<quint16>& port) {
    if (!parser.isSet(option)) return std::nullopt;
    bool ok = false;
    const uint value = parser.value(option).toUInt(&ok);
    if (!ok || value == 0 || value > 65535) {
        std::fprintf(stderr, "tolvane: %s wants a port number from 1 to 65535\n", name);
        return 2;
    }
    port = quint16(value);
    return std::nullopt;
}
}  // namespace

std::optional<int> ParseCommandLine(const QCoreApplication& app, CommandLine& out) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Tolvane transceiver controller"));
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption headlessOpt(QStringLiteral("headless"),
                                   QStringLiteral("Run without windows; messages go to the log and standard error."));
    QCommandLineOption demoOpt(QStringLiteral("demo"),
                               QStringLiteral("Control a simulated radio on a pseudo-terminal, with throw-away settings."));
    QCommandLineOption configOpt(QStringLiteral("config-dir"),
                                 QStringLiteral("Keep settings (Tolvane.ini) and ErrorLog.txt in DIR."), QStringLiteral("DIR"));
    QCommandLineOption appOpt(QStringLiteral("app-dir"),
                              QStringLiteral("Read Radios.txt, SMeter/ and Help/ from DIR."), QStringLiteral("DIR"));
    QCommandLineOption shotsOpt(QStringLiteral("screenshots"),
                                QStringLiteral("Save pictures of the windows into DIR after a few seconds, then quit."),
                                QStringLiteral("DIR"));
    QCommandLineOption netPortOpt(QStringLiteral("net-port"),
                                  QStringLiteral("Serve rigctld clients on TCP port PORT (over the setting NetServerPort)."),
                                  QStringLiteral("PORT"));
    QCommandLineOption noNetOpt(QStringLiteral("no-net"), QStringLiteral("Run no rig server for other programs."));
    QCommandLineOption xmlrpcPortOpt(QStringLiteral("xmlrpc-port"),
                                     QStringLiteral("Serve XML-RPC rig clients on TCP port PORT of loopback (over the "
                                                    "setting XmlRpcPort, default 12345)."),
                                     QStringLiteral("PORT"));
    QCommandLineOption noXmlrpcOpt(QStringLiteral("no-xmlrpc"), QStringLiteral("Run no XML-RPC server."));
    QCommandLineOption modelOpt(QStringLiteral("model"),
                                QStringLiteral("The demo's simulated radio: ") + DemoRadio::names() +
                                    QStringLiteral(" (default ") + QLatin1String(DemoRadio::defaultModel().name) +
                                    QStringLiteral(")."),
                                QStringLiteral("NAME"));
    // Memories from the shell: no window, no port.
    QCommandLineOption exportMemoriesOpt(QStringLiteral("export-memories"),
                                         QStringLiteral("Write all stored memories to FILE and exit."), QStringLiteral("FILE"));
    QCommandLineOption importMemoriesOpt(QStringLiteral("import-memories"),
                                         QStringLiteral("Read memories from FILE into the stored ones and exit."),
                                         QStringLiteral("FILE"));
    parser.addOptions({headlessOpt, demoOpt, configOpt, appOpt, shotsOpt, netPortOpt, noNetOpt, xmlrpcPortOpt,
                       noXmlrpcOpt, modelOpt, exportMemoriesOpt, importMemoriesOpt});
    parser.process(app);

    out.headless = parser.isSet(headlessOpt);
    out.demo = parser.isSet(demoOpt);
    out.configDir = parser.value(configOpt);
    out.appDir = parser.value(appOpt);
    out.screenshots = parser.value(shotsOpt);
    out.net.allowed = !parser.isSet(noNetOpt);
    if (auto code = readPort(parser, netPortOpt, "--net-port", out.net.port)) return code;
    out.flrig.allowed = !parser.isSet(noXmlrpcOpt);
    if (auto code = readPort(parser, xmlrpcPortOpt, "--xmlrpc-port", out.flrig.port)) return code;

    if (parser.isSet(exportMemoriesOpt) && parser.isSet(importMemoriesOpt)) {
        std::fprintf(stderr, "tolvane: --export-memories and --import-memories go one at a time\n");
        return 2;
    }
    if (parser.isSet(exportMemoriesOpt)) {
        out.memories = MemoryCommand::Export;
        out.memoryFile = parser.value(exportMemoriesOpt);
    } else if (parser.isSet(importMemoriesOpt)) {
        out.memories = MemoryCommand::Import;
        out.memoryFile = parser.value(importMemoriesOpt);
    }

    if (parser.isSet(modelOpt)) {
        out.model = parser.value(modelOpt);
        if (!out.demo || !DemoRadio::find(out.model)) {
            std::fprintf(stderr, "tolvane: --model goes with --demo and names one of %s\n",
                         DemoRadio::names().toLocal8Bit().constData());
            return 2;
        }
    }
    return std::nullopt;
}

}  // namespace tv
