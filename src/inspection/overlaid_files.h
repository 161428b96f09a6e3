// The files of this machine as this account finds them, under changes that stay in memory.
//
// A file is opened once, to be read, when it is first asked for. What an operation changes is seen
// by all that follow, as it would be on the machine: an operation ends as it would end for this
// account, and has the effects that it would have up to there. Belongs to one thread.

#ifndef DEVICEID_INSPECTION_OVERLAID_FILES_H_
#define DEVICEID_INSPECTION_OVERLAID_FILES_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "inspection/played_call.h"
#include "platform/file_rights.h"
#include "support/file_overlay.h"

namespace system_info {

class OverlaidFiles final : public FileOverlay {
 public:
  bool PathExists(const std::string& path) override;
  bool IsDirectory(const std::string& path) override;
  bool RemoveFile(const std::string& path) override;
  bool RemoveFile(const std::wstring& path) override;
  NewFolder MakeFolder(const std::string& path) override;
  NewFolder MakeFolder(const std::wstring& path) override;
  WholeFile ReadWholeFile(const std::wstring& path, std::string& content) override;
  WholeFile WriteWholeFile(const std::wstring& path, const std::string& content,
                           bool& complete) override;
  int OpenToRead(const std::string& path) override;
  int OpenToWrite(const std::string& path) override;
  int Read(int file, char* bytes, unsigned size) override;
  int Write(int file, const char* bytes, unsigned size) override;
  void Close(int file) override;

  // Makes a change that the account itself need not have the rights for. It has no effect in a
  // folder that is neither there nor made.
  void Pretend(const FileChange& change);

  // What is different from the machine, in the order of the last change. A file that was written as
  // it was before is not.
  std::vector<FileChange> Changes() const;

 private:
  // A name in a folder. Its path leads there, past all links before the name itself.
  struct Entry {
    std::string key;
    std::string path;
    FileRights before;
    FileRights now;
    std::string changed_as;  // In narrow form.
    int last_change = 0;     // 0 if it was not changed.
  };

  struct OpenFile {
    Entry* entry;
    std::uint64_t position;
  };

  // A path of the library: as it is looked up, and in narrow form.
  struct Name {
    std::string path;
    std::string narrow;
  };
  static Name NameOf(const std::string& path);
  static Name NameOf(const std::wstring& path);

  std::optional<std::string> KeyOfFolder(const std::string& path);
  // The entry at the path itself. Null if there is no folder for it.
  Entry* At(const std::string& path);
  // The entry behind all links, or behind those only that the library opens. Null if it cannot be
  // reached.
  Entry* Behind(std::string path, bool any_link);
  // What the system shows behind all links.
  Standing StandingBehind(const std::string& path);

  Entry* ToRead(const Name& name, bool make);
  Entry* ToWrite(const Name& name, bool empty);
  bool MakeFile(Entry& entry, const Name& name);
  NewFolder MakeOneFolder(const Name& name);
  bool MakeRoot(const std::string& folder);
  bool Remove(const Name& name);
  NewFolder MakeFolder(const Name& name);
  void Change(Entry& entry, const Name& name, Standing standing);
  int Add(Entry* entry);
  static std::optional<FileChange> ChangeOf(const Entry& entry);

  const OwnRights own_ = RightsOfNew();
  std::map<std::string, Entry> entries_;  // By key.
  std::vector<OpenFile> open_;
  int changes_ = 0;
};

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_OVERLAID_FILES_H_
