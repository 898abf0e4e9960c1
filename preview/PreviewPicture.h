#pragma once

#include "app/base/Interface.h"
#include "drawing/Drawing.h"

#include <QSizeF>

#include <filesystem>
#include <memory>

class QImage;
class QPainter;
class QRectF;

namespace wagemill {

/// What the preview shows: anything that has a natural size and paints a part of itself at a scale.
class PreviewPicture : public Interface {
public:
    /// In pixels at 96 dots per inch.
    virtual QSizeF naturalSize() const = 0;
    /// Paints what touches `part`, on white; unit and corner of part and painter are those of the natural size.
    virtual void paint(QPainter& painter, const QRectF& part) const = 0;
};

using SharedPicture = std::shared_ptr<const PreviewPicture>;

SharedPicture drawingPicture(drawing::Drawing drawing);
/// An opaque bitmap; one of device pixel ratio 2 has half its pixels as its natural size.
SharedPicture bitmapPicture(const QImage& bitmap);

/// A picture file, known by its content whatever its name: a drawing, on Windows an enhanced metafile, else a bitmap. A
/// bitmap of more than 96 dots an inch, up to 384, is that much sharper rather than larger. Paper is white where a
/// picture is transparent.
/// Throws std::runtime_error that names the file and the reason.
SharedPicture loadPicture(const std::filesystem::path& file);

} // namespace wagemill
