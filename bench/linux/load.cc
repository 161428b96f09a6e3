#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "bench/linux/pairs.h"

namespace bench {
namespace {

void* Load(const char* path) {
  void* library = dlopen(path, RTLD_NOW);
  if (library == nullptr) throw std::runtime_error(dlerror());
  return library;
}

std::function<double()> TimedLoadAndUnload(const char* path) {
  return Timed([path] { dlclose(Load(path)); });
}

// In a process of its own each time: what a library needs is resolved but once in a process.
std::function<double()> TimedFirstLoad(const char* path) {
  return [path] {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    if (fork() == 0) {
      const double seconds = TimeOf([path] { Load(path); });
      _exit(write(ends[1], &seconds, sizeof(seconds)) != sizeof(seconds));
    }
    close(ends[1]);
    double seconds = 0;
    const bool complete = read(ends[0], &seconds, sizeof(seconds)) == sizeof(seconds);
    close(ends[0]);
    wait(nullptr);
    if (!complete) throw std::runtime_error("a load failed");
    return seconds;
  };
}

}  // namespace

Pair FirstLoad() { return {TimedFirstLoad(LIBRARY), TimedFirstLoad(EMPTY_LIBRARY)}; }

Pair LoadAndUnload() { return {TimedLoadAndUnload(LIBRARY), TimedLoadAndUnload(EMPTY_LIBRARY)}; }

}  // namespace bench
