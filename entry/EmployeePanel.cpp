#include "entry/EmployeePanel.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Messages.h"
#include "app/base/NumberText.h"
#include "entry/SettingsNames.h"
#include "settings/Settings.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace wagemill {

namespace {

/// The fields stand in two columns side by side, in groups that belong together.
constexpr std::size_t fieldsInFirstColumn = 9;
constexpr auto groupEnds =
    std::to_array<std::string_view>({"txtName", "txtFedAllowance", "txtOtherRegDeduction", "txtOT"});
constexpr int groupGap = 8;
constexpr int columnGap = 36;
constexpr int labelWidth = 214;
constexpr int fieldWidth = 176;

bool endsGroup(const RowField& field)
{
    return std::ranges::find(groupEnds, field.name) != groupEnds.end();
}

QGridLayout* newColumn()
{
    auto* const column = new QGridLayout;
    column->setHorizontalSpacing(12);
    column->setVerticalSpacing(7);
    return column;
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

EmployeePanel::EmployeePanel(std::int16_t row, RegionalFormats formats, std::function<void(std::int16_t)> rowEntered,
                             QWidget* parent)
    : QFrame(parent), m_row(row), m_formats(std::move(formats)), m_rowEntered(std::move(rowEntered))
{
    setObjectName(arrayName("picMainContainer", row));
    auto* const serialNumber = new QLabel(QString("Serial Number : %1").arg(row + 1), this);
    serialNumber->setObjectName(arrayName("lblSerialNo", row));
    QFont heading = serialNumber->font();
    heading.setBold(true);
    serialNumber->setFont(heading);

    QGridLayout* const columns[] = {newColumn(), newColumn()};
    for (std::size_t index = 0; index < rowFields.size(); ++index)
        addField(index, *columns[index < fieldsInFirstColumn ? 0 : 1]);
    auto* const sideBySide = new QHBoxLayout;
    sideBySide->setSpacing(columnGap);
    for (QGridLayout* column : columns) {
        column->setRowStretch(column->rowCount(), 1);
        sideBySide->addLayout(column);
    }
    auto* const whole = new QVBoxLayout(this);
    whole->setContentsMargins(12, 6, 12, 6);
    whole->setSpacing(10);
    whole->addWidget(serialNumber);
    whole->addLayout(sideBySide, 1);
}

void EmployeePanel::addField(std::size_t index, QGridLayout& column)
{
    const RowField& description = rowFields[index];
    const int line = column.rowCount();

    auto* const label = new QLabel(qtText(description.caption), this);
    label->setObjectName(arrayName("lbl" + std::to_string(index + 1), m_row));
    label->setWordWrap(true);
    label->setFixedWidth(labelWidth);
    column.addWidget(label, line, 0, Qt::AlignVCenter);

    auto* const field = new EntryField(this);
    m_fields[index] = field;
    field->setObjectName(arrayName(description.name, m_row));
    field->setFixedWidth(fieldWidth);
    label->setBuddy(field);
    column.addWidget(field, line, 1, Qt::AlignVCenter);
    if (endsGroup(description))
        column.setRowMinimumHeight(line + 1, groupGap);

    connect(field, &QLineEdit::textChanged, this, [this, index] { handleEvent([&] { store(index); }); });
    connect(field, &EntryField::focusGained, this, [this] { m_rowEntered(m_row); });
    if (description.kind != FieldKind::FreeText) {
        field->setAlignment(Qt::AlignRight | Qt::AlignAbsolute | Qt::AlignVCenter); // figures in Arabic too
        field->setLeaveCheck([this, index] { return validate(index); });
    }
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
    const bool isMoney = description.kind == FieldKind::Currency;
    if (isMoney && !isNumericText(stored, m_formats))
        throw std::runtime_error("The stored \"" + std::string(description.caption) + "\" cannot be shown: \"" +
                                 stored + "\" is not a number.");
    m_fields[index]->refillText(QString::fromStdString(isMoney ? currencyTextOf(stored, m_formats) : stored));
    store(index);
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
