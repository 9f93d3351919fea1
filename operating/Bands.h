#pragma once
// The band plan: 49 one-MHz rows with the amateur allocation's edges and the offset last used on each,
// the ham-band step sequence of the band buttons, and the rule that turns the sequence off when the
// operator tunes out of an allocation.

#include <QString>

#include <array>
#include <cstdint>

namespace tv {

class Common;
class RadioState;
class CommandQueue;
struct ControlFlagSet;
class KavMain;
struct UpperHooks;
class Tuning;

class Bands {
  public:
    static constexpr int kBandCount = 49;

    Bands(Common& common, RadioState& state, CommandQueue& queue, UpperHooks& hooks, ControlFlagSet& flags,
          KavMain& main);
    Bands(const Bands&) = delete;
    Bands& operator=(const Bands&) = delete;

    // The band buttons arm and schedule the auto-repeat, and the sequence box resets the scale.
    void useTuning(Tuning& tuning) { tuning_ = &tuning; }
    // Installs the start-up and shutdown hooks and the handlers of the band controls.
    void connect();

    static std::int32_t BandMHz(int index);
    static std::int16_t BandIndex(std::int32_t mhz);
    static QString BandWavelength(int index);

    void InitializeBands();
    void SaveBandMemories();
    std::int32_t GetRadioBand() const { return RadioBand; }
    std::int16_t GetBandOffsetMemory() const;
    void NextHamBand();
    void PreviousHamBand();
    void NormalizeBandOffset();
    // Where RadioFreq lies: sets RadioBand and RadioBandIndex.
    void PlaceFrequency(double freq);
    // The ham-band rule after a frequency change (only while the sequence box is checked): leaving
    // the allocation unchecks the box, staying in it remembers the offset.
    void KeepBandOffsetMemory(double freq);

    // Handlers.
    void BandUpCmd_MouseDown(int button, int shift);
    void BandDownCmd_MouseDown(int button, int shift);
    void BandUpCmd_MouseUp(int button, int shift);
    void BandDownCmd_MouseUp(int button, int shift);
    void HamBandSequence_Click();
    // The repeat step of the band buttons (auto-repeat actions 3 and 4).
    void RepeatBandStep(bool up, double increment);

    std::int32_t RadioBand = 0;
    std::int16_t RadioBandIndex = 0;
    // Indexed by band index; 0 is not used.
    std::array<std::int16_t, kBandCount + 1> BandLowOffset{};
    std::array<std::int16_t, kBandCount + 1> BandHighOffset{};
    std::array<std::int16_t, kBandCount + 1> BandOffsetMemory{};

  private:
    void fillEdges();
    void bandStep(bool up, int shift);
    void hamStep(bool up);

    Common& common_;
    RadioState& state_;
    CommandQueue& queue_;
    UpperHooks& hooks_;
    ControlFlagSet& flags_;
    KavMain& main_;
    Tuning* tuning_ = nullptr;
};

}  // namespace tv
