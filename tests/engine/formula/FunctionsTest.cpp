#include "tests/engine/formula/Calculator.h"

#include <gtest/gtest.h>

namespace wagemill::engine {
namespace {

constexpr auto valueError = ErrorCode::Value;
constexpr auto numberError = ErrorCode::Number;
constexpr auto notAvailable = ErrorCode::NotAvailable;

/// A sheet with one of everything: A1 to A8 are 3, -1, text "5", "abc", TRUE, empty, #DIV/0!, "".
class Functions : public testing::Test {
protected:
    Functions()
    {
        calculator.type("A1", "3").type("A2", "-1").type("A3", "'5").type("A4", "abc").type("A5", "TRUE");
        calculator.type("A7", "#DIV/0!").type("A8", "=\"\"");
        calculator.type("B1", "10").type("B2", "20").type("B3", "20").type("B4", "40");
        calculator.type("C1", "apple").type("C2", "Pear").type("C3", "pineapple").type("C4", "a*b");
    }

    Calculator calculator;
};

TEST_F(Functions, AddUpCountAndCompareNumbers)
{
    const Case cases[] = {
        {"=SUM(A1:A6)", 2.0}, // texts and logicals in cells do not count
        {"=SUM(A1:A7)", ErrorCode::DivisionByZero},
        {"=SUM(A3)", 0.0},
        {"=SUM(\"5\",TRUE,)", 6.0}, // given as such, they do
        {"=SUM(\"abc\")", valueError},
        {"=AVERAGE(B1:B4)", 22.5},
        {"=AVERAGE(A3:A4)", ErrorCode::DivisionByZero},
        {"=MIN(A1:A6)", -1.0},
        {"=MAX(A1:A6,9)", 9.0},
        {"=MAX(A4:A4)", 0.0},
        {"=MEDIAN(B1:B4)", 20.0},
        {"=MEDIAN(1,9,2)", 2.0},
        {"=MODE(B1:B4)", 20.0},
        {"=COUNT(A1:A8)", 2.0}, // errors neither
        {"=COUNT(A1:A8,\"7\",\"x\",1/0)", 3.0},
        {"=COUNTA(A1:A8)", 7.0},
        {"=COUNTBLANK(A1:A8)", 2.0},
        {"=PRODUCT(A1:A6)", -3.0},
        {"=SUBTOTAL(9,B1:B4)", 90.0},
        {"=SUBTOTAL(1,B1:B4)", 22.5},
        {"=SUBTOTAL(12,B1:B4)", valueError},
        {"=LARGE(B1:B4,1)", 40.0},
        {"=SMALL(B1:B4,2)", 20.0},
        {"=LARGE(B1:B4,5)", numberError},
        {"=RANK(20,B1:B4)", 2.0},
        {"=RANK(40,B1:B4,1)", 4.0},
        {"=RANK(7,B1:B4)", notAvailable},
        {"=STDEV(2,4,4,4,5,5,7,9)^2*7", 32.0},
        {"=VARP(2,4,4,4,5,5,7,9)", 4.0},
        {"=STDEV(1)", ErrorCode::DivisionByZero},
        {"=SUMSQ(3,4)", 25.0},
    };
    expectValues(calculator, cases);
}

TEST_F(Functions, MeetConditions)
{
    const Case cases[] = {
        {"=COUNTIF(B1:B4,20)", 2.0},
        {"=COUNTIF(B1:B4,\">=20\")", 3.0},
        {"=COUNTIF(B1:B4,\"<>20\")", 2.0},
        {"=COUNTIF(A1:A8,5)", 1.0}, // the text "5" reads as the number
        {"=COUNTIF(C1:C4,\"*apple\")", 2.0},
        {"=COUNTIF(C1:C4,\"PEAR\")", 1.0},
        {"=COUNTIF(C1:C4,\"a~*b\")", 1.0},
        {"=COUNTIF(C1:C4,\"?ear\")", 1.0},
        {"=COUNTIF(A1:A8,\"\")", 2.0},
        {"=COUNTIF(A1:A8,\"<>\")", 6.0},
        {"=COUNTIF(C1:C9,\">b\")", 2.0},
        {"=SUMIF(B1:B4,\">10\")", 80.0},
        {"=SUMIF(C1:C4,\"*apple\",B1:B4)", 30.0},
        {"=SUMIF(C1:C4,\"*apple\",B1)", 30.0}, // as large as the range that is tested
        {"=SUMIF(B1:B4,99)", 0.0},
    };
    expectValues(calculator, cases);
}

TEST_F(Functions, RoundByDecimalDigits)
{
    const Case cases[] = {
        {"=ROUND(1.005,2)", 1.01},
        {"=ROUND(-1.005,2)", -1.01},
        {"=ROUND(596.7149999999999,2)", 596.72}, // what a cell shows
        {"=ROUND(2.5,0)", 3.0},
        {"=ROUND(-2.5,0)", -3.0},
        {"=ROUND(1250,-2)", 1300.0},
        {"=ROUND(49,-2)", 0.0},
        {"=ROUND(1E+300,2)", 1e300},
        {"=ROUNDUP(1.001,2)", 1.01},
        {"=ROUNDUP(0.001,0)", 1.0},
        {"=ROUNDUP(-9.1,0)", -10.0},
        {"=ROUNDUP(1.5,2)", 1.5},
        {"=ROUNDUP(101,-2)", 200.0},
        {"=ROUNDDOWN(-1.999,2)", -1.99},
        {"=ROUNDDOWN(199,-2)", 100.0},
        {"=TRUNC(-8.9)", -8.0},
        {"=INT(-8.1)", -9.0},
        {"=EVEN(1.5)", 2.0},
        {"=EVEN(-3)", -4.0},
        {"=ODD(2)", 3.0},
        {"=ODD(0)", 1.0},
        {"=ODD(-1.5)", -3.0},
        {"=CEILING(2.1,0.5)", 2.5},
        {"=CEILING(0.3,0.1)", 0.3},
        {"=CEILING(-2.5,-2)", -4.0},
        {"=FLOOR(2.9,0.5)", 2.5},
        {"=FLOOR(2.5,-2)", numberError},
        {"=FLOOR(1,0)", ErrorCode::DivisionByZero},
        {"=MOD(-3,2)", 1.0},
        {"=MOD(3,-2)", -1.0},
        {"=MOD(3,0)", ErrorCode::DivisionByZero},
    };
    expectValues(calculator, cases);
}

TEST_F(Functions, CalculateRootsPowersAndLogarithms)
{
    const Case cases[] = {
        {"=ABS(-2)", 2.0},          {"=SIGN(-0.5)", -1.0},       {"=SQRT(16)", 4.0},
        {"=SQRT(-1)", numberError}, {"=POWER(2,10)", 1024.0},    {"=EXP(0)", 1.0},
        {"=LN(EXP(3))", 3.0},       {"=LN(0)", numberError},     {"=LOG(8,2)", 3.0},
        {"=LOG(1000)", 3.0},        {"=LOG10(0.01)", -2.0},      {"=LOG(5,1)", ErrorCode::DivisionByZero},
        {"=FACT(5)", 120.0},        {"=ROUND(PI(),5)", 3.14159}, {"=EXP(1000)", numberError},
    };
    expectValues(calculator, cases);
}

TEST_F(Functions, DecideAndTell)
{
    const Case cases[] = {
        {"=IF(A1>1,\"more\",\"less\")", text("more")},
        {"=IF(A1>5,\"more\")", false},
        {"=IF(A1>5,1,)", 0.0},
        {"=IF(A1>1,7,1/0)", 7.0}, // the other part is not computed
        {"=IF(A1<1,1/0,8)", 8.0},
        {"=IF(A7,1,2)", ErrorCode::DivisionByZero},
        {"=IF(\"abc\",1,2)", valueError},
        {"=IF(\"true\",1,2)", 1.0},
        {"=IF(A6,1,2)", 2.0},
        {"=SUM(IF(TRUE,B1:B4,0))", 90.0}, // a reference passes through
        {"=CHOOSE(2,1/0,\"b\",1/0)", text("b")},
        {"=CHOOSE(4,1,2,3)", valueError},
        {"=CHOOSE(A7,1)", ErrorCode::DivisionByZero},
        {"=SUM(CHOOSE(1,B1:B2,B3))", 30.0},
        {"=IFERROR(1/0,\"none\")", text("none")},
        {"=IFERROR(7,1/0)", 7.0},
        {"=AND(TRUE,1,A1)", true},
        {"=AND(A1:A6,0)", false},
        {"=AND(A3:A4)", valueError}, // nothing to decide by
        {"=OR(FALSE,A5)", true},
        {"=OR(A7,TRUE)", ErrorCode::DivisionByZero},
        {"=NOT(A6)", true},
        {"=ISERROR(A7)", true},
        {"=ISERR(NA())", false},
        {"=ISNA(NA())", true},
        {"=ISNA(A7)", false},
        {"=ISBLANK(A6)", true},
        {"=ISBLANK(A8)", false}, // a formula that answers "" is not nothing
        {"=ISNUMBER(A3)", false},
        {"=ISTEXT(A3)", true},
        {"=ISNONTEXT(A6)", true},
        {"=ISLOGICAL(A5)", true},
        {"=ISREF(A1)", true},
        {"=ISREF(1)", false},
        {"=ERROR.TYPE(A7)", 2.0},
        {"=ERROR.TYPE(1)", notAvailable},
        {"=N(A5)", 1.0},
        {"=N(A4)", 0.0},
        {"=T(A4)", text("abc")},
        {"=T(A1)", text("")},
        {"=TYPE(\"x\")", 2.0},
    };
    expectValues(calculator, cases);
}

TEST_F(Functions, WorkOnText)
{
    const Case cases[] = {
        {"=LEFT(\"payroll\",3)", text("pay")},
        {"=LEFT(\"\u00E9t\u00E9\")", text("\u00E9")}, // characters, not bytes
        {"=RIGHT(\"payroll\",4)", text("roll")},
        {"=RIGHT(\"ab\",9)", text("ab")},
        {"=LEFT(\"ab\",-1)", valueError},
        {"=MID(\"payroll\",4,2)", text("ro")},
        {"=MID(\"ab\",9,2)", text("")},
        {"=MID(\"ab\",0,2)", valueError},
        {"=LEN(\"\u00E9t\u00E9\")", 3.0},
        {"=LEN(A1)", 1.0},
        {"=TRIM(\"  a   b \")", text("a b")},
        {"=UPPER(\"\u00E9t\u00E9 \u00DF\")", text("\u00C9T\u00C9 \u00DF")},
        {"=LOWER(\"\u0416\u00C9A\")", text("\u0436\u00E9a")},
        {"=PROPER(\"john o'neil-smith 2nd\")", text("John O'Neil-Smith 2Nd")},
        {"=CONCATENATE(A1,\" \",A4,A5)", text("3 abcTRUE")},
        {"=FIND(\"p\",C3)", 1.0},
        {"=FIND(\"P\",C3)", valueError},
        {"=FIND(\"p\",C3,2)", 6.0},
        {"=FIND(\"\",\"ab\")", 1.0},
        {"=SEARCH(\"APP\",C3)", 5.0},
        {"=SEARCH(\"n?a\",C3)", 3.0},
        {"=SEARCH(\"~*\",C4)", 2.0},
        {"=SEARCH(\"z\",C4)", valueError},
        {"=SUBSTITUTE(\"a-b-c\",\"-\",\"\")", text("abc")},
        {"=SUBSTITUTE(\"a-b-c\",\"-\",\"+\",2)", text("a-b+c")},
        {"=REPLACE(\"payroll\",1,3,\"en\")", text("enroll")},
        {"=REPT(\"ab\",3)", text("ababab")},
        {"=LEN(REPT(\"x\",32767))", 32767.0},
        {"=REPT(\"x\",32768)", valueError},
        {"=REPT(\"x\",1E9)", valueError},
        {"=REPT(\"\",1E9)", text("")},
        {"=REPT(\"\",-1)", valueError},
        {"=EXACT(\"a\",\"A\")", false},
        {"=CHAR(65)", text("A")},
        {"=CHAR(128)", text("\u20AC")},
        {"=CHAR(0)", valueError},
        {"=CODE(\"\u20AC\")", 128.0},
        {"=CODE(\"\")", valueError},
        {"=VALUE(\"$1,234.50\")", 1234.5},
        {"=VALUE(\"x\")", valueError},
        {"=FIXED(1234.567)", text("1,234.57")},
        {"=FIXED(1234.567,1,TRUE)", text("1234.6")},
        {"=FIXED(1254,-2)", text("1,300")},
        {"=DOLLAR(-5)", text("($5.00)")},
        {"=TEXT(0.0765,\"0.00%\")", text("7.65%")},
        {"=TEXT(46112,\"m/d/yy\")&\"\"", text("3/31/2026")},
        {"=TEXT(\"12\",\"0.0\")", text("12.0")},
        {"=TEXT(\"x\",\"0.0\")", text("x")},
    };
    expectValues(calculator, cases);
}

TEST_F(Functions, CountDays)
{
    const Case cases[] = {
        {"=DATE(2026,3,31)", 46112.0},
        {"=DATE(1900,1,1)", 1.0},
        {"=DATE(1900,2,29)", 60.0}, // the day that never was
        {"=DATE(1900,3,1)", 61.0},
        {"=DATE(104,2,1)", 38018.0}, // years count from 1900
        {"=DATE(2025,14,0)", 46053.0},
        {"=DATE(2026,-1,1)", 45962.0},
        {"=DATE(9999,12,31)", 2958465.0},
        {"=DATE(10000,1,1)", numberError},
        {"=YEAR(38018)", 2004.0},
        {"=MONTH(60)", 2.0},
        {"=DAY(60)", 29.0},
        {"=DAY(0)", 0.0},
        {"=YEAR(-1)", numberError},
        {"=WEEKDAY(46112)", 3.0}, // a Tuesday
        {"=WEEKDAY(46112,2)", 2.0},
        {"=WEEKDAY(46112,3)", 1.0},
        {"=HOUR(0.75)", 18.0},
        {"=MINUTE(TIME(1,2,3))", 2.0},
        {"=SECOND(TIME(1,2,3))", 3.0},
        {"=TIME(27,0,0)", 0.125},
        {"=DATEVALUE(\"3/31/2026\")", 46112.0},
        {"=DATEVALUE(\"x\")", valueError},
        {"=TODAY()", 46112.0},
        {"=NOW()", 46112.75},
        {"=EDATE(DATE(2024,1,31),1)", 45351.0}, // 29 February 2024
        {"=EOMONTH(46112,-1)", 46081.0},
        {"=DAYS360(DATE(2026,1,31),DATE(2026,3,31))", 60.0},
    };
    expectValues(calculator, cases);
    calculator.book.dates1904 = true;
    const Case since1904[] = {
        {"=DATE(1904,1,1)", 0.0}, {"=DATE(2026,3,31)", 44650.0}, {"=YEAR(0)", 1904.0},
        {"=TODAY()", 44650.0},    {"=WEEKDAY(44650)", 3.0},
    };
    expectValues(calculator, since1904);
}

TEST_F(Functions, FindTheirWayInTheSheet)
{
    const Case cases[] = {
        {"=ROW()", 9.0},
        {"=COLUMN()", 26.0},
        {"=ROW(B4)", 4.0},
        {"=COLUMN(B4:D6)", 2.0},
        {"=ROW(Z9)", 9.0}, // asks where, not what: no cycle
        {"=ROWS(B4:D6)", 3.0},
        {"=COLUMNS(B4:D6)", 3.0},
        {"=COLUMNS({1,2})", 2.0},
        {"=AREAS((A1,B2:B3))", 2.0},
        {"=ADDRESS(2,28)", text("$AB$2")},
        {"=ADDRESS(2,3,4)", text("C2")},
        {"=ADDRESS(2,3,2,FALSE)", text("R2C[3]")},
        {"=ADDRESS(2,3,1,TRUE,\"Pay\")", text("Pay!$C$2")},
        {"=ADDRESS(0,3)", valueError},
        {"=SUM(OFFSET(B1,1,0,2,1))", 40.0},
        {"=OFFSET(B1,3,0)", 40.0},
        {"=SUM(OFFSET(B4,0,0,-4))", 90.0},
        {"=OFFSET(B1,-1,0)", ErrorCode::Reference},
        {"=INDIRECT(\"B\"&2)", 20.0},
        {"=SUM(INDIRECT(\"Pay!B1:B4\"))", 90.0},
        {"=INDIRECT(\"nowhere\")", ErrorCode::Reference},
    };
    expectValues(calculator, cases);
}

} // namespace
} // namespace wagemill::engine
