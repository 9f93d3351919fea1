#include "protocols/sdrconsole/SdrConsole.h"

#include "core/RadioCatalogue.h"
#include "core/RadioState.h"
#include "protocols/sdrconsole/SdrModule.h"
#include "services/Convert.h"
#include "services/Errors.h"

#include <cmath>

namespace tv {

namespace {

// The console's names of its modes, and what each is here.
struct SdrModeName {
    const char* text;
    int mode;
};
constexpr SdrModeName kModesFromSDR[] = {
    {"LSB", ModeLSB},      {"USB", ModeUSB},     {"CWL", ModeCW},      {"CWU", ModeCWR},
    {"DSB", ModeUnknown},  {"FMN", ModeFM},      {"AM", ModeAM},       {"PSK", ModeUnknown},
    {"SPEC", ModeUnknown}, {"SAM", ModeUnknown}, {"DRM", ModeUnknown}, {"RTTY", ModeRTTY},
};
static_assert(sizeof(kModesFromSDR) / sizeof(kModesFromSDR[0]) == 12,
              "one row for each mode name the console uses");

// The console's verbs in the order they are tried; anything else is a split report.
struct SdrVerb {
    const char* text;
    ConsoleVerb verb;
};
constexpr SdrVerb kVerbs[] = {
    {"start", ConsoleVerb::Start},          {"newvfoa", ConsoleVerb::VFOAFreq},
    {"newvfob", ConsoleVerb::VFOBFreq},     {"newvfoamode", ConsoleVerb::VFOAMode},
    {"newvfobmode", ConsoleVerb::VFOBMode}, {"smeter", ConsoleVerb::SMeter},
};
static_assert(sizeof(kVerbs) / sizeof(kVerbs[0]) == 6, "the verbs the console reports with");

}  // namespace

int GetSDRMode(int mode) {
    switch (mode) {
        case ModeUSB:
            return 1;
        case ModeAM:
            return 6;
        case ModeCW:
            return 3;
        case ModeRTTY:
        case ModeRTTYR:
        case ModePKT:
            return 9;
        case ModeFM:
        case ModeWBFM:
            return 5;
        case ModeCWR:
            return 4;
        default:
            return 0;  // LSB, and no mode at all
    }
}

int GetModeFromSDR(const QString& text) {
    const QString upper = text.toUpper();
    for (const SdrModeName& m : kModesFromSDR)
        if (upper == QLatin1String(m.text)) return m.mode;
    return ModeUnknown;
}

ConsoleReport DecodeConsoleString(const QString& text) {
    ConsoleReport r;
    const qsizetype comma = text.indexOf(QLatin1Char(','));
    const QString verb = (comma < 0 ? text : text.left(comma)).toLower();
    if (comma >= 0) r.value = text.mid(comma + 1);
    r.verb = ConsoleVerb::Split;
    for (const SdrVerb& v : kVerbs)
        if (verb == QLatin1String(v.text)) {
            r.verb = v.verb;
            break;
        }
    try {
        r.number = CDbl(r.value);
    } catch (const TvError&) {
        r.number.reset();
    }
    r.mode = GetModeFromSDR(r.value);
    r.on = r.value.toLower() == QLatin1String("on");
    return r;
}

QString SDRFrequency(double kHz) {
    return QString::number(kHz / 1000.0, 'g', 15);
}

// ---- the protocol of a chosen radio ----

SdrConsoleProtocol::SdrConsoleProtocol(ProtocolContext& context, const RadioInfo& radio,
                                       std::shared_ptr<SdrModule> link)
    : c_(context), hasMeter_(radio.sMeter), link_(std::move(link)) {
    traits_.framing = Framing::None;
    traits_.interrogation = InterrogationRule::Forced;
    link_->attach(this);
}

SdrConsoleProtocol::~SdrConsoleProtocol() {
    link_->detach(this);
}

QString SdrConsoleProtocol::DisplayName(const RadioInfo& radio) const {
    return QStringLiteral("FlexRadio ") + radio.model;
}

void SdrConsoleProtocol::BringUp() {
    c_.state.CurrentVFO = 0;
    c_.state.UpdateVFOCaption();
    if (!link_->Connected()) link_->Connect();
}

QString SdrConsoleProtocol::OfflineCaption(bool) const {
    return link_->Connected() ? QString() : QStringLiteral(" - not running");
}

void SdrConsoleProtocol::send(const QString& text) {
    link_->SendSDRCommand(text);
}

bool SdrConsoleProtocol::SendString(const QByteArray& text) {
    send(QString::fromLatin1(text));
    return true;
}

void SdrConsoleProtocol::Execute(const XcvrCmd& c) {
    RadioState& s = c_.state;
    const bool onB = s.CurrentVFO == 1;
    switch (c.theCmd) {
        case XcvrCmdFreq:
            send((onB ? QStringLiteral("NewVFOBFreq,") : QStringLiteral("NewVFOAFreq,")) +
                 SDRFrequency(c.theFreq));
            break;
        case XcvrCmdMode:
            // The queue has already shown the mode.
            send((onB ? QStringLiteral("NewVFOBMode,") : QStringLiteral("NewVFOAMode,")) +
                 QString::number(GetSDRMode(c.theMode)));
            break;
        case XcvrCmdSplit:
            send(c.theArg ? QStringLiteral("Split,on") : QStringLiteral("Split,off"));
            break;
        case XcvrCmdVFOA:
        case XcvrCmdVFOB:
            // The console has no VFO to select: the program shows the other one and sends to it.
            s.CurrentVFO = c.theCmd == XcvrCmdVFOB ? 1 : 0;
            s.UpdateVFO();
            break;
        case XcvrCmdVFOEqual:
            send(QStringLiteral("VFOEqual"));
            break;
        case XcvrCmdVFOXch:
            send(QStringLiteral("VFOExchange"));
            break;
        case XcvrCmdSBFreq:
            s.VFOBMode = s.VFOAMode;
            send(QStringLiteral("NewVFOBMode,") + QString::number(GetSDRMode(s.RadioMode)));
            send(QStringLiteral("NewVFOBFreq,") + SDRFrequency(c.theFreq));
            break;
        default:
            break;  // nothing else has a meaning for the console
    }
}

void SdrConsoleProtocol::sendMeterPoll() {
    // A console that hasn't answered the last call gets no more polls on top of it.
    if (!link_->awaitingAnswer()) send(QStringLiteral("SendSMeter"));
}

int SdrConsoleProtocol::InterrogationStep(int phase) {
    // Frequency and mode are not polled: the console reports them unasked. Only the meter is asked for.
    switch (phase) {
        case 0:
        case 2:
            if (hasMeter_) sendMeterPoll();
            return phase + 1;
        case 1:
            sendMeterPoll();
            return 2;
        case 3:
            sendMeterPoll();
            return 0;
        default:
            return 0;
    }
}

void SdrConsoleProtocol::RequestFrequency() {
    send(QStringLiteral("SendVFOFreqs"));
}

void SdrConsoleProtocol::RequestMode() {
    send(QStringLiteral("SendVFOModes"));
}

}  // namespace tv
