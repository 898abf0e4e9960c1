#include "app/base/Dispatch.h"
#include "app/base/PlatformFiles.h"

namespace wagemill::platform {

void deleteByForce(const std::filesystem::path& path)
{
    using namespace automation;
    const Apartment apartment;
    try {
        const Dispatch fileSystem(L"Scripting.FileSystemObject", CLSCTX_INPROC_SERVER);
        fileSystem.invoke(fileSystem.identifiers({L"DeleteFile"}), CallKind::Call,
                          arguments(Variant::ofText(path.native()), Variant::ofBoolean(true)));
    } catch (const CallFailure&) {
        return; // nobody is told of a failure
    }
}

} // namespace wagemill::platform
