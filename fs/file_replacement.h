// fs: replaces a file as a whole without ever leaving it half written. The new contents
// go to a uniquely named file created exclusively in the same folder, are flushed to the
// disk, and the new file is renamed over the old one. Until Commit() succeeds the old
// file is untouched; a replacement that is not committed removes its temporary file.
// A symbolic link is followed and the file it points to is replaced, not the link.
// One replacement belongs to one thread; different ones may run at once.
#pragma once

#include <cstdio>

#include "text/string.h"

class FileReplacement {
  public:
    enum class Outcome { kDone, kCannotCreate, kCannotWrite };

    FileReplacement() = default;
    ~FileReplacement();  // removes the temporary file unless committed
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    // Prepares to replace `path` (multibyte). kCannotCreate when the link cannot be
    // followed, the existing file is not a regular file we may write, or the temporary
    // file cannot be made.
    Outcome Begin(const stdx::mbstring& path);

    // Where the new contents are written; valid between a successful Begin() and Commit().
    std::FILE* Stream() const { return stream_; }

    // kCannotWrite when the contents cannot be flushed to the disk; kCannotCreate when
    // the rename fails. The new file carries the old file's permission bits.
    Outcome Commit();

  private:
    std::FILE* stream_ = nullptr;
    stdx::mbstring target_;
    stdx::mbstring temporary_;  // empty when there is none to remove
};
