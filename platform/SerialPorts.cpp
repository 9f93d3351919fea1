#include "platform/SerialDevice.h"

#include <QSerialPortInfo>

#include <algorithm>

namespace tv {
namespace {

// "/dev/ttyUSB10" as ("/dev/ttyUSB", 10), so that the operator sees ttyS2 before ttyS10.
std::pair<QString, long long> splitNumber(const QString& path) {
    int i = int(path.size());
    while (i > 0 && path[i - 1].isDigit()) --i;
    const QString digits = path.mid(i);
    return {path.left(i), digits.isEmpty() ? -1 : digits.toLongLong()};
}

}  // namespace

QStringList presentSerialDevices() {
    QStringList out;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
        if (!out.contains(info.systemLocation())) out << info.systemLocation();
    std::sort(out.begin(), out.end(),
              [](const QString& a, const QString& b) { return splitNumber(a) < splitNumber(b); });
    return out;
}

}  // namespace tv
