#pragma once

#include "drawing/Drawing.h"

#include <functional>
#include <string>
#include <vector>

namespace wagemill::drawing {

/// In pixels at 96 dots per inch, as the paper is printed on: a landscape page is wider than high.
struct PaperSize {
    double width = 0;
    double height = 0;
};

struct PlacedDrawing {
    Drawing drawing;
    double left = 0; ///< of its upper left corner on the paper, in pixels of the paper
    double top = 0;
    double scale = 1;
};

struct Page {
    std::vector<PlacedDrawing> parts;
};

/// A sheet and what it asks its printer for. The printer's user has the last word.
struct PrintableSheet {
    std::string title; ///< what the printer calls the job
    int paper = 0;     ///< as Windows numbers papers: 1 Letter, 9 A4; 0 the printer's own
    bool landscape = false;
    int copies = 1;
    /// Its pages on that paper.
    std::function<std::vector<Page>(const PaperSize& paper)> pagesOn;
};

} // namespace wagemill::drawing
