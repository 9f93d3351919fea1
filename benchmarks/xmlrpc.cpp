// The XML-RPC front door under fldigi's poll. The real program (tolvane --headless beside this benchmark)
// drives the radio simulator on a socat pty pair; three clients each send fldigi's poll, the seven calls
// it makes every 200 ms as recorded in tests/data/xmlrpc/fldigi.txt, one after the other on a kept
// connection, for ten seconds. Prints the serial line's frames per second without the clients and with
// them (the program answers from what it knows: no more frames), and the median and 99th-percentile time
// of a call, over all and for each of the seven.
//
//   build/<flavour>/benchmarks/bench_xmlrpc

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
#include <map>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Call = std::pair<QByteArray, QByteArray>;  // method, request body

// fldigi's steady poll from its recording: the calls from one rig.get_ptt to the next, taken past the
// first few rounds (connecting, reading the mode and bandwidth lists).
std::vector<Call> recordedPoll() {
    QFile f(QStringLiteral(TOLVANE_SOURCE_DIR "/tests/data/xmlrpc/fldigi.txt"));
    if (!f.open(QIODevice::ReadOnly)) return {};
    const QByteArray data = f.readAll();
    std::vector<Call> calls;
    for (qsizetype at = 0; at < data.size();) {
        const qsizetype end = data.indexOf('\n', at);
        if (end < 0) break;
        const QList<QByteArray> head = data.mid(at, end - at).split(' ');
        at = end + 1;
        if (head.size() != 5 || head[0] != ">") continue;
        const int length = head[4].toInt();
        calls.emplace_back(head[3], data.mid(at, length));
        at += length + 1;
    }
    std::vector<Call> poll;
    int rounds = 0;
    for (const Call& c : calls) {
        if (c.first == "rig.get_ptt" && ++rounds == 6) break;
        if (rounds == 5) poll.push_back(c);
    }
    return poll;
}

// The program and the simulator, started once.
struct Station : tv::bench::BenchStation {
    bool start() {
        const quint16 rigctl = freePort();
        port = freePort();
        return BenchStation::start(QStringLiteral("14074"), QStringLiteral("USB"),
                                   {QStringLiteral("--net-port"), QString::number(rigctl), QStringLiteral("--xmlrpc-port"),
                                    QString::number(port)},
                                   {"Radio: mode USB", "XmlRpc: listening"});
    }
    quint16 port = 0;
};

Station* station = nullptr;

// One call on a kept connection (made again if the program closed it): true when a whole HTTP answer came.
bool call(QTcpSocket& s, const QByteArray& body) {
    if (s.state() != QAbstractSocket::ConnectedState) {
        s.abort();
        s.connectToHost(QHostAddress::LocalHost, station->port);
        if (!s.waitForConnected(2000)) return false;
    }
    s.write("POST /RPC2 HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: text/xml\r\nContent-Length: " +
            QByteArray::number(body.size()) + "\r\n\r\n" + body);
    if (!s.waitForBytesWritten(1000)) return false;
    QByteArray in;
    for (;;) {
        const qsizetype head = in.indexOf("\r\n\r\n");
        if (head >= 0) {
            qsizetype length = 0;
            for (const QByteArray& line : in.left(head).split('\n'))
                if (line.toLower().startsWith("content-length:")) length = line.mid(15).trimmed().toLongLong();
            if (in.size() >= head + 4 + length) return in.startsWith("HTTP/1.1 200");
        }
        if (!s.waitForReadyRead(2000)) return false;
        in += s.readAll();
    }
}

void BM_ThreeClientsPollingAsFldigi(benchmark::State& state) {
    if (!station) {
        state.SkipWithError("the station did not start");
        return;
    }
    const std::vector<Call> poll = recordedPoll();
    if (poll.empty()) {
        state.SkipWithError("no poll in tests/data/xmlrpc/fldigi.txt");
        return;
    }
    constexpr int kClients = 3, kWindowMs = 10000;
    for (auto _ : state) {
        const qsizetype start = station->heard();
        tv::test::waitFor([] { return false; }, kWindowMs);
        const qsizetype alone = station->heard() - start;
        std::atomic<bool> stop{false}, failed{false};
        std::vector<std::map<QByteArray, std::vector<double>>> times(kClients);
        std::vector<std::thread> clients;
        for (auto& mine : times)
            clients.emplace_back([&, &mine = mine] {
                QTcpSocket s;
                auto next = std::chrono::steady_clock::now();
                while (!stop) {
                    for (const Call& c : poll) {
                        QElapsedTimer t;
                        t.start();
                        if (!call(s, c.second)) {
                            failed = true;
                            return;
                        }
                        mine[c.first].push_back(double(t.nsecsElapsed()) / 1000.0);
                    }
                    next += std::chrono::milliseconds(200);
                    std::this_thread::sleep_until(next);
                }
            });
        const qsizetype before = station->heard();
        tv::test::waitFor([] { return false; }, kWindowMs);
        const qsizetype loaded = station->heard() - before;
        stop = true;
        for (auto& t : clients) t.join();
        if (failed) {
            state.SkipWithError("a call went unanswered");
            return;
        }
        std::map<QByteArray, std::vector<double>> byMethod;
        std::vector<double> all;
        for (const auto& client : times)
            for (const auto& [method, us] : client) {
                byMethod[method].insert(byMethod[method].end(), us.begin(), us.end());
                all.insert(all.end(), us.begin(), us.end());
            }
        auto p = [](std::vector<double>& v, int percent) {
            std::sort(v.begin(), v.end());
            return v[std::min(v.size() - 1, v.size() * size_t(percent) / 100)];
        };
        state.counters["frames_per_s_alone"] = double(alone) * 1000.0 / kWindowMs;
        state.counters["frames_per_s_with_clients"] = double(loaded) * 1000.0 / kWindowMs;
        state.counters["calls"] = double(all.size());
        state.counters["median_us"] = p(all, 50);
        state.counters["p99_us"] = p(all, 99);
        for (const Call& c : poll) {
            std::vector<double>& v = byMethod[c.first];
            std::printf("  %-22s %6zu calls  median %8.0f us  p99 %8.0f us\n", c.first.constData(), v.size(), p(v, 50),
                        p(v, 99));
        }
    }
}
BENCHMARK(BM_ThreeClientsPollingAsFldigi)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    Station s;
    if (s.start())
        station = &s;
    else
        std::fprintf(stderr, "bench_xmlrpc: %s\n", s.error.c_str());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    station = nullptr;
    return 0;
}
