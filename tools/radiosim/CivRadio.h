#pragma once

// One radio of the CI-V family on a simulated bus. No I/O: bytes in, bytes out, so that the program
// around it and the tests feed it the same way.

#include "tools/radiosim/RadioSwitches.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace tv::sim {

struct CivModel {
    QString name;
    uint8_t address = 0x94;
    bool filterByte = true;  // mode frames carry a filter byte, frequency frames five BCD bytes
    bool shortFreq = false;  // frequencies in four BCD bytes (old radios)
    bool hasMeter = false;
    // Command 1A 06: the data mode of SSB, AM and FM, with its own filter choice (IC-7300 and later).
    bool hasDataMode = false;
    // 14 0A (the power setting, read and set) and the transmit meters 15 12 (SWR) and 15 13 (ALC),
    // which read 0 while receiving.
    bool hasTxLevels = false;
};

class CivRadio : public RadioSwitches {
public:
    static constexpr uint8_t kPreamble = 0xFE;
    static constexpr uint8_t kEnd = 0xFD;
    static constexpr uint8_t kOk = 0xFB;
    static constexpr uint8_t kNg = 0xFA;
    static constexpr uint8_t kBroadcast = 0x00;

    enum Mode { LSB, USB, AM, CW, RTTY, FM, WBFM, CWR, RTTYR, ModeCount };

    explicit CivRadio(CivModel model);

    static std::optional<CivModel> model(const QString& name);  // case-insensitive
    static QStringList modelNames();
    static int modeIndex(const QString& name);  // -1 if unknown; case-insensitive, "CW-R" or "CWR"
    static QString modeName(int mode);

    // Packed decimal, least significant byte first. Digits above the width are dropped.
    static QByteArray toBcd(qint64 value, int bytes);
    // Empty when a nibble isn't a decimal digit.
    static std::optional<qint64> fromBcd(const QByteArray& bytes);

    // Bytes the controller put on the bus; returns what the bus carries back: the echo, then replies.
    QByteArray receive(const QByteArray& bytes);

    // The operator at the radio's own knobs; the returned bytes are the transceive report, if any.
    QByteArray turnDial(qint64 deltaHz);
    QByteArray setFrequency(qint64 hz);
    QByteArray setMode(int mode, int filter);
    // The DATA button: only SSB, AM and FM carry data.
    bool setData(bool on);

    // Noise for the controller's receive path: never contains a preamble byte.
    static QByteArray garbage(int n, quint32 seed);

    const CivModel& config() const { return model_; }
    uint8_t address() const { return model_.address; }
    void setAddress(uint8_t a) { model_.address = a; }

    qint64 frequency() const { return vfo_[current_].hz; }
    qint64 otherFrequency() const { return vfo_[1 - current_].hz; }
    int mode() const { return vfo_[current_].mode; }
    int filter() const { return vfo_[current_].filter; }
    bool data() const { return vfo_[current_].data; }
    int currentVfo() const { return current_; }
    bool split() const { return split_; }
    bool dualWatch() const { return dualWatch_; }
    bool ptt() const { return ptt_; }

    int meter() const { return meter_; }
    void setMeter(int value);

private:
    struct Vfo {
        qint64 hz = 14'025'500;
        int mode = USB;
        int filter = 1;
        bool data = false;
    };

    QByteArray handleFrame(const QByteArray& frame);
    QByteArray execute(uint8_t cmd, const QByteArray& data);
    QByteArray reply(uint8_t to, uint8_t cmd, const QByteArray& data) const;
    int freqBytes() const { return model_.shortFreq ? 4 : 5; }
    qint64 maxFrequency() const;
    QByteArray frequencyReport() const;
    QByteArray modeReport() const;
    // A level reply after its sub-command: 0..255 as a plain hundreds byte and packed tens and units.
    static QByteArray levelReport(uint8_t sub, int value);

    CivModel model_;
    QByteArray partial_;  // bytes of a frame not yet ended
    Vfo vfo_[2];
    int current_ = 0;
    bool split_ = false;
    bool dualWatch_ = false;
    bool ptt_ = false;
    int meter_ = 0;
    int power_ = 128;  // the power setting, 0..255
};

}  // namespace tv::sim
