#include "platform/SettingsStore.h"

#include "platform/EventLoop.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStringConverter>
#include <QTextStream>

#include <algorithm>
#include <memory>
#include <unistd.h>

namespace tv {

namespace {
// A save writes "<name>.XXXXXX" beside the file and renames it over; one killed in between leaves it.
// Only old ones go: another instance on the same folder may be between the two steps right now.
constexpr qint64 kStaleTemporarySeconds = 60;

void removeStaleTemporaries(const QString& path) {
    const QFileInfo file(path);
    const QDir dir = file.absoluteDir();
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-kStaleTemporarySeconds);
    const QRegularExpression temporary(QStringLiteral("^") + QRegularExpression::escape(file.fileName()) +
                                       QStringLiteral("\\.[A-Za-z0-9]{6}$"));
    for (const QFileInfo& f : dir.entryInfoList({file.fileName() + QStringLiteral(".??????")}, QDir::Files | QDir::Hidden))
        if (temporary.match(f.fileName()).hasMatch() && f.lastModified().toUTC() < before) QFile::remove(f.filePath());
}
}  // namespace

SettingsStore::SettingsStore(QString path, EventLoop* loop)
    : path_(std::move(path)), loop_(loop), alive_(std::make_shared<bool>(true)) {
    removeStaleTemporaries(path_);
    load();
}

SettingsStore::~SettingsStore() {
    *alive_ = false;
    // A last try, told to nobody: whoever listened may already be gone.
    onWriteFailure = nullptr;
    flush();
}

namespace {
// Whatever a read trims from a line's ends: a form feed or a no-break space as much as a blank.
bool isBlank(QChar c) { return c.isSpace(); }

// Backslash escapes for what a line can't hold.
QString escapeText(const QString& v) {
    QString out;
    out.reserve(v.size());
    for (QChar c : v) {
        if (c == QLatin1Char('\\'))
            out += QLatin1String("\\\\");
        else if (c == QLatin1Char('\n'))
            out += QLatin1String("\\n");
        else if (c == QLatin1Char('\r'))
            out += QLatin1String("\\r");
        else if (c == QChar(0))
            out += QLatin1String("\\0");
        else
            out += c;
    }
    return out;
}

QString unescapeText(QStringView v) {
    QString out;
    out.reserve(v.size());
    for (qsizetype i = 0; i < v.size(); ++i) {
        QChar c = v[i];
        if (c != QLatin1Char('\\') || i + 1 >= v.size()) {
            out += c;
            continue;
        }
        QChar n = v[++i];
        if (n == QLatin1Char('n'))
            out += QLatin1Char('\n');
        else if (n == QLatin1Char('r'))
            out += QLatin1Char('\r');
        else if (n == QLatin1Char('t'))
            out += QLatin1Char('\t');
        else if (n == QLatin1Char('0'))
            out += QChar(0);
        else
            out += n;  // "\\", "\"" and any unknown escape stand for the character itself
    }
    return out;
}
}  // namespace

