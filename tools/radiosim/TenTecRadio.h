#pragma once

// A TenTec radio of the carriage-return command set: the Argonaut V and Jupiter with binary frequency
// bytes, the Orion with "*"/"?" commands and "@" replies in text. No I/O: bytes in, bytes out.

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace tv::sim {

struct TenTecModelSpec {
    QString name;
    bool orion = false;         // the text dialect
    bool splitCommand = false;  // "*O1"/"*O0", "?O"
    bool vfoCommand = false;    // "*EVA"/"*EVB"
    bool pttCommand = false;    // Argonaut "*1"/"*0"
};

class TenTecRadio {
  public:
    enum Mode { LSB, USB, AM, CW, RTTY, FM, WBFM, CWR };

    explicit TenTecRadio(TenTecModelSpec model);
    static std::optional<TenTecModelSpec> model(const QString& name);  // case-insensitive, "-" for blanks
    static QStringList modelNames();

    // Bytes the controller sent; returns the radio's replies.
    QByteArray receive(const QByteArray& bytes);
    // The operator at the radio: these radios never report by themselves, so nothing goes out.
    QByteArray turnDial(qint64 deltaHz);
    QByteArray setFrequency(qint64 hz);
    QByteArray setMode(int mode);
    static QByteArray garbage(int n, quint32 seed);

    const TenTecModelSpec& config() const { return model_; }
    qint64 frequency() const { return hz_[current_]; }
    qint64 frequencyB() const { return hz_[1]; }
    int mode() const { return mode_[current_]; }
    int currentVfo() const { return current_; }
    bool split() const { return split_; }
    bool dual() const { return dual_; }
    bool ptt() const { return ptt_; }
    // 0..15, the meter digit.
    void setMeter(int value) { meter_ = value < 0 ? 0 : value > 15 ? 15 : value; }
    void setSilent(bool on) { silent_ = on; }
    void setTransceive(bool) {}
    void setRejectNext(bool on) { rejectNext_ = on; }

  private:
    QByteArray command(const QByteArray& line);
    QByteArray binaryCommand(const QByteArray& line);
    QByteArray orionCommand(const QByteArray& line);
    QByteArray refuse(const QByteArray& line) const;

    TenTecModelSpec model_;
    QByteArray partial_;
    qint64 hz_[2] = {14'025'000, 7'010'000};
    int mode_[2] = {USB, CW};
    int current_ = 0;
    bool split_ = false, dual_ = false, ptt_ = false, silent_ = false, rejectNext_ = false;
    int meter_ = 0;
};

}  // namespace tv::sim
