#include "install/install_process_data.h"

#include <cerrno>

// Takes the lock for one scope. Semaphore failures are not checked: with value 1 and
// no process sharing, wait and post fail only on an invalid semaphore.
class InstallProcessData::Hold {
  public:
    explicit Hold(InstallProcessData& data) : data_(data) {
#if defined(__APPLE__)
        dispatch_semaphore_wait(data_.lock_, DISPATCH_TIME_FOREVER);
#else
        while (sem_wait(&data_.lock_) != 0 && errno == EINTR) {
        }
#endif
    }
    ~Hold() {
#if defined(__APPLE__)
        dispatch_semaphore_signal(data_.lock_);
#else
        sem_post(&data_.lock_);
#endif
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

  private:
    InstallProcessData& data_;
};

InstallProcessData::~InstallProcessData() {
    if (!initialised_) return;
#if defined(__APPLE__)
    dispatch_release(lock_);
#else
    sem_destroy(&lock_);
#endif
}

void InstallProcessData::Init() {
    targetDirectory_.clear();
    statusText_.clear();
    if (initialised_) return;  // a lock in use must not be made again
#if defined(__APPLE__)
    lock_ = dispatch_semaphore_create(1);
#else
    sem_init(&lock_, 0, 1);
#endif
    initialised_ = true;
}

void InstallProcessData::SetJob(Kit* installData, const stdx::u16string& targetDirectory,
                                const stdx::u16string& journalFolder) {
    stdx::u16string directory = targetDirectory;
    if (!directory.empty() && directory.back() != u'\\' && directory.back() != u'/')
        directory += u'/';
    Hold hold(*this);
    cancelled_ = false;
    statusCode_ = kOk;
    progress_ = 0;
    currentFile_.clear();
    installData_ = installData;
    targetDirectory_ = directory;
    journalFolder_ = journalFolder;
}

void InstallProcessData::GetJob(Kit*& installData, stdx::u16string& targetDirectory,
                                stdx::u16string& journalFolder) {
    Hold hold(*this);
    installData = installData_;
    targetDirectory = targetDirectory_;
    journalFolder = journalFolder_;
}

void InstallProcessData::SetCancelled(bool cancelled) {
    Hold hold(*this);
    cancelled_ = cancelled;
}

bool InstallProcessData::IsCancelled() {
    Hold hold(*this);
    return cancelled_;
}

void InstallProcessData::SetStatus(ResultCode code, const stdx::u16string& text,
                                   std::int32_t progress) {
    Hold hold(*this);
    statusCode_ = code;
    statusText_ = text;
    progress_ = progress;
}

void InstallProcessData::SetFileStatus(const stdx::u16string& path, std::int32_t progress) {
    Hold hold(*this);
    statusCode_ = kOk;
    statusText_ = path;
    progress_ = progress;
    currentFile_ = path;
}

stdx::u16string InstallProcessData::CurrentFile() {
    Hold hold(*this);
    return currentFile_;
}

void InstallProcessData::GetStatus(ResultCode& code, stdx::u16string& text,
                                   std::int32_t& progress) {
    Hold hold(*this);
    code = statusCode_;
    text = statusText_;
    progress = progress_;
}
