#include "platform/linux/out_of_resources.h"

#include <cerrno>
#include <system_error>

namespace system_info {

bool IsOutOfResources(int error) {
  return error == EMFILE || error == ENFILE || error == ENOMEM || error == ENOLCK;
}

void ThrowIfOutOfResources(int error, const char* what) {
  if (!IsOutOfResources(error)) return;
  throw std::system_error(error, std::generic_category(), what);
}

}  // namespace system_info
