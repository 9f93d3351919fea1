#include "support/RadioFuzz.h"

#include "coresupport/CoreRig.h"
#include "support/FuzzSupport.h"

#include <QFile>
#include <QRegularExpression>

#include <map>
#include <string>

namespace tv::fuzz {

namespace {
using test::CoreRig;
// The catalogue's line of one model alone: parsing the whole file for every input cost half of each
// run and drowned the coverage of the receive path in the catalogue reader's.
const QString& catalogue(const char* model) {
    static std::map<std::string, QString> lines;
    QString& line = lines[model];
    if (line.isEmpty()) {
        QFile f(QStringLiteral(TOLVANE_SOURCE_DIR "/data/Radios.txt"));
        if (!f.open(QIODevice::ReadOnly)) fail("data/Radios.txt can't be read");
        const QRegularExpression radio(QStringLiteral("^\\s*RADIO\\s*=\\s*.") +
                                           QRegularExpression::escape(QString::fromLatin1(model)) +
                                           QStringLiteral("\\s*(,|$)"),
                                       QRegularExpression::CaseInsensitiveOption);
        for (const QString& l : QString::fromUtf8(f.readAll()).split(QLatin1Char('\n')))
            if (radio.match(l).hasMatch()) line = l.trimmed();
        if (line.isEmpty()) fail("model not in data/Radios.txt", model);
    }
    return line;
}

void command(CoreRig& rig, int n, const uint8_t*& p, const uint8_t* end) {
    CommandQueue& q = rig.queue;
    switch (n % 10) {
        case 0: {
            quint32 v = 0;
            for (int i = 0; i < 3 && p < end; ++i) v = v << 8 | *p++;
            q.SetXcvrFreq(100.0 + double(v % 5999900) / 100.0);
            break;
        }
        case 1: q.SetXcvrMode(n / 10 % 11); break;
        case 2: q.SetXcvrSplit(n & 32); break;
        case 3: q.SetXcvrVFOA(); break;
        case 4: q.SetXcvrVFOB(); break;
        case 5: q.SetXcvrVFOEqual(); break;
        case 6: q.SetXcvrVFOXch(); break;
        case 7: q.SetXcvrDual(n & 32); break;
        case 8: q.SetXcvrFilterGroup(n / 10 % 4); break;
        default: q.SetXcvrSBFreq(7000.0 + n); break;
    }
}
}  // namespace

bool allBcd(const QByteArray& bytes) {
    for (char c : bytes)
        if ((uchar(c) >> 4) > 9 || (uchar(c) & 15) > 9) return false;
    return true;
}

int driveRadio(const std::vector<FuzzModel>& models, const uint8_t* data, size_t size) {
    ensureApp();
    if (size == 0) return 0;
    const FuzzModel& model = models[data[0] % models.size()];
    CoreRig rig(catalogue(model.name));
    rig.view.pollInterval = QStringLiteral("200");
    rig.withRadio(QString::fromLatin1(model.name));
    QByteArray written;
    const uint8_t* p = data + 1;
    const uint8_t* end = data + size;
    while (p < end) {
        const int op = *p >> 6, n = *p & 63;
        ++p;
        switch (op) {
            case 0: {
                const size_t k = std::min<size_t>(size_t(n), size_t(end - p));
                rig.wire(QByteArray(reinterpret_cast<const char*>(p), qsizetype(k)));
                p += k;
                break;
            }
            case 1: rig.loop.advance(n * 25 + 1); break;
            case 2: command(rig, n, p, end); rig.loop.runPosted(); break;
            default: rig.loop.advance(5100); break;
        }
        written += rig.sent();
        FUZZ_CHECK(rig.link.RcvCount >= 0, QByteArray::number(rig.link.RcvCount));
    }
    rig.loop.advance(5100);
    written += rig.sent();
    if (model.check) model.check(written);
    return 0;
}

}  // namespace tv::fuzz
