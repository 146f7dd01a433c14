// Code run in a child process whose every system call the test sees first and may make fail, or may
// kill the child before.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace traced_child {

// A system call that is about to be made.
struct Call {
    long number;  // SYS_...
    std::array<std::uint64_t, 6> arguments;
    pid_t process;

    bool is(long which) const { return number == which; }
    int flags(std::size_t argument) const { return static_cast<int>(arguments.at(argument)); }
    std::string text(std::size_t argument) const;  // what the argument points to
    std::string file(
        std::size_t argument) const;  // where the descriptor leads, as the system names it
};

// What is to become of a call; any other number is the errno with which it fails, unmade.
constexpr int MAKE = 0;
constexpr int KILL = -1;     // the child dies before it
constexpr int PRETEND = -2;  // unmade, it answers 0

using Watch = std::function<int(const Call&)>;

// How a child ended: its status, or minus the signal.
using Ending = int;

// False where no process may be traced, or where this file does not know the registers.
bool isPossible();

// Runs `prepare`, then, watched, `work` in a child, which then ends with status 0. The caller must
// be single-threaded. The child's memory is its own, but for Shared.
Ending run(const std::function<void()>& prepare, const std::function<void()>& work,
           const Watch& watch);

// Memory that the child shares with the test. T holds no pointers.
void* shareMemory(std::size_t size);
void unshareMemory(void* memory, std::size_t size);

template <typename T>
class Shared {
  public:
    Shared() : value(new (shareMemory(sizeof(T))) T()) {}
    ~Shared() { unshareMemory(value, sizeof(T)); }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;
    T* operator->() const { return value; }
    T& operator*() const { return *value; }

  private:
    T* value;
};

}  // namespace traced_child
