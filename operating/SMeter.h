#pragma once
// The S-meter: a bar on the SMeter picture, and a label and colour for each of 16 steps from the
// model's scale file in <appPath>/SMeter/. Without a scale the step number is shown (raw mode). The
// reading and its label are live items of the suite link.

#include <QString>

#include <array>
#include <cstdint>

namespace tv {

class Common;
class RadioState;
class SelectedRadio;
class KavMain;
struct UpperHooks;

class SMeter {
  public:
    static constexpr int kSteps = 16;
    // Colours as 0xBBGGRR.
    static constexpr std::uint32_t kGreen = 0x00FF00;
    static constexpr std::uint32_t kBlack = 0x000000;
    // Average width of a character of the window's font, for sizing the value label.
    static constexpr int kCharWidth = 7;

    SMeter(Common& common, RadioState& state, SelectedRadio& radio, UpperHooks& hooks, KavMain& main);
    SMeter(const SMeter&) = delete;
    SMeter& operator=(const SMeter&) = delete;

    // Installs UpdateSMeter, LoadSMeterData and SetSMeter into the module's hooks.
    void connect();

    // Loads "<appPath>/SMeter/<filename>.txt"; SMeterCount ends 0 (raw mode) or 16.
    void LoadSMeterData(const QString& filename);
    // The scale of the selected radio: the identified Kenwood model's file, else the catalogue name.
    void LoadSMeterData();
    void UpdateSMeter(double fraction);
    void SetSMeter(const QString& text);
    // The console link's reading, in percent.
    void SetSDRSMeter(const QString& text);

    // A colour field: a word, "r-g-b", or anything else (green).
    static std::uint32_t ParseColor(const QString& field);
    // 1 to 16.
    static int StepOf(double fraction);

    int SMeterCount = 0;
    std::array<QString, kSteps> SMeterLabel{};
    std::array<std::uint32_t, kSteps> SMeterColor{};
    QString SMeterFilename;

  private:
    Common& common_;
    RadioState& state_;
    SelectedRadio& radio_;
    UpperHooks& hooks_;
    KavMain& main_;
    // The last reading and its text: a steady meter is not formatted again on every reply.
    float lastReading_ = -1;
    QString lastReadingText_;
};

}  // namespace tv
