// The rig server's answer time. The real program (tolvane --headless beside this benchmark) drives the
// radio simulator on a socat pty pair; one client asks "f" as fast as it is answered, alone and while
// nine others poll "f" and "m" every 100 ms. Prints requests per second, the median and 99th-percentile
// answer time, and the messages the radio heard a second meanwhile (the program's own polls: the same
// with clients as without); then ten clients polling "v s f m t" ten times a second, with the
// serial line's frames per second beside them. A last figure is the protocol's own cost per line,
// without sockets.
//
//   build/<flavour>/benchmarks/bench_rigctl

#include "netserver/Rigctl.h"
#include "benchmarks/support/BenchStation.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

namespace {

// The program and the simulator, started once for all the socket benchmarks.
struct Station : tv::bench::BenchStation {
    bool start() {
        port = freePort();
        return BenchStation::start(QStringLiteral("14025.5"), QStringLiteral("CW"),
                                   {QStringLiteral("--net-port"), QString::number(port)}, {"Radio: mode CW"});
    }
    quint16 port = 0;
};

Station* station = nullptr;

// Blocking request and answer on a socket of the calling thread.
bool ask(QTcpSocket& s, const QByteArray& request, int lines) {
    s.write(request);
    if (!s.waitForBytesWritten(1000)) return false;
    QByteArray in;
    while (in.count('\n') < lines) {
        if (!s.waitForReadyRead(2000)) return false;
        in += s.readAll();
    }
    return true;
}

void roundTrips(benchmark::State& state, int background) {
    if (!station) {
        state.SkipWithError("the station did not start");
        return;
    }
    // The others poll "f" and "m" every 100 ms, each on a thread of its own.
    std::atomic<bool> stop{false};
    std::vector<std::thread> others;
    for (int i = 0; i < background; ++i)
        others.emplace_back([&stop] {
            QTcpSocket s;
            s.connectToHost(QHostAddress::LocalHost, station->port);
            if (!s.waitForConnected(5000)) return;
            while (!stop) {
                ask(s, "f\nm\n", 3);
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            }
        });
    QTcpSocket s;
    s.connectToHost(QHostAddress::LocalHost, station->port);
    if (!s.waitForConnected(5000)) {
        state.SkipWithError("no connection");
        stop = true;
        for (auto& t : others) t.join();
        return;
    }
    std::vector<double> micros;
    micros.reserve(100000);
    const qsizetype heardBefore = station->heard();
    QElapsedTimer wall;
    wall.start();
    for (auto _ : state) {
        QElapsedTimer t;
        t.start();
        if (!ask(s, "f\n", 1)) {
            state.SkipWithError("no answer");
            break;
        }
        micros.push_back(double(t.nsecsElapsed()) / 1000.0);
    }
    stop = true;
    for (auto& t : others) t.join();
    state.counters["radio_msgs_per_s"] =
        double(station->heard() - heardBefore) * 1000.0 / double(wall.elapsed());
    if (micros.empty()) return;
    std::sort(micros.begin(), micros.end());
    state.SetItemsProcessed(int64_t(micros.size()));
    state.counters["median_us"] = micros[micros.size() / 2];
    state.counters["p99_us"] = micros[std::min(micros.size() - 1, micros.size() * 99 / 100)];
}

void BM_OneClientAlone(benchmark::State& state) {
    roundTrips(state, 0);
}
void BM_OneClientAmongTen(benchmark::State& state) {
    roundTrips(state, 9);
}
BENCHMARK(BM_OneClientAlone)->UseRealTime()->MinTime(5.0);
BENCHMARK(BM_OneClientAmongTen)->UseRealTime()->MinTime(5.0);

// Ten clients each asking "v s f m t" on one line ten times a second, as loggers and digital-mode
// programs poll: the frames on the serial line per second, without them and with them, and the time
// each whole answer takes.
void BM_TenClientsPollingVsfmt(benchmark::State& state) {
    if (!station) {
        state.SkipWithError("the station did not start");
        return;
    }
    auto frames = [] { return int(station->heard()); };
    constexpr int kWindowMs = 10000;
    for (auto _ : state) {
        const int start = frames();
        tv::test::waitFor([] { return false; }, kWindowMs);
        const int alone = frames() - start;
        std::atomic<bool> stop{false};
        std::vector<std::vector<double>> times(10);
        std::vector<std::thread> clients;
        for (auto& mine : times)
            clients.emplace_back([&stop, &mine] {
                QTcpSocket s;
                s.connectToHost(QHostAddress::LocalHost, station->port);
                if (!s.waitForConnected(5000)) return;
                while (!stop) {
                    QElapsedTimer t;
                    t.start();
                    if (!ask(s, "v s f m t\n", 7)) return;  // v, s (two), f, m (two), t
                    mine.push_back(double(t.nsecsElapsed()) / 1000.0);
                    std::this_thread::sleep_for(std::chrono::milliseconds(100));
                }
            });
        const int before = frames();
        tv::test::waitFor([] { return false; }, kWindowMs);
        const int loaded = frames() - before;
        stop = true;
        for (auto& t : clients) t.join();
        std::vector<double> all;
        for (const auto& v : times) all.insert(all.end(), v.begin(), v.end());
        if (all.empty()) {
            state.SkipWithError("no answers");
            return;
        }
        std::sort(all.begin(), all.end());
        state.counters["frames_per_s_alone"] = alone * 1000.0 / kWindowMs;
        state.counters["frames_per_s_with_clients"] = loaded * 1000.0 / kWindowMs;
        state.counters["answers"] = double(all.size());
        state.counters["median_us"] = all[all.size() / 2];
        state.counters["p99_us"] = all[std::min(all.size() - 1, all.size() * 99 / 100)];
    }
}
BENCHMARK(BM_TenClientsPollingVsfmt)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// The protocol alone: one line in, its answer out, on a radio that answers at once.
class StillRig : public tv::RigBackend {
  public:
    tv::RigCaps caps() const override {
        tv::RigCaps c;
        c.radio = c.vfoAB = c.split = c.ptt = c.meter = true;
        c.modes.fill(true);
        return c;
    }
    double frequencyHz() const override { return 14025500; }
    std::optional<double> level(tv::RigLevel) override { return std::nullopt; }
    int mode() const override { return tv::RigCW; }
    tv::RigVfo vfo() const override { return tv::RigVfo::A; }
    bool split() const override { return false; }
    double txFrequencyHz() const override { return 14025500; }
    int txMode() const override { return tv::RigCW; }
    bool ptt() const override { return false; }
    double meter() const override { return 0.4; }
    QString meterLabel() const override { return QStringLiteral("S7"); }
    int passbandHz() const override { return 0; }
    bool responding() const override { return true; }
    bool frequencySettled() const override { return true; }
    bool setFrequency(double) override { return true; }
    bool setMode(int, int) override { return true; }
    bool setVfo(tv::RigVfo) override { return true; }
    bool setSplit(bool) override { return true; }
    bool setTxFrequency(double) override { return true; }
    bool setPtt(bool, const QString&) override { return true; }
    bool sendRaw(const QByteArray&) override { return true; }
};

void BM_ProtocolLine(benchmark::State& state) {
    StillRig rig;
    tv::RigctlSession session(rig, QStringLiteral("Tolvane"));
    const QByteArray lines[] = {"f",          "m",        "+\\get_mode", "F 14025500.000000",
                                "l STRENGTH", "+f +m +v", "v s f m t"};
    size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(session.answer(lines[i++ % std::size(lines)]));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ProtocolLine);

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    Station s;
    if (s.start())
        station = &s;
    else
        std::fprintf(stderr, "bench_rigctl: %s; only the protocol's own cost is measured\n", s.error.c_str());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    station = nullptr;
    return 0;
}
