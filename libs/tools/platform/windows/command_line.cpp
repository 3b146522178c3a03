// SPDX-License-Identifier: Apache-2.0
// A program gets one line here and takes it apart by itself; nearly all do so by the rules of the
// runtime library, which this follows. What needs no quotes gets none, so that programs with
// rules of their own mostly get what they expect.
#include "tools/platform/windows/command_line.h"

namespace kaz::host {

namespace {

/// Backslashes count only before a quote, where two stand for one.
void appendQuoted(std::string& line, const std::string& argument) {
    std::size_t backslashes = 0;
    line += '"';
    for (const char c : argument) {
        if (c == '"')
            line.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        line += c;
    }
    line.append(backslashes, '\\');
    line += '"';
}

} // namespace

std::string commandLine(const std::vector<std::string>& arguments) {
    std::string line;
    for (const std::string& argument : arguments) {
        if (!line.empty())
            line += ' ';
        if (!argument.empty() && argument.find_first_of(" \t\n\v\"") == std::string::npos)
            line += argument;
        else
            appendQuoted(line, argument);
    }
    return line;
}

} // namespace kaz::host
