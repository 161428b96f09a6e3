// A library that the program loads by its path.

#ifndef DEVICEID_PLATFORM_SHARED_LIBRARY_H_
#define DEVICEID_PLATFORM_SHARED_LIBRARY_H_

#include <filesystem>
#include <string>

namespace system_info {

// Stays loaded until the process ends. Throws std::runtime_error, with the system's reason, if the
// library cannot be loaded.
class SharedLibrary {
 public:
  explicit SharedLibrary(const std::filesystem::path& path);

  // The function of that name. Throws std::runtime_error if the library does not have it.
  template <typename Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(FindAddress(name));
  }

 private:
  void* FindAddress(const char* name) const;

  std::string path_;
  void* library_;
};

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_SHARED_LIBRARY_H_
