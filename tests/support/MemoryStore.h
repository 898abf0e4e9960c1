#pragma once

#include "settings/Settings.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace wagemill::test {

/// The program's settings in memory; the test may let the store fail.
class MemoryStore : public SettingsStore {
public:
    struct State {
        std::map<std::string, std::string> values; ///< by key
        std::vector<std::string> written;          ///< keys, in their order
        bool failing = false;
        bool locked = false; ///< neither read nor written
    };
    explicit MemoryStore(State& state) : m_state(state) {}

    std::optional<std::string> read(std::string_view application, std::string_view section,
                                    std::string_view key) override
    {
        EXPECT_EQ(application, "Quellory");
        EXPECT_EQ(section, "Wagemill");
        if (m_state.locked)
            throw std::runtime_error("The settings are locked.");
        const auto found = m_state.values.find(std::string(key));
        return found == m_state.values.end() ? std::nullopt : std::optional(found->second);
    }
    void write(std::string_view, std::string_view, std::string_view key, std::string_view value) override
    {
        if (m_state.failing || m_state.locked)
            throw std::runtime_error("The disk is full.");
        m_state.written.emplace_back(key);
        m_state.values[std::string(key)] = value;
    }

private:
    State& m_state;
};

} // namespace wagemill::test
