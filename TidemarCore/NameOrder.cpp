#include "TidemarCore/NameOrder.h"

#include <deque>
#include <tuple>

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

namespace tidemar {
namespace {

bool isASCII(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// The first eight bytes as a number that compares as the bytes do.
std::uint64_t leadingBytes(std::string_view key) {
  std::uint64_t result = 0;
  for (std::size_t i = 0; i < 8; ++i) {
    result = result << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
  }
  return result;
}

/// A name with its key made once, so that sorting compares bytes and normalises nothing.
struct KeyedItem {
  std::uint64_t leading;
  std::string_view key;
  const Item* item;

  bool operator<(const KeyedItem& other) const {
    if (leading != other.leading) return leading < other.leading;
    if (const auto order = key <=> other.key; order != 0) return order < 0;
    return item->url.lastPathComponent() < other.item->url.lastPathComponent();
  }
};

}  // namespace

std::string nameOrderKey(std::string_view name) {
  std::string bytes(name);
  if (isASCII(name)) return bytes;

  const auto text =
      icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())});
  std::string readBack;
  const bool isUTF8 = text.toUTF8String(readBack) == bytes;
  if (!isUTF8) return bytes;

  UErrorCode error = U_ZERO_ERROR;
  const icu::Normalizer2* composing = icu::Normalizer2::getNFCInstance(error);
  if (U_FAILURE(error)) return bytes;
  const icu::UnicodeString composedText = composing->normalize(text, error);
  if (U_FAILURE(error)) return bytes;
  std::string composed;
  return composedText.toUTF8String(composed);
}

bool nameSortsBefore(std::string_view a, std::string_view b) {
  return std::make_tuple(nameOrderKey(a), a) < std::make_tuple(nameOrderKey(b), b);
}

void sortByName(std::span<const Item*> items) {
  std::deque<std::string> composedNames;
  std::vector<KeyedItem> keyed;
  keyed.reserve(items.size());
  for (const Item* item : items) {
    std::string_view key = item->url.lastPathComponent();
    if (!isASCII(key)) key = composedNames.emplace_back(nameOrderKey(key));
    keyed.push_back({leadingBytes(key), key, item});
  }
  std::ranges::sort(keyed, [](const KeyedItem& a, const KeyedItem& b) { return a < b; });
  std::ranges::transform(keyed, items.begin(), &KeyedItem::item);
}

}  // namespace tidemar
