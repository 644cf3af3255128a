#pragma once

#include <QCoroFuture>
#include <QCoroTask>
#include <QtConcurrentRun>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace tidemar {

/// Runs a copy of some slow work on a thread of the pool and comes back to the awaiting thread with
/// its result, or with the exception that it threw. The work gets nothing that belongs to the main
/// thread. It has to be a variable: g++ 12 destroys a closure twice that is made inside a co_await
/// expression.
template <class Work>
QCoro::Task<std::invoke_result_t<Work&>> detached(Work& work) {
  using Result = std::invoke_result_t<Work&>;
  using Value = std::conditional_t<std::is_void_v<Result>, std::monostate, Result>;
  struct Outcome {
    std::optional<Value> value;
    std::exception_ptr error;
  };
  // Qt carries no exceptions but its own across threads.
  const auto outcome = std::make_shared<Outcome>();
  const QFuture<void> future = QtConcurrent::run([outcome, work]() mutable {
    try {
      if constexpr (std::is_void_v<Result>) {
        work();
        outcome->value.emplace();
      } else {
        outcome->value.emplace(work());
      }
    } catch (...) {
      outcome->error = std::current_exception();
    }
  });
  co_await future;
  if (outcome->error) std::rethrow_exception(outcome->error);
  if constexpr (!std::is_void_v<Result>) co_return std::move(*outcome->value);
}

}  // namespace tidemar
