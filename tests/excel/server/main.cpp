// automation_server: answers as Excel does, in a process of its own for every application, with the embedded engine
// behind it. The system starts it, once it is registered as the server of the class.

#include "app/base/Dispatch.h"
#include "tests/excel/server/Instructions.h"
#include "tests/excel/server/ServedApplication.h"
#include "tests/support/ComObject.h"

#include <objbase.h>
#include <objidl.h>

namespace {

using namespace wagemill;
using namespace wagemill::test;

/// No other program answers to it. wine.py registers it.
constexpr CLSID servedClass = {0x5d3b1c52, 0x7f0a, 0x4e6e, {0x9a, 0x41, 0x2c, 0x6b, 0x58, 0xd0, 0x17, 0xe3}};

/// Rejects calls as a program does that is busy with its user. A call that is made again keeps its number.
class BusyFilter final : public ComObject<IMessageFilter> {
public:
    DWORD STDMETHODCALLTYPE HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO call) override
    {
        if (call->iid != IID_IDispatch)
            return SERVERCALL_ISHANDLED;
        const auto now = ::GetTickCount64();
        if (m_busyUntil == 0 && isBusyAt(++m_calls))
            m_busyUntil = now + std::stoul(instruction("busyfor"));
        if (now < m_busyUntil)
            return SERVERCALL_REJECTED;
        m_busyUntil = 0;
        return SERVERCALL_ISHANDLED;
    }
    DWORD STDMETHODCALLTYPE RetryRejectedCall(HTASK, DWORD, DWORD) override { return static_cast<DWORD>(-1); }
    DWORD STDMETHODCALLTYPE MessagePending(HTASK, DWORD, DWORD) override { return PENDINGMSG_WAITDEFPROCESS; }

private:
    static bool isBusyAt(int call)
    {
        const std::string busy = instruction("busy");
        return busy == "each" || busy == std::to_string(call);
    }

    int m_calls = 0;
    ULONGLONG m_busyUntil = 0; ///< 0: not busy
};

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
    BusyFilter filter;
    ::CoRegisterMessageFilter(&filter, nullptr);
    ApplicationFactory factory;
    DWORD registration = 0;
    if (FAILED(::CoRegisterClassObject(servedClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE, &registration)))
        return 1;
    MSG message = {};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0)
        ::DispatchMessageW(&message);
    ::CoRevokeClassObject(registration);
    ::CoRegisterMessageFilter(nullptr, nullptr);
    return 0;
}
