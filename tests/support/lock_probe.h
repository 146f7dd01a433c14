// What a test asks of a lock: who holds it, and whether a call waits for it.
#pragma once

#include <functional>
#include <latch>
#include <mutex>

// Whether any thread holds this lock.
bool isHeld(std::recursive_mutex& lock);

// Whether `call` waits while another thread holds `lock`. The call is over and the lock free when
// this returns. `whileWaiting` runs before a lock that is waited for is given up.
bool waitsFor(std::recursive_mutex& lock, const std::function<void()>& call,
              const std::function<void()>& whileWaiting = {});

// A point in the middle of a call that it passes once.
class Gate {
  public:
    // Called by the call: lets the test take the lock.
    void pass() {
        reached.count_down();
        opened.wait();
    }

  private:
    friend bool waitsFrom(Gate& gate, std::recursive_mutex& lock, const std::function<void()>& call,
                          const std::function<void()>& whileWaiting);
    std::latch reached{1}, opened{1};
};

// The same for what comes after the gate: until the call passes it, the lock is free.
bool waitsFrom(Gate& gate, std::recursive_mutex& lock, const std::function<void()>& call,
               const std::function<void()>& whileWaiting = {});
