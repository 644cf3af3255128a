#include "Platform/Extension/XMLPieces.h"

#include <stdexcept>

namespace tidemar {

std::size_t XMLPieces::endAfter(std::string_view delimiter, std::size_t from) const {
  const std::size_t at = _text.find(delimiter, from);
  if (at == std::string_view::npos) throw std::invalid_argument("a part of it doesn't end");
  return at + delimiter.size();
}

/// The end of what begins with "<": quoted values may hold ">", and a document type holds further
/// declarations and comments in "<" and ">".
std::size_t XMLPieces::endOfMarkup(std::size_t from) const {
  int depth = 0;
  for (std::size_t i = from; i < _text.size();) {
    if (_text.substr(i).starts_with("<!--")) {
      i = endAfter("-->", i + 4);
      continue;
    }
    const char c = _text[i++];
    if (c == '"' || c == '\'') i = endAfter({&c, 1}, i);
    if (c == '<') ++depth;
    if (c == '>' && --depth == 0) return i;
  }
  throw std::invalid_argument("a part of it doesn't end");
}

std::optional<XMLPieces::Piece> XMLPieces::next() {
  if (_position == _text.size()) return std::nullopt;
  Piece piece;
  piece.begin = _position;
  const std::string_view rest = _text.substr(_position);
  if (!rest.starts_with('<')) {
    piece.kind = Kind::text;
    piece.end = std::min(_text.find('<', _position), _text.size());
  } else if (rest.starts_with("<!--")) {
    piece.end = endAfter("-->", _position + 4);
  } else if (rest.starts_with("<![CDATA[")) {
    piece.kind = Kind::cdata;
    piece.end = endAfter("]]>", _position);
  } else if (rest.starts_with("<?")) {
    piece.end = endAfter("?>", _position);
  } else if (rest.starts_with("<!")) {
    piece.end = endOfMarkup(_position);
  } else {
    piece.end = endOfMarkup(_position);
    std::string_view inside = _text.substr(_position + 1, piece.end - _position - 2);
    piece.kind = Kind::openingTag;
    if (inside.starts_with('/')) {
      piece.kind = Kind::closingTag;
      inside.remove_prefix(1);
    } else if (inside.ends_with('/')) {
      piece.kind = Kind::emptyTag;
      inside.remove_suffix(1);
    }
    piece.name = inside.substr(0, inside.find_first_of(" \t\r\n"));
    if (piece.name.empty() || piece.name.find('<') != std::string_view::npos)
      throw std::invalid_argument("a tag of it has no name");
  }
  _position = piece.end;
  return piece;
}

}  // namespace tidemar
