#include "workbook/engine/formula/FormulaEvaluator.h"

#include "workbook/engine/FunctionTable.h"
#include "workbook/engine/formula/FormulaFunctions.h"
#include "workbook/engine/formula/Operators.h"

#include <utility>

namespace wagemill::engine {

namespace {

constexpr int maxNameDepth = 32; ///< names that stand for formulas with names
constexpr std::size_t maxValuesPerFormula = std::size_t{1} << 20;

using AreaList = std::shared_ptr<const std::vector<Area>>;
using ArrayPointer = std::shared_ptr<const ValueArray>;

/// Whether a function may be called so; a damaged file can claim any number of arguments.
/// info  null: the file format does not say
bool takes(const FunctionInfo* info, std::size_t arguments)
{
    return info == nullptr || (arguments >= info->minArguments && arguments <= info->maxArguments);
}

bool isArray(const Operand& operand)
{
    return std::holds_alternative<ArrayPointer>(operand);
}

char parameterClass(const FunctionBinding& function, std::size_t index)
{
    const std::string_view classes = function.parameterClasses;
    return classes.empty() ? 'V' : classes[std::min(index, classes.size() - 1)];
}

CellValue intersection(const ComputedBook& book, const Area& area, CellAddress cell)
{
    const CellRect& cells = area.cells;
    const bool oneRow = cells.firstRow == cells.lastRow;
    const bool oneColumn = cells.firstColumn == cells.lastColumn;
    if (oneRow && oneColumn)
        return cellValue(book, area.sheet, cells.first());
    if (oneColumn && cell.row >= cells.firstRow && cell.row <= cells.lastRow)
        return cellValue(book, area.sheet, {cell.row, cells.firstColumn});
    if (oneRow && cell.column >= cells.firstColumn && cell.column <= cells.lastColumn)
        return cellValue(book, area.sheet, {cells.firstRow, cell.column});
    return ErrorCode::Value;
}

/// A formula that answers an empty cell is 0.
CellValue filled(CellValue value)
{
    return isEmpty(value) ? CellValue(0.0) : std::move(value);
}

/// Rows and columns that results for each element of several operands have.
struct Extent {
    int rows = 1;
    int columns = 1;

    void include(const ValueGrid& grid)
    {
        rows = std::max(rows, grid.rows());
        columns = std::max(columns, grid.columns());
    }
    std::size_t size() const { return static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns); }
};

/// The element for a place in a larger extent: one row or column serves for all, what lies beyond is #N/A.
CellValue element(const ValueGrid& grid, int row, int column)
{
    const int ownRow = grid.rows() == 1 ? 0 : row;
    const int ownColumn = grid.columns() == 1 ? 0 : column;
    if (ownRow >= grid.rows() || ownColumn >= grid.columns())
        return ErrorCode::NotAvailable;
    return grid.at(ownRow, ownColumn);
}

/// A part of a reference that is written as for cell A1.
ReferencePart partSeenFrom(CellAddress cell, ReferencePart part)
{
    if (part.rowRelative)
        part.row = (part.row + cell.row) % maxRows;
    if (part.columnRelative)
        part.column = (part.column + cell.column) % maxColumns;
    return part;
}

} // namespace

ReferenceToken seenFrom(CellAddress cell, ReferenceToken token)
{
    token.first = partSeenFrom(cell, token.first);
    if (token.last)
        token.last = partSeenFrom(cell, *token.last);
    return token;
}

Operand referredCells(const Book& book, std::size_t sheet, const ReferenceToken& token)
{
    if (token.bad)
        return errorOperand(ErrorCode::Reference);
    const CellRect cells = token.cells();
    if (!token.externSheet)
        return Area{sheet, cells};
    const SupportingBook* const referred = book.supportingBook(*token.externSheet);
    if (referred == nullptr || referred->kind != SupportingBook::Kind::Own)
        return errorOperand(ErrorCode::Reference);
    const ExternSheet& sheets = book.externSheets[*token.externSheet];
    const int lastSheet = std::min<int>(sheets.last, static_cast<int>(book.sheets.size()) - 1);
    if (sheets.first < 0 || sheets.first > lastSheet)
        return errorOperand(ErrorCode::Reference);
    if (sheets.first == lastSheet)
        return Area{static_cast<std::size_t>(lastSheet), cells};
    std::vector<Area> areas;
    for (int i = sheets.first; i <= lastSheet; ++i)
        areas.push_back({static_cast<std::size_t>(i), cells});
    return std::make_shared<const std::vector<Area>>(std::move(areas));
}

