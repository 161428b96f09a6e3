#include <windows.h>

#include <stdexcept>

#include "bench/windows/pair_program.h"

namespace bench {
namespace {

void LoadOnce(const char* name) {
  HMODULE library = LoadLibraryA(name);
  if (library == nullptr) throw std::runtime_error("a DLL cannot be loaded");
  FreeLibrary(library);
}

std::function<double()> TimedLoad(const char* name) {
  LoadOnce(name);  // What it imports is initialized with the first load.
  return Timed([name] { LoadOnce(name); });
}

}  // namespace

// An empty DLL that imports the same is the reference.
Pair MakePair() { return {TimedLoad("deviceid.dll"), TimedLoad("empty.dll")}; }

}  // namespace bench
