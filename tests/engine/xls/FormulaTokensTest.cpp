#include "workbook/engine/xls/FormulaTokens.h"
#include "tests/engine/xls/TestBooks.h"

#include <gtest/gtest.h>

namespace wagemill::engine::xls {

namespace {

Formula read(const char* tokens, const char* trailing = "", const FormulaContext& context = {})
{
    return readFormula(fromHex(tokens), fromHex(trailing), context);
}

} // namespace

TEST(FormulaTokens, ComeBackByteForByte)
{
    struct {
        const char* text;
        const char* tokens;
        const char* trailing = "";
        bool opaque = false;
    } const cases[] = {
        {"SUM(G4:J4)", "25 0300 0300 06C0 09C0 19 10 0000"},
        {"VLOOKUP over another sheet", "44 0300 01C0 3B 0100 0300 1B00 0100 0D00 1E 0200 1D 00 42 04 6600"},
        {"IF with jumps",
         "44 0200 07C0 1E 0100 0D 19 02 0800 17 01 00 78 19 08 0B00 17 01 00 79 19 08 0300 42 03 0100"},
        {"CHOOSE with jumps",
         "24 0000 00C0 19 04 0200 0600 0D00 1400 1E 0A00 19 08 0A00 1E 1400 19 08 0300 42 03 6400"},
        {"every binary operator",
         "1E 0100 1E 0200 03 1E 0200 04 1E 0200 05 1E 0200 06 1E 0200 07 1E 0200 08 1E 0200 09 "
         "1E 0200 0A 1E 0200 0B 1E 0200 0C 1E 0200 0D 1E 0200 0E"},
        {"range operators", "24 0000 00C0 24 0100 00C0 11 24 0200 00C0 10 24 0300 00C0 0F"},
        {"signs, percent and brackets", "1F 000000000000F83F 12 13 14 15"},
        {"text, wide text", "17 03 00 61 62 E9 17 02 01 E565 2C67 08"},
        {"logical, error, missing argument", "1D 01 1C 2A 16 42 03 0100"},
        {"fixed and counted functions", "44 0000 0000 41 0200 1E 0200 41 1B00"},
        {"bad references", "2A 00000000 2B 0000000000000000 3C 0000 00000000 3D 0000 0000000000000000 42 04 0400"},
        {"bad references as values", "4A 00000000 4B 0000000000000000 03"},
        {"name, extern name", "43 01000000 59 0000 02000000 03"},
        {"user function", "23 01000000 1E 0500 42 02 FF00"},
        {"spaces", "19 40 0102 1E 0500"},
        {"volatile", "19 01 0000 41 DD00"},
        {"unknown function with a count", "1E 0500 42 01 0F27"},
        {"constant array", "60 00000000000000 42 01 0400",
         "01 0100 01 000000000000F03F 02 0200 00 61 62 04 0100000000000000 10 2A00000000000000"},
        {"array with an empty value", "20 00000000000000 42 01 0400", "00 0000 00 0000000000000000"},
        {"mark of a sub-expression", "29 0B00 24 0000 00C0 24 0100 00C0 10 15 42 01 0400"},
        {"attribute without a meaning", "1E 0500 19 00 0000", "", false},
        {"part of a shared formula", "01 0300 0200", "", true},
        {"natural-language label", "18 02 0000 0000", "AB CD", true},
        {"unknown function without a count", "1E 0500 41 0F27", "", true},
        {"unknown token", "1E 0500 3F", "", true},
        {"command of a macro sheet", "1E 0500 42 81 0400", "", true},
    };
    for (const auto& [text, tokens, trailing, opaque] : cases) {
        const Formula formula = read(tokens, trailing);
        EXPECT_EQ(formula.tokens.size() == 1 && std::holds_alternative<OpaqueToken>(formula.tokens[0]), opaque) << text;
        ByteWriter writtenTokens;
        ByteWriter writtenTrailing;
        writeFormula(formula, writtenTokens, writtenTrailing);
        EXPECT_EQ(writtenTokens.take(), fromHex(tokens)) << text;
        EXPECT_EQ(writtenTrailing.take(), fromHex(trailing)) << text;
    }
}

TEST(FormulaTokens, JumpsLeadToTokens)
{
    // cell, choose, 10, goto, 20, goto, CHOOSE
    const auto choice =
        read("24 0000 00C0 19 04 0200 0600 0D00 1400 1E 0A00 19 08 0A00 1E 1400 19 08 0300 42 03 6400").tokens;
    EXPECT_EQ(std::get<AttributeToken>(choice[1]).targets, (std::vector<std::size_t>{2, 4, 6}));
    EXPECT_EQ(std::get<AttributeToken>(choice[3]).targets, std::vector<std::size_t>{7});
}

TEST(FormulaTokens, OffsetsCountFromTheirCellAroundTheEdges)
{
    const auto first = [](const char* tokens, CellAddress origin) {
        return std::get<ReferenceToken>(read(tokens, "", {origin}).tokens.front()).first;
    };
    EXPECT_EQ(first("4C FFFF FFC0", {10, 5}), (ReferencePart{9, 4, true, true}));      // one up, one left
    EXPECT_EQ(first("4C FFFF FFC0", {0, 0}), (ReferencePart{65535, 255, true, true})); // around the edge
    EXPECT_EQ(first("4C 0200 0300", {10, 5}), (ReferencePart{2, 3, false, false}));    // absolute parts stay
    EXPECT_EQ(first("4C 0200 0380", {10, 5}), (ReferencePart{12, 3, true, false}));
    EXPECT_EQ(first("2D FFFF 0100 00C0 0000", {0, 4}), (ReferencePart{1, 0, false, false})); // corners put in order
}

TEST(FormulaTokens, NumbersThatDoNotExistBecomeErrors)
{
    EXPECT_EQ(read("43 01000000", "", {{}, 0, 0}).tokens.front(), Token(ErrorToken{ErrorCode::Name}));
    EXPECT_EQ(read("59 0000 01000000", "", {{}, 0, 0}).tokens.front(), Token(ErrorToken{ErrorCode::Name}));
    EXPECT_TRUE(std::get<ReferenceToken>(read("5A 0000 0000 0000", "", {{}, 0, 0}).tokens.front()).bad);
    EXPECT_TRUE(std::get<ReferenceToken>(read("44 0000 0001").tokens.front()).bad) << "column 256";
    EXPECT_EQ(read("1F 000000000000F07F").tokens.front(), Token(ErrorToken{ErrorCode::Number})) << "infinity";
    EXPECT_EQ(read("1C 99").tokens.front(), Token(ErrorToken{ErrorCode::NotAvailable}));
}

TEST(FormulaTokens, RefusesWhatIsNotAnExpression)
{
    for (const char* tokens : {
             "",                           // nothing
             "03",                         // no operands
             "1E 0100 03",                 // one operand
             "1E 0100 1E 0200",            // two results
             "1E 01",                      // cut off
             "17 FF 00 61",                // text longer than the formula
             "42 05 0400",                 // more arguments than there are
             "60 00000000000000",          // constant array without its values
             "1E 0100 19 02 0100 1E 0100", // jump into a token
             "1E 0100 19 04 FFFF",         // choices cut off
             "26 000000000000",            // areas cut off
         })
        EXPECT_THROW(read(tokens), DamagedFile) << tokens;
    EXPECT_THROW(read("60 00000000000000", "FF FFFF 01"), DamagedFile) << "array of 16 million values in one byte";
    EXPECT_THROW(readFormula(Bytes(1801, std::byte{0x16}), {}, {}), DamagedFile);
}

TEST(FormulaTokens, WritesMarksAndRefusesWhatTheFileCannotHold)
{
    ByteWriter tokens;
    ByteWriter trailing;
    writeFormula({{FunctionToken{OperandClass::Value, 221, 0, false}}}, tokens, trailing); // TODAY always changes
    EXPECT_EQ(tokens.take(), fromHex("1901000041DD00"));
    EXPECT_THROW(writeFormula({{TextToken{std::string(256, 'x')}}}, tokens, trailing), std::length_error);
    EXPECT_THROW(writeFormula({std::vector<Token>(601, NumberToken{1})}, tokens, trailing), std::length_error);
}

} // namespace wagemill::engine::xls
