#pragma once

#include "app/base/text/WideText.h"
#include "tests/support/ComObject.h"

#include <string>
#include <vector>

#include <oleauto.h>

namespace wagemill::test {

/// An automation object that writes down how it is called and answers as the test wants. Nobody deletes it.
class FakeDispatch final : public ComObject<IDispatch> {
public:
    /// "name SaveAs", and "2 method text(a.xls) number(7)" with the identifier of the member.
    std::vector<std::string> calls;
    int timesRejected = 0; ///< how many calls are rejected before the first that is answered
    HRESULT rejection = RPC_E_CALL_REJECTED;
    HRESULT nameResult = S_OK;
    HRESULT callResult = S_OK;
    EXCEPINFO exception = {}; ///< given away with the next call
    VARIANT value = {};

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override
    {
        calls.push_back("name " + toUtf8(names[0]));
        ids[0] = 1;
        return timesRejected-- > 0 ? rejection : nameResult;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD kind, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* given, UINT*) override
    {
        calls.push_back(std::to_string(member) + kindText(kind, *parameters) + argumentsText(*parameters));
        if (timesRejected-- > 0)
            return rejection;
        *given = exception;
        if (result != nullptr && SUCCEEDED(callResult))
            *result = value;
        return callResult;
    }

private:
    static std::string kindText(WORD kind, const DISPPARAMS& parameters)
    {
        const bool namesValue = parameters.cNamedArgs == 1 && parameters.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
        if (kind == DISPATCH_PROPERTYPUT && namesValue)
            return " put";
        return parameters.cNamedArgs != 0 ? " named" : kind == DISPATCH_PROPERTYGET ? " get" : " method";
    }

    /// The arguments in the order of their call; automation hands them over last first.
    static std::string argumentsText(const DISPPARAMS& parameters)
    {
        std::string text;
        for (UINT index = parameters.cArgs; index-- > 0;)
            text += " " + argumentText(parameters.rgvarg[index]);
        return text;
    }

    static std::string argumentText(const VARIANT& argument)
    {
        switch (argument.vt) {
        case VT_BSTR:
            return "text(" + toUtf8({argument.bstrVal, ::SysStringLen(argument.bstrVal)}) + ")";
        case VT_I4:
            return "number(" + std::to_string(argument.lVal) + ")";
        case VT_BOOL:
            return argument.boolVal == VARIANT_TRUE ? "true" : "false";
        default:
            return "type " + std::to_string(argument.vt);
        }
    }
};

} // namespace wagemill::test
