// The lookup of message texts. Its state is Fresh until the first lookup; then it is what the
// configuration chose, the built-in table or a message file; and in the first case it changes once
// more when a number that is not built in makes it load the message file after all. What lookups
// read is gathered in a View, of which there is one per state and which never changes once it is
// current: a lookup takes it with one acquire load and needs neither lock nor memory.
#ifndef NOMUTIL_MESSAGES_MESSAGESTORE_H
#define NOMUTIL_MESSAGES_MESSAGESTORE_H

#include "builtin.h"
#include "filetable.h"

#include "nomos/annotations.h"
#include "nomos/mutex.h"

#include <atomic>

namespace nomutil::messages {

// Any thread may call any operation. The library has one store, behind the functions of
// sys/messages.h, whose contracts are those of copyText and pointAtText.
class MessageStore {
 public:
  // module holds the built-in table and outlives the store.
  constexpr explicit MessageStore(const NosMessageModule& module) noexcept : _module(module) {}

  int copyText(unsigned number, char* buffer, unsigned size, int severity, unsigned facility)
      NOMOS_EXCLUDES(_lock);
  int pointAtText(unsigned number, char** text) NOMOS_EXCLUDES(_lock);

 private:
  struct View {
    bool builtIn;  // the built-in table is asked first
    // The built-in table where it is asked first and can be read in place, null otherwise.
    const NosMessageModule* rows;
    char* directory;        // of the message files
    const char* notFound;   // what stands behind the number in a made-up text
    const FileTable* file;  // null unless the message file has been loaded
    char* loadError;        // null unless loading it has failed
  };

  // Not part of copyText, whose short way it would make save registers.
  [[gnu::noinline]] int _copyText(unsigned number, char* buffer, unsigned size, int severity,
                                  unsigned facility) NOMOS_EXCLUDES(_lock);
  const View& _current() NOMOS_EXCLUDES(_lock);
  const View& _initialise() NOMOS_EXCLUDES(_lock);
  const View& _loadFallback() NOMOS_EXCLUDES(_lock);
  void _readConfiguration() NOMOS_REQUIRES(_lock);
  void _loadMessageFile(View& view) NOMOS_REQUIRES(_lock);
  const char* _fillFileTable() NOMOS_REQUIRES(_lock);
  void _setNotFoundText(View& view) NOMOS_REQUIRES(_lock);
  bool _copyBuiltIn(unsigned number, char* buffer, unsigned size, int severity,
                    unsigned facility) const;
  static int _copyFromFile(const View& view, unsigned number, char* buffer, unsigned size);

  static constexpr unsigned kPathSize = 521;
  static constexpr unsigned kNotFoundSize = 300;
  static constexpr unsigned kLoadErrorSize = 100;

  const NosMessageModule& _module;
  static constexpr View kFresh = {};
  std::atomic<const View*> _view{&kFresh};

  // The lock guards the making of views and of the storage to which they point.
  ThreadMutex _lock{"NomRes"};
  View _initialView NOMOS_GUARDED_BY(_lock) = {};
  View _fallbackView NOMOS_GUARDED_BY(_lock) = {};
  FileTable _file NOMOS_GUARDED_BY(_lock);
  char _notFound[kNotFoundSize] NOMOS_GUARDED_BY(_lock) = "Undefined message number";
  char _loadError[kLoadErrorSize] NOMOS_GUARDED_BY(_lock) = "";
  char _directory[kPathSize] NOMOS_GUARDED_BY(_lock) = "";
  char _path[kPathSize] NOMOS_GUARDED_BY(_lock) = "";
  bool _isPathWhole NOMOS_GUARDED_BY(_lock) = false;  // it fits into _path
};

}  // namespace nomutil::messages

#endif  // NOMUTIL_MESSAGES_MESSAGESTORE_H
