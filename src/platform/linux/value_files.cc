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
Descriptor OpenToRead(const std::string& path, int flags, int folder) {
  const int number =
      RepeatInterrupted([&] { return openat(folder, path.c_str(), O_RDONLY | O_CLOEXEC | flags); });
  if (number < 0) ThrowIfOutOfResources(errno, path.c_str());
  return Descriptor(number);
}

std::optional<std::string> ReadValue(const std::string& path, int folder) {
  const Descriptor file = OpenToRead(path, 0, folder);
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
  return value;
}

std::optional<long> ReadNumber(const std::string& path, int folder) {
  const Descriptor file = OpenToRead(path, 0, folder);
  // Includes a line end and a terminator. One read returns the whole of such a small file.
  std::array<char, 32> text = {};
  const ssize_t size =
      RepeatInterrupted([&] { return read(file.get(), text.data(), text.size() - 1); });
  if (size < 0) ThrowIfOutOfResources(errno, path.c_str());
  if (size <= 0) return std::nullopt;
  const int base = text[1] == 'x' ? 16 : 10;
  char* end = nullptr;
  const long number = std::strtol(text.data(), &end, base);
  const std::string_view rest = end;
  if (end == text.data() || (rest != "\n" && !rest.empty())) return std::nullopt;
  return number;
}

std::optional<std::string> LinkTarget(const std::string& path) {
  std::array<char, PATH_MAX> target;
  const ssize_t length = readlink(path.c_str(), target.data(), target.size());
  if (length >= 0) return std::string(target.data(), static_cast<std::size_t>(length));
  ThrowIfOutOfResources(errno, path.c_str());
  return std::nullopt;
}

std::optional<std::string> LinkedName(const std::string& path) {
  const auto target = LinkTarget(path);
  if (!target) return std::nullopt;
  return LastName(*target);
}

std::optional<std::string> ResolvedPath(const std::string& path) {
  const Descriptor found = OpenToRead(path, O_PATH);
  if (!found.valid()) return std::nullopt;
  // The kernel resolves it in one call. Without /proc it is resolved link by link.
  if (auto resolved = LinkTarget("/proc/self/fd/" + std::to_string(found.get()))) return resolved;
  std::array<char, PATH_MAX> resolved;
  if (realpath(path.c_str(), resolved.data()) != nullptr) return resolved.data();
  ThrowIfOutOfResources(errno, path.c_str());
  return std::nullopt;
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

std::optional<std::string> OnlyRealUuid(std::optional<std::string> uuid) {
  if (uuid && uuid->find_first_not_of("0-") == std::string::npos) return std::nullopt;
  return uuid;
}

}  // namespace system_info
