#pragma once

#include "app/look/Look.h"

#include <QString>

namespace wagemill {

/// Stands in for the skinning control: the skin file is a Qt style sheet, UTF-8, at most one mebibyte.
class StyleSheetSkin : public SkinningControl {
public:
    void loadSkin(const std::filesystem::path& skinFile) override;
    std::int32_t options() const override { return m_options; }
    void setOptions(std::int32_t options) override { m_options = options; }
    /// A style sheet covers what is created later inside its window by itself, so neither flag changes anything.
    void setFlag(int /*dispatchIdentifier*/, bool /*value*/) override {}
    void applyWindow(std::uintptr_t windowHandle) override;

private:
    QString m_styleSheet;
    std::int32_t m_options = 0;
};

} // namespace wagemill
