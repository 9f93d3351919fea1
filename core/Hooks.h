#pragma once
// Calls from the core up into the layers above it (bands, devices, memories, sequences, the suite link,
// the console). The core runs in the order its start-up and shutdown require and calls these at their
// places; a layer that has not been wired leaves its hook empty, and the call does nothing.

#include <QString>

#include <functional>

namespace tv {

struct UpperHooks {
    // Frequency display and band placement after RadioFreq changed.
    std::function<void()> UpdateFreqDisplay;
    // Chooses a transceiver for the frequency; returns true when it switched to another one.
    std::function<bool(double freq)> SelectMultiXcvr;
    std::function<void()> InitializeMultiXcvr;
    std::function<void()> SaveMultiSettings;
    std::function<void()> UpdateMemoryNotesDisplay;
    std::function<void()> InitializeBands;
    std::function<void()> SaveBandMemories;
    std::function<void()> InitializeDeviceGrids;
    std::function<void()> LoadDevices;
    std::function<void()> SaveDevices;
    std::function<void()> LoadUserSequences;
    // User command sequences, for the suite link's verbs: by name, by button (0..7, the bank on view
    // decides), and one command outside any sequence.
    std::function<void(const QString&)> ExecuteNamedSequence;
    std::function<void(int)> ActivateSequence;
    std::function<void(const QString&)> ExecuteCommand;
    std::function<void()> SaveUserSequences;
    std::function<void()> SDRInitialize;
    std::function<void()> SDRTerminate;
    std::function<void()> DDEInitialize;
    std::function<void()> DDETerminate;
    std::function<void()> SaveAutoRepeatRate;
    std::function<void()> UpdateWindow;
    std::function<void(bool)> SetFilterFrameVisibility;
    std::function<void()> UpdateCurrentModeCaptions;
    std::function<void()> ResetControlFolderErrorFlag;
    std::function<void(bool)> ShowMemoryBanks;
    // The operator chose transceiver 0..2 by its button.
    std::function<void(int)> SelectMultiXcvrByIndex;
    // The captions of the mode options after the filter group of a mode changed.
    std::function<void(int mode)> UpdateModeCaption;
    // The meter reading, 0 to 1 of full scale.
    std::function<void(double)> UpdateSMeter;
    // A live item for the suite link changed (item name, value).
    std::function<void(const QString&, const QString&)> ItemChanged;
    // Unsaved filter group changes at shutdown: asked, and saved on yes.
    std::function<bool()> FilterGroupChangesUnsaved;
    std::function<void()> SaveFilterGroupData;
    // Bring-up steps owned by other parts (memories, filters, S-meter, modes).
    std::function<void()> LoadMemories;
    std::function<void()> InitializeFilterSettings;
    std::function<void()> SetCurrentMemoryBank;
    std::function<void()> ResetModeTables;
    std::function<void()> LoadSMeterData;
    std::function<void(const QString&)> SetSMeter;
    std::function<void()> UpdateMemoryBankFrame;
    // Whether the bridge's control folder is in error, and the caption text for it.
    std::function<QString()> ControlFolderErrorCaption;
    // Whether the console radio is connected.
    std::function<bool()> SDRConnected;
    std::function<void()> SDRConnect;
    std::function<void()> SDRDisconnect;
    // Converts the multi-radio address fields to hexadecimal (true) or decimal (false).
    std::function<void(bool toHex)> ConvertMultiAddresses;
};

template <class F, class... A>
inline void callHook(const F& f, A&&... a) {
    if (f) f(std::forward<A>(a)...);
}

}  // namespace tv
