#pragma once
// The settings store: sections of keys with text values, in one INI file. Sections and keys are found
// without regard to case (the first spelling written is the one kept). Every read names its default.
// A write reaches the disk within one turn of the loop, by replacing the whole file atomically, so that
// a crash or a full disk never leaves half a file.

#include <QString>
#include <QStringList>

#include <functional>
#include <map>
#include <vector>

namespace tv {

class EventLoop;

class SettingsStore {
public:
    // With a loop, writes are gathered and flushed by work posted on it; without, each write goes out at once.
    SettingsStore(QString path, EventLoop* loop);
    ~SettingsStore();
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    QString GetSetting(const QString& section, const QString& key, const QString& defaultValue) const;
    void SaveSetting(const QString& section, const QString& key, const QString& value);
    void DeleteSetting(const QString& section, const QString& key);
    bool contains(const QString& section, const QString& key) const;
    QStringList keys(const QString& section) const;

    // Writes pending changes now. Returns false (and keeps them pending) when the file can't be written.
    bool flush();
    bool dirty() const { return dirty_; }
    QString path() const { return path_; }
    // What was wrong with the file when it was read ("" when nothing was); lines that made no sense are
    // skipped, and the original is kept beside as "<file>.corrupt" before it is first rewritten.
    QString loadProblem() const { return loadProblem_; }
    // Told of each failure to write, with a description.
    std::function<void(const QString&)> onWriteFailure;

    // The text of an INI file for these sections (exposed for tests of the format).
    static QString escapeValue(const QString& v);
    static QString unescapeValue(const QString& v);

private:
    struct Entry {
        QString key;
        QString value;
    };
    struct Section {
        QString name;
        std::vector<Entry> entries;
    };
    void load();
    Section* findSection(const QString& name);
    const Section* findSection(const QString& name) const;
    void scheduleFlush();

    QString path_;
    EventLoop* loop_;
    std::vector<Section> sections_;
    bool dirty_ = false;
    bool flushPosted_ = false;
    bool keepCorruptCopy_ = false;
    QString loadProblem_;
    std::shared_ptr<bool> alive_;
};

}  // namespace tv
