// Radios.txt: one radio a line, "TAG = value" pairs separated by commas, the first tag RADIO. Operators
// edit this file by hand, so the parser takes whatever it is given and never reads past a line's end.

#include "core/RadioCatalogue.h"

#include "services/Convert.h"
#include "services/Errors.h"

#include <QFile>

namespace tv {

namespace {

const QString kRadioTag = QStringLiteral("RADIO");
const QString kAddressTag = QStringLiteral("ADDRESS");

bool isCommentLine(QStringView line) {
    for (QChar c : line) {
        if (!c.isSpace()) return c == QLatin1Char('\'');
    }
    return false;
}

// Lines end in LF, CR LF or a lone CR, whichever editor wrote the file.
qsizetype lineEnd(QStringView text) {
    qsizetype end = 0;
    while (end < text.size() && text[end] != QLatin1Char('\n') && text[end] != QLatin1Char('\r')) ++end;
    return end;
}

qsizetype lineBreakLength(QStringView textAtBreak) {
    if (textAtBreak.startsWith(QLatin1String("\r\n"))) return 2;
    return textAtBreak.isEmpty() ? 0 : 1;
}

void applyTag(RadioInfo& radio, const QString& tag, const QString& value) {
    for (const CatalogueTag& t : kCatalogueFlags) {
        if (tag == QLatin1String(t.tag)) {
            // Only the first letter counts, so "Y" or "yes" means false.
            radio.*t.flag = value.startsWith(QLatin1String("T"));
            return;
        }
    }
    if (tag == kAddressTag) radio.defaultAddress = value;
    // Anything else is a tag of some other version of the file: ignored.
}

}  // namespace

RadioCatalogue::LoadResult RadioCatalogue::load(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        radios_.clear();
        LoadResult result;
        result.fatal = true;
        result.fatalMessage =
            QStringLiteral("Terminating due to inability to open radio configuration file: ") + path;
        return result;
    }
    return parse(QString::fromUtf8(file.readAll()));
}

RadioCatalogue::LoadResult RadioCatalogue::parse(const QString& text) {
    radios_.clear();
    LoadResult result;
    QStringView rest(text);
    if (rest.startsWith(QChar(0xFEFF))) rest = rest.mid(1);
    try {
        while (!rest.isEmpty()) {
            const qsizetype end = lineEnd(rest);
            if (!parseLine(rest.left(end), result)) break;
            rest = rest.mid(end + lineBreakLength(rest.mid(end)));
        }
    } catch (const TvError& e) {
        // Only the 257th radio raises: the radios so far stay, the rest of the file isn't read.
        result.errorNumber = e.number();
        result.errorReports << e.description();
        result.boxMessages << (e.detail().isEmpty() ? e.description() : e.detail());
    }
    return result;
}

bool RadioCatalogue::parseLine(QStringView line, LoadResult& result) {
    if (line.isEmpty() || isCommentLine(line)) return true;
    QString work = line.toString();
    if (!work.endsWith(QLatin1Char(','))) work += QLatin1Char(',');

    // pos is where the rest of the line starts; eq stays the first "=" of the rest until passed, so a long
    // line is read once and not searched again for each pair.
    qsizetype pos = 0;
    qsizetype eq = work.indexOf(QLatin1Char('='));
    RadioInfo* radio = nullptr;
    while (eq >= 0) {
        const qsizetype comma = work.indexOf(QLatin1Char(','), pos);
        if (comma < 0) {
            // The rest always ends in the comma above, so this can't happen; kept so that a change to the
            // line handling can't make the parser read past the end.
            result.errorNumber = kErrInvalidCall;
            result.errorReports << QStringLiteral("parser error - no ',':") + line.toString();
            return false;
        }
        // A comma ahead of the "=" would be part of the tag, and no tag holds one: the piece is passed over.
        const bool tagHoldsComma = comma < eq;
        const QString tag = tagHoldsComma ? QString() : work.mid(pos, eq - pos).trimmed().toUpper();
        if (!radio) {
            if (tagHoldsComma || tag != kRadioTag) {
                result.boxMessages << QStringLiteral("Error in Radios.txt file: First tag must be Radio - ") +
                                          line.toString();
                return false;
            }
            const QString value = work.mid(eq + 1, comma - eq - 1).trimmed().toUpper();
            if (count() >= kMaxRadios)
                throw TvError(kErrSubscript, QStringLiteral("Radios.txt holds more than %1 radios; \"%2\" and the "
                                                            "radios after it are not offered")
                                                 .arg(kMaxRadios)
                                                 .arg(line.toString().trimmed().left(60)));
            radios_.emplace_back();
            radio = &radios_.back();
            if (!value.isEmpty()) radio->supplier = value.at(0);
            radio->model = value.mid(1);
            radio->comboName = radio->model;
        } else if (!tagHoldsComma) {
            applyTag(*radio, tag, work.mid(eq + 1, comma - eq - 1).trimmed().toUpper());
        }
        pos = comma + 1;
        if (eq < pos) eq = work.indexOf(QLatin1Char('='), pos);
    }
    return true;
}

const RadioInfo& RadioCatalogue::at(int index) const {
    CheckSubscript(index, 0, count() - 1);
    return radios_[std::size_t(index)];
}

RadioInfo& RadioCatalogue::at(int index) {
    CheckSubscript(index, 0, count() - 1);
    return radios_[std::size_t(index)];
}

QStringList RadioCatalogue::names() const {
    QStringList list;
    list.reserve(count());
    for (const RadioInfo& r : radios_) list << r.comboName;
    return list;
}

}  // namespace tv
