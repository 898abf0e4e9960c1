#pragma once

#include "app/base/Dispatch.h"

#include <string>
#include <string_view>

namespace wagemill::automation {

/// What the user reads when Excel failed at `place`, a cell or a member in quotes: Excel's own description where there
/// is one, else "Excel failed at "Sheets": there is no item of that number or name."
std::string failureText(std::string_view place, const CallFailure& failure);

} // namespace wagemill::automation
