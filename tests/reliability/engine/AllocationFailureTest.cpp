// Memory runs out at the N-th allocation, once or for good, while a workbook is opened, filled, computed and saved: an
// error is thrown or all goes well, and nothing is lost.

#include "app/base/Files.h"
#include "resources/PayrollTemplate.h"
#include "tests/support/LongForm.h"
#include "tests/support/TemporaryFolder.h"
#include "workbook/embedded/EmbeddedApplication.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

long allocationsLeft = -1; // until memory runs out; negative: it never does
bool runsOutForGood = false;
bool hasRunOut = false;
long blocksInUse = 0;

void* allocate(std::size_t size)
{
    hasRunOut = hasRunOut || allocationsLeft == 0;
    void* const block = allocationsLeft == 0 ? nullptr : std::malloc(std::max<std::size_t>(size, 1));
    if (allocationsLeft > 0 || (allocationsLeft == 0 && !runsOutForGood))
        --allocationsLeft;
    blocksInUse += block == nullptr ? 0 : 1;
    return block;
}

} // namespace

// The library's operators of arrays call these.
void* operator new(std::size_t size)
{
    if (void* const block = allocate(size))
        return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return allocate(size);
}
void operator delete(void* block) noexcept
{
    blocksInUse -= block == nullptr ? 0 : 1;
    std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept
{
    operator delete(block);
}

namespace wagemill::test {

namespace {

/// What a build asks of the engine, the picture apart.
void openFillAndSave(const std::string& workbook, const std::string& result)
{
    EmbeddedPictureClipboard clipboard;
    EmbeddedApplication application({}, clipboard);
    application.PutDisplayAlerts(false);
    const auto book = application.Workbooks()->OpenReadOnly(workbook);
    for (const auto& [column, text] :
         {std::pair(2, "E7"), {3, "Ann \xC3\xA9"}, {4, "$15.00"}, {7, "7.65%"}, {5, "=SUM(D4:D9)"}})
        book->Sheets(1)->PutCells(4, column, text);
    book->Sheets(3)->Activate();
    book->Sheets(3)->Rows("2:12")->Select();
    application.Selection()->Copy();
    book->Sheets(3)->Range("A14")->Select();
    application.Selection()->PasteSpecial(PasteType::All, PasteOperation::None, false, false);
    book->SaveAs(result, FileFormat::Excel8);
    book->Close();
    application.Quit();
}

} // namespace

TEST(AllocationFailure, IsAnErrorOrHarmless)
{
    const TemporaryFolder folder;
    const std::string workbook = folder / "template.xlt";
    const std::string result = folder / "result.xls";
    writeBytesToFile(payrollTemplateFile(), workbook);
    openFillAndSave(workbook, result); // what is made once for all
    const std::vector<std::byte> whole = readBytesFromFile(result);

    std::string error;
    error.reserve(255); // it is filled when there is no memory
    for (const bool forGood : {false, true}) {
        const long step = shortOrLong(WAGEMILL_SANITIZED ? 7 : 1, 1);
        long refused = 0;
        hasRunOut = true;
        for (long allocations = 0; hasRunOut; allocations += step) {
            deleteFileQuietly(result);
            error.clear();
            const long before = blocksInUse;
            hasRunOut = false;
            runsOutForGood = forGood;
            allocationsLeft = allocations;
            try {
                openFillAndSave(workbook, result);
            } catch (const std::exception& thrown) {
                error.append(thrown.what(), std::min(std::strlen(thrown.what()), error.capacity()));
            }
            allocationsLeft = -1;
            ASSERT_LE(blocksInUse, before) << "after allocation " << allocations << ": " << error;
            if (error.empty()) {
                EXPECT_EQ(readBytesFromFile(result).size(), whole.size()) << "after allocation " << allocations;
                continue;
            }
            ++refused;
            EXPECT_TRUE(forGood || error == "std::bad_alloc" || error.find("memory") != std::string::npos) << error;
        }
        EXPECT_GT(refused, 100);
    }
}

} // namespace wagemill::test
