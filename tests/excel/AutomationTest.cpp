#include "workbook/excel/Automation.h"

#include "tests/support/FakeDispatch.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace wagemill;
using namespace wagemill::automation;
using wagemill::test::FakeDispatch;

namespace {

HRESULT WINAPI describeLater(EXCEPINFO* exception)
{
    exception->bstrDescription = ::SysAllocString(L"The sheet is protected.");
    return S_OK;
}

std::string failureOf(FakeDispatch& answer)
{
    try {
        Object(Dispatch(&answer)).call(L"SaveAs");
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
        {S_OK, TYPE_E_INVDATAREAD, nullptr, false, 0,
         "Excel failed at \"SaveAs\": Excel lacks the language pack of your regional format. Please install it, or "
         "choose the regional format of Excel's own language in the settings of Windows."},
        {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), S_OK, nullptr, false, 0,
         "Excel failed at \"SaveAs\": Excel has ended, or its process no longer answers."},
    };
    for (const auto& [name, call, description, isDescribedLater, scode, expected] : cases) {
        FakeDispatch answer;
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
        FakeDispatch answer;
        answer.callResult = result;
        const std::string text = failureOf(answer);
        EXPECT_TRUE(text.starts_with("Excel failed at \"SaveAs\": ")) << text;
        EXPECT_GT(text.size(), std::string("Excel failed at \"SaveAs\": .").size() + 4) << text;
    }
}

/// A call that was rejected has not been made.
TEST(AutomationCall, IsMadeAgainWhileItIsRejected)
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
        EXPECT_EQ(failureOf(answer) == "no failure", rejection != RPC_E_DISCONNECTED);
        EXPECT_EQ(answer.calls.size(), calls) << std::hex << rejection;
    }
}

TEST(AutomationCall, FailsOnceAfterTenSecondsAndSaysThatExcelIsBusy)
{
    FakeDispatch answer;
    answer.callResult = DISP_E_EXCEPTION;
    answer.exception.scode = static_cast<SCODE>(0x800AC472);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(failureOf(answer),
              "Excel failed at \"SaveAs\": Excel is busy. Please finish what you are doing in Excel, "
              "close any message or dialog that it shows, and make the workbook again.");
    const auto time = std::chrono::steady_clock::now() - start;
    EXPECT_GE(time, std::chrono::seconds(10));
    EXPECT_LT(time, std::chrono::seconds(11));
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

    FakeDispatch answer;
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
