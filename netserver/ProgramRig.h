#pragma once
// The rig server's view of this program: the one place where the server meets the central module.
// Gets read what the program already shows; sets do what the operator's gestures do, through the queue.

#include "netserver/RigBackend.h"

namespace tv {

class KavModule;
class MultiXcvr;

class ProgramRig : public RigBackend {
  public:
    explicit ProgramRig(KavModule& module);
    ProgramRig(const ProgramRig&) = delete;
    ProgramRig& operator=(const ProgramRig&) = delete;

    // Follows the meter through the live items the core writes.
    void connect();

    RigCaps caps() const override;
    double frequencyHz() const override;
    int mode() const override;
    RigVfo vfo() const override;
    bool split() const override;
    double txFrequencyHz() const override;
    int txMode() const override;
    bool ptt() const override;
    double meter() const override { return meter_; }
    QString meterLabel() const override { return meterLabel_; }
    int passbandHz() const override;
    std::optional<double> level(RigLevel which) override;
    std::optional<double> reportedLevel(RigLevel which) const override;
    int radioNumber() const override;
    // The transceiver switch, for the radio's number (none: always the first).
    const MultiXcvr* multiXcvr = nullptr;
    QList<int> passbandChoices(int mode) const override;
    bool responding() const override;
    bool frequencySettled() const override;

    bool setFrequency(double hz) override;
    bool setMode(int mode, int passbandHz) override;
    bool setVfo(RigVfo vfo) override;
    bool setSplit(bool on) override;
    bool setTxFrequency(double hz) override;
    bool setPtt(bool on, const QString& client) override;
    void clientGone(const QString& client) override;
    bool locked() const override;
    void setLocked(bool on, const QString& client) override;
    bool sendRaw(const QByteArray& command) override;

  private:
    template <class F>
    bool queued(F gesture);
    double otherVfoKHz() const;
    // The window's filter group whose width in the mode is nearest to a client's passband ("" when the
    // family knows no widths).
    QString nearestFilterGroup(int mode, int passbandHz) const;

    KavModule& m_;
    double meter_ = 0;
    bool awaitingReport_ = false;  // a frequency was set; the radio hasn't reported since it left
    QString meterLabel_;
    // The split frequency set here, shown until the radio reports another for that VFO.
    bool txSet_ = false;
    double txKHz_ = 0, txOtherAtSet_ = 0;
};

}  // namespace tv
