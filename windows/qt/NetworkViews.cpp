#include "windows/qt/NetworkViews.h"

#include "forms/KavConfig.h"
#include "windows/qt/ControlViews.h"

#include <QBoxLayout>
#include <QGridLayout>

namespace tv {

namespace {

// A frame of rows: a switch across the width, or a label and its field.
QWidget* frameOf(Control& frame, std::initializer_list<std::pair<Control*, Control*>> rows, QWidget* page,
                 const PlaceWidget& place) {
    QWidget* f = place(frame, page);
    auto* l = layoutOf<QGridLayout>(f);
    int row = 0;
    for (const auto& [first, second] : rows) {
        if (!second) {
            l->addWidget(place(*first, f), row++, 0, 1, 2);
            continue;
        }
        l->addWidget(place(*first, f), row, 0);
        l->addWidget(place(*second, f), row++, 1);
    }
    l->setColumnStretch(1, 1);
    return f;
}

}  // namespace

void buildNetworkPage(KavConfig& c, QWidget* page, const PlaceWidget& place) {
    auto* root = new QVBoxLayout(page);
    root->addWidget(frameOf(c.NetServerFrame,
                            {{&c.NetServerEnabledCheck, nullptr},
                             {&c.NetServerAddressLabel, &c.NetServerAddress},
                             {&c.NetServerPortLabel, &c.NetServerPort},
                             {&c.NetServerPasswordLabel, &c.NetServerPassword},
                             {&c.NetServerAllowedLabel, &c.NetServerAllowedClients},
                             {&c.NetServerReadOnlyCheck, nullptr},
                             {&c.NetServerUnkeyOthersCheck, nullptr}},
                            page, place));
    root->addWidget(frameOf(c.XmlRpcFrame, {{&c.XmlRpcEnabledCheck, nullptr}, {&c.XmlRpcPortLabel, &c.XmlRpcPort}},
                            page, place));
    root->addStretch(1);
    root->addWidget(place(c.NetworkRestartCmd, page), 0, Qt::AlignRight);
}

}  // namespace tv
