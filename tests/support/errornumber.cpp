#include "support/errornumber.h"

#include "base/apperror.h"

int errorNumber(const std::function<void()> &statement)
{
    try {
        statement();
    } catch (const AppError &error) {
        return error.number();
    }
    return 0;
}
