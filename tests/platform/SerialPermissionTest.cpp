// A serial device that refuses this user: what the operator is told to do depends on the device's group
// and mode and on whether the user is in the group, or has joined it since logging in.

#include "platform/FakeSerialDevice.h"
#include "platform/SerialDevice.h"
#include "platform/SimEventLoop.h"

#include <QFile>
#include <QTemporaryDir>

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <unistd.h>

namespace tv {
namespace {

TEST(SerialPermission, AdviceFollowsTheGroupTheModeAndTheUsersMembership) {
    const QString usb = QStringLiteral("/dev/ttyUSB0");
    struct Case {
        DeviceAccess access;
        const char* mustSay;
        const char* mustNotSay;
    } cases[] = {
        // The everyday case: a USB adapter of group dialout, and a user who never joined it.
        {{usb, QStringLiteral("dialout"), QStringLiteral("root"), 0660, false, false},
         "you are not in group dialout, which may use /dev/ttyUSB0: run sudo usermod -aG dialout $USER, then log "
         "out and in",
         nullptr},
        // Another distribution's group is named as it is.
        {{usb, QStringLiteral("uucp"), QStringLiteral("root"), 0660, false, false}, "sudo usermod -aG uucp $USER",
         "dialout"},
        // Joined already, but this login predates it: the command would change nothing.
        {{usb, QStringLiteral("dialout"), QStringLiteral("root"), 0660, true, false},
         "you have joined group dialout, which may use /dev/ttyUSB0, since you logged in: log out and in",
         "usermod"},
        // In the group, yet the group may not read and write: joining is no fix, the mode is what to mend.
        {{usb, QStringLiteral("dialout"), QStringLiteral("root"), 0600, true, true},
         "/dev/ttyUSB0 (owner root, group dialout, mode 0600) does not let you read and write it", "usermod"},
        {{usb, QStringLiteral("tty"), QString(), 0620, false, false}, "(owner unknown, group tty, mode 0620)",
         "usermod"},
    };
    for (const Case& c : cases) {
        const QString advice = serialPermissionAdvice(c.access);
        EXPECT_TRUE(advice.contains(QLatin1String(c.mustSay))) << advice.toStdString();
        if (c.mustNotSay) {
            EXPECT_FALSE(advice.contains(QLatin1String(c.mustNotSay))) << advice.toStdString();
        }
    }
}

TEST(SerialPermission, TheDeviceIsAskedAndOnlyARefusalGetsAdvice) {
    // A file of ours stands in for the device: its mode and group come from the file system.
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("ttyFAKE"));
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.close();
    ASSERT_TRUE(f.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
    const DeviceAccess a = inspectDeviceAccess(path);
    EXPECT_EQ(a.path, path);
    EXPECT_EQ(a.mode, 0640u);
    const group* mine = ::getgrgid(::getegid());
    ASSERT_NE(mine, nullptr);
    EXPECT_EQ(a.group, QString::fromLocal8Bit(mine->gr_name));
    EXPECT_TRUE(a.processInGroup);
    EXPECT_FALSE(a.owner.isEmpty());
    // A device that isn't there is taken to be of the group serial ports usually have.
    EXPECT_EQ(inspectDeviceAccess(dir.filePath(QStringLiteral("gone"))).group, QStringLiteral("dialout"));

    SimEventLoop loop;
    FakeSerialDevice dev(loop);
    dev.failOpenWith = kSerialOpenFailed;
    dev.failOpenText = QStringLiteral("Invalid argument");
    EXPECT_FALSE(dev.open(path, SerialSettings{}, nullptr, nullptr));
    EXPECT_EQ(describeOpenFailure(dev, dev.failOpenText), QStringLiteral("Invalid argument"));
    dev.failOpenText = QStringLiteral("Permission denied");
    dev.failOpenReason = SerialOpenFailure::PermissionDenied;
    EXPECT_FALSE(dev.open(path, SerialSettings{}, nullptr, nullptr));
    EXPECT_EQ(describeOpenFailure(dev, dev.failOpenText),
              QStringLiteral("Permission denied; ") + serialPermissionAdvice(inspectDeviceAccess(path)));
}

}  // namespace
}  // namespace tv
