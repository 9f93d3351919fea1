// The message monitor at full capture: adding a line must cost the same whether the display holds ten
// lines or is nearly full (31 999 characters), or capture slows the program as the log fills.

#include "forms/KavMessages.h"
#include "platform/SimEventLoop.h"

#include <benchmark/benchmark.h>

namespace {

const QString kLine = QStringLiteral("0042@1203.07: 254 254 224 148 003 000 087 002 020 000 253 \r\n");

void fill(tv::KavMessages& m, int chars) {
    m.ClearMessageDisplay();
    while (m.displayLength() + kLine.size() <= chars) m.AppendToMessageDisplay(kLine, 0);
    m.AppendToMessageDisplay(QString(chars - m.displayLength(), QLatin1Char('x')), 0);
}

void appendLine(benchmark::State& state, int startChars) {
    tv::SimEventLoop loop;
    tv::KavMessages m(loop);
    int shown = 0;
    m.MessageDisplay.viewChanged = [&] { ++shown; };  // a view that is told, as the window is
    fill(m, startChars);
    int added = 0;
    for (auto _ : state) {
        m.AppendToMessageDisplay(kLine, 0);
        m.AppendToMessageDisplay(kLine, 1);
        m.AppendToMessageDisplay(kLine, 2);
        // Start again from the same size now and then, so both runs measure the size they name.
        if (++added == 2000) {
            state.PauseTiming();
            fill(m, startChars);
            added = 0;
            state.ResumeTiming();
        }
    }
    benchmark::DoNotOptimize(shown);
    state.SetLabel(QStringLiteral("display starts at %1 chars").arg(startChars).toStdString());
}

void BM_AppendToTenLines(benchmark::State& state) { appendLine(state, 10 * int(kLine.size())); }
void BM_AppendToNearlyFull(benchmark::State& state) { appendLine(state, 31999); }

BENCHMARK(BM_AppendToTenLines);
BENCHMARK(BM_AppendToNearlyFull);

}  // namespace

BENCHMARK_MAIN();
