// The file calls and the shell's folders, for systems without the SDK.
//
// These are the guarantees of Windows that the library relies on, and their limits here:
//
//  * Share modes hold between all users of CreateFileW, in this process and in others: a file that
//    is open for reading can be opened for reading only, one that is open for writing not at all.
//  * A file that anyone has open, by _sopen included, cannot be deleted. A lease shows whether any
//    keeps the deleted file open.
//  * _sopen and CreateFileW do not see each other's share modes.
//  * File systems without locks share freely.
//
// An open, delete or query that fails because the process or the system is out of resources throws.
//
// Only the library's own arguments are accepted; any other fails. Permissions follow the umask, and
// never let everybody write.

#ifndef DEVICEID_PLATFORM_LINUX_FILE_API_H_
#define DEVICEID_PLATFORM_LINUX_FILE_API_H_

#include <cstddef>

#include "platform/linux/base_types.h"

inline constexpr std::size_t MAX_PATH = 260;

inline constexpr int CSIDL_APPDATA = 0x1a;
inline constexpr int CSIDL_COMMON_APPDATA = 0x23;
inline constexpr DWORD SHGFP_TYPE_CURRENT = 0;

// Writes the path of the folder into `path`, which has MAX_PATH bytes.
HRESULT SHGetFolderPathA(void* window, int folder_id, HANDLE token, DWORD flags, char* path);

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xffffffff;

// Opens a file, or creates it if it is missing: shared with readers for reading, exclusive for
// writing. Returns INVALID_HANDLE_VALUE on failure.
HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD share, void* security,
                   DWORD disposition, DWORD flags, HANDLE pattern);
BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* overlapped);
BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* overlapped);
BOOL CloseHandle(HANDLE file);

BOOL DeleteFileA(const char* path);
BOOL DeleteFileW(const wchar_t* path);
BOOL CreateDirectoryA(const char* path, void* security);
BOOL CreateDirectoryW(const wchar_t* path, void* security);
DWORD GetFileAttributesA(const char* path);

// NOLINTBEGIN(bugprone-reserved-identifier): names of the runtime library of Windows
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"  // Windows, too, uses the one name for both.

struct _stat64i32 {
  std::int32_t st_size;
};
// Returns 0 if `path` exists.
int _stat64i32(const char* path, struct _stat64i32* status);

inline constexpr int _O_RDONLY = 0;
inline constexpr int _O_WRONLY = 1;
inline constexpr int _O_CREAT = 0x100;
inline constexpr int _O_TRUNC = 0x200;
inline constexpr int _O_BINARY = 0x8000;
inline constexpr int _SH_DENYNO = 0x40;
inline constexpr int _S_IREAD = 0x100;
inline constexpr int _S_IWRITE = 0x80;

// Opens a file for reading, or creates or truncates one for writing, and shares it with everybody.
// Returns a descriptor, or -1 on failure.
int _sopen(const char* path, int flags, int sharing, int permissions);
// Both return the number of bytes, or -1 on failure. Signals do not interrupt them.
int _read(int descriptor, void* buffer, unsigned size);
int _write(int descriptor, const void* buffer, unsigned size);
int _close(int descriptor);

#pragma GCC diagnostic pop
// NOLINTEND(bugprone-reserved-identifier)

#endif  // DEVICEID_PLATFORM_LINUX_FILE_API_H_
