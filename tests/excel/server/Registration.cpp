#include "tests/excel/server/Registration.h"

#include "app/base/WindowsText.h"

#include <array>
#include <stdexcept>
#include <string>

#include <objbase.h>

namespace wagemill::test {

namespace {

constexpr const wchar_t* programIdKey = L"Software\\Classes\\Excel.Application";

std::wstring classId()
{
    std::array<wchar_t, 64> text = {};
    ::StringFromGUID2(servedClass, text.data(), static_cast<int>(text.size()));
    return text.data();
}

std::wstring classKey()
{
    return L"Software\\Classes\\CLSID\\" + classId();
}

void setDefaultValue(const std::wstring& key, const std::wstring& text)
{
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    const LSTATUS status = ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), nullptr, REG_SZ, text.c_str(), size);
    if (status != ERROR_SUCCESS)
        throw std::runtime_error("Cannot write the registry key \"" + toUtf8(key) +
                                 "\": " + systemErrorText(static_cast<unsigned long>(status)) + ".");
}

} // namespace

void registerServer(const std::filesystem::path& program)
{
    setDefaultValue(std::wstring(programIdKey) + L"\\CLSID", classId());
    setDefaultValue(classKey() + L"\\ProgID", L"Excel.Application");
    setDefaultValue(classKey() + L"\\LocalServer32", L"\"" + program.wstring() + L"\"");
}

void unregisterServer()
{
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, programIdKey);
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, classKey().c_str());
}

} // namespace wagemill::test
