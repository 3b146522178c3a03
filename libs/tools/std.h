// SPDX-License-Identifier: Apache-2.0
/// @file
/// The library's types beside those of the standard library: views, hashes, and the
/// `begin` and `end` that loops and algorithms ask for. Nothing of the library includes
/// this header; whoever does pays for what is used.
///
/// @code
///   for (const KazString& name : names)                     // a KazStringColl
///       total += wanted.count(kazView(name));
///   for (const auto& [key, value] : settings)               // a KazStringToStringMap
///       print_msg("%s=%s", key.getValue(), value.getValue());
///   std::unordered_map<KazString, int> counts;              // KazString hashes
/// @endcode
///
/// A walk takes the bounds as they are when it begins and does not follow changes: who
/// adds or removes meanwhile uses the class's own iterator, which stays with its
/// element. What an iterator refers to has to outlive it.
#pragma once

#include "tools/containers/KazColl.h"
#include "tools/containers/KazIntColl.h"
#include "tools/containers/KazIntTree.h"
#include "tools/containers/KazStringColl.h"
#include "tools/containers/KazStringToStringMap.h"
#include "tools/containers/KazStringToStringMapIterator.h"
#include "tools/containers/KazStringTree.h"
#include "tools/containers/KazTree.h"
#include "tools/export.h"
#include "tools/strings/KazString.h"
#include "tools/strings/KazStringTokenizer.h"
#include "tools/util/gu_set.h"
#include "tools/util/string_map.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>
#include <version>
#if defined(__cpp_lib_format)
#include <format>
#endif

/// @name Text
/// @{

/// The text of @p s with its whole length, inner NULs included. Good until the string
/// is changed or destroyed.
inline std::string_view kazView(const KazString& s) noexcept {
    return {s.getValue(), static_cast<std::size_t>(s.getLength())};
}

/// A string with the bytes of @p text, inner NULs included; null for an empty one.
/// More than 2^31 bytes, or no memory: KazMemoryException.
inline KazString kazString(std::string_view text) {
    KazString result;
    if (text.empty())
        return result;
    // What does not fit the length of a string has to fail, not to be cut.
    const int length = text.size() <= INT32_MAX ? static_cast<int>(text.size()) : INT32_MAX;
    std::memcpy(result.getBuffer(length), text.data(), static_cast<std::size_t>(length));
    result.releaseBuffer(length);
    return result;
}

/// @}

namespace std {

/// Hashes a string up to the first NUL, as `==` compares: equal strings have to hash alike.
template <>
struct hash<KazString> {
    /// The hash of what a view of that text hashes to.
    std::size_t operator()(const KazString& s) const noexcept {
        return std::hash<std::string_view>{}(std::string_view(s.getValue()));
    }
};

} // namespace std

/// @cond What begin() and end() below return: iterators as the standard describes them.
namespace kaz::range {

/// A position in something that is reached by index; @p Source is copied with the
/// iterator and has `value_type` and `value_type at(int) const`.
template <typename Source>
class IndexIterator {
public:
    using value_type = typename Source::value_type;
    using reference = value_type;
    using pointer = void;
    using difference_type = std::ptrdiff_t;
    /// Values are made on the way, which older algorithms allow of inputs only.
    using iterator_category = std::input_iterator_tag;
#if defined(__cpp_lib_ranges)
    using iterator_concept = std::random_access_iterator_tag;
#endif

    IndexIterator() = default;
    IndexIterator(Source source, difference_type index) : source_(source), index_(index) {}

    reference operator*() const {
        return source_.at(static_cast<int>(index_));
    }
    reference operator[](difference_type by) const {
        return source_.at(static_cast<int>(index_ + by));
    }

