// Status numbers and their texts. Operations return 0 for success, else one of the numbers below;
// nomGetMessageText turns a number into its text. English texts are built into the library;
// other languages come from message files (docs/formats/messagefile.md), and so do texts of
// numbers that are not built in. The list below is the only place where a status stands: from it
// the constants here, the built-in table, the file kormsgs.eng and docs/statuses.md are made.
#ifndef NOMUTIL_SYS_MESSAGES_H
#define NOMUTIL_SYS_MESSAGES_H

#include "sys/build.h"

// X(constant without its k, number, text), in ascending order of the numbers. A text is one
// literal of ASCII characters without double quote, backslash or percent sign, which some of the
// forms made from it could not carry.
#define NOMUTIL_MESSAGE_LIST(X)                                                                   \
  X(NoError, 0, "No error")                                                                       \
  X(UndefinedMessageNumber, 1, "Undefined message number")                                        \
  X(BufferSizeTooSmall, 126, "Supplied buffer size is too small")                                 \
  X(InvalidParameterType, 1000, "Invalid parameter type")                                         \
  X(InvalidParameterValue, 1002, "Invalid parameter value")                                       \
  X(LibraryNotFound, 1006, "Library not found")                                                   \
  X(EntryPointNotInLibrary, 1008, "Entry point not in library")                                   \
  X(PropertyNotDefined, 1011, "The requested property is not defined for this object class")      \
  X(SharedSubobjectReference, 1013, "Shared reference to subobject")                              \
  X(InvalidServerMode, 1017, "Invalid server mode")                                               \
  X(StringTooLong, 1035, "String too long")                                                       \
  X(BinaryTooLong, 1091, "Binary too long")                                                       \
  X(FeatureDeprecated, 1112, "Feature has been deprecated")                                       \
  X(StringUtf8TooLong, 1124, "StringUtf8 too long")                                               \
  X(PersistentReferencesTransient, 1215, "Persistent objects cannot reference transient objects") \
  X(SharedReferencesNonShared, 1289,                                                              \
    "Shared transient objects cannot reference non-shared transient objects")                     \
  X(SpatialLibraryError, 1345, "Spatial library error")                                           \
  X(CompressFailed, 1409, "Compress operation failed")                                            \
  X(UncompressFailed, 1410, "Uncompress operation failed")                                        \
  X(Base64DecodingFailed, 1420, "Base64 Decoding failed")                                         \
  X(DecimalOverflow, 1422, "Result of expression overflows Decimal precision")                    \
  X(PropertyNameTooLong, 1425, "Dynamic Object property name too long")                           \
  X(PropertyTypeMismatch, 1426, "Dynamic Object property type mismatch")                          \
  X(PropertyNameConflict, 1433, "Dynamic Object property name conflict")                          \
  X(MemoryAllocationFailed, 1448, "A memory allocation request failed")                           \
  X(IncompatibleObjectFormat, 1465, "Incompatible Dynamic object format, eg. Ansi to Unicode")    \
  X(DatabaseMemoryAllocationFailed, 3018, "A database memory allocation request failed")          \
  X(InsufficientSystemResources, 3111, "Insufficient system resources")                           \
  X(InvalidNetworkSpecification, 3510, "Invalid network specification")                           \
  X(InvalidServerUri, 3524, "Invalid server URI")                                                 \
  X(DecimalPrecisionOverflow, 4033, "Result of expression overflows Decimal precision")           \
  X(RequestedFileNotFound, 5003, "Requested file not found")

// kNoError, kInvalidParameterType and so on.
#define NOMUTIL_MESSAGE_CONSTANT(name, number, text) inline constexpr int k##name = number;
NOMUTIL_MESSAGE_LIST(NOMUTIL_MESSAGE_CONSTANT)
#undef NOMUTIL_MESSAGE_CONSTANT

// A status without a text: a buffer of the caller is too small, or its heap is exhausted.
inline constexpr int kNoRoom = -100;

// The number whose "text" is the directory of the message files.
inline constexpr int kMessageDirectory = -32001;

// The functions below may be called by any thread. The first call reads the configuration: the
// key "Language" of section "KoraClient" in the global configuration file, and the environment
// variable KORALANGDIR, the directory of the message files (its first 520 characters; else the
// installation directory). Without the key, or when its whole value is <default> or eng in letters
// of any case, the built-in table is asked first, and the message file is read at the first number
// that the table lacks; any other value names the language whose message file the first call
// reads. The thread that reads it also shows, in a message box, that this has failed.
extern "C" {

// Copies the text of a number, given as its 32 bits (negative numbers too): at most size - 1
// characters and a NUL. A size of 0 means that the buffer has room for any text.
//
// Returns 0; 1 for a number without a text, when the buffer receives the number, padded to 7
// characters, a blank and 299 characters at most of the text of message 1; kNoRoom, and an empty
// text, when that does not fit; 5003, and a text that names the file, for every number once the
// message file could not be loaded: the call that tries it still gives 1 when it asked the built-in
// table first. The texts of 0 and kMessageDirectory are never those of a message file.
// REQUIRES: buffer is not null; else the result is kNoRoom.
NOMUTIL_API int nomGetMessageText(unsigned number, char* buffer, unsigned size);

// The same for a message of another severity (0 to 3) and facility in the built-in table;
// nomGetMessageText takes severity 1 and facility 256. Message files know neither.
NOMUTIL_API int nomGetMessageResourceText(unsigned number, char* buffer, unsigned size,
                                          int severity, unsigned facility);

// nomGetMessageText with size 0.
NOMUTIL_API int NomVBGetMessageText(unsigned number, char* buffer);

// Points *text at the stored text of a number, which lives as long as the process and is not to
// be changed. Only a message file that has been loaded is searched, not the built-in table, and 0
// is a number like any other there. Returns 0; 5003, with *text at the text that names the file; or
// 1 for a number without a text, when the number is written, padded to 7 characters and a blank,
// over the first 8 characters (12 for a number of 11) of the buffer to which *text points already.
// REQUIRES: text is not null, else the result is kNoRoom; *text points to such a buffer, or is null
// and receives nothing.
NOMUTIL_API int NomGetMessageText(unsigned number, char** text);

}  // extern "C"

#endif  // NOMUTIL_SYS_MESSAGES_H
