// Times one installation pass (RunInstallation: judge, back up, copy, set the time, per
// file) on two kits, many small files and a few large ones, against what copying the same
// bytes costs with nothing else around it: the kernel's copy_file_range, and a 1 MiB
// buffer through pread and write (the pass's fallback where the kernel declines). Each
// round installs into a fresh folder after a sync, then runs the pass again over the
// result, which must skip every file. Medians of the rounds.
//
// Usage: install_pass_bench [--rounds N] [--small-files N] [--large-files N]
//                           [--large-mib N] [--dir FOLDER]
// FOLDER (default: the current directory) must be on the disk being measured; a scratch
// folder is made in it and removed at the end. The kits' bytes are fixed (seed 1).
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/string_catalogue.h"
#include "bench/bench_kit.h"
#include "install/install_process_data.h"
#include "install/install_thread.h"
#include "kit/kit_format.h"
#include "text/encoding.h"
#include "tools/deflate_writer.h"
#include "tools/kit_tables.h"

namespace {

using Kit = InstallProcessData::Kit;
using Clock = std::chrono::steady_clock;

[[noreturn]] void Fail(const std::string& what) {
    std::fprintf(stderr, "install_pass_bench: %s\n", what.c_str());
    std::exit(1);
}

// Writes a kit of files of the given sizes (words broken by noise, deflate level 1).
void WriteKit(const std::string& path, const std::vector<std::uint32_t>& sizes) {
    const std::vector<unsigned char> tables = BenchKitTables(sizes);
    if (tables.empty()) Fail("kit too large");
    std::FILE* kit = std::fopen(path.c_str(), "wb");
    kittool::RawDeflateWriter deflater;
    std::string error;
    if (kit == nullptr || !deflater.start(kit, 1, error)) Fail("cannot write " + path + error);
    if (!deflater.write(tables.data(), tables.size(), error)) Fail(error);
    std::uint64_t state = 1;
    std::vector<unsigned char> content;
    for (std::uint32_t size : sizes) {
        content.resize(size);
        for (std::uint32_t i = 0; i < size; ++i) {
            state = state * 6364136223846793005ull + 1442695040888963407ull;
            content[i] = (i / 512) % 4 == 0 ? static_cast<unsigned char>(state >> 56)
                                            : static_cast<unsigned char>("report total \n"[i % 14]);
        }
        if (!deflater.write(content.data(), content.size(), error)) Fail(error);
    }
    if (!deflater.finish(error)) Fail(error);
    std::fclose(kit);
}

double Seconds(const std::function<void()>& work) {
    sync();
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The bare copy of every file of `kit` under `folder`: the kernel's, or the buffer's.
void CopyAll(const Kit& kit, const std::string& folder, bool kernel) {
    std::vector<char> buffer(1 << 20);
    const int in = static_cast<int>(kit.handle);
    for (std::size_t i = 0; i < kit.files.size(); ++i) {
        const std::string path = folder + "/" + std::to_string(i);
        const int out = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        off_t offset = kit.files[i].offset;
        for (std::uint32_t left = kit.files[i].size; left > 0;) {
            ssize_t moved;
            if (kernel) {
                moved = copy_file_range(in, &offset, out, nullptr, left, 0);
            } else {
                moved =
                    pread(in, buffer.data(), std::min<std::size_t>(left, buffer.size()), offset);
                if (moved > 0 && write(out, buffer.data(), std::size_t(moved)) != moved) moved = -1;
                offset += moved;
            }
            if (moved <= 0) Fail("copy failed");
            left -= std::uint32_t(moved);
        }
        close(out);
    }
}

void Measure(const char* label, const std::string& kitPath, const std::string& scratch,
             int rounds) {
    Kit kit;
    if (kit.Load(stdx::from_multibyte(kitPath.c_str())) != kOk) Fail("cannot load " + kitPath);
    std::uint64_t bytes = 0;
    for (const auto& file : kit.files) bytes += file.size;
    InstallProcessData data;
    data.Init();
    std::vector<double> pass, again, kernel, buffered;
    for (int round = 0; round < rounds; ++round) {
        const std::string base = scratch + "/" + label + std::to_string(round);
        const std::string templates = base + "-templates";
        data.SetJob(&kit, stdx::from_multibyte(templates.c_str()),
                    stdx::from_multibyte((scratch + "/journal").c_str()));
        pass.push_back(Seconds([&] {
            if (RunInstallation(&data) != kOk) Fail("the pass failed");
        }));
        again.push_back(Seconds([&] { RunInstallation(&data); }));
        for (const auto& run : {std::pair{true, &kernel}, std::pair{false, &buffered}}) {
            const bool byKernel = run.first;
            const std::string folder = base + (byKernel ? "-kernel" : "-buffer");
            std::filesystem::create_directories(folder);
            run.second->push_back(Seconds([&] { CopyAll(kit, folder, byKernel); }));
        }
        std::filesystem::remove_all(templates);
        for (const char* kind : {"-kernel", "-buffer"}) std::filesystem::remove_all(base + kind);
    }
    kit.Close();
    const double files = double(kit.files.size()), mib = double(bytes) / (1 << 20);
    const auto line = [&](const char* what, double seconds) {
        std::printf("  %-28s %8.1f ms  %9.0f files/s  %7.0f MiB/s\n", what, seconds * 1e3,
                    files / seconds, mib / seconds);
    };
    std::printf("%s: %.0f files, %.1f MiB, median of %d rounds\n", label, files, mib, rounds);
    line("pass (first install)", Median(pass));
    line("pass again (all skipped)", Median(again));
    line("bare copy, copy_file_range", Median(kernel));
    line("bare copy, 1 MiB buffer", Median(buffered));
}

}  // namespace

int main(int argc, char** argv) {
    int rounds = 5, smallFiles = 10000, largeFiles = 4, largeMib = 64;
    std::string dir = std::filesystem::current_path().string();
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--dir") {
            dir = argv[i + 1];
            continue;
        }
        int* target = option == "--rounds"        ? &rounds
                      : option == "--small-files" ? &smallFiles
                      : option == "--large-files" ? &largeFiles
                      : option == "--large-mib"   ? &largeMib
                                                  : nullptr;
        if (target == nullptr) Fail("unknown option " + option);
        *target = std::atoi(argv[i + 1]);
    }
    // The pass takes only a clean absolute target, so "--dir ." or "../x" is resolved here.
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::canonical(dir, error);
    if (error) Fail("cannot find " + dir);
    std::string scratch = (folder / "install-pass-bench-XXXXXX").string();
    if (mkdtemp(scratch.data()) == nullptr) Fail("cannot make a scratch folder in " + dir);
    std::filesystem::create_directory(scratch + "/tmp");
    setenv("TMPDIR", (scratch + "/tmp").c_str(), 1);
    WriteKit(scratch + "/small.dkz", std::vector<std::uint32_t>(smallFiles, 4000));
    WriteKit(scratch + "/large.dkz", std::vector<std::uint32_t>(largeFiles, largeMib << 20));
    Measure("small", scratch + "/small.dkz", scratch, rounds);
    Measure("large", scratch + "/large.dkz", scratch, rounds);
    std::filesystem::remove_all(scratch);
}
