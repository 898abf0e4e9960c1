// Tries every kept input of one target again: those that ever made it fail, and its seeds.

#include "tests/fuzz/FuzzTarget.h"
#include "workbook/engine/formula/Recalculation.h"

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace wagemill::fuzz {

const std::size_t maxArrayValues = engine::CalculationSettings{}.maxArrayValues;

namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Tries each file of the folder; gives how many there are.
int replay(const fs::path& folder)
{
    int files = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string content = contentOf(entry.path());
        const std::clock_t start = std::clock(); // of this process: what others take from the machine does not count
        EXPECT_NO_THROW(tryInput(std::as_bytes(std::span(content)))) << entry.path();
        EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, WAGEMILL_SECONDS_PER_INPUT) << entry.path();
        ++files;
    }
    return files;
}

} // namespace

TEST(WAGEMILL_FUZZ_TARGET, TakesEverySeed)
{
    EXPECT_GT(replay(WAGEMILL_FUZZ_SEEDS), 0);
}

TEST(WAGEMILL_FUZZ_TARGET, TakesWhatOnceMadeItFail)
{
    const fs::path findings = WAGEMILL_FUZZ_FINDINGS;
    if (fs::exists(findings))
        replay(findings);
}

} // namespace wagemill::fuzz