/// One pass over a list of tokens, on top of the evaluator's stack.
class FormulaEvaluator::TokenRun {
public:
    TokenRun(FormulaEvaluator& evaluator, const std::vector<Token>& tokens)
        : m_evaluator(evaluator), m_tokens(tokens), m_base(evaluator.m_stack.size())
    {
    }

    Operand result()
    {
        if (m_evaluator.m_nameDepth > 0)
            m_evaluator.reserveValues(m_tokens.size()); // names in names may multiply
        while (m_next < m_tokens.size())
            std::visit(*this, m_tokens[m_next++]);
        Operand operand = popped();
        if (m_evaluator.m_stack.size() != m_base)
            throw CannotEvaluate{};
        return operand;
    }

    void operator()(const NumberToken& token) { push(numberValue(token.number)); }
    void operator()(const TextToken& token) { push(CellValue(token.text)); }
    void operator()(const LogicalToken& token) { push(CellValue(token.value)); }
    void operator()(const ErrorToken& token) { push(errorOperand(token.error)); }
    void operator()(const MissingArgumentToken& /*token*/) { push(MissingArgument{}); }
    void operator()(const OpaqueToken& token)
    {
        if (!token.isMark)
            throw CannotEvaluate{};
    }

    void operator()(const ReferenceToken& token)
    {
        if (token.externSheet && isForeign(*token.externSheet))
            throw CannotEvaluate{"a reference to another workbook"};
        const bool inName = m_evaluator.m_nameDepth > 0;
        pushAs(token.operandClass,
               referredCells(model(), m_evaluator.m_sheet, inName ? seenFrom(m_evaluator.m_cell, token) : token));
    }

    void operator()(const NameToken& token)
    {
        if (const std::string_view called = calledName(token); !called.empty())
            return push(CalledName{called});
        if (m_evaluator.m_nameDepth >= maxNameDepth)
            throw CannotEvaluate{};
        const DefinedName& name = model().names[static_cast<std::size_t>(token.index) - 1];
        ++m_evaluator.m_nameDepth; // evaluate() starts from 0 again, whatever is thrown
        Operand operand = m_evaluator.run(name.formula.tokens);
        --m_evaluator.m_nameDepth;
        pushAs(token.operandClass, std::move(operand));
    }

    void operator()(const ArrayToken& token)
    {
        m_evaluator.reserveValues(token.values.size());
        push(std::make_shared<const ValueArray>(ValueArray{token.rows, token.columns, token.values}));
    }

    void operator()(const OperatorToken& token)
    {
        switch (token.op) {
        case Operator::Brackets:
            break;
        case Operator::Range:
        case Operator::Union:
        case Operator::Intersection:
            joinReferences(token.op);
            break;
        case Operator::Negate:
        case Operator::UnaryPlus:
        case Operator::Percent:
            calculateSigned(token.op);
            break;
        default:
            calculate(token.op);
        }
    }

    void operator()(const FunctionToken& token)
    {
        auto& stack = m_evaluator.m_stack;
        if (stack.size() < m_base + token.arguments)
            throw CannotEvaluate{};
        auto arguments = std::span(stack).last(token.arguments);
        const FunctionBinding& function = bindingOf(token, arguments);
        const bool forEachElement = token.operandClass == OperandClass::Array || m_evaluator.m_wantsArrays;
        const bool choosesArgument = token.function == ifFunction || token.function == chooseFunction;
        Operand answer = forEachElement ? callForEachElement(function, arguments, choosesArgument)
                                        : call(function, arguments, OperandClass::Value);
        stack.resize(stack.size() - token.arguments);
        pushAs(token.operandClass, std::move(answer));
    }

    void operator()(const AttributeToken& token)
    {
        switch (token.kind) {
        case AttributeToken::Kind::If:
            return chooseBranch(token);
        case AttributeToken::Kind::Choose:
            return chooseChoice(token);
        case AttributeToken::Kind::Goto:
            m_next = token.targets.front();
            break;
        case AttributeToken::Kind::Sum:
            return (*this)(FunctionToken{OperandClass::Value, sumFunction, 1, true});
        case AttributeToken::Kind::Remark:
            break;
        }
    }

private:
    const Book& model() const { return m_evaluator.m_book.model(); }

