// SPDX-License-Identifier: Apache-2.0
// Each module calls the runtime library through a table of addresses of its
// own. Putting other functions into the tables of all modules reaches every
// allocation of the program, the library under test and the C++ runtime, so that
// operator new fails as well; a replaced operator new would serve the program only.
#include "testkit/detail/alloc_hooks.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <windows.h>

#include <psapi.h> // needs the types of the header before

using moxkit::detail::shallFail;

namespace {

// Found by name: a call by name would end in the table that is replaced.
template <typename Function>
Function* runtimeFunction(const char* name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("msvcrt.dll"), name)));
}

const auto realMalloc = runtimeFunction<void*(std::size_t)>("malloc");
const auto realCalloc = runtimeFunction<void*(std::size_t, std::size_t)>("calloc");
const auto realRealloc = runtimeFunction<void*(void*, std::size_t)>("realloc");

void* failingMalloc(std::size_t size) {
    return shallFail() ? nullptr : realMalloc(size);
}

void* failingCalloc(std::size_t count, std::size_t size) {
    return shallFail() ? nullptr : realCalloc(count, size);
}

void* failingRealloc(void* block, std::size_t size) {
    return shallFail() ? nullptr : realRealloc(block, size);
}

void replace(void** entry) {
    const struct {
        void* old;
        void* own;
    } functions[] = {
        {reinterpret_cast<void*>(realMalloc), reinterpret_cast<void*>(failingMalloc)},
        {reinterpret_cast<void*>(realCalloc), reinterpret_cast<void*>(failingCalloc)},
        {reinterpret_cast<void*>(realRealloc), reinterpret_cast<void*>(failingRealloc)},
    };
    for (const auto& function : functions) {
        if (*entry != function.old)
            continue;
        DWORD old = 0;
        // The loader makes the table read-only once it is filled.
        VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &old);
        *entry = function.own;
        VirtualProtect(entry, sizeof *entry, old, &old);
    }
}

template <typename T>
T* at(HMODULE module, DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(module) + offset);
}

void replaceImports(HMODULE module) {
    const auto* header =
        at<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
    const DWORD table =
        header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    if (table == 0)
        return;
    for (auto* import = at<IMAGE_IMPORT_DESCRIPTOR>(module, table); import->Name != 0; ++import)
        if (::_stricmp(at<char>(module, import->Name), "msvcrt.dll") == 0)
            for (void** entry = at<void*>(module, import->FirstThunk); *entry != nullptr; ++entry)
                replace(entry);
}

/// The program's own modules; the system's have their own ways to allocate.
bool isOwn(HMODULE module, const char* programDirectory) {
    char name[MAX_PATH + 1] = "";
    GetModuleFileNameA(module, name, sizeof name);
    return ::_strnicmp(name, programDirectory, std::strlen(programDirectory)) == 0;
}

void replaceEverywhere() {
    char directory[MAX_PATH + 1] = "";
    GetModuleFileNameA(nullptr, directory, sizeof directory);
    // With its last backslash, so that no directory beside it begins the same.
    std::strrchr(directory, '\\')[1] = '\0';
    HMODULE modules[256];
    DWORD size = 0;
    EnumProcessModules(GetCurrentProcess(), modules, sizeof modules, &size);
    for (DWORD i = 0; i < size / sizeof *modules && i < std::size(modules); ++i)
        if (isOwn(modules[i], directory))
            replaceImports(modules[i]);
}

} // namespace

void moxkit::detail::installHooks() {
    static const bool replaced = (replaceEverywhere(), true);
    static_cast<void>(replaced);
}
