// CI runs this under ThreadSanitizer: its name contains "Concurren".
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include "text/encoding.h"

namespace {

using stdx::u16string;

TEST(TextConcurrency, ThreadsConvertAndShareStringsAtOnce) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 1000;
    setenv("LANG", "C.UTF-8", 1);
    const u16string text(u"/Vorlagen/Gr\u00F6\u00DFe/\u041F\u0440\u0438\u0432\u0435\u0442.cfg");
    const stdx::mbstring bytes = stdx::to_multibyte(text);
    const auto numbered = [](int i) {
        return u16string(40, u'o') + stdx::integer_to_text<u16string>(i);
    };
    // Many blocks, each shared by every thread, so each dies on whichever thread lets go
    // last, right after the others have read it or made it private.
    std::vector<u16string> originals;
    for (int i = 0; i < kRounds; ++i) originals.push_back(numbered(i));
    std::vector<std::vector<u16string>> handed_over(kThreads, originals);
    originals.clear();

    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kRounds; ++i) {
                u16string& mine = handed_over[t][i];
                const u16string expected = numbered(i);
                bool ok = mine == expected && stdx::to_multibyte(text) == bytes &&
                          stdx::from_multibyte(bytes) == text;
                if (t % 2 == 0) {
                    mine.erase(0, 1);  // a private copy, or in place once alone
                    ok = ok && mine.use_count() == 1 && mine == expected.substr(1);
                }
                mine.clear();
                failures += ok ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
}

}  // namespace
