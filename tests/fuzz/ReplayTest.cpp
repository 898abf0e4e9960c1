// Tries every kept input of one target again: those that ever made it fail, and its seeds.

#include "tests/fuzz/FuzzTarget.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace wagemill::fuzz {

namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Tries each file of the folder; answers how many there are.
int replay(const fs::path& folder)
{
    using Clock = std::chrono::steady_clock;
    int files = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string content = contentOf(entry.path());
        const auto start = Clock::now();
        EXPECT_NO_THROW(tryInput(std::as_bytes(std::span(content)))) << entry.path();
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(WAGEMILL_SECONDS_PER_INPUT)) << entry.path();
        ++files;
    }
    return files;
}

} // namespace

TEST(WAGEMILL_FUZZ_TARGET, StandsEverySeed)
{
    EXPECT_GT(replay(WAGEMILL_FUZZ_SEEDS), 0);
}

TEST(WAGEMILL_FUZZ_TARGET, StandsWhatOnceMadeItFail)
{
    const fs::path findings = WAGEMILL_FUZZ_FINDINGS;
    if (fs::exists(findings))
        replay(findings);
}

} // namespace wagemill::fuzz
