#pragma once
// Receive passband lists (high cut, low cut, width, shift) of the radios that have them: what each list
// holds, which lists a mode shows, and how a chosen entry becomes the value of a filter command. A family
// that has such radios fills one of these per model; the window's lists follow it without knowing the
// model.

#include <QStringList>

#include <array>
#include <vector>

namespace tv {

struct PassbandLayout {
    bool known = false;  // false: the mode leaves the lists as they are
    bool cuts = false, width = false, shift = false;
    QStringList widths;  // the width list for the mode, when it has one
};

// How an entry of a list becomes the value sent: its code from the model's table, or its number
// divided (and rounded).
struct PassbandValueRule {
    bool byCode = false;
    double divisor = 1;
    bool none = false;  // the list sends nothing on this model
};

struct PassbandModel {
    QStringList lowCuts, highCuts, shifts;
    std::vector<int> lowCodes, highCodes;  // list index to the radio's code
    PassbandValueRule high, low, width, shift;
    std::array<PassbandLayout, 10> layouts;  // by mode number
};

}  // namespace tv
