#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace wagemill {

/// A per-user store of texts, addressed by application, section and key. All texts are UTF-8.
class SettingsStore {
public:
    SettingsStore() = default;
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;
    virtual ~SettingsStore() = default;

    /// The stored text, nothing when the key or section is missing.
    virtual std::optional<std::string> read(std::string_view application, std::string_view section,
                                            std::string_view key) = 0;
    /// Returns when the value is safe from a crash of the program.
    virtual void write(std::string_view application, std::string_view section, std::string_view key,
                       std::string_view value) = 0;
};

/// Stores a text at once, overwriting any earlier one.
/// Throws std::runtime_error, naming the store and the reason, when it cannot be written.
void SaveSetting(std::string_view application, std::string_view section, std::string_view key, std::string_view value);

/// The stored text, or `fallback` when the key or section is missing.
/// Throws std::runtime_error, naming the store and the reason, when the store cannot be read.
std::string GetSetting(std::string_view application, std::string_view section, std::string_view key,
                       std::string_view fallback);

/// Replaces the user's own store, for tests; null brings the user's own back.
void setUserStore(std::unique_ptr<SettingsStore> store);

} // namespace wagemill
