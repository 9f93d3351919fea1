// Reading the settings file: the cost per key must not grow with the size of the file, or a store that
// has gathered many memories, notes and sequences makes the program slow to start (and a file of a few
// megabytes never finishes loading). The fitted complexity is printed at the end.
//
//   build/test/benchmarks/bench_settings [--benchmark_filter=Load]

#include "platform/SettingsStore.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

// A file of the given number of keys in the program's seven sections.
QString writeStore(const QTemporaryDir& dir, int keys) {
    const QString path = dir.filePath(QStringLiteral("Tolvane.ini"));
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly)) return {};
    QByteArray text;
    const int perSection = (keys + 6) / 7;
    for (int i = 0; i < keys; ++i) {
        if (i % perSection == 0) text += "[Section" + QByteArray::number(i / perSection) + "]\n";
        text += "CommandValue_" + QByteArray::number(i) + "=FEFE94E0 03 FD ' a note of some length\n";
    }
    f.write(text);
    return path;
}

void BM_LoadSettings(benchmark::State& state) {
    QTemporaryDir dir;
    const int keys = int(state.range(0));
    const QString path = writeStore(dir, keys);
    for (auto _ : state) {
        tv::SettingsStore s(path, nullptr);
        benchmark::DoNotOptimize(
            s.GetSetting(QStringLiteral("Section0"), QStringLiteral("CommandValue_0"), {}));
    }
    state.SetComplexityN(keys);
    state.SetItemsProcessed(state.iterations() * keys);
}

// One key read among many: what every GetSetting costs on a large store.
void BM_ReadOneKey(benchmark::State& state) {
    QTemporaryDir dir;
    const int keys = int(state.range(0));
    tv::SettingsStore s(writeStore(dir, keys), nullptr);
    const QString section = QStringLiteral("Section6");
    const QString key = QStringLiteral("commandvalue_%1").arg(keys - 1);  // the last, in another case
    for (auto _ : state) benchmark::DoNotOptimize(s.GetSetting(section, key, {}));
    state.SetComplexityN(keys);
}

BENCHMARK(BM_LoadSettings)
    ->RangeMultiplier(4)
    ->Range(1 << 10, 1 << 18)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();
BENCHMARK(BM_ReadOneKey)->RangeMultiplier(4)->Range(1 << 10, 1 << 16)->Complexity();

}  // namespace

BENCHMARK_MAIN();
