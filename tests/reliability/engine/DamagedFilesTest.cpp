// Every prefix and every single-bit flip of the template and of a result with three employees is opened, computed and
// written again, or refused in words.

#include "app/base/Files.h"
#include "resources/PayrollTemplate.h"
#include "tests/reliability/engine/Limits.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/LongForm.h"
#include "tests/support/OpenRecalculateWrite.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/engine/xls/CompoundFile.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace wagemill::test {

namespace {

using Bytes = std::vector<std::byte>;

/// The template, and a result with three employees.
std::vector<Bytes> wholeFiles()
{
    const TemporaryFolder folder;
    const ScopedEnvironment temporary("TEMP", folder.path().string());
    const auto cases = buildCases();
    const auto three = std::ranges::find(cases, "employees-3", &BuildCase::name);
    const auto templateBytes = payrollTemplateFile();
    return {Bytes(templateBytes.begin(), templateBytes.end()),
            readBytesFromFile(EmbeddedBuilds().build(three->data).workbook)};
}

void tryInTime(std::span<const std::byte> file, const std::string& damage)
{
    const double start = secondsUsed();
    ASSERT_NO_THROW(openRecalculateWrite(file)) << damage;
    ASSERT_LT(secondsUsed() - start, maxSeconds) << damage;
    ASSERT_LT(peakMegabytes(), maxMegabytes) << damage;
}

} // namespace

TEST(DamagedFiles, EveryPrefixAndEveryPrefixOfTheRecordsIsReadOrRefused)
{
    const auto step = shortOrLong<std::size_t>(WAGEMILL_SANITIZED ? 37 : 7, 1);
    for (const Bytes& whole : wholeFiles()) {
        ASSERT_EQ(openRecalculateWrite(whole).refusal, "");
        for (std::size_t size = 0; size < whole.size(); size += size < 600 ? 1 : step)
            tryInTime(std::span(whole).first(size), "cut off after " + std::to_string(size) + " bytes");
        for (engine::KeptStream stream : engine::xls::readCompoundFile(whole))
            while (stream.path.back() == "Workbook" && stream.data.size() >= step) {
                // in a container of its own, so that its end is the end of the records
                stream.data.resize(stream.data.size() - step);
                tryInTime(engine::xls::writeCompoundFile(std::span(&stream, 1)),
                          "records cut off after " + std::to_string(stream.data.size()) + " bytes");
            }
    }
}

TEST(DamagedFiles, EveryFlippedBitIsReadOrRefused)
{
    const auto step =
        shortOrLong<std::size_t>(WAGEMILL_SANITIZED ? 613 : 13, 1); // primes: no bit of a byte is left out
    for (Bytes changed : wholeFiles())
        for (std::size_t bit = 0; bit < changed.size() * 8; bit += step) {
            const auto mask = static_cast<std::byte>(1U << bit % 8);
            changed[bit / 8] ^= mask;
            tryInTime(changed, "bit " + std::to_string(bit) + " flipped");
            changed[bit / 8] ^= mask;
        }
}

} // namespace wagemill::test
