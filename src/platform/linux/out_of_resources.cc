#include "platform/linux/out_of_resources.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <string>

namespace system_info {
namespace {

struct ErrorText {
  int error;
  const char* text;
};

// Not the system's own texts, which depend on the host's locale.
constexpr std::array<ErrorText, 5> kErrors = {{
    {EMFILE, "EMFILE, too many open files in the process"},
    {ENFILE, "ENFILE, too many open files in the system"},
    {ENOMEM, "ENOMEM, out of memory"},
    {ENOBUFS, "ENOBUFS, out of memory for the network"},
    {ENOLCK, "ENOLCK, no locks available"},
}};

}  // namespace

void ThrowIfOutOfResources(int error, const char* what) {
  const auto* const row =
      std::find_if(kErrors.begin(), kErrors.end(),
                   [error](const auto& candidate) { return candidate.error == error; });
  if (row != kErrors.end()) throw std::runtime_error(std::string(what) + ": " + row->text);
}

}  // namespace system_info
