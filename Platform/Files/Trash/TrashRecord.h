#pragma once

#include <ctime>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Files/Descriptors/FileDescriptor.h"

namespace tidemar {

/// What the name of an item's record has behind the item's name in a Trash.
inline constexpr std::string_view trashRecordEnding = ".trashinfo";

/// The text of a record: where the item lay (`path`, raw bytes) and when it came into the Trash, in
/// local time.
std::string trashRecordText(std::string_view path, std::time_t deletionDate);

/// The path that the text of a record holds, in raw bytes: absolute, or relative to the directory
/// in which the Trash lies. None for a text that isn't a whole record by the freedesktop Trash
/// specification: whose first line isn't "[Trash Info]", whose group of that name lacks a finished
/// line with a path or one with a date, or whose path is empty, escaped wrongly, not escaped where
/// it must be, holds a NUL or has a component "..". Of two lines with one key the first counts.
std::optional<std::string> pathInTrashRecord(std::string_view text);

/// The text of a cache `directorysizes` without the lines "{size} {time} {percent-encoded name}" of
/// one item. All other lines, of whatever form, stay byte for byte.
std::string directorySizesWithout(std::string_view name, std::string_view sizes);

/// Makes the record of an item in the open `info` directory of a Trash, for its user alone, and has
/// it written to the disk: after a loss of power the item without it would be a file of unknown
/// origin. Answers it locked (flock(2)), so that as long as it is open nobody takes it for one that
/// was left, or an errno value, EEXIST where there is a record of this name. On failure nothing is
/// left.
std::expected<FileDescriptor, int> makeTrashRecord(int infoDirectory, const std::string& name,
                                                   std::string_view text);

/// A record that another run has left, or that belongs to an item which has left the Trash.
struct HeldRecord {
  FileDescriptor file;  ///< Locked as above.
  std::string text;
};

/// Opens the record of an item and locks it. Answers an errno value: EWOULDBLOCK for one that
/// somebody is at work with.
std::expected<HeldRecord, int> holdTrashRecord(int infoDirectory, const std::string& name);

/// The text of the record of an item; empty where there is nothing that could be one, or something
/// far too long for it. An errno value where that can't be told.
std::expected<std::string, int> readTrashRecord(int infoDirectory, const std::string& name);

/// Deletes the record of an item; none is no failure.
void removeTrashRecord(int infoDirectory, const std::string& name);

/// Takes all that an open Trash knows of an item that has left it: its line in the cache
/// `directorysizes`, and its record in the open `info` directory as long as that has this text and
/// nobody is at work with it; any other is that of a later item. Does so as far as it can: both are
/// notes for file managers, which tolerate what is left over.
void forgetTrashedItem(int trashDirectory, int infoDirectory, const std::string& name,
                       std::string_view record);

}  // namespace tidemar
