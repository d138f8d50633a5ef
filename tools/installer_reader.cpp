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

}  // namespace

ReaderView load_with_installer_reader(const std::string& kit_path) {
    InstallData<LZCompressor, FileSystem> data;
    ReaderView view;
    view.code = data.Load(stdx::from_multibyte(stdx::mbstring(kit_path.c_str())));
    if (view.code != kOk) return view;  // a failed load has removed its file itself

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
