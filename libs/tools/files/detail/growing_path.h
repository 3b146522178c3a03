// SPDX-License-Identifier: Apache-2.0
/// @file
/// The path of where a walk is.
#pragma once

#include "tools/files/detail/text.h"
#include "tools/strings/KazString.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace kaz::detail {

/// A path that grows and shrinks by names at its end, in one text: a deep walk keeps
/// no path for each of its levels. The top is shown as it was given, all below it in
/// native text.
class GrowingPath {
public:
    explicit GrowingPath(const KazString& top) { set(top); }

    /// Starts anew.
    void set(const KazString& top) {
        top_ = top;
        text_.assign(top.getValue(), static_cast<std::size_t>(top.getLength()));
        writeNormalised(text_, text_.data());
        topLength_ = text_.size();
    }

    KazString get() const { return text_.size() == topLength_ ? top_ : toText(text_); }
    /// The path of an entry.
    KazString of(std::string_view name) const { return joinPath(text_, name); }

    /// Appends a name; the result undoes that when it is given to pop().
    std::size_t push(std::string_view name) {
        const std::size_t length = text_.size();
        if (!text_.empty() && !isSeparator(text_.back()))
            text_ += '\\';
        const std::size_t start = text_.size();
        text_ += name;
        writeNormalised(name, text_.data() + start);
        return length;
    }
    void pop(std::size_t length) { text_.resize(length); }

private:
    KazString top_;
    std::string text_;
    std::size_t topLength_ = 0;
};

} // namespace kaz::detail
