// automation_server /RegServer | /UnregServer | (nothing: started by the system to serve one application)
// Answers as Excel does, in a process of its own for every application, with the embedded engine behind it. What it is
// told to do wrong stands in WAGEMILL_TEST_SERVER, see Instructions.h; WAGEMILL_TEST_SERVER_LOG names the file that
// receives every call.

#include "app/base/PlatformFiles.h"
#include "tests/excel/server/ClipboardMetafile.h"
#include "tests/excel/server/Registration.h"
#include "tests/excel/server/ServedApplication.h"
#include "workbook/embedded/EmbeddedApplication.h"

#include <QGuiApplication>

#include <functional>
#include <iostream>
#include <string>
#include <utility>

#include <objbase.h>

namespace {

using namespace wagemill;
using namespace wagemill::test;

/// Makes one application, then no more: the next one is another process.
class ApplicationFactory final : public IClassFactory {
public:
    explicit ApplicationFactory(std::function<IDispatch*()> make) : m_make(std::move(make)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override
    {
        if (wanted != IID_IUnknown && wanted != IID_IClassFactory) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    // It lives as long as main.
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

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

int serve(Server& server)
{
    EmbeddedPictureClipboard pictures;
    ApplicationFactory factory([&] {
        auto application = std::make_shared<EmbeddedApplication>(RegionalFormats{}, pictures, [] { return 1.0; });
        return serveApplication(server, application, [&](CellRange& range) {
            range.CopyPicture();
            copyAsMetafile(*pictures.GetData(0).fileBytes);
        });
    });
    DWORD registration = 0;
    const HRESULT result =
        ::CoRegisterClassObject(servedClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE, &registration);
    if (FAILED(result))
        throw std::runtime_error("The class cannot be served.");
    quitWhenUnused(server);
    const int exitCode = runMessageLoop();
    ::CoRevokeClassObject(registration);
    return exitCode;
}

} // namespace

int main(int argc, char* argv[])
{
    try {
        const std::string option = argc > 1 ? argv[1] : "";
        if (option == "/RegServer") {
            std::wstring program(32768, L'\0');
            program.resize(::GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
            registerServer(program);
            return 0;
        }
        if (option == "/UnregServer") {
            unregisterServer();
            return 0;
        }
        const QGuiApplication application(argc, argv); // pictures need its fonts, and it initialises COM
        Server server{Instructions::parse(platform::environmentPath("WAGEMILL_TEST_SERVER").string()),
                      CallLog(platform::environmentPath("WAGEMILL_TEST_SERVER_LOG"))};
        return serve(server);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