    void push(Operand operand) { m_evaluator.m_stack.push_back(std::move(operand)); }

    void pushAs(OperandClass operandClass, Operand operand)
    {
        const bool isValue = operandClass == OperandClass::Value && !m_evaluator.m_wantsArrays;
        if (isValue && !areasOf(operand).empty())
            return push(m_evaluator.single(operand));
        if (!isValue && operandClass != OperandClass::Reference && std::holds_alternative<Area>(operand)) {
            const ValueGrid grid(m_evaluator.m_book, operand);
            return push(arrayOf(m_evaluator, grid.rows(), grid.columns(),
                                [&](int row, int column) { return grid.at(row, column); }));
        }
        push(std::move(operand));
    }

    Operand popped()
    {
        auto& stack = m_evaluator.m_stack;
        if (stack.size() <= m_base)
            throw CannotEvaluate{}; // the token list of a damaged file
        Operand operand = std::move(stack.back());
        stack.pop_back();
        return operand;
    }

    bool isForeign(std::uint16_t externSheet) const
    {
        const SupportingBook* const book = model().supportingBook(externSheet);
        return book == nullptr || book->kind != SupportingBook::Kind::Own;
    }

    /// The name of an add-in's or later function that the token stands for; empty when it stands for a formula.
    std::string_view calledName(const NameToken& token) const
    {
        const auto index = static_cast<std::size_t>(token.index) - 1;
        if (token.externSheet && isForeign(*token.externSheet)) {
            const SupportingBook* const book = model().supportingBook(*token.externSheet);
            if (book == nullptr || book->kind != SupportingBook::Kind::AddIn || index >= book->externNames.size())
                throw CannotEvaluate{};
            return book->externNames[index];
        }
        if (index >= model().names.size())
            throw FormulaFailure{ErrorCode::Name};
        const DefinedName& name = model().names[index];
        return name.formula.tokens.empty() || name.name.starts_with("_xlfn.") ? std::string_view(name.name) : "";
    }

    void joinReferences(Operator op)
    {
        const Operand right = popped();
        const Operand left = popped();
        for (const Operand* operand : {&left, &right})
            if (areasOf(*operand).empty()) {
                const CellValue value = m_evaluator.single(*operand);
                return push(std::holds_alternative<ErrorCode>(value) ? value : CellValue(ErrorCode::Value));
            }
        m_evaluator.reserveValues(areasOf(left).size() * areasOf(right).size());
        const auto joined = joinedAreas(op, areasOf(left), areasOf(right));
        if (const auto* const error = std::get_if<ErrorCode>(&joined))
            return push(errorOperand(*error));
        const auto& areas = std::get<std::vector<Area>>(joined);
        push(areas.size() == 1 ? Operand(areas.front()) : std::make_shared<const std::vector<Area>>(areas));
    }

    void calculate(Operator op)
    {
        const Operand right = popped();
        const Operand left = popped();
        const bool isLast = m_next == m_tokens.size() && m_evaluator.m_nameDepth == 0;
        const auto answer = [&](const CellValue& first, const CellValue& second) {
            return isLast && isNothingButRounding(op, first, second)
                       ? CellValue(0.0)
                       : calculated(op, first, second, m_evaluator.m_rules);
        };
        if (!isArray(left) && !isArray(right))
            return push(answer(m_evaluator.single(left), m_evaluator.single(right)));
        const ValueGrid leftGrid(m_evaluator.m_book, left);
        const ValueGrid rightGrid(m_evaluator.m_book, right);
        Extent extent;
        extent.include(leftGrid);
        extent.include(rightGrid);
        push(arrayOf(m_evaluator, extent.rows, extent.columns, [&](int row, int column) {
            return answer(element(leftGrid, row, column), element(rightGrid, row, column));
        }));
    }

    void calculateSigned(Operator op)
    {
        const Operand operand = popped();
        if (!isArray(operand))
            return push(calculated(op, m_evaluator.single(operand), m_evaluator.m_rules));
        const ValueGrid grid(m_evaluator.m_book, operand);
        push(arrayOf(m_evaluator, grid.rows(), grid.columns(),
                     [&](int row, int column) { return calculated(op, grid.at(row, column), m_evaluator.m_rules); }));
    }

