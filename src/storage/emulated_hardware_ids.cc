#include "storage/emulated_hardware_ids.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <utility>

#include "storage/storage_paths.h"

namespace system_info {
namespace {

// Ends a text file, wherever it stands.
constexpr char kEndOfText = '\x1a';

// All bytes of the stream, or the complete lines before a read error. Streams swallow what their
// own operations throw; memory that runs out here has to show.
std::string ReadText(std::istream& input) {
  std::string text;
  std::array<char, 4096> buffer = {};
  do {
    input.read(buffer.data(), buffer.size());
    text.append(buffer.data(), static_cast<std::size_t>(input.gcount()));
  } while (input);
  if (input.bad()) text.resize(text.rfind('\n') + 1);
  return text;
}

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
  std::string text = ReadText(file);
  text.resize(std::min(text.size(), text.find(kEndOfText)));
  std::vector<std::string> ids;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.size(), text.find('\n', begin));
    std::string line = text.substr(begin, end - begin);
    if (end < text.size() && line.ends_with('\r')) line.pop_back();
    ids.push_back(std::move(line));
    begin = end + 1;
  }
  return ids;
}

}  // namespace system_info
