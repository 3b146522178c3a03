// SPDX-License-Identifier: Apache-2.0
// Lines are kept until all topics have been looked at. Each is printable and one line,
// whatever its sentence is made of: scripts cut it at the tabs.
#include "moxtool/verdicts.h"

#include "common/output.h"
#include "common/printable.h"
#include "tools/messages/messages.h"

void Verdicts::begin(const char* topic) {
    topic_ = topic;
    isTold_ = false;
}

void Verdicts::tell(const char* verdict, const std::string& text) {
    isTold_ = true;
    lines_.push_back(std::string(verdict) + "\t" + topic_ + "\t" +
                     printable(onOneLine(text.c_str())));
}

void Verdicts::warn(const std::string& text) {
    tell("warn", text);
}

void Verdicts::fail(const std::string& text) {
    hasFailed_ = true;
    tell("fail", text);
}

void Verdicts::confirm(const std::string& text) {
    if (!isTold_)
        tell("ok", text);
}

bool Verdicts::report() const {
    for (const std::string& line : lines_)
        print_msg("%s", line.c_str());
    return hasOutputArrived() && !hasFailed_;
}
