#include "automation/DeviceFile.h"

#include "services/Common.h"
#include "services/Convert.h"
#include "services/Errors.h"

#include <QLocale>

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace tv {

QString GetDeviceData(QString& line) {
    const qsizetype comma = line.indexOf(QLatin1Char(','));
    if (comma < 0) {
        QString all = line;
        line.clear();
        return all;
    }
    QString field = line.left(comma);
    line.remove(0, comma + 1);
    return field;
}

namespace {

// The file's lines; a last line break doesn't start another (empty) line.
QStringList fileLines(const QByteArray& bytes) {
    QStringList lines = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
    if (!lines.isEmpty() && lines.last().isEmpty()) lines.removeLast();
    // Every carriage return before a line's end: a file converted twice ends lines in CR CR LF.
    for (QString& l : lines)
        while (l.endsWith(QLatin1Char('\r'))) l.chop(1);
    return lines;
}

}  // namespace

DeviceFileContents ReadDeviceFile(const QByteArray& bytes, const QString& filename, int device,
                                  QChar decimalSeparator) {
    DeviceFileContents out;
    const QStringList lines = fileLines(bytes);
    if (lines.isEmpty()) return out;
    out.header = lines.first();
    QString header = out.header;
    while (out.controlNames.size() < 3) {
        const QString name = GetDeviceData(header);
        if (name.isEmpty()) break;
        out.controlNames << name;
    }
    for (qsizetype i = 1; i < lines.size(); ++i) {
        if (int(out.rows.size()) >= kMaxDeviceRows) {
            out.message = QStringLiteral("too many frequency entries in ") + filename +
                          QStringLiteral(" for device ") + QString::number(device) +
                          QStringLiteral(" -- excess ignored");
            break;
        }
        QString rest = lines[i];
        const QString freq = GetDeviceData(rest);
        if (freq.isEmpty() || !IsReal(freq, decimalSeparator)) {
            out.message =
                QStringLiteral("aborting device data load operation - missing or invalid frequency: ") +
                lines[i];
            break;
        }
        GridRow row{freq};
        for (int c = 1; c <= 3; ++c) row.push_back(GetDeviceData(rest));
        out.rows.push_back(std::move(row));
        out.recordLines << lines[i];
    }
    return out;
}

QByteArray WriteDeviceFile(int n, const QStringList& controlNames, const std::vector<GridRow>& rows) {
    QString out;
    auto name = [&](int i) { return i < controlNames.size() ? controlNames[i] : QString(); };
    auto cell = [](const GridRow& r, int c) { return size_t(c) < r.size() ? r[size_t(c)] : QString(); };
    if (n >= 1) {
        out += name(0);
        if (n >= 2) out += QLatin1Char(',') + name(1);
        if (n >= 3) out += QLatin1Char(',') + name(2);
        out += QLatin1Char('\n');
        for (const GridRow& r : rows) {
            out += cell(r, 0) + QLatin1Char(',') + cell(r, 1);
            if (n >= 2) out += QLatin1Char(',') + cell(r, 2);
            if (n >= 3) out += QLatin1Char(',') + cell(r, 3);
            out += QLatin1Char('\n');
        }
    }
    return out.toUtf8();
}

float DeviceFrequency(const QString& text) {
    QString t = text.trimmed();
    const QString point = QLocale().decimalPoint();
    if (!point.isEmpty() && point != QLatin1String(".")) t.replace(point, QStringLiteral("."));
    bool ok = false;
    const double v = t.toDouble(&ok);
    if (!ok) throw TvError(kErrTypeMismatch, text);
    if (!std::isfinite(v) || std::fabs(v) > double(FLT_MAX)) throw TvError(kErrOverflow, text);
    return float(v);
}

void SortDeviceRows(std::vector<GridRow>& rows) {
    struct Key {
        bool number;
        float value;
        size_t index;
    };
    std::vector<Key> keys;
    keys.reserve(rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        Key k{true, 0, i};
        try {
            k.value = DeviceFrequency(rows[i].empty() ? QString() : rows[i][0]);
        } catch (const TvError&) {
            k.number = false;
        }
        keys.push_back(k);
    }
    std::stable_sort(keys.begin(), keys.end(), [](const Key& a, const Key& b) {
        if (a.number != b.number) return a.number;
        return a.number && a.value < b.value;
    });
    std::vector<GridRow> sorted;
    sorted.reserve(rows.size());
    for (const Key& k : keys) sorted.push_back(std::move(rows[k.index]));
    rows = std::move(sorted);
}

bool DeviceRowHasValues(const GridRow& row, int n) {
    auto filled = [&](int c) { return size_t(c) < row.size() && !row[size_t(c)].isEmpty(); };
    if (n == 0) return true;
    if (n == 1) return filled(1);
    if (n == 2) return filled(1) || filled(2);
    return filled(1) || filled(2) || filled(3);
}

int FindDeviceRow(const std::vector<GridRow>& rows, int depth, int n, double tolerancePercent,
                  double radioFreq) {
    const float tol = float(tolerancePercent / 100.0 * radioFreq);
    const float radio = float(radioFreq);
    const long long last = std::min<long long>(depth, (long long)rows.size()) - 1;
    auto frequencyAt = [&](int r) {
        CheckSubscript(r, 0, last);
        const GridRow& row = rows[size_t(r)];
        return DeviceFrequency(row.empty() ? QString() : row[0]);
    };
    auto usable = [&](int r) { return DeviceRowHasValues(rows[size_t(r)], n); };
    bool found = false;
    int best = -1, prev = -1, lo = 0, hi = depth - 1, mid = 0;
    float dist = 0;
    // Bisection: the rows are ascending, so a row within the tolerance is found in a few steps.
    for (;;) {
        // Half way, an exact half going to the even neighbour.
        mid = int(std::nearbyint(double(lo + hi) / 2.0));
        const float f = frequencyAt(mid);
        dist = std::fabs(f - radio);
        if (dist <= tol) {
            found = true;
            if (usable(mid))
                best = mid;
            else
                dist = tol;
            break;
        }
        if (mid == prev) break;
        prev = mid;
        if (radio <= f)
            hi = mid;
        else
            lo = mid;
    }
    if (!found) return -1;
    // A nearer usable row may lie on either side of the one the bisection hit; a tie stays with the
    // row found first.
    for (int r = mid + 1; r <= depth - 1; ++r) {
        const float d = std::fabs(frequencyAt(r) - radio);
        if (d > tol) break;
        if (d < dist && usable(r)) {
            dist = d;
            best = r;
        }
    }
    for (int r = mid - 1; r >= 0; --r) {
        const float d = std::fabs(frequencyAt(r) - radio);
        if (d > tol) break;
        if (d < dist && usable(r)) {
            dist = d;
            best = r;
        }
    }
    return best;
}

}  // namespace tv
