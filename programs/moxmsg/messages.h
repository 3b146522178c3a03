// SPDX-License-Identifier: Apache-2.0
/// @file
/// A set of message texts, wherever it came from, and what is wrong with it.
#pragma once

#include <map>
#include <string>
#include <vector>

struct Message {
    std::string text;
    int line = 0; ///< where it begins in a source text; 0 in a message file
};

/// A text in another language, and what it translates.
struct Translation {
    int number;
    std::string original;
    std::string text;
};

struct Problem {
    int line; ///< 0 where there are no lines
    std::string text;
};

struct Messages {
    std::string file; ///< as the user named it
    std::map<int, Message> texts;
    std::vector<Problem> problems;
    std::vector<Translation> translations = {}; ///< of an MO file, in its order

    /// "file:line", or "file" where there are no lines.
    std::string place(int line) const {
        return line > 0 ? file + ":" + std::to_string(line) : file;
    }
    void addProblem(int line, const std::string& text) { problems.push_back({line, text}); }
    /// Prints the problems, by line, on the error channel, and opens the first that has a
    /// line where the user wants that (see openComplaint). True when there are none.
    bool report();
};

/// "-" is standard input in each of these, which is read once only.
///
/// Messages of a source text or of a message file, told apart by their
/// beginning. A file that cannot be read is a problem, too.
Messages readMessages(const std::string& file);
/// The same, or the translations of an MO file.
Messages readOther(const std::string& file);
/// The same for one that has to be a message file.
Messages readMessageFile(const std::string& file);
/// The same for one that has to be a source text.
Messages readSourceText(const std::string& file);
