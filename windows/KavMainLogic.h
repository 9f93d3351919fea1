#pragma once
// The main window's own event handlers (the gestures that aren't tuning, bands, modes or memories),
// its keyboard map, the choice of what the shared area shows, and its size. Toolkit-free: the Qt view
// turns clicks and keys into gestures on the form model, and these handlers answer them.

#include <QString>

namespace tv {

class KavModule;
class KavComm;

class KavMainLogic {
public:
    KavMainLogic(KavModule& module, KavComm& comm);
    // Installs the handlers into the main window's controls.
    void connect();

    // After nearly every gesture the keyboard goes back to the frequency box.
    void FocusRule();
    void SetFilterFrameVisibility(bool visible);
    bool GetMemoryBanksVisible() const { return memoryBanksShown_; }
    void ShowMemoryBanks(bool show);
    void XFCStart();
    void XFCStop();
    void DoXmit();
    void DoRcv();
    // Keeps the window at its designed size: a maximised window comes back to normal.
    void UpdateWindow();
    // The notice of a command the radio refused.
    void ShowRejection(const QString& refused);

    // The modifier masks of the last presses.
    int MouseShiftState = 0;
    bool xfcHeld() const { return xfcHeld_; }

private:
    void splitClick();
    void dualClick();
    void pttOn();
    void pttOff();
    void setPttCaptions(bool transmitting);

    KavModule& m_;
    KavComm& comm_;
    bool filterFrameWanted_ = false;
    bool memoryBanksShown_ = false;
    bool xfcHeld_ = false;
};

}  // namespace tv
