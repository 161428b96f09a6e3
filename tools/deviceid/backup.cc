#include "tools/deviceid/backup.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <system_error>

#include "platform/file_attributes.h"
#include "platform/native_paths.h"
#include "support/folder_paths.h"
#include "tools/deviceid/backup_manifest.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/state_folders.h"

namespace deviceid {
namespace {

namespace fs = std::filesystem;
using system_info::FileChange;
using system_info::FileKind;
using system_info::FileProperties;
using system_info::ToUtf8;

constexpr const char* kManifest = "manifest.json";
constexpr const char* kUnfinished = "manifest.json.part";

// Of a file in a state folder, far more than any call writes.
constexpr std::size_t kLargestFile = std::size_t{16} << 20;

// How often a file is read again that a host wrote meanwhile.
constexpr int kAttempts = 5;

// The folder itself, not the link that may stand in its place.
fs::path Itself(const fs::path& folder) { return folder / "."; }

bool IsThere(const fs::path& path) {
  return system_info::LookAtFile(path).kind != FileKind::kMissing;
}

bool IsStoredName(const std::string& name) {
  return std::any_of(std::begin(kStoredFiles), std::end(kStoredFiles),
                     [&](const auto& stored) { return name == stored.name; });
}

std::string ReadCopy(const fs::path& path) {
  auto bytes = system_info::ReadBytes(path, kLargestFile + 1);
  if (!bytes) throw std::runtime_error(ToUtf8(path) + " cannot be read");
  if (bytes->size() > kLargestFile) {
    throw std::runtime_error(ToUtf8(path) + " is larger than 16 MB");
  }
  return *std::move(bytes);
}

KeptFile ReadFile(const fs::path& path) {
  KeptFile file;
  file.name = ToUtf8(path.filename());
  const FileKind kind = system_info::LookAtFile(path).kind;
  if (kind == FileKind::kLink) {
    file.kind = KeptFile::Kind::kLink;
    file.properties = system_info::ReadProperties(path);
    file.bytes = ToUtf8(fs::read_symlink(path));
  }
  if (kind != FileKind::kRegular) return file;
  // What this account cannot read, it cannot change either.
  if (!system_info::ReadBytes(path, 1)) return file;
  file.kind = KeptFile::Kind::kFile;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    file.properties = system_info::ReadProperties(path);
    file.bytes = ReadCopy(path);
    if (system_info::ReadProperties(path).at("modified") == file.properties.at("modified")) break;
  }
  return file;
}

bool CanBeRead(const fs::path& folder) {
  std::error_code failure;
  const fs::directory_iterator names(folder, failure);
  return !failure;
}

KeptFolder ReadFolder(const fs::path& path) {
  KeptFolder folder{path, path, {}, {}};
  while (!fs::is_directory(folder.standing) && folder.standing.has_relative_path()) {
    folder.standing = folder.standing.parent_path();
  }
  if (CanBeRead(folder.standing)) {
    folder.properties = system_info::ReadProperties(Itself(folder.standing));
  }
  if (folder.missing()) return folder;
  std::error_code hidden;
  for (const auto& entry : fs::directory_iterator(path, hidden)) {
    folder.files.push_back(ReadFile(entry.path()));
  }
  // A folder may show its files to those who know their names.
  for (const auto& [name, stored] : kStoredFiles) {
    if (hidden && IsThere(path / name)) folder.files.push_back(ReadFile(path / name));
  }
  return folder;
}

void WriteCopies(const Backup& backup, const std::string& reason) {
  for (std::size_t i = 0; i < backup.folders.size(); ++i) {
    const fs::path folder = backup.place / FolderOfCopies(i);
    system_info::MakePrivateFolder(folder);
    for (const KeptFile& file : backup.folders[i].files) {
      if (file.kind != KeptFile::Kind::kFile) continue;
      system_info::WriteDurably(folder / system_info::FromUtf8(file.name), file.bytes);
    }
    system_info::SyncFolder(folder);
  }
  system_info::WriteDurably(backup.place / kUnfinished, WriteManifest(backup, reason));
  fs::rename(backup.place / kUnfinished, backup.place / kManifest);
  system_info::SyncFolder(backup.place);
  system_info::SyncFolder(backup.place.parent_path());
}

// Makes `folder` and what is missing above it.
void MakeFolders(const fs::path& folder) {
  std::error_code unknown;
  if (fs::is_directory(folder, unknown)) return;
  if (folder.has_relative_path()) MakeFolders(folder.parent_path());
  system_info::MakePrivateFolder(folder);
  system_info::SyncFolder(folder.parent_path());
}

bool IsWithin(const fs::path& path, const fs::path& folder) {
  const fs::path inner = fs::weakly_canonical(path);
  const fs::path outer = fs::weakly_canonical(folder);
  return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

fs::path NextPlace(const fs::path& parent) {
  const std::string date = LocalDate(std::time(nullptr));
  for (int count = 1;; ++count) {
    fs::path place = parent / (date + "-" + std::to_string(count));
    if (!IsThere(place)) return place;
  }
}

bool Holds(const KeptFolder& folder, const std::string& name) {
  return std::any_of(folder.files.begin(), folder.files.end(),
                     [&](const KeptFile& file) { return file.name == name; });
}

// What is in the folder that the library or a repair has put there since.
std::vector<std::string> NewNames(const KeptFolder& folder) {
  std::vector<std::string> names;
  for (const auto& [name, stored] : kStoredFiles) {
    const bool there = IsThere(folder.path / name);
    if (there && !Holds(folder, name)) names.emplace_back(name);
  }
  return names;
}

void BringBack(const fs::path& path, const KeptFile& file) {
  if (file.kind == KeptFile::Kind::kOther) return;
  const bool link = file.kind == KeptFile::Kind::kLink;
  const FileKind kind = system_info::LookAtFile(path).kind;
  const FileKind wanted = link ? FileKind::kLink : FileKind::kRegular;
  bool same = kind == wanted;
  if (same && link) same = ToUtf8(fs::read_symlink(path)) == file.bytes;
  if (same && !link) same = system_info::ReadBytes(path, file.bytes.size() + 1) == file.bytes;
  // Dates of a file of somebody else cannot be set, and have not changed.
  if (same && !system_info::MayMakeAgain(path)) return;
  if (!same && kind != FileKind::kMissing && (link || kind != wanted)) fs::remove(path);
  if (!same && link) fs::create_symlink(system_info::FromUtf8(file.bytes), path);
  if (!same && !link) system_info::WriteDurably(path, file.bytes);
  system_info::ApplyProperties(path, file.properties);
}

// The dates alone: a folder above the library's own belongs to others as well.
void BringBackDates(const fs::path& folder, const FileProperties& kept) {
  if (kept.empty()) return;
  FileProperties properties = system_info::ReadProperties(Itself(folder));
  for (const char* date : {"modified", "accessed"}) properties[date] = kept.at(date);
  if (system_info::MayMakeAgain(folder)) system_info::ApplyProperties(Itself(folder), properties);
}

void RemoveMade(const KeptFolder& folder) {
  bool removed = false;
  for (fs::path path = folder.path; path != folder.standing; path = path.parent_path()) {
    std::error_code in_use;
    const bool made = fs::is_directory(fs::symlink_status(path, in_use));
    removed = (made && fs::remove(path, in_use)) || removed;
  }
  if (removed) BringBackDates(folder.standing, folder.properties);
}

void BringBack(const KeptFolder& folder) {
  for (const std::string& name : NewNames(folder)) fs::remove(folder.path / name);
  if (folder.missing()) return RemoveMade(folder);
  MakeFolders(folder.path);
  for (const KeptFile& file : folder.files) {
    BringBack(folder.path / system_info::FromUtf8(file.name), file);
  }
  system_info::SyncFolder(folder.path);
  const bool known = !folder.properties.empty();
  if (known && system_info::MayMakeAgain(Itself(folder.path))) {
    system_info::ApplyProperties(Itself(folder.path), folder.properties);
  }
}

}  // namespace

fs::path ChoosePlace(const std::string& wish, const std::vector<fs::path>& folders) {
  const fs::path usual = system_info::BackupsFolder();
  if (wish.empty() && usual.empty()) {
    throw Failure(kRefused, "the system names no folder for backups; add --backup DIR");
  }
  fs::path place = wish.empty() ? usual : fs::absolute(system_info::FromUtf8(wish));
  if (!place.has_filename()) place = place.parent_path();
  for (const fs::path& folder : folders) {
    if (!IsWithin(place, folder)) continue;
    throw Failure(kRefused, ToUtf8(place) +
                                " is within a state folder; choose another place with "
                                "--backup DIR");
  }
  std::error_code failure;
  if (!wish.empty() && IsThere(place) && !fs::is_empty(place, failure)) {
    throw Failure(kRefused, ToUtf8(place) + " is there already and not an empty folder");
  }
  return wish.empty() ? NextPlace(place) : place;
}

Backup MakeBackup(const fs::path& place, const std::vector<fs::path>& folders,
                  const std::string& reason) try {
  Backup backup{place, {}};
  for (const fs::path& folder : folders) backup.folders.push_back(ReadFolder(folder));
  std::error_code unknown;
  const bool given = fs::is_directory(place, unknown);
  try {
    MakeFolders(place);
    WriteCopies(backup, reason);
  } catch (...) {
    if (!given) fs::remove_all(place, unknown);
    throw;
  }
  return backup;
} catch (const std::exception& failure) {
  throw Failure(kWriteFailed, std::string("no backup, so nothing was changed: ") + failure.what());
}

Backup ReadBackup(const fs::path& place) {
  const std::string name = ToUtf8(place);
  if (!IsThere(place)) throw Failure(kNoInput, "there is no " + name);
  const bool hidden = system_info::LookAtFile(place / kManifest).kind == FileKind::kUnknown;
  if (hidden) throw Failure(kNoRights, "no rights to read " + name);
  const bool complete = IsThere(place / kManifest);
  const bool begun = complete || IsThere(place / kUnfinished) || IsThere(place / "common");
  if (!complete && begun) throw Failure(kBadData, name + " is an incomplete backup");
  if (!complete) throw Failure(kBadData, name + " is no backup of a repair");
  try {
    Backup backup = ReadManifest(ReadCopy(place / kManifest),
                                 [&](const fs::path& copy) { return ReadCopy(place / copy); });
    backup.place = place;
    return backup;
  } catch (const std::exception& failure) {
    throw Failure(kBadData, name + " is a damaged backup: " + failure.what());
  }
}

std::vector<FileChange> ChangesTo(const KeptFolder& folder, const std::string& text) {
  std::vector<FileChange> changes;
  const auto change = [&](FileChange::Kind kind, const std::string& name,
                          const std::string& bytes) {
    changes.push_back({kind, text + system_info::PathSeparator() + name, bytes});
  };
  if (!folder.missing() && !IsThere(folder.path)) {
    changes.push_back({FileChange::Kind::kFolderMade, text, {}});
  }
  for (const KeptFile& file : folder.files) {
    if (file.kind != KeptFile::Kind::kFile || !IsStoredName(file.name)) continue;
    const fs::path path = folder.path / system_info::FromUtf8(file.name);
    const auto bytes = system_info::ReadBytes(path, file.bytes.size() + 1);
    if (bytes != file.bytes) change(FileChange::Kind::kFileWritten, file.name, file.bytes);
  }
  for (const std::string& name : NewNames(folder)) {
    change(FileChange::Kind::kFileRemoved, name, {});
  }
  return changes;
}

void BringBack(const Backup& backup) {
  for (const KeptFolder& folder : backup.folders) BringBack(folder);
}

}  // namespace deviceid
