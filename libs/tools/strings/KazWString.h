// SPDX-License-Identifier: Apache-2.0
/// @file
/// The wide string class.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"
#include "tools/strings/KazStringRep.h"

#include <cstdarg>
#include <cstring>
#include <iosfwd>
#include <string>
#include <type_traits>

/// A string of 16-bit characters (UTF-16 units) of the same design as
/// KazString: one pointer to a shared block, copied on write, null when empty.
///
/// @code
///   KazWString title = "Bericht";           // widened by the runtime
///   title.toUpper();
///   KazString shown = title.toNarrow();     // and back
/// @endcode
///
/// Every member means what the member of that name means in KazString, its
/// empty-side signs, kinds of empty, limits and failures included, with
/// `unsigned short` for `char`: texts are terminated by a 16-bit NUL, order is
/// that of the unsigned units, lengths and capacities count units. Only what
/// differs is said here. Narrow text is accepted wherever a KazWString is, by
/// conversion, and so is text of char16_t. Unlike the narrow class this one offers
/// locale collation.
class KAZ_API KazWString {
public:
    using StringRep = KazStringRep; ///< the header of a block, the same as the narrow class's

    /// The other types of character whose texts are 16-bit text.
    template <class Unit>
    static constexpr bool isUnit = std::is_same_v<Unit, char16_t> ||
                                   (std::is_same_v<Unit, wchar_t> && sizeof(wchar_t) == 2);

    /// As KazString's, in 16-bit characters.
    static const unsigned short* const theDefaultWhitespaces;
    static const KazWString theEmptyString;

    /// @name Construction and assignment
    /// @{

    /// Empty (null).
    constexpr KazWString() noexcept = default;
    KazWString(const unsigned short* s);
    KazWString(unsigned short c);
    /// The 16-bit form of a multibyte text by the runtime's conversion in the
    /// current locale; a character beyond 16 bits becomes a surrogate pair.
    /// Null when @p s is null or empty or cannot be converted.
    KazWString(const char* s);
    /// A copy of a terminated text of the same units: char16_t everywhere, wchar_t
    /// where that has 16 bits.
    template <class Unit, std::enable_if_t<isUnit<Unit>, int> = 0>
    KazWString(const Unit* s) {
        if (s != nullptr && *s != 0)
            copyUnits(s, std::char_traits<Unit>::length(s));
    }
    /// The same of @p s up to its first NUL.
    explicit KazWString(const KazString& s);
    KazWString(const KazWString& o) noexcept : rep_(o.rep_) { StringRep::retain(rep_); }
    KazWString(KazWString&& o) noexcept : rep_(o.rep_) { o.rep_ = nullptr; }
    /// Lets the block go.
    ~KazWString() { StringRep::release(rep_); }

    static void deleteString(KazWString* p);

    KazWString& operator=(const KazWString& o) noexcept {
        StringRep::retain(o.rep_); // first, or the only holder would free it
        StringRep::release(rep_);
        rep_ = o.rep_;
        return *this;
    }
    KazWString& operator=(KazWString&& o) noexcept;
    KazWString& operator=(const unsigned short* s);
    /// @}

    /// @name Access
    /// @{

    /// Whether there is text: the block is not null and its length is not 0.
    operator bool() const { return getLength() != 0; }

    const unsigned short* getValue() const { return rep_ != nullptr ? chars() : theEmptyText; }
    /// The same, where a text is asked for.
    operator const unsigned short*() const { return getValue(); }

    int getLength() const { return rep_ != nullptr ? StringRep::of(rep_)->stringLength : 0; }
    bool isEmpty() const { return getLength() == 0; }
    unsigned short operator[](int i) const;
    unsigned short& operator[](int i);
    unsigned short* getCopyValue() const;
    /// The multibyte form up to the first NUL; see KazString's constructor from
    /// 16-bit text.
    KazString toNarrow() const { return KazString(getValue()); }
    /// The same as @p narrow. False, @p narrow unchanged, when the text cannot be
    /// converted: a lone surrogate, or a character that the locale does not have.
    bool toNarrow(KazString& narrow) const;
    /// Replaces the text by the 16-bit form of a multibyte one (null: ""). False, this
    /// string unchanged, when @p s cannot be converted.
    bool setNarrow(const char* s);
    /// @}

    /// @name Comparison
    /// Without regard to case means through the runtime's `towlower`;
    /// compareN gives -1, 0 or 1.
    /// @{

