#pragma once

// One radio of the Kenwood family: ASCII commands of two letters, parameters and ";". No I/O: text in,
// text out. The line doesn't echo, so what comes back is only the radio's answers. A query is a
// command without parameters; a set command is answered by nothing; what the radio doesn't know or
// refuses is answered "?;".

#include "tools/radiosim/RadioSwitches.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace tv::sim {

struct KenwoodModelSpec {
    QString name;
    QByteArray id;             // the three digits of the ID reply
    qint64 maxHz = 60'000'000;
    int meterFullScale = 30;   // 0: no SM command
    bool meterReceiver = false;  // "SM0;" / "SM00012;" (with the receiver digit)
    bool cutoffCodes = false;  // SL and SH
    bool widthAndShift = false;  // FW and IS
    bool singleVfoSelect = false;  // old radios: FN and SP instead of FR and FT
    bool powerSetting = false;  // PC: the output power in watts, 005 to 100
};

class KenwoodRadio : public RadioSwitches {
public:
    // Mode numbers as the controller counts them; the radio's own digits are the Kenwood ones.
    enum Mode { LSB, USB, AM, CW, RTTY, FM, WBFM, CWR, RTTYR, ModeCount };

    explicit KenwoodRadio(KenwoodModelSpec model);

    static std::optional<KenwoodModelSpec> model(const QString& name);  // case-insensitive
    static QStringList modelNames();
    // The mode digit the radio uses for a mode, 0 for one it hasn't (WBFM).
    static int modeDigit(int mode);
    // -1 for a digit that is no mode.
    static int modeOfDigit(int digit);

    // What the controller wrote; returns the radio's answers.
    QByteArray receive(const QByteArray& bytes);

    // The operator at the radio: with auto-information on, each change is reported as a status line.
    QByteArray turnDial(qint64 deltaHz);
    QByteArray setFrequency(qint64 hz);
    QByteArray setMode(int mode);

    // Noise for the controller's receive path: never contains ";" (so it frames nothing by itself).
    static QByteArray garbage(int n, quint32 seed);

    // The full status line, as "IF;" gets it.
    QByteArray status() const;

    const KenwoodModelSpec& config() const { return model_; }
    qint64 frequency() const { return vfo_[receiveVfo()].hz; }
    qint64 vfoFrequency(int vfo) const { return vfo_[vfo & 1].hz; }
    int mode() const { return vfo_[receiveVfo()].mode; }
    int receiveVfo() const { return rx_ & 1; }
    int transmitVfo() const { return tx_ & 1; }
    bool split() const { return singleSplit_ || rx_ != tx_; }
    bool ptt() const { return ptt_; }
    int autoInformation() const { return ai_; }

    int meter() const { return meter_; }
    void setMeter(int value);
    int lowCut() const { return low_; }
    int highCut() const { return high_; }
    int width() const { return width_; }
    int shift() const { return shift_; }

private:
    struct Vfo {
        qint64 hz = 14'025'500;
        int mode = USB;
    };

    QByteArray execute(const QByteArray& command);
    QByteArray frequencyCommand(int vfo, const QByteArray& p);
    QByteArray report() const;  // the unsolicited status after a change at the radio
    bool validHz(qint64 hz) const { return hz > 0 && hz <= model_.maxHz; }

    KenwoodModelSpec model_;
    QByteArray partial_;
    Vfo vfo_[2];
    int rx_ = 0, tx_ = 0;
    bool singleSplit_ = false;
    bool ptt_ = false;
    int ai_ = 0;
    int meter_ = 0;
    int watts_ = 100;
    int low_ = 0, high_ = 11, width_ = 500, shift_ = 0;
};

}  // namespace tv::sim
