#pragma once
// The settings store: sections of keys with text values, in one INI file. Sections and keys are found
// without regard to case (the first spelling written is the one kept). Every read names its default.
// A write reaches the disk within one turn of the loop, by replacing the whole file atomically, so that
// a crash or a full disk never leaves half a file.

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
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
    // skipped, and the original is kept beside as "<file>.corrupt" when it is rewritten with what could be
    // read, at the next flush.
    QString loadProblem() const { return loadProblem_; }
    QString corruptCopyPath() const { return path_ + QStringLiteral(".corrupt"); }
    // Told when writing starts to fail, with a description; not again until a write has succeeded.
    // Never called from the destructor, whose owner may be half gone by then.
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
        QHash<QString, std::size_t> index;  // case-folded key -> position in entries
        Entry* find(const QString& key);
        const Entry* find(const QString& key) const;
        // Sets the value, adding the key when new; false when it already had that value.
        bool set(const QString& key, const QString& value);
    };
    void load();
    Section* findSection(const QString& name);
    const Section* findSection(const QString& name) const;
    Section& section(const QString& name);
    void scheduleFlush();

    QString path_;
    EventLoop* loop_;
    std::vector<Section> sections_;
    QHash<QString, std::size_t> sectionIndex_;  // case-folded name -> position in sections_
    bool dirty_ = false;
    bool failing_ = false;
    bool flushPosted_ = false;
    bool keepCorruptCopy_ = false;
    QString loadProblem_;
    std::shared_ptr<bool> alive_;
};

}  // namespace tv
