// automation_server: answers as Excel does, in a process of its own for every application, with the embedded engine
// behind it. The system starts it, once it is registered as the server of the class. What it does wrong is in
// WAGEMILL_TEST_SERVER, see Instructions.h; WAGEMILL_TEST_SERVER_LOG names the file that receives every call.

#include "app/base/PlatformFiles.h"
#include "app/look/UserRegion.h"
#include "tests/excel/server/ClipboardMetafile.h"
#include "tests/excel/server/ServedApplication.h"
#include "workbook/embedded/EmbeddedApplication.h"

#include <QGuiApplication>
#include <QLocale>

#include <algorithm>
#include <array>
#include <functional>
#include <future>
#include <iostream>
#include <string>
#include <thread>
#include <utility>

#include <objbase.h>
#include <objidl.h>

namespace {

using namespace wagemill;
using namespace wagemill::test;

/// No other program answers to it. run_under_wine.py and smoke_test.py register it.
constexpr CLSID servedClass = {0x5d3b1c52, 0x7f0a, 0x4e6e, {0x9a, 0x41, 0x2c, 0x6b, 0x58, 0xd0, 0x17, 0xe3}};

/// Lives as long as main.
template <typename Interface>
class StaticObject : public Interface {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override
    {
        const bool isKnown = wanted == IID_IUnknown || wanted == __uuidof(Interface);
        *object = isKnown ? static_cast<Interface*>(this) : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

/// Rejects calls as a program does that is busy with its user. A call that is made again keeps its number.
class BusyFilter final : public StaticObject<IMessageFilter> {
public:
    explicit BusyFilter(const Instructions& instructions)
        : m_busyCall(instructions.number("busy", -1)), m_busyTime(static_cast<DWORD>(instructions.number("busyfor", 0)))
    {
    }

    DWORD STDMETHODCALLTYPE HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO call) override
    {
        if (call->iid != IID_IDispatch)
            return SERVERCALL_ISHANDLED;
        const auto now = ::GetTickCount64();
        if (m_busyUntil != 0 && now >= m_busyUntil) {
            m_busyUntil = 0;
            return SERVERCALL_ISHANDLED;
        }
        const bool isNew = m_busyUntil == 0;
        if (isNew && ++m_calls != m_busyCall && m_busyCall != 0)
            return SERVERCALL_ISHANDLED;
        if (isNew)
            m_busyUntil = now + m_busyTime;
        return SERVERCALL_REJECTED;
    }
    DWORD STDMETHODCALLTYPE RetryRejectedCall(HTASK, DWORD, DWORD) override { return static_cast<DWORD>(-1); }
    DWORD STDMETHODCALLTYPE MessagePending(HTASK, DWORD, DWORD) override { return PENDINGMSG_WAITDEFPROCESS; }

private:
    const int m_busyCall; ///< 0: each
    const DWORD m_busyTime;
    int m_calls = 0;
    ULONGLONG m_busyUntil = 0; ///< 0: not busy
};

/// Makes one application, then no more: the next one is another process.
class ApplicationFactory final : public StaticObject<IClassFactory> {
public:
    explicit ApplicationFactory(std::function<IDispatch*()> make) : m_make(std::move(make)) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* /*outer*/, REFIID wanted, void** object) override
    {
        IDispatch* const application = m_make();
        const HRESULT result = application->QueryInterface(wanted, object);
        application->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL /*isLocked*/) override { return S_OK; }

private:
    std::function<IDispatch*()> m_make;
};

/// Ends a server that the system started and nobody came to.
void quitWhenUnused(Server& server)
{
    static Server* watched = nullptr;
    watched = &server;
    constexpr UINT patience = 60'000;
    ::SetTimer(nullptr, 0, patience, [](HWND, UINT, UINT_PTR, DWORD) {
        if (watched->objects == 0)
            ::PostQuitMessage(0);
    });
}

int runMessageLoop()
{
    MSG message = {};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
    return 0;
}

RegionalFormats formatsOf(const std::string& localeId)
{
    std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name = {};
    ::LCIDToLocaleName(static_cast<LCID>(std::stoul(localeId, nullptr, 16)), name.data(), LOCALE_NAME_MAX_LENGTH, 0);
    return regionalFormatsOf(QLocale(QString::fromWCharArray(name.data())));
}

/// Keeps the clipboard open for a while, as programs do that look at whatever is copied.
void holdClipboard(int milliseconds)
{
    std::promise<void> isOpen;
    std::thread([milliseconds, &isOpen] {
        ::OpenClipboard(nullptr);
        isOpen.set_value();
        ::Sleep(static_cast<DWORD>(milliseconds));
        ::CloseClipboard();
    }).detach();
    isOpen.get_future().wait();
}

int serve(Server& server)
{
    const Instructions& instructions = server.instructions;
    EmbeddedPictureClipboard pictures;
    ApplicationFactory factory([&] {
        auto application =
            std::make_shared<EmbeddedApplication>(formatsOf(instructions.text("region", "0409")), pictures);
        return serveApplication(server, application, [&](CellRange& range) {
            range.CopyPicture();
            copyAsMetafile(*pictures.GetData(0).fileBytes, instructions.has("late"));
            if (const int time = instructions.number("hold", 0); time > 0)
                holdClipboard(time);
        });
    });
    BusyFilter filter(instructions);
    ::CoRegisterMessageFilter(&filter, nullptr);
    ::Sleep(static_cast<DWORD>(instructions.number("start", 0)));
    DWORD registration = 0;
    const HRESULT result =
        ::CoRegisterClassObject(servedClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE, &registration);
    if (FAILED(result))
        throw std::runtime_error("The class cannot be served.");
    quitWhenUnused(server);
    const int exitCode = runMessageLoop();
    ::CoRevokeClassObject(registration);
    ::CoRegisterMessageFilter(nullptr, nullptr);
    return exitCode;
}

} // namespace

int main(int argc, char* argv[])
{
    try {
        const QGuiApplication application(argc, argv); // pictures need its fonts, and it initialises COM
        Server server{
            Instructions(platform::environmentPath("WAGEMILL_TEST_SERVER").string()),
            std::ofstream(platform::environmentPath("WAGEMILL_TEST_SERVER_LOG"), std::ios::app | std::ios::binary)};
        return serve(server);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
