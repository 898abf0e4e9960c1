#pragma once

#include "app/base/Dispatch.h"
#include "app/look/Look.h"

#include <string>
#include <utility>
#include <vector>

namespace wagemill {

/// The skinning control of Windows, called through its automation interface. Released with this object; the window then
/// loses its skin.
class AutomationSkin : public SkinningControl {
public:
    explicit AutomationSkin(automation::Dispatch control) : m_control(std::move(control)) {}

    void loadSkin(const std::filesystem::path& skinFile) override;
    std::int32_t options() const override;
    void setOptions(std::int32_t options) override;
    void setFlag(int dispatchIdentifier, bool value) override;
    void applyWindow(std::uintptr_t windowHandle) override;

private:
    automation::Variant invoke(const std::vector<DISPID>& ids, automation::CallKind kind,
                               const automation::Arguments& arguments,
                               const std::string& failure = "The skinning control failed") const;

    automation::Dispatch m_control;
};

} // namespace wagemill
