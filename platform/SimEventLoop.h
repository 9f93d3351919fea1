#pragma once
// A loop with virtual time for tests: nothing happens until advance() moves the clock, and then the
// timers that fall due fire in (deadline, creation order), posted work first.

#include "platform/EventLoop.h"

#include <deque>
#include <functional>
#include <vector>

namespace tv {

class SimEventLoop : public EventLoop {
public:
    explicit SimEventLoop(QDateTime startUtc = QDateTime(QDate(2026, 1, 1), QTime(12, 0, 0), Qt::UTC));
    ~SimEventLoop() override;

    std::unique_ptr<LoopTimer> createTimer() override;
    void post(std::function<void()> work) override;
    void yield() override;
    // With nothing pending, virtual time moves on to the next timer, as a real loop would sleep until then.
    void waitForEvents() override;
    std::int64_t monotonicMs() const override { return now_; }
    QDateTime utcNow() const override;
    QDateTime localNow() const override;
    int run() override;
    void quit(int code) override;

    // Moves virtual time forward by ms, firing everything that falls due on the way, in order.
    void advance(std::int64_t ms);
    // Runs posted work (and work it posts) without moving the clock.
    void runPosted();
    // Milliseconds until the next timer is due, or -1 when none is enabled.
    std::int64_t nextDueIn() const;
    int yieldCount() const { return yields_; }
    bool quitRequested() const { return quit_; }

    class SimTimer;

    static constexpr int kMaxYieldDepth = 32;
    static constexpr int kMaxPostedRun = 100000;
    // Told when a bound of the simulated loop is reached (a runaway test): by default the process ends
    // with the reason; a test harness reports it as the test's failure instead.
    static void setLimitHandler(std::function<void(const QString&)> handler);

private:
    friend class SimTimer;
    static void limitReached(const QString& why);
    SimTimer* nextDue(std::int64_t limit) const;

    std::int64_t now_ = 0;
    std::uint64_t seq_ = 0;
    QDateTime startUtc_;
    std::vector<SimTimer*> timers_;
    std::deque<std::function<void()>> posted_;
    int yields_ = 0;
    int yieldDepth_ = 0;
    bool quit_ = false;
    int quitCode_ = 0;
};

}  // namespace tv
