#pragma once
// The views of the station around the radio: the device frames of the main window, the configuration
// window's three device pages and its multi-radio page.

#include <QWidget>

#include <functional>

namespace tv {

class Control;
class KavConfig;
class KavMain;

// Makes (or finds) the widget of a control and puts it under the given parent.
using PlaceWidget = std::function<QWidget*(Control&, QWidget*)>;

void buildDeviceFrames(KavMain& m, const PlaceWidget& place);
void buildDevicePage(KavConfig& c, int device, QWidget* page, const PlaceWidget& place);
void buildMultiRadioPage(KavConfig& c, QWidget* page, const PlaceWidget& place);

}  // namespace tv
