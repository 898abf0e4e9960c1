#pragma once

#include <string>
#include <string_view>

#include <windows.h>

#include <oleauto.h>

namespace wagemill::automation {

/// What the user reads when the application failed at a member: "Excel failed at "Sheets": there is no item of that
/// number or name."
std::string failureText(std::string_view member, HRESULT result);

/// The same for a call that ended with `exception`: the application's own description where there is one. Asks for
/// what the application left to be filled in later.
std::string failureText(std::string_view member, HRESULT result, EXCEPINFO& exception);

} // namespace wagemill::automation
