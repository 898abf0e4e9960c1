#include "app/base/WindowsOwnership.h"

#include <aclapi.h>
#include <sddl.h>

#include <array>
#include <cstddef>

namespace wagemill {

namespace {

/// A security identifier that the process's token holds: TokenUser is who runs the program, TokenOwner whom its new
/// files belong to, which is the administrators' group for some of its members.
class TokenIdentifier {
public:
    explicit TokenIdentifier(TOKEN_INFORMATION_CLASS which)
    {
        HANDLE token = nullptr;
        if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
            return;
        const WindowsHandle owner(token);
        DWORD size = 0;
        m_isKnown = ::GetTokenInformation(token, which, m_bytes.data(), static_cast<DWORD>(m_bytes.size()), &size) != 0;
    }

    /// Null when the system does not tell.
    PSID identifier() const
    {
        static_assert(offsetof(TOKEN_USER, User.Sid) == offsetof(TOKEN_OWNER, Owner)); // both begin with it
        return m_isKnown ? reinterpret_cast<const TOKEN_OWNER*>(m_bytes.data())->Owner : nullptr;
    }

private:
    alignas(TOKEN_USER) std::array<std::byte, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> m_bytes = {};
    bool m_isKnown = false;
};

bool isIdentifier(PSID identifier, TOKEN_INFORMATION_CLASS which)
{
    const TokenIdentifier own(which);
    return own.identifier() != nullptr && ::EqualSid(identifier, own.identifier());
}

bool keepsOwners(HANDLE handle)
{
    DWORD flags = 0;
    return ::GetVolumeInformationByHandleW(handle, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) &&
           (flags & FILE_PERSISTENT_ACLS) != 0;
}

} // namespace

WindowsHandle ownedHandle(HANDLE handle)
{
    return WindowsHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

bool isUsersOwn(HANDLE handle)
{
    if (!keepsOwners(handle))
        return true;
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR raw = nullptr;
    if (::GetSecurityInfo(handle, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr, nullptr,
                          &raw) != ERROR_SUCCESS)
        return false;
    const std::unique_ptr<void, FreeLocalMemory> descriptor(raw);
    return owner != nullptr && (isIdentifier(owner, TokenUser) || isIdentifier(owner, TokenOwner));
}

PrivateSecurity::PrivateSecurity()
{
    const TokenIdentifier user(TokenUser);
    wchar_t* text = nullptr;
    if (user.identifier() == nullptr || !::ConvertSidToStringSidW(user.identifier(), &text))
        return;
    const std::unique_ptr<wchar_t, FreeLocalMemory> textOwner(text);
    const std::wstring name(text);
    // Owner the user; nothing inherited; full access for the user and the system, also to what is made inside.
    const std::wstring rules = L"O:" + name + L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;" + name + L")";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (::ConvertStringSecurityDescriptorToSecurityDescriptorW(rules.c_str(), SDDL_REVISION_1, &descriptor, nullptr))
        m_descriptor.reset(descriptor);
    m_attributes.lpSecurityDescriptor = descriptor;
}

} // namespace wagemill
