// Template bodies of InstallData; included by kit/install_data.h only.
#pragma once

#include <limits>
#include <utility>

#include "kit/kit_format.h"
#include "kit/kit_table_reader.h"

namespace kitreader {

template <class FileSystemPolicy>
config::ProductInfo ReadProductRecord(Cursor<FileSystemPolicy>& cursor) {
    RecordFields fields = cursor.ReadRecord(kitformat::kMinProductRecordLength);
    config::ProductInfo product;
    product.language = fields.TakeString();
    product.productName = fields.TakeString();
    product.provider = fields.TakeString();
    product.descriptionFile = fields.TakeString();
    // Bytes after the four strings belong to a newer writer; the record length has
    // already carried the cursor past them.
    return product;
}

template <class FileSystemPolicy>
config::FileData<FileSystemPolicy> ReadFileRecord(Cursor<FileSystemPolicy>& cursor) {
    RecordFields fields = cursor.ReadRecord(kitformat::kMinFileRecordLength);
    config::FileData<FileSystemPolicy> file;
    const std::uint64_t nameStart = fields.position();
    file.name = fields.TakeString();
    // The worker joins this name to the templates directory; it must stay inside it.
    if (const char* refusal = kitformat::FileNameRefusal(file.name.data(), file.name.size())) {
        Refuse(refusal, nameStart, fields.place());
    }
    file.modificationTime = fields.TakeU64();
    file.offset = fields.TakeU32();
    file.size = fields.TakeU32();
    return file;
}

}  // namespace kitreader

template <class Compressor, class FileSystemPolicy>
InstallData<Compressor, FileSystemPolicy>::InstallData()
    : buffer(new unsigned char[kDefaultBufferSize]) {}

template <class Compressor, class FileSystemPolicy>
ResultCode InstallData<Compressor, FileSystemPolicy>::Load(const stdx::u16string& kitPath) {
    bool nameToRemove = false;
    lastRefusal = LoadRefusal{};
    const ResultCode code = kitreader::Guarded(
        [&] {
            kitreader::Check(CreateKitTempFile(tempPath));
            nameToRemove = true;
            kitreader::Check(compressor.Decompress(kitPath, tempPath), "deflate data is damaged");
            FileHandle opened = kNoHandle;
            kitreader::Check(
                FileSystemPolicy::OpenFile(tempPath, kGenericReadWrite, 0, kOpenExisting, opened));
            handle = opened;
            // The handle alone keeps the data now; without a name nothing can outlive us.
            FileSystemPolicy::DeleteFile(tempPath);
            nameToRemove = false;
            ReadTables();
        },
        &lastRefusal);
    if (code != kOk) AbandonLoad(nameToRemove);
    return code;
}

template <class Compressor, class FileSystemPolicy>
void InstallData<Compressor, FileSystemPolicy>::Close() {
    if (handle == kNoHandle) return;
    FileSystemPolicy::CloseFile(handle);
    handle = kNoHandle;
}

template <class Compressor, class FileSystemPolicy>
void InstallData<Compressor, FileSystemPolicy>::ReadTables() {
    using kitreader::Place;
    auto cursor = kitreader::Cursor<FileSystemPolicy>::AtStart(handle);

    cursor.Enter(Place{KitTable::kHeader, 0});
    if (cursor.ReadU32() == kitformat::kSingleProductLayout) {
        config::ProductInfo product;
        product.language = u"en";
        product.productName = cursor.ReadString();
        product.provider = cursor.ReadString();
        product.descriptionFile = cursor.ReadString();
        products.push_back(std::move(product));
    } else {
        cursor.Enter(Place{KitTable::kProducts, 0});
        const std::uint32_t productCount = cursor.ReadCount(kitformat::kMinProductRecordLength);
        for (std::uint32_t i = 0; i < productCount; ++i) {
            cursor.Enter(Place{KitTable::kProducts, i + 1});
            products.push_back(kitreader::ReadProductRecord(cursor));
        }
    }

    files.clear();
    cursor.Enter(Place{KitTable::kFiles, 0});
    const std::uint32_t fileCount = cursor.ReadCount(kitformat::kMinFileRecordLength);
    const std::uint64_t firstRecord = cursor.position();
    for (std::uint32_t i = 0; i < fileCount; ++i) {
        cursor.Enter(Place{KitTable::kFiles, i + 1});
        files.push_back(kitreader::ReadFileRecord(cursor));
    }

    // Offsets are stored relative to the data area, which begins right after the table.
    const std::uint64_t dataStart = cursor.position();
    for (std::size_t i = 0; i < files.size(); ++i) {
        auto& file = files[i];
        const std::uint64_t start = dataStart + file.offset;
        if (start > std::numeric_limits<std::uint32_t>::max() ||
            start + file.size > cursor.size()) {
            const auto record = static_cast<std::uint32_t>(i + 1);
            kitreader::Refuse("data range outside the kit", cursor.RecordStart(firstRecord, record),
                              Place{KitTable::kFiles, record},
                              ClaimedRange{start, file.size, cursor.size()});
        }
        file.offset = static_cast<std::uint32_t>(start);
    }
    cursor.Settle();  // the worker reads the data from here on
}

template <class Compressor, class FileSystemPolicy>
void InstallData<Compressor, FileSystemPolicy>::AbandonLoad(bool removeTemporaryFile) {
    files.clear();
    Close();
    // A name that could not be created may belong to someone else, and one already
    // removed may have been taken again since: leave both alone.
    if (removeTemporaryFile && !tempPath.empty()) FileSystemPolicy::DeleteFile(tempPath);
}

template <class Compressor, class FileSystemPolicy>
ResultCode InstallData<Compressor, FileSystemPolicy>::ReadProductInfo(
    FileHandle file, config::ProductInfo& product) {
    return kitreader::Guarded([&] {
        auto cursor = kitreader::Cursor<FileSystemPolicy>::AtCurrentPosition(file);
        product = kitreader::ReadProductRecord(cursor);
        cursor.Settle();
    });
}

template <class Compressor, class FileSystemPolicy>
ResultCode InstallData<Compressor, FileSystemPolicy>::ReadFileData(
    FileHandle file, config::FileData<FileSystemPolicy>& data) {
    return kitreader::Guarded([&] {
        auto cursor = kitreader::Cursor<FileSystemPolicy>::AtCurrentPosition(file);
        data = kitreader::ReadFileRecord(cursor);
        cursor.Settle();
    });
}

template <class Compressor, class FileSystemPolicy>
ResultCode InstallData<Compressor, FileSystemPolicy>::CreateKitTempFile(stdx::u16string& path) {
    ResultCode code = kOk;
    const ResultCode raised = kitreader::Guarded([&] {
        stdx::u16string directory;
        code = FileSystemPolicy::GetTempDirectory(directory);
        if (code == kOk) code = FileSystemPolicy::CreateTempFile(directory, u"edf", path);
    });
    return raised != kOk ? raised : code;
}
