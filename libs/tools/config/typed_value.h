// SPDX-License-Identifier: Apache-2.0
/// @file
/// Numbers and switches from texts that people wrote, with the difference between a
/// value, none, and a mistake.
///
/// The accessors of kazenv.h give 0 for all that is no number. A tool that has to tell
/// "-port abc" from "-port 0" asks here:
///
/// @code
///   int port = 2100;
///   if (kaz_check_integer(kaz_env_text(kaz_env_id_port), 1, 65535, &port) > kaz_value_missing)
///       commandLine.complain("the port is a number from 1 to 65535");
/// @endcode
///
/// The text may come from anywhere: the command line (kaz_arg_text_or), the tool
/// environment (kaz_env_text), a ToolInfo variable (TI_EnvVcont). The result pointer may
/// be null, and unless the value is good what it points to is unchanged: it holds the
/// default.
#pragma once

#include "tools/export.h"

/// What a text turned out to be. All above kaz_value_missing are mistakes of whoever
/// wrote it.
enum kaz_value_enum {
    kaz_value_good,
    kaz_value_missing,      ///< there is no text (null)
    kaz_value_malformed,    ///< it is not of that type; so is an empty text
    kaz_value_out_of_range, ///< it is, but below the least or above the greatest
};

/// A whole decimal number from @p least to @p greatest, with a sign or without. Blanks,
/// tabs and line ends around it do not count.
KAZ_API kaz_value_enum kaz_check_integer(const char* text, int least, int greatest, int* value);

/// A finite decimal number from @p least to @p greatest, as "2", "-0.5" or "1e-3"; the
/// point is "." whatever the locale. Blanks as above.
KAZ_API kaz_value_enum kaz_check_real(const char* text, double least, double greatest,
                                      double* value);

/// A yes or a no, as TI_yesorno reads them.
KAZ_API kaz_value_enum kaz_check_boolean(const char* text, bool* value);