    int compare(const unsigned short* s) const;
    int compare(const KazWString& o) const;
    int compareN(const unsigned short* s, int n) const;
    int compareN(const KazWString& o, int n) const;
    bool equalsN(const unsigned short* s, int n) const;
    bool equalsN(const KazWString& o, int n) const;
    bool equals(const unsigned short* s) const;
    bool equals(const KazWString& o) const;
    int compareNoCase(const unsigned short* s) const;
    int compareNoCase(const KazWString& o) const;
    bool equalsNoCase(const unsigned short* s) const;
    bool equalsNoCase(const KazWString& o) const;

    /// By the collation of the current locale (`wcscoll`): -1, 0 or 1. A null text
    /// and an empty one are the same and come first; a lone surrogate counts as a
    /// character of its own.
    bool equalsLocale(const unsigned short* s) const { return compareLocale(s) == 0; }
    bool equalsLocale(const KazWString& o) const { return compareLocale(o) == 0; }
    int compareLocale(const unsigned short* s) const { return compareLocale(getValue(), s); }
    int compareLocale(const KazWString& o) const { return compareLocale(getValue(), o.getValue()); }
    static bool equalsLocale(const unsigned short* a, const unsigned short* b) {
        return compareLocale(a, b) == 0;
    }
    static bool equalsLocale(const KazWString& a, const KazWString& b) { return a.equalsLocale(b); }
    static int compareLocale(const unsigned short* a, const unsigned short* b);
    static int compareLocale(const KazWString& a, const KazWString& b) {
        return a.compareLocale(b);
    }

    bool operator==(const unsigned short* s) const { return equals(s); }
    bool operator==(const KazWString& o) const { return equals(o); }
    bool operator!=(const unsigned short* s) const { return !equals(s); }
    bool operator!=(const KazWString& o) const { return !equals(o); }
    bool operator<(const unsigned short* s) const { return compare(s) < 0; }
    bool operator<(const KazWString& o) const { return compare(o) < 0; }
    bool operator>(const unsigned short* s) const { return compare(s) > 0; }
    bool operator>(const KazWString& o) const { return compare(o) > 0; }
    bool operator<=(const unsigned short* s) const { return compare(s) <= 0; }
    bool operator<=(const KazWString& o) const { return compare(o) <= 0; }
    bool operator>=(const unsigned short* s) const { return compare(s) >= 0; }
    bool operator>=(const KazWString& o) const { return compare(o) >= 0; }

    friend bool operator==(const unsigned short* a, const KazWString& b) { return b.equals(a); }
    friend bool operator!=(const unsigned short* a, const KazWString& b) { return !b.equals(a); }
    friend bool operator<(const unsigned short* a, const KazWString& b) { return b.compare(a) > 0; }
    friend bool operator>(const unsigned short* a, const KazWString& b) { return b.compare(a) < 0; }
    friend bool operator<=(const unsigned short* a, const KazWString& b) {
        return b.compare(a) >= 0;
    }
    friend bool operator>=(const unsigned short* a, const KazWString& b) {
        return b.compare(a) <= 0;
    }
    /// Text of another type is text, not a string: it has the signs of an empty side that
    /// texts have.
    friend bool operator<(const KazWString& a, const char16_t* b) {
        return a < units(b).getValue();
    }
    friend bool operator>(const KazWString& a, const char16_t* b) {
        return a > units(b).getValue();
    }
    friend bool operator<=(const KazWString& a, const char16_t* b) { return !(a > b); }
    friend bool operator>=(const KazWString& a, const char16_t* b) { return !(a < b); }
    friend bool operator<(const char16_t* a, const KazWString& b) { return b > a; }
    friend bool operator>(const char16_t* a, const KazWString& b) { return b < a; }
    friend bool operator<=(const char16_t* a, const KazWString& b) { return !(b < a); }
    friend bool operator>=(const char16_t* a, const KazWString& b) { return !(b > a); }
    /// @}

    /// @name Comparators and hashes for containers
    /// @{

    static int compare(const unsigned short* a, const unsigned short* b);
    static int compareDisguised(const void* a, const void* b);
    static int compare(const KazWString& a, const KazWString& b) { return a.compare(b); }
    static int compareStrings(const KazWString* a, const KazWString* b) { return a->compare(*b); }
    static int compareNoCase(const unsigned short* a, const unsigned short* b);
    static int compareNoCaseDisguised(const void* a, const void* b);
    static int compareNoCase(const KazWString& a, const KazWString& b) {
        return a.compareNoCase(b);
    }

    static unsigned hash(const unsigned short* s);
    static unsigned hashDisguised(const void* s);
    static unsigned hash(const KazWString& s);
    static unsigned hashNoCase(const unsigned short* s);
    static unsigned hashNoCaseDisguised(const void* s);
    static unsigned hashNoCase(const KazWString& s);
    /// @}

    /// @name Representations in untyped containers
    /// @{

