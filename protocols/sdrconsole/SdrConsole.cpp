#include "protocols/sdrconsole/SdrConsole.h"

#include "core/RadioCatalogue.h"
#include "core/RadioState.h"

namespace tv {

SdrConsoleProtocol::SdrConsoleProtocol(ProtocolContext& context) : c_(context) {
    traits_.framing = Framing::None;
    traits_.interrogation = InterrogationRule::Forced;
}

QString SdrConsoleProtocol::DisplayName(const RadioInfo& radio) const { return QStringLiteral("FlexRadio ") + radio.model; }

void SdrConsoleProtocol::BringUp() {
    c_.state.CurrentVFO = 0;
    c_.state.UpdateVFOCaption();
}

QString SdrConsoleProtocol::OfflineCaption(bool) const { return connected_ ? QString() : QStringLiteral(" - not running"); }

}  // namespace tv
