// SPDX-License-Identifier: Apache-2.0
// Writes a file, with or without a fault that only shows when something fails: what is to be
// found in it is its first argument.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool has(const char* fault, const char* name) {
    return std::strcmp(fault, name) == 0;
}

int fail(const char* what) {
    std::fprintf(stderr, "%s failed\n", what);
    return 1;
}

bool isWritten(const char* name, bool isCareless) {
    std::FILE* const file = std::fopen(name, "w");
    if (file == nullptr)
        return false;
    const bool isGood = std::fputs("new text\n", file) >= 0;
    return (std::fclose(file) == 0 && isGood) || isCareless;
}

} // namespace

int main(int argc, char** argv) {
    const char* const fault = argc > 1 ? argv[1] : "";
    struct stat info;
    if (::stat("input", &info) != 0)
        return has(fault, "status") ? 3 : fail("stat");
    char* const block = static_cast<char*>(std::malloc(64));
    if (block == nullptr && !has(fault, "crash"))
        return has(fault, "mute") ? 1 : fail("malloc");
    std::strcpy(block, "done");
    // A file that is written at its place is half of one when that fails.
    const std::string name = has(fault, "half") ? "output" : "output.new";
    if (!isWritten(name.c_str(), has(fault, "careless"))) {
        if (!has(fault, "litter") && !has(fault, "half"))
            ::unlink(name.c_str());
        return fail("write");
    }
    if (name != "output" && std::rename(name.c_str(), "output") != 0) {
        ::unlink(name.c_str());
        return fail("rename");
    }
    std::puts(has(fault, "other") && info.st_size == 0 ? "odd" : block);
    std::free(block);
    return has(fault, "bad") ? 1 : 0;
}
