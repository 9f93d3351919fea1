#pragma once
// One queued transceiver command, and the command codes.

#include <QString>

#include <cstdint>

namespace tv {

enum XcvrCmdCode : std::int16_t {
    XcvrCmdFreq = 0,
    XcvrCmdMode = 1,
    XcvrCmdFilterGroup = 2,
    XcvrCmdFilters = 3,
    XcvrCmdDual = 4,
    XcvrCmdSplit = 5,
    XcvrCmdVFOA = 6,
    XcvrCmdVFOB = 7,
    XcvrCmdVFOEqual = 8,
    XcvrCmdVFOXch = 9,
    XcvrCmdRequestFreq = 10,
    XcvrCmdRequestMode = 11,
    XcvrCmdMain = 12,
    XcvrCmdSub = 13,
    XcvrCmdMainSubEqual = 14,
    XcvrCmdMainSubXch = 15,
    XcvrCmdPTT = 16,
    XcvrCmdRequestID = 17,
    XcvrCmdWait = 18,
    XcvrCmdSwitchVFOs = 19,
    XcvrCmdRaw = 20,
    XcvrCmdString = 21,
    XcvrCmdPower = 22,
    XcvrCmdLock = 23,
    XcvrCmdSBFreq = 24,
    XcvrCmdStepFreq = 25,
};

struct XcvrCmd {
    std::int16_t theCmd = 0;
    // Character code of the first character of the radio address at enqueue (the CI-V address byte), 0 if none.
    std::int16_t theRadio = 0;
    double theFreq = 0;
    std::int16_t theMode = 0;
    std::int16_t theArg = 0;
    std::int16_t theArg2 = 0;
    QString theRawCmd;
};

// The name of a command code; "" for code 3 and for any code outside the table.
QString CommandName(int code);

// What the second argument of a filter command (code 3) selects: a Yaesu IF filter list, or a passband
// list of the radios that have them.
enum FilterSelector : std::int16_t {
    FilterFirstIF = 0,
    FilterSecondIF = 1,
    FilterSub = 2,
    FilterHighCut = 3,
    FilterLowCut = 4,
    FilterWidth = 5,
    FilterShift = 6,
};

// Mode numbers shared by all protocols.
enum ModeNumber : std::int16_t {
    ModeLSB = 0, ModeUSB, ModeAM, ModeCW, ModeRTTY, ModeFM, ModeWBFM, ModeCWR, ModeRTTYR, ModePKT, ModeUnknown
};
// "LSB" ... "PKT"; "" outside 0..9.
QString ModeName(int mode);
// The reverse of ModeName; 10 for any other name.
int ModeIndex(const QString& name);
// The mode name a log wants: "SSB" for both sidebands, "CW", "RTTY", "FM" for their pairs; "" else.
QString LogModeName(int mode);

// Filter groups of CI-V radios: "", "Wide", "Narrow", "Normal" for 0..3; "?" for anything else.
QString FilterGroupName(int index);
// "WIDE"/"1" 1, "NARROW"/"2" 2, "NORMAL"/"3" 3 (any case); 0 for "" and any other text.
int IcomFilterGroupIndex(const QString& name);

}  // namespace tv
