#include "services/Convert.h"

#include "services/Errors.h"

#include <cmath>
#include <limits>

namespace tv {

double Val(const QString& text) {
    int i = 0;
    const int n = int(text.size());
    auto skipBlanks = [&] {
        while (i < n && (text[i] == QLatin1Char(' ') || text[i] == QLatin1Char('\t'))) ++i;
    };
    skipBlanks();
    if (i + 1 < n && text[i] == QLatin1Char('&') && text[i + 1].toUpper() == QLatin1Char('H')) {
        i += 2;
        double v = 0;
        bool any = false;
        while (i < n) {
            const int d = QStringLiteral("0123456789ABCDEF").indexOf(text[i].toUpper());
            if (d < 0) break;
            v = v * 16 + d;
            any = true;
            ++i;
        }
        return any ? v : 0;
    }
    QString digits;
    if (i < n && (text[i] == QLatin1Char('-') || text[i] == QLatin1Char('+'))) digits += text[i++];
    bool any = false, point = false;
    for (; i < n; ++i) {
        const QChar c = text[i];
        if (c.isDigit() && c.unicode() < 128) {
            digits += c;
            any = true;
        } else if (c == QLatin1Char('.') && !point) {
            digits += c;
            point = true;
        } else {
            break;
        }
    }
    if (!any) return 0;
    // An exponent counts only when digits follow it.
    if (i < n && (text[i] == QLatin1Char('e') || text[i] == QLatin1Char('E'))) {
        int j = i + 1;
        QString e = QStringLiteral("e");
        if (j < n && (text[j] == QLatin1Char('-') || text[j] == QLatin1Char('+'))) e += text[j++];
        bool expDigits = false;
        while (j < n && text[j].isDigit() && text[j].unicode() < 128) {
            e += text[j++];
            expDigits = true;
        }
        if (expDigits) digits += e;
    }
    bool ok = false;
    const double v = digits.toDouble(&ok);
    return ok && std::isfinite(v) ? v : 0;
}

namespace {
double parseStrict(const QString& text) {
    bool ok = false;
    const QString t = text.trimmed();
    double v = t.toDouble(&ok);
    if (!ok) {
        if (t.startsWith(QLatin1String("&H"), Qt::CaseInsensitive) && t.size() > 2) {
            const qulonglong h = t.mid(2).toULongLong(&ok, 16);
            if (ok) return double(h);
        }
        throw TvError(kErrTypeMismatch, QStringLiteral("\"%1\"").arg(text.left(40)));
    }
    // "inf" and "nan" read as numbers to the library, but they are no quantity anything can be set to.
    if (!std::isfinite(v)) throw TvError(kErrTypeMismatch, QStringLiteral("\"%1\"").arg(text.left(40)));
    return v;
}

// Rounds half to even, as the runtime does.
double roundEven(double v) { return std::nearbyint(v); }
}  // namespace

std::int16_t CInt(double value) {
    const double r = roundEven(value);
    if (!std::isfinite(r) || r < std::numeric_limits<std::int16_t>::min() || r > std::numeric_limits<std::int16_t>::max())
        throw TvError(kErrOverflow);
    return std::int16_t(r);
}

std::int16_t CInt(const QString& text) { return CInt(parseStrict(text)); }

std::int32_t CLng(double value) {
    const double r = roundEven(value);
    if (!std::isfinite(r) || r < std::numeric_limits<std::int32_t>::min() || r > std::numeric_limits<std::int32_t>::max())
        throw TvError(kErrOverflow);
    return std::int32_t(r);
}

std::int32_t CLng(const QString& text) { return CLng(parseStrict(text)); }

double CDbl(const QString& text) { return parseStrict(text); }

void throw_subscript() { throw TvError(kErrSubscript); }

}  // namespace tv
