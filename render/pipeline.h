// Work in many pieces, done on many threads and handed on in order.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace render {

// Makes pieces 0 to count - 1, each on some thread, and passes them to the calling thread in this
// order. At most `ahead` pieces lie between the oldest one not yet passed on and the newest one in
// work: so much memory is needed, and no more.
//
// Threads wait for one another at a condition, never by looking. What a piece throws is thrown by
// next() once all pieces before it have been passed on.
template <class Piece>
class Pipeline {
  public:
    using Index = std::uint64_t;

    // Makes the pieces of one thread; called once on each.
    using Maker = std::function<Piece(Index)>;
    using MakerFactory = std::function<Maker()>;

    // Starts `threads` (at least 1) threads, or as many of them as the system has. Throws
    // std::system_error when it has none. `newMaker` must be callable on any thread at any time.
    Pipeline(Index pieces, int threads, Index ahead, MakerFactory newMaker)
        : count(pieces), mostAhead(ahead), factory(std::move(newMaker)) {
        try {
            for (int i = 0; i < threads; ++i) workers.emplace_back([this] { work(); });
        } catch (const std::system_error& error) {
            if (workers.empty()) throw std::system_error(error.code(), "no thread can be started");
        }
    }

    // Gives up what is not yet made, and waits for the threads. Whoever wants that to be soon
    // makes pieces in work return.
    ~Pipeline() {
        {
            const std::lock_guard lock(mutex);
            given = count;
        }
        mayStart.notify_all();
        for (std::thread& worker : workers) worker.join();
    }

    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    // The next piece in order; call `count` times, on one thread.
    Piece next() {
        std::unique_lock lock(mutex);
        isDone.wait(lock, [this] { return done.count(passed) > 0; });
        auto node = done.extract(passed++);
        lock.unlock();
        mayStart.notify_one();
        if (node.mapped().error) std::rethrow_exception(node.mapped().error);
        return std::move(node.mapped().piece);
    }

  private:
    struct Result {
        Piece piece{};
        std::exception_ptr error;
    };

    void work() {
        Maker make;
        for (Index index = 0; take(index);) {
            Result result;
            try {
                if (!make) make = factory();
                result.piece = make(index);
            } catch (...) {
                result.error = std::current_exception();
            }
            give(index, std::move(result));
        }
    }

    bool take(Index& index) {
        std::unique_lock lock(mutex);
        mayStart.wait(lock, [this] { return given >= count || given < passed + mostAhead; });
        if (given >= count) return false;
        index = given++;
        return true;
    }

    void give(Index index, Result&& result) {
        {
            const std::lock_guard lock(mutex);
            done.emplace(index, std::move(result));
        }
        isDone.notify_one();
    }

    const Index count, mostAhead;
    const MakerFactory factory;
    std::mutex mutex;                          // guards all of the following
    std::condition_variable mayStart, isDone;  // of the workers, of next()
    Index given = 0;                           // pieces that a worker has taken
    Index passed = 0;                          // pieces that next() has returned
    std::map<Index, Result> done;              // made and not yet passed on
    std::vector<std::thread> workers;
};

}  // namespace render
