#pragma once

#include <QString>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <semaphore>

namespace lexicorn {

// Somewhere to run work later.
class DispatchQueue {
public:
    virtual ~DispatchQueue() = default;
    virtual void async(std::function<void()> job) = 0;
};

// The Qt event loop of the application's main thread. Jobs run when the loop
// next processes events, in the order they were posted.
DispatchQueue& mainQueue();

// A pool of background threads; jobs may run at the same time.
DispatchQueue& globalQueue();

// A labelled serial queue: jobs run one at a time, in submission order, on a
// background thread that exists while the queue has work. Like a dispatch
// queue, it stays alive while jobs are pending even when its creator drops it.
class SerialQueue : public DispatchQueue, public std::enable_shared_from_this<SerialQueue> {
public:
    static std::shared_ptr<SerialQueue> create(QString label);

    const QString& label() const { return label_; }

    // Submits a job and returns at once.
    void async(std::function<void()> job) override;

    // Submits a job and waits until it has run. Must not be called from a job of this queue.
    void sync(std::function<void()> job);

private:
    explicit SerialQueue(QString label) : label_(std::move(label)) {}
    void drain();

    const QString label_;
    std::mutex mutex_;
    std::deque<std::function<void()>> jobs_;
    bool draining_ = false;
};

// A counting semaphore: wait() blocks until a signal() is available.
class DispatchSemaphore {
public:
    explicit DispatchSemaphore(int value = 0) : semaphore_(value) {}
    void signal() { semaphore_.release(); }
    void wait() { semaphore_.acquire(); }
    // Waits at most the given time; false when it ran out.
    template <typename Rep, typename Period>
    bool waitFor(std::chrono::duration<Rep, Period> limit)
    {
        return semaphore_.try_acquire_for(limit);
    }

private:
    std::counting_semaphore<> semaphore_;
};

}  // namespace lexicorn
