#include "resources/TemplateDescription.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

using namespace wagemill;
using namespace wagemill::test;

namespace {

TEST(TemplateDescription, NamesFileAndLineOfWhatIsWrong)
{
    const TemporaryFolder folder;
    std::ofstream(folder / "workbook.txt") << "color accent 1B4F72\n"
                                              "sheet \"Stub\" stub.txt\n";
    const struct {
        const char* line;
        const char* problem; ///< the beginning of it
    } cases[] = {
        {"putt B2 5", "\"putt\" is not known here"},
        {"put B2 \"open", "a text or its closing quote is missing"},
        {"put B2 \"text\" more", "\"more\" is too much"},
        {"put B2 many", "a word is missing or is not a number"},
        {"put ZZ9 5", "\"ZZ9\" is not a cell or an area"},
        {"put B2 =SUM(", "\"=SUM(\" cannot be read"},
        {"look B2", "a word is missing"},
        {"look B2 ink red", "\"red\" is not known here"},
        {"page-breaks 49 48", "a word is missing or is not a number"},
    };
    for (const auto& [line, problem] : cases) {
        std::ofstream(folder / "stub.txt") << "# a remark\n\n" << line << "\n";
        const std::string failure = failureOf([&] { describedWorkbook(folder.path()); });
        EXPECT_TRUE(failure.starts_with(std::string("stub.txt, line 3: ") + problem)) << line << ": " << failure;
    }
    std::filesystem::remove(folder / "stub.txt");
    EXPECT_NE(failureOf([&] { describedWorkbook(folder.path()); }).find("stub.txt"), std::string::npos);
}

} // namespace
