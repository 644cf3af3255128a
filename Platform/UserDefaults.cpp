#include "Platform/UserDefaults.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "Platform/Files/Descriptors/CreateDirectory.h"
#include "Platform/Files/Descriptors/WholeFile.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/PlatformError.h"
#include "Platform/Text.h"

namespace tidemar {
namespace {

/// Ordered, so that a file which a person has arranged stays so.
using json = nlohmann::ordered_json;

struct Suite {
  json values = json::object();
  std::optional<std::string> damagedContent;  ///< The file's content where it is no JSON object.
};

/// Beyond these, copying a value could use up the stack, and finding its keys take many seconds.
constexpr int deepest = 64;
constexpr int mostKeysAndObjects = 1000;

/// Discarded for a text that is no JSON or out of bounds.
json parse(const std::string& content) {
  // The parser takes a NUL for the end, and what stands behind it would be lost.
  if (content.contains('\0')) return json::value_t::discarded;
  struct OutOfBounds {};
  int keysAndObjects = 0;
  using Event = json::parse_event_t;
  const auto stayInBounds = [&](int depth, Event event, const json&) {
    if (event == Event::key || event == Event::object_start) ++keysAndObjects;
    if (depth > deepest || keysAndObjects > mostKeysAndObjects) throw OutOfBounds();
    return true;
  };
  try {
    return json::parse(content, stayInBounds, /*allow_exceptions=*/false);
  } catch (const OutOfBounds&) {
    return json::value_t::discarded;
  }
}

Suite readSuite(const FileURL& file) {
  const auto content = WholeFile::read(file);
  if (!content) return {};
  json values = parse(*content);
  if (!values.is_object()) return {json::object(), content};
  return {std::move(values), std::nullopt};
}

/// The value of a key; null, which is never stored, where there is none.
json valueOf(const FileURL& file, std::string_view key) {
  try {
    const json values = readSuite(file).values;
    const auto found = values.find(std::string(key));
    return found == values.end() ? json() : *found;
  } catch (const PlatformError&) {
    // A value that can't be read is as good as none: whoever asks goes on with its default.
    return {};
  }
}

template <class Change>
void changeSuite(const FileURL& file, Change change) {
  const Suite suite = readSuite(file);
  json changed = suite.values;
  change(changed);
  if (changed == suite.values) return;

  createDirectory(file.deletingLastPathComponent());
  if (suite.damagedContent) {
    WholeFile::replace(FileURL(file.path() + ".damaged"), *suite.damagedContent);
  }
  constexpr int indentation = 2;
  WholeFile::replace(
      file, changed.dump(indentation, ' ', /*ensure_ascii=*/false, json::error_handler_t::replace) +
                "\n");
}

void setValue(const FileURL& file, std::string_view key, const json& value) {
  changeSuite(file, [&](json& values) { values[std::string(key)] = value; });
}

FileURL configurationFile(std::string_view name) {
  return StandardDirectories::configuration().appendingPathComponent(name);
}

}  // namespace

UserDefaults::UserDefaults(FileURL file) : _file(std::move(file)) {}

UserDefaults UserDefaults::standard() {
  return UserDefaults(configurationFile("app.quernly.tidemar.json"));
}

UserDefaults UserDefaults::shared() {
  return UserDefaults(configurationFile("7QRTM42ZLB.app.quernly.tidemar.json"));
}

std::optional<std::string> UserDefaults::string(std::string_view key) const {
  const json value = valueOf(_file, key);
  if (!value.is_string()) return std::nullopt;
  return value.get<std::string>();
}

std::optional<bool> UserDefaults::boolean(std::string_view key) const {
  const json value = valueOf(_file, key);
  if (!value.is_boolean()) return std::nullopt;
  return value.get<bool>();
}

std::optional<std::vector<std::string>> UserDefaults::stringArray(std::string_view key) const {
  const json value = valueOf(_file, key);
  const bool holdsStrings = value.is_array() && std::ranges::all_of(value, &json::is_string);
  if (!holdsStrings) return std::nullopt;
  return value.get<std::vector<std::string>>();
}

void UserDefaults::setString(std::string_view key, std::string_view value) {
  setValue(_file, key, displayText(value));
}

void UserDefaults::setBoolean(std::string_view key, bool value) {
  setValue(_file, key, value);
}

void UserDefaults::setStringArray(std::string_view key, std::span<const std::string> values) {
  json array = json::array();
  for (const std::string& value : values)
    array.push_back(displayText(value));
  setValue(_file, key, array);
}

void UserDefaults::remove(std::string_view key) {
  changeSuite(_file, [&](json& values) { values.erase(std::string(key)); });
}

}  // namespace tidemar
