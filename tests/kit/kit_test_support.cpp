#include "kit_test_support.h"

#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "text/encoding.h"

namespace kittest {

KitWriter& KitWriter::U32(std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<unsigned char>(value >> shift));
    return *this;
}

KitWriter& KitWriter::String(const std::u16string& text) {
    U32(static_cast<std::uint32_t>(text.size()));
    for (char16_t unit : text)
        bytes.insert(bytes.end(),
                     {static_cast<unsigned char>(unit), static_cast<unsigned char>(unit >> 8)});
    return *this;
}

KitWriter& KitWriter::Raw(const std::string& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return *this;
}

KitWriter& KitWriter::Record(const KitWriter& body, std::uint32_t statedLength) {
    U32(statedLength != 0 ? statedLength : static_cast<std::uint32_t>(body.bytes.size() + 4));
    bytes.insert(bytes.end(), body.bytes.begin(), body.bytes.end());
    return *this;
}

KitWriter ProductBody(const std::u16string& language) {
    return KitWriter().String(language).String(u"P-" + language).String(u"Tavri").String(u"");
}

KitWriter FileBody(const std::u16string& name, std::uint32_t offset, std::uint32_t size) {
    return KitWriter().String(name).U32(7).U32(0x01D9).U32(offset).U32(size);  // time, offset, size
}

Bytes BuildKit(const std::vector<std::u16string>& languages,
               const std::vector<std::pair<std::u16string, std::string>>& files) {
    KitWriter kit;
    kit.U32(1).U32(static_cast<std::uint32_t>(languages.size()));
    for (const auto& language : languages) kit.Record(ProductBody(language));
    kit.U32(static_cast<std::uint32_t>(files.size()));
    std::uint32_t offset = 0;
    for (const auto& [name, content] : files) {
        kit.Record(FileBody(name, offset, static_cast<std::uint32_t>(content.size())));
        offset += static_cast<std::uint32_t>(content.size());
    }
    for (const auto& file : files) kit.Raw(file.second);
    return kit.bytes;
}

Bytes Deflate(const Bytes& inflated, int level, int strategy) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, -15, 8, strategy);
    Bytes out(deflateBound(&stream, static_cast<uLong>(inflated.size())) + 16);
    stream.next_in = const_cast<Bytef*>(inflated.data());
    stream.avail_in = static_cast<uInt>(inflated.size());
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END) throw std::runtime_error("deflate");
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

void WriteBytes(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

Bytes ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

int CountOpenDescriptors() {
    const std::filesystem::directory_iterator entries("/dev/fd");
    return static_cast<int>(std::distance(begin(entries), end(entries)));
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
    if (const char* old = std::getenv("TMPDIR")) oldTmpdir = old;
    std::string pattern = "/tmp/ord8-kit-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp");
    root = pattern;
    std::filesystem::create_directory(root + "/tmp");
    std::filesystem::create_directory(root + "/kits");
    setenv("TMPDIR", (root + "/tmp").c_str(), 1);
}

ScratchFolder::~ScratchFolder() {
    oldTmpdir.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", oldTmpdir.c_str(), 1);
    std::filesystem::remove_all(root);
}

std::size_t ScratchFolder::TempFileCount() const {
    const std::filesystem::directory_iterator entries(root + "/tmp");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::string ScratchFolder::StoreKit(const Bytes& inflated, int level) {
    WriteBytes(kit(), Deflate(inflated, level));
    return kit();
}

}  // namespace kittest
