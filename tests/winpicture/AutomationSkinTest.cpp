#include "app/look/AutomationSkin.h"

#include "app/base/WindowsText.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace wagemill {

namespace {

/// A skinning control that writes down how it is called, and can be told to fail.
class RecordingControl final : public IDispatch {
public:
    explicit RecordingControl(bool& isAlive) : m_isAlive(isAlive) { m_isAlive = true; }
    RecordingControl(const RecordingControl&) = delete;
    RecordingControl& operator=(const RecordingControl&) = delete;
    ~RecordingControl() { m_isAlive = false; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID /*id*/, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* /*count*/) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*info*/) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*locale*/,
                                            DISPID* /*members*/) override
    {
        ADD_FAILURE() << "the members are called by identifier, not by name";
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID /*reserved*/, LCID /*locale*/, WORD kind,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* failure,
                                     UINT* /*argument*/) override
    {
        calls.push_back(std::to_string(member) + kindText(kind, *parameters) + argumentsText(*parameters));
        if (failingStatus == DISP_E_EXCEPTION)
            failure->bstrDescription = ::SysAllocString(description.c_str());
        if (kind == DISPATCH_PROPERTYGET && SUCCEEDED(failingStatus))
            return ::VariantCopy(result, &options);
        return failingStatus;
    }

    std::vector<std::string> calls;
    VARIANT options = {};
    HRESULT failingStatus = S_OK;
    std::wstring description;

private:
    static std::string kindText(WORD kind, const DISPPARAMS& parameters)
    {
        if (kind == DISPATCH_METHOD)
            return parameters.cNamedArgs == 0 ? " method" : " method with named arguments";
        if (kind == DISPATCH_PROPERTYGET)
            return " get";
        const bool namesValue = parameters.cNamedArgs == 1 && parameters.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
        return kind == DISPATCH_PROPERTYPUT && namesValue ? " put" : " wrong kind";
    }

    /// The arguments in the order of their call; automation hands them over last first.
    static std::string argumentsText(const DISPPARAMS& parameters)
    {
        std::string text;
        for (UINT index = parameters.cArgs; index-- > 0;)
            text += " " + argumentText(parameters.rgvarg[index]);
        return text;
    }

    static std::string argumentText(const VARIANT& argument)
    {
        switch (argument.vt) {
        case VT_BSTR:
            return "text(" + toUtf8({argument.bstrVal, ::SysStringLen(argument.bstrVal)}) + ")";
        case VT_I4:
            return "number(" + std::to_string(argument.lVal) + ")";
        case VT_BOOL:
            return argument.boolVal == VARIANT_TRUE ? "true" : "false";
        default:
            return "type " + std::to_string(argument.vt);
        }
    }

    bool& m_isAlive;
    ULONG m_references = 1;
};

class AutomationSkinTest : public testing::Test {
protected:
    AutomationSkinTest() : control(new RecordingControl(isAlive)), skin(std::in_place, control)
    {
        control->options.vt = VT_I4;
        control->options.lVal = 6;
    }

    std::string failureOf(void (*call)(SkinningControl&))
    {
        try {
            call(*skin);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no failure";
    }

    bool isAlive = false;
    RecordingControl* control; // owned by skin
    std::optional<AutomationSkin> skin;
};

} // namespace

TEST_F(AutomationSkinTest, CallsTheMembersByIdentifierWithTheirOwnTypes)
{
    skin->loadSkin(std::filesystem::path(L"C:\\pay r\u00F6ll\\x\\o.cjs"), "");
    skin->setOptions(skin->options() | 1);
    skin->setFlag(5, true);
    skin->setFlag(10, false);
    skin->applyWindow(0xFFFFFFFF80001234U); // a handle with its sign extended
    EXPECT_EQ(control->calls,
              (std::vector<std::string>{"2 method text(C:\\pay r\u00F6ll\\x\\o.cjs) text()", "1 get", "1 put number(7)",
                                        "5 put true", "10 put false", "3 method number(-2147478988)"}));
}

TEST_F(AutomationSkinTest, TakesTheOptionsInWhateverNumberTypeTheyCome)
{
    control->options.vt = VT_I2;
    control->options.iVal = -2;
    EXPECT_EQ(skin->options(), -2);
    control->options.vt = VT_DISPATCH;
    control->options.pdispVal = nullptr;
    EXPECT_THROW(skin->options(), std::runtime_error);
}

TEST_F(AutomationSkinTest, FailsInTheControlsOwnWordsElseInTheSystems)
{
    const auto load = [](SkinningControl& on) { on.loadSkin("C:/x/o.cjs", ""); };
    const auto apply = [](SkinningControl& on) { on.applyWindow(1); };
    control->failingStatus = DISP_E_EXCEPTION;
    control->description = L"The skin is of a later version.";
    EXPECT_EQ(failureOf(load), "Cannot use the skin file \"C:/x/o.cjs\": The skin is of a later version.");
    EXPECT_EQ(failureOf(apply), "The skinning control failed: The skin is of a later version.");
    for (const HRESULT status : {E_OUTOFMEMORY, DISP_E_MEMBERNOTFOUND, DISP_E_EXCEPTION}) {
        control->failingStatus = status;
        control->description.clear();
        EXPECT_EQ(failureOf(apply),
                  "The skinning control failed: " + systemErrorText(static_cast<unsigned long>(status)) + ".");
    }
}

TEST_F(AutomationSkinTest, ReleasesTheControl)
{
    EXPECT_TRUE(isAlive);
    skin.reset();
    EXPECT_FALSE(isAlive);
}

/// Where the control is not registered there is no skin, and nothing fails.
TEST(CreateSkinningControl, AnswersNothingWhereNoneIsInstalled)
{
    ASSERT_TRUE(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
    EXPECT_EQ(createSkinningControl(), nullptr);
    ::CoUninitialize();
}

} // namespace wagemill
