#pragma once

// A stand-in for the Pegasus's control program: it follows "PEGASUS.IN" in a folder when the file
// changes, and tells the radio's state in "PEGASUS.OUT" (line 1 MHz, line 2 mode name), written beside
// and renamed into place.

#include <QDateTime>
#include <QString>

namespace tv::sim {

class PegasusFolder {
  public:
    explicit PegasusFolder(QString folder);
    // Reads "PEGASUS.IN" if it changed since the last look; true when it did.
    bool poll();
    // The operator at the radio.
    void turnDial(qint64 deltaHz) { setFrequency(hz_ + deltaHz); }
    void setFrequency(qint64 hz);
    bool setMode(const QString& name);
    // Writes "PEGASUS.OUT"; false when the folder refused.
    bool writeOut() const;

    QString folder() const { return folder_; }
    qint64 frequency() const { return hz_; }
    QString mode() const { return mode_; }

  private:
    QString folder_;
    qint64 hz_ = 14'025'000;
    QString mode_ = QStringLiteral("USB");
    QDateTime inTime_;
    qint64 inSize_ = -1;
};

}  // namespace tv::sim
