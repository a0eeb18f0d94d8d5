#include "update/UpdateFailure.h"

#include <algorithm>

QStringView textOf(UpdateFailure failure)
{
    const auto row = std::ranges::find(updateFailureTexts, failure, &UpdateFailureText::failure);
    return row == updateFailureTexts.end() ? QStringView() : row->text;
}
