// Files of compressed blocks, of any size: docs/formats/compressedfile.md. A reader and a writer
// have one block in memory, of at most 1 MiB before it is compressed.
#ifndef NOMTOOL_BLOCKFILE_H
#define NOMTOOL_BLOCKFILE_H

#include "transfer.h"

namespace nomtool {

// Compresses the input of a transfer; the level is one of zlib's, 0 to 9.
void compressStream(Transfer& transfer, int level);

// Expands it. Throws RefusedInput for a file that is cut, damaged or none of this form.
void uncompressStream(Transfer& transfer);

}  // namespace nomtool

#endif  // NOMTOOL_BLOCKFILE_H
