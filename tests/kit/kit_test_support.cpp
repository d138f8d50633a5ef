#include "kit_test_support.h"

#include <dirent.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "fs/file_system.h"
#include "text/encoding.h"

namespace kittest {

KitWriter& KitWriter::U32(std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes_.push_back(static_cast<unsigned char>(value >> shift));
    return *this;
}

KitWriter& KitWriter::U64(std::uint64_t value) {
    U32(static_cast<std::uint32_t>(value));
    return U32(static_cast<std::uint32_t>(value >> 32));
}

KitWriter& KitWriter::String(const std::u16string& text) {
    U32(static_cast<std::uint32_t>(text.size()));
    for (char16_t unit : text) {
        bytes_.push_back(static_cast<unsigned char>(unit & 0xFF));
        bytes_.push_back(static_cast<unsigned char>(unit >> 8));
    }
    return *this;
}

KitWriter& KitWriter::Raw(const Bytes& bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return *this;
}

KitWriter& KitWriter::Raw(const std::string& bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return *this;
}

KitWriter& KitWriter::Record(const Bytes& body, std::uint32_t statedLength) {
    U32(statedLength != 0 ? statedLength : static_cast<std::uint32_t>(body.size() + 4));
    return Raw(body);
}

Bytes ProductRecordBody(const ProductSpec& product) {
    KitWriter body;
    body.String(product.language)
        .String(product.name)
        .String(product.provider)
        .String(product.description);
    body.Raw(Bytes(product.trailingBytes, 0xEE));
    return body.bytes();
}

Bytes FileRecordBody(const FileSpec& file, std::uint32_t offset) {
    KitWriter body;
    body.String(file.name)
        .U64(file.modificationTime)
        .U32(offset)
        .U32(static_cast<std::uint32_t>(file.content.size()));
    body.Raw(Bytes(file.trailingBytes, 0xEE));
    return body.bytes();
}

Bytes BuildKit(std::uint32_t layout, const std::vector<ProductSpec>& products,
               const std::vector<FileSpec>& files) {
    KitWriter kit;
    kit.U32(layout);
    if (layout == 0) {
        const ProductSpec only = products.empty() ? ProductSpec{} : products.front();
        kit.String(only.name).String(only.provider).String(only.description);
    } else {
        kit.U32(static_cast<std::uint32_t>(products.size()));
        for (const auto& product : products) kit.Record(ProductRecordBody(product));
    }
    kit.U32(static_cast<std::uint32_t>(files.size()));
    std::uint32_t offset = 0;
    for (const auto& file : files) {
        kit.Record(FileRecordBody(file, offset));
        offset += static_cast<std::uint32_t>(file.content.size());
    }
    for (const auto& file : files) kit.Raw(file.content);
    return kit.bytes();
}

Bytes Deflate(const Bytes& inflated, int level, int strategy) {
    z_stream stream{};
    if (deflateInit2(&stream, level, Z_DEFLATED, -15, 8, strategy) != Z_OK) {
        throw std::runtime_error("deflateInit2");
    }
    Bytes out(deflateBound(&stream, static_cast<uLong>(inflated.size())) + 16);
    stream.next_in = const_cast<Bytef*>(inflated.data());
    stream.avail_in = static_cast<uInt>(inflated.size());
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    const int status = deflate(&stream, Z_FINISH);
    deflateEnd(&stream);
    if (status != Z_STREAM_END) throw std::runtime_error("deflate");
    out.resize(stream.total_out);
    return out;
}

void WriteBytes(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    if (!out) throw std::runtime_error("cannot write " + path);
}

Bytes ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

std::vector<std::string> ListFolder(const std::string& path) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

int CountOpenDescriptors() {
    DIR* folder = opendir("/dev/fd");
    if (folder == nullptr) return -1;
    int count = 0;
    while (readdir(folder) != nullptr) ++count;
    closedir(folder);
    return count;
}

Bytes ReadAt(std::int64_t handle, std::uint32_t position, std::uint32_t count) {
    FileSystem::SetFilePointer(handle, static_cast<std::int32_t>(position), nullptr, kFileBegin);
    Bytes bytes(count);
    std::uint32_t read = 0;
    FileSystem::ReadFile(handle, bytes.data(), count, &read, nullptr);
    bytes.resize(read);
    return bytes;
}

std::uint32_t CurrentPosition(std::int64_t handle) {
    return FileSystem::SetFilePointer(handle, 0, nullptr, kFileCurrent);
}

stdx::u16string Path(const std::string& path) {
    return stdx::from_multibyte(stdx::mbstring(path.c_str()));
}

std::string NativePath(const stdx::u16string& path) {
    const stdx::mbstring bytes = stdx::to_multibyte(path);
    return std::string(bytes.data(), bytes.size());
}

std::u16string Std(const stdx::u16string& text) { return std::u16string(text.data(), text.size()); }

ScratchFolder::ScratchFolder() {
    std::string pattern = std::filesystem::temp_directory_path().string() + "/ord8-kit-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp");
    root_ = pattern;
    std::filesystem::create_directory(temp());
    std::filesystem::create_directory(root_ + "/kits");
    if (const char* old = std::getenv("TMPDIR")) {
        hadTmpdir_ = true;
        oldTmpdir_ = old;
    }
    setenv("TMPDIR", temp().c_str(), 1);
}

ScratchFolder::~ScratchFolder() {
    if (hadTmpdir_) {
        setenv("TMPDIR", oldTmpdir_.c_str(), 1);
    } else {
        unsetenv("TMPDIR");
    }
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

std::string ScratchFolder::StoreKit(const Bytes& inflated, int level, const std::string& name) {
    const std::string path = kit(name);
    WriteBytes(path, Deflate(inflated, level));
    return path;
}

}  // namespace kittest
