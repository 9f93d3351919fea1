#include "app/Screenshots.h"

#include "app/Program.h"
#include "windows/qt/Windows.h"

#include <QCoreApplication>
#include <QDir>
#include <QTimer>
#include <QWidget>

#include <utility>

namespace tv {

void TakeScreenshots(Program& program, Windows& windows, const QString& folder) {
    // Pictures for the documentation: every window open, side by side, after the radio has spoken.
    const QString dir = QDir(folder).absolutePath();
    QDir().mkpath(dir);
    program.config.setLeft(program.main.left() + program.main.width() + 20);
    program.config.Show();
    program.messages.setTop(program.main.top() + program.main.height() + 40);
    program.messages.CaptureEnabled.setChecked(true);
    program.messages.Show();
    QTimer::singleShot(2500, [&program] { program.config.ConfigTab.setTab(1); });
    QTimer::singleShot(5000, [&program, &windows, dir] {
        const struct {
            const char* form;
            const char* file;
        } shots[] = {{"KavMain", "main.png"}, {"KavConfig", "config-com.png"}, {"KavMessages", "messages.png"}};
        for (const auto& s : shots)
            if (QWidget* w = windows.window(QString::fromLatin1(s.form)))
                w->grab().save(dir + QLatin1Char('/') + QString::fromLatin1(s.file));
        program.config.ConfigTab.setTab(0);
        QCoreApplication::processEvents();
        if (QWidget* w = windows.window(QStringLiteral("KavConfig"))) w->grab().save(dir + QStringLiteral("/config-general.png"));
        // The station around the radio: the first device's page and the transceivers.
        const std::pair<int, const char*> stationTabs[] = {{2, "/config-device.png"}, {7, "/config-multiradio.png"}};
        for (const auto& [tab, file] : stationTabs) {
            program.config.ConfigTab.setTab(tab);
            QCoreApplication::processEvents();
            if (QWidget* w = windows.window(QStringLiteral("KavConfig"))) w->grab().save(dir + QString::fromLatin1(file));
        }
        // ---- the memory bank, with frequencies and then with notes ----
        if (QWidget* w = windows.window(QStringLiteral("KavMain"))) {
            auto shoot = [&dir, w](const char* file) {
                QCoreApplication::processEvents();
                w->adjustSize();
                QCoreApplication::processEvents();
                w->grab().save(dir + QLatin1Char('/') + QString::fromLatin1(file));
            };
            program.mainLogic.ShowMemoryBanks(true);
            shoot("main-memories.png");
            program.memories.ToggleMemoryNotesDisplay();
            shoot("main-notes.png");
            program.memories.ToggleMemoryNotesDisplay();
            program.mainLogic.ShowMemoryBanks(false);
        }
        program.config.ConfigTab.setTab(6);
        QCoreApplication::processEvents();
        if (QWidget* w = windows.window(QStringLiteral("KavConfig"))) w->grab().save(dir + QStringLiteral("/config-memories.png"));
        // The front doors' tabs.
        for (const char* tab : {"Network", "Loggers"}) {
            program.config.ConfigTab.setTab(program.config.tabIndex(QString::fromLatin1(tab)));
            QCoreApplication::processEvents();
            if (QWidget* w = windows.window(QStringLiteral("KavConfig")))
                w->grab().save(dir + QStringLiteral("/config-%1.png").arg(QString::fromLatin1(tab).toLower()));
        }
        program.FormUnload();
    });
}

}  // namespace tv
