#include "tools/deviceid/whole_file.h"

#include <fstream>
#include <random>
#include <system_error>
#include <utility>

#include "platform/native_paths.h"
#include "support/folder_paths.h"
#include "tools/deviceid/output.h"

namespace deviceid {
namespace {

namespace fs = std::filesystem;

// True if `folder` is, or lies in, a folder of the library. A path can lead there in many ways.
bool LiesInState(fs::path folder) {
  std::error_code failure;
  while (true) {
    for (const bool old_name : {false, true}) {
      for (const std::string& state :
           {system_info::CommonFolderPath(old_name), system_info::UserFolderPath(old_name)}) {
        if (fs::equivalent(folder, system_info::FromSystemText(state), failure)) return true;
      }
    }
    if (!folder.has_relative_path()) return false;
    folder = folder.parent_path();
  }
}

[[noreturn]] void FailToWrite(const fs::path& path, const std::error_code& failure) {
  const std::string why = failure ? ": " + failure.message() : "";
  throw Failure(kWriteFailed, "cannot write " + system_info::ToUtf8(path) + why);
}

// Removes what was written beside the file, unless that has taken its place.
class FileBeside {
 public:
  explicit FileBeside(fs::path path) : path_(std::move(path)) {
    constexpr const char* kDigits = "0123456789abcdef";
    path_ += ".";
    for (const char byte : RandomBytes(8)) path_ += std::string(1, kDigits[byte & 15]);
  }
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;
  ~FileBeside() {
    std::error_code ignored;
    fs::remove(path_, ignored);
  }

  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

// `name` is the file that the user asked for.
void Write(const fs::path& path, const std::string& text, const fs::path& name) {
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  std::error_code ignored;
  if (file && fs::is_regular_file(path, ignored)) {
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write, ignored);
  }
  file << text << std::flush;
  file.close();
  if (!file) FailToWrite(name, {errno, std::generic_category()});
}

}  // namespace

void CheckPlaceOfFile(const fs::path& path) {
  std::error_code failure;
  const std::string name = system_info::ToUtf8(path);
  if (fs::is_directory(path, failure)) throw Failure(kWrongUsage, name + " is a folder");
  const fs::path whole = fs::weakly_canonical(fs::absolute(path, failure), failure);
  if (LiesInState(whole.parent_path())) {
    throw Failure(kWrongUsage, name + " lies in a folder of the library; write it elsewhere");
  }
}

void WriteWholeFile(const fs::path& path, const std::string& text) {
  std::error_code failure;
  const auto status = fs::status(path, failure);
  // A device or a pipe takes the bytes as they come.
  if (fs::exists(status) && !fs::is_regular_file(status)) return Write(path, text, path);
  const fs::path target = fs::exists(status) ? fs::canonical(path, failure) : path;
  const FileBeside beside(target);
  Write(beside.path(), text, path);
  fs::rename(beside.path(), target, failure);
  if (failure) FailToWrite(path, failure);
}

std::string RandomBytes(std::size_t count) {
  std::random_device source;
  std::string bytes;
  while (bytes.size() < count) bytes += static_cast<char>(source() & 0xff);
  return bytes;
}

}  // namespace deviceid
