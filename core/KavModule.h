#pragma once
// The central module: the radio's state as the program knows it, the command queue and its scheduler,
// the port parameters, start-up and shutdown of the core, and the reports through which every vendor's
// decoder tells what the radio said. Windows are views on it; protocols are strategies under it.

#include "core/Hooks.h"
#include "core/KavComm.h"
#include "core/Protocol.h"
#include "core/RadioCatalogue.h"
#include "core/XcvrCmd.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdint>
#include <map>

namespace tv {

class CheckBox;
class Common;
class Dialogs;
class EventLoop;
class KavConfig;
class KavMain;
class KavMessages;
class SettingsStore;

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

class KavModule {
public:
    static constexpr int kBufferSlots = 256;
    static constexpr int kRcvBufferSize = 2048;
    static constexpr int kMinPollInterval = 50;       // ms: the fastest regular tick
    static constexpr int kMaxPollInterval = 60000;    // ms
    static constexpr int kDefaultPollInterval = 200;  // ms, when the text gives no number
    // A small Yaesu that stopped answering is tried only once in this many ms.
    static constexpr int kSilentYaesuInterval = 5000;
    // After an acknowledgement the next record leaves this soon.
    static constexpr int kAcceleratedInterval = 1;

    KavModule(Common& common, KavMain& main, KavConfig& config, KavMessages& messages, KavComm& comm);

    Common& common() const { return common_; }
    SettingsStore& settings() const;
    Dialogs& dialogs() const;
    EventLoop& loop() const;
    KavMain& main() const { return main_; }
    KavConfig& config() const { return config_; }
    KavMessages& messages() const { return messages_; }
    KavComm& comm() const { return comm_; }
    UpperHooks hooks;

    // ---- protocols ----
    void setProtocol(QChar supplier, Protocol* protocol);
    Protocol* protocol() const;  // of the selected radio; nullptr when none or not provided

    // ---- start-up and shutdown ----
    void Initialize();
    void Terminate();
    bool LoadRadioInfo();  // false: the catalogue couldn't be opened and the program must end
    bool terminateRequested() const { return terminateRequested_; }

    // ---- catalogue ----
    RadioCatalogue catalogue;
    int RadioIndex = -1;
    const RadioInfo* radio() const;  // the selected radio's row, or nullptr
    QChar GetRadioSupplier() const;  // QChar() when none
    QString GetRadioModelName() const { return RadioDisplayName; }
    QString GetYaesuModelName() const { return YaesuModelName; }
    QString radioModel() const;      // catalogue model in upper case, "" when none

    // ---- queue and scheduler ----
    void EnqueueXcvrCmd(std::int16_t theCmd, double theFreq = 0, std::int16_t theMode = 0, std::int16_t theArg = 0,
                        std::int16_t theArg2 = 0, const QString& theRawCmd = QString());
    void InitializeXcvrCmdBuffer();
    void SetXcvrFreq(double freq);
    void SetXcvrSBFreq(double freq);
    void StepXcvrFreq(bool up);
    void SetXcvrMode(int mode);
    void SetXcvrModeAndFilterGroup(int mode, int group);
    void SetXcvrFilterGroup(int group);
    void SetXcvrFilters(int arg, int arg2);
    void SetXcvrSplit(bool on);
    void SetXcvrDual(bool on);
    void SetXcvrVFOA();
    void SetXcvrVFOB();
    void SetXcvrVFOEqual();
    void SetXcvrVFOXch();
    void SetXcvrMain();
    void SetXcvrSub();
    void SetXcvrMainSubEqual();
    void SetXcvrMainSubXch();
    void SetXcvrSwitchVFOs();
    void SetXcvrWait();
    void SetXcvrTransmit();
    void SetXcvrReceive();
    void SetXcvrRaw(const QString& text);
    void SetXcvrstring(const QString& text);
    void InterrogateRadio();
    void SetXcvrCmdTimerInterval();
    void AccelerateNextXcvrCmd();
    void ExecuteNextXcvrCmd();

    int XcvrCmdHead = 1, XcvrCmdTail = 1, XcvrCmdCount = 0;
    int InterrogationPhase = 0;
    std::array<XcvrCmd, kBufferSlots + 1> XcvrCmdBuffer{};  // slot 0 unused
    QString LastCommandName;

    // ---- radio address and radix ----
    // The value of one or two hexadecimal digits (upper case only: any other character counts -1).
    static int DecVal(const QString& text);
    static int DigitVal(QChar c);
    void SelectDecimalRadix();
    void SelectHexadecimalRadix();
    QByteArray RadioAddress;  // one byte: the CI-V address, set by the address check

