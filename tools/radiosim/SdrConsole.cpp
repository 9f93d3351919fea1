#include "tools/radiosim/SdrConsole.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tv::sim {

namespace {
const char* const kModeNames[SdrConsole::ModeCount] = {"LSB", "USB",  "DSB",  "CWL",  "CWU", "FMN",
                                                       "AM",  "DIGU", "SPEC", "DIGL", "SAM", "DRM"};
// The radio covers up to 2 m and little more; the console refuses nothing else.
constexpr qint64 kMaxHz = 200'000'000;

QString mhz(qint64 hz) {
    return QString::number(double(hz) / 1e6, 'f', 6);
}
}  // namespace

QString SdrConsole::modeName(int mode) {
    return mode >= 0 && mode < ModeCount ? QString::fromLatin1(kModeNames[mode]) : QString();
}

int SdrConsole::modeOfName(const QString& name) {
    for (int m = 0; m < ModeCount; ++m)
        if (name.compare(QLatin1String(kModeNames[m]), Qt::CaseInsensitive) == 0) return m;
    return -1;
}

SdrConsole::SdrConsole() : vfo_{{{14'025'000, CWL}, {14'030'000, CWL}}} {}

bool SdrConsole::parseMHz(const QString& text, qint64* hz) {
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v) || v < 0 || v * 1e6 > double(kMaxHz)) return false;
    *hz = std::llround(v * 1e6);
    return true;
}

QString SdrConsole::freqReport(int vfo) const {
    return (vfo ? QStringLiteral("NewVFOB,") : QStringLiteral("NewVFOA,")) + mhz(frequency(vfo));
}

QString SdrConsole::modeReport(int vfo) const {
    return (vfo ? QStringLiteral("NewVFOBMode,") : QStringLiteral("NewVFOAMode,")) + modeName(mode(vfo));
}

QStringList SdrConsole::allReports() const {
    return {freqReport(0), freqReport(1), modeReport(0), modeReport(1),
            QStringLiteral("Split,") + (split_ ? QStringLiteral("on") : QStringLiteral("off"))};
}

SdrConsole::Answer SdrConsole::execute(const QString& command) {
    const qsizetype comma = command.indexOf(QLatin1Char(','));
    const QString verb = (comma < 0 ? command : command.left(comma)).trimmed().toLower();
    const QString value = comma < 0 ? QString() : command.mid(comma + 1);
    Answer a;
    qint64 hz = 0;
    if (verb == QLatin1String("start")) {
        a.reports = allReports();
    } else if (verb == QLatin1String("newvfoafreq") || verb == QLatin1String("newvfobfreq")) {
        a.accepted = parseMHz(value, &hz);
        if (a.accepted) a.reports = setFrequency(verb == QLatin1String("newvfobfreq") ? 1 : 0, hz);
    } else if (verb == QLatin1String("newvfoamode") || verb == QLatin1String("newvfobmode")) {
        bool ok = false;
        const int m = value.trimmed().toInt(&ok);
        a.accepted = ok && m >= 0 && m < ModeCount;
        if (a.accepted) a.reports = setMode(verb == QLatin1String("newvfobmode") ? 1 : 0, m);
    } else if (verb == QLatin1String("split")) {
        const QString v = value.trimmed().toLower();
        a.accepted = v == QLatin1String("on") || v == QLatin1String("off");
        if (a.accepted) a.reports = setSplit(v == QLatin1String("on"));
    } else if (verb == QLatin1String("vfoequal")) {
        // VFO A takes VFO B.
        vfo_[0] = vfo_[1];
        a.reports = {freqReport(0), modeReport(0)};
    } else if (verb == QLatin1String("vfoexchange")) {
        std::swap(vfo_[0], vfo_[1]);
        a.reports = {freqReport(0), freqReport(1), modeReport(0), modeReport(1)};
    } else if (verb == QLatin1String("sendvfofreqs")) {
        a.reports = {freqReport(0), freqReport(1)};
    } else if (verb == QLatin1String("sendvfomodes")) {
        a.reports = {modeReport(0), modeReport(1)};
    } else if (verb == QLatin1String("sendsmeter")) {
        a.reports = {QStringLiteral("smeter,%1").arg(meter_)};
    }
    return a;
}

QStringList SdrConsole::turnDial(qint64 deltaHz) {
    return setFrequency(0, std::clamp<qint64>(vfo_[0].hz + deltaHz, 0, kMaxHz));
}

QStringList SdrConsole::setFrequency(int vfo, qint64 hz) {
    vfo_[size_t(vfo & 1)].hz = hz;
    return {freqReport(vfo & 1)};
}

QStringList SdrConsole::setMode(int vfo, int mode) {
    vfo_[size_t(vfo & 1)].mode = mode;
    return {modeReport(vfo & 1)};
}

QStringList SdrConsole::setSplit(bool on) {
    split_ = on;
    return {QStringLiteral("Split,") + (on ? QStringLiteral("on") : QStringLiteral("off"))};
}

}  // namespace tv::sim
