#pragma once

#include "settings/Settings.h"

#include <memory>

namespace wagemill {

/// The platform's store of the current user. Never throws for a store that cannot be opened yet: its reads and writes
/// do.
std::unique_ptr<SettingsStore> openUserStore();

} // namespace wagemill
