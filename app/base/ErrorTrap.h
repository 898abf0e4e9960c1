#pragma once

#include <concepts>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace wagemill {

/// The maker's support address that ends every error dialog.
inline constexpr std::string_view supportAddress = "support@quellory.example";

/// Arms one procedure: a step that fails is reported, and the procedure goes on with the next step.
class ErrorTrap {
public:
    /// procedure  window or module and procedure, "Form1.PushButton22_Click"
    explicit ErrorTrap(std::string_view procedure);

    /// Runs one numbered step. Never throws: the user has seen and answered the error dialog instead.
    /// number  at least 1 and ascending within a procedure; loops repeat their numbers
    template <std::invocable Step>
    void step(int number, Step&& work)
    {
        m_step = number;
        run(std::forward<Step>(work));
    }

    /// Runs a statement without a number; a failure names the last numbered step passed, 0 when there is none.
    template <std::invocable Step>
    void run(Step&& work)
    {
        try {
            work();
        } catch (const std::exception& error) {
            reportApplicationError(error);
        }
    }

private:
    void reportApplicationError(const std::exception& error) const;

    std::string m_label;
    int m_step = 0;
};

void reportEventFailure(const std::exception& error);

/// Runs an event handler that has no trap of its own: a failure is shown as a plain message, and the user goes on.
/// Nothing may be thrown through the window system.
template <std::invocable Work>
void handleEvent(Work&& work)
{
    try {
        work();
    } catch (const std::exception& error) {
        reportEventFailure(error);
    }
}

/// The text of the error dialog.
/// description  what the failing operation reported
/// label        "in Wagemill2021/08/31." + procedure + one blank
std::string applicationErrorText(std::string_view description, std::string_view label, int step);

/// What a procedure reaches for and an earlier step may have failed to make.
/// Throws std::runtime_error "There is no <what>." when the pointer is empty.
template <typename Pointer>
auto& present(const Pointer& pointer, std::string_view what)
{
    if (!pointer)
        throw std::runtime_error("There is no " + std::string(what) + ", because an earlier step failed.");
    return *pointer;
}

} // namespace wagemill
