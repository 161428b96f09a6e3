#include <windows.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

#include "bench/windows/pair_program.h"
#include "deviceid.h"

// The calls to Windows that a call of the library makes, in plain C.
extern "C" void MakeBareCalls(void);

namespace bench {
namespace {

decltype(&GetHardwareId) FindCall() {
  decltype(&GetHardwareId) call = nullptr;
  HMODULE library = LoadLibraryA("deviceid.dll");
  if (library == nullptr) throw std::runtime_error("deviceid.dll cannot be loaded");
  const auto address = GetProcAddress(library, "GetHardwareId");
  std::memcpy(&call, &address, sizeof(call));
  return call;
}

void CallLibrary() {
  static const auto call = FindCall();
  static std::array<char, DEVICEID_ID_SIZE> id;
  static std::array<char, DEVICEID_LOG_SIZE> log;
  const int result = call(id.data(), id.size(), "2.0", log.data(), log.size());
  if (result != DEVICEID_SUCCESS) throw std::runtime_error("result " + std::to_string(result));
}

}  // namespace

Pair MakePair() {
  CallLibrary();  // The first call stores the id.
  return {Timed(CallLibrary), Timed(MakeBareCalls)};
}

}  // namespace bench
