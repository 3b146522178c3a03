// SPDX-License-Identifier: Apache-2.0
// A buffer without text has a null pointer and no capacity; any other text is terminated behind
// its length, and the capacity counts the terminator. What is added may be a part of the buffer
// itself: it is then found again behind the growth by its distance from the beginning.
#include "tools/util/text.h"

#include "tools/util/detail/allocate.h"
#include "tools/util/detail/compared.h"
#include "tools/util/detail/heap_ptr.h"
#include "tools/util/detail/within.h"
#include "tools/util/memory.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace {

/// Most formatted pieces are short; they need no block of their own.
constexpr std::size_t shortFormat = 256;

/// Makes room for @p added more bytes and the terminator.
void makeRoom(dd_buffer* buffer, int added) {
    const std::int64_t needed = std::int64_t{buffer->length} + added + 1;
    if (needed > INT_MAX)
        memory_panic("dd_reserve");
    if (needed <= buffer->capacity)
        return;
    // By half at least, so that adding piece by piece takes time in proportion to the length.
    const std::int64_t grown = std::int64_t{buffer->capacity} + buffer->capacity / 2;
    dd_reserve(buffer, static_cast<int>(std::clamp<std::int64_t>(grown, needed, INT_MAX)));
}

/// Sets the new length, for which there is room.
void finish(dd_buffer* buffer, int length) {
    buffer->length = length;
    buffer->text[length] = '\0';
}

bool isOwn(const dd_buffer* buffer, const char* bytes) {
    return kaz::detail::isWithin(bytes, buffer->text, static_cast<std::size_t>(buffer->length));
}

int lengthOf(const char* text) {
    const std::size_t length = text != nullptr ? std::strlen(text) : 0;
    if (length >= INT_MAX)
        memory_panic("dd_add_text");
    return static_cast<int>(length);
}

} // namespace

dd_buffer* dd_create(int capacity) {
    auto* block = static_cast<dd_buffer*>(kaz::detail::allocate(sizeof(dd_buffer)));
    kaz::detail::HeapPtr<dd_buffer> buffer(new (block) dd_buffer{nullptr, 0, 0});
    dd_reserve(buffer.get(), capacity);
    return buffer.release();
}

void dd_destroy(dd_buffer* buffer) {
    if (buffer == nullptr)
        return;
    std::free(buffer->text);
    std::free(buffer);
}

dd_buffer* dd_copy(const dd_buffer* buffer) {
    if (buffer == nullptr)
        return nullptr;
    dd_buffer* copy = dd_create(buffer->length > 0 ? buffer->length + 1 : 0);
    dd_add_bytes(copy, buffer->text, buffer->length);
    return copy;
}

/// On failure the buffer is as it was.
void dd_reserve(dd_buffer* buffer, int capacity) {
    if (buffer == nullptr || capacity <= buffer->capacity)
        return;
    void* block = kaz::detail::reallocate(buffer->text, static_cast<std::size_t>(capacity));
    buffer->text = static_cast<char*>(block);
    buffer->capacity = capacity;
    buffer->text[buffer->length] = '\0';
}

void dd_add_char(dd_buffer* buffer, char c) {
    dd_add_fill(buffer, c, 1);
}

void dd_add_text(dd_buffer* buffer, const char* text) {
    dd_add_bytes(buffer, text, lengthOf(text));
}

void dd_add_bytes(dd_buffer* buffer, const char* bytes, int count) {
    if (buffer == nullptr || bytes == nullptr || count < 1)
        return;
    const bool own = isOwn(buffer, bytes);
    const std::ptrdiff_t offset = own ? bytes - buffer->text : 0;
    makeRoom(buffer, count);
    std::memmove(buffer->text + buffer->length, own ? buffer->text + offset : bytes,
                 static_cast<std::size_t>(count));
    finish(buffer, buffer->length + count);
}

