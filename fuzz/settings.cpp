// Tolvane.ini as found on disk: any bytes load, and a value saved into it reads back after a reload.
#include "platform/SettingsStore.h"
#include "support/FuzzSupport.h"

#include <QFile>
#include <QTemporaryDir>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::fuzz::ensureApp();
    static QTemporaryDir dir;
    const QString path = dir.path() + QStringLiteral("/Tolvane.ini");
    {
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) return 0;
        f.write(reinterpret_cast<const char*>(data), qsizetype(size));
    }
    const QString value = QStringLiteral("14025.5 USB");
    {
        tv::SettingsStore s(path, nullptr);
        s.GetSetting(QStringLiteral("General"), QStringLiteral("Radio"), QString());
        s.SaveSetting(QStringLiteral("General"), QStringLiteral("FuzzKey"), value);
        s.flush();
    }
    tv::SettingsStore again(path, nullptr);
    const QString back = again.GetSetting(QStringLiteral("General"), QStringLiteral("FuzzKey"), QString());
    FUZZ_CHECK(back == value, QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    return 0;
}
