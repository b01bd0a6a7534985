#include "foundation/dispatch.h"

#include <future>
#include <thread>

namespace lexicorn {

std::shared_ptr<SerialQueue> SerialQueue::create(QString label)
{
    return std::shared_ptr<SerialQueue>(new SerialQueue(std::move(label)));
}

void SerialQueue::async(std::function<void()> job)
{
    std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
    if (draining_)
        return;
    draining_ = true;
    // The worker holds the queue alive until it has run every pending job.
    std::thread([self = shared_from_this()] { self->drain(); }).detach();
}

void SerialQueue::sync(std::function<void()> job)
{
    std::promise<void> done;
    async([&] {
        job();
        done.set_value();
    });
    done.get_future().wait();
}

void SerialQueue::drain()
{
    for (;;) {
        std::function<void()> job;
        {
            std::lock_guard lock(mutex_);
            if (jobs_.empty()) {
                draining_ = false;
                return;
            }
            job = std::move(jobs_.front());
            jobs_.pop_front();
        }
        job();
    }
}

}  // namespace lexicorn
