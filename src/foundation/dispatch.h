#pragma once

#include <QString>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace lexicorn {

// A labelled serial queue: jobs run one at a time, in submission order, on a
// background thread that exists while the queue has work. Like a dispatch
// queue, it stays alive while jobs are pending even when its creator drops it.
class SerialQueue : public std::enable_shared_from_this<SerialQueue> {
public:
    static std::shared_ptr<SerialQueue> create(QString label);

    const QString& label() const { return label_; }

    // Submits a job and returns at once.
    void async(std::function<void()> job);

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

}  // namespace lexicorn
