#include "tools/radiosim/LineRadio.h"

namespace tv::sim {

namespace {
QString hexShown(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}
}  // namespace

QString LineRadio::shown(const QByteArray& bytes) const {
    QString text;
    for (char c : bytes)
        text += (c >= 0x20 && c < 0x7F) ? QString(QLatin1Char(c))
                                        : QStringLiteral("<%1>").arg(uint8_t(c), 2, 16, QLatin1Char('0'));
    return text;
}

QString CivLine::shown(const QByteArray& bytes) const {
    return hexShown(bytes);
}

QByteArray CivLine::setMode(int mode, const QStringList& words) {
    return radio_.setMode(mode, words.size() > 2 ? words[2].toInt() : radio_.filter());
}

int TenTecLine::modeIndex(const QString& name) const {
    const int m = CivRadio::modeIndex(name);
    return m == CivRadio::RTTYR || m == CivRadio::WBFM ? -1 : m;
}

QString TenTecLine::modeName() const {
    return QStringLiteral("%1, VFO %2%3%4")
        .arg(CivRadio::modeName(radio_.mode()),
             radio_.currentVfo() ? QStringLiteral("B") : QStringLiteral("A"),
             radio_.split() ? QStringLiteral(", split") : QString(),
             radio_.dual() ? QStringLiteral(", dual") : QString());
}

QString YaesuLine::shown(const QByteArray& bytes) const {
    return hexShown(bytes);
}

int YaesuLine::modeIndex(const QString& name) const {
    const int m = YaesuRadio::modeIndex(name);
    return radio_.knowsMode(m) ? m : -1;
}

QString YaesuLine::modeName() const {
    return QStringLiteral("%1, VFO %2%3")
        .arg(YaesuRadio::modeName(radio_.mode()),
             radio_.currentVfo() ? QStringLiteral("B") : QStringLiteral("A"),
             radio_.split() ? QStringLiteral(", split") : QString());
}

bool YaesuLine::familyCommand(const QStringList& w, bool& ok) {
    const QString cmd = w[0].toLower();
    const QString arg = w.size() > 1 ? w[1].toLower() : QString();
    if (cmd == QLatin1String("vfo")) {
        ok = (arg == QLatin1String("a") || arg == QLatin1String("b")) &&
             radio_.selectVfo(arg == QLatin1String("b"));
    } else if (cmd == QLatin1String("split")) {
        ok = arg == QLatin1String("on") || arg == QLatin1String("off");
        if (ok) radio_.setSplit(arg == QLatin1String("on"));
    } else if (cmd == QLatin1String("filter")) {
        // filter 2nd|3rd|sub VALUE: a filter knob, the value as the radio's command takes it.
        const QStringList which = {QStringLiteral("2nd"), QStringLiteral("3rd"), QStringLiteral("sub")};
        const int value = w.size() > 2 ? w[2].toInt(&ok) : -1;
        ok = ok && radio_.setFilter(int(which.indexOf(arg)), value);
    } else if (cmd == QLatin1String("clar")) {
        const int hz = arg.toInt(&ok);
        if (arg == QLatin1String("off"))
            ok = true, radio_.setClarifier(false, 0);
        else if (ok)
            radio_.setClarifier(true, hz);
    } else {
        return false;
    }
    return true;
}

}  // namespace tv::sim
