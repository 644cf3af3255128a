// Preloaded into a program, counts its calls of the file system, and asks another process what is
// to become of some of them, as the environment says:
//
//     TORTURE_SOCKET    a socket that gets "{number} {function} {path}" as a packet. The call waits
//                       for the reply: the errno value with which it fails without being made, or 0
//     TORTURE_FROM      the number of the first call to ask at, from 1
//     TORTURE_COUNT     how many calls to ask at; 0 for all that follow
//     TORTURE_FUNCTION  counts the calls of this one function alone, if it isn't empty
//
// A nap takes a second of the steady clock, so that long patience with others ends soon. Standard
// input, output and error are left alone.

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// The function that a wrapper stands before.
template <class Function>
Function following(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/// What a call is about: a path relative to a directory, or a descriptor where the path is empty.
struct Subject {
  int descriptor = AT_FDCWD;
  const char* name = "";
};

/// Not a call of the program's: goes past the wrappers.
template <class... Arguments>
long callKernel(long number, Arguments... arguments) {
  static const auto next = following<long (*)(long, ...)>("syscall");
  return next(number, arguments...);
}

std::string setting(const char* name) {
  const char* text = std::getenv(name);
  return text == nullptr ? "" : text;
}

struct Settings {
  std::string function = setting("TORTURE_FUNCTION");
  long from = std::atol(setting("TORTURE_FROM").c_str());
  long count = std::atol(setting("TORTURE_COUNT").c_str());
  int socket = std::atoi(setting("TORTURE_SOCKET").c_str());
};

std::string pathOf(const Subject& subject) {
  const std::string name = subject.name == nullptr ? "" : subject.name;
  if (name.starts_with('/') || subject.descriptor == AT_FDCWD) return name;
  const std::string link = "/proc/self/fd/" + std::to_string(subject.descriptor);
  std::array<char, 4096> target{};
  const long size =
      callKernel(SYS_readlinkat, AT_FDCWD, link.c_str(), target.data(), target.size());
  const std::string path(target.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
  return name.empty() ? path : path + "/" + name;
}

/// Answers the errno value with which the call is to fail, or 0.
int meet(const char* function, const Subject& subject) {
  static const Settings settings;
  static std::atomic<long> calls = 0;
  const bool isStandardStream =
      *subject.name == '\0' && subject.descriptor >= 0 && subject.descriptor <= 2;
  if (settings.socket == 0 || isStandardStream) return 0;
  if (!settings.function.empty() && settings.function != function) return 0;
  const long number = ++calls;
  if (number < settings.from) return 0;
  if (settings.count != 0 && number >= settings.from + settings.count) return 0;

  const int code = errno;
  const std::string question = std::to_string(number) + " " + function + " " + pathOf(subject);
  callKernel(SYS_write, settings.socket, question.data(), question.size());
  std::array<char, 16> reply{};
  callKernel(SYS_read, settings.socket, reply.data(), reply.size() - 1);
  errno = code;
  return std::atoi(reply.data());
}

}  // namespace

// Every argument and every result of these functions fits a register, so that one signature serves
// them all, whatever their own is.
#define WRAP(function, failure, ...)                                                             \
  extern "C" long wrapped_##function(long a, long b, long c, long d, long e) __asm__(#function); \
  extern "C" long wrapped_##function(long a, long b, long c, long d, long e) {                   \
    static const auto next = following<long (*)(long, long, long, long, long)>(#function);       \
    if (const int code = meet(#function, {__VA_ARGS__}); code != 0) {                            \
      errno = code;                                                                              \
      return failure;                                                                            \
    }                                                                                            \
    return next(a, b, c, d, e);                                                                  \
  }

// Functions of a path, the same that give a pointer, of a path relative to a directory, and of a
// descriptor.
#define PATH(function) WRAP(function, -1, AT_FDCWD, reinterpret_cast<const char*>(a))
#define POINTER(function) WRAP(function, 0, AT_FDCWD, reinterpret_cast<const char*>(a))
#define AT(function) WRAP(function, -1, static_cast<int>(a), reinterpret_cast<const char*>(b))
#define OPEN(function) WRAP(function, -1, static_cast<int>(a), "")
// Of a descriptor, and gives its errno value itself.
#define CODE(function) WRAP(function, code, static_cast<int>(a), "")

// clang-format off
PATH(open) PATH(open64) PATH(mkostemp) PATH(access) PATH(stat) PATH(stat64) PATH(lstat)
PATH(lstat64) PATH(statfs) PATH(statvfs) PATH(statvfs64) PATH(mkdir) PATH(rmdir) PATH(unlink)
PATH(remove) PATH(rename) PATH(chmod) PATH(readlink) PATH(getxattr) PATH(lgetxattr) PATH(setxattr)
PATH(lsetxattr) PATH(removexattr) PATH(lremovexattr)
POINTER(fopen) POINTER(fopen64) POINTER(opendir) POINTER(realpath)
AT(openat) AT(openat64) AT(faccessat) AT(fstatat) AT(fstatat64) AT(statx) AT(mkdirat) AT(unlinkat)
AT(renameat) AT(renameat2) AT(linkat) AT(readlinkat) AT(fchmodat) AT(utimensat)
AT(name_to_handle_at)
OPEN(fstat) OPEN(fstat64) OPEN(fstatfs) OPEN(fstatvfs) OPEN(getdents64) OPEN(fgetxattr)
OPEN(fsetxattr) OPEN(fremovexattr) OPEN(fcntl) OPEN(fcntl64) OPEN(ioctl) OPEN(flock) OPEN(fsync)
OPEN(fdatasync) OPEN(syncfs) OPEN(ftruncate) OPEN(ftruncate64) OPEN(fchmod) OPEN(fchown)
OPEN(futimens) OPEN(fallocate) OPEN(read) OPEN(write) OPEN(pread64) OPEN(pwrite64) OPEN(pread)
OPEN(pwrite) CODE(posix_fallocate)
    // clang-format on

    std::atomic<long> naps = 0;

extern "C" int nanosleep(const timespec* time, timespec* left) {
  static const auto next = following<int (*)(const timespec*, timespec*)>("nanosleep");
  ++naps;
  return next(time, left);
}

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  static const auto next = following<int (*)(clockid_t, timespec*)>("clock_gettime");
  const int result = next(clock, time);
  if (clock == CLOCK_MONOTONIC) time->tv_sec += naps;
  return result;
}

// The calls that the C library has no function for.
extern "C" long wrapped_syscall(long number, long a, long b, long c, long d, long e,
                                long f) __asm__("syscall");
extern "C" long wrapped_syscall(long number, long a, long b, long c, long d, long e, long f) {
  static const auto next = following<long (*)(long, ...)>("syscall");
  if (number == SYS_openat2) {
    const Subject subject{static_cast<int>(a), reinterpret_cast<const char*>(b)};
    if (const int code = meet("openat2", subject); code != 0) {
      errno = code;
      return -1;
    }
  }
  return next(number, a, b, c, d, e, f);
}
