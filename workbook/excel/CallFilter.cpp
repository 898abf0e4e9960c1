#include "workbook/excel/CallFilter.h"

#include <windows.h>

#include <objbase.h>
#include <objidl.h>

namespace wagemill::automation {

namespace {

/// https://learn.microsoft.com/windows/win32/api/objidl/nn-objidl-imessagefilter
class NoEventsWhileWaiting final : public IMessageFilter {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override
    {
        if (wanted != IID_IUnknown && wanted != IID_IMessageFilter) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IMessageFilter*>(this);
        return S_OK;
    }
    // There is one, for as long as the program runs.
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    DWORD STDMETHODCALLTYPE HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override
    {
        return SERVERCALL_ISHANDLED;
    }
    DWORD STDMETHODCALLTYPE RetryRejectedCall(HTASK, DWORD, DWORD) override
    {
        constexpr DWORD cancelTheCall = 0xFFFFFFFF;
        return cancelTheCall;
    }
    DWORD STDMETHODCALLTYPE MessagePending(HTASK, DWORD, DWORD) override { return PENDINGMSG_WAITNOPROCESS; }
};

} // namespace

std::shared_ptr<void> filterCalls()
{
    static NoEventsWhileWaiting ours;
    static thread_local std::weak_ptr<void> current;
    if (!current.expired())
        return current.lock();
    ::DisableProcessWindowsGhosting(); // no "(Not Responding)" in the title of a window that waits
    IMessageFilter* before = nullptr;
    // Refused on a thread that waits without a message loop: there are no events to hold back there.
    ::CoRegisterMessageFilter(&ours, &before);
    const std::shared_ptr<void> filter(before, [](IMessageFilter* previous) {
        ::CoRegisterMessageFilter(previous, nullptr);
        if (previous != nullptr)
            previous->Release();
    });
    current = filter;
    return filter;
}

} // namespace wagemill::automation
