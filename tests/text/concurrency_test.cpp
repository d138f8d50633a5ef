// Run under ThreadSanitizer by CI: every test name here contains "Concurren".
#include <gtest/gtest.h>

#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

#include "tests/text/text_printing.h"
#include "text/encoding.h"

namespace {

using stdx::mbstring;
using stdx::u16string;

constexpr int kThreads = 4;
constexpr int kRounds = 1000;

TEST(TextConcurrency, ThreadsConvertBothWaysAtOnce) {
    setenv("LANG", "C.UTF-8", 1);
    const u16string text(u"/Vorlagen/Gr\u00F6\u00DFe/\u041F\u0440\u0438\u0432\u0435\u0442.cfg");
    const mbstring bytes(
        "/Vorlagen/Gr\xC3\xB6\xC3\x9F"
        "e/\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82.cfg");
    std::vector<int> failures(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kRounds; ++i) {
                if (stdx::to_multibyte(text) != bytes) ++failures[t];
                if (stdx::from_multibyte(bytes) != text) ++failures[t];
                if (stdx::compare_no_case(text, text) != 0) ++failures[t];
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;
}

TEST(TextConcurrency, SharedBlocksAreCopiedChangedAndReleasedOnManyThreads) {
    // Many blocks, each shared by the main thread and every worker: a block dies
    // on whichever thread lets go last, right after the others read it.
    std::vector<u16string> originals;
    std::vector<u16string> expected;  // equal text in blocks of their own
    for (int i = 0; i < kRounds; ++i) {
        originals.push_back(u16string(40, u'o') + stdx::integer_to_text<u16string>(i));
        expected.push_back(u16string(40, u'o') + stdx::integer_to_text<u16string>(i));
    }
    std::vector<std::vector<u16string>> handed_over(kThreads, originals);
    std::vector<int> failures(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kRounds; ++i) {
                u16string& mine = handed_over[t][i];
                if (mine != expected[i]) ++failures[t];
                if (t % 2 == 0) {
                    mine.erase(0, 1);  // a private copy, or in place once alone
                    if (mine.use_count() != 1) ++failures[t];
                }
                mine.clear();
            }
        });
    }
    originals.clear();
    for (auto& thread : threads) thread.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;
    for (const u16string& s : expected) EXPECT_EQ(s.use_count(), 1u);
}

}  // namespace
