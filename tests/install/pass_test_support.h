// The pass tests' own fixture: a scratch folder whose "tmp" is the temporary directory,
// a templates directory and a journal folder beside it, a kit built in the test and
// loaded, and the shared record holding the job that installs it into the templates.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "app/string_catalogue.h"
#include "install/install_process_data.h"
#include "tests/install/transaction_test_support.h"
#include "tests/kit/kit_test_support.h"

namespace installtest {

using Kit = InstallProcessData::Kit;
using KitFiles = std::vector<std::pair<std::u16string, std::string>>;

// The kit's time: whole seconds and a fraction, which the file system does not keep.
constexpr std::int64_t kKitSeconds = 1600000000;
inline const FileTime kKitTime = FileSystem::UnixTimeToFileTime(kKitSeconds) + 1234567;

inline std::u16string Name(const std::string& utf8) {
    const stdx::u16string text = U16(utf8);
    return std::u16string(text.data(), text.size());
}

// A file with these bytes, permission bits and modification time, parents made.
inline void Plant(const std::string& path, const std::string& bytes, std::int64_t seconds,
                  mode_t mode = 0640) {
    WriteText(path, bytes);
    chmod(path.c_str(), mode);
    const timespec times[2] = {{time_t(seconds), 0}, {time_t(seconds), 0}};
    utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

struct Status {
    ResultCode code = 0;
    std::string text;
    std::int32_t progress = 0;
    bool operator==(const Status& o) const {
        return code == o.code && text == o.text && progress == o.progress;
    }
};
inline std::ostream& operator<<(std::ostream& out, const Status& s) {
    return out << "(" << s.code << ", \"" << s.text << "\", " << s.progress << ")";
}

// "" when both trees are equal; otherwise a line for each path that differs.
inline std::string Differences(const Tree& before, const Tree& after) {
    const auto describe = [](const Tree& tree, const std::string& path) {
        const auto found = tree.find(path);
        if (found == tree.end()) return std::string("missing");
        const TreeEntry& e = found->second;
        return "mode " + std::to_string(e.mode) + " time " + std::to_string(e.modified) + ", " +
               std::to_string(e.bytes.size()) + " bytes";
    };
    Tree all = before;
    all.insert(after.begin(), after.end());
    std::string differences;
    for (const auto& [path, ignored] : all)
        if (!before.count(path) || !after.count(path) || !(before.at(path) == after.at(path)))
            differences +=
                path + ": " + describe(before, path) + " -> " + describe(after, path) + "\n";
    return differences;
}

using Expectations = std::vector<std::pair<std::string, std::string>>;  // path -> bytes

// Every path in `expected` holds its bytes with the kit's time; every other path that
// was there `before` is as it was; anything new is a directory made on the way.
inline void ExpectInstalled(const Tree& before, const Tree& after, const Expectations& expected) {
    for (const auto& [path, entry] : before) EXPECT_TRUE(after.count(path)) << path << " vanished";
    Tree rest = after;
    for (const auto& [path, bytes] : expected) {
        const TreeEntry entry = rest.count(path) ? rest[path] : TreeEntry{"", 0, 0};
        EXPECT_TRUE(S_ISREG(entry.mode) && entry.bytes == bytes && entry.modified == kKitSeconds)
            << path << " holds " << entry.bytes.size() << " bytes of time " << entry.modified;
        rest.erase(path);
    }
    for (const auto& [path, entry] : rest)
        EXPECT_TRUE(before.count(path) ? before.at(path) == entry : S_ISDIR(entry.mode)) << path;
}

inline Status Finished() { return {kOk, Utf8(LoadString("IDS_INSTALL_FINISH")), 100}; }
inline Status Failed(ResultCode code, std::int32_t progress) {
    return {code, Utf8(LoadString("IDS_INSTALL_ERROR")), progress};
}

class PassFixture : public ::testing::Test {
  protected:
    PassFixture() {
        data.Init();
        std::filesystem::create_directory(templates);
    }
    ~PassFixture() override { kit.Close(); }

    // Loads a kit of `files` (all with kKitTime) and sets the job to install it.
    void LoadKit(const KitFiles& files) {
        LoadInflated(kittest::BuildKit({u"en"}, files, kKitTime));
    }
    void LoadInflated(const std::string& inflated) {
        kit.Close();
        kit.products.clear();  // a second Load would add to them
        WriteText(scratch.kit, kittest::Deflate(inflated, 1));
        ASSERT_EQ(kOk, kit.Load(U16(scratch.kit)));
        data.SetJob(&kit, U16(templates), U16(journal));
    }
    Status Published() {
        Status status;
        stdx::u16string text;
        data.GetStatus(status.code, text, status.progress);
        status.text = Utf8(text);
        return status;
    }
    // Polls the status until `done` holds; false after 20 seconds.
    bool WaitFor(const std::function<bool(const Status&)>& done) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!done(Published()))
            if (std::chrono::steady_clock::now() > deadline)
                return false;
            else
                std::this_thread::yield();
        return true;
    }

    kittest::KitScratch scratch;
    std::string templates = scratch.root / "templates";
    std::string journal = scratch.root / "journal";
    Kit kit;
    InstallProcessData data;
};

}  // namespace installtest
