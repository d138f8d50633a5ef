#include "install/install_thread.h"

#include <chrono>

#include "install/install_pass.h"
#include "install/install_transaction.h"

namespace {

// The pause between two passes; the window is expected to ask for a stop within it.
constexpr std::chrono::seconds kPauseBetweenPasses{1};

// Waits out the pause; true as soon as a stop is requested (also when it already was).
bool PauseUntilStopped(InstallThread& installThread) {
    std::unique_lock<std::mutex> lock(installThread.pauseMutex);
    return installThread.pauseWake.wait_for(lock, kPauseBetweenPasses,
                                            [&] { return installThread.stopRequested.load(); });
}

}  // namespace

InstallThread::~InstallThread() { StopAndJoinInstallThread(*this); }

void* InstallThreadMain(void* argument) {
    InstallThread& installThread = *static_cast<InstallThread*>(argument);
    // Only a successful pass repeats: after a failure or a cancel the user has been told
    // that nothing changed, and that must stay true.
    // A stop before the first pass is the pass's cancel: it answers with 1223 like any
    // other, so whoever waits for the end learns it.
    while (RunInstallation(installThread.processData) == kOk) {
        if (PauseUntilStopped(installThread)) break;
    }
    return nullptr;
}

ResultCode RunInstallation(InstallProcessData* processData, TransactionRecord* passRecord) {
    InstallProcessData::Kit* kit = nullptr;
    stdx::u16string targetDirectory, journalFolder;
    processData->GetJob(kit, targetDirectory, journalFolder);
    InstallTransaction transaction(processData, journalFolder);
    const ResultCode code = InstallFiles(transaction, processData);
    if (passRecord != nullptr && !transaction.records.empty())
        *passRecord = transaction.records.back();
    return code;
}

void StartInstallThread(InstallThread& installThread, InstallProcessData* processData) {
    if (installThread.createResult == 0) {
        // An earlier worker finishes its pass and ends without cancelling it: the
        // cancel flag now belongs to the new job.
        {
            std::lock_guard<std::mutex> lock(installThread.pauseMutex);
            installThread.stopRequested.store(true);
        }
        installThread.pauseWake.notify_all();
        pthread_join(installThread.thread, nullptr);
    }
    installThread.stopRequested.store(false);
    installThread.processData = processData;
    installThread.createResult = -1;
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return;
    installThread.createResult =
        pthread_create(&installThread.thread, &attributes, InstallThreadMain, &installThread);
    pthread_attr_destroy(&attributes);
}

void RequestStop(InstallThread& installThread) {
    {
        // Under the pause's mutex, so a worker about to wait cannot miss the wake-up.
        std::lock_guard<std::mutex> lock(installThread.pauseMutex);
        installThread.stopRequested.store(true);
    }
    installThread.pauseWake.notify_all();
    if (installThread.processData != nullptr) installThread.processData->SetCancelled(true);
}

void StopAndJoinInstallThread(InstallThread& installThread) {
    RequestStop(installThread);
    if (installThread.createResult != 0) return;
    pthread_join(installThread.thread, nullptr);
    installThread.createResult = -1;
}
