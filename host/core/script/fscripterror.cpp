// SPDX-License-Identifier: Apache-2.0
#include "fscripterror.h"

std::string FReason::text() const
{
    if (expected.empty() && found.empty())
        return message;
    const bool both = !expected.empty() && !found.empty();
    return message +
           (message.empty() ? ""
            : both          ? ": "
                            : ", ") +
           (expected.empty() ? "" : "expected " + expected) + (both ? ", " : "") +
           (found.empty() ? "" : "found " + found);
}

FReason FReason::about(const std::string &what) const
{
    FReason longer = *this;
    longer.message = message.empty() ? what : what + ": " + message;
    return longer;
}

std::string FScriptError::toString() const
{
    std::string place = file;
    for (const size_t number : {line, column})
        if (number > 0)
            place += ":" + std::to_string(number);
    return place + ": " + text();
}
