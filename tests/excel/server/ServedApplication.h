#pragma once

#include <oaidl.h>

namespace wagemill::test {

/// The object model of a spreadsheet application, the embedded engine's, with the members that we may ask for and no
/// others. The caller releases it.
IDispatch* newServedApplication();

} // namespace wagemill::test
