// The object at a path and this account's permissions for it, found without changing anything.
//
// Each function describes the present moment and leaves no trace but, on some systems, the access
// time. It throws if the operation that it predicts would throw for lack of resources. Two things
// cannot be predicted: a full disk, and a file that somebody has open without a lock.

#ifndef DEVICEID_PLATFORM_FILE_RIGHTS_H_
#define DEVICEID_PLATFORM_FILE_RIGHTS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace system_info {

// The common form of the library's narrow and wide paths, which all functions here take: UTF-8 on
// Windows, the bytes of the path elsewhere.
std::string SystemPath(const std::string& narrow);
std::string SystemPath(const std::wstring& wide);

// A text that identifies a folder, whatever path leads to it. None if no folder can be seen there.
std::optional<std::string> FolderIdentity(const std::string& path);

enum class Standing {
  kNothing,
  kFile,
  kFolder,
  kLink,
  kOther,    // The library does not open it, for example a pipe.
  kUnknown,  // This account cannot see whether there is anything.
};

enum class Holder { kNobody, kReader, kWriter };

struct FileRights {
  // The kind of the path itself; a link is not followed.
  Standing standing = Standing::kUnknown;

  // For a missing path: may a file, or a folder, be made?
  bool may_make_file = false;
  bool may_make_folder = false;
  // May the name be removed from its folder? For a missing path: the name of a file that this
  // account made.
  bool may_remove_name = false;

  // For a link: its target, whether the library opens an existing target or makes a missing one,
  // and whether the system shows it.
  std::string target;
  bool trusted = false;
  bool may_make_behind = false;
  bool followed = false;

  // For a file. Deleting a file may need more than the right to remove its name.
  bool may_read = false;
  bool may_write = false;
  bool may_empty = false;
  bool may_delete = false;
  Holder holder = Holder::kNobody;  // Who holds a lock on the open file.

  // The first bytes of a readable file, and whether reading failed or there are more.
  std::string start;
  bool read_failed = false;
  bool longer = false;
};

FileRights LookUpRights(const std::string& path);

// At most `size` bytes of a file from `offset` on; nullopt if reading fails.
std::optional<std::string> ReadPart(const std::string& path, std::uint64_t offset,
                                    std::size_t size);

// This account's permissions for files and folders that it makes.
struct OwnRights {
  bool read = true;
  bool write = true;
  bool enter = true;
};
OwnRights RightsOfNew();

// True if making a folder in `folder` also makes `folder` and its missing parents, for this account
// alone.
bool IsMadeWhenMissing(const std::string& folder);
bool IsOwnFolder(const std::string& folder);

// The calls that a scripted machine can make fail, and the code of the failure. A real machine has
// none.
enum class FileCall { kOpen, kRead, kWrite, kWriteShort, kWriteStream, kDelete, kMakeFolder };
std::optional<std::uint32_t> ScriptedAnswer(FileCall call, const std::string& path);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_FILE_RIGHTS_H_
