// The user-sequence language: the input's lines are the steps of the first sequences (a 0x01 byte
// starts the next one), then each runs; the program is left running and the radio's frequency finite.
// A sequence may loop for ever by design, so a jump that isn't forward ends the sequence here instead.
#include "support/FuzzSupport.h"
#include "support/ProgramFuzz.h"

#include <cmath>

namespace {
QString forwardOnly(const QString& step, int number) {
    const QString u = step.toUpper();
    qsizetype from = -1;
    if (u.startsWith(QLatin1String("<GOTO "))) from = 6;
    if (u.startsWith(QLatin1String("<IFNAME "))) from = u.lastIndexOf(QLatin1Char(',')) + 1;
    if (from <= 0) return step;
    bool ok = false;
    const int to = step.mid(from, step.size() - from - 1).trimmed().toInt(&ok);
    return ok && to > number ? step : QStringLiteral("<END>");
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tv::test::TestStation& st = tv::fuzz::station();
    tv::UserSequences& seq = st.p().sequences;
    for (auto& steps : seq.CommandValues)
        for (QString& v : steps) v.clear();
    const QStringList sequences = tv::fuzz::text(data, size).split(QChar(1));
    for (qsizetype n = 0; n < sequences.size() && n < 4; ++n) {
        const QStringList steps = sequences[n].split(QLatin1Char('\n'));
        for (qsizetype i = 0; i < steps.size() && i < qsizetype(seq.CommandValues[size_t(n)].size()); ++i)
            seq.CommandValues[size_t(n)][size_t(i)] = forwardOnly(steps[i], int(i) + 1);
    }
    for (int n = 0; n < 4 && n < sequences.size(); ++n) {
        seq.ExecuteSequence(n);
        st.loop.advance(3000);
    }
    seq.ExecuteCommand(sequences.value(0));
    st.loop.advance(3000);
    FUZZ_CHECK(std::isfinite(st.m().state().RadioFreq), QByteArray::number(st.m().state().RadioFreq));
    st.serial()->written.clear();
    return 0;
}
