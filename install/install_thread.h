// install: the installation worker. StartInstallThread runs passes (install/install_pass.h)
// on a thread of its own so that the window stays responsive: after each successful pass
// it publishes the finish status, pauses one second, and unless a stop was requested
// runs the pass again (which then finds every file current and skips it). A failed or
// cancelled pass ends the worker, so nothing is installed after the user was told that
// nothing changed. RunInstallation is the same pass on the caller's thread, for the
// headless install. The worker never touches the window: everything it has to say goes
// through InstallProcessData's status.
//
// Threads: Start, RequestStop and StopAndJoin belong to the thread that owns the record
// (the window's); RequestStop may also come from another thread at any time. The kit
// belongs to the worker from Start until StopAndJoin returns.
#pragma once

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "fs/result_codes.h"
#include "install/install_process_data.h"
#include "install/install_transaction.h"

struct InstallThread {
    InstallThread() = default;
    // Stops and joins a worker still running: it must not outlive the record it reads.
    ~InstallThread();
    InstallThread(const InstallThread&) = delete;
    InstallThread& operator=(const InstallThread&) = delete;

    InstallProcessData* processData = nullptr;  // not owned
    std::atomic<bool> stopRequested{false};
    pthread_t thread{};
    std::int32_t createResult = -1;  // pthread_create's result; 0 while a thread is to be joined
    // Wakes the pause between passes as soon as a stop is requested.
    std::mutex pauseMutex;
    std::condition_variable pauseWake;
};

// Starts the worker on `processData`'s job (set with SetJob first). A worker this record
// started before is joined first, so two never run at once: stop it (StopAndJoin) before
// setting the next job. `createResult` tells whether the thread runs (0).
void StartInstallThread(InstallThread& installThread, InstallProcessData* processData);
// Asks the worker to end: a running pass is cancelled (checked before every file and
// every 8 MiB inside one), rolls back and publishes 1223; a pause between passes ends
// at once and the worker returns, leaving the finish status in place. Does not wait.
void RequestStop(InstallThread& installThread);
// RequestStop, then waits until the worker has returned, its rollback included. The
// window calls it before the process ends, so no pass is ever cut off halfway.
void StopAndJoinInstallThread(InstallThread& installThread);
// The worker's body (a pthread start routine taking the InstallThread). Returns null.
void* InstallThreadMain(void* installThread);
// One pass on the caller's thread; returns when it has committed or rolled back, with
// its result (0, or the code it also published). `passRecord`, when given, receives what
// the pass created and replaced (empty when it never began).
ResultCode RunInstallation(InstallProcessData* processData,
                           TransactionRecord* passRecord = nullptr);
