#include "app/base/PlatformFiles.h"

#include <windows.h>

#include <oleauto.h>

#include <array>
#include <memory>
#include <string>

namespace wagemill::platform {

namespace {

/// Keeps the thread able to call automation objects; it may be already.
class AutomationThread {
public:
    AutomationThread() : m_entered(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    AutomationThread(const AutomationThread&) = delete;
    AutomationThread& operator=(const AutomationThread&) = delete;
    ~AutomationThread()
    {
        if (m_entered)
            ::CoUninitialize();
    }

private:
    bool m_entered;
};

struct ReleaseObject {
    void operator()(IUnknown* object) const { object->Release(); }
};

struct FreeBstr {
    void operator()(wchar_t* text) const { ::SysFreeString(text); }
};

std::unique_ptr<IDispatch, ReleaseObject> createByName(const wchar_t* className)
{
    CLSID id;
    void* object = nullptr;
    if (FAILED(::CLSIDFromProgID(className, &id)) ||
        FAILED(::CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &object)))
        return nullptr;
    return std::unique_ptr<IDispatch, ReleaseObject>(static_cast<IDispatch*>(object));
}

/// DeleteFile(path, force) of the scripting object; arguments go in the reverse order.
void callDeleteFile(IDispatch& fileSystem, const std::filesystem::path& path, bool force)
{
    std::wstring name = L"DeleteFile";
    wchar_t* names = name.data();
    DISPID member = DISPID_UNKNOWN;
    if (FAILED(fileSystem.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &member)))
        return;
    const std::unique_ptr<wchar_t, FreeBstr> pathText(::SysAllocString(path.c_str()));
    std::array<VARIANTARG, 2> arguments = {};
    arguments[0].vt = VT_BOOL;
    arguments[0].boolVal = force ? VARIANT_TRUE : VARIANT_FALSE;
    arguments[1].vt = VT_BSTR;
    arguments[1].bstrVal = pathText.get();
    DISPPARAMS parameters = {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    static_cast<void>(fileSystem.Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr,
                                        nullptr, nullptr)); // nobody is told of a failure
}

} // namespace

void deleteByForce(const std::filesystem::path& path)
{
    const AutomationThread thread;
    if (const auto fileSystem = createByName(L"Scripting.FileSystemObject"))
        callDeleteFile(*fileSystem, path, true);
}

} // namespace wagemill::platform
