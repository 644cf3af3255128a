#include "Tidemar/Model/DataDirectory.h"

#include "Platform/Files/Descriptors/CreateDirectory.h"
#include "Platform/Files/Places/StandardDirectories.h"

namespace tidemar {

FileURL makeDataDirectory() {
  const FileURL directory = StandardDirectories::data().appendingPathComponent("Tidemar");
  createDirectory(directory);
  return directory;
}

}  // namespace tidemar
