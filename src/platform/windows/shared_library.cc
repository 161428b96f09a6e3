#include "platform/shared_library.h"

#include <stdexcept>

#include "platform/native_paths.h"
#include "platform/windows_api.h"

namespace system_info {

SharedLibrary::SharedLibrary(const std::filesystem::path& path)
    : path_(ToUtf8(path)), library_(LoadLibraryW(std::filesystem::absolute(path).c_str())) {
  if (library_ != nullptr) return;
  const DWORD error = GetLastError();
  const bool other_size = error == ERROR_BAD_EXE_FORMAT;
  throw std::runtime_error(path_ + " cannot be loaded: " +
                           (other_size ? "it is no DLL for programs of this word size"
                                       : "error " + std::to_string(error)));
}

void* SharedLibrary::FindAddress(const char* name) const {
  auto* const module = static_cast<HMODULE>(library_);
  void* address = reinterpret_cast<void*>(GetProcAddress(module, name));
  if (address == nullptr) throw std::runtime_error(path_ + " has no " + name);
  return address;
}

}  // namespace system_info
