#include "protocols/yaesu/Yaesu.h"

namespace tv {

namespace {
// The small radios are tried only this seldom once they stop answering: each try costs a full wait.
constexpr int kSilentSmallRadioInterval = 5000;  // ms
bool isSmallRadio(const QString& model) {
    return model == QLatin1String("FT817") || model == QLatin1String("FT897") || model == QLatin1String("FT857");
}
}  // namespace

YaesuProtocol::YaesuProtocol(ProtocolContext& context, const RadioInfo& radio) : c_(context), radio_(radio) {
    traits_.framing = Framing::ExpectedLength;
    traits_.interrogation = InterrogationRule::Forced;
    traits_.filterGroupAfterModeReport = !isSmallRadio(radio.model);
    traits_.waitsAfterFrequency = isSmallRadio(radio.model);
    (void)c_;
}

QString YaesuProtocol::DisplayName(const RadioInfo& radio) const { return QStringLiteral("Yaesu ") + radio.model; }

int YaesuProtocol::SilentPollInterval() const { return isSmallRadio(radio_.model) ? kSilentSmallRadioInterval : 0; }

bool YaesuProtocol::StepsWithOwnCommand() const { return radio_.model == QLatin1String("FT1000D"); }

QString YaesuProtocol::OfflineCaption(bool responding) const { return responding ? QString() : QStringLiteral(" - offline"); }

}  // namespace tv
