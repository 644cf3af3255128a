#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

/// The text of Thunar's list of custom actions, `uca.xml`. Tidemar's action is known by its
/// `unique-id`, which Thunar keeps when it writes the list anew. All else stays byte for byte. All
/// throw `Malformed`.
namespace tidemar::ThunarActions {

/// The text isn't a list of actions that can be changed safely.
struct Malformed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A list without actions.
extern const std::string_view emptyList;

bool containsOurs(std::string_view list);

/// The list with Tidemar's action at its end, in place of one from before. `command` is the command
/// line with Thunar's field codes.
std::string addingOurs(std::string_view list, std::string_view command);

/// The list without Tidemar's action: what `addingOurs` was given, as long as that had a closing
/// tag of its own.
std::string removingOurs(std::string_view list);

}  // namespace tidemar::ThunarActions
