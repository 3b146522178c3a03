// SPDX-License-Identifier: Apache-2.0
// A program that does nothing, with the C++ library as every tool has it.
#include <iostream>

int main() {
    return std::cout.good() ? 0 : 1;
}
