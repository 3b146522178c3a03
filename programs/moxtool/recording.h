// SPDX-License-Identifier: Apache-2.0
/// @file
/// A recorded dialogue as a file holds it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// One line of a recording.
struct RecordedLine {
    int number = 0;   ///< in the file, from 1
    std::string text; ///< as it stands, without its end
};

/// What a recording says: how the tool was started and what its user answered.
struct Recording {
    std::string tool;                   ///< a plain name
    std::vector<std::string> arguments; ///< what it was called with, without its name
    std::string input;                  ///< the answers, as standard input has to give them
    std::vector<RecordedLine> lines;    ///< all of them but traces, which nothing compares

    int problemLine = 0; ///< 0 for the file as a whole
    std::string problem; ///< why it is none; "" for a good one
};

/// Reads what a file holds. One that is damaged, nested deeper than 64, or no recording
/// gives its problem and the place of it; the lines are there all the same, up to it.
/// Numbers and texts that are larger than what the library writes are accepted.
/// Takes time proportional to the size.
Recording readRecording(std::string_view bytes);
