#pragma once

#include "tests/excel/server/Instructions.h"

#include <cstdint>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include <oleauto.h>

namespace wagemill::test {

/// What all objects of one served application share.
struct Server {
    Instructions instructions;
    /// Receives everything that is asked, a line each; several servers one after the other add to one file:
    ///   name Worksheet.Cells                                       a member was asked for
    ///   name Selection.PasteSpecial Paste                          an argument of it was
    ///   call Worksheet.Cells put(I2 4, I2 7) = TEXT 7.65%          get, put, call, or item: get with arguments
    ///   call Selection.PasteSpecial call(Paste:=I4 -4104, ...)
    std::ofstream log;
    int calls = 0;   ///< made so far
    int objects = 0; ///< that somebody refers to
};

/// The arguments of a call, by position from 0; named ones are at the position that their member gives them. Throws
/// std::invalid_argument when an argument is missing or of another type.
class CallArguments {
public:
    CallArguments(const DISPPARAMS& parameters, bool isPut);

    std::size_t count() const { return m_values.size(); }
    std::int32_t number(std::size_t position) const;
    bool flag(std::size_t position) const;
    std::string text(std::size_t position) const;
    /// The value that is put into a property.
    bool putFlag() const { return required(m_putValue, VT_BOOL).boolVal != VARIANT_FALSE; }
    std::string putText() const;

private:
    static const VARIANT& required(const VARIANT* value, VARTYPE type);
    const VARIANT& at(std::size_t position, VARTYPE type) const;

    std::map<std::size_t, const VARIANT*> m_values;
    const VARIANT* m_putValue = nullptr;
};

/// A member of a class: how it may be called, and what it does. `result` is empty at first.
struct Member {
    std::string name;
    WORD kinds;                             ///< DISPATCH_METHOD and so on
    std::vector<std::string> argumentNames; ///< those that may be named
    std::function<void(const CallArguments&, VARIANT& result)> run;
};

/// One object of the served application: answers by name what its table of members holds, and nothing else.
class AutomationObject final : public IDispatch {
public:
    AutomationObject(Server& server, std::string className, std::vector<Member> members);
    AutomationObject(const AutomationObject&) = delete;
    AutomationObject& operator=(const AutomationObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID locale, WORD kind, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override;

private:
    ~AutomationObject();
    HRESULT refusal(const Member& member, EXCEPINFO* exception);
    HRESULT run(const Member& member, const CallArguments& arguments, VARIANT* result, EXCEPINFO* exception);

    Server& m_server;
    std::string m_className;
    std::vector<Member> m_members;
    ULONG m_references = 1;
};

void setResult(VARIANT& result, std::int32_t number);
void setResult(VARIANT& result, std::string_view text);
/// Takes over the reference.
void setResult(VARIANT& result, AutomationObject* object);

} // namespace wagemill::test
