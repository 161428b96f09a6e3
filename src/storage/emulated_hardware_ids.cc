#include "storage/emulated_hardware_ids.h"

#include <fstream>
#include <utility>

#include "storage/storage_paths.h"

namespace system_info {
namespace {

// Ends a text file, wherever it stands.
constexpr char kEndOfText = '\x1a';

}  // namespace

HardwareIdSet ReadEmulatedHardwareIds() {
  static const std::string kFileName = "hardware_ids.emulated";
  const std::string path = CommonFolderPath(false) + PathSeparator() + kFileName;

  // Some systems open a folder as an empty stream.
  if (IsDirectory(path)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) return std::nullopt;

  // The bytes are taken as they are and read by the rules of a Windows text file, which is what the
  // file is on every system.
  std::vector<std::string> ids;
  for (std::string line; std::getline(file, line);) {
    const bool has_line_end = !file.eof();
    const std::size_t end = line.find(kEndOfText);
    if (end != std::string::npos) {
      line.resize(end);
      if (!line.empty()) ids.push_back(std::move(line));
      break;
    }
    if (has_line_end && line.ends_with('\r')) line.pop_back();
    ids.push_back(std::move(line));
  }
  return ids;
}

}  // namespace system_info