    IndexIterator& operator+=(difference_type by) {
        index_ += by;
        return *this;
    }
    IndexIterator& operator-=(difference_type by) {
        return *this += -by;
    }
    IndexIterator& operator++() {
        return *this += 1;
    }
    IndexIterator& operator--() {
        return *this += -1;
    }
    IndexIterator operator++(int) {
        IndexIterator before = *this;
        ++*this;
        return before;
    }
    IndexIterator operator--(int) {
        IndexIterator before = *this;
        --*this;
        return before;
    }
    friend IndexIterator operator+(IndexIterator i, difference_type by) {
        return i += by;
    }
    friend IndexIterator operator+(difference_type by, IndexIterator i) {
        return i += by;
    }
    friend IndexIterator operator-(IndexIterator i, difference_type by) {
        return i -= by;
    }
    friend difference_type operator-(const IndexIterator& a, const IndexIterator& b) {
        return a.index_ - b.index_;
    }
    friend bool operator==(const IndexIterator& a, const IndexIterator& b) {
        return a.index_ == b.index_;
    }
    friend bool operator!=(const IndexIterator& a, const IndexIterator& b) {
        return !(a == b);
    }
    friend bool operator<(const IndexIterator& a, const IndexIterator& b) {
        return a.index_ < b.index_;
    }
    friend bool operator>(const IndexIterator& a, const IndexIterator& b) {
        return b < a;
    }
    friend bool operator<=(const IndexIterator& a, const IndexIterator& b) {
        return !(b < a);
    }
    friend bool operator>=(const IndexIterator& a, const IndexIterator& b) {
        return !(a < b);
    }

private:
    Source source_{};
    difference_type index_ = 0;
};

struct IntCollSource {
    using value_type = int;
    const KazIntColl* coll = nullptr;
    int at(int index) const { return coll->getAt(index); }
};

/// By rank: each step takes time proportional to the tree's depth.
template <typename Tree, typename Value>
struct TreeSource {
    using value_type = Value;
    const Tree* tree = nullptr;
    Value at(int rank) const { return tree->valueAt(rank); }
};

template <typename Tree, typename Value>
using TreeIterator = IndexIterator<TreeSource<Tree, Value>>;

/// Goes forward over what a cursor of the library walks. @p Cursor can be copied, and has
/// `value_type`, `done()`, `get()`, `step()` and `same(const Cursor&)` for two that are
/// not done.
template <typename Cursor>
class CursorIterator {
public:
    using value_type = typename Cursor::value_type;
    using reference = value_type;
    using pointer = void;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::input_iterator_tag;

    /// The end of any walk.
    CursorIterator() = default;
    explicit CursorIterator(Cursor cursor) : cursor_(std::move(cursor)) { leaveIfDone(); }

    reference operator*() const { return cursor_->get(); }
    CursorIterator& operator++() {
        cursor_->step();
        leaveIfDone();
        return *this;
    }
    CursorIterator operator++(int) {
        CursorIterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(const CursorIterator& a, const CursorIterator& b) {
        return a.cursor_ && b.cursor_ ? a.cursor_->same(*b.cursor_)
                                      : a.cursor_.has_value() == b.cursor_.has_value();
    }
    friend bool operator!=(const CursorIterator& a, const CursorIterator& b) { return !(a == b); }

private:
    void leaveIfDone() {
        if (cursor_->done())
            cursor_.reset();
    }

    std::optional<Cursor> cursor_;
};

struct MapCursor {
    using value_type = std::pair<KazString, KazString>;
    KazStringToStringMapIterator entry;
    bool done() const { return entry.isDone(); }
    value_type get() const { return {entry.getKey(), entry.getValue()}; }
    void step() { entry.next(); }
    /// A key is stored once.
    bool same(const MapCursor& other) const {
        return entry.KazHashTableIterator::getKey() == other.entry.KazHashTableIterator::getKey();
    }
};

struct TokenCursor {
    using value_type = KazString;
    KazStringTokenizer tokens;
    bool skipRuns;
    KazString token;
    bool over = false;

