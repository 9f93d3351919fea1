#pragma once

// What the person driving a simulated radio switches on the radios that report by themselves and can
// refuse a command (CI-V and Kenwood): the radio's own state, read by its command handling.

namespace tv::sim {

class RadioSwitches {
  public:
    // Whether changes at the radio are reported (on a Kenwood, once the controller asked with "AI1;").
    bool transceive() const { return transceive_; }
    void setTransceive(bool on) { transceive_ = on; }
    // Hears nothing, answers nothing.
    bool silent() const { return silent_; }
    void setSilent(bool on) { silent_ = on; }
    // The next command is refused.
    bool rejectNext() const { return rejectNext_; }
    void setRejectNext(bool on) { rejectNext_ = on; }

  protected:
    bool transceive_ = true;
    bool silent_ = false;
    bool rejectNext_ = false;
};

}  // namespace tv::sim
