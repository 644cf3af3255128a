// Preloaded into a program, counts its calls of the file system, and at some of them acts as the
// environment says:
//
//     TORTURE_ACTION    kill: the process dies before the call
//                       fail: the call isn't made and fails with the errno value TORTURE_ERRNO
//                       ask: another process acts meanwhile, see below
//                       trace, count: nothing happens
//     TORTURE_FROM      the number of the first call to act at, from 1
//     TORTURE_COUNT     how many calls to act at; 0 for all that follow
//     TORTURE_FUNCTION  counts the calls of this one function alone
//     TORTURE_REPORT    a descriptor that gets a line for each call acted at
//     TORTURE_TRACE     a descriptor that gets a line for every call
//     TORTURE_SOCKET    for "ask": a socket that gets such a line as a packet. The call waits for
//                       the reply: "go", "kill" or an errno value
//
// A nap takes a second of the steady clock, so that long patience with others ends soon.
//
// A line is "{number} {function} {path}", the path percent-encoded. Standard input, output and
// error are left alone.

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>
#include <type_traits>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

struct file_handle;

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

long setting(const char* name, long fallback) {
  const char* text = std::getenv(name);
  return text == nullptr ? fallback : std::atol(text);
}

std::string textSetting(const char* name) {
  const char* text = std::getenv(name);
  return text == nullptr ? "" : text;
}

struct Settings {
  std::string action = textSetting("TORTURE_ACTION");
  std::string function = textSetting("TORTURE_FUNCTION");
  long from = setting("TORTURE_FROM", 1);
  long count = setting("TORTURE_COUNT", 1);
  int code = static_cast<int>(setting("TORTURE_ERRNO", EIO));
  int report = static_cast<int>(setting("TORTURE_REPORT", -1));
  int trace = static_cast<int>(setting("TORTURE_TRACE", -1));
  int socket = static_cast<int>(setting("TORTURE_SOCKET", -1));
};

std::string encoded(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    if (byte > ' ' && byte < '\x7f' && byte != '%') {
      text += byte;
    } else {
      std::array<char, 4> digits{};
      std::snprintf(digits.data(), digits.size(), "%%%02X", static_cast<unsigned char>(byte));
      text += digits.data();
    }
  }
  return text;
}

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

void writeLine(int descriptor, const std::string& line) {
  callKernel(SYS_write, descriptor, line.data(), line.size());
}

void die() {
  callKernel(SYS_kill, callKernel(SYS_getpid), SIGKILL);
  while (true)
    callKernel(SYS_pause);
}

int ask(int socket, const std::string& line) {
  writeLine(socket, line);
  std::array<char, 16> reply{};
  const long size = callKernel(SYS_read, socket, reply.data(), reply.size() - 1);
  const std::string_view answer(reply.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
  if (answer == "kill") die();
  return answer == "go" ? 0 : std::atoi(reply.data());
}

int act(const Settings& settings, const std::string& line) {
  if (settings.report >= 0) writeLine(settings.report, line);
  if (settings.action == "kill") die();
  if (settings.action == "ask") return ask(settings.socket, line);
  return settings.action == "fail" ? settings.code : 0;
}

/// Answers the errno value with which the call is to fail, or 0.
int meet(const char* function, const Subject& subject) {
  static const Settings settings;
  static std::atomic<long> calls = 0;
  const bool isStandardStream =
      *subject.name == '\0' && subject.descriptor >= 0 && subject.descriptor <= 2;
  if (settings.action.empty() || isStandardStream) return 0;
  if (!settings.function.empty() && settings.function != function) return 0;

  const long number = ++calls;
  const bool isMeant = settings.action != "trace" && settings.action != "count" &&
                       number >= settings.from &&
                       (settings.count == 0 || number < settings.from + settings.count);
  if (!isMeant && settings.trace < 0) return 0;

  const int code = errno;
  const std::string line =
      std::to_string(number) + " " + function + " " + encoded(pathOf(subject)) + "\n";
  if (settings.trace >= 0) writeLine(settings.trace, line);
  const int failure = isMeant ? act(settings, line) : 0;
  errno = code;
  return failure;
}

template <class Result>
Result failure() {
  if constexpr (std::is_pointer_v<Result>) {
    return nullptr;
  } else {
    return static_cast<Result>(-1);
  }
}

}  // namespace

