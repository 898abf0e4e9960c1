#pragma once

#include "tests/support/TemporaryFolder.h"

#include <filesystem>

namespace wagemill::bench {

/// A fresh folder in the one that the program was started in: a system's temporary folder may be no disk at all.
class FolderOnDisk {
public:
    const test::TemporaryFolder& operator()() const { return m_folder; }

private:
    test::ScopedEnvironment m_environment{"TMPDIR", std::filesystem::current_path().string()};
    test::TemporaryFolder m_folder;
};

} // namespace wagemill::bench
