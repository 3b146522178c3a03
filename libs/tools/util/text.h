// SPDX-License-Identifier: Apache-2.0
/// @file
/// Plain zero-terminated texts: copies, concatenation, comparison, replacement,
/// quoting of words, and growing character buffers.
///
/// Every function that returns `char*` gives a new heap text that the caller
/// releases with `free`. Memory exhaustion ends in KazMemoryException with the
/// arguments unchanged. Null texts read as "" unless a line says otherwise.
///
/// @code
///   char* path = concat3(dir, "\\", name);
///   char* shown = quote_word(path);
///   free(path);
/// @endcode
#pragma once

#include "tools/export.h"

#include <cstdarg>

/// @name Copies and concatenation
/// @{

/// A copy of @p text. Null gives null, so that "not there" survives the copy;
/// `free` takes either.
KAZ_API char* mkcpy(const char* text);

/// A copy of the first @p length bytes of @p text, or of all of it when it is
/// shorter. Null gives null; a negative length counts as 0.
KAZ_API char* mkncpy(const char* text, int length);

/// The texts joined in the order given. Never null: null texts read as "".
KAZ_API char* concat(const char* a, const char* b);
KAZ_API char* concat3(const char* a, const char* b, const char* c);
KAZ_API char* concat4(const char* a, const char* b, const char* c, const char* d);

/// The first @p count texts of the array @p texts, with @p separator between
/// each two (null: nothing between). A null array or a count below 1 gives "".
KAZ_API char* concat_texts(const char* const* texts, int count, const char* separator);

/// Appends @p more to the heap text @p text, which it consumes: the result
/// takes its place, usually in the same block. A null @p text starts a new one.
/// @p more may be part of @p text. When it throws, @p text is unchanged.
KAZ_API char* concat_onto(char* text, const char* more);
/// @}

/// @name Comparison and tests
/// @{

/// Compares without regard to case: byte by byte through the runtime's
/// `tolower`, as unsigned characters. Gives the sign of the first difference:
/// -1, 0 or 1; a text that ends first is less.
KAZ_API int kaz_fast_stricmp(const char* a, const char* b);

/// Whether @p name holds a wildcard character. `*` and `?` always count, they
/// are what directory listings expand; with a non-zero @p classes the `[` of
/// a character class counts as well. Null or empty: false.
KAZ_API bool is_pattern(const char* name, int classes);
/// @}

/// A copy of @p text in which the text @p replacement stands for every
/// character @p c (null or "": they are left out). A null text gives null; a
/// @p c of '\0' never occurs.
KAZ_API char* string_replace_char(const char* text, char c, const char* replacement);

/// @name Words
/// A word is written the way the POSIX shell reads it: bare, in apostrophes
/// (every character stands for itself), in double quotes (a backslash protects
/// `"`, `\`, `$` and a back-quote), or after a single backslash. A backslash
/// before a line end takes it away. Blanks, tabs and line ends separate words.
/// Nothing is expanded.
/// @{

/// Whether @p word cannot stand bare: it is empty or holds a blank, a control
/// character or a character that means something to the shell.
KAZ_API bool word_needs_quotes(const char* word);

/// @p word as one word on a line: bare where that is possible, otherwise in
/// double quotes. `unquote_word` gives the word back.
KAZ_API char* quote_word(const char* word);

/// @p text without its quoting; blanks outside quotes are kept. A quote that
/// is not closed reaches to the end, a lone backslash at the end stands for
/// itself.
KAZ_API char* unquote_word(const char* text);

/// What `next_word` found.
enum word_status_enum {
    word_none,     ///< nothing but separators was left
    word_found,    ///< a word
    word_unclosed, ///< a word whose last quote was not closed
};

/// Reads the next word from @p *position, which moves behind it, and stores
/// its unquoted copy in @p *word (null when there was none). A null
/// @p *position is an empty line.
KAZ_API word_status_enum next_word(const char** position, char** word);
/// @}

/// @name Growing character buffers
/// A `dd_buffer` holds a text of any bytes with a terminating zero behind it
/// and grows by half, so that appending costs constant time a character.
/// A null buffer reads as empty, and nothing can be added to it. Arguments may
/// be part of the buffer's own text. When a function throws, the buffer is
/// unchanged. A text cannot exceed INT_MAX - 1 bytes: KazMemoryException.
/// @{

/// A growing text. Its fields are for reading.
struct dd_buffer {
    char* text;   ///< @c length bytes and a zero, or null while nothing was stored
    int length;   ///< bytes in use, the terminator not counted
    int capacity; ///< bytes allocated, the terminator counted
};

/// A new empty buffer with room for @p capacity bytes (below 1: none yet).
KAZ_API dd_buffer* dd_create(int capacity);

/// Releases the buffer with its text. Null is ignored.
KAZ_API void dd_destroy(dd_buffer* buffer);

/// A buffer of its own with the same bytes; null for null.
KAZ_API dd_buffer* dd_copy(const dd_buffer* buffer);

/// Room for @p capacity bytes in all, without changing the text.
KAZ_API void dd_reserve(dd_buffer* buffer, int capacity);

/// Appends a character (a zero as well), or a text.
KAZ_API void dd_add_char(dd_buffer* buffer, char c);
KAZ_API void dd_add_text(dd_buffer* buffer, const char* text);

/// Appends @p count bytes, zeros included; nothing for a count below 1.
KAZ_API void dd_add_bytes(dd_buffer* buffer, const char* bytes, int count);

/// Appends @p count times the character @p c.
KAZ_API void dd_add_fill(dd_buffer* buffer, char c, int count);

/// Appends formatted text of any length. The format is null or as for printf.
KAZ_API void dd_add_format(dd_buffer* buffer, const char* format, ...) KAZ_PRINTF(2, 3);
KAZ_API void dd_vadd_format(dd_buffer* buffer, const char* format, va_list args) KAZ_PRINTF(2, 0);

/// Puts @p text in front of the byte at @p position, which is taken into
/// 0..length first.
KAZ_API void dd_insert(dd_buffer* buffer, int position, const char* text);

/// Removes up to @p count bytes from @p position on. Nothing happens for a
/// position outside the text or a count below 1.
KAZ_API void dd_remove(dd_buffer* buffer, int position, int count);

/// Shortens the text to @p length bytes (below 0: to none); never lengthens it.
KAZ_API void dd_truncate(dd_buffer* buffer, int length);

/// Empties the text and keeps the memory for the next one.
KAZ_API void dd_clear(dd_buffer* buffer);

/// The text, good until the buffer changes. Never null.
KAZ_API const char* dd_text(const dd_buffer* buffer);

/// The bytes in use.
KAZ_API int dd_length(const dd_buffer* buffer);

/// The byte at @p position; '\0' outside the text.
KAZ_API char dd_char_at(const dd_buffer* buffer, int position);

/// Compares the bytes as unsigned characters, shorter is less: -1, 0 or 1.
KAZ_API int dd_compare(const dd_buffer* a, const dd_buffer* b);

/// Hands the text over to the caller, who frees it, and leaves the buffer
/// empty. Never null.
KAZ_API char* dd_take(dd_buffer* buffer);
/// @}
