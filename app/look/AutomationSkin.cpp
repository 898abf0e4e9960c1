#include "app/look/AutomationSkin.h"

#include "app/base/Messages.h"
#include "app/base/WindowsErrors.h"
#include "app/base/text/WideText.h"

#include <stdexcept>

namespace wagemill {

using automation::Arguments;
using automation::CallKind;
using automation::Variant;

namespace {

constexpr DISPID optionsIdentifier = 1;
constexpr DISPID loadSkinIdentifier = 2;
constexpr DISPID applyWindowIdentifier = 3;

/// The control's own words where there are any, without a full stop.
std::string reasonOf(const automation::CallFailure& failure)
{
    const std::string reason = withoutFullStop(failure.what());
    return reason.empty() ? systemErrorText(static_cast<unsigned long>(failure.result)) : reason;
}

} // namespace

/// failure  begins the text that is thrown: "<failure>: <reason>."
automation::Variant AutomationSkin::invoke(const std::vector<DISPID>& ids, CallKind kind, const Arguments& arguments,
                                           const std::string& failure) const
{
    try {
        return m_control.invoke(ids, kind, arguments);
    } catch (const automation::CallFailure& reason) {
        throw std::runtime_error(failure + ": " + reasonOf(reason) + ".");
    }
}

void AutomationSkin::loadSkin(const std::filesystem::path& skinFile)
{
    invoke({loadSkinIdentifier}, CallKind::Call, {Variant::ofText(skinFile.native()), Variant::ofText("")},
           "Cannot use the skin file \"" + toUtf8(skinFile.native()) + "\"");
}

std::int32_t AutomationSkin::options() const
{
    Variant value = invoke({optionsIdentifier}, CallKind::Get, {});
    if (!value.become(VT_I4))
        throw std::runtime_error("The skinning control failed: its options are not a whole number.");
    return value.raw().lVal;
}

void AutomationSkin::setOptions(std::int32_t options)
{
    invoke({optionsIdentifier, DISPID_PROPERTYPUT}, CallKind::Put, {Variant::ofInt32(options)});
}

void AutomationSkin::setFlag(int dispatchIdentifier, bool value)
{
    invoke({dispatchIdentifier, DISPID_PROPERTYPUT}, CallKind::Put, {Variant::ofBoolean(value)});
}

void AutomationSkin::applyWindow(std::uintptr_t windowHandle)
{
    // Of a window handle 32 bits count, in a 64-bit program too.
    invoke({applyWindowIdentifier}, CallKind::Call, {Variant::ofInt32(static_cast<std::int32_t>(windowHandle))});
}

} // namespace wagemill
