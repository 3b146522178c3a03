// SPDX-License-Identifier: Apache-2.0
#include "tools/app/exceptions/KazException.h"

#include "tools/app/exceptions/report.h"

KazException::KazException() = default;
KazException::~KazException() = default;

const char* KazException::getErrorMessage() {
    return "";
}

bool KazException::reportError() {
    const char* text = getErrorMessage();
    // A derived class may not keep the promise of a text that is never null.
    if (text == nullptr || *text == '\0')
        return false;
    print_err("%s", text);
    return true;
}
