#pragma once

#include <filesystem>

#include <windows.h>

namespace wagemill::test {

/// Ours alone: no other program answers to it.
inline constexpr CLSID servedClass = {0x5d3b1c52, 0x7f0a, 0x4e6e, {0x9a, 0x41, 0x2c, 0x6b, 0x58, 0xd0, 0x17, 0xe3}};

/// Makes the program the one that answers to "Excel.Application", for all users of the machine; and takes that back.
void registerServer(const std::filesystem::path& program);
void unregisterServer();

} // namespace wagemill::test
