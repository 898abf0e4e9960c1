#include "preview/FileCopy.h"

#include "app/base/Files.h"

#include <stdexcept>
#include <string>
#include <system_error>

namespace wagemill {

namespace fs = std::filesystem;

bool isSameFile(const fs::path& one, const fs::path& other)
{
    std::error_code error;
    return fs::equivalent(one, other, error) && !error && !fs::is_symlink(fs::symlink_status(one, error)) &&
           !fs::is_symlink(fs::symlink_status(other, error)) && fs::hard_link_count(one, error) == 1;
}

void copyFile(const fs::path& from, const fs::path& to)
{
    if (isSameFile(from, to))
        throw std::runtime_error("The workbook cannot be saved as \"" + to.string() +
                                 "\": that is the temporary workbook itself, which is deleted when you leave. Please "
                                 "choose another name.");
    try {
        writeWholeFile(readOwnFile(from), to, FileLife::Kept);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("Cannot copy the file \"" + from.string() + "\" to \"" + to.string() + "\". " +
                                 error.what());
    }
}

} // namespace wagemill
