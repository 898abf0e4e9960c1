#include "settings/Settings.h"

#include <array>
#include <map>
#include <stdexcept>
#include <utility>

namespace wagemill {

namespace {

std::unique_ptr<SettingsStore> openStore;

/// Values that are not stored yet, by application, section and key. Empty but while the store cannot be written.
std::map<std::array<std::string, 3>, std::string> unstored;

SettingsStore& userStore()
{
    if (!openStore)
        openStore = openUserStore();
    return *openStore;
}

} // namespace

void SaveSetting(std::string_view application, std::string_view section, std::string_view key, std::string_view value)
{
    unstored.insert_or_assign({std::string(application), std::string(section), std::string(key)}, value);
    if (const std::string failure = retrySettings(); !failure.empty())
        throw std::runtime_error(failure + " What you typed stays in the window and is stored as soon as possible.");
}

std::string retrySettings()
{
    try {
        for (auto next = unstored.begin(); next != unstored.end(); next = unstored.erase(next)) {
            const auto& [application, section, key] = next->first;
            userStore().write(application, section, key, next->second);
        }
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}

std::string GetSetting(std::string_view application, std::string_view section, std::string_view key,
                       std::string_view fallback)
{
    return userStore().read(application, section, key).value_or(std::string(fallback));
}

void setUserStore(std::unique_ptr<SettingsStore> store)
{
    openStore = std::move(store);
    unstored.clear();
}

} // namespace wagemill
