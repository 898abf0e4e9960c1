#include "app/look/AutomationSkin.h"

#include "app/base/WindowsErrors.h"
#include "tests/support/FailureOf.h"
#include "tests/support/FakeDispatch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace wagemill {

TEST(AutomationSkin, CallsTheMembersByIdentifierWithTheirOwnTypesAndReleasesTheControl)
{
    test::FakeDispatch control;
    control.value.vt = VT_I2;
    control.value.iVal = 6;
    {
        AutomationSkin skin{automation::Dispatch(&control)};
        skin.loadSkin(std::filesystem::path(L"C:\\pay r\u00F6ll\\x\\o.cjs"));
        skin.setOptions(skin.options() | 1);
        skin.setFlag(5, true);
        skin.setFlag(10, false);
        skin.applyWindow(0xFFFFFFFF80001234U); // a handle with its sign extended
        control.value.vt = VT_NULL;
        EXPECT_THROW(skin.options(), std::runtime_error);
    }
    EXPECT_EQ(control.calls,
              (std::vector<std::string>{"2 method text(C:\\pay r\u00F6ll\\x\\o.cjs) text()", "1 get", "1 put number(7)",
                                        "5 put true", "10 put false", "3 method number(-2147478988)", "1 get"}));
    EXPECT_EQ(control.references, 0U);
}

TEST(AutomationSkin, FailsInTheControlsOwnWordsElseInTheSystems)
{
    const auto failureOf = [](auto&& call, HRESULT result, const wchar_t* description) {
        test::FakeDispatch control;
        control.callResult = result;
        control.exception.bstrDescription = ::SysAllocString(description);
        AutomationSkin skin{automation::Dispatch(&control)};
        return test::failureOf([&] { call(skin); });
    };
    EXPECT_EQ(failureOf([](auto& on) { on.loadSkin("C:/x/o.cjs"); }, DISP_E_EXCEPTION, L"It is of a later version."),
              "Cannot use the skin file \"C:/x/o.cjs\": It is of a later version.");
    for (const HRESULT status : {E_OUTOFMEMORY, DISP_E_EXCEPTION})
        EXPECT_EQ(failureOf([](auto& on) { on.applyWindow(1); }, status, L""),
                  "The skinning control failed: " + systemErrorText(static_cast<unsigned long>(status)) + ".");
}

/// A style sheet is drawn everywhere. Another skin is the control's, and where that is not registered nothing fails.
TEST(CreateSkinningControl, TakesAStyleSheetItselfAndLeavesOtherSkinsToTheControl)
{
    const automation::Apartment apartment;
    const auto file = std::filesystem::temp_directory_path() / "o.cjs";
    for (const std::string& text : {std::string("QPushButton { padding: 6px }"), std::string("CJSKIN\0\1", 8)}) {
        std::ofstream(file, std::ios::binary) << text;
        EXPECT_EQ(skinningControlFor(file) != nullptr, text.starts_with("QPush")) << text;
    }
    std::filesystem::remove(file);
}

} // namespace wagemill
