#include "entry/EmployeePanel.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Messages.h"
#include "app/base/text/NumberText.h"
#include "entry/SettingsNames.h"
#include "settings/Settings.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace wagemill {

namespace {

/// Fields that belong together stand together. Side by side, both columns have their gaps at the same height.
constexpr std::size_t fieldsInFirstColumn = 9;
constexpr auto groupEnds = std::to_array<std::string_view>(
    {"txtName", "txtFedAllowance", "txtMedicareTax", "txtOtherRegDeduction", "txtSickHours"});

bool endsGroup(const RowField& field)
{
    return std::ranges::find(groupEnds, field.name) != groupEnds.end();
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

EmployeePanel::EmployeePanel(std::int16_t row, std::int16_t rows, const EntryMetrics& metrics, RegionalFormats formats,
                             QWidget* parent)
    : QFrame(parent), m_row(row), m_formats(std::move(formats))
{
    setObjectName(arrayName("picMainContainer", row));
    auto* const serialNumber = new QLabel(QString("Serial Number : %1").arg(row + 1), this);
    serialNumber->setObjectName(arrayName("lblSerialNo", row));
    if (rows > 1)
        serialNumber->setAccessibleName(QString("%1 of %2").arg(serialNumber->text()).arg(rows));
    setAccessibleName(serialNumber->accessibleName()); // tells one "Name:" from another
    QFont heading = serialNumber->font();
    heading.setBold(true);
    serialNumber->setFont(heading);

    auto* const whole = new QVBoxLayout(this);
    whole->setContentsMargins(metrics.smallGap(), 0, metrics.smallGap(), metrics.smallGap());
    whole->setSpacing(metrics.smallGap());
    whole->addWidget(serialNumber);
    whole->addLayout(fieldGrid(metrics), 1);
}

QGridLayout* EmployeePanel::fieldGrid(const EntryMetrics& metrics)
{
    auto* const grid = new QGridLayout;
    grid->setHorizontalSpacing(metrics.smallGap());
    grid->setVerticalSpacing(metrics.line / 3);
    int line = 0;
    int column = 0;
    for (std::size_t index = 0; index < rowFields.size(); ++index) {
        if (metrics.columns == 2 && index == fieldsInFirstColumn) {
            line = 0;
            column = 3;
            grid->setColumnMinimumWidth(2,
                                        metrics.columnGap() - metrics.smallGap()); // one gap is between columns anyway
        }
        QLabel* const label = makeLabel(index, metrics);
        EntryField* const field = makeField(index, metrics);
        label->setBuddy(field);
        grid->addWidget(label, line, column, Qt::AlignVCenter);
        grid->addWidget(field, line, column + 1, Qt::AlignVCenter);
        ++line;
        if (endsGroup(rowFields[index]))
            grid->setRowMinimumHeight(line++, metrics.groupGap());
    }
    grid->setRowStretch(grid->rowCount(), 1);
    return grid;
}

QLabel* EmployeePanel::makeLabel(std::size_t index, const EntryMetrics& metrics)
{
    auto* const label = new QLabel(qtText(rowFields[index].caption), this);
    label->setObjectName(arrayName("lbl" + std::to_string(index + 1), m_row));
    label->setWordWrap(true);
    label->setFixedWidth(metrics.labelWidth);
    return label;
}

EntryField* EmployeePanel::makeField(std::size_t index, const EntryMetrics& metrics)
{
    const RowField& description = rowFields[index];
    auto* const field = new EntryField(this);
    m_fields[index] = field;
    field->setObjectName(arrayName(description.name, m_row));
    field->setFixedWidth(metrics.fieldWidth);

    connect(field, &QLineEdit::textChanged, this, [this, index] { handleEvent([&] { store(index); }); });
    if (description.kind != FieldKind::FreeText) {
        field->setAlignment(Qt::AlignRight | Qt::AlignAbsolute | Qt::AlignVCenter); // figures in Arabic too
        field->setLeaveCheck([this, index] { return validate(index); });
        field->setDecimalSeparator(QString::fromStdString(m_formats.decimalSeparator));
    }
    return field;
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
        throw std::runtime_error((m_row == 0
                                      ? "The stored \"" + std::string(description.caption) + "\" cannot be shown: "
                                      : std::string()) + // the report of the others names the field
                                 "\"" +
                                 stored + "\" is not a number.");
    m_fields[index]->refillText(QString::fromStdString(isMoney ? currencyTextOf(stored, m_formats) : stored));
    if (m_row == 0 || stored != description.fallback) // rows that were never filled would cost a first start seconds
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
        emit field.needsView();
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
