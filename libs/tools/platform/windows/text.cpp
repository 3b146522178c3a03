// SPDX-License-Identifier: Apache-2.0
// Inside the library a text of the host is in its code page; the wide functions of the system are
// called where names must not be cut or mistaken. A literal path is one that the system takes as
// it stands: of any length, with no name in it that means a device.
#include "tools/platform/windows/text.h"

#include "tools/platform/host.h"

#include <windows.h>

namespace kaz::host {

std::wstring widened(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring result(MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), size, result.data(),
                        static_cast<int>(result.size()));
    return result;
}

std::string narrowed(std::wstring_view text, bool* exact) {
    const int size = static_cast<int>(text.size());
    std::string result(
        WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), size, result.data(),
                        static_cast<int>(result.size()), nullptr, nullptr);
    // The way back is the test that holds in every code page.
    if (exact != nullptr)
        *exact = widened(result) == text;
    return result;
}

std::wstring literalPath(const char* path) {
    const std::string& full = absolutePath(path);
    if (full.empty())
        return {};
    const std::wstring wide = widened(full);
    if (wide.starts_with(L"\\\\.\\") || wide.starts_with(L"\\\\?\\"))
        return wide;
    if (wide.starts_with(L"\\\\"))
        return L"\\\\?\\UNC\\" + wide.substr(2);
    return L"\\\\?\\" + wide;
}

} // namespace kaz::host
