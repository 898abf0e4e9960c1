#include "preview/Metafile.h"
#include "preview/Printing.h"

#include "app/look/Look.h"

#include <QPrintDialog>

#include <stdexcept>

namespace wagemill {

SharedPicture metafilePicture(std::span<const std::byte> /*file*/)
{
    throw std::runtime_error("it is an enhanced metafile, which only Windows shows");
}

bool showPrintDialog(QPrinter& printer, QWidget& owner)
{
    QPrintDialog dialog(&printer, &owner);
    applyDesignFont(dialog);
    return dialog.exec() == QDialog::Accepted;
}

} // namespace wagemill
