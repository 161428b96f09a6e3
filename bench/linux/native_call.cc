#include <array>
#include <stdexcept>
#include <string>

#include "bench/linux/pairs.h"
#include "deviceid.h"
#include "platform/shared_library.h"

namespace bench {

void CallLibrary() {
  static const system_info::SharedLibrary library(LIBRARY);
  static const auto get = library.Find<decltype(GetHardwareId)>("GetHardwareId");
  static std::array<char, DEVICEID_ID_SIZE> id;
  static std::array<char, DEVICEID_LOG_SIZE> log;
  const int result = get(id.data(), id.size(), "2.0", log.data(), log.size());
  if (result != DEVICEID_SUCCESS) throw std::runtime_error("result " + std::to_string(result));
}

Pair NativeCall() {
  CallLibrary();  // The first call stores the id.
  return {Timed(CallLibrary), Timed(ReadSourcesOnce)};
}

}  // namespace bench
