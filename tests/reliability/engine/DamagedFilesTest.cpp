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

Bytes resultOfThree()
{
    const TemporaryFolder folder;
    const ScopedEnvironment temporary("TEMP", folder.path().string());
    const auto cases = buildCases();
    const auto three = std::ranges::find(cases, "employees-3", &BuildCase::name);
    return readBytesFromFile(EmbeddedBuilds().build(three->data).workbook);
}

Bytes subject(const std::string& name)
{
    const auto templateBytes = payrollTemplateFile();
    return name == "result" ? resultOfThree() : Bytes(templateBytes.begin(), templateBytes.end());
}

class DamagedFiles : public testing::TestWithParam<const char*> {
protected:
    static void tryInTime(std::span<const std::byte> file, const std::string& damage)
    {
        const double start = secondsUsed();
        ASSERT_NO_THROW(openRecalculateWrite(file)) << damage;
        ASSERT_LT(secondsUsed() - start, maxSeconds) << damage;
    }

    void TearDown() override { EXPECT_LT(peakMegabytes(), maxMegabytes); }

    const Bytes m_whole = subject(GetParam());
};

} // namespace

TEST_P(DamagedFiles, EveryPrefixAndEveryPrefixOfTheRecordsIsReadOrRefused)
{
    ASSERT_EQ(openRecalculateWrite(m_whole).refusal, "");
    const std::size_t step = shortOrLong<std::size_t>(WAGEMILL_SANITIZED ? 17 : 7, 1);
    for (std::size_t size = 0; size < m_whole.size(); size += size < 600 ? 1 : step)
        tryInTime(std::span(m_whole).first(size), "cut off after " + std::to_string(size) + " bytes");
    const auto streams = engine::xls::readCompoundFile(m_whole);
    const Bytes& stream =
        std::ranges::find(streams, std::vector<std::string>{"Workbook"}, &engine::KeptStream::path)->data;
    for (std::size_t size = 0; size < stream.size(); size += step) {
        // in a container of its own, so that its end is the end of the records
        const engine::KeptStream cut{
            {"Workbook"}, false, {stream.begin(), std::next(stream.begin(), static_cast<std::ptrdiff_t>(size))}};
        tryInTime(engine::xls::writeCompoundFile(std::span(&cut, 1)),
                  "records cut off after " + std::to_string(size) + " bytes");
    }
}

TEST_P(DamagedFiles, EveryFlippedBitIsReadOrRefused)
{
    const std::size_t step =
        shortOrLong<std::size_t>(WAGEMILL_SANITIZED ? 307 : 7, 1); // primes: no bit of a byte is left out
    Bytes changed = m_whole;
    for (std::size_t bit = 0; bit < changed.size() * 8; bit += step) {
        const auto mask = static_cast<std::byte>(1U << bit % 8);
        changed[bit / 8] ^= mask;
        tryInTime(changed, "bit " + std::to_string(bit) + " flipped");
        changed[bit / 8] ^= mask;
    }
}

INSTANTIATE_TEST_SUITE_P(, DamagedFiles, testing::Values("template", "result"),
                         [](const auto& subject) { return std::string(subject.param); });

} // namespace wagemill::test
