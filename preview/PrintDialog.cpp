#include "preview/Printing.h"

#include "app/look/Look.h"

#include <QPrintDialog>

namespace wagemill {

bool showPrintDialog(QPrinter& printer, QWidget& owner)
{
    QPrintDialog dialog(&printer, &owner);
    applyDesignFont(dialog);
    return dialog.exec() == QDialog::Accepted;
}

} // namespace wagemill
