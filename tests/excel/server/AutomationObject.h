#pragma once

#include "app/base/Dispatch.h"
#include "app/base/text/WideText.h"
#include "tests/excel/server/Instructions.h"
#include "tests/support/ComObject.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace wagemill::test {

/// A parameter for which the caller leaves the argument out.
struct Omitted {};

/// An argument of a call, which must be of the very type that its member takes.
class Argument {
public:
    explicit Argument(const VARIANT& value) : m_value(value) {}

    explicit operator std::int16_t() const { return of(VT_I2).iVal; }
    explicit operator std::int32_t() const { return of(VT_I4).lVal; }
    explicit operator bool() const { return of(VT_BOOL).boolVal == VARIANT_TRUE; }
    explicit operator Omitted() const { return of(VT_ERROR), Omitted(); }
    explicit operator std::string() const
    {
        const BSTR text = of(VT_BSTR).bstrVal;
        return toUtf8({text, ::SysStringLen(text)});
    }

private:
    const VARIANT& of(VARTYPE type) const
    {
        if (m_value.vt != type)
            throw std::invalid_argument("An argument is of another type.");
        return m_value;
    }

    const VARIANT& m_value;
};

/// In the order of the parameters.
using Values = std::vector<const VARIANT*>;

inline automation::Variant resultOf(std::int32_t number)
{
    return automation::Variant::ofInt32(number);
}

inline automation::Variant resultOf(const std::string& text)
{
    return automation::Variant::ofText(text);
}

/// The object of that interface for those who call it by name.
template <class Interface>
automation::Variant resultOf(std::unique_ptr<Interface> given);

/// A member of an object: how it is called, and what it does. There may be several of one name.
struct Member {
    /// work  takes and gives numbers, texts and objects of the application
    template <typename Work>
    Member(std::string itsName, automation::CallKind itsKind, Work work, std::vector<std::string> parameters = {})
        : name(std::move(itsName)), kind(itsKind), parameterNames(std::move(parameters))
    {
        takeOver(std::function(std::move(work)));
    }

    std::string name;
    automation::CallKind kind;
    std::vector<std::string> parameterNames; ///< of those that may be called by them
    std::size_t parameterCount = 0;
    std::function<automation::Variant(const Values&)> run;

private:
    template <typename Result, typename... Parameters>
    void takeOver(std::function<Result(Parameters...)> work)
    {
        parameterCount = sizeof...(Parameters);
        run = [work = std::move(work)](const Values& values) {
            [[maybe_unused]] auto next = values.begin();
            const std::tuple<std::remove_cvref_t<Parameters>...> arguments{
                static_cast<std::remove_cvref_t<Parameters>>(Argument(**next++))...};
            if constexpr (std::is_void_v<Result>) {
                std::apply(work, arguments);
                return automation::Variant();
            } else {
                return resultOf(std::apply(work, arguments));
            }
        };
    }
};

/// One object of the served application: answers by name what its table of members holds, and nothing else.
class AutomationObject final : public ComObject<IDispatch> {
public:
    explicit AutomationObject(std::vector<Member> members) : m_members(std::move(members)) { ++s_objects; }