#define WRAP(Result, function, parameters, arguments, ...)               \
  extern "C" Result wrapped_##function parameters __asm__(#function);    \
  extern "C" Result wrapped_##function parameters {                      \
    static const auto next = following<Result(*) parameters>(#function); \
    if (const int code = meet(#function, {__VA_ARGS__}); code != 0) {    \
      errno = code;                                                      \
      return failure<Result>();                                          \
    }                                                                    \
    return next arguments;                                               \
  }

// Functions of a path, of a path relative to a directory, and of a descriptor.
#define PATH(Result, function, parameters, arguments) \
  WRAP(Result, function, parameters, arguments, AT_FDCWD, name)
#define AT(Result, function, parameters, arguments) \
  WRAP(Result, function, parameters, arguments, directory, name)
#define OPEN(Result, function, parameters, arguments) \
  WRAP(Result, function, parameters, arguments, descriptor, "")

// clang-format off
PATH(int, open, (const char* name, int flags, mode_t mode), (name, flags, mode))
PATH(int, open64, (const char* name, int flags, mode_t mode), (name, flags, mode))
PATH(FILE*, fopen, (const char* name, const char* mode), (name, mode))
PATH(FILE*, fopen64, (const char* name, const char* mode), (name, mode))
PATH(DIR*, opendir, (const char* name), (name))
PATH(int, mkostemp, (char* name, int flags), (name, flags))
PATH(int, access, (const char* name, int mode), (name, mode))
PATH(int, stat, (const char* name, struct stat* values), (name, values))
PATH(int, stat64, (const char* name, struct stat64* values), (name, values))
PATH(int, lstat, (const char* name, struct stat* values), (name, values))
PATH(int, lstat64, (const char* name, struct stat64* values), (name, values))
PATH(int, statfs, (const char* name, struct statfs* values), (name, values))
PATH(int, statvfs, (const char* name, struct statvfs* values), (name, values))
PATH(int, statvfs64, (const char* name, struct statvfs64* values), (name, values))
PATH(int, mkdir, (const char* name, mode_t mode), (name, mode))
PATH(int, rmdir, (const char* name), (name))
PATH(int, unlink, (const char* name), (name))
PATH(int, remove, (const char* name), (name))
PATH(int, rename, (const char* name, const char* to), (name, to))
PATH(int, chmod, (const char* name, mode_t mode), (name, mode))
PATH(char*, realpath, (const char* name, char* resolved), (name, resolved))
PATH(ssize_t, readlink, (const char* name, char* target, size_t size), (name, target, size))
PATH(ssize_t, getxattr, (const char* name, const char* key, void* value, size_t size), (name, key, value, size))
PATH(ssize_t, lgetxattr, (const char* name, const char* key, void* value, size_t size), (name, key, value, size))
PATH(int, setxattr, (const char* name, const char* key, const void* value, size_t size, int flags), (name, key, value, size, flags))
PATH(int, lsetxattr, (const char* name, const char* key, const void* value, size_t size, int flags), (name, key, value, size, flags))
PATH(int, removexattr, (const char* name, const char* key), (name, key))
PATH(int, lremovexattr, (const char* name, const char* key), (name, key))

AT(int, openat, (int directory, const char* name, int flags, mode_t mode), (directory, name, flags, mode))
AT(int, openat64, (int directory, const char* name, int flags, mode_t mode), (directory, name, flags, mode))
AT(int, faccessat, (int directory, const char* name, int mode, int flags), (directory, name, mode, flags))
AT(int, fstatat, (int directory, const char* name, struct stat* values, int flags), (directory, name, values, flags))
AT(int, fstatat64, (int directory, const char* name, struct stat64* values, int flags), (directory, name, values, flags))
AT(int, statx, (int directory, const char* name, int flags, unsigned mask, struct statx* values), (directory, name, flags, mask, values))
AT(int, mkdirat, (int directory, const char* name, mode_t mode), (directory, name, mode))
AT(int, unlinkat, (int directory, const char* name, int flags), (directory, name, flags))
AT(int, renameat, (int directory, const char* name, int toDirectory, const char* to), (directory, name, toDirectory, to))
AT(int, renameat2, (int directory, const char* name, int toDirectory, const char* to, unsigned flags), (directory, name, toDirectory, to, flags))
AT(int, linkat, (int directory, const char* name, int toDirectory, const char* to, int flags), (directory, name, toDirectory, to, flags))
AT(ssize_t, readlinkat, (int directory, const char* name, char* target, size_t size), (directory, name, target, size))
AT(int, fchmodat, (int directory, const char* name, mode_t mode, int flags), (directory, name, mode, flags))
AT(int, utimensat, (int directory, const char* name, const struct timespec* times, int flags), (directory, name, times, flags))
AT(int, name_to_handle_at, (int directory, const char* name, file_handle* handle, int* mount, int flags), (directory, name, handle, mount, flags))

OPEN(int, fstat, (int descriptor, struct stat* values), (descriptor, values))
OPEN(int, fstat64, (int descriptor, struct stat64* values), (descriptor, values))
OPEN(int, fstatfs, (int descriptor, struct statfs* values), (descriptor, values))
OPEN(int, fstatvfs, (int descriptor, struct statvfs* values), (descriptor, values))
OPEN(ssize_t, getdents64, (int descriptor, void* entries, size_t size), (descriptor, entries, size))
OPEN(ssize_t, fgetxattr, (int descriptor, const char* key, void* value, size_t size), (descriptor, key, value, size))
OPEN(int, fsetxattr, (int descriptor, const char* key, const void* value, size_t size, int flags), (descriptor, key, value, size, flags))
OPEN(int, fremovexattr, (int descriptor, const char* key), (descriptor, key))
OPEN(int, fcntl, (int descriptor, int command, long argument), (descriptor, command, argument))
OPEN(int, fcntl64, (int descriptor, int command, long argument), (descriptor, command, argument))
OPEN(int, ioctl, (int descriptor, unsigned long request, void* argument), (descriptor, request, argument))
OPEN(int, flock, (int descriptor, int operation), (descriptor, operation))
OPEN(int, fsync, (int descriptor), (descriptor))
OPEN(int, fdatasync, (int descriptor), (descriptor))
OPEN(int, syncfs, (int descriptor), (descriptor))
OPEN(int, ftruncate, (int descriptor, off_t size), (descriptor, size))
OPEN(int, ftruncate64, (int descriptor, off_t size), (descriptor, size))
OPEN(int, fchmod, (int descriptor, mode_t mode), (descriptor, mode))
OPEN(int, fchown, (int descriptor, uid_t user, gid_t group), (descriptor, user, group))
OPEN(int, futimens, (int descriptor, const struct timespec* times), (descriptor, times))
OPEN(int, fallocate, (int descriptor, int mode, off_t start, off_t size), (descriptor, mode, start, size))
OPEN(ssize_t, read, (int descriptor, void* bytes, size_t size), (descriptor, bytes, size))
OPEN(ssize_t, write, (int descriptor, const void* bytes, size_t size), (descriptor, bytes, size))
OPEN(ssize_t, pread64, (int descriptor, void* bytes, size_t size, off_t start), (descriptor, bytes, size, start))
OPEN(ssize_t, pwrite64, (int descriptor, const void* bytes, size_t size, off_t start), (descriptor, bytes, size, start))
OPEN(ssize_t, pread, (int descriptor, void* bytes, size_t size, off_t start), (descriptor, bytes, size, start))
OPEN(ssize_t, pwrite, (int descriptor, const void* bytes, size_t size, off_t start), (descriptor, bytes, size, start))
// clang-format on

std::atomic<long> naps = 0;

extern "C" int wrapped_nanosleep(const timespec* time, timespec* left) __asm__("nanosleep");
extern "C" int wrapped_nanosleep(const timespec* time, timespec* left) {
  static const auto next = following<int (*)(const timespec*, timespec*)>("nanosleep");
  ++naps;
  return next(time, left);
}

extern "C" int wrapped_clock_gettime(clockid_t clock, timespec* time) __asm__("clock_gettime");
extern "C" int wrapped_clock_gettime(clockid_t clock, timespec* time) {
  static const auto next = following<int (*)(clockid_t, timespec*)>("clock_gettime");
  const int result = next(clock, time);
  if (clock == CLOCK_MONOTONIC) time->tv_sec += naps;
  return result;
}

// Answers its errno value itself.
extern "C" int wrapped_posix_fallocate(int descriptor, off_t start,
                                       off_t size) __asm__("posix_fallocate");
extern "C" int wrapped_posix_fallocate(int descriptor, off_t start, off_t size) {
  static const auto next = following<int (*)(int, off_t, off_t)>("posix_fallocate");
  const int code = meet("posix_fallocate", {descriptor, ""});
  return code != 0 ? code : next(descriptor, start, size);
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
