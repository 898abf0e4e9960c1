#include "workbook/excel/FailureText.h"

#include "app/base/WindowsErrors.h"

#include <algorithm>
#include <array>

namespace wagemill::automation {

namespace {

struct Reason {
    HRESULT result;
    std::string_view text;
};

/// "An error that the object describes", without a description.
constexpr auto undescribedFailure = static_cast<HRESULT>(0x800A03EC);

constexpr std::string_view ended = "Excel has ended, or its process no longer answers";
constexpr std::string_view busy =
    "Excel is busy. Please finish what you are doing in Excel, close any message or dialog "
    "that it shows, and make the workbook again";

/// What the system says of these is meant for programmers.
constexpr auto reasons = std::to_array<Reason>({
    {DISP_E_UNKNOWNNAME, "this version of Excel does not know it"},
    {DISP_E_MEMBERNOTFOUND, "this version of Excel does not know it"},
    {DISP_E_BADPARAMCOUNT, "this version of Excel wants other arguments"},
    {DISP_E_PARAMNOTFOUND, "this version of Excel wants other arguments"},
    {DISP_E_PARAMNOTOPTIONAL, "this version of Excel wants other arguments"},
    {DISP_E_NONAMEDARGS, "this version of Excel wants other arguments"},
    {DISP_E_TYPEMISMATCH, "Excel cannot use the value"},
    {DISP_E_OVERFLOW, "the number is too large"},
    {DISP_E_BADINDEX, "there is no item of that number or name"},
    {DISP_E_EXCEPTION, "Excel gives no reason"},
    {undescribedFailure, "Excel refuses it and gives no reason"},
    {TYPE_E_INVDATAREAD, "Excel lacks the language pack of your regional format. Please install it, or choose the "
                         "regional format of Excel's own language in the settings of Windows"},
    {E_FAIL, "Excel gives no reason"},
    {E_UNEXPECTED, "Excel gives no reason"},
    {E_OUTOFMEMORY, "there is not enough memory"},
    {E_ACCESSDENIED, "access to Excel is denied"},
    {E_NOINTERFACE, "what answers as Excel cannot be automated"},
    {CO_E_CLASSSTRING, "Excel is not installed on this computer"},
    {REGDB_E_CLASSNOTREG, "Excel is not installed on this computer"},
    {CO_E_SERVER_EXEC_FAILURE, "Excel did not start"},
    {CO_E_APPNOTFOUND, "Excel did not start"},
    {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), "the program file of Excel is missing"},
    {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), ended},
    {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED), ended},
    {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED_DNE), ended},
    {RPC_E_DISCONNECTED, ended},
    {RPC_E_SERVER_DIED, ended},
    {RPC_E_SERVER_DIED_DNE, ended},
    {RPC_E_SERVERFAULT, ended},
    {CO_E_OBJNOTCONNECTED, ended},
    {RPC_E_SERVERCALL_REJECTED, busy},
    {RPC_E_CANTCALLOUT_ININPUTSYNCCALL, busy},
});

std::string reasonOf(HRESULT result)
{
    if (isRejected(result))
        return std::string(busy);
    const auto known = std::ranges::find(reasons, result, &Reason::result);
    return known == reasons.end() ? systemErrorText(static_cast<unsigned long>(result)) : std::string(known->text);
}

} // namespace

std::string failureText(std::string_view place, const CallFailure& failure)
{
    const std::string_view description = failure.what();
    if (!description.empty() && !isRejected(failure.result))
        return std::string(description);
    return "Excel failed at " + std::string(place) + ": " + reasonOf(failure.result) + ".";
}

} // namespace wagemill::automation
