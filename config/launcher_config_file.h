// Reading and writing one launcher configuration file. The file is text in the
// locale's multibyte encoding (UTF-8), one "key=value" line per setting.
//
// Writing replaces the file as a whole and never in place: the new text goes to a fresh
// file beside the old one, reaches the disk, and is renamed over the old one, so any
// failure leaves the old file exactly as it was. The launcher keeps settings of its own
// in the same file, which is why this matters.
#pragma once

#include "config/launcher_config_store.h"
#include "text/string.h"

namespace config {

// The outcome of a write. write_config_file throws the two failures as plain ints.
enum ConfigWriteResult : int {
    kConfigWritten = 0,
    kConfigCannotOpen = 1,   // the file (or its replacement) cannot be opened or created
    kConfigCannotWrite = 2,  // a line, or the flush to disk, failed
};

// Appends every setting of the file at `path` to `store` (LauncherConfigStore::insert).
// The text is decoded 1,024 bytes at a time (MultibyteChunkDecoder). A file that cannot
// be opened adds nothing and is no error; so does a path that does not convert whole
// (FileSystem::ToSystemPath), which is never opened. Answers false when the file exists but could
// not be read to its end: the store then lacks some of its settings, and writing it back
// would lose them.
bool read_config_file(const stdx::u16string& path, LauncherConfigStore& store);

// Replaces the file at `path` with one "key=value\n" line per value of every entry, in
// order; an entry without values writes nothing. A symbolic link at `path` is kept and
// the file it points to is replaced. The old file's permission bits are kept (0644 for
// a new file). Throws kConfigCannotOpen (also for a path that does not convert whole)
// or kConfigCannotWrite (as int); after a throw the old file is unchanged and no
// temporary file is left.
void write_config_file(const stdx::u16string& path, const LauncherConfigStore& store);

// True when the file's first two bytes, read as one unit in the machine's (little-
// endian) byte order, are not a byte-order mark 0xFEFF; false when the file cannot be
// opened or is shorter than two bytes. So true means "not a UTF-16LE file with a mark".
bool file_starts_with_utf16_bom(const stdx::u16string& path);

}  // namespace config
