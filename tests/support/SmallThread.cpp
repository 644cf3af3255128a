#include "support/SmallThread.h"

#include <filesystem>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tidemar::testing {

void withSmallThread(const std::function<void()>& body) {
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit few{64, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);

  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 256 * 1024);
  pthread_t thread{};
  const auto start = [](void* argument) -> void* {
    (*static_cast<const std::function<void()>*>(argument))();
    return nullptr;
  };
  const int code =
      pthread_create(&thread, &attributes, start, const_cast<std::function<void()>*>(&body));
  if (code == 0) pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  setrlimit(RLIMIT_NOFILE, &before);
  if (code != 0) throw std::runtime_error("no thread");
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
