#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace wagemill {

/// Arms one procedure: a step that fails is reported, and the procedure goes on with the next step.
class ErrorTrap {
public:
    /// procedure  window or module and procedure, "Form1.PushButton22_Click"
    explicit ErrorTrap(std::string_view procedure) : m_procedure(procedure) {}

    /// Runs one numbered step. Never throws: the user has seen and answered the error dialog instead.
    /// number  at least 1 and ascending within a procedure; loops repeat their numbers
    void step(int number, const std::function<void()>& work);

private:
    std::string m_procedure;
};

/// Runs an event handler that has no trap of its own: a failure is shown as a plain message, and the user goes on.
/// Nothing may be thrown through the window system.
void handleEvent(const std::function<void()>& work);

/// Runs what may fail without anybody being told.
void quietly(const std::function<void()>& work);

/// What a procedure reaches for and an earlier step may have failed to make.
/// Throws std::runtime_error "There is no <what>, because an earlier step failed." when the pointer is empty.
template <typename Pointer>
auto& present(const Pointer& pointer, std::string_view what)
{
    if (!pointer)
        throw std::runtime_error("There is no " + std::string(what) + ", because an earlier step failed.");
    return *pointer;
}

} // namespace wagemill
