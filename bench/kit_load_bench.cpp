// Times the installer's kit load (InstallData::Load: inflate into a temporary file, then
// read the tables) against what a user's own tools spend on the same bytes, in the same
// run: "floor", a plain zlib inflate of the same kit into a file written here with no
// checks at all, and `gzip -dc` of a gzip of the same inflated bytes into a file. Two
// kits: many small files, and a few large files of mixed, partly compressible content.
// Each round times all three on both kits, in a rotating order, each into a fresh
// folder after a sync, so no run inherits another's dirty pages. Medians of the
// rounds; ratios are taken round by round, then their median.
//
// It also counts the heap allocations and the heap peak of one load of a kit with
// --alloc-files files (a counting operator new, so nothing else is needed to see them).
//
// Usage: kit_load_bench [--rounds N] [--small-files N] [--large-mib N] [--alloc-files N]
//                       [--seed N] [--dir FOLDER]
// FOLDER (default: the current directory) must be on the disk being measured; a
// scratch folder is made in it and removed at the end.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <vector>

#include "bench/bench_kit.h"
#include "fs/file_system.h"
#include "kit/install_data.h"
#include "kit/kit_format.h"
#include "kit/lz_compressor.h"
#include "text/encoding.h"
#include "tools/deflate_writer.h"
#include "tools/kit_tables.h"

// Allocation counting: every operator new of the process goes through here, and counts
// while `gCounting` is set. A header in front of each block keeps its size for the peak.
namespace {
bool gCounting = false;
std::uint64_t gAllocations = 0;
std::int64_t gLiveBytes = 0;
std::int64_t gPeakBytes = 0;
constexpr std::size_t kHeader = alignof(std::max_align_t);

void* CountedNew(std::size_t size) {
    auto* block = static_cast<unsigned char*>(std::malloc(size + kHeader));
    if (block == nullptr) throw std::bad_alloc();
    std::memcpy(block, &size, sizeof size);
    if (gCounting) {
        ++gAllocations;
        gLiveBytes += static_cast<std::int64_t>(size);
        gPeakBytes = std::max(gPeakBytes, gLiveBytes);
    }
    return block + kHeader;
}

void CountedDelete(void* pointer) noexcept {
    if (pointer == nullptr) return;
    auto* block = static_cast<unsigned char*>(pointer) - kHeader;
    std::size_t size = 0;
    std::memcpy(&size, block, sizeof size);
    if (gCounting) gLiveBytes -= static_cast<std::int64_t>(size);
    std::free(block);
}
}  // namespace