    /// What computes the function; takes the name that function 255 calls off the arguments.
    const FunctionBinding& bindingOf(const FunctionToken& token, std::span<Operand>& arguments) const
    {
        const FunctionInfo* info = findFunction(token.function);
        const FunctionBinding* function = findBinding(token.function);
        std::string_view name = info == nullptr ? "" : info->name;
        if (token.function == addInFunction) {
            const auto* const called = arguments.empty() ? nullptr : std::get_if<CalledName>(&arguments.front());
            if (called == nullptr)
                throw CannotEvaluate{};
            arguments = arguments.subspan(1);
            name = called->name;
            function = findBinding(name);
            info = function == nullptr ? nullptr : findFunction(function->name);
        }
        if (function == nullptr && !name.empty())
            throw CannotEvaluate{std::string(name)};
        if (function == nullptr || !takes(info, arguments.size()))
            throw CannotEvaluate{};
        return *function;
    }

    /// wanted  Array or Value
    Operand call(const FunctionBinding& function, std::span<Operand> arguments, OperandClass wanted)
    {
        const Operand* firstError = nullptr; // which only counts where there is one that the function does not take
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            const bool isValue = parameterClass(function, i) == 'V';
            if (isValue && !std::holds_alternative<CellValue>(arguments[i]) &&
                !std::holds_alternative<MissingArgument>(arguments[i]))
                arguments[i] = m_evaluator.single(arguments[i]);
            const auto* const value = std::get_if<CellValue>(&arguments[i]);
            if (value == nullptr || !std::holds_alternative<ErrorCode>(*value))
                continue;
            if (firstError == nullptr)
                firstError = &arguments[i];
            if (isValue && function.onError == OnError::Propagate)
                return *firstError;
        }
        try {
            return function.body(FunctionCall(m_evaluator, arguments, wanted)).operand;
        } catch (const FormulaFailure& failure) {
            return errorOperand(failure.error);
        }
    }

    /// Where an array is wanted, a function of values answers one for each element of its arguments.
    /// choosesArgument  it answers one of its arguments as it is, or of each its elements when it chooses for each one
    Operand callForEachElement(const FunctionBinding& function, std::span<Operand> arguments, bool choosesArgument)
    {
        const std::vector<Operand> given(arguments.begin(), arguments.end());
        const bool spreadsAll = choosesArgument && !given.empty() && isArray(given.front());
        const auto isSpread = [&](std::size_t i) {
            return (spreadsAll || parameterClass(function, i) == 'V') &&
                   (isArray(given[i]) || std::holds_alternative<Area>(given[i]));
        };
        Extent extent;
        std::size_t rowsEach = 0; // that the function may have to look through for every element
        std::vector<ValueGrid> grids;
        for (std::size_t i = 0; i < given.size(); ++i) {
            grids.emplace_back(m_evaluator.m_book, given[i]);
            if (isSpread(i))
                extent.include(grids.back());
            else
                rowsEach += static_cast<std::size_t>(grids.back().usedRows());
        }
        if (extent.size() == 1)
            return call(function, arguments, OperandClass::Array);
        constexpr std::size_t rowsForAValue = 16; // a row is passed over that much faster than a value is computed
        m_evaluator.reserveValues(extent.size() * rowsEach / rowsForAValue);
        return arrayOf(m_evaluator, extent.rows, extent.columns, [&](int row, int column) {
            for (std::size_t i = 0; i < given.size(); ++i)
                arguments[i] = isSpread(i) ? Operand(element(grids[i], row, column)) : given[i];
            return m_evaluator.single(call(function, arguments, OperandClass::Value));
        });
    }

    /// Null when there is no token, or another kind of token, in that place.
    template <class Kind>
    const Kind* tokenAt(std::size_t index) const
    {
        return index < m_tokens.size() ? std::get_if<Kind>(&m_tokens[index]) : nullptr;
    }

    /// Leaves IF or CHOOSE with its answer on the stack. target: the function, or the token after it
    void leaveFunction(std::size_t target, Operand answer)
    {
        push(std::move(answer));
        m_next = tokenAt<FunctionToken>(target) == nullptr ? target : target + 1;
    }

    void chooseBranch(const AttributeToken& token)
    {
        const auto condition = toLogical(m_evaluator.single(popped()), m_evaluator.m_rules);
        const std::size_t otherwise = token.targets.front();
        if (const auto* const error = std::get_if<ErrorCode>(&condition)) {
            const auto* const leave = tokenAt<AttributeToken>(otherwise - 1);
            if (leave == nullptr || leave->kind != AttributeToken::Kind::Goto)
                throw CannotEvaluate{};
            push(errorOperand(*error));
            m_next = leave->targets.front();
        } else if (!std::get<bool>(condition)) {
            const auto* const function = tokenAt<FunctionToken>(otherwise);
            if (function != nullptr && function->arguments > 0)
                leaveFunction(otherwise, CellValue(false));
            else
                m_next = otherwise; // not IF itself: the other part may begin with PI()
        }
    }

    void chooseChoice(const AttributeToken& token)
    {
        const auto number = toNumber(m_evaluator.single(popped()), m_evaluator.m_rules);
        const auto* const index = std::get_if<double>(&number);
        if (index != nullptr && *index >= 1 && *index < static_cast<double>(token.targets.size()))
            m_next = token.targets[static_cast<std::size_t>(*index) - 1];
        else
            leaveFunction(token.targets.back(),
                          errorOperand(index == nullptr ? std::get<ErrorCode>(number) : ErrorCode::Value));
    }

    FormulaEvaluator& m_evaluator;
    const std::vector<Token>& m_tokens;
    std::size_t m_base;
    std::size_t m_next = 0;
};

