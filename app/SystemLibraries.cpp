#include <windows.h>

#include <cstddef>
#include <cstdint>

// The libraries that the program names come from the folder of the system alone: one of such a name that lies beside a
// downloaded program is not loaded. The loader reads this; set_load_configuration.py tells it where.
// https://learn.microsoft.com/windows/win32/debug/pe-format#the-load-configuration-structure-image-only
struct LoadConfiguration {
    std::uint32_t size = sizeof(LoadConfiguration);
    std::byte unused[74] = {};
    std::uint16_t dependentLoadFlags = 0x0800; // LOAD_LIBRARY_SEARCH_SYSTEM32
    std::byte more[32] = {};
};
static_assert(offsetof(LoadConfiguration, dependentLoadFlags) == 0x4E && sizeof(LoadConfiguration) == 112);

extern "C" {
extern const LoadConfiguration wagemillLoadConfiguration;
const LoadConfiguration wagemillLoadConfiguration;
}
