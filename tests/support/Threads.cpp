#include <future>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

/// Answers calls of this thread and of those that it starts in this way, for good. With the flag
/// for a listener that is what is answered.
int filterThisThread(long systemCall, unsigned answer, unsigned flags) {
  std::array<sock_filter, 4> filter = {{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(systemCall), 0, 1),
      BPF_STMT(BPF_RET | BPF_K, answer),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  }};
  const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
  long result = prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  if (result == 0) result = syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, flags, &program);
  if (result < 0) throw std::system_error(errno, std::generic_category(), "seccomp");
  return static_cast<int>(result);
}

/// Until no filtered thread is left.
void answerCalls(const FileDescriptor& listener, const std::function<void(int)>& action) {
  int call = 0;
  while (true) {
    pollfd waiting{listener.get(), POLLIN, 0};
    if (poll(&waiting, 1, -1) < 0 || (waiting.revents & POLLIN) == 0) return;
    seccomp_notif request{};
    if (ioctl(listener.get(), SECCOMP_IOCTL_NOTIF_RECV, &request) != 0) continue;
    action(++call);
    seccomp_notif_resp response{
        .id = request.id, .val = 0, .error = 0, .flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE};
    ioctl(listener.get(), SECCOMP_IOCTL_NOTIF_SEND, &response);
  }
}

}  // namespace

void withFailingSystemCall(long systemCall, int code, const std::function<void()>& body) {
  std::async(std::launch::async, [&] {
    filterThisThread(systemCall, SECCOMP_RET_ERRNO | static_cast<unsigned>(code), 0);
    body();
  }).get();
}

void withActionBefore(long systemCall, const std::function<void(int)>& action,
                      const std::function<void()>& body) {
  std::promise<int> listener;
  auto ending = std::async(std::launch::async, [&] {
    try {
      listener.set_value(
          filterThisThread(systemCall, SECCOMP_RET_USER_NOTIF, SECCOMP_FILTER_FLAG_NEW_LISTENER));
    } catch (...) {
      listener.set_exception(std::current_exception());
      return;
    }
    body();
  });
  answerCalls(FileDescriptor(listener.get_future().get()), action);
  ending.get();
}

void withSmallThread(const std::function<void()>& body) {
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit few{64, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);

  pthread_attr_t usual;
  pthread_attr_t small;
  pthread_getattr_default_np(&usual);
  pthread_attr_init(&small);
  pthread_attr_setstacksize(&small, 256 * 1024);
  pthread_setattr_default_np(&small);
  std::thread(body).join();
  pthread_setattr_default_np(&usual);
  setrlimit(RLIMIT_NOFILE, &before);
}

void asOrdinaryUser(const FileURL& tree, const std::function<void()>& body) {
  constexpr uid_t nobody = 65534;
  if (geteuid() != 0) return body();
  const auto giveTo = [&](uid_t user) {
    EXPECT_EQ(lchown(tree.path().c_str(), user, user), 0);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(tree.path())) {
      EXPECT_EQ(lchown(entry.path().c_str(), user, user), 0);
    }
  };
  giveTo(nobody);
  // The system call changes this thread alone; the library's function would change every thread.
  std::thread([&] {
    const auto become = [](uid_t user) { return syscall(SYS_setresuid, -1, user, -1) == 0; };
    if (!become(nobody)) throw std::runtime_error("can't become an ordinary user");
    body();
    become(0);
  }).join();
  giveTo(0);
}

}  // namespace tidemar::testing
