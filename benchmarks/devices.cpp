// The device lookup runs inside every display of a frequency, so it must stay cheap however full the
// table: the time per lookup over a full table of 1025 rows, with the row found at once and with the
// scan through a stretch of empty rows, and the load of a full table file.
//
//   build/test/benchmarks/bench_devices

#include "automation/DeviceFile.h"

#include <benchmark/benchmark.h>

namespace {

// A full table, every row 10 kHz apart from 1800 kHz; with gaps, only every 20th row has values.
std::vector<tv::GridRow> table(bool gaps) {
    std::vector<tv::GridRow> rows;
    for (int i = 0; i < tv::kMaxDeviceRows; ++i) {
        const bool values = !gaps || i % 20 == 0;
        rows.push_back({QString::number(1800 + 10 * i), values ? QStringLiteral("27") : QString(),
                        values ? QStringLiteral("114") : QString(), QString()});
    }
    return rows;
}

void BM_LookupFullTable(benchmark::State& state) {
    const std::vector<tv::GridRow> rows = table(state.range(0) != 0);
    double freq = 1800;
    for (auto _ : state) {
        benchmark::DoNotOptimize(tv::FindDeviceRow(rows, int(rows.size()), 2, 2, freq));
        freq = freq > 11000 ? 1800 : freq + 7.3;
    }
}
BENCHMARK(BM_LookupFullTable)->Arg(0)->Arg(1)->ArgNames({"gaps"});

void BM_ReadFullFile(benchmark::State& state) {
    QByteArray bytes = "L,C\n";
    for (int i = 0; i < tv::kMaxDeviceRows; ++i) bytes += QByteArray::number(1800 + 10 * i) + ",27,114\n";
    for (auto _ : state)
        benchmark::DoNotOptimize(tv::ReadDeviceFile(bytes, QStringLiteral("t.txt"), 0, QLatin1Char('.')));
}
BENCHMARK(BM_ReadFullFile);

}  // namespace

BENCHMARK_MAIN();
