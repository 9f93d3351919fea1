#include "suitelink/DDEServerModule.h"

#include "core/KavModule.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "platform/SuiteBus.h"
#include "services/Common.h"
#include "services/Convert.h"
#include "services/Errors.h"

namespace tv {

const char* const DDEServerModule::kStartClients[6] = {"Trillex", "Quolark",   "Brindlecast",
                                                       "Ionmere", "Sorrelgate", "OmbrelFrequency"};

DDEServerModule::DDEServerModule(KavModule& module, SuiteBus& bus, SuiteActions a)
    : actions(std::move(a)), server(module, *this, bus), m_(module), bus_(bus) {}

DDEServerModule::~DDEServerModule() { *alive_ = false; }

void DDEServerModule::connect() {
    m_.hooks.DDEInitialize = [this] { Initialize(); };
    m_.hooks.DDETerminate = [this] { Terminate(); };
    QObject::connect(&m_.state(), &RadioState::itemChanged, &m_.state(),
                     [this](const QString& item, const QString& text) { server.SetItem(item, text); });
}

void DDEServerModule::WriteItem(const QString& item, const QString& text) { m_.state().SetItem(item, text); }

void DDEServerModule::Initialize() {
    Guard("DDEServerModule.Initialize", [&] {
        server.Load();
        KavMain& main = m_.main();
        bus_.addTopic(
            QString::fromLatin1(kDisplayTopic),
            // The main window takes no commands.
            [](const QString&) { return false; },
            [&main](const QString& item) {
                return item.compare(QLatin1String(kDisplayItem), Qt::CaseInsensitive) == 0 ? main.FreqDisplay.text()
                                                                                          : QString();
            });
        if (!displayChained_) {
            // Behind whatever the window's own logic does with a new text.
            displayChained_ = true;
            auto before = main.FreqDisplay.Change;
            std::weak_ptr<bool> alive = alive_;
            main.FreqDisplay.Change = [this, before, alive] {
                if (before) before();
                if (const auto a = alive.lock(); a && *a) publishFreqDisplay();
            };
        }
        lastFreqDisplay_ = main.FreqDisplay.text();
        if (!bus_.connected()) {
            logUnavailable(QStringLiteral("there is no session bus"));
            return;
        }
        if (!bus_.serve(QString::fromLatin1(kApplication)))
            logUnavailable(suiteBusName(QString::fromLatin1(kApplication)) + QStringLiteral(" is held by another program"));
        for (const char* client : kStartClients) InformClient(QString::fromLatin1(client));
    });
}

void DDEServerModule::logUnavailable(const QString& why) {
    if (unavailableLogged_) return;
    unavailableLogged_ = true;
    m_.common().LogLine(QStringLiteral("DDEServerModule.Initialize: the suite link is unavailable: ") + why);
}

void DDEServerModule::InformClient(const QString& client) {
    const bool ok = Guard("DDEServerModule.InformClient", [&] {
        DDEStart.LinkTopic = client + QLatin1Char('|') + QString::fromLatin1(kClientTopic);
        DDEStart.LinkItem = QString::fromLatin1(kConnectionItem);
    });
    if (ok) announce(DDECommon::SenderPrefix() + QString::fromLatin1(DDEWord::Start));
}

void DDEServerModule::Terminate() {
    const bool ok = Guard("DDEServerModule.Terminate", [&] {
        DDEStart.LinkTopic = QString::fromLatin1(kLauncher) + QLatin1Char('|') + QString::fromLatin1(kClientTopic);
        DDEStart.LinkItem = QString::fromLatin1(kConnectionItem);
    });
    if (ok) announce(DDECommon::SenderPrefix() + QString::fromLatin1(DDEWord::Stop));
    server.Unload();
    bus_.unserve();
}

// An absent sibling is normal: whatever goes wrong here is silent.
void DDEServerModule::announce(const QString& command) {
    try {
        if (!bus_.connected()) return;
        const qsizetype bar = DDEStart.LinkTopic.indexOf(QLatin1Char('|'));
        const QString app = DDEStart.LinkTopic.left(bar), topic = DDEStart.LinkTopic.mid(bar + 1);
        DDEStart.LinkMode = 1;
        bus_.execute(app, topic, command);
    } catch (...) {
    }
}

void DDEServerModule::publishFreqDisplay() {
    const QString text = m_.main().FreqDisplay.text();
    if (text == lastFreqDisplay_) return;
    lastFreqDisplay_ = text;
    if (server.loaded()) bus_.publish(QString::fromLatin1(kDisplayTopic), QString::fromLatin1(kDisplayItem), text);
}

bool DDEServerModule::takesSplitFrequencyAlone() const {
    const Protocol* p = m_.radio().protocol();
    return p && p->traits().takesSplitFrequencyAlone;
}

namespace {
// A frequency from a client: a number no radio can be tuned to is refused as one that isn't a number is.
double tunableFrequency(const QString& text) {
    const double kHz = CDbl(text);
    if (!CommandQueue::Tunable(kHz)) throw TvError(kErrOverflow, QStringLiteral("\"%1\"").arg(text.left(40)));
    return kHz;
}
}  // namespace

void DDEServerModule::DoQSY(const QString& frequency) {
    Guard("DDEServerModule.DoQSY", [&] { m_.queue().SetXcvrFreq(tunableFrequency(frequency)); });
}

void DDEServerModule::DoFreqMode(const QString& frequency, const QString& mode) {
    Guard("DDEServerModule.DoFreqMode", [&] {
        const double kHz = tunableFrequency(frequency);
        KavMain& main = m_.main();
        main.FreqDisplay.setText(frequency);
        int index = ModeIndex(mode.toUpper());
        // A tune by record always ends split and dual receive; the flags keep the boxes' own click
        // handlers from acting on the program's change.
        if (main.SplitBox.visible()) {
            if (main.SplitBox.checked()) {
                m_.SetControlFlag(FlagSplitBox, true);
                main.SplitBox.setChecked(false);
            }
            m_.queue().SetXcvrSplit(false);
        }
        if (main.DualBox.visible()) {
            if (main.DualBox.checked()) {
                m_.SetControlFlag(FlagDualBox, true);
                main.DualBox.setChecked(false);
            }
            m_.queue().SetXcvrDual(false);
        }
        if (index == ModeUnknown) index = kHz >= 13000.0 ? ModeUSB : ModeLSB;
        WriteItem(QStringLiteral("Mode"), LogModeName(index));
        WriteItem(QStringLiteral("RadioMode"), ModeName(index));
        // The mode goes ahead of the frequency, with a wait between.
        m_.queue().SetXcvrMode(index);
        m_.queue().SetXcvrWait();
        if (m_.radio().traits().mainReceiverBeforeRecordTune) m_.queue().SelectPrimary();
        m_.queue().SetXcvrFreq(kHz);
        m_.queue().SetXcvrWait();
    });
}

void DDEServerModule::DoSplit(const QString& frequency) {
    Guard("DDEServerModule.DoSplit", [&] {
        const double kHz = tunableFrequency(frequency);
        KavMain& main = m_.main();
        if (main.SplitBox.visible()) {
            m_.queue().SetXcvrSBFreq(kHz);
            if (!main.SplitBox.checked()) {
                m_.SetControlFlag(FlagSplitBox, true);
                main.SplitBox.setChecked(true);
            }
            m_.queue().SetXcvrSplit(true);
            if (main.DualBox.visible() && m_.config().DualReceiveEnableBox.checked()) {
                if (!main.DualBox.checked()) {
                    m_.SetControlFlag(FlagDualBox, true);
                    main.DualBox.setChecked(true);
                }
                m_.queue().SetXcvrDual(true);
            }
        } else if (takesSplitFrequencyAlone()) {
            // That radio takes a split frequency without a split switch.
            m_.queue().SetXcvrSBFreq(kHz);
        }
    });
}

}  // namespace tv
