#include "entry/EmployeePanel.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Messages.h"
#include "app/base/text/NumberText.h"
#include "settings/Settings.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace wagemill {

namespace {

QString arrayName(std::string_view control, std::int16_t row)
{
    return QString::fromUtf8(control) + QString("(%1)").arg(row);
}

constexpr std::size_t maxReportLines = 12;

/// Fields one after the other that cannot be refilled for the same reason.
struct FailedFields {
    std::string first; ///< "employee 2, Hourly Wage"
    std::string last;
    std::string reason;
};

std::vector<FailedFields> failuresOfRefilling(std::span<EmployeePanel* const> employees)
{
    std::vector<FailedFields> failures;
    bool hasFailed = false; // the field before
    for (EmployeePanel* employee : employees)
        for (std::size_t field = 0; field < rowFields.size(); ++field)
            try {
                employee->refill(field);
                hasFailed = false;
            } catch (const std::exception& error) {
                const std::string_view caption = rowFields[field].caption;
                const std::string failed = "employee " + std::to_string(employee->row() + 1) + ", " +
                                           std::string(caption.substr(0, caption.rfind(':')));
                if (!hasFailed || failures.back().reason != error.what())
                    failures.push_back({failed, failed, error.what()});
                failures.back().last = failed;
                hasFailed = true;
            }
    return failures;
}

} // namespace

EmployeePanel::EmployeePanel(std::int16_t row, std::int16_t rows, const EntryMetrics& metrics, RegionalFormats formats,
                             StoreText storeText, QWidget* parent)
    : QFrame(parent), m_row(row), m_formats(std::move(formats)), m_storeText(std::move(storeText))
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
    if (metrics.columns == 2)
        grid->setColumnMinimumWidth(2, metrics.columnGap() - metrics.smallGap()); // one gap is between columns anyway
    int line = 0;
    int column = 0;
    for (std::size_t index = 0; index < rowFields.size(); ++index) {
        auto* const label = new QLabel(QString::fromUtf8(rowFields[index].caption), this);
        label->setObjectName(arrayName("lbl" + std::to_string(index + 1), m_row));
        label->setWordWrap(true);
        label->setFixedWidth(metrics.labelWidth);
        EntryField* const field = makeField(index, metrics);
        label->setBuddy(field);
        grid->addWidget(label, line, column, Qt::AlignVCenter);
        grid->addWidget(field, line, column + 1, Qt::AlignVCenter);
        ++line;
        if (rowFields[index].gap != Gap::None)
            grid->setRowMinimumHeight(line++, metrics.groupGap());
        if (rowFields[index].gap == Gap::Column && metrics.columns == 2) {
            line = 0;
            column = 3;
        }
    }
    grid->setRowStretch(grid->rowCount(), 1);
    return grid;
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
        field->setAlignment(Qt::AlignRight | Qt::AlignAbsolute | Qt::AlignVCenter); // numbers in Arabic too
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
        GetSetting(settingsApplication, settingsSection, rowFieldKey(description, m_row), description.fallback());
    const bool isMoney = description.kind == FieldKind::Currency;
    if (isMoney && !isNumericText(stored, m_formats)) {
        const std::string caption(description.caption); // the report of the other employees names the field itself
        throw std::runtime_error((m_row == 0 ? "The stored \"" + caption + "\" cannot be shown: \"" : "\"") + stored +
                                 "\" is not a number.");
    }
    m_fields[index]->refillText(QString::fromStdString(isMoney ? currencyTextOf(stored, m_formats) : stored));
    if (m_row == 0 || stored != description.fallback()) // rows that were never filled would cost a first start seconds
        store(index);
}

void EmployeePanel::assignSample(std::size_t index)
{
    const RowField& field = rowFields[index];
    assign(index, field.kind == FieldKind::Currency
                      ? currencyText(readNumber(field.sample, {}).value().number, m_formats)
                      : std::string(field.sample));
}

void EmployeePanel::assign(std::size_t index, const std::string& text)
{
    m_fields[index]->replaceText(QString::fromStdString(text));
    store(index);
}

void EmployeePanel::store(std::size_t index)
{
    m_storeText(rowFieldKey(rowFields[index], m_row), m_fields[index]->text());
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

void refillTogether(std::span<EmployeePanel* const> employees)
{
    const std::vector<FailedFields> failures = failuresOfRefilling(employees);
    if (failures.empty())
        return;
    std::string text = "What is stored for these employees cannot be shown:";
    const std::size_t lines = std::min(failures.size(), maxReportLines);
    for (const auto& [first, last, reason] : std::span(failures).first(lines))
        text.append("\n- ").append(first).append(first == last ? "" : " to " + last).append(": ").append(reason);
    if (failures.size() > lines)
        text += "\nand " + std::to_string(failures.size() - lines) + " more, up to " + failures.back().last + ".";
    throw std::runtime_error(text);
}

} // namespace wagemill
