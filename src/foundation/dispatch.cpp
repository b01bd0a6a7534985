#include "foundation/dispatch.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThreadPool>

#include <future>
#include <thread>

namespace lexicorn {

namespace {

class MainQueue : public DispatchQueue {
public:
    void async(std::function<void()> job) override
    {
        QCoreApplication* application = QCoreApplication::instance();
        Q_ASSERT_X(application, "mainQueue", "needs a Qt application object");
        QMetaObject::invokeMethod(application, std::move(job), Qt::QueuedConnection);
    }
};

class GlobalQueue : public DispatchQueue {
public:
    void async(std::function<void()> job) override { QThreadPool::globalInstance()->start(std::move(job)); }
};

}  // namespace

DispatchQueue& mainQueue()
{
    static MainQueue queue;
    return queue;
}

DispatchQueue& globalQueue()
{
    static GlobalQueue queue;
    return queue;
}

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
