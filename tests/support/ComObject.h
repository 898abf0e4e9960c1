#pragma once

#include <windows.h>

#include <unknwn.h>

namespace wagemill::test {

/// A COM object with one interface besides IUnknown. It counts who refers to it; nobody deletes it.
template <typename Interface>
class ComObject : public Interface {
public:
    ULONG references = 1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override
    {
        const bool isKnown = wanted == IID_IUnknown || wanted == __uuidof(Interface);
        *object = isKnown ? static_cast<Interface*>(this) : nullptr;
        references += isKnown ? 1 : 0;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
};

} // namespace wagemill::test
