// SPDX-License-Identifier: Apache-2.0
/// @file
/// What is installed: the product information file.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <cstdint>
#include <utility>
#include <vector>

/// The contents of a product information file: name, version, build, date and the parts of an
/// installation with their sizes and checksums.
///
/// It is a text of lines in UTF-8, made by the release and read by people and tools alike:
///
///     % Product information
///     name=Mox
///     version=2.4.1
///     build=1873
///     date=2026-11-21
///     part=1a2b3c4d 351232 1.0 bin/libmoxtools.so
///     checksum=9c5e1f02
///
/// A line that begins with "%" is a comment, a blank one is skipped. The others are `key=value`,
/// with blanks and tabs around both taken off. "name" and "version" must be there, no key but
/// "part" may be there twice, "build" is a decimal of at most 9 digits, "date" an existing day, a
/// part a checksum of 8 hexadecimal digits, a size, a version without blanks ("-" for none) and a
/// path relative to the root, with "/" and without ".", ".." or an empty name, so that a file has
/// one path only, which no other part has. Other keys are kept. Keys are 1 to 40 letters, digits,
/// "_" and "-", in lower case; values have 1 to 1000 bytes, a file up to 4 MiB.
/// But for comments, no line holds a control character other than TAB, or what is not UTF-8.
///
/// "checksum" is the last line that counts: CRC-32 (see crc32.h) of all bytes before it, each line
/// end read as one LF. A file that went through an editor or a transfer that changes line ends
/// still agrees. The checksums find damage and mix-ups of versions; they prove nothing about who
/// made the file.
class KAZ_API KazProductInfo {
public:
    /// What is known of the file.
    enum State : int {
        Empty,         ///< nothing was read
        Missing,       ///< there is no such file
        Unreadable,    ///< it cannot be read, is no regular file or is too large
        Malformed,     ///< see getErrorLine()
        NoChecksum,    ///< well-formed, without a checksum
        WrongChecksum, ///< well-formed, but its bytes are not what they were
        Good
    };
    /// A file of the installation.
    struct Part {
        KazString path;             ///< below the root, with "/"
        KazString version;          ///< "" for none
        std::uint64_t size = 0;     ///< bytes
        std::uint32_t checksum = 0; ///< CRC-32 of its bytes
    };
    /// How a part on the disk compares with what is said of it.
    enum PartState : int {
        PartGood,
        PartMissing,
        PartUnreadable,
        PartWrongSize,
        PartWrongChecksum
    };

    KazProductInfo();

    /// That of this installation: getDefaultPath(), read on first use and kept.
    static const KazProductInfo& getInstance();
    /// The value of the ToolInfo variable "product_info" (a leading "~" expanded, below the root
    /// when it is not explicit), else "ProductInfo" in the installation root; with a product,
    /// "ProductInfo." and the product in lower case there. "" when the root cannot be told, and
    /// for a product with a separator or ":" in it. Where there is no ToolInfo file nothing is
    /// fatal: the variable is unset.
    static KazString getDefaultPath(const char* product = nullptr);

    /// Replaces the contents by those of a file. What is well-formed is there whatever the
    /// checksum says; in the states Missing, Unreadable and Malformed there is nothing.
    State read(const char* path);
    /// The same for the bytes of a file. A negative length is up to the first NUL.
    State parse(const char* text, int length = -1);
    /// How the last reading ended.
    State getState() const { return state_; }
    /// Of a malformed text: the number of the first line that is wrong, from 1; the number of lines
    /// plus 1 when something is missing. Else 0.
    int getErrorLine() const { return errorLine_; }
    /// A sentence about the state, with the path (printable, see kazPrintable): for messages. ""
    /// for Good and Empty.
    KazString getProblem() const;
    /// The path that was read; "" after parse().
    const KazString& getPath() const { return path_; }

    /// What the file says; "" when it says nothing. Good until the contents change.
    const KazString& getName() const { return name_; }
    const KazString& getVersion() const { return version_; }
    int getBuild() const { return build_; }            ///< 0 when there is none
    const KazString& getDate() const { return date_; } ///< "2026-11-21", or ""
    /// The value of any other key; "" when it is not there.
    KazString getValue(const char* key) const;
    /// How many parts there are.
    int getPartCount() const { return static_cast<int>(parts_.size()); }
    const Part& getPart(int index) const; ///< an empty one out of range
    /// The index of a part by its path ("/" or `\`), or -1.
    int findPart(const char* path) const;

    /// @name Making one
    /// Setters give false, with nothing changed, for what a file cannot hold. Control characters
    /// are not allowed anywhere. The state becomes Empty.
    /// @{

    /// A name and a version have to be there for a file; a build is 0 to 999999999, 0 for none,
    /// and a day as "2026-11-21", "" for none.
    bool setName(const char* name);
    bool setVersion(const char* version);
    bool setBuild(int build);
    bool setDate(const char* date);
    bool setValue(const char* key, const char* value); ///< an empty value removes the key
    /// Adds the file @p path below @p root, or measures it anew. False when it cannot be read
    /// (errno says why) or its path is not allowed.
    bool addPart(const char* root, const char* path, const char* version = "");
    /// Removes the part; false when there is none of this path.
    bool removePart(const char* path);
    /// The file's text, with LF at the ends of lines: comment, name, version, build (unless 0),
    /// date, other keys and parts in the order of their bytes, checksum. "" without name or
    /// version.
    KazString getText() const;
    /// Writes getText(): whole, or as before.
    /// @throws KazFileException when it cannot be written; `badFormat` without name or version
    void write(const char* path) const;
    /// @}

    /// Looks at a part below @p root (null: the root of this installation).
    PartState verifyPart(int index, const char* root = nullptr) const;

    /// Compares versions as Semantic Versioning 2.0.0 does (-1, 0, 1), with any number of numbers:
    /// those that are missing are 0. "1.2" equals "1.2.0", "1.2-rc.1" is before "1.2", what follows
    /// "+" does not count. A component that is no number counts as text, after all numbers.
    static int compareVersions(const char* a, const char* b);

private:
    bool changed();

    State state_ = Empty;
    int errorLine_ = 0;
    KazString path_, name_, version_, date_;
    int build_ = 0;
    std::vector<std::pair<KazString, KazString>> values_;
    std::vector<Part> parts_;
};
