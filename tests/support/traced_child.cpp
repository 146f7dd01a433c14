#include "tests/support/traced_child.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace traced_child {
namespace {

constexpr int CALL_STOP = SIGTRAP | 0x80;  // PTRACE_O_TRACESYSGOOD

#ifdef __x86_64__

Call callOf(pid_t child) {
    user_regs_struct r = {};
    ptrace(PTRACE_GETREGS, child, nullptr, &r);
    return {static_cast<long>(r.orig_rax), {r.rdi, r.rsi, r.rdx, r.r10, r.r8, r.r9}, child};
}

void replaceCallByNone(pid_t child) {
    user_regs_struct r = {};
    ptrace(PTRACE_GETREGS, child, nullptr, &r);
    r.orig_rax = static_cast<unsigned long long>(-1);
    ptrace(PTRACE_SETREGS, child, nullptr, &r);
}

void setAnswer(pid_t child, int error) {
    user_regs_struct r = {};
    ptrace(PTRACE_GETREGS, child, nullptr, &r);
    r.rax = static_cast<unsigned long long>(-error);
    ptrace(PTRACE_SETREGS, child, nullptr, &r);
}

constexpr bool KNOWN_REGISTERS = true;

#else

Call callOf(pid_t child) {
    return {0, {}, child};
}
void replaceCallByNone(pid_t) {}
void setAnswer(pid_t, int) {}
constexpr bool KNOWN_REGISTERS = false;

#endif

pid_t startChild(const std::function<void()>& prepare, const std::function<void()>& work) {
    const pid_t child = fork();
    if (child != 0) return child;
    prepare();
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(125);
    kill(getpid(), SIGSTOP);
    work();
    _exit(0);
}

// Lets the child go on to its next stop; false once it has ended.
bool goOn(pid_t child, int signal, int& status) {
    ptrace(PTRACE_SYSCALL, child, nullptr, signal);
    waitpid(child, &status, 0);
    return WIFSTOPPED(status);
}

// From the entry of a call to its exit.
bool finishCall(pid_t child, int verdict, int& status) {
    if (verdict != MAKE) replaceCallByNone(child);
    if (!goOn(child, 0, status)) return false;
    if (verdict != MAKE) setAnswer(child, verdict == PRETEND ? 0 : verdict);
    return true;
}

void kill(pid_t child, int& status) {
    ::kill(child, SIGKILL);
    waitpid(child, &status, 0);
    while (WIFSTOPPED(status)) waitpid(child, &status, 0);
}

void follow(pid_t child, const Watch& watch, int& status) {
    int signal = 0;
    while (goOn(child, signal, status)) {
        signal = WSTOPSIG(status) == CALL_STOP ? 0 : WSTOPSIG(status);
        if (signal != 0) continue;
        const Call call = callOf(child);
        const int verdict = call.is(SYS_exit_group) ? MAKE : watch(call);
        if (verdict == KILL) return kill(child, status);
        if (!finishCall(child, verdict, status)) return;
    }
}

}  // namespace

std::string Call::text(std::size_t argument) const {
    std::array<char, 4096> text{};
    // A page is readable whole or not at all.
    std::uint64_t at = arguments.at(argument);
    std::string result;
    while (result.size() < text.size()) {
        const std::size_t size = text.size() - at % text.size();
        const iovec here = {text.data(), size}, there = {reinterpret_cast<void*>(at), size};
        if (process_vm_readv(process, &here, 1, &there, 1, 0) <= 0) return result;
        const std::string_view part(text.data(), size);
        result += part.substr(0, part.find('\0'));
        if (part.find('\0') != std::string_view::npos) return result;
        at += size;
    }
    return result;
}

std::string Call::file(std::size_t argument) const {
    std::error_code error;
    return std::filesystem::read_symlink(
               "/proc/" + std::to_string(process) + "/fd/" + std::to_string(flags(argument)), error)
        .string();
}

bool isPossible() {
    static const bool possible =
        KNOWN_REGISTERS && run([] {}, [] {}, [](const Call&) { return MAKE; }) == 0;
    return possible;
}

Ending run(const std::function<void()>& prepare, const std::function<void()>& work,
           const Watch& watch) {
    const pid_t child = startChild(prepare, work);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSTOPPED(status)) {
        ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        follow(child, watch, status);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void* shareMemory(std::size_t size) {
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    return memory;
}

void unshareMemory(void* memory, std::size_t size) {
    munmap(memory, size);
}

}  // namespace traced_child
