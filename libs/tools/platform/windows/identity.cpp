// SPDX-License-Identifier: Apache-2.0
// Names come from the system as wide text and leave as UTF-8. Sizes are asked for before the
// text, since names have no limit that would hold on every version.
#include "tools/platform/host.h"

#include <algorithm>
#include <cwctype>
#include <windows.h>
// Behind windows.h.
#define SECURITY_WIN32
#include <security.h>

namespace kaz::host {

namespace {

std::string utf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(std::max(size, 0)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}

std::string computerName(COMPUTER_NAME_FORMAT format) {
    DWORD size = 0;
    GetComputerNameExW(format, nullptr, &size);
    std::wstring name(size, L'\0');
    if (size == 0 || GetComputerNameExW(format, name.data(), &size) == 0)
        return {};
    name.resize(size);
    return utf8(name);
}

/// A text of the system's registry.
std::wstring registryText(const wchar_t* key, const wchar_t* value) {
    std::wstring text(256, L'\0');
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    // The 64-bit view, which alone has the machine's identity.
    if (RegGetValueW(HKEY_LOCAL_MACHINE, key, value, RRF_RT_REG_SZ | RRF_SUBKEY_WOW6464KEY, nullptr,
                     text.data(), &size) != ERROR_SUCCESS)
        return {};
    text.resize(size / sizeof(wchar_t));
    text.resize(std::min(text.size(), text.find(L'\0')));
    return text;
}

const char* architecture() {
    SYSTEM_INFO info{};
    GetNativeSystemInfo(&info);
    switch (info.wProcessorArchitecture) {
    case PROCESSOR_ARCHITECTURE_AMD64:
        return "x86_64";
    case PROCESSOR_ARCHITECTURE_ARM64:
        return "aarch64";
    case PROCESSOR_ARCHITECTURE_INTEL:
        return "i686";
    default:
        return "unknown";
    }
}

} // namespace

std::string hostName() {
    return computerName(ComputerNameDnsHostname);
}

/// Without a domain the system gives the plain name, which is not a full one.
std::string fullHostName() {
    const std::string name = computerName(ComputerNameDnsFullyQualified);
    return name.find('.') != std::string::npos ? name : std::string();
}

std::string machineIdentity() {
    std::wstring text = registryText(L"SOFTWARE\\Microsoft\\Cryptography", L"MachineGuid");
    std::transform(text.begin(), text.end(), text.begin(), std::towlower);
    return utf8(text);
}

std::string userName() {
    DWORD size = 0;
    GetUserNameW(nullptr, &size);
    std::wstring name(size, L'\0');
    if (size == 0 || GetUserNameW(name.data(), &size) == 0)
        return {};
    name.resize(size - 1); // it counts the end
    return utf8(name);
}

std::string userFullName() {
    ULONG size = 256;
    std::wstring name(size, L'\0');
    if (GetUserNameExW(NameDisplay, name.data(), &size) == 0)
        return {};
    name.resize(size);
    return utf8(name);
}

std::string systemName() {
    // The documented function tells programs what they want to hear.
    using RtlGetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    const HMODULE library = GetModuleHandleW(L"ntdll.dll");
    const auto ask = reinterpret_cast<RtlGetVersion>(
        reinterpret_cast<void*>(GetProcAddress(library, "RtlGetVersion")));
    if (ask == nullptr || ask(&version) < 0)
        return "Windows";
    return "Windows " + std::to_string(version.dwMajorVersion) + '.' +
           std::to_string(version.dwMinorVersion) + '.' + std::to_string(version.dwBuildNumber) +
           ' ' + architecture();
}

} // namespace kaz::host
