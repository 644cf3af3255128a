#pragma once

#include <string>
#include <string_view>

/// Bytes written so that the reader of a format gets exactly these bytes back.
namespace tidemar {

/// One word of a POSIX shell's command line.
std::string shellQuoted(std::string_view bytes);

/// One argument of an `Exec` line by the freedesktop Desktop Entry specification, with the escapes
/// of its string values.
std::string desktopExecQuoted(std::string_view bytes);

/// A string value of a key file, as GLib reads it.
std::string keyFileEscaped(std::string_view bytes);

/// Text between two XML tags. Line breaks and bytes that aren't UTF-8 can't be told there.
std::string xmlEscaped(std::string_view text);

/// A `bytes` literal of Python.
std::string pythonBytes(std::string_view bytes);

/// The text with each "%" doubled, as command lines with field codes want it.
std::string percentDoubled(std::string_view bytes);

}  // namespace tidemar
