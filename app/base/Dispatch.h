#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <windows.h>

#include <oleauto.h>

/// Late-bound calls on automation objects. Built on Windows alone.
/// https://learn.microsoft.com/windows/win32/api/oaidl/nn-oaidl-idispatch
namespace wagemill::automation {

/// A VARIANT that clears itself; empty at first.
class Variant {
public:
    Variant() = default;
    Variant(const Variant& other);
    Variant(Variant&& other) noexcept : m_value(std::exchange(other.m_value, VARIANT{})) {}
    Variant& operator=(Variant other) noexcept
    {
        std::swap(m_value, other.m_value);
        return *this;
    }
    ~Variant() { ::VariantClear(&m_value); }

    static Variant ofInt16(std::int16_t number) { return {VT_I2, &VARIANT::iVal, number}; }
    static Variant ofInt32(std::int32_t number) { return {VT_I4, &VARIANT::lVal, number}; }
    static Variant ofBoolean(bool value) { return {VT_BOOL, &VARIANT::boolVal, value ? VARIANT_TRUE : VARIANT_FALSE}; }
    static Variant ofText(std::string_view utf8); ///< VT_BSTR
    static Variant ofText(const std::wstring& text);
    /// An argument that is not given.
    static Variant omitted() { return {VT_ERROR, &VARIANT::scode, DISP_E_PARAMNOTFOUND}; }

    const VARIANT& raw() const { return m_value; }
    /// Where a call puts its result; what was there is cleared.
    VARIANT* receive();
    /// Converts the value in place; false when that cannot be. Nothing at all is not a value of any type.
    bool become(VARTYPE type);

private:
    template <typename Field, typename Value>
    Variant(VARTYPE type, Field VARIANT::*field, Value value)
    {
        m_value.vt = type;
        m_value.*field = static_cast<Field>(value);
    }

    VARIANT m_value = {};
};

using Arguments = std::vector<Variant>;

/// A call that failed; what() is the object's own description, empty where it gave none.
class CallFailure : public std::runtime_error {
public:
    explicit CallFailure(HRESULT number, const std::string& description = {})
        : std::runtime_error(description), result(number)
    {
    }

    HRESULT result; ///< where the object describes its failure: the number that it gives there, if any
};

/// Whether the object's process rejected the call, because it is busy for a moment.
bool isRejected(HRESULT result);

enum class CallKind : WORD {
    Get = DISPATCH_PROPERTYGET,
    GetItem =
        DISPATCH_PROPERTYGET | DISPATCH_METHOD, // an item of a collection is a property to some, a method to others
    Call = DISPATCH_METHOD,
    Put = DISPATCH_PROPERTYPUT,
};

/// The language of names and numbers, whatever the user's.
inline constexpr LCID englishUnitedStates = 0x0409;

/// A counted reference to an automation object. A call that is rejected has not been made: it is made again for ten
/// seconds, and no window event runs meanwhile. What fails throws CallFailure.
class Dispatch {
public:
    /// Takes over the reference, which is not null.
    explicit Dispatch(IDispatch* reference) : m_reference(reference) {}
    /// A new object of the class, such as "Scripting.FileSystemObject".
    Dispatch(const wchar_t* programId, DWORD context);

    /// The identifiers of a member and, after it, of its named arguments.
    std::vector<DISPID> identifiers(std::vector<std::wstring> names) const;
    /// ids        the member; then the names of the last arguments, DISPID_PROPERTYPUT for the value that is put
    /// arguments  in the order in which they are written down
    /// locale     how texts among the arguments are read
    Variant invoke(const std::vector<DISPID>& ids, CallKind kind, const Arguments& arguments = {},
                   LCID locale = englishUnitedStates) const;

private:
    struct ReleaseReference {
        void operator()(IDispatch* reference) const { reference->Release(); }
    };

    std::unique_ptr<IDispatch, ReleaseReference> m_reference;
};

/// COM for as long as this lives, on this thread; harmless where the window system has initialised it already.
class Apartment {
public:
    Apartment() : m_result(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment();

    /// S_OK or another success when this thread can call objects.
    HRESULT result() const { return m_result == RPC_E_CHANGED_MODE ? S_OK : m_result; }

private:
    HRESULT m_result;
};

} // namespace wagemill::automation