void* operator new(std::size_t size) { return CountedNew(size); }
void* operator new[](std::size_t size) { return CountedNew(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return CountedNew(size);
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void operator delete(void* pointer) noexcept { CountedDelete(pointer); }
void operator delete[](void* pointer) noexcept { CountedDelete(pointer); }
void operator delete(void* pointer, std::size_t) noexcept { CountedDelete(pointer); }
void operator delete[](void* pointer, std::size_t) noexcept { CountedDelete(pointer); }

namespace {

using Clock = std::chrono::steady_clock;
using Kit = InstallData<LZCompressor, FileSystem>;

[[noreturn]] void Fail(const std::string& what) {
    std::fprintf(stderr, "kit_load_bench: %s\n", what.c_str());
    std::exit(1);
}

struct Options {
    int rounds = 5;
    int smallFiles = 10000;
    int largeMib = 400;
    int allocFiles = 50000;
    std::uint64_t seed = 1;
    std::string dir = std::filesystem::current_path().string();
};

// xorshift64*: the same seed gives the same kits.
struct Random {
    std::uint64_t state;
    std::uint64_t Next() {
        state ^= state >> 12;
        state ^= state << 25;
        state ^= state >> 27;
        return state * 0x2545F4914F6CDD1Dull;
    }
    std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(Next() % bound); }
};

// Text made of words, which deflate shrinks about fourfold, broken up by stretches of
// noise, which it cannot shrink: `noisePercent` of the bytes.
void FillContent(Random& random, std::vector<unsigned char>& out, std::size_t size,
                 unsigned noisePercent) {
    static const char* const kWords[] = {"report", "total",  "quantity", "price", "remarks",
                                         "date",   "server", "timeout",  "path",  "=",
                                         "\n",     "item",   "monthly",  "keep",  "days"};
    out.clear();
    while (out.size() < size) {
        const std::size_t stretch = std::min<std::size_t>(size - out.size(), 4096);
        if (random.Below(100) < noisePercent) {
            for (std::size_t i = 0; i < stretch; ++i)
                out.push_back(static_cast<unsigned char>(random.Next() >> 56));
        } else {
            const std::size_t end = out.size() + stretch;
            while (out.size() < end) {
                const char* word = kWords[random.Below(15)];
                for (; *word != 0 && out.size() < end; ++word) out.push_back(*word);
                if (out.size() < end) out.push_back(' ');
            }
        }
    }
}

struct KitPaths {
    std::string kit;       // raw deflate, what the installer reads
    std::string inflated;  // the inflated kit, kept to make the gzip from
    std::string gzip;      // gzip -6 of the inflated kit
};

// Writes a kit of the given file sizes with the kit tool's own table encoder and
// deflater (level 6, the tool's), its inflated bytes, and a gzip of those.
KitPaths WriteKit(const std::string& base, const std::vector<std::uint32_t>& sizes, Random& random,
                  unsigned noisePercent, bool withGzip) {
    const std::vector<unsigned char> tables = BenchKitTables(sizes);
    if (tables.empty()) Fail("kit too large");

    KitPaths paths{base + ".dkz", base + ".inflated", base + ".gz"};
    std::FILE* kit = std::fopen(paths.kit.c_str(), "wb");
    std::FILE* inflated = std::fopen(paths.inflated.c_str(), "wb");
    if (kit == nullptr || inflated == nullptr) Fail("cannot write " + base);
    kittool::RawDeflateWriter deflater;
    std::string error;
    auto put = [&](const std::vector<unsigned char>& bytes) {
        if (!deflater.write(bytes.data(), bytes.size(), error)) Fail(error);
        std::fwrite(bytes.data(), 1, bytes.size(), inflated);
    };
    if (!deflater.start(kit, 6, error)) Fail(error);
    put(tables);
    std::vector<unsigned char> content;
    for (std::uint32_t size : sizes) {
        FillContent(random, content, size, noisePercent);
        put(content);
    }
    if (!deflater.finish(error)) Fail(error);
    std::fclose(kit);
    std::fclose(inflated);
    if (withGzip) {
        const std::string command = "gzip -6 -c '" + paths.inflated + "' > '" + paths.gzip + "'";
        if (std::system(command.c_str()) != 0) Fail("gzip failed");
    }
    return paths;
}

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// The installer's load, its temporary directory a fresh folder. Close is not timed:
// the installer keeps the kit open for the whole run.
double TimeLoad(const std::string& kit, const std::string& folder, std::size_t expectedFiles) {
    std::filesystem::create_directories(folder);
    setenv("TMPDIR", folder.c_str(), 1);
    Kit data;
    const stdx::u16string path = stdx::from_multibyte(stdx::mbstring(kit.c_str()));
    sync();
    const auto start = Clock::now();
    const ResultCode code = data.Load(path);
    const double seconds = SecondsSince(start);
    if (code != kOk || data.files.size() != expectedFiles) Fail("load failed: " + kit);
    data.Close();
    return seconds;
}

// The floor: read the kit, inflate, write the bytes to a new file. No mapping, no
// checks beyond zlib's own; 128 KiB buffers each way.
double TimeFloor(const std::string& kit, const std::string& folder) {
    std::filesystem::create_directories(folder);
    const std::string out = folder + "/inflated";
    constexpr std::size_t kChunk = 128 * 1024;
    static unsigned char input[kChunk];
    static unsigned char output[kChunk];
    sync();
    const auto start = Clock::now();
    const int in = open(kit.c_str(), O_RDONLY);
    const int fd = open(out.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (in < 0 || fd < 0) Fail("floor cannot open its files");
    z_stream stream{};
    inflateInit2(&stream, -15);
    int status = Z_OK;
    while (status != Z_STREAM_END) {
        const ssize_t got = read(in, input, kChunk);
        if (got <= 0) break;
        stream.next_in = input;
        stream.avail_in = static_cast<uInt>(got);
        do {
            stream.next_out = output;
            stream.avail_out = kChunk;
            status = inflate(&stream, Z_NO_FLUSH);
            if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR)
                Fail("floor: corrupt kit");
            const std::size_t produced = kChunk - stream.avail_out;
            if (write(fd, output, produced) != static_cast<ssize_t>(produced))
                Fail("floor: short write");
        } while (stream.avail_out == 0);
    }
    inflateEnd(&stream);
    close(in);
    close(fd);
    return SecondsSince(start);
}

double TimeGzip(const std::string& gzip, const std::string& folder) {
    std::filesystem::create_directories(folder);
    const std::string command = "gzip -dc '" + gzip + "' > '" + folder + "/inflated'";
    sync();
    const auto start = Clock::now();
    if (std::system(command.c_str()) != 0) Fail("gzip -dc failed");
    return SecondsSince(start);
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

void Measure(const char* label, const KitPaths& kit, std::size_t files, const Options& options,
             const std::string& runs) {
    std::vector<double> load, floor, gzip, loadRatio, gzipRatio;
    for (int round = 0; round < options.rounds; ++round) {
        const std::string folder = runs + "/" + label + "-" + std::to_string(round);
        double times[3] = {};
        for (int k = 0; k < 3; ++k) {  // rotate the order so none always runs first
            switch ((k + round) % 3) {
                case 0:
                    times[0] = TimeLoad(kit.kit, folder + "/load", files);
                    break;
                case 1:
                    times[1] = TimeFloor(kit.kit, folder + "/floor");
                    break;
                case 2:
                    times[2] = TimeGzip(kit.gzip, folder + "/gzip");
                    break;
            }
        }
        load.push_back(times[0]);
        floor.push_back(times[1]);
        gzip.push_back(times[2]);
        loadRatio.push_back(times[0] / times[1]);
        gzipRatio.push_back(times[2] / times[1]);
        std::printf("  %s round %d: load %.3f s, floor %.3f s, gzip -dc %.3f s\n", label, round,
                    times[0], times[1], times[2]);
    }
    std::printf(
        "%s: median load %.3f s, floor %.3f s, gzip -dc %.3f s; "
        "load/floor %.2fx, gzip/floor %.2fx (medians of per-round ratios)\n",
        label, Median(load), Median(floor), Median(gzip), Median(loadRatio), Median(gzipRatio));
}

void CountAllocations(const KitPaths& kit, std::size_t files, const std::string& folder) {
    std::filesystem::create_directories(folder);
    setenv("TMPDIR", folder.c_str(), 1);
    const stdx::u16string path = stdx::from_multibyte(stdx::mbstring(kit.kit.c_str()));
    Kit data;
    gAllocations = 0;
    gLiveBytes = gPeakBytes = 0;
    gCounting = true;
    const ResultCode code = data.Load(path);
    gCounting = false;
    if (code != kOk || data.files.size() != files) Fail("allocation load failed");
    data.Close();
    std::printf("allocations: %zu files: %llu allocations (%.2f per file), heap peak %.2f MiB\n",
                files, static_cast<unsigned long long>(gAllocations),
                static_cast<double>(gAllocations) / static_cast<double>(files),
                static_cast<double>(gPeakBytes) / (1024.0 * 1024.0));
}

Options Parse(int argc, char** argv) {
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string flag = argv[i];
        const char* value = argv[i + 1];
        if (flag == "--rounds")
            options.rounds = std::atoi(value);
        else if (flag == "--small-files")
            options.smallFiles = std::atoi(value);
        else if (flag == "--large-mib")
            options.largeMib = std::atoi(value);
        else if (flag == "--alloc-files")
            options.allocFiles = std::atoi(value);
        else if (flag == "--seed")
            options.seed = std::strtoull(value, nullptr, 10);
        else if (flag == "--dir")
            options.dir = value;
        else
            Fail("unknown option " + flag);
    }
    if (options.rounds < 1 || options.seed == 0) Fail("rounds >= 1 and a non-zero seed");
    return options;
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = Parse(argc, argv);
    std::string scratch = options.dir + "/kit-load-bench-XXXXXX";
    if (mkdtemp(scratch.data()) == nullptr) Fail("cannot make a scratch folder in " + options.dir);
    std::printf("seed %llu, %d rounds, scratch %s\n", static_cast<unsigned long long>(options.seed),
                options.rounds, scratch.c_str());
    Random random{options.seed};

    // Small files: 200 bytes to 8 KiB, a tenth of them noise. Large: 8 to 24 MiB each,
    // a third noise.
    std::vector<std::uint32_t> small;
    for (int i = 0; i < options.smallFiles; ++i) small.push_back(200 + random.Below(8000));
    std::vector<std::uint32_t> large;
    for (std::uint64_t total = 0; total < std::uint64_t(options.largeMib) << 20;) {
        const std::uint32_t size = (8u << 20) + random.Below(16u << 20);
        large.push_back(size);
        total += size;
    }
    const KitPaths smallKit = WriteKit(scratch + "/small", small, random, 10, true);
    const KitPaths largeKit = WriteKit(scratch + "/large", large, random, 33, true);
    std::vector<std::uint32_t> many(static_cast<std::size_t>(options.allocFiles), 0);
    for (auto& size : many) size = 16 + random.Below(64);
    const KitPaths manyKit = WriteKit(scratch + "/many", many, random, 0, false);
    struct stat status {};
    for (const KitPaths* kit : {&smallKit, &largeKit}) {
        stat(kit->inflated.c_str(), &status);
        std::printf("%s: %.1f MiB inflated", kit->kit.c_str(), status.st_size / 1048576.0);
        stat(kit->kit.c_str(), &status);
        std::printf(", %.1f MiB deflated\n", status.st_size / 1048576.0);
    }

    const std::string runs = scratch + "/runs";
    Measure("small", smallKit, small.size(), options, runs);
    Measure("large", largeKit, large.size(), options, runs);
    CountAllocations(manyKit, many.size(), runs + "/allocations");

    std::filesystem::remove_all(scratch);
    return 0;
}
