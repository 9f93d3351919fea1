#include "suitelink/DDEServer.h"

#include "core/KavModule.h"
#include "forms/KavMain.h"
#include "platform/SuiteBus.h"
#include "services/Common.h"
#include "services/Convert.h"
#include "services/Errors.h"
#include "suitelink/DDEServerModule.h"

namespace tv {

namespace {
// The windows "resetwindows" shows, in this order; those the program hasn't got are passed over.
const char* const kResetShowOrder[] = {"KavConfig",     "KavMain",         "KavMessages",
                                       "KavReject",     "ExpectTimeoutWindow", "MemoryNotes",
                                       "MessageOverflow", "Note",          "UserCommandSequenceDefinition"};
}  // namespace

DDEServer::DDEServer(KavModule& module, DDEServerModule& owner, SuiteBus& bus) : m_(module), owner_(owner), bus_(bus) {
    for (const char* item : {"Mode", "RadioMode", "RadioSMeter", "RadioSMeterString", "MainWindowState"})
        items_[QString::fromLatin1(item)] = QStringLiteral("");
}

void DDEServer::Load() {
    if (loaded_) return;
    loaded_ = true;
    LinkTopic = QString::fromLatin1(DDEServerModule::kCommandTopic);
    LinkMode = 1;
    bus_.addTopic(
        LinkTopic,
        [this](const QString& command) {
            // Refused unless a verb runs to its end.
            std::int16_t cancel = -1;
            LinkExecute(command, cancel);
            return cancel == 0;
        },
        [this](const QString& item) { return Item(item); });
}

void DDEServer::Unload() {
    loaded_ = false;
    LinkMode = 0;
}

void DDEServer::SetItem(const QString& item, const QString& text) {
    auto it = items_.find(item);
    if (it == items_.end()) return;
    // Mode reports repeat with every poll: only a new text is worth the bus's traffic.
    if (it->second == text) return;
    it->second = text;
    if (loaded_) bus_.publish(LinkTopic, item, text);
}

QString DDEServer::Item(const QString& item) const {
    const auto it = items_.find(item);
    return it == items_.end() ? QString() : it->second;
}

void DDEServer::LinkExecute(const QString& CmdStr, std::int16_t& Cancel) {
    Guard("DDEServer.LinkExecute", [&] {
        m_.common().DebugLog(QStringLiteral("DDEServer.LinkExecute: ") + CmdStr);
        // The sender isn't used, but a command without one isn't understood.
        CInt(CmdStr.left(3));
        const QString rest = CmdStr.mid(3);
        const QString lower = rest.toLower();
        auto is = [&](const char* verb) { return lower.left(qsizetype(qstrlen(verb))) == QLatin1String(verb); };
        auto argument = [&](const char* verb) { return rest.mid(qsizetype(qstrlen(verb))); };
        const SuiteActions& act = owner_.actions;

        if (is(DDEWord::Test)) {
        } else if (is(DDEWord::Shutdown)) {
            if (act.RequestShutdown) act.RequestShutdown();
        } else if (is(DDEWord::Iconify)) {
            owner_.dde.Iconify(act.OpenWindows ? act.OpenWindows() : std::vector<Form*>{});
        } else if (is(DDEWord::Activate)) {
            owner_.dde.Activate(m_.main());
        } else if (is(DDEWord::ResetWindows)) {
            ResetWindows(CLng(argument(DDEWord::ResetWindows)));
        } else if (is(DDEWord::Transmit)) {
            m_.Transmit();
        } else if (is(DDEWord::Receive)) {
            m_.Receive();
        } else if (is(DDEWord::SeqName)) {
            if (act.ExecuteNamedSequence) act.ExecuteNamedSequence(argument(DDEWord::SeqName));
        } else if (is(DDEWord::SeqIndex)) {
            const std::int16_t index = CInt(argument(DDEWord::SeqIndex));
            if (index > -1 && act.ExecuteSequence) act.ExecuteSequence(index);
        } else if (is(DDEWord::XcvrCommand)) {
            if (act.ExecuteCommand) act.ExecuteCommand(argument(DDEWord::XcvrCommand));
        } else if (is(DDEWord::QSY)) {
            owner_.DoQSY(argument(DDEWord::QSY));
        } else if (is(DDEWord::Split)) {
            owner_.DoSplit(argument(DDEWord::Split));
        } else if (is(DDEWord::XcvrFreqMode)) {
            owner_.dde.ParseRecord(argument(DDEWord::XcvrFreqMode));
            // Fields by position; tags aren't read.
            QString freq = owner_.dde.GetToken(1).Value;
            const QString mode = owner_.dde.GetToken(2).Value;
            if (freq.isEmpty()) freq = QStringLiteral("0");
            owner_.DoFreqMode(freq, mode);
        } else if (is(DDEWord::XcvrSetModeCmd)) {
            owner_.dde.ParseRecord(argument(DDEWord::XcvrSetModeCmd));
            const QString name = owner_.dde.GetToken(1).Value.toUpper();
            const int index = ModeIndex(name);
            // The requested name as it stands, unknown names too; no record asks for nothing, and the
            // item keeps telling the mode in force.
            if (owner_.dde.GetParsedTokenCount() > 0) owner_.WriteItem(QStringLiteral("Mode"), name);
            m_.queue().SetXcvrMode(index);
        } else {
            Cancel = -1;
            return;
        }
        Cancel = 0;
    });
}

void DDEServer::ResetWindows(std::int32_t offset) {
    Guard("DDEServer.ResetWindows", [&] {
        const std::vector<Form*> windows = owner_.actions.OpenWindows ? owner_.actions.OpenWindows() : std::vector<Form*>{};
        for (const char* name : kResetShowOrder)
            for (Form* w : windows)
                if (w && w->name() == QLatin1String(name)) w->Show();
        std::int32_t x = offset, y = offset;
        for (Form* w : windows) {
            if (!w) continue;
            w->setWindowState(Form::Normal);
            w->setTop(y);
            w->setLeft(x);
            x += kCascadeStep;
            y += kCascadeStep;
        }
    });
}

}  // namespace tv
