#include "platform/SimEventLoop.h"

#include <algorithm>
#include <limits>

namespace tv {

class SimEventLoop::SimTimer : public LoopTimer {
public:
    explicit SimTimer(SimEventLoop* loop) : loop_(loop) { loop_->timers_.push_back(this); }
    ~SimTimer() override {
        if (loop_) {
            auto& v = loop_->timers_;
            v.erase(std::remove(v.begin(), v.end(), this), v.end());
        }
    }
    void setInterval(int ms) override {
        interval_ = std::max(0, ms);
        if (enabled_) restart();
    }
    int interval() const override { return interval_; }
    void setEnabled(bool on) override {
        if (on == enabled_) return;
        enabled_ = on;
        if (on) restart();
    }
    bool enabled() const override { return enabled_; }

    bool due(std::int64_t limit) const { return enabled_ && interval_ > 0 && deadline_ <= limit; }
    void restart() {
        deadline_ = loop_->now_ + interval_;
        seq_ = ++loop_->seq_;
    }

    SimEventLoop* loop_;
    int interval_ = 0;
    bool enabled_ = false;
    std::int64_t deadline_ = 0;
    std::uint64_t seq_ = 0;
};

namespace {
std::function<void(const QString&)>& limitHandler() {
    static std::function<void(const QString&)> handler;
    return handler;
}
}  // namespace

void SimEventLoop::setLimitHandler(std::function<void(const QString&)> handler) { limitHandler() = std::move(handler); }

void SimEventLoop::limitReached(const QString& why) {
    if (limitHandler()) {
        limitHandler()(why);
        return;
    }
    qFatal("simulated loop: %s", qPrintable(why));
}

SimEventLoop::SimEventLoop(QDateTime startUtc) : startUtc_(std::move(startUtc)) {}

SimEventLoop::~SimEventLoop() {
    for (SimTimer* t : timers_) t->loop_ = nullptr;
}

std::unique_ptr<LoopTimer> SimEventLoop::createTimer() { return std::make_unique<SimTimer>(this); }

void SimEventLoop::post(std::function<void()> work) { posted_.push_back(std::move(work)); }

void SimEventLoop::runPosted() {
    // Bounded, so that work which posts itself again cannot spin forever inside one call; reaching the
    // bound is a fault of the code under test, and says so.
    int ran = 0;
    while (!posted_.empty()) {
        if (++ran > kMaxPostedRun) {
            limitReached(QStringLiteral("work posted on the loop keeps posting more (%1 items in one turn)").arg(kMaxPostedRun));
            return;
        }
        auto work = std::move(posted_.front());
        posted_.pop_front();
        if (work) work();
    }
}

SimEventLoop::SimTimer* SimEventLoop::nextDue(std::int64_t limit) const {
    SimTimer* best = nullptr;
    for (SimTimer* t : timers_) {
        if (!t->due(limit)) continue;
        if (!best || t->deadline_ < best->deadline_ ||
            (t->deadline_ == best->deadline_ && t->seq_ < best->seq_))
            best = t;
    }
    return best;
}

void SimEventLoop::yield() {
    ++yields_;
    // A handler that yields inside a yield would let the same tick in again; real loops allow that too,
    // but a bound keeps a runaway test from overflowing the stack.
    if (yieldDepth_ > kMaxYieldDepth) {
        limitReached(QStringLiteral("yields nested more than %1 deep: a handler lets itself in again").arg(kMaxYieldDepth));
        return;
    }
    ++yieldDepth_;
    runPosted();
    while (SimTimer* t = nextDue(now_)) {
        t->restart();
        if (t->onTick) t->onTick();
        runPosted();
    }
    --yieldDepth_;
}

void SimEventLoop::waitForEvents() {
    if (posted_.empty() && !nextDue(now_)) {
        const std::int64_t in = nextDueIn();
        if (in > 0) now_ += in;
    }
    yield();
}

void SimEventLoop::advance(std::int64_t ms) {
    const std::int64_t end = now_ + std::max<std::int64_t>(0, ms);
    runPosted();
    while (SimTimer* t = nextDue(end)) {
        now_ = std::max(now_, t->deadline_);
        t->restart();
        if (t->onTick) t->onTick();
        runPosted();
        if (quit_) break;
    }
    now_ = std::max(now_, end);
    runPosted();
}

std::int64_t SimEventLoop::nextDueIn() const {
    SimTimer* t = nextDue(std::numeric_limits<std::int64_t>::max());
    return t ? t->deadline_ - now_ : -1;
}

QDateTime SimEventLoop::utcNow() const { return startUtc_.addMSecs(now_); }

QDateTime SimEventLoop::localNow() const { return utcNow().toLocalTime(); }

int SimEventLoop::run() {
    // Runs virtual time until quit(), or until nothing more can happen.
    while (!quit_) {
        runPosted();
        std::int64_t in = nextDueIn();
        if (in < 0) break;
        advance(in);
    }
    return quitCode_;
}

void SimEventLoop::quit(int code) {
    quit_ = true;
    quitCode_ = code;
}

}  // namespace tv
