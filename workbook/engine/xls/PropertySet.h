#pragma once

#include "workbook/engine/Book.h"

#include <cstddef>
#include <span>
#include <vector>

namespace wagemill::engine::xls {

inline constexpr const char* summaryStreamName = "\x05SummaryInformation";
inline constexpr const char* documentSummaryStreamName = "\x05"
                                                         "DocumentSummaryInformation";

/// Takes title, authors, application and times from a SummaryInformation stream ([MS-OLEPS] 2.21,
/// [MS-OSHARED] 2.3.3.2.1). What is damaged or of another type is left as it was. Texts are read in code pages 1200,
/// 1252 and 65001; in another one, what lies beyond ASCII is read as 1252.
void readSummary(std::span<const std::byte> stream, DocumentProperties& properties);

/// A SummaryInformation stream: texts in code page 1252 where it has all their characters, else in 65001 (UTF-8).
std::vector<std::byte> writeSummary(const DocumentProperties& properties);

/// A DocumentSummaryInformation stream that says nothing but its code page; programs expect one.
std::vector<std::byte> writeDocumentSummary();

} // namespace wagemill::engine::xls
