#include "workbook/excel/FailureText.h"

#include "app/base/WindowsText.h"

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
constexpr std::string_view busy = "Excel is busy with something else. Please close any message or dialog that it shows";

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
    {RPC_E_CALL_REJECTED, busy},
    {RPC_E_SERVERCALL_REJECTED, busy},
    {RPC_E_SERVERCALL_RETRYLATER, busy},
    {RPC_E_CANTCALLOUT_ININPUTSYNCCALL, busy},
});

std::string reasonOf(HRESULT result)
{
    const auto known = std::ranges::find(reasons, result, &Reason::result);
    return known == reasons.end() ? systemErrorText(static_cast<unsigned long>(result)) : std::string(known->text);
}

std::string descriptionIn(const EXCEPINFO& exception)
{
    if (exception.bstrDescription == nullptr)
        return {};
    return toUtf8({exception.bstrDescription, ::SysStringLen(exception.bstrDescription)});
}

} // namespace

std::string failureText(std::string_view member, HRESULT result)
{
    return "Excel failed at \"" + std::string(member) + "\": " + reasonOf(result) + ".";
}

std::string failureText(std::string_view member, HRESULT result, EXCEPINFO& exception)
{
    if (result != DISP_E_EXCEPTION)
        return failureText(member, result);
    if (exception.pfnDeferredFillIn != nullptr)
        exception.pfnDeferredFillIn(&exception);
    const std::string description = descriptionIn(exception);
    if (!description.empty())
        return description;
    return failureText(member, FAILED(exception.scode) ? exception.scode : result);
}

} // namespace wagemill::automation
