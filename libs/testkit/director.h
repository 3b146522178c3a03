// SPDX-License-Identifier: Apache-2.0
/// @file
/// A director that listens.
#pragma once

#include "tools/messages/KazIODirector.h"

#include <deque>
#include <string>
#include <vector>

namespace moxkit {

/// Keeps what a tool says and answers what it asks. Installed from construction to
/// destruction, when the director before it is in charge again. Texts are kept as they
/// are formatted, in order, without the newline that the console would add; fatal errors
/// return to their caller. Progress and the output of commands are the console's.
class RecordingDirector : public KazIODirector {
public:
    RecordingDirector(); ///< installs itself

    std::vector<std::string> messages; ///< of print_msg() and what comes down to it
    std::vector<std::string> errors;   ///< of print_err() and what comes down to it
    std::vector<std::string> fatals;   ///< of fatal_err()
    /// What was asked, as "TITLE: TEXT": confirmations and requests for input.
    std::vector<std::string> questions;

    /// Answers to confirmations, the next one first. Once there is none, each gets its default.
    std::deque<Reply> replies;
    /// Answers to requests for input, the next one first. "" is an empty line, which enters
    /// nothing, and so is every one once there is none.
    std::deque<std::string> inputs;

protected:
    void doPrintMsg(const char* format, va_list args) override;
    void doPrintError(const char* format, va_list args) override;
    void doFatalError(const char* format, va_list args) override;
    Reply doConfirm(const KazString& title, const KazString& message, DialogType type,
                    Reply reply) override;
    bool doGetUserInput(KazString& result, const KazString& title, const KazString& prompt,
                        bool echo) override;
};

} // namespace moxkit
