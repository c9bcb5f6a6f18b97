#pragma once

#include <functional>

// The number of the AppError the statement throws; 0 when it throws none.
int errorNumber(const std::function<void()> &statement);
