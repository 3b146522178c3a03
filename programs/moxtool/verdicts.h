// SPDX-License-Identifier: Apache-2.0
/// @file
/// What is said of each topic that was looked at.
#pragma once

#include <string>
#include <vector>

/// Lines of a verdict ("ok", "warn" or "fail"), a topic and a sentence, with tabs between.
class Verdicts {
public:
    /// What follows is of this topic.
    void begin(const char* topic);
    void warn(const std::string& text);
    void fail(const std::string& text);
    /// Only where there is nothing else to say of the topic.
    void confirm(const std::string& text);

    /// Prints all lines. False when one of them fails, or cannot be said, which is told.
    bool report() const;

private:
    void tell(const char* verdict, const std::string& text);

    std::vector<std::string> lines_;
    std::string topic_;
    bool isTold_ = false; ///< something of the topic
    bool hasFailed_ = false;
};
