#include "help/HelpMessage.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Messages.h"

#include <string>

namespace wagemill {

void showHelpMessage()
{
    ErrorTrap trap("Form1.PushButton6_Click");
    trap.step(10, [] {
        showMessage({.text = "Questions? Please contact Team Quellory at " + std::string(contactAddress), .title = {}});
    });
}

} // namespace wagemill
