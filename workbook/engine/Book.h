#pragma once

#include "workbook/engine/CellStyle.h"
#include "workbook/engine/Sheet.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace wagemill::engine {

/// A failure of the engine, with a text for the user: what failed, on which file or cell, and why.
class EngineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A workbook that formulas may refer to ([MS-XLS] 2.4.271 SupBook): our own, an add-in, or another file.
struct SupportingBook {
    enum class Kind : std::uint8_t { Own, AddIn, Foreign };
    Kind kind = Kind::Own;
    KeptRecord record;                    ///< of a foreign book, as in the file
    std::vector<std::string> externNames; ///< counting from 1 in the tokens; the first are those of the records below
    std::vector<KeptRecord> kept;         ///< EXTERNNAME, XCT and CRN records after it, as in the file
};

/// What the sheet index of a token means ([MS-XLS] 2.4.105 ExternSheet): sheets `first` to `last` of a book. A negative
/// number is a sheet that is gone (-1) or the whole book (-2).
struct ExternSheet {
    std::uint16_t supportingBook = 0;
    std::int16_t first = 0;
    std::int16_t last = 0;

    bool operator==(const ExternSheet&) const = default;
};

/// Names that mean something to the application itself, in the order of their numbers in the file ([MS-XLS] 2.4.150
/// Lbl).
inline constexpr auto builtInNames = std::to_array<std::string_view>(
    {"Consolidate_Area", "Auto_Open", "Auto_Close", "Extract", "Database", "Criteria", "Print_Area", "Print_Titles",
     "Recorder", "Data_Form", "Auto_Activate", "Auto_Deactivate", "Sheet_Title", "_FilterDatabase"});

struct DefinedName {
    std::string name;
    std::optional<std::uint16_t> sheet; ///< the one sheet that knows it; none: the whole workbook
    Formula formula;
    KeptRecord record; ///< the LBL record as in the file; empty for a name of our own making
};

/// What a workbook of our own says about itself. One that was read keeps the streams it came with, under the times set
/// here. Times in 100 ns since 1 January 1601 UTC; 0 is not set.
struct DocumentProperties {
    std::string title;
    std::string author;
    std::string lastAuthor;
    std::string application;
    std::uint64_t created = 0;
    std::uint64_t saved = 0;
};

/// A stream or storage of the compound file beside the workbook, kept as it came.
struct KeptStream {
    std::vector<std::string> path; ///< names from the root down
    bool isStorage = false;
    std::vector<std::byte> data;
};

/// How often cells that read themselves are computed.
struct Iteration {
    bool isOn = false; ///< else they are 0
    std::uint16_t maxTurns = 100;
    double maxChange = 0.001; ///< what changes less is done

    bool operator==(const Iteration&) const = default;
};

/// One workbook.
class Book {
public:
    StyleTable styles;
    std::vector<std::unique_ptr<Sheet>> sheets;
    std::size_t activeSheet = 0;
    std::vector<SupportingBook> supportingBooks;
    std::vector<ExternSheet> externSheets;
    std::vector<DefinedName> names;
    DocumentProperties properties;
    Iteration iteration;
    bool dates1904 = false;       ///< serial day 0 is 1 January 1904
    bool isTemplate = false;      ///< of the file it was read from; a saved workbook is none
    std::vector<KeptRecord> kept; ///< records of the globals, in their order
    std::vector<KeptStream> keptStreams;
    std::vector<std::string> notices; ///< what was left out or cannot be recalculated, in the user's words

    /// A new sheet after the others. Throws EngineError when the name is taken or not allowed.
    Sheet& addSheet(std::string_view name);
    /// The position of the sheet of that name, without regard to case.
    std::optional<std::size_t> sheetIndex(std::string_view name) const;
    /// The active sheet, or the first one that is not hidden where that is; none where all are hidden.
    std::optional<std::size_t> visibleSheet() const;
    /// The workbook that a token's index means; null when the index is damaged.
    const SupportingBook* supportingBook(std::uint16_t externSheet) const;
    /// The index for tokens that refer to sheets of this book, added when missing.
    std::uint16_t externSheetFor(std::size_t first, std::size_t last);
    std::uint16_t externSheetFor(std::size_t sheet) { return externSheetFor(sheet, sheet); }
};

} // namespace wagemill::engine
