#pragma once

#include "workbook/engine/Book.h"

#include <cstddef>
#include <span>
#include <vector>

namespace wagemill::engine::xls {

inline constexpr const char* summaryStreamName = "\x05SummaryInformation";
inline constexpr const char* documentSummaryStreamName = "\x05"
                                                         "DocumentSummaryInformation";

/// Puts the times of `properties` that are set in the place of those that a SummaryInformation stream holds
/// ([MS-OLEPS] 2.21, [MS-OSHARED] 2.3.3.2.1), and fills the section as the format wants it. A damaged stream stays as
/// it is.
void stampSummary(std::vector<std::byte>& stream, const DocumentProperties& properties);

/// A SummaryInformation stream; texts beyond ASCII are written as UTF-8 (code page 65001).
std::vector<std::byte> writeSummary(const DocumentProperties& properties);

/// A DocumentSummaryInformation stream that says nothing but its code page; programs expect one.
std::vector<std::byte> writeDocumentSummary();

} // namespace wagemill::engine::xls
