#include "inspection/overlaid_files.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "support/folder_paths.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

// The most that one read of a whole file gives.
constexpr std::size_t kWholeFile = 8191;

// The most that is kept of a file that is written.
constexpr std::size_t kMostKept = 1U << 20;

// As many links as one path may have.
constexpr int kMaxLinks = 40;

std::string Parent(const std::string& path) {
  const std::size_t separator = path.rfind(PathSeparator());
  if (separator == std::string::npos) return ".";
  return path.substr(0, separator == 0 ? 1 : separator);
}

std::string LastPart(const std::string& path) {
  return path.substr(path.rfind(PathSeparator()) + 1);
}

}  // namespace

OverlaidFiles::Name OverlaidFiles::NameOf(const std::string& path) {
  return {SystemPath(path), path};
}

OverlaidFiles::Name OverlaidFiles::NameOf(const std::wstring& path) {
  return {SystemPath(path), ToNarrow(path)};
}

bool OverlaidFiles::PathExists(const std::string& path) {
  const Standing standing = StandingBehind(SystemPath(path));
  return standing != Standing::kNothing && standing != Standing::kUnknown;
}

bool OverlaidFiles::IsDirectory(const std::string& path) {
  return StandingBehind(SystemPath(path)) == Standing::kFolder;
}

bool OverlaidFiles::RemoveFile(const std::string& path) { return Remove(NameOf(path)); }

bool OverlaidFiles::RemoveFile(const std::wstring& path) { return Remove(NameOf(path)); }

NewFolder OverlaidFiles::MakeFolder(const std::string& path) { return MakeFolder(NameOf(path)); }

NewFolder OverlaidFiles::MakeFolder(const std::wstring& path) { return MakeFolder(NameOf(path)); }

WholeFile OverlaidFiles::ReadWholeFile(const std::wstring& path, std::string& content) {
  const Name name = NameOf(path);
  if (ScriptedAnswer(FileCall::kOpen, name.path)) return WholeFile::kNotOpened;
  const Entry* file = ToRead(name, true);
  if (file == nullptr || file->now.holder == Holder::kWriter) return WholeFile::kNotOpened;
  if (file->now.read_failed || ScriptedAnswer(FileCall::kRead, name.path)) {
    return WholeFile::kFailed;
  }
  content = file->now.start.substr(0, kWholeFile);
  return WholeFile::kDone;
}

WholeFile OverlaidFiles::WriteWholeFile(const std::wstring& path, const std::string& content,
                                        bool& complete) {
  const Name name = NameOf(path);
  if (ScriptedAnswer(FileCall::kOpen, name.path)) return WholeFile::kNotOpened;
  Entry* file = ToWrite(name, false);
  if (file == nullptr) return WholeFile::kNotOpened;
  if (ScriptedAnswer(FileCall::kWrite, name.path)) return WholeFile::kFailed;
  const std::size_t size =
      ScriptedAnswer(FileCall::kWriteShort, name.path).value_or(content.size());
  Change(*file, name, Standing::kFile);
  file->now.start.replace(0, size, content, 0, size);
  complete = size == content.size();
  return WholeFile::kDone;
}

int OverlaidFiles::OpenToRead(const std::string& path) { return Add(ToRead(NameOf(path), false)); }

int OverlaidFiles::OpenToWrite(const std::string& path) { return Add(ToWrite(NameOf(path), true)); }

int OverlaidFiles::Read(int file, char* bytes, unsigned size) {
  auto& [entry, position] = open_.at(static_cast<std::size_t>(file));
  const FileRights& rights = entry->now;
  if (rights.read_failed) return -1;
  std::string part;
  if (position < rights.start.size()) {
    part = rights.start.substr(static_cast<std::size_t>(position), size);
  } else if (rights.longer) {
    const auto rest = ReadPart(entry->path, position, size);
    if (!rest) return -1;
    part = *rest;
  }
  std::copy(part.begin(), part.end(), bytes);
  position += part.size();
  return static_cast<int>(part.size());
}

int OverlaidFiles::Write(int file, const char* bytes, unsigned size) {
  Entry& entry = *open_.at(static_cast<std::size_t>(file)).entry;
  if (ScriptedAnswer(FileCall::kWriteStream, "")) return -1;
  std::string& content = entry.now.start;
  content.append(bytes, std::min<std::size_t>(size, kMostKept - content.size()));
  return static_cast<int>(size);
}

