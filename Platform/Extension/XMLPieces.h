#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace tidemar {

/// Cuts an XML text into its pieces without changing or copying a byte, so that parts of it can be
/// cut out or put in. Looks at the form of each piece alone: whether tags match is the caller's.
class XMLPieces {
 public:
  enum class Kind { openingTag, closingTag, emptyTag, text, cdata, other };

  struct Piece {
    Kind kind = Kind::other;  ///< `other` is a comment, an instruction or the document type.
    std::string_view name;    ///< Of a tag, else empty.
    std::size_t begin = 0;
    std::size_t end = 0;
  };

  /// `text` outlives the object.
  explicit XMLPieces(std::string_view text) : _text(text) {}

  /// The next piece; none at the end. Throws `std::invalid_argument` where a piece doesn't end.
  std::optional<Piece> next();

 private:
  std::size_t endAfter(std::string_view delimiter, std::size_t from) const;
  std::size_t endOfMarkup(std::size_t from) const;

  std::string_view _text;
  std::size_t _position = 0;
};

}  // namespace tidemar
