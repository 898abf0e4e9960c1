#include "app/base/ErrorTrap.h"

#include "app/base/Messages.h"

namespace wagemill {

namespace {

/// Project and date of the release; the same in every label.
constexpr std::string_view projectTag = "Wagemill2021/08/31";

} // namespace

ErrorTrap::ErrorTrap(std::string_view procedure)
    : m_label("in " + std::string(projectTag) + "." + std::string(procedure) + " ")
{
}

void ErrorTrap::reportApplicationError(const std::exception& error) const
{
    showMessage({applicationErrorText(error.what(), m_label, m_step), "Application Error", MessageIcon::Warning,
                 MessageButtons::Ok});
}

void reportEventFailure(const std::exception& error)
{
    showMessage({error.what(), "", MessageIcon::Warning, MessageButtons::Ok});
}

std::string applicationErrorText(std::string_view description, std::string_view label, int step)
{
    std::string text(description);
    text.append("\r\n").append(label).append("at line ").append(std::to_string(step));
    // Bare carriage returns here, unlike the line break above: support recognises our dialogs in screenshots by them.
    text.append("\r\r").append("Please email screenshot of this message to ").append(supportAddress);
    return text;
}

} // namespace wagemill
