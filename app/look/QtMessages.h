#pragma once

#include "app/base/Messages.h"

namespace wagemill {

/// Message boxes of the platform, modal over the active window. Escape and the close box answer No where there is a No.
class QtMessages : public Messages {
public:
    MessageAnswer show(const Message& message) override;
};

} // namespace wagemill
