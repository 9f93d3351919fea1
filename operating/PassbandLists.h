#pragma once
// The receive passband lists of the main window (high cut, low cut, width, shift): filled with the
// identified model's entries, laid out for each mode the radio reports, mirroring what the radio reads
// back, and turning the operator's choice into a filter command. What the lists hold and mean is the
// radio family's table; this side knows no model.

#include "core/Passband.h"

#include <QString>

namespace tv {

class ComboBox;
class Common;
class RadioState;
class CommandQueue;
class KavMain;
struct UpperHooks;
class ModeControl;

class PassbandLists {
  public:
    PassbandLists(Common& common, RadioState& state, CommandQueue& queue, UpperHooks& hooks, KavMain& main,
                  ModeControl& modes);
    void connect();

    // A newly chosen radio lays its controls out afresh at its first mode report, and has no lists yet.
    void Reset();
    // The identified model's lists (nullptr: the model has none, and the filter frame goes).
    void FillFilterLists(const PassbandModel* model);
    // After each mode report: the layout for the mode, when the mode changed.
    void UpdateFilterSettings();
    void MirrorText(int list, const QString& text);
    void MirrorCode(int list, int code);

    void HighCutoffComboClick();
    void LowCutoffComboClick();
    void WidthComboClick();
    void ShiftComboClick();

    // The mode the controls were laid out for; 65535 when none (a new radio).
    int LastFilterMode = 65535;
    const PassbandModel* model() const { return model_; }

  private:
    void mirrorText(ComboBox& list, const QString& text);
    void mirrorCode(ComboBox& list, bool high, int code);
    // Sends the list's choice by the model's rule for it.
    void send(const ComboBox& list, const PassbandValueRule& rule, const std::vector<int>* codes,
              int selector);
    void focusRule();

    Common& common_;
    RadioState& state_;
    CommandQueue& queue_;
    UpperHooks& hooks_;
    KavMain& main_;
    ModeControl& modes_;
    const PassbandModel* model_ = nullptr;
};

}  // namespace tv
