#include "support/SystemCallHook.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <exception>
#include <future>
#include <system_error>
#include <thread>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"

namespace tidemar::testing {
namespace {

/// From here on this thread waits in each such call for an answer through the descriptor.
FileDescriptor announceInThisThread(long systemCall) {
  std::array<sock_filter, 4> filter = {{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(systemCall), 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  }};
  const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
  FileDescriptor listener;
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0)
    listener = FileDescriptor(static_cast<int>(
        syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program)));
  if (!listener) throw std::system_error(errno, std::generic_category(), "seccomp");
  return listener;
}

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

void withActionBefore(long systemCall, const std::function<void(int)>& action,
                      const std::function<void()>& body) {
  std::exception_ptr thrown;
  std::promise<FileDescriptor> listener;
  std::thread thread([&] {
    try {
      listener.set_value(announceInThisThread(systemCall));
    } catch (...) {
      listener.set_exception(std::current_exception());
      return;
    }
    try {
      body();
    } catch (...) {
      thrown = std::current_exception();
    }
  });
  try {
    answerCalls(listener.get_future().get(), action);
  } catch (...) {
    thrown = std::current_exception();
  }
  thread.join();
  if (thrown) std::rethrow_exception(thrown);
}

}  // namespace tidemar::testing
