// Preloaded into a program, lets one of its system calls fail: the n-th one of a kind since main()
// began, or since the probe of the hostile cases said so, as the environment says:
//     VORN_FAULT=CALL:ERROR:N    CALL as in kCalls below; ERROR an errno, or 0 for a transfer of
//                                half the bytes
//     VORN_FAULT_REPORT=FILE     gets the call stack when that call was reached
// Only what a kernel may answer is answered: no full disk on a terminal, no EAGAIN from a
// descriptor that blocks, nothing from an eventfd.
#include <dirent.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

// Integers and pointers travel alike, in registers, on the 64-bit machines of Linux, and unused
// registers do no harm: one type serves for all wrapped functions, the variadic ones included.
using Word = long;
using Function = Word (*)(Word, Word, Word, Word, Word, Word);

// What a function's first argument is.
enum class First { Path, Folder, Descriptor, Stream, Other };

constexpr Word kErrno = 1; // as a failed function's result: the error itself

struct
{
    std::string_view call;
    int error = 0;
    long n = 0;
    const char *report = nullptr;
} wish;
std::atomic<bool> isRunning = false;
std::atomic<long> count = 0;
int (*programMain)(int, char **, char **) = nullptr;

// Through no wrapped function.
void report()
{
    std::array<void *, 64> stack{};
    const int size = ::backtrace(stack.data(), stack.size());
    const auto file = static_cast<int>(
        ::syscall(SYS_openat, AT_FDCWD, wish.report, O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    ::backtrace_symbols_fd(stack.data(), size, file);
    ::syscall(SYS_close, file);
}

// The network library reads the system's hundreds of certificates, one like the other.
bool isCertificate(const char *path)
{
    const std::string_view text = path ? path : "";
    return text.starts_with("/etc/ssl/") || text.starts_with("/usr/share/ca-certificates/") ||
           text.starts_with("/usr/lib/ssl/");
}

bool isCertificate(int descriptor)
{
    std::array<char, 64> link{};
    std::array<char, 64> path{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    ::syscall(SYS_readlinkat, AT_FDCWD, link.data(), path.data(), path.size() - 1);
    return isCertificate(path.data());
}

bool mayFail(int descriptor)
{
    struct stat status = {};
    if (isCertificate(descriptor) || ::syscall(SYS_fstat, descriptor, &status) != 0 ||
        (status.st_mode & S_IFMT) == 0) // an eventfd or the like
        return false;
    const bool isOnDisk = S_ISREG(status.st_mode) || S_ISDIR(status.st_mode);
    switch (wish.error) {
    case ENOSPC:
        return isOnDisk;
    case EAGAIN:
        return !isOnDisk && (::syscall(SYS_fcntl, descriptor, F_GETFL) & O_NONBLOCK) != 0;
    default:
        return true;
    }
}

// NOLINTBEGIN(performance-no-int-to-ptr): the arguments of every call are handled as words.
bool mayFail(First first, Word a, Word b)
{
    switch (first) {
    case First::Path:
        return !isCertificate(reinterpret_cast<const char *>(a));
    case First::Folder: {
        const auto *const path = reinterpret_cast<const char *>(b);
        return !(*path ? isCertificate(path) : isCertificate(static_cast<int>(a)));
    }
    case First::Stream:
        return !isCertificate(::dirfd(reinterpret_cast<DIR *>(a)));
    case First::Descriptor:
        return mayFail(static_cast<int>(a));
    case First::Other:
        break;
    }
    return true;
}
// NOLINTEND(performance-no-int-to-ptr)

bool isTurn(std::string_view call, First first, Word a, Word b, Word c)
{
    if (!isRunning || call != wish.call || !mayFail(first, a, b))
        return false;
    // Only what makes a file needs room for one.
    const Word flags = first == First::Path ? b : c;
    if (call == "open" && wish.error == ENOSPC && (flags & O_CREAT) == 0)
        return false;
    if (++count != wish.n)
        return false;
    report();
    return true;
}

int countedMain(int argc, char **argv, char **environment)
{
    const char *text = std::getenv("VORN_FAULT");
    wish.report = std::getenv("VORN_FAULT_REPORT");
    static std::array<char, 32> call{};
    if (text && wish.report &&
        std::sscanf(text, "%31[^:]:%d:%ld", call.data(), &wish.error, &wish.n) == 3) {
        wish.call = call.data();
        std::array<void *, 1> first{};
        ::backtrace(first.data(), 1); // loads now what it needs
        isRunning = !std::getenv("VORN_PROBE");
    }
    return programMain(argc, argv, environment);
}

} // namespace

// Defines the function under the name that the program calls.
#define VORN_CALL(kind, symbol, first, failed)                                                     \
    extern "C" Word vorn_##symbol(Word, Word, Word, Word, Word, Word) asm(#symbol);                \
    Word vorn_##symbol(Word a, Word b, Word c, Word d, Word e, Word f)                             \
    {                                                                                              \
        static const auto next = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, #symbol));          \
        if (!isTurn(#kind, First::first, a, b, c))                                                 \
            return next(a, b, c, d, e, f);                                                         \
        if (wish.error == 0)                                                                       \
            return next(a, b, (c + 1) / 2, d, e, f);                                               \
        if (wish.call == "close") /* The kernel frees the descriptor all the same. */              \
            next(a, b, c, d, e, f);                                                                \
        errno = wish.error;                                                                        \
        return (failed) == kErrno ? wish.error : (failed);                                         \
    }

VORN_CALL(open, open, Path, -1)
VORN_CALL(open, open64, Path, -1)
VORN_CALL(open, openat, Folder, -1)
VORN_CALL(open, openat64, Folder, -1)
VORN_CALL(fopen, fopen, Path, 0)
VORN_CALL(fopen, fopen64, Path, 0)
VORN_CALL(read, read, Descriptor, -1)
VORN_CALL(read, pread, Descriptor, -1)
VORN_CALL(write, write, Descriptor, -1)
VORN_CALL(write, writev, Descriptor, -1)
VORN_CALL(poll, poll, Other, -1)
VORN_CALL(poll, ppoll, Other, -1)
VORN_CALL(ioctl, ioctl, Descriptor, -1)
VORN_CALL(termios, tcgetattr, Descriptor, -1)
VORN_CALL(termios, tcsetattr, Descriptor, -1)
VORN_CALL(termios, tcflush, Descriptor, -1)
VORN_CALL(close, close, Descriptor, -1)
VORN_CALL(fsync, fsync, Descriptor, -1)
VORN_CALL(fsync, fdatasync, Descriptor, -1)
VORN_CALL(fsync, syncfs, Descriptor, -1)
VORN_CALL(rename, rename, Path, -1)
VORN_CALL(rename, renameat, Folder, -1)
VORN_CALL(rename, renameat2, Folder, -1)
VORN_CALL(link, link, Path, -1)
VORN_CALL(link, linkat, Folder, -1)
VORN_CALL(mkdir, mkdir, Path, -1)
VORN_CALL(mkdir, mkdirat, Folder, -1)
VORN_CALL(mkdir, mkdtemp, Path, 0)
VORN_CALL(unlink, unlink, Path, -1)
VORN_CALL(unlink, unlinkat, Folder, -1)
VORN_CALL(unlink, rmdir, Path, -1)
VORN_CALL(truncate, ftruncate, Descriptor, -1)
VORN_CALL(truncate, ftruncate64, Descriptor, -1)
VORN_CALL(stat, stat, Path, -1)
VORN_CALL(stat, stat64, Path, -1)
VORN_CALL(stat, lstat, Path, -1)
VORN_CALL(stat, lstat64, Path, -1)
VORN_CALL(stat, fstat, Descriptor, -1)
VORN_CALL(stat, fstat64, Descriptor, -1)
VORN_CALL(stat, fstatat, Folder, -1)
VORN_CALL(stat, fstatat64, Folder, -1)
VORN_CALL(stat, statx, Folder, -1)
VORN_CALL(stat, access, Path, -1)
VORN_CALL(stat, faccessat, Folder, -1)
VORN_CALL(attributes, fchmod, Descriptor, -1)
VORN_CALL(attributes, futimens, Descriptor, -1)
VORN_CALL(lock, flock, Descriptor, -1)
VORN_CALL(eventfd, eventfd, Other, -1)
VORN_CALL(eventfd, signalfd, Other, -1)
VORN_CALL(inotify, inotify_init1, Other, -1)
VORN_CALL(inotify, inotify_add_watch, Other, -1)
VORN_CALL(readdir, opendir, Path, 0)
VORN_CALL(readdir, readdir, Stream, 0)
VORN_CALL(readdir, readdir64, Stream, 0)
VORN_CALL(socket, socket, Other, -1)
VORN_CALL(socket, connect, Descriptor, -1)
VORN_CALL(thread, pthread_create, Other, kErrno)

// Hides the machine's real devices: nothing must update them, and listing them takes thousands of
// calls.
extern "C" int noScan(void *) asm("udev_enumerate_scan_devices");
int noScan(void *)
{
    return 0;
}
extern "C" void *noDevice(void *) asm("udev_monitor_receive_device");
void *noDevice(void *)
{
    errno = EAGAIN;
    return nullptr;
}

// Starts the counting when the program is idle.
extern "C" void vornCount()
{
    isRunning = !wish.call.empty();
}

// Starts the counting with main().
extern "C" int start(int (*main)(int, char **, char **), int argc, char **argv, void (*init)(),
                     void (*fini)(), void (*loaderFini)(), void *stack) asm("__libc_start_main");
int start(int (*main)(int, char **, char **), int argc, char **argv, void (*init)(), void (*fini)(),
          void (*loaderFini)(), void *stack)
{
    programMain = main;
    const auto next = reinterpret_cast<decltype(&start)>(::dlsym(RTLD_NEXT, "__libc_start_main"));
    return next(countedMain, argc, argv, init, fini, loaderFini, stack);
}