QString SettingsStore::escapeValue(const QString& v) {
    const QString text = escapeText(v);
    // Blanks at either end would be taken for layout, and a leading quote for quoting: such a value
    // goes in quotes, as QSettings writes it.
    if (text.isEmpty() || (!isBlank(text.front()) && !isBlank(text.back()) && text.front() != QLatin1Char('"')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString SettingsStore::unescapeValue(const QString& raw) {
    const QString t = raw.trimmed();
    if (t.size() >= 2 && t.front() == QLatin1Char('"')) {
        // Quoted when the first quote that isn't escaped closes it at the very end.
        qsizetype i = 1;
        while (i < t.size() && t[i] != QLatin1Char('"')) i += t[i] == QLatin1Char('\\') ? 2 : 1;
        if (i == t.size() - 1) return unescapeText(QStringView(t).mid(1, t.size() - 2));
    }
    return unescapeText(t);
}

namespace {
// Keys are escaped like values, and also where INI syntax would misread them: an '=', a leading
// '[', ';', '#' or blank, a trailing blank.
QString escapeKey(const QString& k) {
    QString out;
    for (int i = 0; i < k.size(); ++i) {
        const QChar c = k[i];
        const bool edge = (i == 0 && (c == QLatin1Char('[') || c == QLatin1Char(';') || c == QLatin1Char('#'))) ||
                          ((i == 0 || i == k.size() - 1) && c.isSpace() && c != QLatin1Char('\n') && c != QLatin1Char('\r'));
        if (c == QLatin1Char('=') || edge) out += QLatin1Char('\\');
        out += escapeText(QString(c));
    }
    return out;
}

// The position of the first '=' that isn't escaped, or -1.
int keyEnd(const QString& line) {
    for (int i = 0; i < line.size(); ++i) {
        if (line[i] == QLatin1Char('\\')) {
            ++i;
            continue;
        }
        if (line[i] == QLatin1Char('=')) return i;
    }
    return -1;
}

// Blanks around a hand-written key go, escaped ones stay.
QString trimKey(const QString& raw) {
    int b = 0, e = int(raw.size());
    while (b < e && raw[b].isSpace()) ++b;
    while (e > b && raw[e - 1].isSpace() && !(e - 2 >= b && raw[e - 2] == QLatin1Char('\\'))) --e;
    return raw.mid(b, e - b);
}

// Sections and keys are one whether written in upper or lower case.
QString folded(const QString& name) { return name.toCaseFolded(); }
}  // namespace

SettingsStore::Entry* SettingsStore::Section::find(const QString& key) {
    const auto it = index.constFind(folded(key));
    return it == index.constEnd() ? nullptr : &entries[*it];
}

const SettingsStore::Entry* SettingsStore::Section::find(const QString& key) const {
    return const_cast<Section*>(this)->find(key);
}

bool SettingsStore::Section::set(const QString& key, const QString& value) {
    if (Entry* e = find(key)) {
        if (e->value == value) return false;
        e->value = value;
        return true;
    }
    index.insert(folded(key), entries.size());
    entries.push_back({key, value});
    return true;
}

void SettingsStore::load() {
    QFile f(path_);
    if (!f.exists()) return;
    if (!f.open(QIODevice::ReadOnly)) {
        loadProblem_ = QStringLiteral("cannot read %1: %2").arg(path_, f.errorString());
        keepCorruptCopy_ = true;
        return;
    }
    const QByteArray raw = f.readAll();
    auto toUtf16 = QStringDecoder(QStringDecoder::Utf8);
    const QString text = toUtf16(raw);
    int bad = 0;
    if (toUtf16.hasError()) ++bad;
    Section* current = nullptr;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (QString line : lines) {
        if (line.endsWith(QLatin1Char('\r'))) line.chop(1);
        const QString t = line.trimmed();
        if (t.isEmpty() || t.startsWith(QLatin1Char(';')) || t.startsWith(QLatin1Char('#'))) continue;
        if (t.startsWith(QLatin1Char('['))) {
            if (!t.endsWith(QLatin1Char(']')) || t.size() < 2) {
                ++bad;
                current = nullptr;
                continue;
            }
            // "[ ]" is a section too: one whose name is blank.
            current = &section(t.mid(1, t.size() - 2).trimmed());
            continue;
        }
        const int eq = keyEnd(line);
        const QString key = eq > 0 ? unescapeText(trimKey(line.left(eq))) : QString();
        if (!current || key.isEmpty() || line.contains(QChar(0))) {
            ++bad;
            continue;
        }
        // A later line of the same key wins, as it would in any INI reader.
        current->set(key, unescapeValue(line.mid(eq + 1)));
    }
    if (bad > 0) {
        loadProblem_ = QStringLiteral("%1 line(s) of %2 could not be read and were skipped").arg(bad).arg(path_);
        keepCorruptCopy_ = true;
        // Salvaged: what could be read is written back (the original kept beside) at the next flush,
        // so the same damage isn't met again at every start.
        dirty_ = true;
    }
}

SettingsStore::Section* SettingsStore::findSection(const QString& name) {
    const auto it = sectionIndex_.constFind(folded(name));
    return it == sectionIndex_.constEnd() ? nullptr : &sections_[*it];
}

const SettingsStore::Section* SettingsStore::findSection(const QString& name) const {
    return const_cast<SettingsStore*>(this)->findSection(name);
}

SettingsStore::Section& SettingsStore::section(const QString& name) {
    if (Section* s = findSection(name)) return *s;
    sectionIndex_.insert(folded(name), sections_.size());
    sections_.push_back({name, {}, {}});
    return sections_.back();
}

QString SettingsStore::GetSetting(const QString& section, const QString& key, const QString& defaultValue) const {
    if (const Section* s = findSection(section))
        if (const Entry* e = s->find(key)) return e->value;
    return defaultValue;
}

bool SettingsStore::contains(const QString& section, const QString& key) const {
    const Section* s = findSection(section);
    return s && s->find(key);
}

QStringList SettingsStore::keys(const QString& section) const {
    QStringList out;
    if (const Section* s = findSection(section))
        for (const auto& e : s->entries) out << e.key;
    return out;
}

void SettingsStore::SaveSetting(const QString& sectionName, const QString& key, const QString& value) {
    if (key.isEmpty()) return;  // nothing could ever read it back
    if (section(sectionName).set(key, value)) scheduleFlush();
}

void SettingsStore::DeleteSetting(const QString& sectionName, const QString& key) {
    Section* s = findSection(sectionName);
    if (!s || !s->find(key)) return;
    const QString gone = folded(key);
    s->entries.erase(std::remove_if(s->entries.begin(), s->entries.end(),
                                    [&](const Entry& e) { return folded(e.key) == gone; }),
                     s->entries.end());
    s->index.clear();
    for (std::size_t i = 0; i < s->entries.size(); ++i) s->index.insert(folded(s->entries[i].key), i);
    scheduleFlush();
}

void SettingsStore::scheduleFlush() {
    dirty_ = true;
    if (!loop_) {
        flush();
        return;
    }
    if (flushPosted_) return;
    flushPosted_ = true;
    std::weak_ptr<bool> alive = alive_;
    loop_->post([this, alive] {
        auto a = alive.lock();
        if (!a || !*a) return;
        flushPosted_ = false;
        flush();
    });
}

bool SettingsStore::flush() {
    if (!dirty_) return true;
    QFileInfo info(path_);
    QDir().mkpath(info.absolutePath());
    if (keepCorruptCopy_ && info.exists()) {
        // Keep what we could not read, so that nothing the operator had is lost by our rewrite.
        const QString copy = corruptCopyPath();
        QFile::remove(copy);
        // A file we could not read at all can't be copied either: move it aside, so the rewrite below
        // doesn't replace it. When neither works, the original stays and nothing is written over it.
        if (!QFile::copy(path_, copy) && !QFile::rename(path_, copy)) {
            if (!failing_ && onWriteFailure) onWriteFailure(QStringLiteral("cannot keep a copy of %1 as %2").arg(path_, copy));
            failing_ = true;
            return false;
        }
    }
    keepCorruptCopy_ = false;
    QString text;
    for (const auto& s : sections_) {
        if (s.entries.empty()) continue;
        text += QLatin1Char('[') + s.name + QLatin1String("]\n");
        for (const auto& e : s.entries) text += escapeKey(e.key) + QLatin1Char('=') + escapeValue(e.value) + QLatin1Char('\n');
        text += QLatin1Char('\n');
    }
    QSaveFile f(path_);
    bool ok = f.open(QIODevice::WriteOnly);
    if (ok) ok = f.write(text.toUtf8()) >= 0;
    // On disk before the rename; a file system without fsync (tmpfs) still renames atomically.
    if (ok && f.flush()) ::fsync(f.handle());
    if (ok) ok = f.commit();
    if (!ok) {
        // Every later change would fail the same way: one word until a write goes through again.
        if (!failing_ && onWriteFailure) onWriteFailure(QStringLiteral("cannot write %1: %2").arg(path_, f.errorString()));
        failing_ = true;
        return false;
    }
    failing_ = false;
    dirty_ = false;
    return true;
}

}  // namespace tv
