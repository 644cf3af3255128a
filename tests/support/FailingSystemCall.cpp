#include "support/FailingSystemCall.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <exception>
#include <system_error>
#include <thread>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

namespace tidemar::testing {
namespace {

/// The filter holds for the calling thread alone, and for good.
void failInThisThread(long systemCall, int code) {
  std::array<sock_filter, 4> filter = {{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(systemCall), 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(code)),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  }};
  const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) != 0) {
    throw std::system_error(errno, std::generic_category(), "seccomp");
  }
}

}  // namespace

void withFailingSystemCall(long systemCall, int code, const std::function<void()>& body) {
  std::exception_ptr thrown;
  std::thread([&] {
    try {
      failInThisThread(systemCall, code);
      body();
    } catch (...) {
      thrown = std::current_exception();
    }
  }).join();
  if (thrown) std::rethrow_exception(thrown);
}

}  // namespace tidemar::testing
