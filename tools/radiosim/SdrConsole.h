#pragma once

// An SDR console as a controller meets it: a program that drives the radio itself, takes the
// controller's execute strings ("NewVFOAFreq,14.025", "SendSMeter" ...) and tells the controller what
// changed by executing strings of its own on the controller ("NewVFOA,14.025", "smeter,57"). No I/O:
// strings in, strings out; the program around it puts them on the bus.

#include <QString>
#include <QStringList>

#include <array>

namespace tv::sim {

class SdrConsole {
  public:
    // The console's own modes, in its own order.
    enum Mode { LSB, USB, DSB, CWL, CWU, FMN, AM, DIGU, SPEC, DIGL, SAM, DRM, ModeCount };
    static QString modeName(int mode);
    // -1 for a name the console has no mode of (any case).
    static int modeOfName(const QString& name);

    SdrConsole();

    // One string from the controller: whether the console took it, and what it tells the controller
    // back. A string it doesn't know is taken and changes nothing.
    struct Answer {
        bool accepted = true;
        QStringList reports;
    };
    Answer execute(const QString& command);

    // The operator at the console: every change is told to the controller.
    QStringList turnDial(qint64 deltaHz);  // the VFO A dial
    QStringList setFrequency(int vfo, qint64 hz);
    QStringList setMode(int vfo, int mode);
    QStringList setSplit(bool on);
    // The meter reading, 0..100 (what "smeter," reports).
    void setMeter(int value) { meter_ = value; }

    // Everything, as the console tells it when a controller links up.
    QStringList allReports() const;

    qint64 frequency(int vfo) const { return vfo_[size_t(vfo & 1)].hz; }
    int mode(int vfo) const { return vfo_[size_t(vfo & 1)].mode; }
    bool split() const { return split_; }
    int meter() const { return meter_; }

  private:
    struct Vfo {
        qint64 hz;
        int mode;
    };
    QString freqReport(int vfo) const;
    QString modeReport(int vfo) const;
    static bool parseMHz(const QString& text, qint64* hz);

    std::array<Vfo, 2> vfo_;
    bool split_ = false;
    int meter_ = 40;
};

}  // namespace tv::sim