    // ---- serial link ----
    void InitializeCommPort();
    void ConfigureCommPort();
    void SelectCommPort(int index);
    void SelectPortSpeed(int index);
    void SelectPortWordLength(int index);
    void SelectPortParity(int index);
    void SelectPortStopBits(int index);
    int GetDTRControl() const { return DTRControl; }
    void SetDTRControl(int value) { DTRControl = value; }
    int GetRTSControl() const { return RTSControl; }
    void SetRTSControl(int value) { RTSControl = value; }
    void SendCommand(const QByteArray& text);
    // Hands a captured message to the monitor (only while capture is on).
    void DisplayLine(const QString& prefix, const QString& decimalLine, const QString& hexLine,
                     const QString& asciiLine);
    bool captureEnabled() const;
    // The device path of a port number: setting CommPortDevice<n> of section General, /dev/ttyUSB<n-1> else.
    QString CommPortDevicePath(int port) const;

    int CommPortNumber = 0;
    std::int32_t CommSpeed = 9600;
    int CommWordLength = 1;
    int CommStopBits = 3;
    QString CommParity = QStringLiteral("1");
    int DTRControl = 0;
    int RTSControl = 0;
    QString CommCaption;
    std::int32_t MessageCounter = 0;

    // ---- radio state reports ----
    void UpdateRadioFreq(double freq);
    void UpdateXcvrMode(int mode);
    void UpdateVFO();
    void UpdateVFOCaption();
    void RequestFrequency();
    void RequestMode();
    void AdjustRadioFreq(double delta);
    void SelectPrimary();
    void SelectSecondary();
    void UpdateCaption();
    void SetCommCaption(const QString& text);
    void ErrorLogExists();
    void ClearErrorLogFlag() { ErrorLogFlag = false; }
    bool ControlFlag(int index) const;
    void SetControlFlag(int index, bool value);
    // The caption as UpdateCaption would make it now (also used by tests).
    QString composeCaption() const;

    double RadioFreq = 0;
    int RadioMode = -1;
    int RadioFilterGroup = 1;
    int CurrentVFO = 0;
    double VFOAFreq = 0, VFOBFreq = 0;
    int VFOAMode = 0, VFOBMode = 0;
    QString RadioDisplayName;
    bool ErrorLogFlag = false;
    std::array<bool, kControlFlagCount> ControlFlags{};
    bool FreqFocusGiven = false;
    // The filter group remembered for each mode ("Wide", "Narrow", "Normal" on CI-V radios).
    std::array<QString, 10> ModeFilters{};
    // The first frequency report gives the frequency box the focus, once per run.
    bool FreqNudgePending = false;
    // Settings read at start-up for the panes other parts own.
    bool MemoryNotesShown = false;
    bool ShowMemoryBankSetting = false;

    // ---- receive state shared with the decoders ----
    std::array<std::uint8_t, kRcvBufferSize + 1> RcvBuffer{};  // first byte at 1
    int RcvCount = 0;
    int ExpectedBytes = 0;
    QString ExpectOperation = QStringLiteral("unknown");
    bool YaesuResponding = true;
    QString YaesuModelName, KenwoodModelName, TenTecModelName;
    int KenwoodModelId = 0;
    bool KenwoodFilterCacheValid = false;
    QString MessagesCaption;

    // CI-V constants.
    std::uint8_t CIVPreamble = 254, CIVEndOfMessage = 253, CIVOK = 251, CIVNG = 250, CIVController = 224;

    // ---- receive path ----
    // Bytes from the link: an empty argument means "read the port".
    void HandleIncomingChar(const QByteArray& text);
    // A fixed-length reply is awaited (radios whose replies have no end mark).
    void Expect(const QString& operation, int byteCount);
    void ExpectTimeout();
    QString GetExpect() const { return ExpectOperation; }
    int CaptureRowCount = 0;
    QString CaptureDecimalLine, CaptureHexLine, CaptureAsciiLine;
    // Set by a decoder that switched transceiver inside the decode: the port is already set up anew.
    bool XcvrSwitchedInDecode = false;

    // ---- radio bring-up ----
    void UpdateRadio(bool interrogate);
    // The address check: true when the text of Address is a valid address, which becomes RadioAddress.
    bool ValidID();
    QString FilterGroupFilename;  // the filter group file in use, kept at shutdown when set

private:
    QString pollIntervalText() const;
    void executeRaw(const XcvrCmd& cmd);
    void reportTickFailure(const XcvrCmd& cmd, int number, const QString& description);
    bool readBool(const QString& key, const QString& def) const;
    void restoreChecked(CheckBox& box, int flag, bool on);
    void bringUpSupplier(const RadioInfo& r);
    // Receive path: collect one byte (false: the buffer overflowed and reading ends), finish a
    // message in the monitor, and deliver the operator's pending note.
    bool collectByte(std::uint8_t byte);
    void finishCapture();
    void deliverPendingNote();
    QString capturePrefix(const QString& counterText) const;

    Common& common_;
    KavMain& main_;
    KavConfig& config_;
    KavMessages& messages_;
    KavComm& comm_;
    std::map<QChar, Protocol*> protocols_;
    bool terminateRequested_ = false;
};

// "T", "True", "1" (any case) are true; anything else false.
bool SettingIsTrue(const QString& value);

}  // namespace tv
