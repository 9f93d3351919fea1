#include "platform/QtEventLoop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

namespace tv {
namespace {

class QtTimer : public LoopTimer {
public:
    QtTimer() {
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
            if (onTick) onTick();
        });
    }
    void setInterval(int ms) override {
        interval_ = ms < 0 ? 0 : ms;
        if (enabled_) restart();
    }
    int interval() const override { return interval_; }
    void setEnabled(bool on) override {
        if (on == enabled_) return;
        enabled_ = on;
        if (on)
            restart();
        else
            timer_.stop();
    }
    bool enabled() const override { return enabled_; }

private:
    void restart() {
        timer_.stop();
        if (interval_ > 0) timer_.start(interval_);
    }
    QTimer timer_;
    int interval_ = 0;
    bool enabled_ = false;
};

const QElapsedTimer& processClock() {
    static QElapsedTimer clock = [] {
        QElapsedTimer t;
        t.start();
        return t;
    }();
    return clock;
}

}  // namespace

std::unique_ptr<LoopTimer> QtEventLoop::createTimer() { return std::make_unique<QtTimer>(); }

void QtEventLoop::post(std::function<void()> work) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(work), Qt::QueuedConnection);
}

void QtEventLoop::yield() { QCoreApplication::processEvents(QEventLoop::AllEvents); }

void QtEventLoop::waitForEvents() {
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

std::int64_t QtEventLoop::monotonicMs() const { return processClock().elapsed(); }

QDateTime QtEventLoop::utcNow() const { return QDateTime::currentDateTimeUtc(); }

QDateTime QtEventLoop::localNow() const { return QDateTime::currentDateTime(); }

int QtEventLoop::run() { return QCoreApplication::exec(); }

void QtEventLoop::quit(int code) { QCoreApplication::exit(code); }

}  // namespace tv
