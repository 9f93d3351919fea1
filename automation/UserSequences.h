#pragma once
// Sixteen user command sequences of sixteen steps: raw messages for the radio, or statements of a
// small language (<WAIT>, <END>, <GOTO n>, <IFNAME name,n>, <NAME text>, <TOOLTIP text>, 'text) that
// let one button act as a toggle. Eight sit on the main window at a time, bound to F5 to F12.

#include <QString>

#include <array>

namespace tv {

class Common;
class CommandQueue;
class KavMain;
class KavConfig;
struct UpperHooks;
class UserCommandSequenceDefinition;

class UserSequences {
  public:
    static constexpr int kSequences = 16;
    static constexpr int kSteps = 16;

    UserSequences(Common& common, CommandQueue& queue, UpperHooks& hooks, KavMain& main, KavConfig& config,
                  UserCommandSequenceDefinition& editor);
    void connect();

    void LoadUserSequences();
    void SaveUserSequences();
    void UpdateSequenceCaptions();
    void UpdateSequenceBank(int base);
    void ActivateSequence(int button);
    void EditSequence(int index);
    void ExecuteSequence(int index);
    void ExecuteNamedSequence(const QString& name);
    void ExecuteCommand(const QString& text);
    // The program is going down: a sequence that is running (a loop, say) ends after its current step,
    // and none starts any more.
    void StopRunning() { stopping_ = true; }

    std::array<QString, kSequences> SequenceNames{};
    std::array<QString, kSequences> SequenceFunctions{};
    std::array<std::array<QString, kSteps>, kSequences> CommandNotes{};
    std::array<std::array<QString, kSteps>, kSequences> CommandValues{};
    int CurrentSequence = 0;
    // Modifier mask of the last key in the frequency box or press on a sequence button.
    int KeyShiftState = 0;

  private:
    void showName(int index);
    void fillEditor();

    Common& common_;
    CommandQueue& queue_;
    UpperHooks& hooks_;
    KavMain& main_;
    KavConfig& config_;
    UserCommandSequenceDefinition& editor_;
    bool filling_ = false;
    bool stopping_ = false;
};

}  // namespace tv
