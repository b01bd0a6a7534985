#include "foundation/dispatch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace lexicorn {
namespace {

TEST(SerialQueue, RunsJobsOneAtATimeInSubmissionOrderOffTheCallingThread)
{
    auto queue = SerialQueue::create(QStringLiteral("test.queue"));
    std::vector<int> order;
    std::atomic<int> running{0};
    std::atomic<bool> overlapped{false};
    std::atomic<bool> ranOnCaller{false};
    const auto caller = std::this_thread::get_id();
    for (int i = 0; i < 200; ++i) {
        queue->async([&, i] {
            if (running.fetch_add(1) != 0)
                overlapped = true;
            if (std::this_thread::get_id() == caller)
                ranOnCaller = true;
            order.push_back(i);
            running.fetch_sub(1);
        });
    }
    queue->sync([] {});
    ASSERT_EQ(order.size(), 200u);
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(order[size_t(i)], i);
    EXPECT_FALSE(overlapped);
    EXPECT_FALSE(ranOnCaller);
}

TEST(SerialQueue, PendingJobsRunAfterTheLastHandleIsDropped)
{
    std::atomic<bool> ran{false};
    std::atomic<bool> release{false};
    auto keeper = SerialQueue::create(QStringLiteral("other"));
    {
        auto queue = SerialQueue::create(QStringLiteral("dropped"));
        queue->async([&] {
            while (!release)
                std::this_thread::yield();
        });
        queue->async([&] { ran = true; });
    }
    release = true;
    for (int i = 0; i < 5000 && !ran; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace lexicorn
