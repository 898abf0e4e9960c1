#include "workbook/Excel1.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Files.h"

namespace wagemill {

namespace {

constexpr int maxAttempts = 1000;

/// Writes the picture in its own format, whole or not at all. A file or link that was there is replaced.
void SavePicture(const std::optional<Picture>& picture, const std::filesystem::path& path)
{
    if (!picture)
        throw std::runtime_error("Cannot write the picture \"" + path.string() +
                                 "\": the clipboard gave no picture. Another program may be holding it.");
    writeWholeFile(*picture->fileBytes, path, FileLife::Temporary);
}

} // namespace

void saveCellsActivesheet(Workbook* workbook, const std::filesystem::path& path, PictureClipboard& clipboard)
{
    ErrorTrap trap("Excel1.saveCellsActivesheet");
    std::unique_ptr<Worksheet> activeSheet;
    const auto sheet = [&]() -> Worksheet& { return present(activeSheet, "active sheet"); };
    std::int32_t lastRow = 0;
    trap.step(10, [&] { activeSheet = present(workbook, "workbook").ActiveSheet(); });
    trap.step(20, [&] {
        const auto rows = sheet().UsedRange()->Rows();
        lastRow = sheet().UsedRange()->Rows(rows->count())->Row();
    });
    trap.step(30, [&] {
        const auto columns = sheet().UsedRange()->Columns();
        sheet().UsedRange()->Columns(columns->count())->Column();
    });
    if (lastRow <= 1)
        return; // an empty sheet has no picture
    std::optional<Picture> picture;
    trap.step(40, [&] { sheet().Name(); });
    trap.step(50, [&] { sheet().UsedRange()->CopyPicture(); });
    trap.step(60, [&] { picture = getClipboardPicture(clipboard, 0); });
    trap.step(70, [&] { SavePicture(picture, path); });
}

std::optional<Picture> getClipboardPicture(PictureClipboard& clipboard, std::int16_t format)
{
    for (int attempt = 0; attempt < maxAttempts; ++attempt) {
        try {
            return clipboard.GetData(format);
        } catch (const std::exception&) {
            continue; // not there yet
        }
    }
    return std::nullopt;
}

} // namespace wagemill
