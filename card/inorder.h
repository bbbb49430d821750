#ifndef INORDER_H
#define INORDER_H

// Runs work(i) for i = 0 .. count-1 on several threads and hands each result
// to deliver(i, result) on the calling thread, in the order of i. A thread
// may run ahead of the next result to deliver by a few items only, so memory
// stays bounded however many items there are.

#include "card/limits.h"

#include <chrono>
#include <condition_variable>
#include <memory>
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

// The same for work that may never return (a file on a share that hangs):
// an item whose work has run for `patience` is delivered as unanswered(i) and
// left to its thread, a new thread takes that one's place, and the items
// after it go on. The calling thread only delivers. Returns how many items
// were left so: when it is not 0, their threads are still blocked in work,
// which refers to the caller's objects, so the caller ends the process
// without returning (std::_Exit after flushing its output).
template <typename Result, typename Work, typename Deliver, typename Unanswered>
int runInOrderPatiently(int count, int threads, Work work, Deliver deliver, Unanswered unanswered,
                        std::chrono::milliseconds patience)
{
    using Clock = std::chrono::steady_clock;
    struct TState {
        std::mutex mutex;
        std::condition_variable resultReady, slotFree;
        int window = 1, count = 0, next = 0, delivered = 0;
        // Per slot (item i at i % window): the item it holds or works on,
        // since when, and its result.
        std::vector<int> item;
        std::vector<Clock::time_point> started;
        std::vector<std::optional<Result>> results;
        bool mayTake() const { return next < count && next < delivered + window; }
    };
    const auto state = std::make_shared<TState>();
    state->window = std::max(threads, 1) * limits::kFilesInFlightPerThread;
    state->count = count;
    state->item.assign(std::size_t(state->window), -1);
    state->started.resize(std::size_t(state->window));
    state->results.resize(std::size_t(state->window));

    // A worker holds the state and its own copy of work: one left blocked
    // outlives this call.
    const auto worker = [state, work]() mutable {
        std::unique_lock lock(state->mutex);
        for (;;) {
            state->slotFree.wait(lock,
                                 [&] { return state->next >= state->count || state->mayTake(); });
            if (state->next >= state->count)
                return;
            const int i = state->next++;
            const std::size_t slot = std::size_t(i % state->window);
            state->item[slot] = i;
            state->started[slot] = Clock::now();
            lock.unlock();
            Result result = work(i);
            lock.lock();
            if (state->item[slot] != i)
                return; // given up on: another thread took this one's place
            state->results[slot] = std::move(result);
            state->resultReady.notify_one();
        }
    };
    for (int t = 0; t < std::max(threads, 1); ++t)
        std::thread(worker).detach();

    int abandoned = 0;
    std::unique_lock lock(state->mutex);
    while (state->delivered < count) {
        const int i = state->delivered;
        const std::size_t slot = std::size_t(i % state->window);
        const bool working = state->item[slot] == i && !state->results[slot];
        std::optional<Result> result;
        if (state->results[slot] && state->item[slot] == i) {
            result = std::move(state->results[slot]);
            state->results[slot].reset();
        } else if (working && Clock::now() - state->started[slot] >= patience) {
            state->item[slot] = -1;
            ++abandoned;
            std::thread(worker).detach();
            result = unanswered(i);
        } else {
            const auto deadline =
                working ? state->started[slot] + patience : Clock::now() + patience;
            state->resultReady.wait_until(lock, deadline);
            continue;
        }
        ++state->delivered;
        state->slotFree.notify_all();
        lock.unlock();
        deliver(i, std::move(*result));
        lock.lock();
    }
    state->slotFree.notify_all(); // threads still waiting for a slot see that all is taken
    return abandoned;
}

#endif // INORDER_H
