// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a program could not do.
#pragma once

#include "tools/strings/KazString.h"

#include <cstddef>
#include <utility>
#include <vector>

/// Something that a program could not work on, and why.
struct Failure {
    KazString path; ///< as it is shown to the user
    KazString reason;
};

/// Failures in their order. The first of them are kept, the others counted, so that
/// neither memory nor the terminal is filled with a million of them.
class Failures {
public:
    static constexpr std::size_t kept = 100;

    void add(const KazString& path, const KazString& reason) {
        if (count_++ < kept)
            first_.push_back({path, reason});
    }
    /// Those of @p earlier come first.
    void addBefore(Failures earlier) {
        earlier.first_.insert(earlier.first_.end(), first_.begin(), first_.end());
        if (earlier.first_.size() > kept)
            earlier.first_.resize(kept);
        first_ = std::move(earlier.first_);
        count_ += earlier.count_;
    }

    bool isEmpty() const { return count_ == 0; }
    std::size_t count() const { return count_; }
    /// Those that are kept.
    const std::vector<Failure>& first() const { return first_; }

private:
    std::vector<Failure> first_;
    std::size_t count_ = 0;
};
