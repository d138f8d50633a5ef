// What only the config tests need: a fresh HOME per test and a shorthand for the
// launcher lines they write. Everything else comes from the shared test support.
#pragma once

#include <string>
#include <utility>

#include "tests/support/test_support.h"

namespace configtest {

// HOME is a new, empty scratch folder for each test. In texts given to expand(), "$H"
// stands for it and "$K" for "ConfigurationTemplatesLocation=".
class TempHome : public ::testing::Test {
  protected:
    std::string expand(std::string text) const {
        for (const auto& [from, to] : {std::pair<std::string, std::string>{"$H", home_},
                                       {"$K", "ConfigurationTemplatesLocation="}})
            for (auto at = text.find(from); at != std::string::npos;
                 at = text.find(from, at + to.size()))
                text.replace(at, from.size(), to);
        return text;
    }
    std::string ordinaryFile() const { return home_ + "/.Tavri/ostart/ostart.cfg"; }
    std::string alternateFile() const { return home_ + "/.Tavri/ostartt/ostart.cfg"; }

    ScratchDirectory scratch_;
    const std::string home_ = scratch_.path();
    ScopedEnvironment homeVariable_{"HOME", home_};
};

}  // namespace configtest
