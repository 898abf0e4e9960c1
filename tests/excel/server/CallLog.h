#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace wagemill::test {

/// Everything that reached a served application, a line each; several servers one after the other add to one file.
///   name Worksheet.Cells                                       a member was asked for
///   name Selection.PasteSpecial Paste                          an argument of it was
///   call Worksheet.Cells put(I2 4, I2 7) = TEXT 7.65%          get, put, call, or item: get with arguments
///   call Selection.PasteSpecial call(Paste:=I4 -4104, ...)
/// A line break within a text is a blank.
class CallLog {
public:
    /// file  empty: nothing is written
    explicit CallLog(const std::filesystem::path& file);

    void add(std::string line);

private:
    std::ofstream m_file;
};

} // namespace wagemill::test
