#include "tools/installer_reader.h"

#include "fs/file_system.h"
#include "fs/result_codes.h"
#include "kit/install_data.h"
#include "kit/lz_compressor.h"
#include "text/encoding.h"

namespace kittool {

namespace {

std::u16string plain(const stdx::u16string& text) {
    return std::u16string(text.data(), text.size());
}

// The reader names the table and record it was in; outside the tables the position
// means nothing to a reader of the message, so the reason stands alone.
std::string describe_refusal(const LoadRefusal& refusal) {
    if (refusal.reason == nullptr) return {};
    std::string where;
    switch (refusal.table) {
        case KitTable::kNone:
            return refusal.reason;
        case KitTable::kHeader:
            where = "kit header";
            break;
        case KitTable::kProducts:
            where = refusal.record == 0 ? "product table"
                                        : "product record " + std::to_string(refusal.record);
            break;
        case KitTable::kFiles:
            where = refusal.record == 0 ? "file table"
                                        : "file record " + std::to_string(refusal.record);
            break;
    }
    return where + " at byte " + std::to_string(refusal.position) + ": " + refusal.reason;
}

}  // namespace

ReaderView load_with_installer_reader(const std::string& kit_path) {
    InstallData<LZCompressor, FileSystem> data;
    ReaderView view;
    view.code = data.Load(stdx::from_multibyte(stdx::mbstring(kit_path.c_str())));
    if (view.code != kOk) {  // a failed load has removed its file itself
        view.refusal = describe_refusal(data.lastRefusal);
        return view;
    }

    for (const config::ProductInfo& product : data.products)
        view.products.push_back(KitProduct{plain(product.language), plain(product.productName),
                                           plain(product.provider),
                                           plain(product.descriptionFile)});
    for (const config::FileData<FileSystem>& file : data.files)
        view.files.push_back(
            KitFileEntry{plain(file.name), file.modificationTime, file.offset, file.size});

    // The installer keeps the inflated kit until it ends; the tool has no use for it.
    FileSystem::CloseFile(data.handle);
    data.handle = kNoHandle;
    FileSystem::DeleteFile(data.tempPath);
    return view;
}

std::string describe_result_code(std::uint32_t code) {
    switch (code) {
        case kOk:
            return "0 (success)";
        case kFileNotFound:
            return "2 (file not found)";
        case kPathNotFound:
            return "3 (path not found)";
        case kDamagedData:
            return "13 (damaged data)";
        case kInvalidParameter:
            return "87 (cannot be opened or read)";
        case kCannotWrite:
            return "1013 (cannot write the temporary file)";
        default:
            return std::to_string(code);
    }
}

}  // namespace kittool
