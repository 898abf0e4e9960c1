#include "preview/FileCopy.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace wagemill {

namespace {

namespace fs = std::filesystem;

void put(const fs::path& file, const std::string& content)
{
    std::ofstream(file, std::ios::binary) << content;
}

std::string contentOf(const fs::path& file)
{
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return content.str();
}

std::ptrdiff_t filesIn(const fs::path& folder)
{
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

} // namespace

TEST(CopyFile, CopiesEveryByteAndLeavesNothingElse)
{
    const test::TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{64 * 1024}, std::size_t{200'001}}) {
        std::string content(size, '\0');
        for (std::size_t index = 0; index < size; ++index)
            content[index] = static_cast<char>(index * 7);
        put(folder / "from", content);
        copyFile(folder / "from", folder / "to");
        EXPECT_EQ(contentOf(folder / "to"), content) << size << " bytes";
        EXPECT_EQ(filesIn(folder.path()), 2);
    }
}

TEST(CopyFile, OntoItselfFailsAndKeepsTheFileWhileALinkToItBecomesACopy)
{
    const test::TemporaryFolder folder;
    fs::create_directory(folder / "inside");
    put(folder / "workbook", "figures");
    for (const char* itself : {"workbook", "inside/../workbook"}) {
        EXPECT_TRUE(isSameFile(folder / itself, folder / "workbook"));
        EXPECT_THROW(copyFile(folder / "workbook", folder / itself), std::runtime_error);
    }
    fs::create_symlink(folder / "workbook", folder / "link");
    EXPECT_FALSE(isSameFile(folder / "link", folder / "workbook"));
    copyFile(folder / "workbook", folder / "link");
    fs::remove(folder / "workbook");
    EXPECT_EQ(contentOf(folder / "link"), "figures");
}

TEST(CopyFile, FailsWithBothNamesAndTheReasonAndLeavesNothing)
{
    const test::TemporaryFolder folder;
    put(folder / "from", "figures");
    fs::create_directory(folder / "taken");
    put(folder / "taken/inside", "");
    struct {
        const char* from;
        const char* to;
        const char* reason;
    } const cases[] = {
        {"missing", "to", "No such file"},
        {"from", "nowhere/to", "No such file"},
        {"taken", "to", "not a plain file"},
        {"from", "taken", "directory"},
    };
    for (const auto& [from, to, reason] : cases) {
        try {
            copyFile(folder / from, folder / to);
            ADD_FAILURE() << from << " to " << to << " did not fail";
        } catch (const std::runtime_error& error) {
            const std::string text = error.what();
            for (const std::string& part : {(folder / from).string(), (folder / to).string(), std::string(reason)})
                EXPECT_NE(text.find(part), std::string::npos) << text << "\nlacks " << part;
        }
        EXPECT_EQ(filesIn(folder.path()), 2) << from << " to " << to;
    }
}

} // namespace wagemill