    /// The last object that anybody refers to takes the process with it, as one without windows does.
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = ComObject::Release();
        if (left == 0)
            delete this;
        if (left == 0 && --s_objects == 0)
            ::PostQuitMessage(0);
        return left;
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override
    {
        if (isBusy())
            return RPC_E_CALL_REJECTED;
        if (locale != automation::englishUnitedStates)
            return TYPE_E_INVDATAREAD; // as where its language is not installed
        const auto member = std::ranges::find(m_members, toUtf8(names[0]), &Member::name);
        if (member == m_members.end())
            return DISP_E_UNKNOWNNAME;
        ids[0] = static_cast<DISPID>(member - m_members.begin());
        const auto& known = member->parameterNames;
        for (UINT index = 1; index < count; ++index) {
            const auto parameter = std::ranges::find(known, toUtf8(names[index]));
            if (parameter == known.end())
                return DISP_E_UNKNOWNNAME;
            ids[index] = static_cast<DISPID>(parameter - known.begin());
        }
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID locale, WORD kind, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* exception, UINT*) override
    {
        if (isBusy())
            return RPC_E_CALL_REJECTED;
        const std::string name = m_members.at(static_cast<std::size_t>(id)).name;
        const auto member = std::ranges::find_if(m_members, [&](const Member& each) {
            return each.name == name && each.kind == automation::CallKind{kind} &&
                   each.parameterCount == parameters->cArgs;
        });
        if (member == m_members.end())
            return DISP_E_MEMBERNOTFOUND;
        const bool isTyped = kind == DISPATCH_PROPERTYPUT && parameters->rgvarg[0].vt == VT_BSTR;
        const std::string region = isTyped ? instruction("region", "en-US") : "en-US";
        if (locale != ::LocaleNameToLCID(toWide(region).c_str(), 0))
            return TYPE_E_INVDATAREAD;
        misbehave(name);
        try {
            const automation::Variant answer = member->run(valuesOf(*parameters, kind == DISPATCH_PROPERTYPUT));
            VARIANT borrowed = answer.raw();
            const bool isWanted = result != nullptr && instruction("nothing") != name;
            return isWanted ? ::VariantCopy(result, &borrowed) : S_OK;
        } catch (const std::exception& error) {
            exception->bstrDescription = ::SysAllocString(toWide(error.what()).c_str());
            return DISP_E_EXCEPTION;
        }
    }

private:
    /// They are passed from the last to the first; those that have a name, or are put, before the others.
    static Values valuesOf(const DISPPARAMS& parameters, bool isPut)
    {
        Values values;
        for (UINT index = parameters.cArgs; index-- > 0;)
            values.push_back(&parameters.rgvarg[index]);
        bool isMarkedAsPut = false;
        for (UINT index = 0; index < parameters.cNamedArgs; ++index) {
            const DISPID name = parameters.rgdispidNamedArgs[index];
            if (name == DISPID_PROPERTYPUT)
                isMarkedAsPut = true;
            else
                values.at(static_cast<std::size_t>(name)) = &parameters.rgvarg[index];
        }
        if (isMarkedAsPut != isPut)
            throw std::invalid_argument("A property is put with one value that is marked as such.");
        return values;
    }

    /// Whether the application is busy with its user now. A call that is made again keeps its number.
    static bool isBusy()
    {
        static int calls = 0;
        static ULONGLONG end = 0; // 0: not busy
        const std::string busy = instruction("busy");
        if (end == 0 && (busy == "each" || busy == std::to_string(++calls)))
            end = ::GetTickCount64() + std::stoul(instruction("busyfor"));
        const bool is = ::GetTickCount64() < end;
        if (!is)
            end = 0;
        return is;
    }

    static void misbehave(const std::string& member)
    {
        if (instruction("ask") == member)
            ::MessageBoxW(nullptr, L"Save in the older format?", L"Test question", MB_YESNO);
        if (std::to_string(++s_calls) == instruction("die"))
            ::TerminateProcess(::GetCurrentProcess(), 1);
    }

    static inline int s_objects = 0; ///< that somebody refers to
    static inline int s_calls = 0;   ///< made so far

    const std::vector<Member> m_members;
};

/// What an object of that interface answers to; it is kept alive.
template <class Interface>
std::vector<Member> membersOf(std::shared_ptr<Interface> given);

template <class Interface>
automation::Variant resultOf(std::unique_ptr<Interface> given)
{
    automation::Variant result;
    VARIANT* const object = result.receive();
    object->vt = VT_DISPATCH;
    object->pdispVal = new AutomationObject(membersOf(std::shared_ptr<Interface>(std::move(given))));
    return result;
}

} // namespace wagemill::test
