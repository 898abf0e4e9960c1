#include "workbook/engine/formula/FormulaFunctions.h"

#include <array>
#include <cmath>

namespace wagemill::engine {

namespace {

/// Equal payments at equal times: present value, payments and future value, each with its interest, add up to 0.
struct Annuity {
    double rate;
    bool paidFirst; ///< payments are due when their time begins

    double growth(double payments) const { return 1 + interest(payments); }
    /// The growth less 1, exact for small rates too.
    double interest(double payments) const { return std::expm1(payments * std::log1p(rate)); }
    /// What payments of 1 are worth in the end.
    double sum(double payments) const
    {
        return rate == 0 ? payments : (paidFirst ? 1 + rate : 1) * interest(payments) / rate;
    }
};

/// The last argument says when the payments are due.
Annuity annuityOf(const FunctionCall& call)
{
    return {call.number(0), call.number(4, 0) != 0};
}

Answer payment(const FunctionCall& call)
{
    const Annuity annuity = annuityOf(call);
    const double payments = call.number(1);
    return -(call.number(2) * annuity.growth(payments) + call.number(3, 0)) / annuity.sum(payments);
}

Answer presentValue(const FunctionCall& call)
{
    const Annuity annuity = annuityOf(call);
    const double payments = call.number(1);
    return -(call.number(3, 0) + call.number(2) * annuity.sum(payments)) / annuity.growth(payments);
}

Answer futureValue(const FunctionCall& call)
{
    const Annuity annuity = annuityOf(call);
    const double payments = call.number(1);
    return -(call.number(3, 0) * annuity.growth(payments) + call.number(2) * annuity.sum(payments));
}

Answer numberOfPayments(const FunctionCall& call)
{
    const Annuity annuity = annuityOf(call);
    const double present = call.number(2);
    const double future = call.number(3, 0);
    if (annuity.rate == 0)
        return -(present + future) / call.number(1);
    const double perpetual = call.number(1) * annuity.sum(1) / annuity.rate;
    return std::log((perpetual - future) / (perpetual + present)) / std::log1p(annuity.rate);
}

constexpr auto table = std::to_array<FunctionBinding>({
    {"PMT", payment},
    {"PV", presentValue},
    {"FV", futureValue},
    {"NPER", numberOfPayments},
});

} // namespace

constinit const std::span<const FunctionBinding> financialFunctions = table;

} // namespace wagemill::engine
