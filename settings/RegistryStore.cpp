#include "app/base/WindowsErrors.h"
#include "app/base/text/WideText.h"
#include "settings/Settings.h"

#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace wagemill {

namespace {

constexpr std::wstring_view programSettings = L"Software\\VB and VBA Program Settings\\";

std::wstring registryKey(std::string_view application, std::string_view section)
{
    return std::wstring(programSettings) + toWide(application) + L"\\" + toWide(section);
}

/// A registry value as it was stored.
struct StoredValue {
    DWORD type = REG_NONE;
    std::vector<std::byte> bytes;
};

/// The value's text ends at its first zero character, which need not be there; an odd last byte is ignored.
std::string textOf(const StoredValue& value)
{
    std::wstring text(value.bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), value.bytes.data(), text.size() * sizeof(wchar_t));
    return toUtf8(text.substr(0, text.find(L'\0')));
}

/// Numbers lie in memory as the processor has them.
template <typename Number>
std::optional<std::string> numberTextOf(const StoredValue& value)
{
    Number number = 0;
    if (value.bytes.size() != sizeof number)
        return std::nullopt;
    std::memcpy(&number, value.bytes.data(), sizeof number);
    return std::to_string(number);
}

std::optional<std::string> settingOf(const StoredValue& value)
{
    switch (value.type) {
    case REG_SZ:
    case REG_EXPAND_SZ:
        return textOf(value);
    case REG_DWORD:
        return numberTextOf<std::uint32_t>(value);
    case REG_QWORD:
        return numberTextOf<std::uint64_t>(value);
    default:
        return std::nullopt;
    }
}

/// What the registry answers, and the value when that is ERROR_SUCCESS.
LSTATUS queryValue(const std::wstring& key, const std::wstring& name, StoredValue& value)
{
    LSTATUS status = ERROR_MORE_DATA;
    DWORD size = 256;
    while (status == ERROR_MORE_DATA) { // another program may write a longer one meanwhile
        value.bytes.resize(size);
        status = ::RegGetValueW(HKEY_CURRENT_USER, key.c_str(), name.c_str(), RRF_RT_ANY | RRF_NOEXPAND, &value.type,
                                value.bytes.data(), &size);
    }
    value.bytes.resize(status == ERROR_SUCCESS ? size : 0);
    return status;
}

[[noreturn]] void throwStoreError(std::string_view what, const std::wstring& key, std::string_view setting,
                                  LSTATUS status)
{
    const std::string reason = systemErrorText(static_cast<unsigned long>(status));
    throw std::runtime_error(
        "The setting \"" + std::string(setting) + "\" cannot be " + std::string(what) +
        " the registry key \"HKEY_CURRENT_USER\\" + toUtf8(key) + "\": " +
        (status == ERROR_ACCESS_DENIED ? "you have no permission for that key (" + reason + ")" : reason) + ".");
}

/// The store as the Windows registry keeps settings of single programs for their user: application and section are
/// nested keys under HKEY_CURRENT_USER\Software\VB and VBA Program Settings, and each setting is a text value (REG_SZ).
/// Nothing is kept open: what is changed there by hand is what the next read gives.
///
/// A value that holds a number (REG_DWORD, REG_QWORD) is read as its decimal text; a list of texts or bytes counts as
/// missing. Every write makes the value a text. As everywhere in the registry, letters' case does not tell names apart.
class RegistryStore : public SettingsStore {
public:
    std::optional<std::string> read(std::string_view application, std::string_view section,
                                    std::string_view key) override
    {
        const std::wstring path = registryKey(application, section);
        StoredValue value;
        const LSTATUS status = queryValue(path, toWide(key), value);
        if (status == ERROR_FILE_NOT_FOUND)
            return std::nullopt;
        if (status != ERROR_SUCCESS)
            throwStoreError("read from", path, key, status);
        return settingOf(value);
    }

    void write(std::string_view application, std::string_view section, std::string_view key,
               std::string_view value) override
    {
        const std::wstring path = registryKey(application, section);
        const std::wstring text = toWide(value);
        const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
        const LSTATUS status =
            ::RegSetKeyValueW(HKEY_CURRENT_USER, path.c_str(), toWide(key).c_str(), REG_SZ, text.c_str(), size);
        if (status != ERROR_SUCCESS)
            throwStoreError("stored in", path, key, status);
    }
};

} // namespace

std::unique_ptr<SettingsStore> openUserStore()
{
    return std::make_unique<RegistryStore>();
}

} // namespace wagemill
