#pragma once

// One radio of the Yaesu family. Every command is a block of five bytes, the opcode last; replies are
// bare bytes of a fixed length with no header and no end mark, so the radio must never answer a block
// it hasn't fully received. No I/O: bytes in, bytes out, as the other families.
//
// The models differ in where the parameters stand, in how each reply is laid out and in which
// commands they know. All of that is in the model table (YaesuRadio.cpp); the code only follows it.

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>

namespace tv::sim {

struct YaesuModel;

class YaesuRadio {
public:
    // Mode numbers as the controller counts them; each model has its own bytes for them.
    enum Mode { LSB, USB, AM, CW, RTTY, FM, WBFM, CWR, RTTYR, PKT, ModeCount };

    explicit YaesuRadio(const YaesuModel& model);

    // Nullptr if unknown. Case, blanks and dashes don't count ("FT-817", "ft817"); the catalogue's
    // spelling is taken too ("MP1000MKV").
    static const YaesuModel* model(const QString& name);
    static QStringList modelNames();
    static QString modelName(const YaesuModel& model);
    static int modeIndex(const QString& name);  // -1 if unknown; also knows "PKT"
    static QString modeName(int mode);

    // What the controller wrote; returns what the radio puts on the line.
    QByteArray receive(const QByteArray& bytes);

    // The operator at the radio. These radios never report unasked, so nothing goes on the line; the
    // byte arrays are returned for the sake of the simulator's common driving code. A frequency the
    // radio can't tune, or a mode it hasn't, changes nothing.
    QByteArray turnDial(qint64 deltaHz);
    QByteArray setFrequency(qint64 hz);
    QByteArray setMode(int mode);
    bool selectVfo(int vfo);  // false where the radio has only one VFO under its operator's hand
    void setSplit(bool on) { split_ = on; }
    void setClarifier(bool on, int offsetHz);

    // Noise on the line: any byte may appear, as nothing in a reply could tell it apart.
    static QByteArray garbage(int n, quint32 seed);

    const YaesuModel& config() const { return model_; }
    QString name() const { return modelName(model_); }
    bool knowsMode(int mode) const;
    qint64 frequency() const { return vfo_[current_].hz; }
    qint64 vfoFrequency(int vfo) const { return vfo_[vfo & 1].hz; }
    int mode() const { return vfo_[current_].mode; }
    int vfoMode(int vfo) const { return vfo_[vfo & 1].mode; }
    bool narrow() const { return vfo_[current_].narrow; }
    int currentVfo() const { return current_; }
    bool split() const { return split_; }
    bool dualWatch() const { return dualWatch_; }
    bool ptt() const { return ptt_; }
    bool locked() const { return locked_; }
    bool powered() const { return powered_; }
    bool catOn() const { return catOn_; }
    bool clarifierOn() const { return clarOn_; }
    int clarifierHz() const { return clarHz_; }
    // The three filter selections of the radios that have them: second IF, third IF, sub receiver,
    // as the radio's command values.
    int filter(int which) const { return filter_[which % 3]; }
    // The operator turns a filter knob (value as a command would set it); false on a radio without
    // these filters or for a value it hasn't.
    bool setFilter(int which, int value);

    // In the radio's own units, 0 up to the full scale of its meter.
    int meter() const { return meter_; }
    void setMeter(int value);
    int meterFullScale() const;

    bool silent() const { return silent_; }
    void setSilent(bool on) { silent_ = on; }

private:
    struct Vfo {
        qint64 hz = 14'025'500;
        int mode = USB;
        bool narrow = false;
    };
    struct Block;

    QByteArray execute(const Block& b);
    QByteArray executeClassic(const Block& b);
    QByteArray executeModern(const Block& b);
    QByteArray executeHandshake(const Block& b);
    QByteArray reply767(const Block& command);
    QByteArray read(int layout) const;
    void putRecord(QByteArray& out, int at, int vfo) const;
    QByteArray flags() const;
    QByteArray meterReply() const;
    bool tune(qint64 hz);
    bool setModeCode(int code);
    bool has(unsigned feature) const;
    uint8_t eeprom(int address) const;

    const YaesuModel& model_;
    QByteArray partial_;  // bytes of a block not yet complete
    QByteArray awaitingAck_;  // a command echoed by the handshake radio, run at the acknowledge
    Vfo vfo_[2];
    int current_ = 0;
    bool split_ = false;
    bool dualWatch_ = false;
    bool ptt_ = false;
    bool locked_ = false;
    bool powered_ = true;
    bool catOn_ = false;
    bool clarOn_ = false;
    int clarHz_ = 0;
    int filter_[3] = {0, 0, 0x80};
    int meter_ = 0;
    bool silent_ = false;
};

}  // namespace tv::sim
