#include "platform/shared_library.h"

#include <dlfcn.h>

#include <stdexcept>

#include "platform/native_paths.h"

namespace system_info {

SharedLibrary::SharedLibrary(const std::filesystem::path& path)
    // A path with a separator is not searched for.
    : path_(ToUtf8(path)), library_(dlopen(std::filesystem::absolute(path).c_str(), RTLD_NOW)) {
  if (library_ == nullptr) throw std::runtime_error(dlerror());
}

void* SharedLibrary::FindAddress(const char* name) const {
  void* address = dlsym(library_, name);
  if (address == nullptr) throw std::runtime_error(path_ + " has no " + name);
  return address;
}

}  // namespace system_info
