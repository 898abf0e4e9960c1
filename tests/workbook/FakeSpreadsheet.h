#pragma once

#include "workbook/sessions/Session.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace wagemill::test {

/// A spreadsheet application that writes down what it is asked, "1.Sheets(3).Activate" with the number of the session
/// in front, and fails where the test wants it to.
struct FakeSpreadsheet {
    std::vector<std::string> calls;
    /// Whether the call that is about to be made, counting from 1, fails.
    std::function<bool(int)> fails = [](int) { return false; };
    std::string version = "16.0";
    std::int32_t lastRow = 12;
    int sessions = 0;

    void call(const std::string& text);
    SpreadsheetPlatform platform();

    /// Clipboard: fails so many times, then gives a picture file of these bytes.
    int emptyFetches = 0;
    std::vector<std::byte> pictureBytes = {std::byte{'B'}, std::byte{'M'}, std::byte{0}};
    int fetches = 0;

private:
    struct Clipboard : PictureClipboard {
        explicit Clipboard(FakeSpreadsheet& fake) : m_fake(fake) {}
        Picture GetData(std::int16_t format) override;
        FakeSpreadsheet& m_fake;
    };
    Clipboard m_clipboard{*this};
};

} // namespace wagemill::test
