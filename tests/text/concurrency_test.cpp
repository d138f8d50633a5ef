// CI runs these under ThreadSanitizer: every name here contains "Concurren".
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>
#include <vector>

#include "text/encoding.h"

namespace {

using stdx::u16string;

constexpr int kThreads = 4;
constexpr int kRounds = 1000;

// Runs body(thread, round) on kThreads threads at once; returns the failures.
template <class Body>
int run_on_threads(Body body) {
    std::vector<int> failures(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kRounds; ++i) failures[t] += body(t, i) ? 0 : 1;
        });
    }
    for (auto& thread : threads) thread.join();
    int total = 0;
    for (int f : failures) total += f;
    return total;
}

TEST(TextConcurrency, ThreadsConvertBothWaysAtOnce) {
    setenv("LANG", "C.UTF-8", 1);
    const u16string text(u"/Vorlagen/Gr\u00F6\u00DFe/\u041F\u0440\u0438\u0432\u0435\u0442.cfg");
    const stdx::mbstring bytes = stdx::to_multibyte(text);
    EXPECT_EQ(run_on_threads([&](int, int) {
                  return stdx::to_multibyte(text) == bytes && stdx::from_multibyte(bytes) == text;
              }),
              0);
}

TEST(TextConcurrency, SharedBlocksAreCopiedChangedAndReleasedOnManyThreads) {
    // Many blocks, each shared by every thread, so each dies on whichever thread
    // lets go last, right after the others have read it or made it private.
    std::vector<u16string> expected;  // same text in blocks of their own
    std::vector<u16string> originals;
    for (int i = 0; i < kRounds; ++i) {
        expected.push_back(u16string(40, u'o') + stdx::integer_to_text<u16string>(i));
        originals.push_back(u16string(40, u'o') + stdx::integer_to_text<u16string>(i));
    }
    std::vector<std::vector<u16string>> handed_over(kThreads, originals);
    originals.clear();
    EXPECT_EQ(run_on_threads([&](int t, int i) {
                  u16string& mine = handed_over[t][i];
                  bool ok = mine == expected[i];
                  if (t % 2 == 0) {
                      mine.erase(0, 1);  // a private copy, or in place once alone
                      ok = ok && mine.use_count() == 1 && mine == expected[i].substr(1);
                  }
                  mine.clear();
                  return ok;
              }),
              0);
}

}  // namespace
