// SPDX-License-Identifier: Apache-2.0
/// @file
/// The definitions of the ToolInfo files with their places, and which of them counts.
#pragma once

#include "tools/config/toolinfo_scan.h"

#include <map>
#include <string>
#include <vector>

/// A line of a file (see KazVariableLine).
struct ConfigLine {
    int file;   ///< the file's number in the order of reading; -1 for none
    int number; ///< counted from 1
    int kind;   ///< without the marks
    bool isCut;
    bool hasNul;
    std::string name, value;

    bool isDefinition() const { return kind == KazLineDefinition; }
};

/// The files as they are now: the chain, and behind it, unless @p further is "", a file
/// whose definitions replace the others, as TI_V_user_file reads it.
///
/// In the first file the last definition of a name counts, in later ones the first; over
/// the files the first one that defines the name, but for the further file.
class Configuration {
public:
    explicit Configuration(const std::string& further = {});
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;

    /// In the order of reading.
    const std::vector<ConfigLine>& lines() const { return lines_; }
    /// Of the names that have definitions, in byte order.
    std::vector<std::string> names() const;
    /// In the order of reading; none for an unknown name.
    std::vector<const ConfigLine*> definitionsOf(const std::string& name) const;

    /// The definition of the same name that counts in the file of @p line, a definition.
    const ConfigLine& decisiveInFile(const ConfigLine& line) const;
    /// The one that counts over all files. @p name has a definition.
    const ConfigLine& decisive(const std::string& name) const;
    /// Whether later definitions replace earlier ones within the file.
    bool lastCountsIn(int file) const { return file == 0 || isFurther(file); }
    bool isFurther(int file) const { return file == further_; }

    /// The file's name as the host spells it.
    std::string fileName(int file) const;
    /// "FILE:LINE".
    std::string placeOf(const ConfigLine& line) const;

private:
    void add(const KazVariableLine& line);
    int numberOf(const std::string& file);

    std::vector<ConfigLine> lines_;
    std::vector<std::string> files_; ///< native names
    int further_ = -1;
    std::map<std::string, std::vector<std::size_t>> definitions_; ///< places in lines_
};
