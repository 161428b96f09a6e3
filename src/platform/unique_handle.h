// A handle of the operating system that is released with its scope.

#ifndef DEVICEID_PLATFORM_UNIQUE_HANDLE_H_
#define DEVICEID_PLATFORM_UNIQUE_HANDLE_H_

#include "platform/windows_api.h"

namespace system_info {

// `Kind` names the type of the handle and its release function. All kinds used here share one
// invalid value.
template <typename Kind>
class UniqueHandle {
 public:
  using Handle = typename Kind::Handle;

  explicit UniqueHandle(Handle handle) : handle_(handle) {}
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() {
    if (valid()) Kind::Release(handle_);
  }

  bool valid() const { return handle_ != static_cast<Handle>(INVALID_HANDLE_VALUE); }
  Handle get() const { return handle_; }

 private:
  Handle handle_;
};

struct FileHandleKind {
  using Handle = HANDLE;
  static void Release(Handle handle) { CloseHandle(handle); }
};

struct RegistryKeyKind {
  using Handle = HKEY;
  static void Release(Handle handle) { RegCloseKey(handle); }
};

struct DeviceSetKind {
  using Handle = HDEVINFO;
  static void Release(Handle handle) { SetupDiDestroyDeviceInfoList(handle); }
};

using UniqueFile = UniqueHandle<FileHandleKind>;
using UniqueRegistryKey = UniqueHandle<RegistryKeyKind>;
using UniqueDeviceSet = UniqueHandle<DeviceSetKind>;

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_UNIQUE_HANDLE_H_
