#pragma once

#include <stdexcept>

namespace wagemill::engine::xls {

/// Bytes that break the file format. what() is the second half of a sentence, "the chain of sectors runs in a circle";
/// whoever knows the file's name makes an EngineError of it.
class DamagedFile : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace wagemill::engine::xls
