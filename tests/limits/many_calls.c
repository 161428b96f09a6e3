/*
 * many_calls LIBRARY THREADS CALLS DESCRIPTORS: calls for format 2.0 from many threads, with at
 * most so many descriptors. Prints how often each result came.
 */
#include <dlfcn.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>

typedef int (*GetFunction)(char*, uint32_t, const char*, char*, uint32_t);

static GetFunction get;
static int calls;
static int results[9];

static void* Run(void* unused) {
  char id[41];
  int i;
  for (i = 0; i < calls; ++i) {
    const int result = get(id, sizeof(id), "2.0", NULL, 0);
    __atomic_add_fetch(&results[result], 1, __ATOMIC_RELAXED);
  }
  return unused;
}

int main(int argc, char** argv) {
  pthread_t threads[64];
  struct rlimit limit;
  void* library = argc == 5 ? dlopen(argv[1], RTLD_NOW) : NULL;
  int count, i;
  if (library == NULL) return 2;
  *(void**)&get = dlsym(library, "GetHardwareId");
  count = atoi(argv[2]);
  calls = atoi(argv[3]);
  limit.rlim_cur = limit.rlim_max = (rlim_t)atoi(argv[4]);
  setrlimit(RLIMIT_NOFILE, &limit);
  for (i = 0; i < count; ++i) pthread_create(&threads[i], NULL, Run, NULL);
  for (i = 0; i < count; ++i) pthread_join(threads[i], NULL);
  for (i = 0; i < 9; ++i) {
    if (results[i] > 0) printf("%d times %d; ", results[i], i);
  }
  return 0;
}
