// To be preloaded: a library that has SIGPIPE ignored from its first use on, as some of those
// behind the desktop's toolkit do; its first use is that a file panel watches the folder it shows.
#include <signal.h>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" int inotify_init1(int flags) noexcept {
    signal(SIGPIPE, SIG_IGN);
    return static_cast<int>(syscall(SYS_inotify_init1, flags));
}
