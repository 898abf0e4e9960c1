#pragma once

#include "workbook/engine/Book.h"

#include <vector>

namespace wagemill::engine::xls {

/// Puts the times of `properties` that are set in the place of those that the SummaryInformation stream holds
/// ([MS-OLEPS] 2.21, [MS-OSHARED] 2.3.3.2.1), and fills its section as the format wants it; a damaged one stays as it
/// is. A workbook without one is given one with these properties, and a DocumentSummaryInformation stream, which
/// programs expect.
void putProperties(std::vector<KeptStream>& streams, const DocumentProperties& properties);

} // namespace wagemill::engine::xls
