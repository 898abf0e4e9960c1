#pragma once

#include "app/look/Look.h"

#include <memory>

struct IDispatch;

namespace wagemill {

/// The skinning control of Windows, called through its automation interface. Released with this object; the window then
/// loses its skin.
class AutomationSkin : public SkinningControl {
public:
    /// Takes over one reference to the control, which is not null.
    explicit AutomationSkin(IDispatch* control) : m_control(control) {}

    void loadSkin(const std::filesystem::path& skinFile, std::string_view variant) override;
    std::int32_t options() const override;
    void setOptions(std::int32_t options) override;
    void setFlag(int dispatchIdentifier, bool value) override;
    void applyWindow(std::uintptr_t windowHandle) override;

private:
    struct Release {
        void operator()(IDispatch* object) const;
    };

    std::unique_ptr<IDispatch, Release> m_control;
};

} // namespace wagemill
