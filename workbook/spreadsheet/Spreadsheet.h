#pragma once

#include "app/base/Interface.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace wagemill {

/// A member of the spreadsheet application that failed; what() is the application's own description.
class SpreadsheetError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The spreadsheet application's own numbers for the arguments we pass.
enum class FileFormat : std::int32_t { Excel8 = 56, WorkbookNormal = -4143 };
enum class PasteType : std::int32_t { All = -4104 };
enum class PasteOperation : std::int32_t { None = -4142 };

/// What we ask of the spreadsheet application, under its own member names, "Put" before a property that is written.
/// Rows, columns, workbooks and sheets count from 1, paths and texts are UTF-8. A member that fails throws
/// SpreadsheetError. Objects stay valid after what they belong to is closed; their members then fail.
class CellRange : public Interface {
public:
    virtual std::unique_ptr<CellRange> Rows() = 0;    ///< the range as rows; its count is their number
    virtual std::unique_ptr<CellRange> Columns() = 0; ///< the range as columns
    virtual std::unique_ptr<CellRange> Rows(std::int32_t index) = 0;
    virtual std::unique_ptr<CellRange> Columns(std::int32_t index) = 0;
    virtual std::int32_t count() = 0;
    virtual std::int32_t Row() = 0;    ///< number of the first row
    virtual std::int32_t Column() = 0; ///< number of the first column
    virtual void Select() = 0;
    /// Puts a picture of the range, as on screen, on the application's clipboard.
    virtual void CopyPicture() = 0;
};

/// What is selected in the application.
class Selection : public Interface {
public:
    virtual void Copy() = 0;
    virtual void PasteSpecial(PasteType paste, PasteOperation operation, bool skipBlanks, bool transpose) = 0;
};

class Worksheet : public Interface {
public:
    virtual std::string Name() = 0;
    virtual void Activate() = 0;
    virtual std::unique_ptr<CellRange> Rows(std::string_view address) = 0;  ///< whole rows, "2:12"
    virtual std::unique_ptr<CellRange> Range(std::string_view address) = 0; ///< "A14"
    virtual std::unique_ptr<CellRange> UsedRange() = 0;
    /// Puts `text` into a cell as if a user typed it: "7.65%" becomes 0.0765, "" clears the cell.
    virtual void PutCells(std::int32_t row, std::int32_t column, std::string_view text) = 0;
};

class Workbook : public Interface {
public:
    virtual std::unique_ptr<Worksheet> Sheets(std::int32_t index) = 0;
    virtual std::unique_ptr<Worksheet> ActiveSheet() = 0;
    virtual void SaveAs(std::string_view path, FileFormat fileFormat) = 0;
    virtual void Close() = 0;
};

class Workbooks : public Interface {
public:
    virtual std::unique_ptr<Workbook> Open(std::string_view path) = 0;
    /// Opens with UpdateLinks omitted and ReadOnly = True.
    virtual std::unique_ptr<Workbook> OpenReadOnly(std::string_view path) = 0;
    virtual std::int32_t count() = 0;
};

/// One session with a spreadsheet application.
class Application : public Interface {
public:
    virtual std::string Version() = 0; ///< such as "16.0"
    virtual std::unique_ptr<wagemill::Workbooks> Workbooks() = 0;
    virtual std::unique_ptr<Workbook> Workbooks(std::int32_t index) = 0;
    virtual std::unique_ptr<wagemill::Selection> Selection() = 0;
    virtual std::unique_ptr<CellRange> Range(std::string_view address) = 0; ///< of the active sheet
    virtual void PutVisible(bool visible) = 0;
    virtual void PutDisplayAlerts(bool displayAlerts) = 0;
    virtual void Quit() = 0;
};

/// A picture as its own file format holds it: the bytes of a drawing, .bmp or .emf file.
struct Picture {
    std::shared_ptr<const std::vector<std::byte>> fileBytes; ///< never null; shared, because they may be many
};

/// The clipboard to which a spreadsheet application copies pictures.
class PictureClipboard : public Interface {
public:
    /// The picture in `format`, 0 for whatever picture format there is. Throws SpreadsheetError while there is none.
    virtual Picture GetData(std::int16_t format) = 0;
};

} // namespace wagemill
