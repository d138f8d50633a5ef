// Times the file-system layer's directory creation and moves against what the same
// work costs through the shell utilities (`mkdir -p`, `mv`), one process per call,
// in the same run: an installation makes a directory and moves one backup per file.
//
// Usage: shell_free_fs_bench [FILES]   (default 300)
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fs/file_system.h"
#include "text/encoding.h"

namespace {

using Clock = std::chrono::steady_clock;

stdx::u16string Text(const std::string& s) {
    return stdx::from_multibyte(stdx::mbstring(s.c_str()));
}

void MakeFile(const std::string& path) {
    if (std::FILE* f = std::fopen(path.c_str(), "w")) {
        std::fputs("template\n", f);
        std::fclose(f);
    }
}

double Seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
}

// Per file: make its directory, then move the file into it.
double RunLayer(const std::string& root, int files) {
    for (int i = 0; i < files; ++i) MakeFile(root + "/f" + std::to_string(i));
    const auto start = Clock::now();
    for (int i = 0; i < files; ++i) {
        const std::string dir = root + "/d" + std::to_string(i % 20) + "/sub";
        FileSystem::CreateDirectory(Text(dir));
        FileSystem::MoveFile(Text(root + "/f" + std::to_string(i)),
                             Text(dir + "/f" + std::to_string(i)));
    }
    return Seconds(start);
}

double RunShell(const std::string& root, int files) {
    for (int i = 0; i < files; ++i) MakeFile(root + "/f" + std::to_string(i));
    const auto start = Clock::now();
    for (int i = 0; i < files; ++i) {
        const std::string dir = root + "/d" + std::to_string(i % 20) + "/sub";
        const std::string name = "/f" + std::to_string(i);
        std::string mkdir = "mkdir -p \"" + dir + "\" 2>/dev/null";
        std::string mv = "mv \"" + root + name + "\" \"" + dir + name + "\" 2>/dev/null";
        if (std::system(mkdir.c_str()) == -1 || std::system(mv.c_str()) == -1) return -1;
    }
    return Seconds(start);
}

std::string FreshDirectory(const char* name) {
    char pattern[] = "/tmp/ord8-bench-XXXXXX";
    const char* made = mkdtemp(pattern);
    return made ? std::string(made) + "/" + name : std::string();
}

}  // namespace

int main(int argc, char** argv) {
    const int files = argc > 1 ? std::atoi(argv[1]) : 300;
    const std::string layerRoot = FreshDirectory("layer");
    const std::string shellRoot = FreshDirectory("shell");
    if (files <= 0 || layerRoot.empty() || shellRoot.empty()) {
        std::fprintf(stderr, "usage: shell_free_fs_bench [FILES > 0]\n");
        return 2;
    }
    FileSystem::CreateDirectory(Text(layerRoot));
    FileSystem::CreateDirectory(Text(shellRoot));
    const double layer = RunLayer(layerRoot, files);
    const double shell = RunShell(shellRoot, files);
    std::printf("%d files, directory + move each\n", files);
    std::printf("  file-system layer : %8.2f ms  (%.1f us per file)\n", layer * 1e3,
                layer * 1e6 / files);
    std::printf("  mkdir -p + mv     : %8.2f ms  (%.1f us per file)\n", shell * 1e3,
                shell * 1e6 / files);
    if (layer > 0) std::printf("  shell / layer     : %8.1fx\n", shell / layer);
    FileSystem::DeleteDirectory(Text(layerRoot.substr(0, layerRoot.rfind('/'))));
    FileSystem::DeleteDirectory(Text(shellRoot.substr(0, shellRoot.rfind('/'))));
    return 0;
}
