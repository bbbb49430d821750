#ifndef INORDER_H
#define INORDER_H

// Runs work(i) for i = 0 .. count-1 on several threads and hands each result
// to deliver(i, result) on the calling thread, in the order of i. A thread
// may run ahead of the next result to deliver by a few items only, so memory
// stays bounded however many items there are.

#include "card/limits.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

template <typename Result, typename Work, typename Deliver>
void runInOrder(int count, int threads, Work work, Deliver deliver)
{
    const int window = std::max(threads, 1) * limits::kFilesInFlightPerThread;
    std::vector<std::optional<Result>> results(
        static_cast<std::size_t>(window)); // item i at i % window
    std::mutex mutex;
    // Each side is woken only when it cannot go on otherwise: switching
    // threads costs about as much as reading a file.
    std::condition_variable resultReady, slotFree;
    int next = 0;      // the next item to take
    int delivered = 0; // items handed to deliver
    const auto mayTake = [&] { return next < count && next < delivered + window; };
    const auto slotOf = [&](int i) -> std::optional<Result> & {
        return results[std::size_t(i % window)];
    };

    const auto worker = [&] {
        std::unique_lock lock(mutex);
        for (;;) {
            slotFree.wait(lock, [&] { return next >= count || mayTake(); });
            if (next >= count)
                return;
            const int i = next++;
            lock.unlock();
            Result result = work(i);
            lock.lock();
            slotOf(i) = std::move(result);
            if (i == delivered)
                resultReady.notify_one();
        }
    };
    std::vector<std::thread> pool;
    for (int t = 1; t < threads; ++t)
        pool.emplace_back(worker);

    // The calling thread delivers what is ready and otherwise works itself.
    std::unique_lock lock(mutex);
    while (delivered < count) {
        std::optional<Result> &slot = slotOf(delivered);
        if (slot) {
            Result result = std::move(*slot);
            slot.reset();
            const int i = delivered++;
            if (next >= i + window) // the window was full: a thread may wait for it
                slotFree.notify_one();
            lock.unlock();
            deliver(i, std::move(result));
            lock.lock();
        } else if (mayTake()) {
            const int i = next++;
            lock.unlock();
            Result result = work(i);
            lock.lock();
            slotOf(i) = std::move(result);
        } else {
            resultReady.wait(lock, [&] { return slot.has_value(); });
        }
    }
    lock.unlock();
    slotFree.notify_all(); // threads still waiting for a slot see that all is taken
    for (std::thread &thread : pool)
        thread.join();
}

#endif // INORDER_H
