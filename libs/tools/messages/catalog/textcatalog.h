// SPDX-License-Identifier: Apache-2.0
/// @file
/// Numbered message texts: the message file, and texts registered at run time.
///
/// The tools keep their texts in one binary file and refer to them by number.
/// The file is named by the ToolInfo variable "msg_file"; without it, it is
/// "bin\W32NTX86\msg_file" below the tools' root directory. `moxmsg` makes
/// such files.
///
/// Layout, all integers little-endian; numbers 0 to 15871 can be in the file.
/// A number is a block (number / 256) and an entry in it (number % 256).
///
///     offset      size  what
///     0           4     the magic number 0x4B415A4D ("MZAK")
///     4           124   62 x 16 bit, one a block: offset / 16 of its index
///                       table, 0 when the block has none
///     table       512   256 x 16 bit, one an entry: offset / 16 of its text,
///                       0 when the entry has none
///     text        128   a text of at most 127 bytes and its NUL, read whole
///
/// What is no regular file counts as a file that is not there, and every lookup
/// tries again. A file without the magic number is reported by the first lookup;
/// later ones read from it all the same.
///
/// Texts are read on demand through a cache of 20. A hit costs a scan of 20
/// numbers; a miss reads the 128 bytes of the text with one system call, as the
/// file holds them then. An index table is read when its block is first used and
/// then kept. State is process-wide and unlocked.
#pragma once

#include "tools/export.h"

/// The text of a message, never null: "" when there is none, or when the file
/// cannot be read (which print_err reports). The pointer is good until a later
/// lookup needs the cache entry.
KAZ_API char* TextLook(int number);

/// A heap copy of TextLook(number); release it with free().
KAZ_API char* CTextLook(int number);

/// The text of the message file for @p english (null counts as ""), where it takes the same
/// printf arguments; else @p english. So a tool has its texts in itself and needs no file, and
/// none that a file may hold does harm as a format:
///
/// @code
///   print_err(kaz_text(204, "Cannot write '%s': %s"), path, reason);
/// @endcode
///
/// The compiler checks the arguments against the English. Missing files are no fault, of
/// ToolInfo neither; only a message file that "msg_file" names and that cannot be read is
/// told, once. The first call with a number and a text decides for good: the result lives as
/// long as the process, and later calls only find it. errno stays as it is.
KAZ_API const char* kaz_text(int number, const char* english) __attribute__((format_arg(2)));

/// perror() with the text as prefix and errno as it was before the lookup.
KAZ_API void Textperror(int number);

/// Registers a copy of @p text (null means "") under @p number, or replaces
/// the text registered there. Returns @p number, or 0 when there is no memory for
/// the entry of a new one; none for the text is a KazMemoryException.
///
/// Lookups find it when the message file opens, and give its first 128 characters
/// at most. A text in the cache is not refreshed, and numbers 0 to 16127 are looked
/// for among the registered ones only once TI_TextPut has been used. Number 0 is also
/// the mark of an unused cache entry, which a lookup finds first.
KAZ_API int TI_TextPutNo(char* text, int number);
/// The text is only read, so that it may be constant.
inline int TI_TextPutNo(const char* text, int number) {
    return TI_TextPutNo(const_cast<char*>(text), number);
}

/// Registers @p text under the next free number (15873, 15874, ...), which is
/// the result; 0 as for TI_TextPutNo.
KAZ_API int TI_TextPut(char* text);
inline int TI_TextPut(const char* text) {
    return TI_TextPut(const_cast<char*>(text));
}

/// Prints the cache's statistics, if the ToolInfo variable "TextStats" asks
/// for it: unset, empty or "n" means no; a beginning of "yes" or of "stderr"
/// means standard error; anything else names a file to append to.
KAZ_API void TextStats();
