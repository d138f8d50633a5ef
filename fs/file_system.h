// fs: the installer's file-system layer. FileSystem is a stateless policy with a
// Win32-style API over POSIX calls, through which the installer opens, reads, writes,
// lists, moves and removes files; FileReplacement (fs/file_replacement.h) replaces a
// file as a whole. Paths arrive as UTF-16 and are converted to the locale's multibyte
// encoding (UTF-8) by ToSystemPath before each system call, and a path that does not
// convert whole is refused; failures come back as the numbered result codes of
// fs/result_codes.h, never as exceptions. Two readers touch the disk outside this
// class, on purpose: the inflater maps the kit read-only (kit/lz_compressor.cpp, on a
// handle opened here) so zlib reads it in place, and the launcher file's reader takes
// ostart.cfg through a C stream in 1,024-byte chunks, each decoded on its own (config/;
// it checks its path with ToSystemPath, and writes through FileReplacement). The
// installation pass also asks stat and statvfs about templates itself (install/, after
// ToSystemPath), as one call decides whether a file exists and how old it is. No shell
// is ever involved in file operations, so no file name can run a command; only
// RunCommand and RunCommandOutput start a shell, because that is what they are for.
// It must not keep per-call state beyond the last error and the caller's FindData.
//
// Threads: all operations may be called from any thread. The last error is one
// process-wide value, meaningful only right after a handle operation on the same
// thread (only the kit reader and the installation worker use handles, never at once).
#pragma once

#include <dirent.h>
#include <sys/stat.h>

#include <cstdint>
#include <optional>

#include "fs/result_codes.h"
#include "text/string.h"

using FileHandle = std::int64_t;
constexpr FileHandle kNoHandle = -1;

// 100-nanosecond units since 1601-01-01.
using FileTime = std::uint64_t;

// OpenFile access rights and dispositions.
constexpr std::uint32_t kGenericRead = 0x80000000u;
constexpr std::uint32_t kGenericWrite = 0x40000000u;
constexpr std::uint32_t kGenericReadWrite = 0xC0000000u;
constexpr std::uint32_t kCreateAlways = 2;  // adds O_CREAT only; writers truncate themselves
constexpr std::uint32_t kOpenExisting = 3;
constexpr std::uint32_t kTruncateExisting = 5;  // adds O_TRUNC

// SetFilePointer methods.
constexpr std::uint32_t kFileBegin = 0;
constexpr std::uint32_t kFileCurrent = 1;
constexpr std::uint32_t kFileEnd = 2;

constexpr std::uint32_t kAttributeDirectory = 16;

// One directory enumeration, owned by the caller. Destruction closes the stream.
struct FindData {
    DIR* stream = nullptr;
    stdx::mbstring mask;         // last component of the search path (an fnmatch pattern)
    stdx::mbstring directory;    // everything before the last '/'
    stdx::mbstring searchPath;   // as given
    stdx::mbstring currentName;  // last entry that matched
    struct stat status {};       // stat of the search path at the last match

    FindData() = default;
    FindData(const FindData&) = delete;
    FindData& operator=(const FindData&) = delete;
    ~FindData();
};

class FileSystem {
  public:
    // The bytes that system calls receive for `path`: its UTF-8 form, or nothing when
    // some of it would be lost. The text conversion stops at the first unit it cannot
    // convert (a lone surrogate, either half of a character above U+FFFF), so
    // ".../victim/<U+1F600>-backup" would come out as ".../victim/"; a zero unit inside
    // cuts it the same way. Every operation below that takes a path refuses such a path,
    // failing as for one that cannot exist (OpenFile with 87; DeleteDirectory and
    // DeleteFile answer 0 and remove nothing). Code that opens files itself must refuse
    // it too.
    static std::optional<stdx::mbstring> ToSystemPath(const stdx::u16string& path);

    // Enumeration. FindNext reports a matching entry only when the search path itself
    // can be stat'ed, so "dir/*" yields nothing while "dir/name" yields name.
    static bool FindFirst(FindData& find, const stdx::u16string& path);
    static bool FindNext(FindData& find);
    static stdx::u16string GetFindName(const FindData& find);
    static std::uint32_t GetFindAttributes(const FindData& find);  // 16 for a directory
    static void FindClose(FindData& find);

