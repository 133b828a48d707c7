/* dlopen_program LIBRARY MODEL: opens the library, uses it and closes it, 100 times; fails where
 * the process holds more memory after the last time than after the tenth, apart from what
 * allocators keep. */
#define _GNU_SOURCE
#include <svmscore.h>

#include <dlfcn.h>
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>

static void require(int holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "dlopen_program: %s\n", what);
  exit(1);
}

static long pages_held(void) {
  long total = 0, resident = 0;
  FILE* statm = fopen("/proc/self/statm", "r");
  require(statm != NULL && fscanf(statm, "%ld %ld", &total, &resident) == 2, "/proc/self/statm");
  fclose(statm);
  return resident;
}

/* POSIX promises that a pointer of dlsym is a function's, ISO C does not. */
static void find(void* library, const char* name, void* function) {
  void* found = dlsym(library, name);
  require(found != NULL, name);
  *(void**)function = found;
}

static void use(const char* path, const char* document) {
  int (*load)(const char*, size_t, const svmscore_load_options*, svmscore_model**,
              svmscore_error**);
  int (*new_scorer)(const svmscore_model*, const svmscore_scorer_options*, svmscore_scorer**,
                    svmscore_error**);
  int (*score)(svmscore_scorer*, const double*, size_t, double*, size_t, svmscore_error**);
  void (*free_scorer)(svmscore_scorer*);
  void (*free_model)(svmscore_model*);
  svmscore_model* model = NULL;
  svmscore_scorer* scorer = NULL;
  double result = 0;
  void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  require(library != NULL, "dlopen");
  find(library, "svmscore_load_file", &load);
  find(library, "svmscore_scorer_new", &new_scorer);
  find(library, "svmscore_score_numbers", &score);
  find(library, "svmscore_scorer_free", &free_scorer);
  find(library, "svmscore_model_free", &free_model);
  require(load("/no/such", SVMSCORE_NUL_ENDED, NULL, &model, NULL) == SVMSCORE_SYSTEM, "no file");
  require(load(document, SVMSCORE_NUL_ENDED, NULL, &model, NULL) == SVMSCORE_OK, "load");
  require(new_scorer(model, NULL, &scorer, NULL) == SVMSCORE_OK, "scorer");
  require(score(scorer, NULL, 0, &result, 1, NULL) == SVMSCORE_OK, "score");
  free_scorer(scorer);
  free_model(model);
  dlclose(library);
}

int main(int argc, char** argv) {
  long after_tenth = 0, end;
  int i;
  require(argc == 3, "usage: dlopen_program LIBRARY MODEL");
  for (i = 0; i < 100; ++i) {
    use(argv[1], argv[2]);
    malloc_trim(0);
    if (i == 9) after_tenth = pages_held();
  }
  end = pages_held();
  if (end > after_tenth + 64) fprintf(stderr, "%ld pages, then %ld\n", after_tenth, end);
  return end > after_tenth + 64;
}
