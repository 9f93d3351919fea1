#pragma once
// The program's real loop: Qt's event loop, QTimer, and the system clock.

#include "platform/EventLoop.h"

namespace tv {

class QtEventLoop : public EventLoop {
public:
    std::unique_ptr<LoopTimer> createTimer() override;
    void post(std::function<void()> work) override;
    void yield() override;
    void waitForEvents() override;
    std::int64_t monotonicMs() const override;
    QDateTime utcNow() const override;
    QDateTime localNow() const override;
    int run() override;
    void quit(int code) override;
};

}  // namespace tv
