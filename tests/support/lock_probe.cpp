#include "tests/support/lock_probe.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <fstream>
#include <string>
#include <thread>

namespace {

// Whether the kernel has put this thread of the process to sleep until the lock is given up.
bool isWaitingFor(pid_t thread, std::recursive_mutex& lock) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/syscall");
    long number = -1;
    std::uintptr_t address = 0;
    file >> number >> std::hex >> address;
    return file && number == SYS_futex &&
           address == reinterpret_cast<std::uintptr_t>(lock.native_handle());
}

}  // namespace

bool isHeld(std::recursive_mutex& lock) {
    bool free = false;
    std::thread([&] {
        free = lock.try_lock();
        if (free) lock.unlock();
    }).join();
    return !free;
}

bool waitsFor(std::recursive_mutex& lock, const std::function<void()>& call,
              const std::function<void()>& whileWaiting) {
    Gate gate;
    const auto gatedCall = [&] {
        gate.pass();
        call();
    };
    return waitsFrom(gate, lock, gatedCall, whileWaiting);
}

bool waitsFrom(Gate& gate, std::recursive_mutex& lock, const std::function<void()>& call,
               const std::function<void()>& whileWaiting) {
    std::atomic<pid_t> caller{0};
    std::atomic<bool> over{false};
    std::thread thread([&] {
        caller = gettid();
        call();
        over = true;
    });
    gate.reached.wait();
    std::unique_lock held(lock);
    gate.opened.count_down();
    while (!over && !isWaitingFor(caller, lock)) std::this_thread::yield();
    const bool waits = !over;
    if (waits && whileWaiting) whileWaiting();
    held.unlock();
    thread.join();
    return waits;
}
