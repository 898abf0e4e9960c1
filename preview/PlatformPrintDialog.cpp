#include "preview/Printing.h"

#include <QPrintDialog>

namespace wagemill {

bool PlatformPrintDialog::choose(QPrinter& printer, QWidget& owner)
{
    return QPrintDialog(&printer, &owner).exec() == QDialog::Accepted;
}

} // namespace wagemill
