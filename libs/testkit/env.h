// SPDX-License-Identifier: Apache-2.0
/// @file
/// Environment variables that find their way back.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace moxkit {

/// Sets or (with null) removes a variable. A host that has no empty variables
/// removes it for "" too.
void setVariable(const char* name, const char* value);

/// Sets (or, with null, removes) a variable of the process environment, from
/// construction to destruction, which brings the earlier state back.
class ScopedEnv {
public:
    /// Both are copied.
    ScopedEnv(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name))
            old_ = old;
        setVariable(name, value);
    }
    /// The variable is again what it was.
    ~ScopedEnv() { setVariable(name_.c_str(), old_ ? old_->c_str() : nullptr); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string name_;
    std::optional<std::string> old_;
};

} // namespace moxkit
