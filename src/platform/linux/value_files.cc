#include "platform/linux/value_files.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace system_info {

std::optional<std::string> ReadValue(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string value;
  std::array<char, 4096> buffer = {};
  while (file.read(buffer.data(), buffer.size()) || file.gcount() > 0) {
    value.append(buffer.data(), static_cast<std::size_t>(file.gcount()));
  }
  if (file.bad()) return std::nullopt;
  if (value.ends_with('\n')) value.pop_back();
  if (value.empty()) return std::nullopt;
  return value;
}

std::optional<long> ReadNumber(const std::string& path) {
  const auto value = ReadValue(path);
  if (!value) return std::nullopt;
  const int base = value->starts_with("0x") ? 16 : 10;
  char* end = nullptr;
  const long number = std::strtol(value->c_str(), &end, base);
  if (end == value->c_str() || *end != '\0') return std::nullopt;
  return number;
}

std::optional<std::string> LinkedName(const std::string& path) {
  std::error_code failure;
  const std::filesystem::path target = std::filesystem::read_symlink(path, failure);
  if (failure || target.filename().empty()) return std::nullopt;
  return target.filename().string();
}

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code failure;
  std::filesystem::directory_iterator entry(folder, failure);
  for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
    names.push_back(entry->path().filename().string());
  }
  return names;
}

bool IsRealUuid(const std::string& text) {
  return text.find_first_not_of("0-") != std::string::npos;
}

}  // namespace system_info
