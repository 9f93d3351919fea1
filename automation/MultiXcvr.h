#pragma once
// Up to three transceivers, each with its own model, address, polling and serial settings. The
// operator switches with the buttons on the main window, or a tune onto a band assigned to another
// radio switches by itself. A switch swaps the radio settings of the running program and brings the
// link up anew; nothing else restarts (the monitor, the sequences, the bands and devices stay).

#include "operating/Bands.h"

#include <QString>

#include <array>

namespace tv {

class KavModule;

class MultiXcvr {
  public:
    static constexpr int kEntries = 3;

    explicit MultiXcvr(KavModule& module);
    MultiXcvr(const MultiXcvr&) = delete;
    MultiXcvr& operator=(const MultiXcvr&) = delete;
    // Installs the steps of start-up, shutdown, tuning and the radix, and the page's handlers.
    void connect();

    void InitializeMultiXcvr();
    void SaveMultiSettings();
    void UpdateMultiXcvr(int index);
    void UpdateMultiXcvrEnableVisibility(int index);
    void BandRadioSelect(int band);
    // The switch to entry index (0..2).
    void SelectMultiXcvr(int index);
    // The choice by band ahead of a tune; true when it switched to another entry.
    bool SelectMultiXcvrForFrequency(double kHz);
    // The radio that held a switch has been released: the switch goes through (true), if one waited.
    bool ResumeDelayedXcvrSwitch();
    void ConvertMultiAddresses(bool toHex);

    int SelectedXcvr = -1;
    std::array<int, Bands::kBandCount + 1> BandRadio{};
    bool DelayedXcvrSwitchFlag = false;
    int DelayedXcvrSwitchIndex = 0;

  private:
    void switchTo(int index);
    void copyPortSettings(int index);
    void showRadixLabels(bool hex);

    KavModule& m_;
    bool refreshing_ = false;
    // A switch made for a tune: the tune asks the new radio itself, after its frequency.
    bool forTune_ = false;
};

}  // namespace tv
