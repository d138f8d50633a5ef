// Loads arbitrary kits and checks what every load must leave behind. The first input
// byte chooses how the rest becomes a kit file: bit 0 set passes the bytes as they are
// (exercising inflation of hostile streams); otherwise they are the inflated kit and
// are deflated first, at level 0 or 1 by bit 1 (exercising the table reader).
#include <dirent.h>
#include <sys/stat.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "fs/file_system.h"
#include "kit/install_data.h"
#include "kit/kit_format.h"
#include "kit/lz_compressor.h"
#include "text/encoding.h"

namespace {

struct Scratch {
    std::string kitPath;
    std::string tempFolder;
};

const Scratch& ScratchFolder() {
    static const Scratch scratch = [] {
        char pattern[] = "/tmp/ord8-kit-fuzz-XXXXXX";
        if (mkdtemp(pattern) == nullptr) std::abort();
        Scratch made{std::string(pattern) + "/ord8.dkz", std::string(pattern) + "/tmp"};
        if (mkdir(made.tempFolder.c_str(), 0700) != 0) std::abort();
        setenv("TMPDIR", made.tempFolder.c_str(), 1);
        return made;
    }();
    return scratch;
}

void Require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "kit_load_fuzzer: %s\n", what);
        std::abort();
    }
}

std::vector<unsigned char> Deflated(const std::uint8_t* data, std::size_t size, int level) {
    z_stream stream{};
    Require(deflateInit2(&stream, level, Z_DEFLATED, kitformat::kRawDeflateWindowBits, 8,
                         Z_DEFAULT_STRATEGY) == Z_OK,
            "deflateInit2");
    std::vector<unsigned char> out(deflateBound(&stream, size) + 16);
    stream.next_in = const_cast<Bytef*>(data);
    stream.avail_in = static_cast<uInt>(size);
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    Require(deflate(&stream, Z_FINISH) == Z_STREAM_END, "deflate");
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

void WriteKit(const std::string& path, const unsigned char* bytes, std::size_t size) {
    FILE* file = std::fopen(path.c_str(), "wb");
    Require(file != nullptr, "cannot create the kit");
    Require(size == 0 || std::fwrite(bytes, 1, size, file) == size, "cannot write the kit");
    std::fclose(file);
}

int EntriesIn(const std::string& folder) {
    DIR* stream = opendir(folder.c_str());
    Require(stream != nullptr, "temporary folder gone");
    int count = 0;
    while (const dirent* entry = readdir(stream)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") ++count;
    }
    closedir(stream);
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const Scratch& scratch = ScratchFolder();
    const std::uint8_t mode = data[0];
    ++data;
    --size;
    if (mode & 1) {
        WriteKit(scratch.kitPath, data, size);
    } else {
        const std::vector<unsigned char> kit = Deflated(data, size, (mode & 2) ? 1 : 0);
        WriteKit(scratch.kitPath, kit.data(), kit.size());
    }

    InstallData<LZCompressor, FileSystem> kit;
    const ResultCode code = kit.Load(stdx::from_multibyte(stdx::mbstring(scratch.kitPath.c_str())));
    if (code != kOk) {
        Require(code == kDamagedData, "a damaged kit gave a code other than 13");
        Require(kit.files.empty(), "files left after a failed load");
        Require(kit.handle == kNoHandle, "handle left open after a failed load");
        Require(EntriesIn(scratch.tempFolder) == 0, "temporary file left after a failed load");
        return 0;
    }

    Require(kit.handle != kNoHandle, "loaded kit without a handle");
    Require(EntriesIn(scratch.tempFolder) == 1, "loaded kit without its temporary file");
    struct stat inflated {};
    Require(stat(stdx::to_multibyte(kit.tempPath).c_str(), &inflated) == 0, "stat");
    for (const auto& file : kit.files) {
        Require(
            std::uint64_t{file.offset} + file.size <= static_cast<std::uint64_t>(inflated.st_size),
            "file data outside the inflated kit");
        Require(kitformat::is_safe_file_name(file.name.data(), file.name.size()),
                "unsafe file name accepted");
    }
    FileSystem::CloseFile(kit.handle);
    FileSystem::DeleteFile(kit.tempPath);
    return 0;
}