void OverlaidFiles::Close(int /*file*/) {}

std::optional<std::string> OverlaidFiles::KeyOfFolder(const std::string& path) {
  if (auto identity = FolderIdentity(path)) return identity;
  const Entry* folder = Behind(path, true);
  if (folder == nullptr || folder->now.standing != Standing::kFolder) return std::nullopt;
  return folder->key;
}

OverlaidFiles::Entry* OverlaidFiles::At(const std::string& path) {
  const std::string parent = Parent(path);
  if (path.empty() || parent == path) return nullptr;
  const auto folder = KeyOfFolder(parent);
  if (!folder) return nullptr;
  const std::string key = *folder + PathSeparator() + LastPart(path);
  const auto known = entries_.find(key);
  if (known != entries_.end()) return &known->second;

  FileRights rights;
  if (!entries_.contains(*folder)) {
    rights = LookUpRights(path);
  } else if (own_.enter) {
    rights.standing = Standing::kNothing;
    rights.may_make_file = rights.may_make_folder = rights.may_remove_name = own_.write;
  }
  return &entries_.emplace(key, Entry{key, path, rights, rights, {}, 0}).first->second;
}

OverlaidFiles::Entry* OverlaidFiles::Behind(std::string path, bool any_link) {
  for (int links = 0; links < kMaxLinks; ++links) {
    Entry* entry = At(path);
    if (entry == nullptr || entry->now.standing != Standing::kLink) return entry;
    if (any_link ? !entry->now.followed : !entry->now.trusted) return nullptr;
    path = entry->now.target;
  }
  return nullptr;
}

Standing OverlaidFiles::StandingBehind(const std::string& path) {
  // What is a folder on the machine stays one.
  if (FolderIdentity(path)) return Standing::kFolder;
  if (const Entry* entry = Behind(path, true)) return entry->now.standing;
  const std::string parent = Parent(path);
  const bool missing = parent != path && StandingBehind(parent) == Standing::kNothing;
  return missing ? Standing::kNothing : Standing::kUnknown;
}

// A file to be read, which is made first if it is missing and `make` is set.
OverlaidFiles::Entry* OverlaidFiles::ToRead(const Name& name, bool make) {
  Entry* file = Behind(name.path, false);
  if (file == nullptr) return nullptr;
  if (file->now.standing == Standing::kNothing) {
    return make && MakeFile(*file, name) ? file : nullptr;
  }
  return file->now.standing == Standing::kFile && file->now.may_read ? file : nullptr;
}

// A file to be written, which is made if it is missing. With `empty` it is emptied, and shared with
// everybody; else it is shared with nobody.
OverlaidFiles::Entry* OverlaidFiles::ToWrite(const Name& name, bool empty) {
  Entry* file = Behind(name.path, false);
  if (file == nullptr) return nullptr;
  FileRights& rights = file->now;
  if (rights.standing == Standing::kNothing) return MakeFile(*file, name) ? file : nullptr;
  if (rights.standing != Standing::kFile) return nullptr;
  if (!empty) return rights.may_write && rights.holder == Holder::kNobody ? file : nullptr;
  if (!rights.may_empty) return nullptr;
  Change(*file, name, Standing::kFile);
  rights.start.clear();
  rights.longer = rights.read_failed = false;
  return file;
}

bool OverlaidFiles::MakeFile(Entry& entry, const Name& name) {
  std::string path = name.path;
  for (const Entry* on_way = At(path); on_way != &entry; on_way = At(path)) {
    if (!on_way->now.may_make_behind) return false;
    path = on_way->now.target;
  }
  if (!entry.now.may_make_file) return false;
  Change(entry, name, Standing::kFile);
  FileRights& rights = entry.now;
  rights.may_read = rights.may_delete = own_.read;
  rights.may_write = rights.may_empty = own_.write;
  return true;
}

NewFolder OverlaidFiles::MakeOneFolder(const Name& name) {
  Entry* folder = At(name.path);
  if (folder == nullptr || folder->now.standing == Standing::kUnknown) return NewFolder::kFailed;
  if (folder->now.standing != Standing::kNothing) return NewFolder::kExists;
  if (!folder->now.may_make_folder) return NewFolder::kFailed;
  Change(*folder, name, Standing::kFolder);
  return NewFolder::kMade;
}

