#include "entry/EmployeePanel.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Messages.h"
#include "app/base/NumberText.h"
#include "entry/SettingsNames.h"
#include "settings/Settings.h"

#include <QGridLayout>
#include <QLabel>

#include <algorithm>
#include <utility>

namespace wagemill {

namespace {

/// The fields stand in two columns side by side, in groups that belong together.
constexpr std::size_t fieldsInFirstColumn = 9;
constexpr auto groupEnds =
    std::to_array<std::string_view>({"txtName", "txtFedAllowance", "txtOtherRegDeduction", "txtOT"});
constexpr int groupGap = 10;
constexpr int labelWidth = 218;
constexpr int fieldWidth = 150;

struct GridPlace {
    int row;
    int column;
};

/// A row of the grid for every field, below the row of the serial number, and an empty one behind each group.
GridPlace gridPlace(std::size_t index)
{
    const bool second = index >= fieldsInFirstColumn;
    int row = 1;
    for (std::size_t before = second ? fieldsInFirstColumn : 0; before < index; ++before)
        row += std::ranges::find(groupEnds, rowFields[before].name) != groupEnds.end() ? 2 : 1;
    return {row, second ? 3 : 0};
}

QString arrayName(std::string_view control, std::int16_t row)
{
    return QString::fromUtf8(control.data(), static_cast<qsizetype>(control.size())) + QString("(%1)").arg(row);
}

QString qtText(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

EmployeePanel::EmployeePanel(std::int16_t row, const RegionalFormats& formats,
                             std::function<void(std::int16_t)> rowEntered, QWidget* parent)
    : QFrame(parent), m_row(row), m_formats(formats), m_rowEntered(std::move(rowEntered))
{
    setObjectName(arrayName("picMainContainer", row));
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(12, 8, 12, 8);
    grid->setHorizontalSpacing(12);
    grid->setVerticalSpacing(6);
    grid->setColumnMinimumWidth(2, 20);

    auto* const serialNumber = new QLabel(QString("Serial Number : %1").arg(row + 1), this);
    serialNumber->setObjectName(arrayName("lblSerialNo", row));
    grid->addWidget(serialNumber, 0, 0, 1, 5);
    for (std::size_t index = 0; index < rowFields.size(); ++index)
        addField(index);
    grid->setRowStretch(grid->rowCount(), 1);
}

void EmployeePanel::addField(std::size_t index)
{
    const RowField& description = rowFields[index];
    auto* const grid = static_cast<QGridLayout*>(layout()); // made by the constructor
    const GridPlace place = gridPlace(index);

    auto* const label = new QLabel(qtText(description.caption), this);
    label->setObjectName(arrayName("lbl" + std::to_string(index + 1), m_row));
    label->setWordWrap(true);
    label->setFixedWidth(labelWidth);
    grid->addWidget(label, place.row, place.column, Qt::AlignVCenter);

    auto* const field = new EntryField(this);
    m_fields[index] = field;
    field->setObjectName(arrayName(description.name, m_row));
    field->setFixedWidth(fieldWidth);
    if (description.kind != FieldKind::FreeText)
        field->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setBuddy(field);
    grid->addWidget(field, place.row, place.column + 1, Qt::AlignVCenter);
    if (std::ranges::find(groupEnds, description.name) != groupEnds.end())
        grid->setRowMinimumHeight(place.row + 1, groupGap);

    connect(field, &QLineEdit::textChanged, this, [this, index] { handleEvent([&] { store(index); }); });
    connect(field, &EntryField::focusGained, this, [this] { m_rowEntered(m_row); });
    if (description.kind != FieldKind::FreeText)
        field->setLeaveCheck([this, index] { return validate(index); });
}

EmployeeRow EmployeePanel::texts() const
{
    EmployeeRow texts;
    std::ranges::transform(m_fields, texts.texts.begin(),
                           [](const EntryField* field) { return field->text().toStdString(); });
    return texts;
}

void EmployeePanel::refill(std::size_t index)
{
    const RowField& description = rowFields[index];
    const std::string stored =
        GetSetting(settingsApplication, settingsSection, rowFieldKey(description, m_row), description.fallback);
    assign(index, description.kind == FieldKind::Currency ? currencyTextOf(stored, m_formats) : stored);
}

void EmployeePanel::assign(std::size_t index, const std::string& text)
{
    m_fields[index]->replaceText(QString::fromStdString(text));
    store(index);
}

void EmployeePanel::store(std::size_t index)
{
    SaveSetting(settingsApplication, settingsSection, rowFieldKey(rowFields[index], m_row),
                m_fields[index]->text().toStdString());
}

bool EmployeePanel::validate(std::size_t index)
{
    EntryField& field = *m_fields[index];
    const std::string text = field.text().toStdString();
    if (!isNumericText(text, m_formats)) {
        showMessage({"Please enter a valid input.", "", MessageIcon::Information, MessageButtons::Ok});
        field.selectAll();
        return false;
    }
    const std::string tidy =
        rowFields[index].kind == FieldKind::Currency ? currencyTextOf(text, m_formats) : numberTextOf(text, m_formats);
    if (tidy != text)
        handleEvent([&] { assign(index, tidy); });
    return true;
}

} // namespace wagemill
