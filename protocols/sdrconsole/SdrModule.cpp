#include "protocols/sdrconsole/SdrModule.h"

#include "core/CommandQueue.h"
#include "core/RadioState.h"
#include "core/SelectedRadio.h"
#include "platform/SuiteBus.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

namespace {
const QString kApp = QString::fromLatin1(SdrModule::kConsoleApplication);
// Beyond this the console is talking nonsense: no radio tunes a thousand megahertz from here.
constexpr double kHighestKHz = 999999.99;
// The runtime's numbers for a conversation that went wrong: refused, or no answer in time.
constexpr int kErrDDERefused = 285;
constexpr int kErrDDETimeout = 286;
}  // namespace

SdrModule::~SdrModule() {
    *alive_ = false;
}

void SdrModule::Initialize(ProtocolContext& context) {
    c_ = &context;
    Guard("SDRModule.Initialize", [&] {
        SDRStartTimer = std::make_unique<Timer>(c_->common.loop(), QStringLiteral("SDRStartTimer"));
        SDRStartTimer->setInterval(kStartDelayMs);
        SDRStartTimer->setEnabled(false);
        SDRStartTimer->TimerEvent = [this] {
            SDRStartTimer->setEnabled(false);
            Connect();
        };
        SDRConnected = false;
        loadForm();
        SuiteBus* bus = c_->bus;
        if (bus && !watching_) {
            std::weak_ptr<bool> alive = alive_;
            watching_ = bus->watchOwner(kApp, [this, alive](bool running) {
                if (alive.expired()) return;
                consolePresent_ = running;
                if (!running && SDRConnected) ConnectionClosed();
            });
        }
    });
}

void SdrModule::loadForm() {
    if (formLoaded_ || !c_ || !c_->bus) return;
    std::weak_ptr<bool> alive = alive_;
    formLoaded_ = c_->bus->addTopic(
        QString::fromLatin1(kClientTopic),
        [this, alive](const QString& text) { return alive.expired() ? false : LinkExecute(text); },
        // The topic has no items.
        [](const QString&) { return QString(); });
}

void SdrModule::unloadForm() {
    if (SDRStartTimer) SDRStartTimer->setEnabled(false);
    if (formLoaded_ && c_ && c_->bus) c_->bus->removeTopic(QString::fromLatin1(kClientTopic));
    formLoaded_ = false;
}

bool SdrModule::RadioIsFlexRadio() const {
    return protocol_ && c_ && c_->radio.protocol() == static_cast<const Protocol*>(protocol_);
}

void SdrModule::OtherFamilyChosen() {
    if (Connected()) Disconnect();
}

void SdrModule::Start() {
    Guard("SDRModule.Start", [&] {
        if (RadioIsFlexRadio() && SDRStartTimer) SDRStartTimer->setEnabled(true);
    });
}

void SdrModule::Connect() {
    if (!c_) return;
    Guard("SDRModule.Connect", [&] {
        loadForm();
        send(QStringLiteral("Start"), true);
        c_->state.UpdateVFO();
    });
}

void SdrModule::Disconnect() {
    Guard("SDRModule.Disconnect", [&] {
        unloadForm();
        if (SDRConnected && c_)
            c_->common.LogLine(QStringLiteral("SDRModule.Disconnect: the console is let go"));
        SDRConnected = false;
    });
}

void SdrModule::ConnectionClosed() {
    Guard("SDRModule.ConnectionClosed", [&] {
        SDRConnected = false;
        c_->common.LogLine(
            QStringLiteral("SDRModule.ConnectionClosed: the console has gone; it is linked again when it "
                           "says \"start\""));
        // The caption follows: the radio of the console is not running.
        if (RadioIsFlexRadio()) c_->state.ReportSilent();
    });
}

void SdrModule::SendSDRCommand(const QString& text) {
    send(text, false);
}

