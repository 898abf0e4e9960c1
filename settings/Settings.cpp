#include "settings/Settings.h"

#include "settings/UserStore.h"

#include <utility>

namespace wagemill {

namespace {

std::unique_ptr<SettingsStore>& openStore()
{
    static std::unique_ptr<SettingsStore> store;
    return store;
}

SettingsStore& userStore()
{
    if (!openStore())
        openStore() = openUserStore();
    return *openStore();
}

} // namespace

void SaveSetting(std::string_view application, std::string_view section, std::string_view key, std::string_view value)
{
    userStore().write(application, section, key, value);
}

std::string GetSetting(std::string_view application, std::string_view section, std::string_view key,
                       std::string_view fallback)
{
    return userStore().read(application, section, key).value_or(std::string(fallback));
}

void setUserStore(std::unique_ptr<SettingsStore> store)
{
    openStore() = std::move(store);
}

} // namespace wagemill