    void* disguise() const { return rep_; }
    static KazWString undisguise(void* p);
    static void* checkIn(void* p) {
        StringRep::retain(p);
        return p;
    }
    static void checkOut(void* p) { StringRep::release(p); }
    /// @}

    /// @name Buffer access
    /// @{

    unsigned short* getBuffer(int n);
    void releaseBuffer(int n = -1);
    void setLength(int n);
    void clear() { setLength(0); }
    void setSize(unsigned n);
    void minimizeSize();
    /// @}

    /// @name Appending
    /// @{

    inline void append(unsigned short c);
    void append(const unsigned short* s);
    void append(const KazWString& o);
    void appendNumber(int n);
    KazWString& operator+=(unsigned short c) {
        append(c);
        return *this;
    }
    KazWString& operator+=(const unsigned short* s) {
        append(s);
        return *this;
    }
    KazWString& operator+=(const KazWString& o) {
        append(o);
        return *this;
    }
    KazWString operator+(unsigned short c) const;
    KazWString operator+(const unsigned short* s) const;
    KazWString operator+(const KazWString& o) const;
    KazWString operator+(const char* s) const { return *this + KazWString(s); }
    friend KazWString operator+(const unsigned short* a, const KazWString& b) {
        return KazWString(a) + b;
    }
    friend KazWString operator+(const char* a, const KazWString& b) { return KazWString(a) + b; }
    // Buffers that may be written to, as for KazString.
    KazWString operator+(unsigned short* s) const {
        return *this + static_cast<const unsigned short*>(s);
    }
    KazWString operator+(char* s) const { return *this + KazWString(s); }
    friend KazWString operator+(unsigned short* a, const KazWString& b) {
        return KazWString(a) + b;
    }
    friend KazWString operator+(char* a, const KazWString& b) { return KazWString(a) + b; }
    /// The same with text of the other 16-bit type.
    KazWString operator+(const char16_t* s) const { return *this + units(s); }
    friend KazWString operator+(const char16_t* a, const KazWString& b) { return units(a) + b; }
    KazWString operator+(char16_t* s) const { return *this + units(s); }
    friend KazWString operator+(char16_t* a, const KazWString& b) { return units(a) + b; }
    /// With a single character, which would also match a built-in sum. A narrow one is
    /// converted as text is; one that is no character by itself adds nothing.
    KazWString operator+(char16_t c) const { return *this + static_cast<unsigned short>(c); }
    KazWString operator+(char c) const;
    friend KazWString operator+(unsigned short a, const KazWString& b) { return KazWString(a) + b; }
    friend KazWString operator+(char16_t a, const KazWString& b) {
        return static_cast<unsigned short>(a) + b;
    }
    friend KazWString operator+(char a, const KazWString& b) { return KazWString() + a + b; }

    /// Replaces the text by the printf-formatted one. Formats are narrow text, or
    /// 16-bit text that the locale can convert; `%s` takes narrow text and what comes
    /// out is converted as a whole (toNarrow() makes an argument of a KazWString).
    /// Nothing is written when something of it cannot be converted, and for a
    /// conversion that the runtime refuses.
    void format(const char* fmt, ...) KAZ_PRINTF(2, 3);
    void format(const unsigned short* fmt, ...);
    void formatV(const char* fmt, va_list args) KAZ_PRINTF(2, 0);
    void formatV(const unsigned short* fmt, va_list args);
    /// The same, added at the end.
    void appendFormat(const char* fmt, ...) KAZ_PRINTF(2, 3);
    void appendFormat(const unsigned short* fmt, ...);
    void appendFormatV(const char* fmt, va_list args) KAZ_PRINTF(2, 0);
    void appendFormatV(const unsigned short* fmt, va_list args);
    /// @}

    /// @name Searching
    /// @{

    int find(unsigned short c, int start = 0) const;
    int find(const unsigned short* s, int start = 0) const;
    int find(const KazWString& s, int start = 0) const;
    int findChar(const unsigned short* set, int start = 0) const;
    int findNot(unsigned short c, int start = 0) const;
    int findPattern(const unsigned short* pattern, int start = 0) const;
    int findPattern(const KazWString& pattern, int start = 0) const;
    int findLast(unsigned short c, int start = 0) const;
    int findLast(const unsigned short* s, int start = 0) const;
    int findLast(const KazWString& s, int start = 0) const;
    int findLastChar(const unsigned short* set, int start = 0) const;
    int findLastNot(unsigned short c, int start) const;
    int count(unsigned short c) const;
    /// @}

    /// @name Editing
    /// @{

    void trimLeft(const unsigned short* set = nullptr);
    void trimRight(const unsigned short* set = nullptr);

