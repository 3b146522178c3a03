// SPDX-License-Identifier: Apache-2.0
// The C library's setlocale loses a few bytes where memory fails on its way through names of
// codesets. These alone are not looked for.
#include <clocale>

extern "C" {

/// Only where a leak checker is linked in.
[[gnu::weak]] void __lsan_disable();
[[gnu::weak]] void __lsan_enable();

char* __real_setlocale(int category, const char* name);
char* __wrap_setlocale(int category, const char* name); // which the linker calls instead

char* __wrap_setlocale(int category, const char* name) {
    if (__lsan_disable != nullptr)
        __lsan_disable();
    char* const result = __real_setlocale(category, name);
    if (__lsan_enable != nullptr)
        __lsan_enable();
    return result;
}
}
