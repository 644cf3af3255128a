#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace tidemar {

/// A value of a log line.
using LogArgument = std::variant<std::string_view, std::int64_t>;

/// A place of a log format that takes a value: "%{public}s", "%{private}s", "%ld" or "%lld".
struct LogPlaceholder {
  enum class Kind : std::uint8_t { publicText, privateText, number };

  std::size_t begin = std::string_view::npos;  ///< Where it stands; npos where there is none.
  std::size_t length = 0;
  Kind kind = Kind::number;

  /// The first one at or behind a position. A "%" that begins none is ordinary text.
  static constexpr LogPlaceholder find(std::string_view format, std::size_t from) {
    constexpr std::array<std::pair<std::string_view, Kind>, 4> known = {
        {{"%{public}s", Kind::publicText},
         {"%{private}s", Kind::privateText},
         {"%lld", Kind::number},
         {"%ld", Kind::number}}};
    for (std::size_t i = format.find('%', from); i != format.npos; i = format.find('%', i + 1)) {
      for (const auto& [text, kind] : known) {
        if (format.substr(i).starts_with(text)) return {i, text.size(), kind};
      }
    }
    return {};
  }
};

/// A format literal that is known, when it is compiled, to have a place for each of these values:
/// text where text goes, an integer where a number goes.
template <class... Values>
class LogFormat {
 public:
  template <std::convertible_to<std::string_view> Text>
  consteval LogFormat(const Text& text)  // NOLINT(google-explicit-constructor): a literal is one
      : _text(text) {
    std::size_t position = 0;
    (expect(position, std::integral<Values>), ...);
    if (LogPlaceholder::find(_text, position).length != 0) throw "too few values";
  }

  constexpr std::string_view text() const noexcept { return _text; }

 private:
  consteval void expect(std::size_t& position, bool isNumber) const {
    const LogPlaceholder next = LogPlaceholder::find(_text, position);
    if (next.length == 0) throw "too many values";
    if ((next.kind == LogPlaceholder::Kind::number) != isNumber) throw "a value of another type";
    position = next.begin + next.length;
  }

  std::string_view _text;
};

/// Whether private values stand in the message or "<private>" in their place.
enum class PrivateValues : std::uint8_t { hidden, shown };

/// The message of a format and its values: one line of valid UTF-8, whatever the values hold. Their
/// control characters are written as escapes, so that a file's name can't pass for a log line of
/// its own or reach a terminal as a command. Pure; a missing value is written as "<missing>".
std::string logMessage(std::string_view format, std::span<const LogArgument> arguments,
                       PrivateValues privateValues);

}  // namespace tidemar
