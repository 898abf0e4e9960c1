// automation_server: answers as Excel does, in a process of its own for every application, with the embedded engine
// behind it. The system starts it, once it is registered as the server of the class.

#include "app/base/Dispatch.h"
#include "tests/excel/server/ServedApplication.h"
#include "tests/support/ComObject.h"

#include <objbase.h>

namespace {

using namespace wagemill;
using namespace wagemill::test;

/// No other program answers to it. wine.py registers it.
constexpr CLSID servedClass = {0x5d3b1c52, 0x7f0a, 0x4e6e, {0x9a, 0x41, 0x2c, 0x6b, 0x58, 0xd0, 0x17, 0xe3}};

/// Makes one application, then no more: the next one is another process.
class ApplicationFactory final : public ComObject<IClassFactory> {
public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID wanted, void** object) override
    {
        IDispatch* const application = newServedApplication();
        const HRESULT result = application->QueryInterface(wanted, object);
        application->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

} // namespace

int main()
{
    const automation::Apartment apartment;
    ApplicationFactory factory;
    DWORD registration = 0;
    if (FAILED(::CoRegisterClassObject(servedClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE, &registration)))
        return 1;
    MSG message = {};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0)
        ::DispatchMessageW(&message);
    // Without the clean-up of COM and of the windows, which under Wine may never end.
    ::TerminateProcess(::GetCurrentProcess(), 0);
}