bool OverlaidFiles::MakeRoot(const std::string& folder) {
  const Standing standing = StandingBehind(folder);
  if (standing != Standing::kNothing) return standing == Standing::kFolder;
  const std::string parent = Parent(folder);
  // Nothing is made for one account right below the root of the file system.
  if (Parent(parent) == parent || !MakeRoot(parent)) return false;
  if (FolderIdentity(parent) && !IsOwnFolder(parent)) return false;
  return MakeOneFolder({folder, folder}) != NewFolder::kFailed;
}

NewFolder OverlaidFiles::MakeFolder(const Name& name) {
  if (ScriptedAnswer(FileCall::kMakeFolder, name.path)) return NewFolder::kFailed;
  const std::string parent = Parent(name.path);
  if (StandingBehind(parent) == Standing::kNothing && IsMadeWhenMissing(parent) &&
      !MakeRoot(parent)) {
    return NewFolder::kFailed;
  }
  return MakeOneFolder(name);
}

bool OverlaidFiles::Remove(const Name& name) {
  if (ScriptedAnswer(FileCall::kDelete, name.path)) return false;
  const Entry* file = Behind(name.path, false);
  if (file == nullptr || file->now.standing != Standing::kFile) return false;
  if (!file->now.may_delete || file->now.holder != Holder::kNobody) return false;
  Entry* named = At(name.path);
  if (!named->now.may_remove_name) return false;
  Change(*named, name, Standing::kNothing);
  return true;
}

void OverlaidFiles::Change(Entry& entry, const Name& name, Standing standing) {
  if (entry.now.standing != standing) {
    entry.now.start.clear();
    entry.now.longer = entry.now.read_failed = false;
  }
  entry.now.standing = standing;
  // Behind a link it is another path that changes.
  entry.changed_as = entry.path == name.path ? name.narrow : entry.path;
  entry.last_change = ++changes_;
}

int OverlaidFiles::Add(Entry* entry) {
  if (entry == nullptr) return -1;
  open_.push_back({entry, 0});
  return static_cast<int>(open_.size() - 1);
}

void OverlaidFiles::Pretend(const FileChange& change) {
  const Name name = NameOf(change.path);
  Entry* entry = At(name.path);
  if (entry == nullptr) return;
  FileRights& rights = entry->now;
  switch (change.kind) {
    case FileChange::Kind::kFileRemoved:
      Change(*entry, name, Standing::kNothing);
      rights.may_make_file = rights.may_make_folder = rights.may_remove_name;
      rights.holder = Holder::kNobody;
      return;
    case FileChange::Kind::kFolderMade:
      if (rights.standing != Standing::kFolder) Change(*entry, name, Standing::kFolder);
      return;
    case FileChange::Kind::kFileWritten:
      break;
  }
  if (rights.standing != Standing::kFile) {
    rights.may_make_file = true;
    MakeFile(*entry, name);
  }
  Change(*entry, name, Standing::kFile);
  rights.start = change.content;
  rights.longer = rights.read_failed = false;
}

std::optional<FileChange> OverlaidFiles::ChangeOf(const Entry& entry) {
  const auto& [before, now] = std::tie(entry.before, entry.now);
  if (now.standing == Standing::kFolder) {
    return FileChange{FileChange::Kind::kFolderMade, entry.changed_as, {}};
  }
  if (now.standing == Standing::kNothing) {
    if (before.standing == Standing::kNothing) return std::nullopt;
    return FileChange{FileChange::Kind::kFileRemoved, entry.changed_as, {}};
  }
  const bool same = before.standing == now.standing && before.may_read &&
                    before.start == now.start && before.longer == now.longer;
  if (same) return std::nullopt;
  std::string content = now.start;
  if (now.longer) content += ReadPart(entry.path, content.size(), kMostKept).value_or("");
  return FileChange{FileChange::Kind::kFileWritten, entry.changed_as, std::move(content)};
}

std::vector<FileChange> OverlaidFiles::Changes() const {
  std::map<int, const Entry*> changed;
  for (const auto& [key, entry] : entries_) {
    if (entry.last_change > 0) changed[entry.last_change] = &entry;
  }
  std::vector<FileChange> changes;
  for (const auto& [order, entry] : changed) {
    if (auto change = ChangeOf(*entry)) changes.push_back(std::move(*change));
  }
  return changes;
}

}  // namespace system_info
