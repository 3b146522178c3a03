// SPDX-License-Identifier: Apache-2.0
#include "messages/ask_on_terminal.h"

int askOnTerminal(std::string_view) {
    return askSecret();
}
