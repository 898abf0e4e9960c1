#include "app/base/ErrorTrap.h"

#include "app/base/Messages.h"

namespace wagemill {

void ErrorTrap::step(int number, const std::function<void()>& work)
{
    try {
        work();
    } catch (const std::exception& error) {
        // Two of the line breaks are bare carriage returns: support recognises our dialogs in screenshots by them.
        showMessage({error.what() + ("\r\nin Wagemill2021/08/31." + m_procedure) + " at line " +
                         std::to_string(number) +
                         "\r\rPlease email screenshot of this message to support@quellory.example",
                     "Application Error", MessageIcon::Warning, MessageButtons::Ok});
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
