#pragma once

#include <filesystem>
#include <functional>
#include <string>

class QWidget;

namespace wagemill {

/// Asks the user for the name of a file to be written, beginning with none. Gives the full path exactly as named, no
/// extension added and without a question when the name exists already; empty when the user cancelled.
/// filter  a description with its pattern, and the pattern, each followed by a bar: "Excel Files (*.xls)|*.xls|"
using SaveFileDialog =
    std::function<std::filesystem::path(const std::string& title, const std::string& filter, QWidget& owner)>;

/// The platform's own dialog, opened in the user's documents and then in the folder of the last name.
SaveFileDialog platformSaveFileDialog();

} // namespace wagemill
