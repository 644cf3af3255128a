#include "TidemarKit/Store/StoredWords.h"

#include <optional>

#include "TidemarKit/Store/DatabaseError.h"
#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

template <class Parse>
auto accepted(Parse parse, std::string_view text) -> std::optional<decltype(parse(text))> {
  try {
    return parse(text);
  } catch (const DatabaseError&) {
    return std::nullopt;
  }
}

}  // namespace

void check(std::string_view input) {
  if (const auto disposal = accepted(StoredWords::disposal, input))
    require(rawValue(*disposal) == input, "a disposal has one word");

  const auto reasons = accepted(StoredWords::reasons, input);
  if (!reasons) return;
  const std::string text = StoredWords::text(*reasons);
  require(StoredWords::reasons(text) == *reasons, "a written set is read as the same set");
  for (const Rule rule : allRules) {
    // An escape can stand for any letter.
    const bool isWritten = input.find(rawValue(rule)) != input.npos;
    require(reasons->contains(rule) == isWritten || input.find('\\') != input.npos,
            "a set has the rules whose words stand in the text");
  }
}

}  // namespace tidemar::fuzz
