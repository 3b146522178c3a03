// SPDX-License-Identifier: Apache-2.0
/// @file
/// A director that listens.
#pragma once

#include "tools/messages/KazIODirector.h"

#include <string>
#include <vector>

namespace kit {

/// Installed from construction to destruction. Keeps the formatted text of
/// every message, error and fatal error, in order and without the newline that
/// the console would add; fatal errors return to their caller. Confirmations
/// are answered with `reply` and kept as "title: message".
class RecordingDirector : public KazIODirector {
public:
    RecordingDirector();

    std::vector<std::string> messages;
    std::vector<std::string> errors;
    std::vector<std::string> fatals;

protected:
    void doPrintMsg(const char* format, va_list args) override;
    void doPrintError(const char* format, va_list args) override;
    void doFatalError(const char* format, va_list args) override;
};

} // namespace kit
