#include "workbook/excel/Automation.h"

#include <gtest/gtest.h>

using namespace wagemill;
using namespace wagemill::automation;

namespace {

HRESULT WINAPI describeLater(EXCEPINFO* exception)
{
    exception->bstrDescription = ::SysAllocString(L"The sheet is protected.");
    return S_OK;
}

/// An object whose every member ends as the test wants.
class Answer final : public IDispatch {
public:
    HRESULT nameResult = S_OK;
    HRESULT callResult = S_OK;
    EXCEPINFO exception = {};
    VARIANT value = {};
    ULONG references = 1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID /*wanted*/, void** object) override
    {
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* /*count*/) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*info*/) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*locale*/,
                                            DISPID* ids) override
    {
        ids[0] = 1;
        return nameResult;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID /*id*/, REFIID /*reserved*/, LCID /*locale*/, WORD /*kind*/,
                                     DISPPARAMS* /*parameters*/, VARIANT* result, EXCEPINFO* given,
                                     UINT* /*argument*/) override
    {
        *given = exception;
        *result = value;
        return callResult;
    }
};

std::string failureOf(Answer& answer)
{
    try {
        Object(&answer).call(L"SaveAs");
    } catch (const SpreadsheetError& error) {
        return error.what();
    }
    return "no failure";
}

TEST(AutomationFailure, IsToldInExcelsWordsOrInOnesThatNameTheMember)
{
    constexpr auto undescribed = static_cast<SCODE>(0x800A03EC);
    struct {
        HRESULT name;
        HRESULT call;
        const wchar_t* description;
        bool isDescribedLater;
        SCODE scode;
        const char* expected;
    } const cases[] = {
        {S_OK, S_OK, nullptr, false, 0, "no failure"},
        {S_OK, DISP_E_EXCEPTION, L"The disk is full.", false, undescribed, "The disk is full."},
        {S_OK, DISP_E_EXCEPTION, nullptr, true, undescribed, "The sheet is protected."},
        {S_OK, DISP_E_EXCEPTION, L"", false, undescribed,
         "Excel failed at \"SaveAs\": Excel refuses it and gives no reason."},
        {S_OK, DISP_E_EXCEPTION, nullptr, false, 0, "Excel failed at \"SaveAs\": Excel gives no reason."},
        {DISP_E_UNKNOWNNAME, S_OK, nullptr, false, 0,
         "Excel failed at \"SaveAs\": this version of Excel does not know it."},
        {S_OK, DISP_E_BADINDEX, nullptr, false, 0,
         "Excel failed at \"SaveAs\": there is no item of that number or name."},
        {S_OK, RPC_E_SERVERCALL_RETRYLATER, nullptr, false, 0,
         "Excel failed at \"SaveAs\": Excel is busy with something else. Please close any message or dialog that it "
         "shows."},
        {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), S_OK, nullptr, false, 0,
         "Excel failed at \"SaveAs\": Excel has ended, or its process no longer answers."},
    };
    for (const auto& [name, call, description, isDescribedLater, scode, expected] : cases) {
        Answer answer;
        answer.nameResult = name;
        answer.callResult = call;
        answer.exception.scode = scode;
        answer.exception.bstrDescription = ::SysAllocString(description);
        answer.exception.pfnDeferredFillIn = isDescribedLater ? describeLater : nullptr;
        EXPECT_EQ(failureOf(answer), expected);
        EXPECT_EQ(answer.references, 0U);
    }
}

TEST(AutomationFailure, HasAWordForEveryNumber)
{
    for (const HRESULT result : {E_INVALIDARG, static_cast<HRESULT>(0x8FFF1234), HRESULT_FROM_WIN32(ERROR_DISK_FULL)}) {
        Answer answer;
        answer.callResult = result;
        const std::string text = failureOf(answer);
        EXPECT_TRUE(text.starts_with("Excel failed at \"SaveAs\": ")) << text;
        EXPECT_GT(text.size(), std::string("Excel failed at \"SaveAs\": .").size() + 4) << text;
    }
}

TEST(AutomationResult, IsANumberATextOrAnObjectOrSaysThatItIsNot)
{
    Variant number;
    number.receive()->vt = VT_R8;
    EXPECT_EQ(int32In(std::move(number), L"count"), 0);
    EXPECT_EQ(int32In(Variant::ofInt16(-7), L"count"), -7);
    EXPECT_EQ(textIn(Variant::ofText("M\xC3\xBCller \xF0\x9F\x92\xB0"), L"Name"), "M\xC3\xBCller \xF0\x9F\x92\xB0");
    EXPECT_EQ(textIn(Variant::ofInt32(16), L"Version"), "16");
    Variant null;
    null.receive()->vt = VT_NULL;
    EXPECT_THROW(int32In(Variant(), L"count"), SpreadsheetError);
    EXPECT_THROW(int32In(Variant::ofText("many"), L"count"), SpreadsheetError);
    EXPECT_THROW(textIn(std::move(null), L"Name"), SpreadsheetError);

    Answer answer;
    Variant object;
    object.receive()->vt = VT_DISPATCH;
    EXPECT_FALSE(objectIn(object)); // Nothing
    VARIANT* const given = object.receive();
    given->vt = VT_UNKNOWN;
    given->punkVal = &answer;
    EXPECT_TRUE(objectIn(object));
    EXPECT_FALSE(objectIn(Variant::ofInt32(1)));
}

TEST(Automation, SaysThatAnApplicationIsNotInstalled)
{
    const Apartment apartment;
    try {
        createObject(L"Wagemill.NoSuchApplication");
        FAIL();
    } catch (const SpreadsheetError& error) {
        EXPECT_STREQ(error.what(),
                     "Excel failed at \"Wagemill.NoSuchApplication\": Excel is not installed on this computer.");
    }
}

} // namespace
