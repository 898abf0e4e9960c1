#pragma once

#include <filesystem>
#include <functional>

namespace wagemill::test {

enum class Fault {
    Full,     ///< nothing grows and nothing new appears; half of a write succeeds. Deleting works.
    ReadOnly, ///< nothing changes at all
};

/// Does the work while the file system fails under one folder. It stands between this program and the C library: every
/// call of the whole process, SQLite's too, that would change something there is counted, and the calls from `first`
/// to `last` fail. Answers how many there were.
int failCalls(const std::filesystem::path& folder, Fault fault, int first, int last, const std::function<void()>& work);

/// Does the work again and again while the disk fails in the folder: at the first call, then at the second, and so on
/// until none is left; at that call alone, and from it on.
void failAtEveryCall(const std::filesystem::path& folder, const std::function<void()>& prepare,
                     const std::function<void()>& work, const std::function<void(Fault)>& check);

} // namespace wagemill::test
