#include "core/XcvrCmd.h"

#include <array>

namespace tv {
namespace {
constexpr std::array<const char*, 26> kCommandNames = {
    "Set Frequency", "Set Mode", "Set Filter Arrangement", "", "Set Dual Watch", "Set Split Mode",
    "Select VFO A", "Select VFO B", "VFO A <- VFO B", "Exchange VFOs", "Request Frequency", "Request Mode",
    "Select Main", "Select Sub", "Sub <- Main", "Exchange Main and Sub", "Set PTT", "Request ID", "Wait",
    "Switch VFOs", "Raw", "String", "Power", "Lock", "Set VFO B Frequency", "Step VFO Frequency"};
static_assert(kCommandNames.size() == XcvrCmdStepFreq + 1, "one name per command code");

struct ModeRow {
    const char* name;
    const char* logName;
};
constexpr std::array<ModeRow, 10> kModes = {{{"LSB", "SSB"},
                                             {"USB", "SSB"},
                                             {"AM", "AM"},
                                             {"CW", "CW"},
                                             {"RTTY", "RTTY"},
                                             {"FM", "FM"},
                                             {"WBFM", "FM"},
                                             {"CW-R", "CW"},
                                             {"RTTY-R", "RTTY"},
                                             {"PKT", "PKT"}}};
}  // namespace

QString CommandName(int code) {
    if (code < 0 || code >= int(kCommandNames.size())) return {};
    return QString::fromLatin1(kCommandNames[size_t(code)]);
}

namespace {
// The names as strings, made once: every mode report hands them on.
template <const char* ModeRow::*Field>
const QString& modeText(size_t mode) {
    static const auto texts = [] {
        std::array<QString, kModes.size()> t;
        for (size_t i = 0; i < kModes.size(); ++i) t[i] = QString::fromLatin1(kModes[i].*Field);
        return t;
    }();
    return texts[mode];
}
}  // namespace

QString ModeName(int mode) {
    if (mode < 0 || mode >= int(kModes.size())) return {};
    return modeText<&ModeRow::name>(size_t(mode));
}

int ModeIndex(const QString& name) {
    for (size_t i = 0; i < kModes.size(); ++i)
        if (name == QLatin1String(kModes[i].name)) return int(i);
    return ModeUnknown;
}

QString LogModeName(int mode) {
    if (mode < 0 || mode >= int(kModes.size())) return {};
    return modeText<&ModeRow::logName>(size_t(mode));
}

QString FilterGroupName(int index) {
    switch (index) {
        case 0: return QString();
        case 1: return QStringLiteral("Wide");
        case 2: return QStringLiteral("Narrow");
        case 3: return QStringLiteral("Normal");
        default: return QStringLiteral("?");
    }
}

int IcomFilterGroupIndex(const QString& name) {
    const QString n = name.toUpper();
    if (n == QLatin1String("WIDE") || n == QLatin1String("1")) return 1;
    if (n == QLatin1String("NARROW") || n == QLatin1String("2")) return 2;
    if (n == QLatin1String("NORMAL") || n == QLatin1String("3")) return 3;
    return 0;
}

}  // namespace tv
