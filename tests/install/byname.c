/* A program without our headers and without a link to us: it opens the library that its argument
   names, looks the flat functions up by name, and adds 0.1 and 0.2 in binary and as decimals. */
#ifdef _WIN32
#include <windows.h>
#define OPEN(name) ((void*)LoadLibraryA(name))
#define FIND(library, name) ((void*)GetProcAddress((HMODULE)(library), name))
#define REASON "LoadLibrary"
#else
#include <dlfcn.h>
#define OPEN(name) dlopen(name, RTLD_NOW | RTLD_LOCAL)
#define FIND(library, name) dlsym(library, name)
#define REASON dlerror()
#endif
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

static void* library;

/* A function pointer and an object pointer have one size wherever libraries are opened by name. */
static void find(const char* name, void* function) {
  void* const address = FIND(library, name);
  memcpy(function, &address, sizeof address);
}

int main(int count, char** arguments) {
  bool (*fromString)(const char*, void*);
  bool (*fromReal)(double, void*);
  int (*compare)(const void*, const void*);
  int (*messageText)(unsigned, char*, unsigned);
  uint8_t text[16], real[16];
  char message[64] = "";
  library = count == 2 ? OPEN(arguments[1]) : NULL;
  if (library == NULL) {
    printf("%s\n", count == 2 ? REASON : "one argument: the library");
    return 1;
  }
  find("nomDecimalFromString", &fromString);
  find("nomDecimalFromReal", &fromReal);
  find("nomDecimalCompare", &compare);
  find("nomGetMessageText", &messageText);
  if (!fromString || !fromReal || !compare || !messageText) {
    printf("a flat function is missing\n");
    return 1;
  }
  if (!fromString("0.3", text) || !fromReal(0.1 + 0.2, real) ||
      messageText(1422, message, sizeof message) != 0) {
    return 1;
  }
  /* The stored form: four value bytes would be two limbs; 3 with one place takes one. */
  printf("by name: 0.3 is %u limb with %u place; 0.1 + 0.2 in binary is %s; 1422: %s\n",
         text[0] / 2u, text[1], compare(text, real) < 0 ? "more" : "not more", message);
  return text[0] == 2 && text[1] == 1 && text[2] == 3 && compare(text, real) < 0 &&
                 strcmp(message, "Result of expression overflows Decimal precision") == 0
             ? 0
             : 1;
}
