// kit: InstallData loads the distribution kit. It inflates the whole kit into a
// temporary file, reads the product records and the file table from the head of that
// file, and keeps the file open so that the installation worker can later seek to each
// file's data and copy it through `buffer`. The file's name is removed as soon as it is
// open: the open handle keeps the inflated kit readable for the whole run, and the
// system takes the space back when the process ends, however it ends, so no inflated kit
// is ever left behind (only a process killed during inflation itself leaves a partial
// one). It never holds the kit in memory as a whole, never writes into the templates
// directory, and trusts no number in the kit: a kit whose tables do not fit what was
// inflated is refused with 13 (damaged data).
//
// Threads: Load runs once, on one thread, before the worker exists; afterwards `handle`
// and `buffer` belong to the worker alone (the handle's position is shared state).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "fs/file_system.h"
#include "fs/result_codes.h"
#include "kit/load_refusal.h"
#include "text/string.h"

namespace config {

// One product description; a kit carries one per interface language.
struct ProductInfo {
    stdx::u16string language;         // "en" for the single-product layout
    stdx::u16string productName;      // may be empty: the wizard shows a default
    stdx::u16string provider;         // may be empty: the wizard shows a default
    stdx::u16string descriptionFile;  // may be empty
};

// One file of the kit. The policy parameter adds no data; it ties the record to the
// file system whose handle it will be copied through.
template <class FileSystemPolicy>
struct FileData {
    // Relative path; never empty, absolute, climbing out with ".." or holding a surrogate.
    stdx::u16string name;
    FileTime modificationTime = 0;
    // Absolute position of the data in the inflated kit once loaded; offset + size
    // always lies inside the inflated kit.
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
};

}  // namespace config

template <class Compressor, class FileSystemPolicy>
class InstallData {
  public:
    static constexpr std::uint32_t kDefaultBufferSize = 0x100000;

    // Constructed: no tables, no temporary file, handle -1, buffer allocated.
    InstallData();
    // Leaves the handle open: after a successful load the installer keeps it for as long
    // as the process lives. Callers done with the kit sooner call Close.
    ~InstallData() = default;
    InstallData(const InstallData&) = delete;
    InstallData& operator=(const InstallData&) = delete;

    // Inflates `kitPath` into a new temporary file and reads its tables. On 0 the
    // tables are filled and `handle` is open on the inflated kit, positioned at the data
    // area; the file has no name any more. Otherwise the code of the first failure: the
    // temporary file's creation (1013), the kit's opening (2, 87), inflation (13, also
    // for a kit unpacking beyond 4 GiB; 1013), the tables (13, or a read's code). After a
    // failure `files` is empty, `handle` is -1 and the temporary file is gone; products
    // read before the failure stay. Either way nothing is left in the temporary
    // directory. Never throws. Meant to be called once: a second call appends the
    // products again.
    ResultCode Load(const stdx::u16string& kitPath);

    // Closes `handle` (-1 afterwards), giving the inflated kit's space back. The tables
    // stay. Harmless when nothing is open.
    void Close();

    // Read one record at the handle's position and leave the handle after it, having
    // moved by exactly the record's stated length. 13 when the record does not fit in
    // the rest of the file or its fields run past its length; a file record's name must
    // also be safe (kitformat::FileNameRefusal). The output is untouched on failure.
    ResultCode ReadProductInfo(FileHandle file, config::ProductInfo& product);
    ResultCode ReadFileData(FileHandle file, config::FileData<FileSystemPolicy>& data);

    // Makes a new empty file with the prefix "edf" in the temporary directory. `path`
    // receives its name even when the code is not 0.
    ResultCode CreateKitTempFile(stdx::u16string& path);

    std::vector<config::ProductInfo> products;              // kit order
    std::vector<config::FileData<FileSystemPolicy>> files;  // kit order; index names a file
    // The name the inflated kit was written under; empty until Load begins. Removed once
    // `handle` is open, so after Load returns it names nothing.
    stdx::u16string tempPath;
    FileHandle handle = kNoHandle;  // the inflated kit, or -1
    Compressor compressor;
    FileSystemPolicy fileSystem;
    std::uint32_t bufferSize = kDefaultBufferSize;
    std::unique_ptr<unsigned char[]> buffer;  // bufferSize bytes, for copying
    // Diagnostics only, for tools that explain a refused kit: Load clears it and, when it
    // refuses the kit as damaged, says which rule broke and where. The installer ignores
    // it; the result code stays the contract.
    LoadRefusal lastRefusal;

  private:
    void ReadTables();
    void AbandonLoad(bool removeTemporaryFile);
};

#include "kit/install_data.inl"
