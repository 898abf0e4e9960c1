// Tries the seeds of one target, and every input that ever made it fail, again.

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

TEST(WAGEMILL_FUZZ_TARGET, TakesEverySeedAndWhatOnceMadeItFail)
{
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(WAGEMILL_FUZZ_SEEDS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string content(std::istreambuf_iterator<char>(file), {});
        const std::clock_t start = std::clock(); // of this process: what others take from the machine does not count
        EXPECT_NO_THROW(tryInput(std::as_bytes(std::span(content)))) << entry.path();
        EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, WAGEMILL_SECONDS_PER_INPUT) << entry.path();
        ++files;
    }
    EXPECT_GT(files, 1);
}

} // namespace wagemill::fuzz
