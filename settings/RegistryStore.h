#pragma once

#include "settings/Settings.h"

namespace wagemill {

/// The store as the Windows registry keeps settings of single programs for their user: application and section are
/// nested keys under HKEY_CURRENT_USER\Software\VB and VBA Program Settings, and each setting is a text value (REG_SZ).
/// Nothing is kept open: what is changed there by hand is what the next read gives.
///
/// A value that holds a number (REG_DWORD, REG_QWORD) is read as its decimal text; a list of texts or bytes counts as
/// missing. Every write makes the value a text. As everywhere in the registry, letters' case does not tell names apart.
class RegistryStore : public SettingsStore {
public:
    std::optional<std::string> read(std::string_view application, std::string_view section,
                                    std::string_view key) override;
    void write(std::string_view application, std::string_view section, std::string_view key,
               std::string_view value) override;
};

} // namespace wagemill
