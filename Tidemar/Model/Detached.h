#pragma once

#include <QCoroTask>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "Tidemar/Model/Executor.h"
#include "Tidemar/Model/Occurrence.h"

namespace tidemar {

/// Lets the executor carry out a copy of some slow work and comes back to the main thread with its
/// result, or with the exception that it threw. It has to be a variable: g++ 12 destroys a closure
/// twice that is made inside a co_await expression.
template <class Work>
QCoro::Task<std::invoke_result_t<const Work&>> detached(Executor& executor, const Work& work) {
  using Result = std::invoke_result_t<const Work&>;
  using Value = std::conditional_t<std::is_void_v<Result>, std::monostate, Result>;
  struct Outcome {
    std::optional<Value> value;
    std::exception_ptr error;
    Occurrence arrival;
  };
  const auto outcome = std::make_shared<Outcome>();
  executor.start(
      [outcome, work] {
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
      },
      [outcome] { outcome->arrival.happen(); });
  co_await outcome->arrival;
  if (outcome->error) std::rethrow_exception(outcome->error);
  if constexpr (!std::is_void_v<Result>) co_return std::move(*outcome->value);
}

}  // namespace tidemar
