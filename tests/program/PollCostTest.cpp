// What one polled frame costs in heap allocations: an IC-7300 answering in-process, polled at 50 ms on
// virtual time with no window and the monitor closed. Every allocation in the program's path counts
// (malloc and operator new alike), so the figure is deterministic and holds the polling path lean.

#include "support/TestStation.h"
#include "tools/radiosim/CivRadio.h"

#include <QFile>

#include <gtest/gtest.h>

#include <atomic>

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer's runtime calls these on every allocation, malloc and operator new alike (its header
// is not shipped with every compiler).
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, size_t),
                                                         void (*)(const volatile void*));
#define TV_COUNT_ALLOCATIONS 1
#endif

namespace tv::test {
namespace {

std::atomic<bool> counting{false};
std::atomic<long> allocations{0};

#ifdef TV_COUNT_ALLOCATIONS
void onMalloc(const volatile void*, size_t) {
    if (counting.load(std::memory_order_relaxed)) allocations.fetch_add(1, std::memory_order_relaxed);
}
void onFree(const volatile void*) {}
#endif

TEST(PollCost, AtMostFiveAllocationsPerPolledFrameHeadless) {
#ifndef TV_COUNT_ALLOCATIONS
    GTEST_SKIP() << "allocations are counted through the address sanitizer's hooks";
#else
    QFile catalogue(QStringLiteral(TOLVANE_SOURCE_DIR "/data/Radios.txt"));
    ASSERT_TRUE(catalogue.open(QIODevice::ReadOnly));
    TestStation st(QString::fromUtf8(catalogue.readAll()));
    const QString g = QStringLiteral("General");
    st.preset(g, QStringLiteral("Radio"), QStringLiteral("IC-7300"));
    st.preset(g, QStringLiteral("RadioId"), QStringLiteral("94"));
    st.preset(g, QStringLiteral("CommPort"), QStringLiteral("1"));
    st.preset(g, QStringLiteral("InterrogateInterval"), QStringLiteral("50"));
    st.preset(g, QStringLiteral("MessageCapture"), QStringLiteral("F"));
    ASSERT_TRUE(st.start());
    ASSERT_NE(st.serial(), nullptr);

    auto model = sim::CivRadio::model(QStringLiteral("IC-7300"));
    ASSERT_TRUE(model);
    sim::CivRadio radio(*model);
    long frames = 0;
    st.serial()->onWrite = [&](const QByteArray& b) {
        // The radio's side is not the program's cost.
        const bool was = counting.exchange(false);
        ++frames;
        st.serial()->feed(radio.receive(b));
        counting = was;
    };
    st.loop.advance(3000);  // past start-up: the steady poll
    ASSERT_GT(frames, 30);

    __sanitizer_install_malloc_and_free_hooks(onMalloc, onFree);
    frames = 0;
    allocations = 0;
    counting = true;
    st.loop.advance(10000);
    counting = false;
    // The rate stays: 50 ms a request with every reply in time.
    EXPECT_GE(frames, 190);
    const double perFrame = double(allocations) / double(frames);
    RecordProperty("AllocationsPerFrame", std::to_string(perFrame));
    std::printf("%ld frames, %.2f allocations per frame\n", frames, perFrame);
    EXPECT_LE(perFrame, 5.0);
#endif
}

}  // namespace
}  // namespace tv::test
