#include "tools/deviceid/state_folders.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/file_attributes.h"
#include "platform/native_paths.h"
#include "platform/windows_api.h"
#include "support/folder_paths.h"
#include "tools/deviceid/output.h"

namespace deviceid {
namespace {

using system_info::FileKind;
using system_info::StateFolder;
using system_info::StoredFile;
using system_info::ToUtf8;

// Far more than any record that the library writes.
constexpr std::size_t kLargestStoredFile = std::size_t{16} << 20;

constexpr const char* kStateFolderName = "BrindleQuayWorks";

const char* WhyUnreadable(int error) {
  if (error == EACCES || error == EPERM) return "permission denied";
  if (error == EISDIR) return "a folder stands in its place";
  if (error == EINVAL || error == ENXIO) return "it is no regular file";
  return std::strerror(error);
}

StateFolder ReadFolder(StateFolder::Kind kind, const std::filesystem::path& path) {
  StateFolder folder;
  folder.kind = kind;
  folder.path = ToUtf8(path);
  for (const auto& [name, file] : kStoredFiles) folder.*file = ReadStoredFile(path / name);
  return folder;
}

bool HoldsStoredFiles(const StateFolder& folder) {
  const auto there = [](const StoredFile& file) {
    return file.state != StoredFile::State::kMissing;
  };
  return there(folder.idv2) || there(folder.id) || there(folder.record);
}

}  // namespace

StoredFile ReadStoredFile(const std::filesystem::path& path) {
  const system_info::FileAttributes facts = system_info::LookAtFile(path);
  if (facts.foreign_link) {
    return {StoredFile::State::kUnreadable, "", 0,
            "a link of the account " + facts.owner + " stands in its place"};
  }
  auto bytes = system_info::ReadBytes(path, kLargestStoredFile);
  if (bytes) {
    const std::uint64_t unread = facts.size > bytes->size() ? facts.size - bytes->size() : 0;
    return {StoredFile::State::kRead, *std::move(bytes), unread, ""};
  }
  const int error = errno;
  if (error == ENOENT || error == ENOTDIR) return {};
  return {StoredFile::State::kUnreadable, "", 0, WhyUnreadable(error)};
}

std::vector<StateFolder> ReadStateFolders() {
  using system_info::FromSystemText;
  return {
      ReadFolder(StateFolder::Kind::kCommon, FromSystemText(system_info::CommonFolderPath(false))),
      ReadFolder(StateFolder::Kind::kUser, FromSystemText(system_info::UserFolderPath(false)))};
}

StateFolder ReadKeptFolder(const std::filesystem::path& path) {
  std::error_code failure;
  const auto status = std::filesystem::status(path, failure);
  if (failure == std::errc::permission_denied) {
    throw Failure(kNoRights, "no rights to read " + ToUtf8(path));
  }
  if (!std::filesystem::exists(status)) throw Failure(kNoInput, "there is no " + ToUtf8(path));
  if (!std::filesystem::is_directory(status)) {
    throw Failure(kNoInput, ToUtf8(path) + " is no folder");
  }
  const bool readable = (std::filesystem::directory_iterator(path, failure), !failure);
  if (!readable) throw Failure(kNoRights, "no rights to read " + ToUtf8(path));
  const auto below = path / kStateFolderName;
  for (const auto& candidate : {path, below}) {
    StateFolder folder = ReadFolder(StateFolder::Kind::kCopy, candidate);
    if (HoldsStoredFiles(folder)) return folder;
  }
  throw Failure(kBadData, ToUtf8(path) + " holds no device.idv2, device.id or hid_settings");
}

std::string ReadUserFile(const std::filesystem::path& path, std::size_t limit) {
  const auto facts = system_info::LookAtFile(path);
  const std::string name = ToUtf8(path);
  if (facts.kind == FileKind::kMissing) throw Failure(kNoInput, "there is no " + name);
  auto bytes = system_info::ReadBytes(path, limit + 1);
  if (!bytes) {
    const int error = errno;
    throw Failure(error == EACCES || error == EPERM ? kNoRights : kBadData,
                  name + " cannot be read: " + WhyUnreadable(error));
  }
  if (bytes->size() > limit) {
    throw Failure(kBadData, name + " is larger than " + std::to_string(limit >> 20) + " MB");
  }
  return *std::move(bytes);
}

std::string LocalDate(std::int64_t seconds) {
  const __time64_t time = seconds;
  std::tm local = {};
  if (_localtime64_s(&local, &time) != 0) return "?";
  std::array<char, 64> text = {};
  const int length = std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", local.tm_year + 1900,
                                   local.tm_mon + 1, local.tm_mday);
  return length > 0 ? text.data() : "?";
}

}  // namespace deviceid
