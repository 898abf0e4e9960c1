#include "app/look/PushButton.h"

#include <QStyleOptionButton>

namespace wagemill {

PushButton::PushButton(const QString& caption, QWidget* parent) : QPushButton(caption, parent)
{
    setAutoDefault(true); // outside a dialog nothing else lets Enter press a button
}

void PushButton::initStyleOption(QStyleOptionButton* option) const
{
    QPushButton::initStyleOption(option);
    option->state.setFlag(QStyle::State_MouseOver, false);
}

} // namespace wagemill
