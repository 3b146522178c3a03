// SPDX-License-Identifier: Apache-2.0
/// @file
/// Marks of the public interface: what the shared library exports, and which
/// functions read a printf format.
#pragma once

#if defined(_WIN32)
#if defined(MOXTOOLS_BUILDING)
#define KAZ_API __declspec(dllexport)
#else
#define KAZ_API __declspec(dllimport)
#endif
#else
/// Marks what the library exports.
#define KAZ_API __attribute__((visibility("default")))
#endif

/// What a class that is exported keeps to itself.
#if defined(_WIN32)
#define KAZ_LOCAL // its class does not say so
#else
#define KAZ_LOCAL __attribute__((visibility("hidden")))
#endif

/// The compiler checks the arguments of a function marked so against its
/// format. Both numbers count from 1, `this` included; @p first is 0 for a
/// function that takes a va_list.
#if defined(__MINGW32__) && !defined(__clang__)
#define KAZ_PRINTF(format_, first) __attribute__((format(gnu_printf, format_, first)))
#else
#define KAZ_PRINTF(format_, first) __attribute__((format(printf, format_, first)))
#endif
