// Replacements for parts of the compiler's libraries and of newer glibc versions. With them the
// shared library, which links the compiler's libraries statically, runs with glibc 2.34 or later.

#include <cxxabi.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

// NOLINTBEGIN(bugprone-reserved-identifier): names of these libraries

namespace __cxxabiv1 {

// The exceptions of a thread. The libraries' own version needs a function of the dynamic linker.
struct __cxa_eh_globals {
  void* caught;
  unsigned int uncaught;
};

namespace {
thread_local __cxa_eh_globals exceptions;
}

__cxa_eh_globals* __cxa_get_globals() noexcept { return &exceptions; }
__cxa_eh_globals* __cxa_get_globals_fast() noexcept { return &exceptions; }

}  // namespace __cxxabiv1

// std::random_device cannot report a failure of this function. glibc's own version ends the
// process, too.
extern "C" std::uint32_t arc4random() noexcept {
  std::uint32_t number = 0;
  if (getentropy(&number, sizeof(number)) == 0) return number;
  const int device = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
  const bool drawn = device >= 0 && read(device, &number, sizeof(number)) == sizeof(number);
  if (!drawn) std::abort();
  close(device);
  return number;
}

#if defined(DLFO_STRUCT_HAS_EH_DBASE) && !DLFO_STRUCT_HAS_EH_DBASE

namespace {

struct Search {
  std::uintptr_t address;
  std::uintptr_t unwind_tables;
};

int LookInto(dl_phdr_info* object, std::size_t /*size*/, void* data) {
  auto& search = *static_cast<Search*>(data);
  std::uintptr_t unwind_tables = 0;
  bool is_inside = false;
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    const ElfW(Phdr)& part = object->dlpi_phdr[i];
    const std::uintptr_t start = object->dlpi_addr + part.p_vaddr;
    if (part.p_type == PT_LOAD && search.address - start < part.p_memsz) is_inside = true;
    if (part.p_type == PT_GNU_EH_FRAME) unwind_tables = start;
  }
  if (is_inside) search.unwind_tables = unwind_tables;
  return is_inside ? 1 : 0;
}

}  // namespace

// Finds the unwind tables of the code at `address`.
extern "C" int _dl_find_object(void* address, dl_find_object* result) noexcept {
  Search search = {reinterpret_cast<std::uintptr_t>(address), 0};
  dl_iterate_phdr(LookInto, &search);
  result->dlfo_eh_frame =
      reinterpret_cast<void*>(search.unwind_tables);  // NOLINT(performance-no-int-to-ptr)
  return search.unwind_tables != 0 ? 0 : -1;
}

#endif

// NOLINTEND(bugprone-reserved-identifier)
