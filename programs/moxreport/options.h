// SPDX-License-Identifier: Apache-2.0
/// @file
/// What moxreport is asked to do.
#pragma once

#include "tools/formats/encode.h"
#include "tools/strings/KazString.h"

/// The command line, checked.
struct ReportOptions {
    KazString project; ///< the project's directory, native and absolute
    KazString system;  ///< the only one to report, or ""
    KazString filter;  ///< a wildcard for file names, or ""
    KazString output;  ///< a file, or "" for standard output
    doc_format_enum format = doc_html;
    int pageWidth = 2100; ///< tenths of a millimetre, as is the height
    int pageHeight = 2970;
    bool linksFiles = false;
    bool verbose = false;
    bool quiet = false;
};

/// KazCommandLine::run, or the status to end with: what is wrong has then been said.
int readOptions(int argc, char** argv, ReportOptions& options);
