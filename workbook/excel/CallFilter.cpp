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

CallFilter::CallFilter()
{
    static NoEventsWhileWaiting filter;
    ::DisableProcessWindowsGhosting(); // no "(Not Responding)" in the title of a window that waits
    // Refused on a thread that waits without a message loop: there are no events to hold back there.
    ::CoRegisterMessageFilter(&filter, &m_previous);
}

CallFilter::~CallFilter()
{
    IMessageFilter* ours = nullptr;
    ::CoRegisterMessageFilter(m_previous, &ours);
    if (m_previous != nullptr)
        m_previous->Release();
}

std::shared_ptr<CallFilter> CallFilter::ofThisThread()
{
    static thread_local std::weak_ptr<CallFilter> current;
    auto filter = current.lock();
    if (!filter)
        current = filter = std::shared_ptr<CallFilter>(new CallFilter);
    return filter;
}

} // namespace wagemill::automation
