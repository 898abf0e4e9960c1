// Tries every kept input of one target again: those that ever made it fail, and its seeds.

#include "tests/fuzz/FuzzTarget.h"
#include "workbook/engine/formula/Recalculation.h"

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace wagemill::fuzz {

const std::size_t maxArrayValues = engine::CalculationSettings{}.maxArrayValues;

namespace {

/// Tries each file of the folder, which need not be there; gives how many there are.
int replay(const std::filesystem::path& folder)
{
    int files = 0;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(folder, none)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string content(std::istreambuf_iterator<char>(file), {});
        const std::clock_t start = std::clock(); // of this process: what others take from the machine does not count
        EXPECT_NO_THROW(tryInput(std::as_bytes(std::span(content)))) << entry.path();
        EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, WAGEMILL_SECONDS_PER_INPUT) << entry.path();
        ++files;
    }
    return files;
}

} // namespace

TEST(WAGEMILL_FUZZ_TARGET, TakesEverySeedAndWhatOnceMadeItFail)
{
    EXPECT_GT(replay(WAGEMILL_FUZZ_SEEDS), 0);
    replay(WAGEMILL_FUZZ_FINDINGS);
}

} // namespace wagemill::fuzz
