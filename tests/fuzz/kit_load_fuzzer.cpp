// Loads arbitrary kits and checks what every load must leave behind. The first input
// byte chooses how the rest becomes a kit file: bit 0 set passes the bytes as they are
// (hostile deflate streams); otherwise they are the inflated kit and are deflated first,
// at level 0 or 1 by bit 1 (hostile tables).
#include <sys/stat.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "fs/file_system.h"
#include "kit/install_data.h"
#include "kit/kit_format.h"
#include "kit/lz_compressor.h"
#include "tests/fuzz/fuzz_support.h"
#include "text/encoding.h"

namespace {

// The run's temporary directory, inside the scratch folder: nothing a load makes may stay.
const std::string& TempFolder() {
    static const std::string temp = [] {
        const std::string folder = ScratchFolder() + "/tmp";
        std::filesystem::create_directory(folder);
        setenv("TMPDIR", folder.c_str(), 1);
        return folder;
    }();
    return temp;
}

std::vector<unsigned char> Deflated(const std::uint8_t* data, std::size_t size, int level) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, kitformat::kRawDeflateWindowBits, 8,
                 Z_DEFAULT_STRATEGY);
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string& tempFolder = TempFolder();
    const std::string kitPath = ScratchFolder() + "/ord8.dkz";
    const std::vector<unsigned char> kitBytes =
        (data[0] & 1) ? std::vector<unsigned char>(data + 1, data + size)
                      : Deflated(data + 1, size - 1, (data[0] & 2) ? 1 : 0);
    FILE* kitFile = std::fopen(kitPath.c_str(), "wb");
    Require(kitFile != nullptr, "cannot create the kit");
    std::fwrite(kitBytes.data(), 1, kitBytes.size(), kitFile);
    std::fclose(kitFile);

    InstallData<LZCompressor, FileSystem> kit;
    const ResultCode code = kit.Load(stdx::from_multibyte(stdx::mbstring(kitPath.c_str())));
    Require(std::filesystem::is_empty(tempFolder), "an inflated kit was left behind");
    if (code != kOk) {
        Require(code == kDamagedData, "a damaged kit gave a code other than 13");
        Require(kit.lastRefusal.reason != nullptr, "a refusal without its reason");
        Require(kit.files.empty() && kit.handle == kNoHandle,
                "tables or handle left after failure");
        return 0;
    }
    struct stat inflated {};
    Require(fstat(static_cast<int>(kit.handle), &inflated) == 0, "loaded kit without its file");
    for (const auto& file : kit.files) {
        Require(
            std::uint64_t{file.offset} + file.size <= static_cast<std::uint64_t>(inflated.st_size),
            "file data outside the inflated kit");
        Require(kitformat::is_safe_file_name(file.name.data(), file.name.size()),
                "unsafe name accepted");
    }
    kit.Close();
    return 0;
}