FormulaEvaluator::FormulaEvaluator(const ComputedBook& book, const CalculationSettings& settings,
                                   std::size_t& valuesLeft)
    : m_book(book), m_rules{settings.formats, settings.now, book.model().dates1904}, m_allValuesLeft(valuesLeft)
{
}

std::optional<Operand> FormulaEvaluator::evaluate(const Formula& formula, std::size_t sheet, CellAddress cell,
                                                  const ArrayArea* array)
{
    m_sheet = sheet;
    m_cell = cell;
    m_nameDepth = 0;
    m_wantsArrays = array != nullptr;
    m_valuesLeft = maxValuesPerFormula;
    m_stack.clear();
    try {
        Operand answer = run(formula.tokens);
        return array == nullptr ? filled(single(answer)) : arrayAnswer(std::move(answer), array->cells);
    } catch (const FormulaFailure& failure) {
        return errorOperand(failure.error);
    } catch (const CannotEvaluate& cannot) {
        m_missingPart = cannot.part;
        return std::nullopt;
    }
}

Operand FormulaEvaluator::arrayAnswer(Operand answer, const CellRect& area)
{
    if (std::holds_alternative<CalledName>(answer))
        throw CannotEvaluate{};
    if (!std::holds_alternative<Area>(answer))
        return answer;
    const ValueGrid grid(m_book, answer);
    return arrayOf(*this, std::min(grid.rows(), area.rows()), std::min(grid.columns(), area.columns()),
                   [&](int row, int column) { return grid.at(row, column); });
}

Operand FormulaEvaluator::run(const std::vector<Token>& tokens)
{
    return TokenRun(*this, tokens).result();
}

CellValue elementOf(const ComputedBook& book, const Operand& answer, int row, int column)
{
    return filled(element(ValueGrid(book, answer), row, column));
}

CellValue FormulaEvaluator::single(const Operand& operand) const
{
    if (const auto* const value = std::get_if<CellValue>(&operand))
        return *value;
    if (const auto* const area = std::get_if<Area>(&operand))
        return intersection(m_book, *area, m_cell);
    if (const auto* const array = std::get_if<ArrayPointer>(&operand))
        return (*array)->values.front();
    if (std::holds_alternative<AreaList>(operand))
        return ErrorCode::Value;
    if (std::holds_alternative<CalledName>(operand))
        return ErrorCode::Name; // a name without a formula that is not called but read
    return Empty{};
}

void FormulaEvaluator::reserveValues(std::size_t count)
{
    if (count > m_valuesLeft || count > m_allValuesLeft)
        throw CannotEvaluate{};
    m_valuesLeft -= count;
    m_allValuesLeft -= count;
}

} // namespace wagemill::engine
