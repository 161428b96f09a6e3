// What stands at a path and what this account may do with it: looked up, never tried out.
//
// Each function is about this moment and leaves nothing behind but, where the system insists on it,
// the time of the last access. It throws where the operation that it foresees would throw for lack
// of resources. Two things cannot be looked up: a full disk, and a file that somebody has open
// without a lock.

#ifndef DEVICEID_PLATFORM_FILE_RIGHTS_H_
#define DEVICEID_PLATFORM_FILE_RIGHTS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace system_info {

// The form of a path that all functions here take, in which the narrow and the wide name that the
// library has for a file are the same: UTF-8 on Windows, the bytes of the path elsewhere.
std::string SystemPath(const std::string& narrow);
std::string SystemPath(const std::wstring& wide);

// The text that names one folder, whatever path leads to it. None if no folder can be seen there.
std::optional<std::string> FolderIdentity(const std::string& path);

enum class Standing {
  kNothing,
  kFile,
  kFolder,
  kLink,
  kOther,    // What the library does not open, as a pipe.
  kUnknown,  // This account cannot even see what stands there, or whether anything does.
};

enum class Holder { kNobody, kReader, kWriter };

struct FileRights {
  // Of the path itself, without a step through a link.
  Standing standing = Standing::kUnknown;

  // Where there is nothing yet: may a file, or a folder, be made?
  bool may_make_file = false;
  bool may_make_folder = false;
  // May the name be removed from its folder? Where there is nothing yet, a file that this account
  // made.
  bool may_remove_name = false;

  // Of a link: where it leads, whether the library opens what is there or may make what is missing,
  // and whether the system shows it.
  std::string target;
  bool trusted = false;
  bool may_make_behind = false;
  bool followed = false;

  // Of a file. The system may ask more of who deletes a file than the right to remove its name.
  bool may_read = false;
  bool may_write = false;
  bool may_empty = false;
  bool may_delete = false;
  Holder holder = Holder::kNobody;  // Who has it open with a lock.

  // The bytes of a file that may be read: the first ones, and whether the system failed to read
  // them or has more.
  std::string start;
  bool read_failed = false;
  bool longer = false;
};

FileRights LookUpRights(const std::string& path);

// At most `size` bytes of a file from `offset` on, or none if they cannot be read.
std::optional<std::string> ReadPart(const std::string& path, std::uint64_t offset,
                                    std::size_t size);

// What this account may do with what it makes.
struct OwnRights {
  bool read = true;
  bool write = true;
  bool enter = true;
};
OwnRights RightsOfNew();

// True if the system makes `folder` and all that is missing above it for this account alone, when a
// folder in it is to be made.
bool IsMadeWhenMissing(const std::string& folder);
bool IsOwnFolder(const std::string& folder);

// The calls that a scripted machine can make fail, and the answer that it then gives. A real
// machine has none.
enum class FileCall { kOpen, kRead, kWrite, kWriteShort, kWriteStream, kDelete, kMakeFolder };
std::optional<std::uint32_t> ScriptedAnswer(FileCall call, const std::string& path);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_FILE_RIGHTS_H_
