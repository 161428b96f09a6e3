#include "platform/linux/value_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <string_view>

#include "platform/linux/out_of_resources.h"

namespace system_info {
Descriptor OpenToRead(const std::string& path, int flags) {
  const int number =
      RepeatInterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | flags); });
  if (number < 0) ThrowIfOutOfResources(errno, path.c_str());
  return Descriptor(number);
}

std::optional<std::string> ReadValue(const std::string& path) {
  const Descriptor file = OpenToRead(path);
  if (!file.valid()) return std::nullopt;
  std::string value;
  std::array<char, 4096> buffer;
  ssize_t count = 0;
  do {
    count = RepeatInterrupted([&] { return read(file.get(), buffer.data(), buffer.size()); });
    if (count > 0) value.append(buffer.data(), static_cast<std::size_t>(count));
  } while (count > 0);
  if (count < 0) {
    ThrowIfOutOfResources(errno, path.c_str());
    return std::nullopt;
  }
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
  std::array<char, PATH_MAX> target;
  const ssize_t length = readlink(path.c_str(), target.data(), target.size());
  if (length < 0) {
    ThrowIfOutOfResources(errno, path.c_str());
    return std::nullopt;
  }
  std::string name = LastName({target.data(), static_cast<std::size_t>(length)});
  if (name.empty()) return std::nullopt;
  return name;
}

std::optional<std::string> ResolvedPath(const std::string& path) {
  std::array<char, PATH_MAX> resolved;
  if (realpath(path.c_str(), resolved.data()) == nullptr) {
    ThrowIfOutOfResources(errno, path.c_str());
    return std::nullopt;
  }
  return resolved.data();
}

bool Exists(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) == 0) return true;
  ThrowIfOutOfResources(errno, path.c_str());
  return false;
}

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  const Descriptor opened = OpenToRead(folder, O_DIRECTORY);
  if (!opened.valid()) return names;
  alignas(dirent64) std::array<char, 8192> buffer;
  ssize_t size = 0;
  do {
    size = getdents64(opened.get(), buffer.data(), buffer.size());
    for (ssize_t position = 0; position < size;) {
      const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + position);
      const std::string_view name = entry->d_name;
      if (name != "." && name != "..") names.emplace_back(name);
      position += entry->d_reclen;
    }
  } while (size > 0);
  if (size < 0) ThrowIfOutOfResources(errno, folder.c_str());
  return names;
}

std::string LastName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

bool IsRealUuid(const std::string& text) {
  return text.find_first_not_of("0-") != std::string::npos;
}

}  // namespace system_info