void SdrModule::send(const QString& text, bool evenIfAbsent) {
    if (!c_) return;
    SuiteBus* bus = c_->bus;
    if (!bus || !bus->connected()) {
        if (!noBusLogged_)
            c_->common.LogLine(
                QStringLiteral("SDRModule.SendSDRCommand: there is no session bus to reach the console on"));
        noBusLogged_ = true;
        return;
    }
    if (!consolePresent_ && !evenIfAbsent) {
        c_->common.DebugLog(
            QStringLiteral("SDRModule.SendSDRCommand: not sent, the console is not running: ") + text);
        return;
    }
    c_->common.DebugLog(QStringLiteral("SDRModule.SendSDRCommand: ") + text);
    ++unanswered_;
    std::weak_ptr<bool> alive = alive_;
    bus->executeLater(
        kApp, QString::fromLatin1(kConsoleTopic), text, kLinkTimeoutMs,
        [this, alive, text](const SuiteBus::CallResult& r) {
            if (alive.expired()) return;
            --unanswered_;
            const QString label = QStringLiteral("SDRModule.SendSDRCommand");
            switch (r.outcome) {
                case SuiteBus::CallResult::Answered:
                    if (!r.value.toBool()) {
                        c_->common.ReportError(kErrDDERefused, label,
                                               QStringLiteral("the console refused ") + text);
                        return;
                    }
                    consolePresent_ = true;
                    if (!SDRConnected)
                        c_->common.LogLine(QStringLiteral("SDRModule.Connect: linked to the console"));
                    if (RadioIsFlexRadio()) {
                        c_->state.ReportAnswered();
                        // What the console said right after "Start" may have gone out before this
                        // program's name was on the bus (at start-up the suite link claims it after the
                        // radio is brought up): both VFOs are asked for again, through the queue.
                        if (!SDRConnected) c_->queue.InterrogateRadio();
                    }
                    SDRConnected = true;
                    return;
                case SuiteBus::CallResult::NotRunning:
                    // Not a fault: the console starts when the operator starts it.
                    consolePresent_ = false;
                    c_->common.LogLine(label + QStringLiteral(": the console is not running"));
                    if (SDRConnected) ConnectionClosed();
                    return;
                case SuiteBus::CallResult::NoAnswer:
                    c_->common.ReportError(kErrDDETimeout, label, r.error + QStringLiteral(": ") + text);
                    return;
                case SuiteBus::CallResult::Failed:
                    c_->common.ReportError(kErrDDERefused, label, r.error + QStringLiteral(": ") + text);
                    return;
            }
        });
}

// ---- what the console says ----

bool SdrModule::LinkExecute(const QString& text) {
    Guard("SDRDDEClient.Form_LinkExecute", [&] {
        if (!c_) return;
        c_->common.DebugLog(QStringLiteral("SDRDDEClient.Form_LinkExecute: ") + text);
        const ConsoleReport r = DecodeConsoleString(text);
        switch (r.verb) {
            case ConsoleVerb::Start:
                Start();
                break;
            case ConsoleVerb::VFOAFreq:
                SetSDRVFOAFreq(r);
                break;
            case ConsoleVerb::VFOBFreq:
                SetSDRVFOBFreq(r);
                break;
            case ConsoleVerb::VFOAMode:
                SetSDRVFOAMode(r);
                break;
            case ConsoleVerb::VFOBMode:
                SetSDRVFOVMode(r);
                break;
            case ConsoleVerb::SMeter:
                SetSDRSMeter(r);
                break;
            case ConsoleVerb::Split:
                SetSDRSplit(r);
                break;
        }
    });
    // Whatever came, the console hears that it was taken.
    return true;
}

void SdrModule::setVFOFreq(int vfo, const ConsoleReport& r) {
    Guard(vfo ? "SDRModule.SetSDRVFOBFreq" : "SDRModule.SetSDRVFOAFreq", [&] {
        if (!r.number) throw TvError(kErrTypeMismatch, QStringLiteral("\"%1\"").arg(r.value.left(40)));
        const double kHz = *r.number * 1000.0;
        if (!(kHz >= 0 && kHz <= kHighestKHz))
            throw TvError(kErrOverflow, QStringLiteral("%1 MHz").arg(r.value.left(40)));
        RadioState& s = c_->state;
        (vfo ? s.VFOBFreq : s.VFOAFreq) = kHz;
        // The other VFO's frequency is kept for when it is selected, and not shown.
        if (s.CurrentVFO != vfo) return;
        s.UpdateRadioFreq(kHz);
        s.ReportFirstFrequency();
    });
}

void SdrModule::setVFOMode(int vfo, const ConsoleReport& r) {
    Guard(vfo ? "SDRModule.SetSDRVFOVMode" : "SDRModule.SetSDRVFOAMode", [&] {
        RadioState& s = c_->state;
        (vfo ? s.VFOBMode : s.VFOAMode) = r.mode;
        if (s.CurrentVFO == vfo) s.UpdateXcvrMode(r.mode);
    });
}

void SdrModule::SetSDRSplit(const ConsoleReport& r) {
    // The window compares before it sets the box, and raises the box's flag first.
    Guard("SDRModule.SetSDRSplit", [&] { c_->state.ReportSplit(r.on); });
}

void SdrModule::SetSDRSMeter(const ConsoleReport& r) {
    Guard("SDRModule.SetSDRSMeter", [&] {
        if (!r.number) throw TvError(kErrTypeMismatch, QStringLiteral("\"%1\"").arg(r.value.left(40)));
        c_->state.ReportMeter(*r.number / 100.0);
    });
}

}  // namespace tv
