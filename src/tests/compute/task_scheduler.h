// A small task scheduler: workers that run spawned tasks, and roots to wait at for their children.
#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace vorn {

class RootTask;

/// A unit of work.
class Task {
public:
    Task() = default;
    virtual ~Task() = default;
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;

    /// Does the work, on the thread of a worker. Returns the task that continues it on the same
    /// worker and for the same root, or null. What it raises is raised again where its root is
    /// waited for.
    virtual std::unique_ptr<Task> execute() = 0;

private:
    friend class TaskScheduler;
    std::shared_ptr<RootTask> root_;
};

/// An empty task, never run: the point where its children are complete.
class RootTask : public Task {
public:
    /// `references` counts the root itself and every child that it will have.
    explicit RootTask(int references) : references_(references) {}

    std::unique_ptr<Task> execute() override { return nullptr; }

private:
    friend class TaskScheduler;
    int references_;
    std::exception_ptr error_;  // the first of its children's
};

/// The workers. Its end lets each worker finish the task that it runs and joins it; a task that no
/// worker has begun by then is dropped.
class TaskScheduler {
public:
    /// Starts this many workers. Raises std::system_error when the system refuses a thread, with
    /// the workers that it did start joined again.
    explicit TaskScheduler(int workers);
    ~TaskScheduler();
    TaskScheduler(const TaskScheduler&) = delete;
    TaskScheduler& operator=(const TaskScheduler&) = delete;

    /// Hands a child to the workers. The scheduler owns the child and destroys it once it has run.
    void spawn(const std::shared_ptr<RootTask>& root, std::unique_ptr<Task> child);

    /// Blocks until only the root's own reference is left, then raises the first error of its
    /// children, if there was one. As many children as the root has further references must have
    /// been spawned.
    void waitForAll(RootTask& root);

private:
    void terminate();
    void work();
    std::unique_ptr<Task> takeTask();
    void runTask(std::unique_ptr<Task> task);

    std::mutex mutex_;  // guards the queue, the end and the members of every root
    std::condition_variable spawned_;
    std::condition_variable completed_;
    std::deque<std::unique_ptr<Task>> queue_;
    bool ending_ = false;
    std::vector<std::thread> workers_;
};

}  // namespace vorn
