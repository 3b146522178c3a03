// SPDX-License-Identifier: Apache-2.0
// Loads the library into a process that runs already, as interpreters and programs
// with plugins do: the C library then has little room left for data of threads.
#include <cstdio>
#include <dlfcn.h>

int main(int count, char** words) {
    if (count != 2 || dlopen(words[1], RTLD_NOW) == nullptr) {
        std::fprintf(stderr, "%s\n", count == 2 ? dlerror() : "usage: load_late LIBRARY");
        return 1;
    }
}
