#include "workbook/excel/ExcelObject.h"

#include "tests/support/FailureOf.h"
#include "tests/support/FakeDispatch.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace wagemill;
using namespace wagemill::automation;
using namespace wagemill::test;

namespace {

ExcelObject objectOf(FakeDispatch& answer)
{
    return {std::make_shared<ExcelReferences>(0x0409), Dispatch(&answer)};
}

std::string failureOfSaving(FakeDispatch& answer)
{
    return failureOf([&] { objectOf(answer).call(L"SaveAs"); });
}

HRESULT WINAPI describeLater(EXCEPINFO* exception)
{
    exception->bstrDescription = ::SysAllocString(L"The sheet is protected.");
    return S_OK;
}

TEST(ExcelFailure, IsDescribedByExcelOrNamesTheMember)
{
    constexpr auto undescribed = static_cast<SCODE>(0x800A03EC);
    const std::string at = "Excel failed at \"SaveAs\": ";
    struct {
        HRESULT name;
        HRESULT call;
        const wchar_t* description;
        bool isDescribedLater;
        SCODE scode;
        std::string expected;
    } const cases[] = {
        {S_OK, S_OK, nullptr, false, 0, "no failure"},
        {S_OK, DISP_E_EXCEPTION, L"The disk is full.", false, undescribed, "The disk is full."},
        {S_OK, DISP_E_EXCEPTION, nullptr, true, undescribed, "The sheet is protected."},
        {S_OK, DISP_E_EXCEPTION, L"", false, undescribed, at + "Excel refuses it and gives no reason."},
        {S_OK, DISP_E_EXCEPTION, nullptr, false, 0, at + "Excel gives no reason."},
        {DISP_E_UNKNOWNNAME, S_OK, nullptr, false, 0, at + "this version of Excel does not know it."},
        {S_OK, DISP_E_BADINDEX, nullptr, false, 0, at + "there is no item of that number or name."},
        {S_OK, TYPE_E_INVDATAREAD, nullptr, false, 0,
         at + "Excel lacks the language pack of your regional format. Please install it, or choose the regional "
              "format of Excel's own language in the settings of Windows."},
        {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), S_OK, nullptr, false, 0,
         at + "Excel has ended, or its process no longer answers."},
    };
    for (const auto& [name, call, description, isDescribedLater, scode, expected] : cases) {
        FakeDispatch answer;
        answer.nameResult = name;
        answer.callResult = call;
        answer.exception.scode = scode;
        answer.exception.bstrDescription = ::SysAllocString(description);
        answer.exception.pfnDeferredFillIn = isDescribedLater ? describeLater : nullptr;
        EXPECT_EQ(failureOfSaving(answer), expected);
        EXPECT_EQ(answer.references, 0U);
    }
    for (const HRESULT result : {E_INVALIDARG, static_cast<HRESULT>(0x8FFF1234), HRESULT_FROM_WIN32(ERROR_DISK_FULL)}) {
        FakeDispatch answer;
        answer.callResult = result;
        const std::string text = failureOfSaving(answer); // in the system's words
        EXPECT_TRUE(text.starts_with(at) && text.size() > at.size() + 5) << text;
    }
    EXPECT_EQ(failureOf([] { ExcelObject(std::make_shared<ExcelReferences>(0x0409), L"Wagemill.NoSuchApplication"); }),
              "Excel failed at \"Wagemill.NoSuchApplication\": Excel is not installed on this computer.");
}

/// A call that was rejected has not been made.
TEST(ExcelCall, IsMadeAgainWhileItIsRejected)
{
    struct {
        HRESULT rejection;
        int times;
        std::size_t calls; ///< a name asked for, and the call
    } const cases[] = {
        {RPC_E_CALL_REJECTED, 0, 2},         {RPC_E_CALL_REJECTED, 1, 3},
        {RPC_E_SERVERCALL_RETRYLATER, 4, 6}, {static_cast<HRESULT>(0x800AC472), 2, 4},
        {RPC_E_DISCONNECTED, 1, 1}, // another failure is final
    };
    for (const auto& [rejection, times, calls] : cases) {
        FakeDispatch answer;
        answer.rejection = rejection;
        answer.timesRejected = times;
        EXPECT_EQ(failureOfSaving(answer) == "no failure", rejection != RPC_E_DISCONNECTED);
        EXPECT_EQ(answer.calls.size(), calls) << std::hex << rejection;
    }
}

TEST(ExcelCall, FailsOnceAfterTenSecondsAndSaysThatExcelIsBusy)
{
    FakeDispatch answer;
    answer.callResult = DISP_E_EXCEPTION;
    answer.exception.scode = static_cast<SCODE>(0x800AC472);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(failureOfSaving(answer),
              "Excel failed at \"SaveAs\": Excel is busy. Please finish what you are doing in Excel, "
              "close any message or dialog that it shows, and make the workbook again.");
    const auto time = std::chrono::steady_clock::now() - start;
    EXPECT_GE(time, std::chrono::seconds(10));
    EXPECT_LT(time, std::chrono::seconds(11));
}

TEST(ExcelResult, IsANumberATextOrAnObjectOrSaysThatItIsNot)
{
    FakeDispatch answer;
    const ExcelObject object = objectOf(answer);
    answer.value.vt = VT_R8;
    EXPECT_EQ(object.number(L"count"), 0);
    answer.value.vt = VT_I2;
    answer.value.iVal = -7;
    EXPECT_EQ(object.number(L"count"), -7);
    EXPECT_EQ(object.text(L"Version"), "-7");
    answer.value.vt = VT_NULL;
    EXPECT_EQ(failureOf([&] { object.number(L"count"); }), "Excel gave no number for \"count\".");
    EXPECT_EQ(failureOf([&] { object.text(L"Name"); }), "Excel gave no text for \"Name\".");
    answer.value.vt = VT_BSTR;
    answer.value.bstrVal = ::SysAllocString(L"many");
    EXPECT_EQ(failureOf([&] { object.number(L"count"); }), "Excel gave no number for \"count\".");

    Variant result;
    result.receive()->vt = VT_DISPATCH;
    EXPECT_EQ(failureOf([&] { object.child(result, "Nothing."); }), "Nothing.");
    result.receive()->vt = VT_I4;
    EXPECT_EQ(failureOf([&] { object.child(result, "A number."); }), "A number.");
    VARIANT* const given = result.receive();
    given->vt = VT_UNKNOWN;
    given->punkVal = &answer;
    EXPECT_EQ(failureOf([&] { object.child(result, "Nothing."); }), "no failure");
}

} // namespace
