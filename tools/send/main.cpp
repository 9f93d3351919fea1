// tolvane-send: a sibling program on the command line. Sends one execute string to a suite member's
// topic and says whether it was accepted, reads an item, or prints item changes as they come.

#include "platform/SuiteBus.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

namespace {

void print(const QString& line) {
    std::fprintf(stdout, "%s\n", line.toLocal8Bit().constData());
    std::fflush(stdout);
}

// Exit codes: a script must be able to tell a refusal from a program too busy to answer.
enum Exit { kAccepted = 0, kRefused = 1, kFailed = 2, kNoAnswer = 3 };

int fail(const QString& why, int code = kFailed) {
    std::fprintf(stderr, "tolvane-send: %s\n", why.toLocal8Bit().constData());
    return code;
}

// The exit for a call that got no answer of its own.
int failed(const tv::SuiteBus::CallResult& r) {
    return fail(r.error, r.outcome == tv::SuiteBus::CallResult::NoAnswer ? kNoAnswer : kFailed);
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tolvane-send"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Sends EXECUTE-STRING (for instance 001qsy14025.5) to a suite member and prints \"accepted\" (exit 0) or "
        "\"refused\" (exit 1); exit 2 when the member isn't running, there is no session bus or the call fails, "
        "exit 3 when the member is running but gives no answer within the timeout."));
    parser.addHelpOption();
    QCommandLineOption appOpt(QStringLiteral("app"), QStringLiteral("Target application (default Tolvane)."),
                              QStringLiteral("A"), QStringLiteral("Tolvane"));
    QCommandLineOption topicOpt(QStringLiteral("topic"),
                                QStringLiteral("Target topic (default DDEServer; the display is TolvaneUI)."),
                                QStringLiteral("T"), QStringLiteral("DDEServer"));
    QCommandLineOption requestOpt(QStringLiteral("request"), QStringLiteral("Print the text of ITEM."),
                                  QStringLiteral("ITEM"));
    QCommandLineOption watchOpt(QStringLiteral("watch"),
                                QStringLiteral("Print item changes as ITEM=VALUE lines until stopped."));
    QCommandLineOption timeoutOpt(QStringLiteral("timeout"), QStringLiteral("Wait at most MS for an answer (2000)."),
                                  QStringLiteral("MS"), QStringLiteral("2000"));
    parser.addOptions({appOpt, topicOpt, requestOpt, watchOpt, timeoutOpt});
    parser.addPositionalArgument(QStringLiteral("EXECUTE-STRING"), QStringLiteral("The command to send."));
    parser.process(app);

    const QString target = parser.value(appOpt), topic = parser.value(topicOpt);
    const int timeout = parser.value(timeoutOpt).toInt() > 0 ? parser.value(timeoutOpt).toInt() : 2000;
    const auto bus = tv::makeSessionSuiteBus();
    if (!bus->connected()) return fail(QStringLiteral("no session bus"));

    if (parser.isSet(watchOpt)) {
        bus->watch(target, topic, [](const QString& item, const QString& value) { print(item + QLatin1Char('=') + value); });
        // The watch is in place once this line is out: a caller may start changing things.
        std::fprintf(stderr, "tolvane-send: watching %s %s\n", tv::suiteBusName(target).toLocal8Bit().constData(),
                     tv::suiteObjectPath(topic).toLocal8Bit().constData());
        std::fflush(stderr);
        return app.exec();
    }
    using Result = tv::SuiteBus::CallResult;
    if (parser.isSet(requestOpt)) {
        const Result r = bus->requestCall(target, topic, parser.value(requestOpt), timeout);
        if (r.outcome != Result::Answered) return failed(r);
        print(r.value.toString());
        return kAccepted;
    }
    const QStringList args = parser.positionalArguments();
    if (args.size() != 1) parser.showHelp(kFailed);
    const Result r = bus->executeCall(target, topic, args.first(), timeout);
    if (r.outcome != Result::Answered) return failed(r);
    const bool accepted = r.value.toBool();
    print(accepted ? QStringLiteral("accepted") : QStringLiteral("refused"));
    return accepted ? kAccepted : kRefused;
}
