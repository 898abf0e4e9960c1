#pragma once

#include <filesystem>

namespace wagemill::test {

/// While one lives, the file system fails under one folder. It stands between this program and the C library: every
/// call of the whole process, SQLite's too, that would change something there is counted, and fails from `first` on.
class FailingFiles {
public:
    enum class Fault {
        Full,     ///< nothing grows and nothing new appears; half of a write succeeds. Deleting works.
        ReadOnly, ///< nothing changes at all
    };
    enum class Until { Once, ItIsOver };

    /// first  the number of the call that fails, from 1
    FailingFiles(std::filesystem::path folder, Fault fault, int first, Until until);
    FailingFiles(const FailingFiles&) = delete;
    FailingFiles& operator=(const FailingFiles&) = delete;
    ~FailingFiles();

    /// Whether a call has failed; when not, `first` lies beyond the last call.
    bool hasFailed() const { return m_failed > 0; }

    /// For the calls that stand in for the C library's: whether this one fails. deleting: of a name
    bool fails(const std::filesystem::path& path, bool deleting = false);
    int errorNumber() const;

private:
    std::filesystem::path m_folder;
    Fault m_fault;
    int m_first;
    Until m_until;
    int m_calls = 0;
    int m_failed = 0;
};

} // namespace wagemill::test
