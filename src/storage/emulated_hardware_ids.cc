#include "storage/emulated_hardware_ids.h"

#include <algorithm>
#include <array>
#include <utility>

#include "support/file_operations.h"
#include "support/folder_paths.h"

namespace system_info {
namespace {

constexpr const char* kFileName = "hardware_ids.emulated";

// Ends a text file at any position.
constexpr char kEndOfText = '\x1a';

// All bytes of the file, or the complete lines before a read error.
std::string ReadText(InputFile& input) {
  std::string text;
  std::array<char, 4096> buffer;
  std::size_t count = 0;
  do {
    count = input.Read(buffer.data(), buffer.size());
    text.append(buffer.data(), count);
  } while (count == buffer.size());
  if (input.failed()) text.resize(text.rfind('\n') + 1);
  return text;
}

}  // namespace

HardwareIdSet ReadEmulatedHardwareIds() {
  const std::string path = CommonFolderPath(false) + PathSeparator() + kFileName;

  // Some systems open a folder as an empty stream.
  if (IsDirectory(path)) return std::nullopt;
  InputFile file(path);
  if (!file.is_open()) return std::nullopt;

  // On every system the file is a Windows text file, so its raw bytes are parsed by those rules.
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
