#include "app/MemoryCommands.h"

#include "core/RadioCatalogue.h"
#include "operating/MemoryFile.h"
#include "platform/QtEventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Errors.h"

#include <QDir>
#include <QLocale>

namespace tv {

namespace {

void say(std::FILE* f, const QString& text) {
    std::fprintf(f, "%s\n", text.toLocal8Bit().constData());
    std::fflush(f);
}

// An export carries filter groups only for a radio that has them, as the window's export does.
bool storedRadioHasFilterGroups(const SettingsStore& store, const QString& appDir) {
    RadioCatalogue catalogue;
    if (catalogue.load(appDir + QStringLiteral("/Radios.txt")).fatal) return false;
    const QString radio = store.GetSetting(QStringLiteral("General"), QStringLiteral("Radio"), QString()).trimmed().toUpper();
    for (int i = 0; i < catalogue.count(); ++i)
        if (catalogue.at(i).model == radio) return catalogue.at(i).filterGroups;
    return false;
}

}  // namespace

int RunMemoryCommand(const MemoryCommand& command, std::FILE* out, std::FILE* err) {
    QDir().mkpath(command.configDir);
    // Writes are gathered on the loop and go out in one replacement of the file at the flush below.
    QtEventLoop loop;
    SettingsStore store(command.configDir + QStringLiteral("/Tolvane.ini"), &loop);
    const QLocale locale = QLocale::system();
    MemoryTable table;
    for (int n = 1; n <= kMemoryCount; ++n) table[size_t(n)] = LoadMemoryRow(store, n, locale);
    try {
        if (command.kind == MemoryCommand::Export) {
            ExportMemoryFile(command.file, table, storedRadioHasFilterGroups(store, command.appDir));
            int count = 0;
            for (int n = 1; n <= kMemoryCount; ++n) count += table[size_t(n)].freq.isEmpty() ? 0 : 1;
            say(out, QStringLiteral("exported %1 memories to %2").arg(count).arg(command.file));
            return 0;
        }
        const MemoryTable before = table;
        QString errorsPath;
        const MemoryImportResult result = ImportMemoryFile(command.file, table, &errorsPath);
        int changed = 0;
        for (int n = 1; n <= kMemoryCount; ++n)
            if (!(table[size_t(n)] == before[size_t(n)])) {
                SaveMemoryRow(store, n, table[size_t(n)], locale);
                ++changed;
            }
        if (!store.flush()) {
            say(err, QStringLiteral("tolvane: the settings in %1 could not be written").arg(store.path()));
            return 2;
        }
        say(out, QStringLiteral("imported %1; %2 %3 changed")
                      .arg(command.file)
                      .arg(changed)
                      .arg(changed == 1 ? QStringLiteral("memory") : QStringLiteral("memories")));
        int code = 0;
        if (!errorsPath.isEmpty()) {
            say(out, QStringLiteral("%1 %2 not be read: see %3")
                         .arg(result.errors.size())
                         .arg(result.errors.size() == 1 ? QStringLiteral("line could") : QStringLiteral("lines could"))
                         .arg(errorsPath));
            code = 1;
        }
        if (result.failure) {
            say(err, QStringLiteral("tolvane: the import ended at the line \"%1\": %2").arg(result.failedLine, result.failureText));
            code = 1;
        }
        return code;
    } catch (const TvError& e) {
        say(err, QStringLiteral("tolvane: ") + e.description());
        return 2;
    }
}

}  // namespace tv