void dd_add_fill(dd_buffer* buffer, char c, int count) {
    if (buffer == nullptr || count < 1)
        return;
    makeRoom(buffer, count);
    std::memset(buffer->text + buffer->length, c, static_cast<std::size_t>(count));
    finish(buffer, buffer->length + count);
}

void dd_add_format(dd_buffer* buffer, const char* format, ...) {
    va_list args;
    va_start(args, format);
    // The list must be ended on the way of an exception as well.
    struct End {
        va_list* list;
        ~End() { va_end(*list); }
    } end{&args};
    dd_vadd_format(buffer, format, args);
}

void dd_vadd_format(dd_buffer* buffer, const char* format, va_list args) {
    if (buffer == nullptr || format == nullptr)
        return;
    // Arguments may lie in the buffer, so the result is made elsewhere first.
    char small[shortFormat];
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(small, sizeof small, format, args);
    // A negative length, for what the locale cannot convert, adds nothing.
    if (length < static_cast<int>(sizeof small)) {
        va_end(again);
        dd_add_bytes(buffer, small, length);
        return;
    }
    const auto size = static_cast<std::size_t>(length) + 1;
    // malloc() and not the panicking kind: the list must be ended before anything is thrown.
    const kaz::detail::HeapPtr<char> large(static_cast<char*>(std::malloc(size)));
    if (large != nullptr)
        std::vsnprintf(large.get(), size, format, again);
    va_end(again);
    if (large == nullptr)
        memory_panic("dd_add_format");
    dd_add_bytes(buffer, large.get(), length);
}

void dd_insert(dd_buffer* buffer, int position, const char* text) {
    const int count = lengthOf(text);
    if (buffer == nullptr || count == 0)
        return;
    // A part of the buffer may lie on both sides of the gap, so a copy is inserted.
    const kaz::detail::HeapPtr<char> copy(isOwn(buffer, text) ? mkcpy(text) : nullptr);
    makeRoom(buffer, count);
    const int at = std::clamp(position, 0, buffer->length);
    char* gap = buffer->text + at;
    std::memmove(gap + count, gap, static_cast<std::size_t>(buffer->length - at));
    std::memcpy(gap, copy != nullptr ? copy.get() : text, static_cast<std::size_t>(count));
    finish(buffer, buffer->length + count);
}

void dd_remove(dd_buffer* buffer, int position, int count) {
    if (buffer == nullptr || position < 0 || position >= buffer->length || count < 1)
        return;
    const int removed = std::min(count, buffer->length - position);
    char* gap = buffer->text + position;
    std::memmove(gap, gap + removed, static_cast<std::size_t>(buffer->length - position - removed));
    finish(buffer, buffer->length - removed);
}

void dd_truncate(dd_buffer* buffer, int length) {
    // An empty buffer may have no text yet to put a terminator into.
    const int shorter = std::max(length, 0);
    if (buffer != nullptr && shorter < buffer->length)
        finish(buffer, shorter);
}

void dd_clear(dd_buffer* buffer) {
    dd_truncate(buffer, 0);
}

const char* dd_text(const dd_buffer* buffer) {
    return buffer != nullptr && buffer->text != nullptr ? buffer->text : "";
}

int dd_length(const dd_buffer* buffer) {
    return buffer != nullptr ? buffer->length : 0;
}

char dd_char_at(const dd_buffer* buffer, int position) {
    return position >= 0 && position < dd_length(buffer) ? buffer->text[position] : '\0';
}

int dd_compare(const dd_buffer* a, const dd_buffer* b) {
    const int common = std::min(dd_length(a), dd_length(b));
    const int order = std::memcmp(dd_text(a), dd_text(b), static_cast<std::size_t>(common));
    return order != 0 ? kaz::detail::signOf(order)
                      : kaz::detail::compared(dd_length(a), dd_length(b));
}

/// The caller always gets a block to free, also from an empty buffer.
char* dd_take(dd_buffer* buffer) {
    if (buffer == nullptr || buffer->text == nullptr)
        return mkcpy("");
    char* text = buffer->text;
    *buffer = dd_buffer{nullptr, 0, 0};
    return text;
}
