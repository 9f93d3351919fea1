#pragma once
// The guards against a control's own event: a handler that changes a control whose event would send the
// change back to the radio raises the control's flag first, and the event's handler sees it and stops.

#include <array>
#include <cstddef>

namespace tv {

// Indices of the control flags.
enum ControlFlagIndex : int {
    FlagRadixRestore = 0,
    FlagInterrogation = 1,
    FlagCaptureEnabled = 2,
    FlagHamBandSequence = 3,
    FlagModeSel = 4,
    FlagFilterGroupList = 5,
    FlagRadioCombo = 6,
    FlagBandspread = 7,
    FlagSplitBox = 8,
    FlagDualBox = 9,
    FlagXcvrSelButton = 10,
    FlagCommPort = 11,
    FlagMultiXcvr = 12,
    kControlFlagCount = 13,
};

struct ControlFlagSet {
    // An index outside the set reads false and sets nothing.
    bool ControlFlag(int index) const { return index >= 0 && index < kControlFlagCount && flags[size_t(index)]; }
    void SetControlFlag(int index, bool value) {
        if (index >= 0 && index < kControlFlagCount) flags[size_t(index)] = value;
    }
    std::array<bool, kControlFlagCount> flags{};
};

}  // namespace tv
