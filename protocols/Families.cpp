#include "protocols/Families.h"

#include "core/SelectedRadio.h"
#include "protocols/icom/Icom.h"
#include "protocols/kenwood/Kenwood.h"
#include "protocols/sdrconsole/SdrConsole.h"
#include "protocols/sdrconsole/SdrModule.h"
#include "protocols/tentec/TenTec.h"
#include "protocols/yaesu/Yaesu.h"

namespace tv {

void registerFamilies(SelectedRadio& radio) {
    radio.registerFamily(QLatin1Char('I'), [](ProtocolContext& c, const RadioInfo& r) {
        return std::make_unique<IcomProtocol>(c, r, kIcomDialect);
    });
    radio.registerFamily(QLatin1Char('T'), [](ProtocolContext& c, const RadioInfo& r) {
        return std::make_unique<IcomProtocol>(c, r, kTenTecCivDialect);
    });
    auto kenwood = std::make_shared<KenwoodFamily>();
    radio.registerFamily(
        QLatin1Char('K'),
        [kenwood](ProtocolContext& c, const RadioInfo& r) { return std::make_unique<KenwoodProtocol>(c, r, kenwood); },
        kenwood);
    radio.registerFamily(QLatin1Char('Y'), [](ProtocolContext& c, const RadioInfo& r) {
        return std::make_unique<YaesuProtocol>(c, r);
    });
    radio.registerFamily(QLatin1Char('N'), [](ProtocolContext& c, const RadioInfo& r) {
        return std::make_unique<TenTecProtocol>(c, r);
    });
    // The console's link lives for the run; each chosen radio of the console speaks through it.
    auto console = std::make_shared<SdrModule>();
    radio.registerFamily(
        QLatin1Char('F'),
        [console](ProtocolContext& c, const RadioInfo& r) { return std::make_unique<SdrConsoleProtocol>(c, r, console); },
        console);
}

}  // namespace tv
