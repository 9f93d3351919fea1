#pragma once
// A radio behind the rig server's interface, for tests: state set by hand, every set recorded as text.

#include "netserver/RigBackend.h"

#include <QStringList>

namespace tv::test {

class FakeRig : public RigBackend {
  public:
    FakeRig() {
        c.radio = c.vfoAB = c.split = c.ptt = c.meter = c.dataMode = true;
        c.name = QStringLiteral("Icom IC-7300");
        c.modes.fill(true);
        c.modes[RigWBFM] = false;
    }
    RigCaps caps() const override { return c; }
    double frequencyHz() const override { return freq; }
    int mode() const override { return mode_; }
    RigVfo vfo() const override { return vfo_; }
    bool split() const override { return split_; }
    double txFrequencyHz() const override { return txFreq; }
    int txMode() const override { return mode_; }
    bool ptt() const override { return ptt_; }
    double meter() const override { return meterFraction; }
    QString meterLabel() const override { return label; }
    int passbandHz() const override { return passband; }
    std::optional<double> level(RigLevel which) override {
        asked[size_t(which)] = true;
        return levels[size_t(which)];
    }
    std::optional<double> reportedLevel(RigLevel which) const override { return levels[size_t(which)]; }
    int radioNumber() const override { return radioNr; }
    bool responding() const override { return answering; }
    bool locked() const override { return locked_; }
    void setLocked(bool on, const QString&) override { locked_ = on; }
    bool frequencySettled() const override { return settled; }

    bool setFrequency(double hz) override {
        return set(QStringLiteral("freq %1").arg(hz, 0, 'f', 0), freq, hz);
    }
    bool setMode(int m, int pb) override {
        return set(QStringLiteral("mode %1 %2").arg(m).arg(pb), mode_, m);
    }
    bool setVfo(RigVfo v) override { return set(QStringLiteral("vfo %1").arg(int(v)), vfo_, v); }
    bool setSplit(bool on) override { return set(QStringLiteral("split %1").arg(on), split_, on); }
    bool setTxFrequency(double hz) override {
        return set(QStringLiteral("tx %1").arg(hz, 0, 'f', 0), txFreq, hz);
    }
    bool setPtt(bool on, const QString&) override { return set(QStringLiteral("ptt %1").arg(on), ptt_, on); }
    bool sendRaw(const QByteArray& command) override {
        sets << QStringLiteral("raw ") + QString::fromLatin1(command);
        return accept;
    }

    RigCaps c;
    double freq = 7010000, txFreq = 7010000;
    int mode_ = RigCW;
    RigVfo vfo_ = RigVfo::A;
    bool split_ = false, ptt_ = false;
    double meterFraction = 0;
    int passband = 0;
    int radioNr = 1;
    bool answering = true;
    bool locked_ = false;
    bool settled = true;
    QString label;
    bool accept = true;  // false: the program's queue refuses
    std::array<std::optional<double>, kRigLevelCount> levels{};
    std::array<bool, kRigLevelCount> asked{};
    QStringList sets;

  private:
    template <class T>
    bool set(const QString& what, T& field, T value) {
        sets << what;
        if (accept) field = value;
        return accept;
    }
};

}  // namespace tv::test
