// Several threads at once: names must stay unique and directory creation must not
// report a failure just because another thread made the same directory first.
#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "fs/file_system.h"
#include "test_support.h"

TEST(FsConcurrency, TempFilesAndDirectoriesFromManyThreads) {
    ScratchDirectory scratch;
    constexpr int kThreads = 4;
    constexpr int kPerThread = 50;
    std::vector<std::vector<std::string>> names(kThreads);
    std::vector<int> failures(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kPerThread; ++i) {
                stdx::u16string name;
                if (FileSystem::CreateTempFile(U16(scratch.path()), u"edf", name) != kOk)
                    ++failures[t];
                names[t].push_back(Utf8(name));
                const std::string shared = scratch / ("d" + std::to_string(i % 5) + "/x/y");
                if (FileSystem::CreateDirectory(U16(shared)) != kOk) ++failures[t];
            }
        });
    }
    for (std::thread& thread : threads) thread.join();

    std::set<std::string> distinct;
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(0, failures[t]);
        distinct.insert(names[t].begin(), names[t].end());
    }
    EXPECT_EQ(static_cast<std::size_t>(kThreads * kPerThread), distinct.size());
    for (const std::string& name : distinct) EXPECT_TRUE(Exists(name)) << name;
}
