// SPDX-License-Identifier: Apache-2.0
/// @file
/// The root of the library's exceptions.
#pragma once

#include "tools/export.h"

/// The one exception vocabulary of the library and of the tools on it: every
/// exception that is thrown or caught on purpose is a KazException.
///
/// Throw by value, catch by reference. An exception that escapes a tool's body
/// is asked to report itself, once, and the process ends with status 1.
class KAZ_API KazException {
public:
    /// The base has no state: copying and assigning copy nothing.
    KazException(const KazException&) = default;
    KazException& operator=(const KazException&) = default;
    virtual ~KazException();

    /// The text to show the user: never null, "" when there is nothing to say.
    /// It lives until the exception is changed, destroyed or asked again.
    virtual const char* getErrorMessage();
    /// The same for an exception caught by reference to const. A class that overrides the
    /// one above says `using KazException::getErrorMessage;` to have this one, too.
    const char* getErrorMessage() const {
        // What is thrown is never a const object, only caught as one.
        return const_cast<KazException*>(this)->getErrorMessage();
    }

    /// Prints getErrorMessage() as an error through the IO director.
    /// @return false, with nothing printed, when that text is empty.
    virtual bool reportError();

protected:
    KazException();
};
