#ifndef INORDER_H
#define INORDER_H

// Runs work(i) for i = 0 .. count-1 on several threads and hands each result
// to deliver(i, result) on the calling thread, in the order of i. A thread
// may run ahead of the next result to deliver by a few items only, so memory
// stays bounded however many items there are.

#include "cli/limits.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

template <typename Result, typename Work, typename Deliver>
void runInOrder(int count, int threads, Work work, Deliver deliver)
{
    if (threads <= 1 || count <= 1) {
        for (int i = 0; i < count; ++i)
            deliver(i, work(i));
        return;
    }
    const int window = threads * limits::kFilesInFlightPerThread;
    std::vector<std::optional<Result>> slots(
        static_cast<std::size_t>(window)); // item i in slot i % window
    std::mutex mutex;
    std::condition_variable changed;
    int next = 0;      // the next item a thread takes
    int delivered = 0; // items handed to deliver

    const auto worker = [&] {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [&] { return next >= count || next < delivered + window; });
            if (next >= count)
                return;
            const int i = next++;
            lock.unlock();
            Result result = work(i);
            lock.lock();
            slots[std::size_t(i % window)] = std::move(result);
            changed.notify_all();
        }
    };
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t)
        pool.emplace_back(worker);

    for (int i = 0; i < count; ++i) {
        std::optional<Result> &slot = slots[std::size_t(i % window)];
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return slot.has_value(); });
        Result result = std::move(*slot);
        slot.reset();
        ++delivered;
        changed.notify_all();
        lock.unlock();
        deliver(i, std::move(result));
    }
    for (std::thread &thread : pool)
        thread.join();
}

#endif // INORDER_H
