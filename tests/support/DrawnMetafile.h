#pragma once

#include "drawing/Drawing.h"

#include <windows.h>

#include <cmath>

namespace wagemill::test {

/// The drawing's fills as an enhanced metafile, as large as the drawing is at 96 dots an inch.
inline HENHMETAFILE metafileOf(const drawing::Drawing& drawing)
{
    const auto hundredthsOfMillimetre = [](double pixels) { return std::lround(pixels * 2540 / 96); };
    const RECT frame = {0, 0, hundredthsOfMillimetre(drawing.width), hundredthsOfMillimetre(drawing.height)};
    const HDC recorder = ::CreateEnhMetaFileW(nullptr, nullptr, &frame, nullptr);
    ::SetMapMode(recorder, MM_HIMETRIC); // which counts upwards
    for (const auto& [place, color] : drawing.fills) {
        const RECT area = {hundredthsOfMillimetre(place.left), -hundredthsOfMillimetre(place.top),
                           hundredthsOfMillimetre(place.left + place.width),
                           -hundredthsOfMillimetre(place.top + place.height)};
        const HBRUSH brush = ::CreateSolidBrush(RGB(color.red, color.green, color.blue));
        ::FillRect(recorder, &area, brush);
        ::DeleteObject(brush);
    }
    return ::CloseEnhMetaFile(recorder);
}

} // namespace wagemill::test