    TokenCursor(const KazString& text, const char* delimiters, bool runs)
        : tokens(text, delimiters), skipRuns(runs) {
        step();
    }
    bool done() const { return over; }
    KazString get() const { return token; }
    void step() {
        over = tokens.isDone();
        if (!over)
            token = tokens.nextString(skipRuns);
    }
    /// Tokens are read once, as from a stream: two that are not done are on the way.
    bool same(const TokenCursor&) const { return true; }
};

struct SetCursor {
    using value_type = void*;
    gu_set_iterator element;
    bool done() const { return gu_set_done(element); }
    void* get() const { return gu_set_element(element); }
    void step() { gu_set_next(&element); }
    bool same(const SetCursor& other) const { return element.position == other.element.position; }
};

struct PlainMapCursor {
    using value_type = std::pair<const char*, void*>;
    string_map_iterator entry;
    bool done() const { return string_map_done(entry); }
    value_type get() const { return {string_map_domain(entry), string_map_range(entry)}; }
    void step() { string_map_next(&entry); }
    bool same(const PlainMapCursor& other) const { return entry.entry == other.entry.entry; }
};

/// What a loop goes over once.
template <typename Cursor>
class CursorRange {
public:
    explicit CursorRange(Cursor first) : first_(std::move(first)) {}
    CursorIterator<Cursor> begin() const { return first_; }
    CursorIterator<Cursor> end() const { return {}; }

private:
    CursorIterator<Cursor> first_;
};

} // namespace kaz::range
/// @endcond

/// @name Loops over containers
/// Each once for const objects and once for others: the standard's ranges want both.
/// @{

/// Contiguous. Elements are changed through the collection, which owns them.
inline void* const* begin(const KazColl& coll) {
    return coll.getData();
}
inline void* const* begin(KazColl& coll) {
    return std::as_const(coll).getData();
}
inline void* const* end(const KazColl& coll) {
    return coll.getData() + coll.getSize();
}
inline void* const* end(KazColl& coll) {
    return std::as_const(coll).getData() + coll.getSize();
}

/// Random access to values.
inline kaz::range::IndexIterator<kaz::range::IntCollSource> begin(const KazIntColl& coll) {
    return {{&coll}, 0};
}
inline kaz::range::IndexIterator<kaz::range::IntCollSource> begin(KazIntColl& coll) {
    return {{&coll}, 0};
}
inline kaz::range::IndexIterator<kaz::range::IntCollSource> end(const KazIntColl& coll) {
    return {{&coll}, coll.getSize()};
}
inline kaz::range::IndexIterator<kaz::range::IntCollSource> end(KazIntColl& coll) {
    return {{&coll}, coll.getSize()};
}

/// Contiguous: the stored strings themselves. Assigning to one of a collection that is
/// not const replaces the element.
inline const KazString* begin(const KazStringColl& coll) {
    return coll.getSize() > 0 ? &coll.getAt(0) : nullptr;
}
inline KazString* begin(KazStringColl& coll) {
    return coll.getSize() > 0 ? &coll.getAt(0) : nullptr;
}
inline const KazString* end(const KazStringColl& coll) {
    return begin(coll) + coll.getSize();
}
inline KazString* end(KazStringColl& coll) {
    return begin(coll) + coll.getSize();
}

/// Forward, over pairs of key and value that share the stored blocks.
inline kaz::range::CursorIterator<kaz::range::MapCursor> begin(const KazStringToStringMap& map) {
    return kaz::range::CursorIterator<kaz::range::MapCursor>({KazStringToStringMapIterator(map)});
}
inline kaz::range::CursorIterator<kaz::range::MapCursor> begin(KazStringToStringMap& map) {
    return begin(std::as_const(map));
}
inline kaz::range::CursorIterator<kaz::range::MapCursor> end(const KazStringToStringMap&) {
    return {};
}
inline kaz::range::CursorIterator<kaz::range::MapCursor> end(KazStringToStringMap&) {
    return {};
}

/// Random access in the tree's order.
inline kaz::range::TreeIterator<KazTree, void*> begin(const KazTree& tree) {
    return {{&tree}, 0};
}
inline kaz::range::TreeIterator<KazTree, void*> begin(KazTree& tree) {
    return {{&tree}, 0};
}
inline kaz::range::TreeIterator<KazTree, void*> end(const KazTree& tree) {
    return {{&tree}, tree.getSize()};
}
inline kaz::range::TreeIterator<KazTree, void*> end(KazTree& tree) {
    return {{&tree}, tree.getSize()};
}
inline kaz::range::TreeIterator<KazIntTree, int> begin(const KazIntTree& tree) {
    return {{&tree}, 0};
}
inline kaz::range::TreeIterator<KazIntTree, int> begin(KazIntTree& tree) {
    return {{&tree}, 0};
}
inline kaz::range::TreeIterator<KazIntTree, int> end(const KazIntTree& tree) {
    return {{&tree}, tree.getSize()};
}
inline kaz::range::TreeIterator<KazIntTree, int> end(KazIntTree& tree) {
    return {{&tree}, tree.getSize()};
}
inline kaz::range::TreeIterator<KazStringTree, KazString> begin(const KazStringTree& tree) {
    return {{&tree}, 0};
}
inline kaz::range::TreeIterator<KazStringTree, KazString> begin(KazStringTree& tree) {
    return {{&tree}, 0};
}
inline kaz::range::TreeIterator<KazStringTree, KazString> end(const KazStringTree& tree) {
    return {{&tree}, tree.getSize()};
}
inline kaz::range::TreeIterator<KazStringTree, KazString> end(KazStringTree& tree) {
    return {{&tree}, tree.getSize()};
}
/// @}

/// @name Loops over what is no container
/// @{

/// The tokens of @p text as a KazStringTokenizer gives them. The range has its own copy
/// of the text and of the delimiters.
inline kaz::range::CursorRange<kaz::range::TokenCursor>
kazTokens(const KazString& text, const char* delimiters, bool skipRuns) {
    return kaz::range::CursorRange(kaz::range::TokenCursor(text, delimiters, skipRuns));
}

/// The elements of @p set in the order in which they were added; null is empty.
inline kaz::range::CursorRange<kaz::range::SetCursor> kazElements(const gu_set* set) {
    return kaz::range::CursorRange(kaz::range::SetCursor{gu_set_init(set)});
}

/// The entries of @p map as pairs of the map's own key and the value; null is empty.
inline kaz::range::CursorRange<kaz::range::PlainMapCursor> kazEntries(string_map_tp* map) {
    return kaz::range::CursorRange(kaz::range::PlainMapCursor{string_map_init(map)});
}
/// @}

#if defined(__cpp_lib_format)
/// As std::string_view, with all that its format says.
template <>
struct std::formatter<KazString, char> : std::formatter<std::string_view, char> {
    template <typename Context>
    auto format(const KazString& s, Context& context) const {
        return std::formatter<std::string_view, char>::format(kazView(s), context);
    }
};
#endif
