#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// A directory inside the one being read that will be entered later.
struct PendingDirectory {
  std::string name;
  bool isHidden = false;
};

/// A directory on the way from the root of a tree down to where a walk stands.
struct OpenDirectory {
  FileDescriptor descriptor;
  DirectoryIdentity identity;
  std::string name;                       ///< Its last path component; of the root not used.
  std::vector<PendingDirectory> pending;  ///< What lies in it and is still to be entered.
};

/// The way down into a tree of any depth with a bounded number of descriptors: the root and the
/// nearest ancestors stay open, those between are closed and reached again from below through "..",
/// each checked to be the directory it was.
class DirectoryStack {
 public:
  /// `root` is for messages alone.
  explicit DirectoryStack(FileURL root) : _root(std::move(root)) {}

  bool isEmpty() const noexcept { return _directories.empty(); }
  OpenDirectory& top() noexcept { return _directories.back(); }

  /// How many directories the way has: 1 in the root.
  std::size_t depth() const noexcept { return _directories.size(); }

  void push(OpenDirectory directory);

  /// Leaves the innermost directory. If the one above can't be reached again, the way falls back to
  /// the nearest one that can, and an errno value says why; 0 otherwise.
  int pop();

  const FileURL& rootURL() const noexcept { return _root; }

  /// The place of the innermost directory, or of an entry in it.
  FileURL url() const;
  FileURL url(std::string_view entry) const { return url().appendingPathComponent(entry); }

 private:
  int reopenTop(const FileDescriptor& child);

  FileURL _root;
  std::vector<OpenDirectory> _directories;
};

/// Opens a directory by its name in another one without following a link. Answers an errno value, 0
/// for success.
int openDirectory(int parent, const char* name, FileDescriptor& result) noexcept;

/// Opens the directory that a URL lies in, only as a place to work from: no entry of it can be
/// listed. Links above it are followed. Throws PlatformError, also for a URL whose last component
/// is no name of an entry ("..", the root) and for one with a NUL in it.
FileDescriptor openParent(const FileURL& url, const std::string& operation);

}  // namespace tidemar
