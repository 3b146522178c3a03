// SPDX-License-Identifier: Apache-2.0
// Only the first character counts, in English and German and for "true": "on" and "off" share
// theirs and are the only words that are read whole.
#include "tools/config/toolinfo.h"
#include "tools/util/text.h"

#include <cstring>

bool TI_yesorno(const char* text, bool defaultValue) {
    if (text == nullptr)
        return defaultValue;
    text += std::strspn(text, " \t\r\n");
    if (*text == '\0')
        return defaultValue;
    if (std::strchr("1YyTtJj", *text) != nullptr || kaz_fast_stricmp(text, "ON") == 0)
        return true;
    if (std::strchr("0NnFf", *text) != nullptr || kaz_fast_stricmp(text, "OFF") == 0)
        return false;
    return defaultValue;
}

bool TI_yes(const char* text) {
    return TI_yesorno(text, true);
}

bool TI_no(const char* text) {
    return TI_yesorno(text, false);
}
