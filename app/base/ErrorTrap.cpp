#include "app/base/ErrorTrap.h"

#include "app/base/Messages.h"

namespace wagemill {

namespace {

/// The text of the error dialog. Two of its line breaks are bare carriage returns: support recognises our dialogs in
/// screenshots by them.
/// description  what the failing operation reported
std::string applicationErrorText(const std::string& description, const std::string& procedure, int step)
{
    return description + "\r\nin Wagemill2021/08/31." + procedure + " at line " + std::to_string(step) +
           "\r\rPlease email screenshot of this message to support@quellory.example";
}

} // namespace

void ErrorTrap::step(int number, const std::function<void()>& work)
{
    m_step = number;
    try {
        work();
    } catch (const std::exception& error) {
        showMessage({applicationErrorText(error.what(), m_procedure, m_step), "Application Error", MessageIcon::Warning,
                     MessageButtons::Ok});
    }
}

void handleEvent(const std::function<void()>& work)
{
    try {
        work();
    } catch (const std::exception& error) {
        showMessage({error.what(), "", MessageIcon::Warning, MessageButtons::Ok});
    }
}

void quietly(const std::function<void()>& work)
try {
    work();
} catch (const std::exception&) {
    return;
}

} // namespace wagemill
