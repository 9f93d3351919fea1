#include "platform/SerialDevice.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSerialPortInfo>

#include <algorithm>
#include <cstring>
#include <vector>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tv {
namespace {

// "/dev/ttyUSB10" as ("/dev/ttyUSB", 10), so that the operator sees ttyS2 before ttyS10.
std::pair<QString, long long> splitNumber(const QString& path) {
    int i = int(path.size());
    while (i > 0 && path[i - 1].isDigit()) --i;
    const QString digits = path.mid(i);
    return {path.left(i), digits.isEmpty() ? -1 : digits.toLongLong()};
}

bool processHasGroup(gid_t gid) {
    if (::getegid() == gid) return true;
    const int n = ::getgroups(0, nullptr);
    if (n <= 0) return false;
    std::vector<gid_t> groups(std::size_t(n), 0);
    groups.resize(std::size_t(std::max(::getgroups(n, groups.data()), 0)));
    return std::find(groups.begin(), groups.end(), gid) != groups.end();
}

}  // namespace

QStringList presentSerialDevices() {
    QStringList out;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
        if (!out.contains(info.systemLocation())) out << info.systemLocation();
    std::sort(out.begin(), out.end(),
              [](const QString& a, const QString& b) { return splitNumber(a) < splitNumber(b); });
    // The names that stay with an adapter whatever order it was plugged in come first.
    QStringList stable;
    const QFileInfoList links = QDir(QStringLiteral("/dev/serial/by-id"))
                                    .entryInfoList(QDir::Files | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo& link : links) stable << link.absoluteFilePath();
    return stable + out;
}

QString describeOpenFailure(const SerialDevice& device, const QString& text) {
    if (device.lastOpenFailure != SerialOpenFailure::PermissionDenied) return text;
    return text + QStringLiteral("; ") + serialPermissionAdvice(inspectDeviceAccess(device.path()));
}

DeviceAccess inspectDeviceAccess(const QString& path) {
    DeviceAccess a;
    a.path = path;
    struct stat st {};
    const bool known = ::stat(QFile::encodeName(path).constData(), &st) == 0;
    gid_t gid = 0;
    if (known) {
        a.mode = unsigned(st.st_mode & 07777);
        gid = st.st_gid;
        if (const group* g = ::getgrgid(gid)) a.group = QString::fromLocal8Bit(g->gr_name);
        if (const passwd* o = ::getpwuid(st.st_uid)) a.owner = QString::fromLocal8Bit(o->pw_name);
    }
    const group* g = ::getgrnam(a.group.toLocal8Bit().constData());
    if (!g) return a;
    if (!known) gid = g->gr_gid;
    a.processInGroup = processHasGroup(gid);
    // The group database, not this process, tells whether the user has joined since logging in.
    if (const passwd* me = ::getpwuid(::getuid())) {
        a.userListedInGroup = me->pw_gid == g->gr_gid;
        for (char** m = g->gr_mem; m && *m && !a.userListedInGroup; ++m)
            a.userListedInGroup = std::strcmp(*m, me->pw_name) == 0;
    }
    return a;
}

QString serialPermissionAdvice(const DeviceAccess& a) {
    const bool groupMayUse = (a.mode & 060) == 060;
    if (!a.processInGroup && a.userListedInGroup && groupMayUse)
        return QStringLiteral("you have joined group %1, which may use %2, since you logged in: log out and in")
            .arg(a.group, a.path);
    if (!a.processInGroup && groupMayUse)
        return QStringLiteral("you are not in group %1, which may use %2: run sudo usermod -aG %1 $USER, then log "
                              "out and in")
            .arg(a.group, a.path);
    // Joining the group would not help: say what the device allows, for whoever looks after the computer.
    return QStringLiteral("%1 (owner %2, group %3, mode %4) does not let you read and write it")
        .arg(a.path, a.owner.isEmpty() ? QStringLiteral("unknown") : a.owner, a.group)
        .arg(a.mode, 4, 8, QLatin1Char('0'));
}

}  // namespace tv