    // TMPDIR when it names a directory and converts to UTF-16 and back unchanged, else
    // "/var/tmp/"; always ends in '/'. Returns 0.
    static ResultCode GetTempDirectory(stdx::u16string& path);
    // Creates a new empty file (mode 0600) named directory (the temporary directory when
    // empty) + '/' (unless it already ends in one) + prefix + six random letters or
    // digits. Name choice and creation are one exclusive step, so two callers never get
    // the same file. 0, or 1013 when it cannot be made; `name` receives the (last tried)
    // name either way, or nothing when the directory or prefix does not convert whole.
    static ResultCode CreateTempFile(const stdx::u16string& directory,
                                     const stdx::u16string& prefix, stdx::u16string& name);

    // 0 when the directory exists afterwards (made now or already there, parents made
    // as needed, new ones with mode 0777 less the umask), 2 otherwise (a file in the
    // way, an empty path, no permission).
    static ResultCode CreateDirectory(const stdx::u16string& path);
    // Removes a file, or a directory with everything below it, however deep. Symbolic
    // links are removed as links, never followed; a file system mounted inside the tree
    // is left alone, and so are "/" and paths ending in "." or "..". Always 0.
    static ResultCode DeleteDirectory(const stdx::u16string& path);
    // Renames `from` to `to`; `to` is the new name itself, never a directory to move
    // into. An existing file at `to` is replaced; an existing directory only when it is
    // empty and `from` is one too. 0 moved; 2 failed (a missing source included).
    // Across file systems, files and whole directory trees of any depth are copied
    // (bytes, mode, access and modification times in whole seconds; links as links;
    // devices, pipes, sockets and mounted file systems are refused) under a hidden name
    // beside `to`, renamed into place when complete, and only then is the source
    // removed. A failed copy leaves the source and any old `to` untouched and no partial
    // copy behind.
    static ResultCode MoveFile(const stdx::u16string& from, const stdx::u16string& to);
    // Unlink. Always 0; one line on stderr (control characters escaped) for failures
    // other than "not there".
    static ResultCode DeleteFile(const stdx::u16string& path);

    // Runs a shell command: that is their purpose.
    static void RunCommand(const stdx::u16string& command);
    // First line of the command's output without its last character; empty on failure.
    static stdx::u16string RunCommandOutput(const stdx::u16string& command);

    // 1 when `size` is null or stat fails; else the low 32 bits of the size and 0.
    static ResultCode GetFileSize(const stdx::u16string& path, std::uint32_t* size);
    // Free bytes of the temporary directory's volume, saturated at 0xFFFFFFFF.
    // 87 when `bytes` is null; otherwise 0, with 0 bytes when statvfs fails.
    static ResultCode GetFreeSpace(std::uint32_t* bytes);

    // Handle operations; each resets the last error first and stores its failure code.
    static ResultCode OpenFile(const stdx::u16string& path, std::uint32_t access,
                               std::uint32_t share, std::uint32_t disposition, FileHandle& handle);
    static std::uint32_t SetFilePointer(FileHandle handle, std::int32_t low, std::int32_t* high,
                                        std::uint32_t method);
    static ResultCode GetLastError();
    // Reads until `count` bytes or end of file; a short read at end of file is not an error.
    static ResultCode ReadFile(FileHandle handle, void* buffer, std::uint32_t count,
                               std::uint32_t* read, void* overlapped);
    // One write call: callers must compare *written with count themselves.
    static ResultCode WriteFile(FileHandle handle, const void* buffer, std::uint32_t count,
                                std::uint32_t* written, void* overlapped);
    static void CloseFile(FileHandle handle);
    static ResultCode GetFileTime(FileHandle handle, FileTime* creation, FileTime* access,
                                  FileTime* write);
    static ResultCode SetFileTime(FileHandle handle, const FileTime* creation,
                                  const FileTime* access, const FileTime* write);
    static ResultCode SetEndOfFile(FileHandle handle);
    // Copies `count` bytes of `from`, starting at `offset` (its position is neither used
    // nor moved), to `to` at its position, which advances past them. The kernel copies
    // where the platform and both files allow it; otherwise `buffer` (bufferSize bytes)
    // carries the bytes, also from wherever the kernel stopped. `*copied` receives what
    // arrived. 0; 13 when `from` ends first; 6 for a -1 handle; else the errno's code.
    static ResultCode CopyRange(FileHandle from, std::uint64_t offset, FileHandle to,
                                std::uint32_t count, void* buffer, std::uint32_t bufferSize,
                                std::uint32_t* copied);

    static std::int64_t FileTimeToUnixTime(FileTime time);
    static FileTime UnixTimeToFileTime(std::int64_t seconds);
};
