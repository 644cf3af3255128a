#include "TidemarCore/NameOrder.h"

#include <bit>
#include <deque>
#include <tuple>

#include <unicode/normalizer2.h>
#include <unicode/stringpiece.h>
#include <unicode/unistr.h>

namespace tidemar {
namespace {

/// The first eight bytes as a number that compares as the bytes do; zeros behind the end.
std::uint64_t leadingBytes(std::string_view text) {
  std::uint64_t result = 0;
  text.copy(reinterpret_cast<char*>(&result), sizeof result);
  return std::endian::native == std::endian::little ? __builtin_bswap64(result) : result;
}

bool isASCII(std::string_view text) {
  constexpr std::uint64_t highBits = 0x8080808080808080;
  std::uint64_t seen = 0;
  for (std::size_t i = 0; i < text.size(); i += sizeof seen)
    seen |= leadingBytes(text.substr(i));
  return (seen & highBits) == 0;
}

/// Null where the library's data is missing.
const icu::Normalizer2* composing() {
  UErrorCode error = U_ZERO_ERROR;
  const icu::Normalizer2* instance = icu::Normalizer2::getNFCInstance(error);
  return U_SUCCESS(error) ? instance : nullptr;
}

/// Whether that can be told without making the key.
bool isItsOwnKey(std::string_view name) {
  if (isASCII(name)) return true;
  const icu::Normalizer2* normalizer = composing();
  UErrorCode error = U_ZERO_ERROR;
  const icu::StringPiece bytes(name.data(), static_cast<std::int32_t>(name.size()));
  return normalizer == nullptr || (normalizer->isNormalizedUTF8(bytes, error) && U_SUCCESS(error));
}

std::size_t commonPrefix(std::string_view a, std::string_view b) {
  return static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
}

/// A name with its key made once, so that sorting compares bytes and normalises nothing.
struct KeyedItem {
  std::uint64_t leading;  ///< Of what follows the part that the keys of all have in common.
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
  if (isItsOwnKey(name)) return bytes;

  const auto text =
      icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())});
  std::string readBack;
  const bool isUTF8 = text.toUTF8String(readBack) == bytes;
  if (!isUTF8) return bytes;

  UErrorCode error = U_ZERO_ERROR;
  const icu::UnicodeString composedText = composing()->normalize(text, error);
  if (U_FAILURE(error)) return bytes;
  std::string composed;
  return composedText.toUTF8String(composed);
}

bool nameSortsBefore(std::string_view a, std::string_view b) {
  return std::make_tuple(nameOrderKey(a), a) < std::make_tuple(nameOrderKey(b), b);
}

void sortByName(std::span<const Item*> items) {
  // The items lie in the order of the listing, and so do the names: each is a wait for memory
  // unless it is asked for ahead of its turn.
  constexpr std::size_t ahead = 16;
  const auto soon = [&](std::size_t i) { return std::min(i + ahead, items.size() - 1); };
  std::vector<KeyedItem> keyed;
  keyed.reserve(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    __builtin_prefetch(items[soon(i)]);
    keyed.push_back({0, items[i]->url.lastPathComponent(), items[i]});
  }

  std::deque<std::string> composedNames;
  std::size_t common = std::string_view::npos;
  for (std::size_t i = 0; i < items.size(); ++i) {
    __builtin_prefetch(keyed[soon(i)].key.data());
    std::string_view& key = keyed[i].key;
    if (!isItsOwnKey(key)) key = composedNames.emplace_back(nameOrderKey(key));
    common = std::min(common, commonPrefix(keyed.front().key, key));
  }
  for (KeyedItem& item : keyed)
    item.leading = leadingBytes(item.key.substr(common));
  std::ranges::sort(keyed, [](const KeyedItem& a, const KeyedItem& b) { return a < b; });
  std::ranges::transform(keyed, items.begin(), &KeyedItem::item);
}

}  // namespace tidemar
