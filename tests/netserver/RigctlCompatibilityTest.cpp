// The rig server as the Linux ham programs meet it: each program's conversation with Debian's rigctld
// (tests/data/rigctl, recorded by scripts/rigctl-transcripts.py) is sent again to Tolvane's server on
// a radio like an IC-7300, and every answer must have the shape of rigctld's: as many lines, the same
// keys, the same RPRT codes, values of the same kind (a whole number where rigctld gives one, a word
// where it gives a word). Where Tolvane answers otherwise on purpose, the transcript says so in "~ "
// lines under rigctld's answer, with the reason in "~#" lines, and Tolvane's answer must be exactly that.

#include "netserver/Rigctl.h"

#include "FakeRig.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

struct Exchange {
    QByteArray line;
    QList<QByteArray> reference;   // rigctld's answer
    QList<QByteArray> deliberate;  // Tolvane's own, where it differs on purpose
};

QList<Exchange> readTranscript(const QString& path) {
    QFile f(path);
    QList<Exchange> out;
    if (!f.open(QIODevice::ReadOnly)) return out;
    for (QByteArray line : f.readAll().split('\n')) {
        if (line.startsWith("> "))
            out.append({line.mid(2), {}, {}});
        else if (line.startsWith("< ") && !out.isEmpty())
            out.back().reference.append(line.mid(2));
        else if (line.startsWith("~ ") && !out.isEmpty())
            out.back().deliberate.append(line.mid(2));
    }
    return out;
}

// What kind of value a word is.
QByteArray kind(const QByteArray& word) {
    static const QRegularExpression integer(QStringLiteral("^-?\\d+$")),
        decimal(QStringLiteral("^-?\\d+\\.\\d+$")), hex(QStringLiteral("^0x[0-9a-fA-F]+$"));
    const QString w = QString::fromLatin1(word);
    if (integer.match(w).hasMatch()) return "int";
    if (decimal.match(w).hasMatch()) return "decimal";
    if (hex.match(w).hasMatch()) return "hex";
    return word.isEmpty() ? "" : "word";
}

// A line reduced to what a client parses: RPRT codes whole, keys whole, values by their kind.
QByteArray shape(const QByteArray& line) {
    if (line.startsWith("RPRT ")) return line;
    const qsizetype colon = line.indexOf(':');
    if (colon > 0) {
        QByteArray out = line.left(colon + 1);
        for (const QByteArray& w : line.mid(colon + 1).simplified().split(' ')) out += ' ' + kind(w);
        return out;
    }
    const QList<QByteArray> words = line.simplified().split(' ');
    if (line.count('=') == 1) return line.left(line.indexOf('=') + 1);  // a free text after its key
    QByteArray out;
    for (const QByteArray& w : words) {
        const qsizetype eq = w.indexOf('=');
        out += (eq > 0 ? w.left(eq + 1) + kind(w.mid(eq + 1)) : kind(w)) + ' ';
    }
    return out;
}

QList<QByteArray> keysOf(const QList<QByteArray>& lines, char mark) {
    QList<QByteArray> keys;
    for (const QByteArray& l : lines)
        if (const qsizetype at = l.indexOf(mark); at > 0 && (mark != ':' || l.startsWith("Can ")))
            keys.append(l.left(at));
    return keys;
}

// The state and capability dumps differ with the radio in their length; what clients parse from them
// must be there.
void compareDump(const Exchange& e, const QList<QByteArray>& got) {
    ASSERT_FALSE(got.isEmpty());
    ASSERT_FALSE(e.reference.isEmpty()) << "rigctld gave no dump for " << e.line.toStdString();
    EXPECT_EQ(got.back(), e.reference.back()) << e.line.toStdString();
    if (e.line.contains("dump_state")) {
        // The protocol's version, then the key=value lines in rigctld's order.
        EXPECT_EQ(got.value(e.line.startsWith('+') ? 1 : 0),
                  e.reference.value(e.line.startsWith('+') ? 1 : 0));
        const QList<QByteArray> ours = keysOf(got, '='), theirs = keysOf(e.reference, '=');
        qsizetype from = 0;
        for (const QByteArray& k : ours) {
            const qsizetype at = theirs.indexOf(k, from);
            EXPECT_GE(at, 0) << "key " << k.toStdString() << " missing from rigctld's, or out of its order";
            from = std::max(from, at);
        }
        EXPECT_TRUE(got.contains("done"));
    } else {
        EXPECT_EQ(keysOf(got, ':'), keysOf(e.reference, ':')) << "the Can ...: lines";
    }
}

class RigctlCompatibility : public ::testing::TestWithParam<QString> {};

TEST_P(RigctlCompatibility, AnswersHaveTheShapeOfRigctldsForEveryLineTheClientSends) {
    const QString path = QStringLiteral(TOLVANE_SOURCE_DIR "/tests/data/rigctl/") + GetParam() + ".txt";
    const QList<Exchange> transcript = readTranscript(path);
    ASSERT_FALSE(transcript.isEmpty()) << path.toStdString();
    FakeRig rig;  // an IC-7300 as the program shows it
    auto session = std::make_unique<RigctlSession>(rig, QStringLiteral("Tolvane 1.0"));
    for (const Exchange& e : transcript) {
        if (session->closing()) session = std::make_unique<RigctlSession>(rig, QStringLiteral("Tolvane 1.0"));
        QByteArray answer = session->answer(e.line);
        QList<QByteArray> got = answer.split('\n');
        if (got.back().isEmpty()) got.removeLast();
        if (!e.deliberate.isEmpty()) {
            EXPECT_EQ(got, e.deliberate) << e.line.toStdString();
            continue;
        }
        if (e.line.contains("dump_state") || e.line.contains("dump_caps")) {
            compareDump(e, got);
            continue;
        }
        QList<QByteArray> want;
        for (const QByteArray& l : e.reference) want.append(shape(l));
        QList<QByteArray> have;
        for (const QByteArray& l : got) have.append(shape(l));
        EXPECT_EQ(have, want) << e.line.toStdString() << "\nTolvane:\n" << answer.toStdString();
    }
}

QStringList transcripts() {
    QStringList names;
    for (const QString& f : QDir(QStringLiteral(TOLVANE_SOURCE_DIR "/tests/data/rigctl"))
                                .entryList({QStringLiteral("*.txt")}, QDir::Files, QDir::Name))
        names << f.chopped(4);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Clients, RigctlCompatibility, ::testing::ValuesIn(transcripts()),
                         [](const auto& info) { return info.param.toStdString(); });

}  // namespace
}  // namespace tv::test
