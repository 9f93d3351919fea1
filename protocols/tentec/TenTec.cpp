#include "protocols/tentec/TenTec.h"

namespace tv {

namespace {
struct TenTecModel {
    const char* model;
    bool folder;  // reached through the control folder, not the port
    FixedPortSettings port;
};
// Option indexes of the configuration window: speed 5 is 1200 baud, 8 is 57600.
constexpr TenTecModel kModels[] = {
    {"PEGASUS", true, {0, 0, 0, 0, -1, -1}},
    {"JUPITER", false, {8, 1, 1, 1, 1, 3}},
    {"ARGONAUT V", false, {5, 1, 1, 1, -1, -1}},
    {"ORION", false, {8, 1, 1, 1, 1, 3}},
};
static_assert(sizeof(kModels) / sizeof(kModels[0]) == 4, "one row per model of the family");

const TenTecModel* find(const QString& model) {
    for (const auto& row : kModels)
        if (model == QLatin1String(row.model)) return &row;
    return nullptr;
}
}  // namespace

TenTecProtocol::TenTecProtocol(ProtocolContext&, const RadioInfo& radio) : radio_(radio) {
    traits_.framing = Framing::EndMark;
    traits_.endMark = 13;
    traits_.interrogation = InterrogationRule::Forced;
}

QString TenTecProtocol::DisplayName(const RadioInfo& radio) const { return QStringLiteral("TenTec ") + radio.model; }

std::optional<FixedPortSettings> TenTecProtocol::FixedPort() const {
    const TenTecModel* row = find(radio_.model.toUpper());
    if (!row) return std::nullopt;
    return row->port;
}

bool TenTecProtocol::UsesControlFolder() const {
    const TenTecModel* row = find(radio_.model.toUpper());
    return row && row->folder;
}

}  // namespace tv
