#pragma once
// The one event loop the program runs on, and its timers. Everything that waits, ticks or reads the
// clock goes through here, so that tests can run the whole program in virtual time.

#include <QDateTime>

#include <cstdint>
#include <functional>
#include <memory>

namespace tv {

// A restartable timer on the loop's thread. Like a form timer: an interval in milliseconds and an
// enabled switch. Enabling a disabled timer, or changing the interval of an enabled one, restarts the
// count, so the next tick comes one full interval later; enabling an enabled timer changes nothing
// (a stream of "make sure it runs" calls must not postpone its tick). An interval of 0 never ticks.
class LoopTimer {
public:
    virtual ~LoopTimer() = default;
    virtual void setInterval(int ms) = 0;
    virtual int interval() const = 0;
    virtual void setEnabled(bool on) = 0;
    virtual bool enabled() const = 0;
    // Called on each tick. The timer stays enabled unless the handler disables it.
    std::function<void()> onTick;
};

class EventLoop {
public:
    virtual ~EventLoop() = default;
    virtual std::unique_ptr<LoopTimer> createTimer() = 0;
    // Runs the function later, on the loop, after what is already due.
    virtual void post(std::function<void()> work) = 0;
    // Lets pending events through (timers that are due, posted work, input) and returns.
    virtual void yield() = 0;
    // The same, but when nothing is pending it sleeps until something comes, and lets that through:
    // for a handler that goes round until some event changes what it tests, without spinning a core.
    virtual void waitForEvents() = 0;
    // Milliseconds on a clock that never goes back.
    virtual std::int64_t monotonicMs() const = 0;
    virtual QDateTime utcNow() const = 0;
    virtual QDateTime localNow() const = 0;
    // Runs until quit(); returns the code given to quit.
    virtual int run() = 0;
    virtual void quit(int code) = 0;
};

}  // namespace tv
