// SPDX-License-Identifier: Apache-2.0
// What is stored is read whole when a section is opened. Changes are kept beside it in two
// batches, those that a commit() has tried and those that none has: the destructor writes
// the latter only. `view` is what is stored with both batches carried out, and is looked at
// while there is a change at all.
#include "tools/settings/KazSettings.h"

#include "tools/app/failures/KazFileException.h"
#include "tools/app/failures/KazResourceException.h"
#include "tools/files/kazpath.h"
#include "tools/formats/encode.h"
#include "tools/platform/host.h"
#include "tools/platform/host_settings.h"
#include "tools/platform/utf8.h"
#include "tools/settings/detail/convert.h"
#include "tools/util/detail/view_of.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

namespace host = kaz::host;
using host::SettingsChange;
using host::SettingsChanges;
using host::SettingsValue;
using kaz::detail::viewOf;

namespace {

/// Names that are refused may hold what a terminal obeys.
[[noreturn]] void refuse(const char* what, const std::string& name) {
    constexpr std::size_t most = 200;
    KazString message;
    message.format("%s \"%s\" of the settings is not allowed.", what,
                   kazPrintable(name.substr(0, most).c_str()).getValue());
    throw KazResourceException(message);
}

/// The section's path with "/" between its names.
std::string pathOf(const char* section) {
    std::string path(viewOf(section));
    std::replace(path.begin(), path.end(), '\\', '/');
    if (!host::isSettingsPath(path))
        refuse("The section", std::string(viewOf(section)));
    return path;
}

std::string checkedName(const char* name) {
    if (!host::isSettingsName(viewOf(name)))
        refuse("The name", std::string(viewOf(name)));
    return std::string(viewOf(name));
}

/// Damaged bytes are replaced and not refused: a setting is not worth losing a run of the tool.
std::string checkedText(std::string_view text, const char* name) {
    std::string result = host::validUtf8(text);
    if (result.size() > host::mostOfSettingsText)
        refuse("The value of", name);
    return result;
}

/// Adds a change to those before it.
void record(SettingsChanges& batch, const SettingsChange& change) {
    auto& changes = batch.changes;
    // In the order of names, so that a later change of a name meets the one before it.
    const auto place = std::lower_bound(changes.begin(), changes.end(), change.name,
                                        [](const SettingsChange& each, const std::string& name) {
                                            return host::compareSettingsNames(each.name, name) < 0;
                                        });
    if (place == changes.end() || host::compareSettingsNames(place->name, change.name) != 0) {
        changes.insert(place, change);
        return;
    }
    // A value behind a removal still removes first, and so gives the name its new spelling; behind
    // another value the name keeps the first one.
    SettingsChange merged = change;
    if (!change.removes) {
        merged.removes = place->removes;
        if (place->value)
            merged.name = place->name;
    }
    *place = std::move(merged);
}

void record(SettingsChanges& batch, const SettingsChanges& later) {
    // Nothing before it can be seen any more.
    if (later.removesAll)
        batch = {true, {}};
    for (const SettingsChange& change : later.changes)
        record(batch, change);
}

void apply(host::SettingsSection& section, const SettingsChanges& batch) {
    if (batch.removesAll)
        section = {};
    for (const SettingsChange& change : batch.changes)
        host::applySettingsChange(section.values, change);
}

} // namespace

struct KazSettings::Store {
    explicit Store(const std::string& path)
        : place(path), section(kazNormalizedPath(path.c_str())) {
        load();
    }

    bool hasChanges() const { return !tried.isEmpty() || !fresh.isEmpty(); }
    const host::SettingsSection& seen() const { return hasChanges() ? view : stored; }

    /// By halves: names are kept in order, without regard to case.
    const SettingsValue* find(const char* name) const {
        const auto& values = seen().values;
        const auto found =
            std::lower_bound(values.begin(), values.end(), viewOf(name),
                             [](const host::SettingsEntry& entry, std::string_view wanted) {
                                 return host::compareSettingsNames(entry.name, wanted) < 0;
                             });
        const bool isThere =
            found != values.end() && host::compareSettingsNames(found->name, viewOf(name)) == 0;
        return isThere ? &found->value : nullptr;
    }

    void load() {
        host::SettingsSection now;
        place.load(now); // what cannot be read is not there
        // Made beside the old one: on failure everything stays as it was.
        host::SettingsSection changed;
        if (hasChanges()) {
            changed = now;
            apply(changed, tried);
            apply(changed, fresh);
        }
        stored = std::move(now);
        view = std::move(changed);
    }

    /// Both the batch and what is seen, or neither.
    void change(const SettingsChange& change) {
        if (!hasChanges())
            view = stored;
        // All memory first: the two that change must not come apart.
        makeRoom(fresh.changes);
        makeRoom(view.values);
        SettingsChange seenChange = change;
        record(fresh, change);
        host::applySettingsChange(view.values, std::move(seenChange));
    }

    /// `tried` stays, for what it holds comes before; it needs no memory, and cannot fail.
    void removeAll() {
        fresh = {true, {}};
        view = {};
    }

    /// What a commit has tried, with what is new.
    void commit() {
        // Joined in a copy: without memory both batches stay apart, and commit() can be repeated.
        SettingsChanges all = tried;
        record(all, fresh);
        tried = std::move(all);
        fresh = {};
        if (tried.isEmpty())
            return;
        errno = 0;
        const std::size_t before = tried.changes.size();
        if (place.commit(tried) != 0) {
            const int reason = errno;
            // The store takes out of the batch what it has written before it failed.
            if (tried.changes.size() != before)
                load(); // what was written is stored now
            throwFailure(reason);
        }
        // Moved and not read again: what others wrote meanwhile is seen by refresh() only.
        stored = std::move(view);
        tried = {};
    }

