// Memory runs out at the N-th allocation, once or for good, while a workbook is opened, filled, computed and saved: an
// error is thrown or all goes well, and nothing is lost.

#include "app/base/Files.h"
#include "resources/CustomResource.h"
#include "tests/support/LongForm.h"
#include "tests/support/TemporaryFolder.h"
#include "workbook/embedded/EmbeddedApplication.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>

namespace {

enum class Shortage { Once, ForGood };

long allocationsLeft = -1; // until memory runs out; negative: it never does
Shortage shortage = Shortage::Once;
bool hasRunOut = false;
long blocksInUse = 0;

void* allocate(std::size_t size)
{
    if (allocationsLeft == 0) {
        hasRunOut = true;
        if (shortage == Shortage::Once)
            allocationsLeft = -1;
        throw std::bad_alloc();
    }
    if (allocationsLeft > 0)
        --allocationsLeft;
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr)
        throw std::bad_alloc();
    ++blocksInUse;
    return block;
}

void release(void* block)
{
    if (block == nullptr)
        return;
    --blocksInUse;
    std::free(block);
}

} // namespace

// The library's operators of arrays call these.
void* operator new(std::size_t size)
{
    return allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* block) noexcept
{
    release(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept
{
    release(block);
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

/// Sets what was thrown; empty when it went well.
void attemptWith(long allocations, Shortage kind, const std::string& workbook, const std::string& result,
                 std::string& error)
{
    error.clear();
    hasRunOut = false;
    shortage = kind;
    allocationsLeft = allocations;
    try {
        openFillAndSave(workbook, result);
    } catch (const std::exception& thrown) {
        error.append(thrown.what(), std::min(std::strlen(thrown.what()), error.capacity()));
    }
    allocationsLeft = -1;
}

} // namespace

TEST(AllocationFailure, IsAnErrorOrHarmless)
{
    const TemporaryFolder folder;
    const std::string workbook = folder / "template.xlt";
    const std::string result = folder / "result.xls";
    writeBytesToFile(customResource(payrollTemplateResource), workbook);
    openFillAndSave(workbook, result); // what is made once for all
    const std::vector<std::byte> whole = readBytesFromFile(result);

    std::string error;
    error.reserve(255); // it is filled when there is no memory
    for (const Shortage kind : {Shortage::Once, Shortage::ForGood}) {
        const long step = shortOrLong(WAGEMILL_SANITIZED ? 7 : 1, 1);
        long tried = 0;
        long refused = 0;
        for (long allocations = 0;; allocations += step, ++tried) {
            deleteFileQuietly(result);
            const long before = blocksInUse;
            attemptWith(allocations, kind, workbook, result, error);
            ASSERT_LE(blocksInUse, before) << "after allocation " << allocations << ": " << error;
            if (!hasRunOut)
                break;
            if (error.empty()) {
                EXPECT_EQ(readBytesFromFile(result).size(), whole.size()) << "after allocation " << allocations;
                continue;
            }
            ++refused;
            const bool isPlain = kind == Shortage::ForGood || error == "std::bad_alloc";
            EXPECT_TRUE(isPlain || error.find("memory") != std::string::npos) << error;
        }
        EXPECT_GT(refused, 100);
        std::cout << tried << " shortages, " << refused << " of them an error\n";
    }
}

} // namespace wagemill::test
