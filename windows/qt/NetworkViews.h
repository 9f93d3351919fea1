#pragma once
// The view of the configuration window's "Network" tab.

#include "windows/qt/StationViews.h"

namespace tv {

void buildNetworkPage(KavConfig& c, QWidget* page, const PlaceWidget& place);

}  // namespace tv
