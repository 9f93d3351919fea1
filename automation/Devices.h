#pragma once
// Three frequency-driven devices (a manual tuner, an amplifier ...). Each has a table of what its
// controls should be set to at which frequency; whenever the radio's frequency is shown, the nearest
// usable row within a tolerance appears in the device's frame on the main window. The program doesn't
// drive the device: the operator reads the frame. The device pages of the configuration window hold
// the settings and the table.

#include <QString>

#include <array>

namespace tv {

class FrequencyDisplay;
class Common;
class RadioState;
class KavMain;
class KavConfig;
struct UpperHooks;

class Devices {
  public:
    static constexpr int kDevices = 3;

    Devices(Common& common, RadioState& state, UpperHooks& hooks, KavMain& main, KavConfig& config);
    Devices(const Devices&) = delete;
    Devices& operator=(const Devices&) = delete;
    // Installs the steps of start-up and shutdown, the device pages' handlers, and the update at the
    // end of each frequency display.
    void connect(FrequencyDisplay& display);

    // ---- start-up and shutdown ----
    void InitializeDeviceGrids();
    void LoadDevices();
    void SaveDevices();
    void LoadDeviceData(int device);
    void SaveDeviceData(int device);

    // ---- the tables ----
    void AddDeviceBand(int device, double start, double end, double step);
    void LoadDeviceFreqData(const QString& filename, int device);
    void SaveDeviceFreqData(const QString& filename, int device);
    void SortDeviceArray(int device);
    void UpdateDeviceArrayDepth(int device);
    std::array<int, kDevices> DeviceDepth{};

    // ---- the frames on the main window ----
    void UpdateDevices();
    bool ValidDeviceEntry(int device, int row) const;

    // ---- the device pages ----
    void DeviceEnabled_Click(int index);
    void DeviceControls_Change(int index);
    void DeviceName_Change(int index);
    void DeviceTolerance_Change(int index);
    void DeviceControlName_Change(int index, int control);

  private:
    int controlCount(int device) const;
    bool memoryBanksShown() const;
    void disable(int device, const QString& why);
    void updateOne(int device);
    void selectFilename(int device);
    void saveAs(int device);

    Common& common_;
    RadioState& state_;
    UpperHooks& hooks_;
    KavMain& main_;
    KavConfig& config_;
    // Until start-up has loaded the devices, and while a table loads, nothing is looked up: the table
    // is half there, and its load ends with an update of its own.
    bool ready_ = false;
    bool loading_ = false;
};

}  // namespace tv
