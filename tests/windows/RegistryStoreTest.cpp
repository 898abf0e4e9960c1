#include "app/base/text/WideText.h"
#include "settings/Settings.h"
#include "tests/support/FailureOf.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <aclapi.h>
#include <sddl.h>
#include <vector>

using namespace wagemill;

namespace {

/// Works under an application name of its own, and leaves nothing of it.
class RegistryStoreTest : public testing::Test {
protected:
    RegistryStoreTest() { ::RegDeleteTreeW(HKEY_CURRENT_USER, applicationKey); }
    ~RegistryStoreTest() override { ::RegDeleteTreeW(HKEY_CURRENT_USER, applicationKey); }

    std::string get(const char* key) { return store->read("WagemillTest", "Section", key).value_or("none"); }
    void save(const char* key, const std::string& value) { store->write("WagemillTest", "Section", key, value); }

    static constexpr const wchar_t* applicationKey = L"Software\\VB and VBA Program Settings\\WagemillTest";
    static constexpr const wchar_t* sectionKey = L"Software\\VB and VBA Program Settings\\WagemillTest\\Section";
    const std::unique_ptr<SettingsStore> store = openUserStore();
};

TEST_F(RegistryStoreTest, KeepsTextsAsOtherProgramsReadThem)
{
    EXPECT_EQ(get("a"), "none");
    HKEY key = nullptr; // looking makes nothing
    EXPECT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, applicationKey, 0, KEY_READ, &key), ERROR_FILE_NOT_FOUND);

    for (const std::string& text : {std::string(), std::string("Zo\xC3\xAB \xE2\x82\xAC \xF0\x9F\x98\x80 \"x\", 'y'\n"),
                                    std::string(100'000, 'y')}) {
        save("a", text);
        EXPECT_EQ(get("a"), text);
        const std::wstring expected = toWide(text);
        std::vector<wchar_t> stored(expected.size() + 1);
        DWORD type = REG_NONE;
        DWORD size = static_cast<DWORD>(stored.size() * sizeof(wchar_t));
        ASSERT_EQ(::RegGetValueW(HKEY_CURRENT_USER, sectionKey, L"a", RRF_RT_ANY, &type, stored.data(), &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(type, DWORD{REG_SZ});
        EXPECT_EQ(std::wstring(stored.data(), stored.size() - 1), expected);
    }
    EXPECT_EQ(store->read("WagemillTest", "Other", "a"), std::nullopt);
}

TEST_F(RegistryStoreTest, MakesSenseOfWhatWasPutThereByHand)
{
    save("any", "");
    struct {
        const char* what;
        DWORD type;
        std::vector<unsigned char> bytes;
        const char* expected;
    } const cases[] = {
        {"a text without its zero", REG_SZ, {'4', 0, '2', 0}, "42"},
        {"a text that other bytes follow", REG_SZ, {'4', 0, 0, 0, 'x', 0, 0, 0}, "4"},
        {"a text with half a character", REG_SZ, {'4', 0, '2'}, "4"},
        {"a text with half a surrogate pair", REG_SZ, {0x3D, 0xD8, 'a', 0, 0, 0}, "\uFFFDa"},
        {"nothing", REG_SZ, {}, ""},
        {"a text with a variable, as it was written", REG_EXPAND_SZ, {'%', 0, 'A', 0, '%', 0, 0, 0}, "%A%"},
        {"a number", REG_DWORD, {1, 2, 0, 0}, "513"},
        {"a long number", REG_QWORD, {0, 0, 0, 0, 1, 0, 0, 0}, "4294967296"},
        {"a number cut short", REG_DWORD, {1, 2}, "none"},
        {"a list of texts", REG_MULTI_SZ, {'a', 0, 0, 0, 'b', 0, 0, 0, 0, 0}, "none"},
    };
    for (const auto& [what, type, bytes, expected] : cases) {
        ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, sectionKey, L"a", type, bytes.data(),
                                    static_cast<DWORD>(bytes.size())),
                  ERROR_SUCCESS);
        EXPECT_EQ(get("a"), expected) << what;
        save("a", "typed");
        EXPECT_EQ(get("a"), "typed") << "written over " << what;
    }
}

/// Grants everyone on the key what `rights` say ("KR": reading alone).
LSTATUS protectKey(const wchar_t* path, const std::wstring& rights)
{
    HKEY key = nullptr;
    LSTATUS status = ::RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, WRITE_DAC, &key);
    PSECURITY_DESCRIPTOR security = nullptr;
    const std::wstring rules = L"D:P(A;OICI;" + rights + L";;;WD)";
    if (status == ERROR_SUCCESS &&
        ::ConvertStringSecurityDescriptorToSecurityDescriptorW(rules.c_str(), SDDL_REVISION_1, &security, nullptr))
        status = ::RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, security);
    ::LocalFree(security);
    ::RegCloseKey(key);
    return status;
}

TEST_F(RegistryStoreTest, SaysWhichKeyMayNotBeWrittenAndWhy)
{
    save("a", "1");
    ASSERT_EQ(protectKey(sectionKey, L"KR"), ERROR_SUCCESS);
    EXPECT_EQ(get("a"), "1");
    EXPECT_TRUE(
        test::failureOf([&] { save("a", "2"); })
            .starts_with("The setting \"a\" cannot be stored in the registry key \"HKEY_CURRENT_USER\\Software\\"
                         "VB and VBA Program Settings\\WagemillTest\\Section\": you have no permission for "
                         "that key ("));
    EXPECT_EQ(protectKey(sectionKey, L"KA"), ERROR_SUCCESS);
    EXPECT_EQ(get("a"), "1");
}

} // namespace
