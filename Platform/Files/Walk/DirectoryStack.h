#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"

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
  std::vector<PendingDirectory> pending{};  ///< What lies in it and is still to be entered.
};

/// The way down into a tree of any depth with a bounded number of descriptors: the root and the
/// nearest ancestors stay open, those between are closed and reached again from below through "..",
/// each checked to be the directory it was.
class DirectoryStack {
 public:
  bool isEmpty() const noexcept { return _directories.empty(); }
  OpenDirectory& top() noexcept { return _directories.back(); }

  /// How many directories the way has: 1 in the root.
  std::size_t depth() const noexcept { return _directories.size(); }

  void push(OpenDirectory directory);

  /// Leaves the innermost directory. If the one above can't be reached again, the way falls back to
  /// the nearest one that can, and an errno value says why; 0 otherwise.
  int pop();

 private:
  int reopenTop(const FileDescriptor& child);

  std::vector<OpenDirectory> _directories;
};

}  // namespace tidemar
