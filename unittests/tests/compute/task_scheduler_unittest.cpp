#include "tests/compute/task_scheduler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <stdexcept>

namespace vorn {
namespace {

/// A task that does what a test says.
class Doing : public Task {
public:
    explicit Doing(std::function<std::unique_ptr<Task>()> work) : work_(std::move(work)) {}
    std::unique_ptr<Task> execute() override { return work_(); }

private:
    std::function<std::unique_ptr<Task>()> work_;
};

std::unique_ptr<Task> doing(const std::function<void()>& work) {
    return std::make_unique<Doing>([work]() -> std::unique_ptr<Task> {
        work();
        return nullptr;
    });
}

void waitUntil(const std::function<bool()>& condition) {
    while (!condition()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

TEST(TaskScheduler, RunsAsManyTasksAtOnceAsItHasWorkers) {
    constexpr int workers = 4;
    TaskScheduler scheduler(workers);
    std::atomic<int> running = 0;
    std::atomic<bool> released = false;
    std::thread::id threads[workers + 1];
    std::vector<std::shared_ptr<RootTask>> roots;
    for (std::thread::id& thread : threads) {
        roots.push_back(std::make_shared<RootTask>(2));
        scheduler.spawn(roots.back(), doing([&running, &released, &thread] {
                            thread = std::this_thread::get_id();
                            ++running;
                            waitUntil([&] { return released.load(); });
                        }));
    }
    waitUntil([&] { return running >= workers; });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(running, workers) << "the last one waits for a worker";
    released = true;
    for (const auto& root : roots) {
        scheduler.waitForAll(*root);
    }
    EXPECT_EQ(std::count(std::begin(threads), std::end(threads), std::this_thread::get_id()), 0);
}

TEST(TaskScheduler, WaitsForEveryChildAndItsSuccessors) {
    TaskScheduler scheduler(2);
    const auto root = std::make_shared<RootTask>(101);
    std::atomic<int> done = 0;
    for (int child = 0; child < 100; ++child) {
        scheduler.spawn(root, std::make_unique<Doing>([&] {
                            ++done;
                            return doing([&] { ++done; });
                        }));
    }
    scheduler.waitForAll(*root);
    EXPECT_EQ(done, 200);
}

TEST(TaskScheduler, RaisesAChildsErrorWhereItsRootIsWaitedFor) {
    TaskScheduler scheduler(2);
    const auto broken = std::make_shared<RootTask>(3);
    const auto sound = std::make_shared<RootTask>(2);
    std::atomic<int> done = 0;
    scheduler.spawn(broken, doing([] { throw std::runtime_error("broken"); }));
    scheduler.spawn(broken, doing([&] { ++done; }));
    scheduler.spawn(sound, doing([&] { ++done; }));
    EXPECT_THROW(scheduler.waitForAll(*broken), std::runtime_error);
    EXPECT_NO_THROW(scheduler.waitForAll(*sound)) << "the worker goes on";
    EXPECT_EQ(done, 2);
}

TEST(TaskScheduler, EndsWithWhatItsWorkersRunAndWithoutAnyWork) {
    { const TaskScheduler idle(3); }
    std::atomic<bool> finished = false;
    std::atomic<bool> started = false;
    {
        TaskScheduler scheduler(1);
        scheduler.spawn(std::make_shared<RootTask>(2), doing([&] {
                            started = true;
                            std::this_thread::sleep_for(std::chrono::milliseconds(20));
                            finished = true;
                        }));
        waitUntil([&] { return started.load(); });
    }
    EXPECT_TRUE(finished);
}

}  // namespace
}  // namespace vorn
