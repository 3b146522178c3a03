// SPDX-License-Identifier: Apache-2.0
/// @file
/// The variables that somebody reads.
#pragma once

#include "tools/containers/KazStringColl.h"

#include <set>
#include <string>

/// The names that the library and the programs read, those of the tool environment, and
/// what tools have installed: each line of the files "share/mox/variables/*.list" below
/// the installation root is a name, but for comments, which begin with "%".
class KnownNames {
public:
    KnownNames();

    bool has(const std::string& name) const;
    const std::set<std::string>& all() const { return names_; }

private:
    void addInstalled();
    void addList(const std::string& hostFile);

    std::set<std::string> names_;
};

/// Whether the library defines the variable itself, whatever the files say.
bool isSetByLibrary(const std::string& name);

/// The nearest of @p names, three at most (see kazNearWords).
KazStringColl nearNames(const std::string& word, const std::set<std::string>& names);

/// "KAZ_" and the name in capitals.
std::string overridingVariable(const std::string& name);
