#include "Platform/Files/Trash/TrashName.h"

#include <cstdint>
#include <random>

namespace tidemar {
namespace {

constexpr unsigned countedAttempts = 8;

/// A longer ending is part of the name rather than a type.
constexpr std::size_t longestEnding = 24;

std::size_t endingPosition(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == name.npos || dot == 0 || name.size() - dot > longestEnding) return name.size();
  return dot;
}

std::string_view cut(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  const auto continues = [&](std::size_t i) {
    return (static_cast<unsigned char>(text[i]) & 0xC0U) == 0x80U;
  };
  std::size_t end = limit;
  // No character has more than three such bytes; more of them are no UTF-8 and cut anywhere.
  while (end > 0 && limit - end < 3 && continues(end))
    --end;
  return text.substr(0, continues(end) ? limit : end);
}

std::string numberFor(unsigned attempt) {
  if (attempt == 0) return {};
  if (attempt < countedAttempts) return "." + std::to_string(attempt + 1);
  std::random_device random;
  const std::uint64_t high = random();
  return "." + std::to_string(high << 32U | random());
}

}  // namespace

std::string trashName(std::string_view name, unsigned attempt, std::size_t limit) {
  return numberedName(name, numberFor(attempt), limit);
}

std::string numberedName(std::string_view name, std::string_view number, std::size_t limit) {
  const std::size_t dot = endingPosition(name);
  const std::string_view ending = name.substr(dot);
  const std::size_t added = number.size() + ending.size();
  std::string result(cut(name.substr(0, dot), limit > added ? limit - added : 0));
  result += number;
  result += ending;
  return result;
}

}  // namespace tidemar