    /// A lock that another process holds is told apart, since there waiting helps.
    [[noreturn]] void throwFailure(int reason) const {
        const std::string file = place.place();
        if (file.empty() || reason == ENAMETOOLONG)
            throw KazFileException(KazFileException::badPath, file.c_str());
        if (reason == EWOULDBLOCK)
            throw KazFileException(KazFileException::lockViolation, file.c_str());
        KazFileException::throwErrno(reason, file.c_str());
    }

    host::SettingsStore place;
    KazString section;
    host::SettingsSection stored; ///< as it was read, or written, last
    host::SettingsSection view;   ///< the same with the changes
    SettingsChanges tried, fresh;

private:
    /// For one more, so that what follows cannot fail half-way.
    template <typename Item>
    static void makeRoom(std::vector<Item>& items) {
        constexpr std::size_t least = 16;
        if (items.size() == items.capacity())
            items.reserve(std::max(least, 2 * items.size()));
    }
};

KazSettings::KazSettings(const char* section) : store_(new Store(pathOf(section))) {}

/// What a commit() tried and failed has been reported to its caller, and is not tried again.
KazSettings::~KazSettings() {
    try {
        store_->tried = {};
        store_->commit();
    } catch (KazException& failure) {
        try {
            failure.reportError();
        } catch (...) {
            // A director that throws: nobody is left who could be told.
        }
    }
}

const KazString& KazSettings::getSection() const {
    return store_->section;
}

KazString KazSettings::getPlace() const {
    return store_->place.place().c_str();
}

bool KazSettings::isSet(const char* name) const {
    return store_->find(name) != nullptr;
}

KazString KazSettings::getText(const char* name, const char* defaultValue) const {
    KazString result;
    const SettingsValue* value = store_->find(name);
    if (value == nullptr || !kaz::detail::asText(*value, result))
        result = defaultValue;
    return result;
}

std::int64_t KazSettings::getInteger(const char* name, std::int64_t defaultValue) const {
    const SettingsValue* value = store_->find(name);
    if (value != nullptr)
        kaz::detail::asInteger(*value, defaultValue);
    return defaultValue;
}

double KazSettings::getReal(const char* name, double defaultValue) const {
    const SettingsValue* value = store_->find(name);
    if (value != nullptr)
        kaz::detail::asReal(*value, defaultValue);
    return defaultValue;
}

bool KazSettings::getBool(const char* name, bool defaultValue) const {
    const SettingsValue* value = store_->find(name);
    if (value != nullptr)
        kaz::detail::asBool(*value, defaultValue);
    return defaultValue;
}

bool KazSettings::getList(const char* name, KazStringColl& values) const {
    const SettingsValue* value = store_->find(name);
    const auto* list = value != nullptr ? std::get_if<host::SettingsList>(value) : nullptr;
    if (list == nullptr)
        return false;
    KazStringColl result;
    for (const std::string& each : *list)
        result.add(each.c_str());
    // Built apart, so that the caller's list is whole or untouched.
    values.copy(result);
    return true;
}

void KazSettings::getNames(KazStringColl& names) const {
    KazStringColl found;
    for (const host::SettingsEntry& entry : store_->seen().values)
        found.add(entry.name.c_str());
    names.append(found);
}

void KazSettings::getSections(KazStringColl& names) const {
    KazStringColl found;
    for (const std::string& name : store_->seen().sections)
        found.add(name.c_str());
    names.append(found);
}

void KazSettings::setText(const char* name, const char* value) {
    std::string checked = checkedName(name);
    store_->change({std::move(checked), false, checkedText(viewOf(value), name)});
}

void KazSettings::setInteger(const char* name, std::int64_t value) {
    store_->change({checkedName(name), false, value});
}

void KazSettings::setReal(const char* name, double value) {
    std::string checked = checkedName(name);
    // Readers refuse infinity and what is no number, so neither is stored.
    if (!std::isfinite(value))
        refuse("The value of", checked);
    store_->change({std::move(checked), false, value});
}

void KazSettings::setBool(const char* name, bool value) {
    store_->change({checkedName(name), false, value});
}

void KazSettings::setList(const char* name, const KazStringColl& values) {
    std::string checked = checkedName(name);
    if (values.getSize() > static_cast<int>(host::mostOfSettingsList))
        refuse("The value of", checked);
    host::SettingsList list;
    for (int i = 0; i < values.getSize(); ++i)
        list.push_back(checkedText(values.getAt(i).getValue(), name));
    store_->change({std::move(checked), false, std::move(list)});
}

void KazSettings::remove(const char* name) {
    std::string checked = checkedName(name);
    // Removing what is not there is no change, and writes nothing.
    if (isSet(name))
        store_->change({std::move(checked), true, std::nullopt});
}

void KazSettings::removeAll() {
    store_->removeAll();
}

bool KazSettings::hasChanges() const {
    return store_->hasChanges();
}

void KazSettings::discard() {
    store_->tried = {};
    store_->fresh = {};
}

void KazSettings::commit() {
    store_->commit();
}

void KazSettings::refresh() {
    store_->load();
}
