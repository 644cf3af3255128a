#include "Platform/Extension/ThunarActions.h"

#include <vector>

#include "Platform/Extension/EntryTexts.h"
#include "Platform/Extension/Quoting.h"
#include "Platform/Extension/XMLPieces.h"
#include "Platform/Text.h"

namespace tidemar::ThunarActions {
namespace {

constexpr std::string_view identifier = "app.quernly.tidemar.make-temporary";
constexpr std::string_view blanks = " \t\r\n";

struct Range {
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct List {
  Range rootEnd;             ///< The closing tag, or the whole of an empty root.
  bool isRootEmpty = false;  ///< The root is "<actions/>".
  std::vector<Range> ours;
};

void require(bool isGiven, const char* otherwise) {
  if (!isGiven) throw Malformed(otherwise);
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(blanks) == std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
  if (isBlank(text)) return {};
  text.remove_prefix(text.find_first_not_of(blanks));
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// Follows the pieces through the tree and notes the places that matter.
class Reader {
 public:
  explicit Reader(std::string_view text) : _text(text) {}

  List read() {
    require(displayText(_text) == _text, "it isn't UTF-8 text");
    XMLPieces pieces(_text);
    while (const auto piece = pieces.next())
      take(*piece);
    require(_isRootSeen && _path.empty(), "it has no end");
    return _list;
  }

 private:
  using Kind = XMLPieces::Kind;

  void take(const XMLPieces::Piece& piece) {
    switch (piece.kind) {
      case Kind::openingTag:
        enter(piece);
        break;
      case Kind::emptyTag:
        enter(piece);
        leave(piece);
        break;
      case Kind::closingTag:
        require(!_path.empty() && _path.back() == piece.name, "its tags don't match");
        leave(piece);
        break;
      case Kind::text:
      case Kind::cdata:
        require(!_path.empty() || isBlank(_text.substr(piece.begin, piece.end - piece.begin)),
                "it has text outside of its list");
        break;
      case Kind::other:
        break;
    }
  }

  void enter(const XMLPieces::Piece& piece) {
    if (_path.empty()) {
      require(!_isRootSeen && piece.name == "actions", "it isn't a list of actions");
      _isRootSeen = true;
    } else if (_path.size() == 1) {
      _action = {piece.begin, 0};
      _isOurs = false;
    } else if (_path.size() == 2) {
      _contentBegin = piece.end;
    }
    _path.push_back(piece.name);
  }

  void leave(const XMLPieces::Piece& piece) {
    _path.pop_back();
    if (_path.empty()) {
      _list.rootEnd = {piece.begin, piece.end};
      _list.isRootEmpty = piece.kind == Kind::emptyTag;
    } else if (_path.size() == 1) {
      if (_isOurs) _list.ours.push_back({_action.begin, piece.end});
    } else if (_path.size() == 2 && piece.kind == Kind::closingTag && piece.name == "unique-id") {
      _isOurs |= trimmed(_text.substr(_contentBegin, piece.begin - _contentBegin)) == identifier;
    }
  }

  std::string_view _text;
  List _list;
  std::vector<std::string_view> _path;
  bool _isRootSeen = false;
  Range _action;
  std::size_t _contentBegin = 0;
  bool _isOurs = false;
};

List read(std::string_view text) {
  try {
    return Reader(text).read();
  } catch (const std::invalid_argument& error) {
    throw Malformed(error.what());
  }
}

/// In one line, so that it can go again with its one line break, whatever that is in this list.
std::string ourAction(std::string_view command) {
  return std::string("<action><icon>") + iconName + "</icon><name>" + xmlEscaped(menuCommandName) +
         "</name><unique-id>" + std::string(identifier) + "</unique-id><command>" +
         xmlEscaped(command) + "</command><patterns>*</patterns><directories/></action>";
}

}  // namespace

const std::string_view emptyList =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n</actions>\n";

bool containsOurs(std::string_view list) {
  return !read(list).ours.empty();
}

std::string addingOurs(std::string_view list, std::string_view command) {
  std::string result = removingOurs(list);
  const std::string lineBreak = result.find("\r\n") == std::string::npos ? "\n" : "\r\n";
  const List places = read(result);
  if (places.isRootEmpty) {
    const std::size_t slash = result.rfind('/', places.rootEnd.end);
    result.replace(slash, places.rootEnd.end - slash,
                   ">" + lineBreak + ourAction(command) + lineBreak + "</actions>");
  } else {
    result.insert(places.rootEnd.begin, ourAction(command) + lineBreak);
  }
  return result;
}

std::string removingOurs(std::string_view list) {
  std::string result;
  std::size_t position = 0;
  for (const Range& range : read(list).ours) {
    result += list.substr(position, range.begin - position);
    position = range.end;
    if (list.substr(position).starts_with("\r\n")) {
      position += 2;
    } else if (list.substr(position).starts_with('\n')) {
      position += 1;
    }
  }
  result += list.substr(position);
  return result;
}

}  // namespace tidemar::ThunarActions
