#include "tests/compute/task_scheduler.h"

#include <utility>

namespace vorn {

TaskScheduler::TaskScheduler(int workers) {
    try {
        for (int worker = 0; worker < workers; ++worker) {
            workers_.emplace_back([this] { work(); });
        }
    } catch (...) {
        terminate();
        throw;
    }
}

TaskScheduler::~TaskScheduler() {
    terminate();
}

void TaskScheduler::spawn(const std::shared_ptr<RootTask>& root, std::unique_ptr<Task> child) {
    child->root_ = root;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        queue_.push_back(std::move(child));
    }
    spawned_.notify_one();
}

void TaskScheduler::waitForAll(RootTask& root) {
    std::unique_lock<std::mutex> lock(mutex_);
    completed_.wait(lock, [&root] { return root.references_ == 1; });
    if (root.error_) {
        std::rethrow_exception(root.error_);
    }
}

void TaskScheduler::terminate() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ending_ = true;
    }
    spawned_.notify_all();
    for (std::thread& worker : workers_) {
        worker.join();
    }
}

void TaskScheduler::work() {
    while (std::unique_ptr<Task> task = takeTask()) {
        runTask(std::move(task));
    }
}

/// The next task; null once the scheduler ends.
std::unique_ptr<Task> TaskScheduler::takeTask() {
    std::unique_lock<std::mutex> lock(mutex_);
    spawned_.wait(lock, [this] { return ending_ || !queue_.empty(); });
    if (ending_) {
        return nullptr;
    }
    std::unique_ptr<Task> task = std::move(queue_.front());
    queue_.pop_front();
    return task;
}

void TaskScheduler::runTask(std::unique_ptr<Task> task) {
    const std::shared_ptr<RootTask> root = task->root_;
    std::exception_ptr error;
    try {
        while (task) {
            task = task->execute();
        }
    } catch (...) {
        error = std::current_exception();
        task.reset();
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!root->error_) {
            root->error_ = std::move(error);
        }
        --root->references_;
    }
    completed_.notify_all();
}

}  // namespace vorn
