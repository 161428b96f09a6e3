#include "identity/random_identity.h"

#include <cstdint>

namespace system_info {

std::string MakeRandomHardwareString() {
  std::random_device source;
  std::mt19937 generator(source());
  return RandomHardwareStringFrom(generator);
}

std::string RandomHardwareStringFrom(std::mt19937& generator) {
  // The distributions of standard libraries differ; a masked output is the same uniform number
  // everywhere.
  return std::to_string(static_cast<std::uint32_t>(generator()) & 0x7fffffffu);
}

}  // namespace system_info
