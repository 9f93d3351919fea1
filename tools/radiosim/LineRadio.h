#pragma once

// The simulator program's seam to a family of radios on a serial line: what the line, the log and the
// stdin commands need of a radio. One implementation per family; the radios know nothing of it.

#include "tools/radiosim/CivRadio.h"
#include "tools/radiosim/KenwoodRadio.h"
#include "tools/radiosim/TenTecRadio.h"
#include "tools/radiosim/YaesuRadio.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tv::sim {

class LineRadio {
  public:
    virtual ~LineRadio() = default;

    // What the controller wrote; returns what goes back on the line.
    virtual QByteArray receive(const QByteArray& bytes) = 0;
    // How much of that is the line's echo of what was written rather than the radio's answer.
    virtual int echoLength(const QByteArray&) const { return 0; }
    // Line bytes as the log shows them; by default as text, anything unprintable as <xx>.
    virtual QString shown(const QByteArray& bytes) const;

    // The operator at the radio; the bytes returned are what the radio reports of it by itself.
    virtual QByteArray turnDial(qint64 deltaHz) = 0;
    virtual QByteArray setFrequency(qint64 hz) = 0;
    // `words` is the whole stdin line, for a family that takes more than the mode.
    virtual QByteArray setMode(int mode, const QStringList& words) = 0;
    virtual qint64 frequency() const = 0;
    virtual int mode() const = 0;
    // A mode's number from its name (all families count modes alike); -1 for one this radio hasn't.
    virtual int modeIndex(const QString& name) const = 0;
    // The mode, and what else of the radio's state the log's lines tell for this family.
    virtual QString modeName() const = 0;

    // Noise for the controller's receive path, of the kind this family's line can carry.
    virtual QByteArray garbage(int n, quint32 seed) const = 0;
    virtual void setMeter(int value) = 0;
    virtual int meterTop() const = 0;  // in the radio's own units
    virtual void setSilent(bool on) = 0;
    // False where the radio has no such thing.
    virtual bool setTransceive(bool) { return false; }
    virtual bool rejectNext() { return false; }
    // A stdin line of this family alone: false for a line it doesn't know, else `ok` tells how it went.
    virtual bool familyCommand(const QStringList&, bool&) { return false; }
};

// What every family passes to its radio as it is.
template <class Radio>
class LineOf : public LineRadio {
  public:
    explicit LineOf(Radio& radio) : radio_(radio) {}

    QByteArray receive(const QByteArray& bytes) override { return radio_.receive(bytes); }
    QByteArray turnDial(qint64 deltaHz) override { return radio_.turnDial(deltaHz); }
    QByteArray setFrequency(qint64 hz) override { return radio_.setFrequency(hz); }
    qint64 frequency() const override { return radio_.frequency(); }
    int mode() const override { return radio_.mode(); }
    QByteArray garbage(int n, quint32 seed) const override { return Radio::garbage(n, seed); }
    void setMeter(int value) override { radio_.setMeter(value); }
    void setSilent(bool on) override { radio_.setSilent(on); }

  protected:
    Radio& radio_;
};

// The families whose radios take stdin's "transceive" and "reject" (a TenTec takes the first and ignores it).
template <class Radio>
class SwitchedLineOf : public LineOf<Radio> {
  public:
    using LineOf<Radio>::LineOf;
    bool setTransceive(bool on) override {
        this->radio_.setTransceive(on);
        return true;
    }
    bool rejectNext() override {
        this->radio_.setRejectNext(true);
        return true;
    }
};

// A CI-V bus echoes every byte; logged in hexadecimal; a mode carries a filter.
class CivLine final : public SwitchedLineOf<CivRadio> {
  public:
    using SwitchedLineOf::SwitchedLineOf;
    int echoLength(const QByteArray& bytes) const override { return int(bytes.size()); }
    QString shown(const QByteArray& bytes) const override;
    QByteArray setMode(int mode, const QStringList& words) override;
    int modeIndex(const QString& name) const override { return CivRadio::modeIndex(name); }
    QString modeName() const override { return CivRadio::modeName(radio_.mode()); }
    int meterTop() const override { return 255; }
};

class KenwoodLine final : public SwitchedLineOf<KenwoodRadio> {
  public:
    using SwitchedLineOf::SwitchedLineOf;
    QByteArray setMode(int mode, const QStringList&) override { return radio_.setMode(mode); }
    int modeIndex(const QString& name) const override { return CivRadio::modeIndex(name); }
    QString modeName() const override { return CivRadio::modeName(radio_.mode()); }
    int meterTop() const override { return radio_.config().meterFullScale; }
};

// Binary frequencies and mode bytes show as <xx> among the text.
class TenTecLine final : public SwitchedLineOf<TenTecRadio> {
  public:
    using SwitchedLineOf::SwitchedLineOf;
    QByteArray setMode(int mode, const QStringList&) override { return radio_.setMode(mode); }
    int modeIndex(const QString& name) const override;
    QString modeName() const override;
    int meterTop() const override { return 15; }
};

// Logged in hexadecimal; the only family with packet as a mode; never reports by itself and has no
// negative answer to give. The replies carry the VFO in use, split and clarifier, which stdin sets.
class YaesuLine final : public LineOf<YaesuRadio> {
  public:
    using LineOf::LineOf;
    QString shown(const QByteArray& bytes) const override;
    QByteArray setMode(int mode, const QStringList&) override { return radio_.setMode(mode); }
    int modeIndex(const QString& name) const override;
    QString modeName() const override;
    int meterTop() const override { return radio_.meterFullScale(); }
    bool familyCommand(const QStringList& words, bool& ok) override;
};

}  // namespace tv::sim
