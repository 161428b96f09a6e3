/*
 * A host in plain C that loads the library at run time, asks it once for the id of this PC and
 * unloads it again:
 *
 *   host [LIBRARY [FORMAT]]
 *
 * It prints the id, or tells on standard error why there is none and returns 1.
 */
#include <stdio.h>
#include <string.h>

#include "deviceid.h"

/* The type of the function that is looked up by name. On Windows the calling convention counts. */
typedef int(DEVICEID_CALL* GetHardwareIdFunction)(char*, uint32_t, const char*, char*, uint32_t);

#ifdef _WIN32

#include <windows.h>

typedef HMODULE Library;
typedef FARPROC Symbol;

static const char kDefaultLibrary[] = "deviceid.dll";

static Library OpenLibrary(const char* path) { return LoadLibraryA(path); }

static Symbol FindSymbol(Library library, const char* name) {
  return GetProcAddress(library, name);
}

/* Returns 0 if the library stays loaded. It is asked for by its full path, whatever `path` says. */
static int UnloadLibrary(Library library, const char* path) {
  char full_path[MAX_PATH] = "";
  (void)path;
  GetModuleFileNameA(library, full_path, MAX_PATH);
  FreeLibrary(library);
  return GetModuleHandleA(full_path) == NULL;
}

#else

#include <dlfcn.h>

typedef void* Library;
typedef void* Symbol;

/* Without a slash in its name the library is searched for in the loader's folders only. */
static const char kDefaultLibrary[] = "libdeviceid.so";

static Library OpenLibrary(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }

static Symbol FindSymbol(Library library, const char* name) { return dlsym(library, name); }

/* Returns 0 if the library stays loaded. */
static int UnloadLibrary(Library library, const char* path) {
  dlclose(library);
  return dlopen(path, RTLD_NOW | RTLD_NOLOAD) == NULL;
}

#endif

/* Prints the id in the format `format`, or what went wrong. Returns 0 if there is an id. */
static int PrintId(Library library, const char* format) {
  /*
   * The buffers are the host's own, so the id outlives the library. Some results leave a buffer as
   * it is: both start out as empty texts. A host that wants no log passes NULL and 0.
   */
  static char log[DEVICEID_LOG_SIZE] = "";
  char id[DEVICEID_ID_SIZE] = "";
  GetHardwareIdFunction get_hardware_id;
  int result;

  const Symbol symbol = FindSymbol(library, "GetHardwareId");
  if (symbol == NULL) {
    fprintf(stderr, "host: the library has no GetHardwareId\n");
    return 1;
  }
  /* C has no cast from a data pointer to a function pointer, but both have the same bytes here. */
  memcpy(&get_hardware_id, &symbol, sizeof(get_hardware_id));

  result = get_hardware_id(id, sizeof(id), format, log, sizeof(log));
  if (result != DEVICEID_SUCCESS) {
    fprintf(stderr, "host: GetHardwareId gave result %d for format \"%s\"\n%s", result, format,
            log);
    return 1;
  }
  printf("%s\n", id);
  return 0;
}

int main(int argc, char** argv) {
  const char* path = argc > 1 ? argv[1] : kDefaultLibrary;
  const char* format = argc > 2 ? argv[2] : "2.0";
  int status;

  const Library library = OpenLibrary(path);
  if (library == NULL) {
    fprintf(stderr, "host: cannot load %s\n", path);
    return 1;
  }
  status = PrintId(library, format);

  /* The library has no threads and keeps no state: it goes when its last user lets it go. */
  if (!UnloadLibrary(library, path)) {
    fprintf(stderr, "host: %s is still loaded\n", path);
    return 1;
  }
  return status;
}
