#pragma once
// A radio behind the rig server's interface, for tests: its state is set by hand, and every set is
// recorded as text.

#include "netserver/RigBackend.h"

#include <QStringList>

namespace tv::test {

class FakeRig : public RigBackend {
public:
    FakeRig() {
        c.radio = true;
        c.name = QStringLiteral("Icom IC-7300");
        c.modes.fill(true);
        c.modes[RigWBFM] = false;
        c.vfoAB = c.split = c.ptt = c.meter = true;
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

    bool setFrequency(double hz) override {
        sets << QStringLiteral("freq %1").arg(hz, 0, 'f', 0);
        if (accept) freq = hz;
        return accept;
    }
    bool setMode(int m, int passband) override {
        sets << QStringLiteral("mode %1 %2").arg(m).arg(passband);
        if (accept) mode_ = m;
        return accept;
    }
    bool setVfo(RigVfo v) override {
        sets << QStringLiteral("vfo %1").arg(int(v));
        if (accept) vfo_ = v;
        return accept;
    }
    bool setSplit(bool on) override {
        sets << QStringLiteral("split %1").arg(on);
        if (accept) split_ = on;
        return accept;
    }
    bool setTxFrequency(double hz) override {
        sets << QStringLiteral("tx %1").arg(hz, 0, 'f', 0);
        if (accept) txFreq = hz;
        return accept;
    }
    bool setPtt(bool on) override {
        sets << QStringLiteral("ptt %1").arg(on);
        if (accept) ptt_ = on;
        return accept;
    }

    RigCaps c;
    double freq = 7010000, txFreq = 7010000;
    int mode_ = RigCW;
    RigVfo vfo_ = RigVfo::A;
    bool split_ = false, ptt_ = false;
    double meterFraction = 0;
    QString label;
    bool accept = true;  // false: the program's queue refuses
    QStringList sets;
};

}  // namespace tv::test
