#include "core/FilterGroups.h"

#include <QStringList>

namespace tv {

std::vector<FilterGroupRow> ParseFilterGroupText(const QString& text) {
    std::vector<FilterGroupRow> rows;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (QString line : lines) {
        // Every carriage return before the line's end: a file converted twice ends lines in CR CR LF.
        while (line.endsWith(QLatin1Char('\r'))) line.chop(1);
        if (line.isEmpty()) continue;
        // No quoting: every comma ends a field, whatever it stood in.
        const QStringList fields = line.split(QLatin1Char(','));
        FilterGroupRow row;
        for (int c = 0; c < int(row.size()) && c < fields.size(); ++c) row[size_t(c)] = fields[c];
        rows.push_back(row);
    }
    return rows;
}

QString FormatFilterGroupText(const std::vector<FilterGroupRow>& rows) {
    QString out;
    for (const FilterGroupRow& r : rows) {
        for (size_t c = 0; c < r.size(); ++c) {
            if (c) out += QLatin1Char(',');
            out += r[c];
        }
        out += QLatin1Char('\n');
    }
    return out;
}

int FilterChoiceByStatus(const std::vector<FilterChoice>& list, int status) {
    for (size_t i = 0; i < list.size(); ++i)
        if (list[i].status == status) return int(i);
    return -1;
}

}  // namespace tv
