#pragma once
// The serial port's settings: read from the store at start-up, chosen in the configuration window, and
// handed to the link. Port numbers 1 to 8 name device paths through the settings.

#include <QString>

#include <cstdint>
#include <functional>

namespace tv {

class CommandQueue;
class Common;
class KavComm;
class KavConfig;
class RadioLink;
class SelectedRadio;

class PortSettings {
public:
    PortSettings(Common& common, KavConfig& config, KavComm& comm, SelectedRadio& radio, RadioLink& link,
                 CommandQueue& queue);

    void InitializeCommPort();
    // Stores the settings and opens the port with them (radios on a serial port only).
    void ConfigureCommPort();
    void SelectCommPort(int index);
    void SelectPortSpeed(int index);
    void SelectPortWordLength(int index);
    void SelectPortParity(int index);
    void SelectPortStopBits(int index);
    // The devices present, offered for each port number, with its own device shown.
    void FillDeviceLists();
    // The operator chose or typed the device of a port number: kept, and, when reopen is asked and it is
    // the port in use, opened.
    void SelectCommPortDevice(int port, bool reopen);
    // The device path of a port number: setting CommPortDevice<n> of section General, /dev/ttyUSB<n-1> else.
    QString CommPortDevicePath(int port) const;

    // While true (a transceiver switch sets the options one by one), option changes don't reopen the port.
    std::function<bool()> held;

    int CommPortNumber = 0;
    std::int32_t CommSpeed = 9600;
    int CommWordLength = 1;
    int CommStopBits = 3;
    QString CommParity = QStringLiteral("1");
    int DTRControl = 0;
    int RTSControl = 0;
    // Tells the caption what to say about the port ("" when it is fine).
    std::function<void(const QString&)> setCaption;

private:
    Common& common_;
    KavConfig& config_;
    KavComm& comm_;
    SelectedRadio& radio_;
    RadioLink& link_;
    CommandQueue& queue_;
};

}  // namespace tv
