#pragma once

#include "app/base/Interface.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace wagemill {

/// The program's own application and section in the store.
inline constexpr std::string_view settingsApplication = "Quellory";
inline constexpr std::string_view settingsSection = "Wagemill";

/// A per-user store of texts, addressed by application, section and key. All texts are UTF-8.
class SettingsStore : public Interface {
public:
    /// The stored text, nothing when the key or section is missing.
    virtual std::optional<std::string> read(std::string_view application, std::string_view section,
                                            std::string_view key) = 0;
    /// Returns when the value is safe from a crash of the program.
    virtual void write(std::string_view application, std::string_view section, std::string_view key,
                       std::string_view value) = 0;
};

/// The system's store for the current user. Never throws for a store that cannot be opened yet: its reads and writes
/// do.
std::unique_ptr<SettingsStore> openUserStore();

/// Stores a text at once, overwriting any earlier one, and before it what could not be stored earlier.
/// Throws std::runtime_error, naming the store and the reason, when it cannot be written; the text is then kept for
/// the next call, and for retrySettings().
void SaveSetting(std::string_view application, std::string_view section, std::string_view key, std::string_view value);

/// The stored text, or `fallback` when the key or section is missing.
/// Throws std::runtime_error, naming the store and the reason, when the store cannot be read.
std::string GetSetting(std::string_view application, std::string_view section, std::string_view key,
                       std::string_view fallback);

/// Tries again to store what could not be stored. Why it fails again; empty: everything is stored.
std::string retrySettings();

/// Replaces the user's own store, for tests; null brings the user's own back. What is not stored yet is dropped.
void setUserStore(std::unique_ptr<SettingsStore> store);

} // namespace wagemill
