// install: InstallProcessData is the record the installation worker shares with the
// thread that started it. The starter stores the job (the loaded kit, the templates
// directory, the folder for the pass's journal) and may ask the pass to cancel; the
// worker publishes its status as one triple (result code, text, percentage), which the
// window or the headless install polls. It holds data only: it never starts threads,
// touches files or the window.
//
// Threads: every accessor may be called from any thread. A semaphore of value 1, used
// as a lock, is held only while fields are copied in or out, never across a file
// operation, so a poll never waits for the disk. Init must run once before any other
// call and before a second thread can see the record.
#pragma once

#include <cstdint>

#include "fs/file_system.h"
#include "fs/result_codes.h"
#include "kit/install_data.h"
#include "kit/lz_compressor.h"
#include "text/string.h"

#if defined(__APPLE__)
#include <dispatch/dispatch.h>
#else
#include <semaphore.h>
#endif

class InstallProcessData {
  public:
    using Kit = InstallData<LZCompressor, FileSystem>;

    InstallProcessData() = default;
    ~InstallProcessData();
    InstallProcessData(const InstallProcessData&) = delete;
    InstallProcessData& operator=(const InstallProcessData&) = delete;

    // Empties both texts and makes the lock (value 1).
    void Init();
    // A new job: clears the cancel request and the status (0, text kept, 0 percent),
    // keeps `installData` (not owned; the worker alone reads it until it has stopped),
    // and stores the directory ending in a separator ("/" added when it ends in neither
    // "\\" nor "/"; an empty directory stays empty). An empty `journalFolder` means the
    // pass keeps no journal.
    void SetJob(Kit* installData, const stdx::u16string& targetDirectory,
                const stdx::u16string& journalFolder);
    void GetJob(Kit*& installData, stdx::u16string& targetDirectory,
                stdx::u16string& journalFolder);
    void SetCancelled(bool cancelled);
    bool IsCancelled();
    // All three fields change together: a poll never sees a text from another step.
    void SetStatus(ResultCode code, const stdx::u16string& text, std::int32_t progress);
    void GetStatus(ResultCode& code, stdx::u16string& text, std::int32_t& progress);
    // SetStatus(0, path, progress) for the file the pass turns to, which CurrentFile then
    // names until the next job: after a failure the status text no longer does.
    void SetFileStatus(const stdx::u16string& path, std::int32_t progress);
    stdx::u16string CurrentFile();

  private:
    class Hold;

#if defined(__APPLE__)
    // Platform difference: macOS has no unnamed POSIX semaphores (sem_init fails there);
    // a dispatch semaphore has the same meaning.
    dispatch_semaphore_t lock_ = nullptr;
#else
    sem_t lock_{};
#endif
    bool initialised_ = false;
    Kit* installData_ = nullptr;
    stdx::u16string targetDirectory_;
    stdx::u16string journalFolder_;
    bool cancelled_ = false;
    ResultCode statusCode_ = kOk;
    stdx::u16string statusText_;
    std::int32_t progress_ = 0;
    stdx::u16string currentFile_;
};
