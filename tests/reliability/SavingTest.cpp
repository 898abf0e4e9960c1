#include "tests/reliability/FailingFiles.h"

#include "app/base/Files.h"
#include "preview/Form2.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/TemporaryFolder.h"

#include <QAbstractButton>

#include <gtest/gtest.h>

using namespace wagemill;
using namespace wagemill::test;
namespace fs = std::filesystem;

namespace {

class SavingTest : public testing::Test {
protected:
    SavingTest() { writeBytesToFile(saved, workbook); }

    /// Presses "Save Results To Excel File" and names `target`: the texts of the message boxes.
    std::vector<std::string> save(const fs::path& target)
    {
        messages.shown.clear();
        Form2 preview([] {}, [&](auto&&...) { return target; });
        preview.setExcelFile(workbook);
        preview.findChild<QAbstractButton*>("PushButton6")->click();
        return messages.texts();
    }

    TemporaryFolder folder;
    RecordedMessages messages;
    fs::path workbook = folder / "kvarno12345678.xls";
    fs::path documents = folder / "documents";
    std::vector<std::byte> saved = std::vector<std::byte>(200'000, std::byte{7});
};

TEST_F(SavingTest, SaysWhyItFailedBeforeDone)
{
    fs::create_directories(documents / "folder.xls");
    const std::pair<fs::path, const char*> cases[] = {
        {documents / "vanished" / "payroll.xls", "No such file or directory"},
        {documents / "folder.xls", "directory"},
        {workbook, "the temporary workbook itself"},
        {documents / "folder.xls" / ".." / ".." / workbook.filename(), "the temporary workbook itself"},
        {documents / (std::string(300, 'x') + ".xls"), "name too long"},
    };
    for (const auto& [target, reason] : cases) {
        const auto texts = save(target);
        ASSERT_GE(texts.size(), 2U) << target;
        EXPECT_EQ(texts.back(), "Done.");
        const std::string& failure = texts[texts.size() - 2];
        EXPECT_NE(failure.find(reason), std::string::npos) << failure;
        EXPECT_NE(failure.find("Form2.PushButton6_Click at line 47"), std::string::npos) << failure;
        EXPECT_TRUE(fs::is_empty(documents / "folder.xls"));
        EXPECT_EQ(readOwnFile(workbook), saved) << target;
    }
}

TEST_F(SavingTest, OntoALinkToTheTemporaryWorkbookMakesACopyOfItsOwn)
{
    fs::create_directory(documents);
    const fs::path symbolic = documents / "symbolic.xls";
    const fs::path hard = documents / "hard.xls";
    fs::create_symlink(workbook, symbolic);
    EXPECT_EQ(save(symbolic).size(), 2U); // the question whether to overwrite it, and "Done."
    fs::create_hard_link(workbook, hard);
    EXPECT_EQ(save(hard).size(), 2U);
    fs::remove(workbook);
    EXPECT_EQ(readOwnFile(symbolic), saved);
    EXPECT_EQ(readOwnFile(hard), saved);
}

TEST_F(SavingTest, LeavesTheChosenNameWholeOrUnusedAtWhateverCallTheDiskFails)
{
    std::vector<std::string> texts;
    failAtEveryCall(
        documents,
        [&] {
            fs::remove_all(documents);
            fs::create_directory(documents);
        },
        [&] { texts = save(documents / "payroll.xls"); },
        [&](Fault fault) {
            const bool isReported = texts.size() == 2;
            EXPECT_EQ(texts.back(), "Done.");
            EXPECT_EQ(fileExists(documents / "payroll.xls"), !isReported);
            if (!isReported) {
                EXPECT_EQ(readOwnFile(documents / "payroll.xls"), saved);
            } else if (fault == Fault::Full) {
                EXPECT_TRUE(fs::is_empty(documents));
            }
        });
}

} // namespace
