#pragma once

namespace wagemill {

/// The base of every abstract class: used by reference, never copied.
class Interface {
public:
    Interface() = default;
    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;
    virtual ~Interface() = default;
};

} // namespace wagemill
