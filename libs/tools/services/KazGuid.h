// SPDX-License-Identifier: Apache-2.0
/// @file
/// Globally unique identifiers (RFC 9562).
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

/// 128 bits, in the order in which they are written. A plain value; the default is the nil one.
/// Identifiers may be made on any thread, and a forked process never repeats its parent's.
class KAZ_API KazGuid {
public:
    /// The ways of writing it.
    enum Style : int {
        Plain,   ///< 01234567-89ab-cdef-0123-456789abcdef
        Braced,  ///< {01234567-89AB-CDEF-0123-456789ABCDEF}, as the registry has it
        Compact, ///< 32 lower-case digits
    };

    constexpr KazGuid() = default;

    /// Version 4: 122 random bits from the system's cryptographic source.
    /// @throws KazResourceException when the system has none to give
    static KazGuid create();
    /// Version 7: milliseconds since 1970, then 74 random bits. Of one process each is greater
    /// than the one before, also when the clock is set back.
    /// @throws KazResourceException as create()
    static KazGuid createOrdered();
    /// Version 5: the SHA-1 of the space's bytes and the name's. The same always gives the same.
    /// A null @p name counts as "".
    /// @throws KazResourceException when the system's digest cannot be had (Windows only)
    static KazGuid fromName(const KazGuid& space, const char* name);

    static const KazGuid dnsSpace; ///< 6ba7b810-9dad-11d1-80b4-00c04fd430c8
    static const KazGuid urlSpace; ///< 6ba7b811-9dad-11d1-80b4-00c04fd430c8

    /// Reads any of the styles in either case, and "urn:uuid:" (in either case) with the plain
    /// one. False, with @p guid unchanged, for anything else, blanks around it included.
    static bool parse(const char* text, KazGuid& guid);
    /// The identifier of these bytes, in the order of the text.
    static KazGuid fromBytes(const unsigned char (&bytes)[16]);

    /// As it is written in @p style.
    KazString getText(Style style = Plain) const;
    /// The bytes, in the order of the text; good as long as this object.
    const unsigned char (&getBytes() const)[16] { return bytes_; }
    /// Whether all bits are 0.
    bool isNil() const;
    /// 1 to 8 for the variant of RFC 9562; 0 for any other and for none.
    int getVersion() const;

    /// -1, 0 or 1 by the bytes: the order of the texts.
    int compare(const KazGuid& other) const;
    /// By compare().
    bool operator==(const KazGuid& other) const { return compare(other) == 0; }
    bool operator!=(const KazGuid& other) const { return compare(other) != 0; }
    bool operator<(const KazGuid& other) const { return compare(other) < 0; }
    /// A hash of all bytes, for containers.
    unsigned hash() const;

private:
    explicit constexpr KazGuid(const unsigned char (&text)[16]) {
        for (int i = 0; i < 16; ++i)
            bytes_[i] = text[i];
    }

    unsigned char bytes_[16] = {};
};

/// KazGuid::create().getText().
KAZ_API KazString kazCreateGuid();
