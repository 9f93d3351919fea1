#include "tools/radiosim/PegasusFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cmath>

namespace tv::sim {

PegasusFolder::PegasusFolder(QString folder) : folder_(std::move(folder)) {}

void PegasusFolder::setFrequency(qint64 hz) {
    hz_ = std::max<qint64>(0, hz);
    writeOut();
}

bool PegasusFolder::setMode(const QString& name) {
    const QString m = name.trimmed().toUpper();
    if (m != QLatin1String("LSB") && m != QLatin1String("USB") && m != QLatin1String("AM") &&
        m != QLatin1String("CW") && m != QLatin1String("FM"))
        return false;
    mode_ = m;
    writeOut();
    return true;
}

bool PegasusFolder::poll() {
    const QFileInfo info(QDir(folder_).filePath(QStringLiteral("PEGASUS.IN")));
    if (!info.exists() || (info.lastModified() == inTime_ && info.size() == inSize_)) return false;
    inTime_ = info.lastModified();
    inSize_ = info.size();
    QFile f(info.filePath());
    if (!f.open(QIODevice::ReadOnly)) return false;
    const QList<QByteArray> lines = f.readAll().split('\n');
    if (lines.size() < 2) return false;
    bool ok = false;
    const double mhz = lines[0].trimmed().toDouble(&ok);
    if (!ok || mhz < 0) return false;
    hz_ = std::llround(mhz * 1e6);
    const QString m = QString::fromLatin1(lines[1].trimmed()).toUpper();
    if (!m.isEmpty()) mode_ = m;
    writeOut();
    return true;
}

bool PegasusFolder::writeOut() const {
    QSaveFile f(QDir(folder_).filePath(QStringLiteral("PEGASUS.OUT")));
    if (!f.open(QIODevice::WriteOnly)) return false;
    f.write(QByteArray::number(double(hz_) / 1e6, 'g', 15) + "\r\n" + mode_.toLatin1() + "\r\n");
    return f.commit();
}

}  // namespace tv::sim
