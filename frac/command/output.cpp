#include "frac/command/output.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <stdexcept>

#include "frac/file_replace.h"

namespace {

// The signals that ask the process to end wait while this lives.
class SignalsWait {
  public:
    SignalsWait() {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&ending, signal);
        sigprocmask(SIG_BLOCK, &ending, &previous);
    }
    ~SignalsWait() { sigprocmask(SIG_SETMASK, &previous, nullptr); }
    SignalsWait(const SignalsWait&) = delete;
    SignalsWait& operator=(const SignalsWait&) = delete;

  private:
    sigset_t previous;
};

[[noreturn]] void refuse(const std::string& what) {
    const char* reason = errno != 0 ? std::strerror(errno) : "it did not take all bytes";
    throw std::runtime_error(what + " cannot be written: " + reason);
}

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

// Closing is what writes on some file systems.
void writeStandardOutput(std::string_view bytes) {
    if (!writeAll(STDOUT_FILENO, bytes) || close(STDOUT_FILENO) != 0) refuse("standard output");
}

// A pipe may take for ever; there nothing is left half done that a signal would leave behind.
bool isReplaced(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

bool writeFile(const std::string& path, std::string_view bytes) {
    if (!isReplaced(path)) return replaceFile(path, bytes);
    const SignalsWait wait;
    return replaceFile(path, bytes);
}

void openIfClosed(int descriptor, int flags) {
    if (fcntl(descriptor, F_GETFD) < 0) open("/dev/null", flags);
}

}  // namespace

std::string printable(std::string_view text) {
    std::string result;
    std::mbstate_t state = {};
    while (!text.empty()) {
        wchar_t character = 0;
        const std::size_t read = std::mbrtowc(&character, text.data(), text.size(), &state);
        const bool whole = read != 0 && read <= text.size();  // a NUL, or not even a character
        const std::size_t length = whole ? read : 1;
        const bool shows = whole && std::iswprint(static_cast<std::wint_t>(character)) != 0;
        result += shows ? text.substr(0, length) : "?";
        text.remove_prefix(length);
        if (!whole) state = {};
    }
    return result;
}

void say(const std::string& message) {
    writeAll(STDERR_FILENO, "tessary-frac: " + printable(message) + "\n");
}

void writeOutput(const std::string& path, std::string_view bytes) {
    errno = 0;
    if (path == "-") return writeStandardOutput(bytes);
    if (!writeFile(path, bytes)) refuse(path);
}

void prepareStreams() {
    openIfClosed(STDIN_FILENO, O_WRONLY);
    openIfClosed(STDOUT_FILENO, O_RDONLY);
    openIfClosed(STDERR_FILENO, O_RDONLY);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    std::setlocale(LC_CTYPE, "C.UTF-8");
}