    void prepend(const unsigned short* s);
    void prepend(const KazWString& s);
    void insert(int pos, const unsigned short* s);
    void insert(int pos, const KazWString& s);
    void repeat(unsigned short c, int n);
    void repeat(const unsigned short* s, int n);
    void repeat(const KazWString& s, int n);
    void remove(int pos, int n);
    void removeFrom(int pos);
    void removeBefore(int pos);

    void replace(int pos, int n, const unsigned short* s);
    void replace(int pos, int n, const KazWString& s);
    void replace(const unsigned short* from, const unsigned short* to);
    void replace(const unsigned short* from, const KazWString& to);
    void replace(const KazWString& from, const unsigned short* to);
    void replace(const KazWString& from, const KazWString& to);
    void replaceAll(const unsigned short* from, const unsigned short* to);
    void replaceAll(const unsigned short* from, const KazWString& to);
    void replaceAll(const KazWString& from, const unsigned short* to);
    void replaceAll(const KazWString& from, const KazWString& to);
    void replaceInSet(const unsigned short* set, unsigned short c);
    void replaceInSet(KazWString& set, unsigned short c);
    void replaceAllInSet(const unsigned short* set, unsigned short c);
    void replaceAllInSet(KazWString& set, unsigned short c);
    void translate(const unsigned short* from, const unsigned short* to);
    void translate(const unsigned short* set, unsigned short c);

    void fill(unsigned short c);
    void fill(unsigned short c, int start, int n);
    void fillFrom(unsigned short c, int start);
    void fillBefore(unsigned short c, int n);
    /// @}

    /// @name Extracting
    /// @{

    KazWString subString(int start, int n) const;
    KazWString subStringBefore(int n) const;
    KazWString subStringFrom(int start) const;
    KazWString split(unsigned short c);
    KazWString split(const unsigned short* set);
    /// @}

    /// @name Case, escaping, quoting
    /// Case goes through the runtime's `towupper` and `towlower`, unit by unit.
    /// @{

    void toUpper();
    void toLower();
    void escape(const unsigned short* set, unsigned short esc);
    void unescape(unsigned short esc);
    void escapeForQrl(const unsigned short* set);
    void enquote(unsigned short q, const unsigned short* set, unsigned short esc);
    void dequote(unsigned short q, unsigned short esc);
    /// @}

    /// Prints the text in its narrow form, otherwise as KazString::dump().
    void dump() const;

protected:
    static unsigned short* createRep(const unsigned short* s);
    static unsigned short* createRep(const unsigned short* s, int length, int capacity);
    static unsigned short* createRep(int capacity);
    void privateCopy(int extra);
    void addReference(const KazWString& o) noexcept;
    void removeReference() noexcept;

    StringRep* getRep() const { return StringRep::of(rep_); }
    int getStringLength() const { return getRep()->stringLength; }
    void setStringLength(int n) { getRep()->stringLength = n; }
    int getBufferLength() const { return getRep()->bufferLength; }
    void setBufferLength(int n) { getRep()->bufferLength = n; }

private:
    /// Makes this (null) string the @p n units at @p s.
    void copyUnits(const void* s, std::size_t n);
    static KazWString units(const char16_t* s) { return KazWString(s); }

    unsigned short* chars() const { return static_cast<unsigned short*>(rep_); }
    void adopt(unsigned short* rep) noexcept;
    void makeOwn(std::int64_t capacity);
    const unsigned short* makeRoom(std::int64_t capacity, const unsigned short* s);
    void endAt(std::int64_t length);
    bool holds(const unsigned short* s) const;
    void appendSlowly(unsigned short c);
    void appendText(const unsigned short* s, std::int64_t n);
    /// The same for a long text, or where the block does not take it as it is.
    KAZ_LOCAL void appendToRoom(const unsigned short* s, std::int64_t n);
    void insertText(int pos, const unsigned short* s, std::int64_t n);
    void repeatText(const unsigned short* s, std::int64_t n, int times);
    void splice(std::int64_t pos, std::int64_t removed, const unsigned short* s, std::int64_t n);
    void replaceRange(int pos, int n, const unsigned short* s, std::int64_t added);
    void replaceFirst(const unsigned short* from, const unsigned short* to, std::int64_t n);
    void replaceEvery(const unsigned short* from, const unsigned short* to, std::int64_t n);
    void unescapeRange(std::int64_t from, std::int64_t to, unsigned short esc);

    static const unsigned short theEmptyText[1];

    void* rep_ = nullptr;
};

static_assert(sizeof(KazWString) == sizeof(void*), "containers keep strings in pointer slots");

inline void KazWString::append(unsigned short c) {
    if (!StringRep::appendInPlace(rep_, &c, 1))
        appendSlowly(c);
}

/// Writes the narrow form of the text.
KAZ_API std::ostream& operator<<(std::ostream& out, const KazWString& s);
