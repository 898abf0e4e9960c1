#pragma once

#include "app/base/text/RegionalFormats.h"
#include "entry/EntryField.h"
#include "entry/EntryMetrics.h"
#include "entry/data/PayrollData.h"

#include <QFrame>

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

class QGridLayout;

namespace wagemill {

/// Stores a text at once. Throws when it cannot be stored.
using StoreText = std::function<void(const std::string& key, const QString& text)>;

/// The label and the 17 fields of one employee row. Every change of a field goes to the settings store at once.
class EmployeePanel : public QFrame {
public:
    /// row   index of the employee, from 0
    /// rows  employees in all
    EmployeePanel(std::int16_t row, std::int16_t rows, const EntryMetrics& metrics, RegionalFormats formats,
                  StoreText storeText, QWidget* parent);

    std::int16_t row() const { return m_row; }
    const std::array<EntryField*, rowFields.size()>& fields() const { return m_fields; }
    EmployeeRow texts() const;

    /// Fills one field from the store, money in currency form. Throws when the store cannot be read or written, or when
    /// the stored money is not a number: the field then keeps its text.
    void refill(std::size_t index);
    /// Puts the example into a field as the user would see it after typing it. Throws when it cannot be stored.
    void assignSample(std::size_t index);

private:
    QGridLayout* fieldGrid(const EntryMetrics& metrics);
    EntryField* makeField(std::size_t index, const EntryMetrics& metrics);
    /// As a change of the user would: the text is stored at once.
    void assign(std::size_t index, const std::string& text);
    void store(std::size_t index);
    /// Checks and tidies the number before the focus leaves. False when it is not one and the user has been told.
    bool validate(std::size_t index);

    std::int16_t m_row;
    RegionalFormats m_formats;
    StoreText m_storeText;
    std::array<EntryField*, rowFields.size()> m_fields = {};
};

/// Refills every field of these employees. Throws when some cannot be refilled, with all of them in one text that fits
/// the screen, for a store that cannot be used fails for each of up to 408 fields. Fields one after the other with the
/// same reason share a line:
///   - employee 2, Hourly Wage: "abc" is not a number.
///   - employee 2, Overtime Rate to employee 25, Other Deduction: The settings in ... cannot be read: ...
void refillTogether(std::span<EmployeePanel* const> employees);

} // namespace wagemill
