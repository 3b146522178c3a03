// SPDX-License-Identifier: Apache-2.0
/// @file
/// Substitution of `${name}` references in texts.
///
/// Names are resolved by a stack of lookup functions. A tool pushes its own; at
/// the bottom always stay two: position 0 knows the simple variables that the tool
/// set with vstring_set_simple_var, position 1 answers names such as
/// "ti.projdir" (they begin with "ti"; what follows the first "." counts) with the
/// ToolInfo variable. The stack is asked from its top, so the order is: the
/// tool's functions, ToolInfo, simple variables.
///
///     vstring_set_simple_var("name", "order entry");
///     char* text;
///     vstring_sub("print \"${name}\"", &text); // print "order entry"
///     std::free(text);
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

/// Gives the value of a variable, or null when it does not know the name. The
/// value stays the function's own and must last until it is asked again. A lookup
/// function may itself push, pop and expand.
using vstring_lookup_func = const char* (*)(const char* name);

/// Puts @p lookup on top of the stack. Returns true; a null function is left out.
KAZ_API bool vstring_push_lookup_func(const char* (*lookup)(const char*));

/// The same for a function that is called with @p data, which stays the caller's and
/// has to last until the function is off the stack:
///
///     vstring_push_lookup_func(
///         [](const char* name, void* data) {
///             return static_cast<const Report*>(data)->fieldOrNull(name);
///         }, &report);
KAZ_API bool vstring_push_lookup_func(const char* (*lookup)(const char* name, void* data),
                                      void* data);

/// Removes the top function, but never one of the two at the bottom.
KAZ_API void vstring_pop_lookup_func();

/// Removes all functions but the two at the bottom. Returns true.
KAZ_API bool vstring_clear_lookup_funcs();

/// Sets a simple variable to a copy of @p value, replacing an earlier one. Null counts
/// as "". Nothing without an application object, in whose tools context they are kept.
KAZ_API void vstring_set_simple_var(const char* name, const char* value);

/// The first answer that is not null, asked from the top of the stack down; null
/// when no function knows @p name. The value belongs to the function that gave it.
KAZ_API const char* vstring_lookup_var(const char* name);

/// The number of `${` in @p text whose "$" is not escaped by a backslash (a
/// backslash that is itself escaped escapes nothing). 0 for null.
KAZ_API int vstring_num_vars(const char* text);

/// Expands the references of @p text (null counts as ""). *@p result becomes a
/// heap copy that the caller frees. Returns false only when @p result is null;
/// when memory runs out KazMemoryException is thrown and *@p result is as it was.
///
/// A reference to an unknown variable gives nothing; a `${` without a "}" after
/// it is dropped, the text after it stays. A backslash before "$" prevents
/// nothing here, unlike in vstring_num_vars.
///
/// Double quotes nest by the backslashes before them: a plain quote opens the
/// first level and closes it, a quote with one backslash opens the second, in
/// general 2^d / 2 backslashes open level d + 1 at level d and 2^d / 4 close
/// level d. At level d each backslash of a substituted value is written as 2^d,
/// so that it survives that many readings by a shell. Levels above 20 are refused
/// with KazMemoryException as soon as a value with a backslash asks for them.
///
/// A lookup function may be asked several times for one reference.
KAZ_API bool vstring_sub(const char* text, char** result);

/// The same expansion as a string, which needs no release.
KAZ_API KazString vstring_sub(const char* text);
